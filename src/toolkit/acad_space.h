// AcadSpace: the entity toolkit, a global class whose members clients may
// call as free functions of the library (block attributes and dynamic
// properties, block references, coordinate transforms, polylines and
// loops, sub-entities, the lisp bridge, object identity). The library's own
// classes call it through the implicit instance GlobalInstance<AcadSpace>().
//
// The class is split by member family: acad_space.cpp holds the frame and
// the value members; each family adds its file and registers its members
// in the table below, in interface order.
#ifndef TOVIK_TOOLKIT_ACAD_SPACE_H_
#define TOVIK_TOOLKIT_ACAD_SPACE_H_

#include <memory>
#include <string>
#include <string_view>

#include "frame/member_table.h"
#include "frame/variant.h"
#include "geometry/loop7.h"

namespace tovik {

class DynamicSS;

class AcadSpace : public DispatchObject<AcadSpace> {
 public:
  static constexpr std::string_view kClassName = "AcadSpace";

  // The implicit instance of this global class.
  static ObjectRef MakeGlobal() { return std::make_shared<AcadSpace>(); }

  std::string_view TypeName() const override { return kClassName; }
  static const MemberTable<AcadSpace>& Members();

  // ArrDbls2ArrPoints(arrDbl, arrPoint[, XYOnly]): walks the flat list
  // arrDbl (by reference, unchanged) from its lower bound in steps of 3 (2
  // when XYOnly is True) and appends one point of three Doubles per step
  // to arrPoint (in/out; it becomes, or grows as, an array of points): X
  // and Y from the list, Z from the list or 0 with XYOnly. A list whose
  // length is not a multiple of the step raises 9 at its last, partial
  // step (the points before it are appended). arrDbl not an array raises
  // 13.
  static void ArrDbls2ArrPoints(const Variant& arr_dbl, Variant& arr_point,
                                const Variant& xy_only = Variant::Missing());

  // ---- Block attributes and dynamic-block properties
  // (acad_space_attributes.cpp). Tags and property names compare without
  // regard to case; nothing is trimmed.

  // AttRef_Get(BlockRef, Tag[, newValue][, flag]): without newValue, the
  // TextString of the first attribute of BlockRef tagged Tag ("" when
  // none). With newValue, every attribute with the tag is written (an empty
  // value is written as one space; a refused value as its trimmed text),
  // its layer unlocked for the write and locked again, and the result is
  // the text of newValue ("" when no attribute matched). flag (written) is
  // True when an attribute matched. Errors of one attribute's write are
  // trapped; others reach the caller.
  static std::string AttRef_Get(const ObjectRef& block_ref, const std::string& tag,
                                const Variant& new_value, Variant& flag);
  // AttDefs_Get(BDef, Tag): every attribute definition of BDef tagged Tag,
  // in order (an empty array when none). AttDef_Get: the first, or Nothing.
  static Variant AttDefs_Get(const ObjectRef& bdef, const std::string& tag);
  static ObjectRef AttDef_Get(const ObjectRef& bdef, const std::string& tag);
  // DynamicProperty_Get(Dblockref, PropertyName[, newValue][, flag]
  // [, NoChange]): the property's Value (Empty when the reference is not
  // dynamic or has no such property). With newValue the property is
  // written when it differs: text as it is, numbers as a Double (the
  // integer part when the host refuses the Double). flag (written unless
  // the reference is not dynamic) is True when the property was found;
  // NoChange (written) is False when a value was written.
  static Variant DynamicProperty_Get(const ObjectRef& dblockref, const std::string& property_name,
                                     const Variant& new_value, Variant& flag, Variant& no_change);
  // DynamicProperty_GetPoint / LetPoint(DBref, PointName[, AcadPoint]): the
  // point parameter stored as the properties "<PointName> X" and
  // "<PointName> Y", exchanged in the holding space (the reference's scale
  // reduced to its sign).
  static Variant DynamicProperty_GetPoint(const ObjectRef& dbref, const std::string& point_name);
  static void DynamicProperty_LetPoint(const ObjectRef& dbref, const std::string& point_name,
                                       const Variant& acad_point);
  // DynamicProperty_GetPolarPoint / LetPolarPoint(DBref, PolarDistanceName
  // [, AcadPoint]): the polar parameter whose distance property is named
  // PolarDistanceName, its angle and base point the two entries after it;
  // the end point in the holding space. An entry missing after the
  // distance raises 9.
  static Variant DynamicProperty_GetPolarPoint(const ObjectRef& dbref,
                                               const std::string& polar_distance_name);
  static void DynamicProperty_LetPolarPoint(const ObjectRef& dbref,
                                            const std::string& polar_distance_name,
                                            const Variant& acad_point);

  // ---- Block reference operations (acad_space_blocks.cpp).

  // BlockLoadFromLibrary(AcadDrawing, FilePath): the drawing file loaded
  // into AcadDrawing (Nothing: the current drawing) as a block definition
  // named after the file, as the host inserts a drawing file; an existing
  // block of that name is used as it is. The headless host reads DXF files
  // (a .dwg path is read from the .dxf beside it). Host errors reach the
  // caller.
  static ObjectRef BlockLoadFromLibrary(const ObjectRef& acad_drawing, const std::string& file_path);

  // Block_Override_Block(sourceBdef, targetBdef): the target's entities are
  // deleted and copies of the source's put in; the target takes the
  // source's origin (an empty source leaves the target empty with its own
  // origin).
  static void Block_Override_Block(const ObjectRef& source_bdef, const ObjectRef& target_bdef);
  // ReplaceBref(ExistingBref, NewBName[, Xdata][, DonotDelete]): a
  // reference to NewBName placed, scaled and turned as ExistingBref, in the
  // same block, with its properties (each copied under a trap) and
  // synchronised (BlockRef_Synchronize); its "Tovik Studio" extended data
  // when Xdata is True; the old reference deleted unless DonotDelete.
  // ExistingBref (written) becomes the new reference. Nothing is undone
  // when a step fails.
  static void ReplaceBref(ObjectRef& existing_bref, const std::string& new_bname,
                          const Variant& xdata = Variant::Missing(),
                          const Variant& donot_delete = Variant::Missing());
  // BlockRef_Synchronize(SourceBlockRef, desBlockRef): desBlockRef takes the
  // source's colour, linetype, layer and linetype scale, then its attribute
  // texts by tag and its dynamic properties by exact name and unit. The
  // source's attributes are asked for through the member "getattribute",
  // which the host does not have: the call raises 438 after the four
  // properties are copied (see docs/transforms.md).
  static void BlockRef_Synchronize(const ObjectRef& source_block_ref,
                                   const ObjectRef& des_block_ref);
  // IsXrefName(Name): True when Name holds a "|".
  static bool IsXrefName(const std::string& name);
  // Xref_GetObjectName(XName, XrefName): the part of XName after its first
  // "|" (up to a second one), XrefName (written) the part before; a name
  // without "|" is given back as it is and XrefName left alone.
  static std::string Xref_GetObjectName(const std::string& xname, Variant& xref_name);
  // Block_MoveOrigin(AcadBlock, NewOrigin): moves every entity of the block
  // by −NewOrigin (layers unlocked for the move and locked again) and the
  // block's Origin with them, so references keep their look. False (and
  // nothing changed) when NewOrigin is (0, 0, 0).
  static bool Block_MoveOrigin(const ObjectRef& acad_block, const Variant& new_origin);
  // ExplodeBlock(Bref, errFlag): explodes the reference; visible
  // attributes become texts, invisible ones go; wipeouts and images on a
  // layer named "*wipeouts" go; pieces on layer 0 or ByBlock take the
  // reference's layer, colour and linetype; freed attribute definitions go
  // (constant visible ones become texts). The reference is deleted, and an
  // anonymous definition with it. errFlag (written) is True when a step
  // failed.
  static void ExplodeBlock(const ObjectRef& bref, Variant& err_flag);
  // UniformalizeBlock(BlockRef): Y and Z scale factors take the size of X,
  // each keeping its sign.
  static void UniformalizeBlock(const ObjectRef& block_ref);
  // SetEffectiveScaleF(Bref, ScaleF): the three effective scale factors.
  static void SetEffectiveScaleF(const ObjectRef& bref, double scale_f);
  // Block_IsInside_Block(BigBlock, SmallBlock): True when BigBlock holds a
  // reference to SmallBlock at any depth (by effective name).
  static bool Block_IsInside_Block(const ObjectRef& big_block, const ObjectRef& small_block);

  // ---- Coordinate transforms (acad_space_transforms.cpp). Points are
  // arrays of three Doubles; angles are radians. Host failures reach the
  // caller (no trap) unless said otherwise.

  // TranslatePoint(Point, Displacement, Rotation, XScaleFactor,
  // YScaleFactor[, BasePoint]): Point (in/out) is scaled about BasePoint
  // (x and y only; the world origin when BasePoint is Missing), then turned
  // by Rotation about BasePoint in the XY plane, then moved by
  // Displacement(0..2). A scale product that overflows raises 6 and leaves
  // Point as it was.
  static void TranslatePoint(Variant& point, const Variant& displacement, double rotation,
                             double x_scale, double y_scale,
                             const Variant& base_point = Variant::Missing());
  // TranslatePointFromBlock(BlockPoint, BlockRef, OutsidePoint[,
  // IgnoreScale][, IsVector]): OutsidePoint (written) = InsertionPoint +
  // Rot(Rotation) · S · (BlockPoint − Origin), Origin that of the block
  // definition named by BlockRef.Name. IgnoreScale keeps only the signs of
  // the x and y factors (mirroring); IsVector maps a displacement (the
  // image of (0, 0, 0) is subtracted). The mapping is planar: Normal and
  // ZScaleFactor are not used, z passes through.
  static void TranslatePointFromBlock(const Variant& block_point, const ObjectRef& block_ref,
                                      Variant& outside_point,
                                      const Variant& ignore_scale = Variant::Missing(),
                                      const Variant& is_vector = Variant::Missing());
  // TranslatePointToBlock(OutsidePoint, BlockRef, BlockPoint[, IgnoreScale]
  // [, IsVector]): the exact inverse, BlockPoint (written) = Origin + S⁻¹ ·
  // Rot(−Rotation) · (OutsidePoint − InsertionPoint). A zero scale factor
  // raises 11 (6 when the coordinate divided is 0 too).
  static void TranslatePointToBlock(const Variant& outside_point, const ObjectRef& block_ref,
                                    Variant& block_point,
                                    const Variant& ignore_scale = Variant::Missing(),
                                    const Variant& is_vector = Variant::Missing());
  // BRef_TransMatrix(Bref[, IgnoreScale]): a new 4 x 4 TransMatrix placing
  // the definition in world coordinates: columns 0 to 2 the reference's X,
  // Y and normal axes (OCS axes of its Normal turned by Rotation, times the
  // scale factors unless IgnoreScale), column 3 the translation that sends
  // the definition's Origin to the InsertionPoint.
  static ObjectRef BRef_TransMatrix(const ObjectRef& bref,
                                    const Variant& ignore_scale = Variant::Missing());
  // BRef_UCS(Block[, ConvertOrgToMM]): a new UCS of the reference Block:
  // origin its InsertionPoint (in millimetres of the block that holds it
  // when ConvertOrgToMM is True), X and Y axes the definition's unit axes
  // mapped as vectors without scale (rotation and mirroring kept), Z their
  // cross product.
  static ObjectRef BRef_UCS(const ObjectRef& block,
                            const Variant& convert_org_to_mm = Variant::Missing());
  // TranslateCoordinates(AcadDrawing, pointslist, fromCS, toCS[, dims]):
  // converts the flat list pointslist (in/out) in place, one host call per
  // point of `dims` values (3 when Missing; z sent as 0 when dims is 2).
  // Never raises: the first error (normally reading past the end of the
  // list) ends the walk, leaving the points before it converted.
  static void TranslateCoordinates(const ObjectRef& acad_drawing, Variant& points_list,
                                   int32_t from_cs, int32_t to_cs,
                                   const Variant& dims = Variant::Missing());
  // UCSPoint(WCSPoint) / WCSPoint(UCSPoint): the point in the current
  // drawing's UCS / in world coordinates.
  static Variant UCSPoint(const Variant& wcs_point);
  static Variant WCSPoint(const Variant& ucs_point);
  // Align3D(AcadEnt, Base1, Base2, Base3, Dest1, Dest2, Dest3): moves the
  // entity by Dest1 − Base1, then turns it about an axis through Dest1 so
  // that the direction Base1→Base2 points along Dest1→Dest2, then about
  // Dest1→Dest2 so that Base3 lies in the plane of the three destination
  // points. A turn whose angle is 0 is not made. No scaling.
  static void Align3D(const ObjectRef& acad_ent, const Variant& base1, const Variant& base2,
                      const Variant& base3, const Variant& dest1, const Variant& dest2,
                      const Variant& dest3);
  // The outputs of GetAcadScreenWCS, each written whether or not the caller
  // passed a variable for it.
  struct ScreenView {
    Variant view_centre, tl_corner, view_dir;
    double acad_height = 0, acad_width = 0, window_height = 0, window_width = 0,
           twist_angle = 0;
  };
  // GetAcadScreenWCS(ThisDrawing, ...): the current view of ThisDrawing in
  // world coordinates from SCREENSIZE, VIEWSIZE, VIEWCTR, VIEWTWIST and
  // VIEWDIR: its centre, the top-left corner of the window, the height and
  // width in drawing units and in pixels, the twist and the view direction.
  static ScreenView GetAcadScreenWCS(const ObjectRef& this_drawing);
  // CurSpace([AcadDrawing]): the block of the space new entities go to:
  // model space, unless the drawing is in paper space with no model-space
  // viewport active; then PaperSpace (ActiveLayout.Block when reading
  // PaperSpace fails). Nothing or Missing means the current drawing.
  static ObjectRef CurSpace(const ObjectRef& acad_drawing = nullptr);

  // ---- Polylines and loops (acad_space_polylines.cpp). Loops are in
  // millimetres: drawing values are divided by the millimetre factor of the
  // block holding the polyline (multiplied on the way out) unless
  // NoMMConv; a factor of exactly 1 divides nothing; a factor of 0 raises
  // division by zero. Host errors pass through.

  // LwPlineCoords(Pline, Coords, Bulges): the vertex list and one bulge per
  // vertex.
  static void LwPlineCoords(const ObjectRef& pline, Variant& coords, Variant& bulges);
  // LwPlineToLoop7(PlineOrCircle[, NoClose, NoMMConv]): a circle as two
  // half circles from (cx − r, cy) (NoClose repeats the first vertex), a line
  // or an arc by its ends, anything else read as a polyline (NoClose with a
  // closed polyline repeats vertex 0).
  static std::shared_ptr<Loop7> LwPlineToLoop7(const ObjectRef& ent, const Variant& no_close,
                                               const Variant& no_mm_conversion);
  // LwPlineFromLoop7(Loop7[, AcadBlock, NoMMConv]): a new closed polyline
  // in AcadBlock (the current space when Nothing).
  static ObjectRef LwPlineFromLoop7(const Loop7& loop, const ObjectRef& acad_block,
                                    const Variant& no_mm_conversion);
  // LwPlinesToLoop7s(Plines[, NoMMConv]): a loop per member, each marked
  // outer or hole by nesting among the others.
  static std::shared_ptr<Loop7s> LwPlinesToLoop7s(DynamicSS& plines, const Variant& no_mm_conversion);
  // LwPlineFromLoop7s: a polyline per loop, in order, in a new set; with a
  // hatch request also a hatch (outer loops first, then holes).
  struct HatchRequest {
    bool make = false;
    int32_t pattern_type = 1;  // predefined
    std::string pattern_name = "SOLID";
    int32_t object_type = 0;  // a hatch (1: a gradient)
    Variant no_mm_conversion = Variant::Missing();
    Variant* made = nullptr;  // receives the hatch
  };
  static std::shared_ptr<DynamicSS> LwPlineFromLoop7s(const Loop7s& loops, const ObjectRef& acad_block,
                                                      const HatchRequest& hatch);
  // LwPlinesSplit(Plines, StartPoint, EndPoint, Upper, Lower): the pieces
  // of the set's loops (millimetres) on the left (Upper) and right (Lower)
  // of the line from StartPoint to EndPoint (drawing units of the first
  // polyline's block). An empty set gives two empty collections.
  static void LwPlinesSplit(DynamicSS& plines, const Variant& start_point, const Variant& end_point,
                            Variant& upper, Variant& lower);
  // LwPlineBoundTo(LwPline, AcadEnt): every characteristic point of AcadEnt
  // (ends of lines and arcs, centres of circles and ellipses, insertion
  // points, a hatch's origin, a point's position) lies inside the polyline
  // or on it; False for an entity with none.
  static bool LwPlineBoundTo(const ObjectRef& lw_pline, const ObjectRef& acad_ent);
  // AddLwPolyline(AcadBlock, Coordinates[, Bulges, Closed]).
  static ObjectRef AddLwPolyline(const ObjectRef& acad_block, const Variant& coordinates,
                                 const Variant& bulges, const Variant& closed);
  // LwRectangle(Point1, Point2[, AcadBlock]): closed, through (x1, y1),
  // (x1, y2), (x2, y2), (x2, y1).
  static ObjectRef LwRectangle(const Variant& point1, const Variant& point2, const ObjectRef& acad_block);
  // TextBoundPline(AText[, Shrink, ShrAbs]): a closed polyline around the
  // text's box (from the lisp side's text box; a multiline text by its
  // extents), scaled about its centre by Shrink, or with ShrAbs widened by
  // Shrink on every side (negative narrows), in the text's block.
  static ObjectRef TextBoundPline(const ObjectRef& text, const Variant& shrink, const Variant& shr_abs);

  // ---- Sub-entities (acad_space_subentities.cpp).

  // SubEntSelect(subEnt, arrNestIDs, PreferBNameWildcards): the host's
  // nested pick; arrNestIDs gets the IDs of the containing references,
  // outermost first. The outermost container whose effective name matches
  // a preferred pattern (case-insensitive Like) becomes subEnt instead, and
  // the chain stops above it.
  static void SubEntSelect(Variant& sub_ent, Variant& nest_ids, const Variant& prefer_names);
  // SubEntHighlight(subEnt, arrNestIDs, CopyEnt): highlights subEnt where
  // it is shown (a placed copy when nested) and keeps it in the shared
  // highlight set; an empty chain highlights subEnt itself.
  static void SubEntHighlight(const ObjectRef& sub_ent, const Variant& nest_ids, Variant& copy_ent);
  // SubEntCopy(subEnt, Matrix, CopyEnt): a copy in the current space placed
  // by the 4 x 4 TransMatrix (an attribute reference copies its block
  // reference): aligned to the placed axes and scaled; a mirrored or
  // unevenly scaled placement is applied whole.
  static void SubEntCopy(const ObjectRef& sub_ent, const Variant& matrix, Variant& copy_ent);
  // TransSubLoop7(subEnt, PP, TransMatrix, Loop7, BasePoint, Normal): the
  // polyline's outline placed by TransMatrix (a TransMatrix or the host's
  // 4 x 4 array) into the current space, in its millimetres; BasePoint the
  // pick point PP in world coordinates; Normal the placed Z axis.
  static void TransSubLoop7(const ObjectRef& sub_ent, const Variant& pp, const Variant& trans_matrix,
                            Variant& loop7, Variant& base_point, Variant& normal);
  // ClearHighlight: takes the highlighting off the shared highlight set.
  static void ClearHighlight();

  // ---- The mailbox to the host's lisp (acad_space_lisp.cpp). Each member
  // writes its argument variables, then USERS1 with its request word, types
  // "(TOVIK_COM) " on the current drawing and reads the answer variables;
  // nothing is trapped. Without the lisp side the answers are whatever the
  // variables held before.

  // VL_RunLisp(Lisp): the text goes to "RunLisp.lsp" in the commons working
  // folder; USERS2 gets that path with forward slashes; the file is
  // deleted as soon as the command returns.
  static void VL_RunLisp(const std::string& lisp);
  // VL_ClearSSSetFirst: the host's pick-first selection is emptied.
  static void VL_ClearSSSetFirst();
  // VL_SelectColor: the colour index the user chose (USERI1).
  static int16_t VL_SelectColor();
  // VL_EntNext(Ent) / VL_EntLast: the entity after Ent in the drawing
  // database / the last one, by the handle the lisp side leaves in USERS2;
  // Nothing for "".
  static ObjectRef VL_EntNext(const ObjectRef& ent);
  static ObjectRef VL_EntLast();
  // VL_CursorPoint: (USERR1, USERR2, USERR3).
  static Variant VL_CursorPoint();

  // ---- Object identity and the preview canvas (acad_space_identity.cpp).

  // NewDwgPicture(Picture): a new canvas attached to Picture; Nothing
  // means the library's own picture box, written back into Picture.
  static ObjectRef NewDwgPicture(Variant& picture);
  // Block_OwnerOf(AcadEnt[, IgnoreBref]): the block that owns AcadEnt;
  // with IgnoreBref True an attribute's reference is passed over to the
  // block holding that reference.
  static ObjectRef Block_OwnerOf(const ObjectRef& acad_ent,
                                 const Variant& ignore_bref = Variant::Missing());
};

}  // namespace tovik

#endif  // TOVIK_TOOLKIT_ACAD_SPACE_H_
