// AcadDocSpace: document services. This part covers the drawing's
// transaction and command bracket (comBegin / comEnd) and its length unit:
// the unit setting, the length-unit identifier, the millimetre factor,
// lengths with units and the conversion of vectors between drawing units and
// millimetres. (Layer and block members are added beside these.)
//
// A global class: the library keeps one implicit instance. It keeps one
// field, the transaction saved by the last comBegin; host objects are
// borrowed for the length of a call.
#ifndef TOVIK_DOCUMENT_ACAD_DOC_SPACE_H_
#define TOVIK_DOCUMENT_ACAD_DOC_SPACE_H_

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "document/acad_transaction.h"
#include "frame/member_table.h"
#include "geometry/dlength.h"
#include "geometry/unit_setting.h"

namespace tovik {

class AcadDocSpace : public DispatchObject<AcadDocSpace> {
 public:
  static constexpr std::string_view kClassName = "AcadDocSpace";

  static std::shared_ptr<AcadDocSpace> Make() { return std::make_shared<AcadDocSpace>(); }
  static ObjectRef MakeGlobal() { return Make(); }

  std::string_view TypeName() const override { return kClassName; }
  static const MemberTable<AcadDocSpace>& Members();

  // ---- transactions (acad_doc_space.cpp)

  // GetAcadTransaction(ADwg): the one transaction of drawing ADwg (in/out:
  // Nothing is replaced by the current drawing, written back). Found in the
  // host-event object's named-object store under "AcadTransaction" with
  // ADwg as owner; made, stored and fetched back when there is none. No
  // trap: without a host link the store call raises 91.
  std::shared_ptr<AcadTransaction> GetAcadTransaction(ObjectRef& adwg);

  // comBegin: opens an undo level on the current drawing's transaction and
  // remembers that transaction for comEnd.
  void comBegin();

  // comEnd: deletes the group "TOVIK_COM" of whatever drawing is current
  // now, then closes the undo level on the transaction comBegin remembered
  // (the drawing current at comBegin). Trapped: never raises.
  void comEnd();

  // ---- units (acad_doc_space_units.cpp)

  // GetAcadUnitSetting(ADwg): the UnitSetting of drawing ADwg (in/out as in
  // GetAcadTransaction), from its transaction without refreshing.
  std::shared_ptr<UnitSetting> GetAcadUnitSetting(ObjectRef& adwg);

  // GetAcadDLengthUnitID(ABlock): the LengthUnitID of block definition or
  // drawing ABlock (Nothing: the current drawing). Raises 2411 "Unsupported
  // Length Unit. Supported Units are mm, cm, dm, m, ft and inch".
  int16_t GetAcadDLengthUnitID(const ObjectRef& ablock);

  // GetAcad_Millimeter_ScaleFactor(ABlock): the length of one millimetre in
  // ABlock's unit (drawing units per millimetre). Raises as above.
  double GetAcad_Millimeter_ScaleFactor(const ObjectRef& ablock);

  // GetAcadDLength(Dist, ABlock): a new DLength holding Dist in ABlock's
  // unit. Raises as above.
  std::shared_ptr<DLength> GetAcadDLength(double dist, const ObjectRef& ablock);

  // ConvertAcadVectorsToMM(AcadBlock, Vectors): divides every vector of
  // Vectors (in/out: an array of arrays of numbers, rewritten in place as
  // Double arrays) by AcadBlock's millimetre factor. Elements are read from
  // index 0 whatever the lower bound, and the walk stops quietly at the
  // first element that is missing or no numeric array: an array with lower
  // bound 1 is left wholly unchanged. Raises the unsupported-unit error
  // before converting anything.
  void ConvertAcadVectorsToMM(const ObjectRef& acad_block, Variant& vectors);

  // ---- Layers, blocks and scratch blocks (acad_doc_space_blocks.cpp).
  // A drawing argument that is Nothing means the current drawing and is
  // written back.

  // JBlock(BMark[, AcadDrawing]): the block definition BMark of the
  // drawing, loaded from the block library folder (BMark.dwg, or BMark.dxf
  // on the headless host) when the drawing lacks it; Nothing when neither.
  ObjectRef JBlock(const std::string& bmark, ObjectRef& acad_drawing);
  // GetColor(ColorIndex): a new colour object of that index.
  ObjectRef GetColor(int16_t color_index);
  // JLayer(LaMark[, AcadDrawing][, XPrefix]): the layer of a mark of the
  // layer-mark table ("Rebar", "DET_STEEL"; marks compare without regard to
  // case), made when missing, "X-" before its name with XPrefix; Nothing for
  // another mark.
  ObjectRef JLayer(const std::string& la_mark, ObjectRef& acad_drawing, bool x_prefix);
  // DefaultTextStyle: the current drawing's text style "Tovik Studio",
  // made (Microsoft Sans Serif, height 0) when missing.
  ObjectRef DefaultTextStyle();
  // DefaultNoPrintLayer: the current drawing's layer "Not to Print", made
  // when missing, never plotted.
  ObjectRef DefaultNoPrintLayer();
  // DefaultLayer(LName[, AcadDrawing][, ColorIndex]): the layer LName, made
  // when missing.
  ObjectRef DefaultLayer(const std::string& lname, ObjectRef& acad_drawing, int16_t color_index);
  // ClearBlockEntities(ABlock): deletes the block's entities.
  void ClearBlockEntities(const ObjectRef& ablock);
  // NewAnonyBlock(ABlockOrDwg[, RetainBref]): a new, empty anonymous block
  // definition, made by converting a reference to a scratch block in the
  // given block (or the current space of the given drawing); the reference
  // stays when RetainBref. The current drawing's active layer ends
  // unlocked.
  ObjectRef NewAnonyBlock(const ObjectRef& ablock_or_dwg, bool retain_bref);
  // InvisibleSpace(AcadDrawing): the drawing's hidden scratch block, kept in
  // the drawing through the invisible holder ("InvisibleRef").
  ObjectRef InvisibleSpace(ObjectRef& acad_drawing);
  // TempAnonyBlock(AcadDrawing[, idComment][, ClearBlock]): the scratch
  // anonymous block whose Comments are idComment, made on first use;
  // emptied when ClearBlock.
  ObjectRef TempAnonyBlock(ObjectRef& acad_drawing, const std::string& id_comment,
                           bool clear_block);
  // PurgeTempAnonyBlocks(AcadDrawing): deletes every scratch block that can
  // be deleted, with its reference.
  void PurgeTempAnonyBlocks(ObjectRef& acad_drawing);

  // ConvertMMVectorsToAcad(AcadBlock, Vectors): as ConvertAcadVectorsToMM,
  // multiplying by the factor (millimetres to drawing units).
  void ConvertMMVectorsToAcad(const ObjectRef& acad_block, Variant& vectors);

  // The transaction saved by the last comBegin, or nullptr.
  const std::shared_ptr<AcadTransaction>& saved_transaction() const { return saved_; }

 private:
  std::shared_ptr<AcadTransaction> saved_;
};

}  // namespace tovik

#endif  // TOVIK_DOCUMENT_ACAD_DOC_SPACE_H_
