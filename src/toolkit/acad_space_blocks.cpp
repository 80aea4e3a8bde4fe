// AcadSpace: block definitions and references as wholes: replacing
// contents and references, synchronising, external-reference names,
// re-basing, exploding with clean-up, scale factors, nesting.
#include <cmath>

#include "document/spaces.h"
#include "frame/automation_error.h"
#include "frame/conversions.h"
#include "frame/error_trap.h"
#include "frame/host_link.h"
#include "frame/library_state.h"
#include "frame/runtime_text.h"
#include "geometry/vector_service.h"
#include "toolkit/acad_space.h"
#include "xdata/xdata.h"

namespace tovik {
namespace {

// The properties ReplaceBref copies to the new reference, in order.
constexpr const char* kEntityProperties[] = {"Layer",     "TrueColor",     "LineType",
                                             "LinetypeScale", "Lineweight", "Thickness",
                                             "Elevation", "Normal",        "PlotStyleName"};
// The properties a text made from an attribute takes over, in order: the
// alignment before the alignment point.
constexpr const char* kTextProperties[] = {
    "Layer",     "TrueColor",     "StyleName",  "ObliqueAngle", "Rotation",  "UpsideDown",
    "Backward",  "Thickness",     "LinetypeScale", "Lineweight", "Alignment", "TextAlignmentPoint"};

bool TypeLike(const ObjectRef& obj, std::string_view pattern) {
  return Like(obj->TypeName(), pattern).value_or(false);
}

// Copies one property; an object value (a colour) is assigned with Set.
void CopyProperty(const ObjectRef& from, const ObjectRef& to, const char* name) {
  Variant value = GetProperty(from, name);
  if (value.IsObject()) {
    SetProperty(to, name, value.Object());
  } else {
    LetProperty(to, name, value);
  }
}

// Every property of the entity set, each under the trap: one the target
// refuses (a reference has no Thickness) is skipped.
void CopyEntityProperties(const ObjectRef& source, const ObjectRef& target) {
  ResumeNext trap;
  for (const char* name : kEntityProperties) trap([&] { CopyProperty(source, target, name); });
}

// A text in the current space standing for an attribute.
void AttributeToText(const ObjectRef& attribute) {
  ObjectRef text = CallMethod(AcadSpace::CurSpace(), "AddText",
                              {GetProperty(attribute, "TextString"),
                               GetProperty(attribute, "InsertionPoint"),
                               GetProperty(attribute, "Height")})
                       .Object();
  for (const char* name : kTextProperties) CopyProperty(attribute, text, name);
}

ObjectRef LayerOf(const ObjectRef& ent) {
  ObjectRef layers = GetProperty(GetProperty(ent, "Document").Object(), "Layers").Object();
  return CallMethod(layers, "Item", {GetProperty(ent, "Layer")}).Object();
}

}  // namespace

ObjectRef AcadSpace::BlockLoadFromLibrary(const ObjectRef& acad_drawing,
                                          const std::string& file_path) {
  return LoadBlockFromFile(acad_drawing ? acad_drawing : CurrentDrawing(), file_path);
}

void AcadSpace::Block_Override_Block(const ObjectRef& source_bdef, const ObjectRef& target_bdef) {
  ObjectRef doc = GetProperty(source_bdef, "Document").Object();
  ResumeNext trap;
  while (trap([&] {
    CallMethod(CallMethod(target_bdef, "Item", {Variant(int32_t{0})}).Object(), "Delete");
  })) {
  }
  int32_t count = CLng(GetProperty(source_bdef, "Count"));
  if (count == 0) return;
  std::vector<Variant> members;
  for (int32_t i = 0; i < count; ++i) members.push_back(CallMethod(source_bdef, "Item", {Variant(i)}));
  SafeArray array(VarType::kObject, 0, count);
  for (int32_t i = 0; i < count; ++i) array.Set(i, members[static_cast<size_t>(i)]);
  CallMethod(doc, "CopyObjects", {Variant(std::move(array)), Variant(target_bdef)});
  LetProperty(target_bdef, "Origin", GetProperty(source_bdef, "Origin"));
}

void AcadSpace::ReplaceBref(ObjectRef& existing_bref, const std::string& new_bname,
                            const Variant& xdata, const Variant& donot_delete) {
  ObjectRef space = Block_OwnerOf(existing_bref, Variant(false));
  ObjectRef new_ref =
      CallMethod(space, "InsertBlock",
                 {GetProperty(existing_bref, "InsertionPoint"), Variant(new_bname),
                  GetProperty(existing_bref, "XScaleFactor"), GetProperty(existing_bref, "YScaleFactor"),
                  GetProperty(existing_bref, "ZScaleFactor"), GetProperty(existing_bref, "Rotation")})
          .Object();
  CopyEntityProperties(existing_bref, new_ref);
  BlockRef_Synchronize(existing_bref, new_ref);
  if (!xdata.IsMissing() && CBool(xdata)) {
    GlobalInstance<Xdata>()->InheriteAllXdata(existing_bref, new_ref, false);
  }
  if (donot_delete.IsMissing() || !CBool(donot_delete)) CallMethod(existing_bref, "Delete");
  existing_bref = new_ref;
}

void AcadSpace::BlockRef_Synchronize(const ObjectRef& source_block_ref,
                                     const ObjectRef& des_block_ref) {
  if (SameObject(source_block_ref, des_block_ref)) return;
  for (const char* name : {"TrueColor", "LineType", "Layer", "LinetypeScale"}) {
    CopyProperty(source_block_ref, des_block_ref, name);
  }
  // The member name is the one the operation has always called; the host
  // answers it as any unknown member.
  Variant source_atts = CallMethod(source_block_ref, "getattribute");
  Variant des_atts = CallMethod(des_block_ref, "GetAttributes");
  if (des_atts.IsArray() && source_atts.IsArray()) {
    for (const Variant& d : des_atts.Array().Items()) {
      std::string tag = UCase(CStr(GetProperty(d.Object(), "TagString")));
      for (const Variant& s : source_atts.Array().Items()) {
        if (UCase(CStr(GetProperty(s.Object(), "TagString"))) != tag) continue;
        LetProperty(d.Object(), "TextString", GetProperty(s.Object(), "TextString"));
        break;
      }
    }
  }
  if (!CBool(GetProperty(source_block_ref, "IsDynamicBlock")) ||
      !CBool(GetProperty(des_block_ref, "IsDynamicBlock"))) {
    return;
  }
  std::vector<Variant> source_props =
      CallMethod(source_block_ref, "GetDynamicBlockProperties").Array().Items();
  std::vector<Variant> des_props =
      CallMethod(des_block_ref, "GetDynamicBlockProperties").Array().Items();
  for (const Variant& p : source_props) {
    for (const Variant& q : des_props) {
      if (CStr(GetProperty(q.Object(), "PropertyName")) ==
              CStr(GetProperty(p.Object(), "PropertyName")) &&
          CLng(GetProperty(q.Object(), "UnitsType")) == CLng(GetProperty(p.Object(), "UnitsType"))) {
        LetProperty(q.Object(), "Value", GetProperty(p.Object(), "Value"));
      }
    }
  }
}

bool AcadSpace::IsXrefName(const std::string& name) { return Like(name, "*|*").value_or(false); }

std::string AcadSpace::Xref_GetObjectName(const std::string& xname, Variant& xref_name) {
  std::vector<std::string> parts = Split(xname, "|");
  if (parts.size() < 2) return xname;
  xref_name = Variant(parts[0]);
  return parts[1];
}

bool AcadSpace::Block_MoveOrigin(const ObjectRef& acad_block, const Variant& new_origin) {
  geometry::Vec3 to = VectorOf(new_origin);
  if (geometry::Length(to) == 0) return false;
  Variant zero = PointOf({0, 0, 0});
  ResumeNext trap;
  for (int32_t i = 0;; ++i) {
    ObjectRef ent;
    if (!trap([&] { ent = CallMethod(acad_block, "Item", {Variant(i)}).Object(); })) break;
    ObjectRef layer;
    bool locked = false;
    trap([&] {
      layer = LayerOf(ent);
      locked = CBool(GetProperty(layer, "Lock"));
      LetProperty(layer, "Lock", Variant(false));
    });
    trap([&] { CallMethod(ent, "Move", {new_origin, zero}); });
    if (locked) trap([&] { LetProperty(layer, "Lock", Variant(true)); });
  }
  trap([&] {
    LetProperty(acad_block, "Origin", PointOf(VectorOf(GetProperty(acad_block, "Origin")) - to));
  });
  return true;
}

void AcadSpace::ExplodeBlock(const ObjectRef& bref, Variant& err_flag) {
  Variant color = GetProperty(bref, "TrueColor");
  Variant layer = GetProperty(bref, "Layer");
  Variant linetype = GetProperty(bref, "LineType");
  ResumeNext trap;
  Variant pieces;
  if (trap([&] { pieces = CallMethod(bref, "Explode"); })) {
    Variant atts;
    trap([&] { atts = CallMethod(bref, "GetAttributes"); });
    if (atts.IsArray()) {
      for (const Variant& a : atts.Array().Items()) {
        trap([&] {
          if (!CBool(GetProperty(a.Object(), "Invisible"))) {
            AttributeToText(a.Object());
          } else {
            CallMethod(a.Object(), "Delete");
          }
        });
        trap.Clear();
      }
    }
    if (pieces.IsArray()) {
      for (const Variant& item : pieces.Array().Items()) {
        trap([&] {
          const ObjectRef& e = item.Object();
          if (TypeLike(e, "IAcadWipeout*") || TypeLike(e, "IAcadRaster*")) {
            if (Like(LCase(CStr(GetProperty(e, "Layer"))), "*wipeouts").value_or(false)) {
              CallMethod(e, "Delete");
            }
            return;
          }
          if (CStr(GetProperty(e, "Layer")) == "0") LetProperty(e, "Layer", layer);
          if (CLng(GetProperty(GetProperty(e, "TrueColor").Object(), "ColorIndex")) == 0) {
            SetProperty(e, "TrueColor", color.Object());
          }
          if (CStr(GetProperty(e, "LineType")) == "ByBlock") LetProperty(e, "LineType", linetype);
          if (TypeLike(e, "IAcadAttribute*")) {
            if (!CBool(GetProperty(e, "Invisible")) && CBool(GetProperty(e, "Constant"))) {
              AttributeToText(e);
            }
            CallMethod(e, "Delete");
          }
        });
        trap.Clear();
      }
    }
    ObjectRef definition;
    trap([&] {
      ObjectRef blocks = GetProperty(CurrentDrawing(), "Blocks").Object();
      definition = CallMethod(blocks, "Item", {GetProperty(bref, "Name")}).Object();
    });
    trap([&] { CallMethod(bref, "Delete"); });
    trap([&] {
      if (Left(CStr(GetProperty(definition, "Name")), 2) == "*U") CallMethod(definition, "Delete");
    });
  }
  if (trap.Number() != 0) err_flag = Variant(true);
}

void AcadSpace::UniformalizeBlock(const ObjectRef& block_ref) {
  double x = std::fabs(CDbl(GetProperty(block_ref, "XScaleFactor")));
  for (const char* name : {"YScaleFactor", "ZScaleFactor"}) {
    LetProperty(block_ref, name, Variant(CDbl(GetProperty(block_ref, name)) > 0 ? x : -x));
  }
}

void AcadSpace::SetEffectiveScaleF(const ObjectRef& bref, double scale_f) {
  for (const char* name : {"XEffectiveScaleFactor", "YEffectiveScaleFactor", "ZEffectiveScaleFactor"}) {
    LetProperty(bref, name, Variant(scale_f));
  }
}

bool AcadSpace::Block_IsInside_Block(const ObjectRef& big_block, const ObjectRef& small_block) {
  ResumeNext trap;
  for (int32_t i = 0;; ++i) {
    ObjectRef member;
    if (!trap([&] { member = CallMethod(big_block, "Item", {Variant(i)}).Object(); })) return false;
    if (!TypeLike(member, "IAcadBlockReference*")) continue;
    ObjectRef blocks = GetProperty(GetProperty(big_block, "Document").Object(), "Blocks").Object();
    ObjectRef definition =
        CallMethod(blocks, "Item", {GetProperty(member, "EffectiveName")}).Object();
    if (SameObject(definition, small_block) || Block_IsInside_Block(definition, small_block)) {
      return true;
    }
  }
}

}  // namespace tovik
