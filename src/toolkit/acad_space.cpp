#include "toolkit/acad_space.h"

#include "frame/automation_error.h"
#include "frame/conversions.h"
#include "frame/value_helpers.h"
#include "geometry/vector_service.h"
#include "selection/dynamic_ss.h"
#include "toolkit/object_identity.h"

namespace tovik {

void AcadSpace::ArrDbls2ArrPoints(const Variant& arr_dbl, Variant& arr_point,
                                  const Variant& xy_only) {
  bool xy = !xy_only.IsMissing() && CBool(xy_only);
  int32_t step = xy ? 2 : 3;
  Variant list = arr_dbl;  // arr_dbl and arr_point may be one variable
  const SafeArray& values = list.Array();
  for (int64_t i = values.LBound(); i <= values.UBound(); i += step) {
    int32_t at = static_cast<int32_t>(i);
    double x = CDbl(values.At(at));
    double y = CDbl(values.At(at + 1));
    double z = xy ? 0.0 : CDbl(values.At(at + 2));
    InsertElement(arr_point, MakePoint(x, y, z));
  }
}

namespace {

ObjectRef ObjectArg(CallArgs& a, size_t i) {
  return a.Has(i) && !a[i].IsNothing() ? a[i].Object() : nullptr;
}

void AddAttributeMembers(MemberTable<AcadSpace>& t) {
  t.Method(
      "AttRef_Get",
      [](AcadSpace&, CallArgs& a) {
        return Variant(AcadSpace::AttRef_Get(a[0].Object(), CStr(a[1]), a[2], a[3]));
      },
      2, 4);
  t.Method(
      "AttDefs_Get",
      [](AcadSpace&, CallArgs& a) { return AcadSpace::AttDefs_Get(a[0].Object(), CStr(a[1])); }, 2,
      2);
  t.Method(
      "AttDef_Get",
      [](AcadSpace&, CallArgs& a) {
        return Variant(AcadSpace::AttDef_Get(a[0].Object(), CStr(a[1])));
      },
      2, 2);
  // PropertyName and newValue are passed by value: the member's writes do
  // not reach the caller's variables.
  t.Method(
      "DynamicProperty_Get",
      [](AcadSpace&, CallArgs& a) {
        Variant new_value = a[2];
        return AcadSpace::DynamicProperty_Get(a[0].Object(), CStr(a[1]), new_value, a[3], a[4]);
      },
      2, 5);
  t.Method(
      "DynamicProperty_GetPoint",
      [](AcadSpace&, CallArgs& a) {
        return AcadSpace::DynamicProperty_GetPoint(a[0].Object(), CStr(a[1]));
      },
      2, 2);
  t.Method(
      "DynamicProperty_LetPoint",
      [](AcadSpace&, CallArgs& a) {
        AcadSpace::DynamicProperty_LetPoint(a[0].Object(), CStr(a[1]), a[2]);
        return Variant();
      },
      3, 3);
  t.Method(
      "DynamicProperty_GetPolarPoint",
      [](AcadSpace&, CallArgs& a) {
        return AcadSpace::DynamicProperty_GetPolarPoint(a[0].Object(), CStr(a[1]));
      },
      2, 2);
  t.Method(
      "DynamicProperty_LetPolarPoint",
      [](AcadSpace&, CallArgs& a) {
        AcadSpace::DynamicProperty_LetPolarPoint(a[0].Object(), CStr(a[1]), a[2]);
        return Variant();
      },
      3, 3);
}

void AddBlockMembers(MemberTable<AcadSpace>& t) {
  // BlockLoadFromLibrary(AcadDrawing, FilePath[, BlockName][, Redefine]):
  // the block is named after the file; the other two are accepted as the
  // callers pass them ("", False).
  t.Method(
      "BlockLoadFromLibrary",
      [](AcadSpace&, CallArgs& a) {
        return Variant(AcadSpace::BlockLoadFromLibrary(ObjectArg(a, 0), CStr(a[1])));
      },
      2, 4);
  t.Method(
      "Block_OwnerOf",
      [](AcadSpace&, CallArgs& a) { return Variant(AcadSpace::Block_OwnerOf(a[0].Object(), a[1])); },
      1, 2);
  t.Method(
      "Block_Override_Block",
      [](AcadSpace&, CallArgs& a) {
        AcadSpace::Block_Override_Block(a[0].Object(), a[1].Object());
        return Variant();
      },
      2, 2);
  t.Method(
      "ReplaceBref",
      [](AcadSpace&, CallArgs& a) {
        ObjectRef bref = a[0].Object();
        AcadSpace::ReplaceBref(bref, CStr(a[1]), a[2], a[3]);
        a[0] = Variant(bref);
        return Variant();
      },
      2, 4).Outs({0});
  t.Method(
      "BlockRef_Synchronize",
      [](AcadSpace&, CallArgs& a) {
        AcadSpace::BlockRef_Synchronize(a[0].Object(), a[1].Object());
        return Variant();
      },
      2, 2);
  t.Method(
      "IsXrefName", [](AcadSpace&, CallArgs& a) { return Variant(AcadSpace::IsXrefName(CStr(a[0]))); },
      1, 1);
  // XName is passed by value.
  t.Method(
      "Xref_GetObjectName",
      [](AcadSpace&, CallArgs& a) {
        return Variant(AcadSpace::Xref_GetObjectName(CStr(a[0]), a[1]));
      },
      2, 2);
  t.Method(
      "Block_MoveOrigin",
      [](AcadSpace&, CallArgs& a) {
        return Variant(AcadSpace::Block_MoveOrigin(a[0].Object(), a[1]));
      },
      2, 2);
  t.Method(
      "ExplodeBlock",
      [](AcadSpace&, CallArgs& a) {
        AcadSpace::ExplodeBlock(a[0].Object(), a[1]);
        return Variant();
      },
      2, 2);
  t.Method(
      "UniformalizeBlock",
      [](AcadSpace&, CallArgs& a) {
        AcadSpace::UniformalizeBlock(a[0].Object());
        return Variant();
      },
      1, 1);
  t.Method(
      "SetEffectiveScaleF",
      [](AcadSpace&, CallArgs& a) {
        AcadSpace::SetEffectiveScaleF(a[0].Object(), CDbl(a[1]));
        return Variant();
      },
      2, 2);
  t.Method(
      "Block_IsInside_Block",
      [](AcadSpace&, CallArgs& a) {
        return Variant(AcadSpace::Block_IsInside_Block(a[0].Object(), a[1].Object()));
      },
      2, 2);
}

void AddTransformMembers(MemberTable<AcadSpace>& t) {
  t.Method(
      "TranslatePoint",
      [](AcadSpace&, CallArgs& a) {
        AcadSpace::TranslatePoint(a[0], a[1], CDbl(a[2]), CDbl(a[3]), CDbl(a[4]), a[5]);
        return Variant();
      },
      5, 6).Outs({0});
  t.Method(
      "TranslatePointFromBlock",
      [](AcadSpace&, CallArgs& a) {
        AcadSpace::TranslatePointFromBlock(a[0], a[1].Object(), a[2], a[3], a[4]);
        return Variant();
      },
      3, 5).Outs({2});
  t.Method(
      "TranslatePointToBlock",
      [](AcadSpace&, CallArgs& a) {
        AcadSpace::TranslatePointToBlock(a[0], a[1].Object(), a[2], a[3], a[4]);
        return Variant();
      },
      3, 5).Outs({2});
  t.Method(
      "BRef_TransMatrix",
      [](AcadSpace&, CallArgs& a) { return Variant(AcadSpace::BRef_TransMatrix(a[0].Object(), a[1])); },
      1, 2);
  t.Method(
      "BRef_UCS",
      [](AcadSpace&, CallArgs& a) { return Variant(AcadSpace::BRef_UCS(a[0].Object(), a[1])); },
      1, 2);
  t.Method(
      "TranslateCoordinates",
      [](AcadSpace&, CallArgs& a) {
        AcadSpace::TranslateCoordinates(ObjectArg(a, 0), a[1], CLng(a[2]), CLng(a[3]), a[4]);
        return Variant();
      },
      4, 5).Outs({1});
  t.Method("UCSPoint", [](AcadSpace&, CallArgs& a) { return AcadSpace::UCSPoint(a[0]); }, 1, 1);
  t.Method("WCSPoint", [](AcadSpace&, CallArgs& a) { return AcadSpace::WCSPoint(a[0]); }, 1, 1);
  t.Method(
      "Align3D",
      [](AcadSpace&, CallArgs& a) {
        AcadSpace::Align3D(a[0].Object(), a[1], a[2], a[3], a[4], a[5], a[6]);
        return Variant();
      },
      7, 7);
  // GetAcadScreenWCS(ThisDrawing[, ViewCentre, TLCorner, AcadHeight,
  // AcadWidth, WindowHeight, WindowWidth, TwistAngle, ViewDir]): every
  // output passed is written.
  t.Method(
      "GetAcadScreenWCS",
      [](AcadSpace&, CallArgs& a) {
        AcadSpace::ScreenView v = AcadSpace::GetAcadScreenWCS(a[0].Object());
        const Variant outs[] = {v.view_centre,          v.tl_corner,
                                Variant(v.acad_height), Variant(v.acad_width),
                                Variant(v.window_height), Variant(v.window_width),
                                Variant(v.twist_angle), v.view_dir};
        for (size_t i = 0; i < 8; ++i) {
          if (a.Has(i + 1)) a[i + 1] = outs[i];
        }
        return Variant();
      },
      1, 9).Outs({1, 2, 3, 4, 5, 6, 7, 8});
  t.Method(
      "CurSpace", [](AcadSpace&, CallArgs& a) { return Variant(AcadSpace::CurSpace(ObjectArg(a, 0))); },
      0, 1);
}

void AddIdentityMembers(MemberTable<AcadSpace>& t) {
  t.Method(
      "NewDwgPicture", [](AcadSpace&, CallArgs& a) { return Variant(AcadSpace::NewDwgPicture(a[0])); },
      1, 1).Outs({0});
  t.Property("SortEntsTable", [](AcadSpace&, CallArgs&) {
    ObjectRef block;
    return Variant(SortentsTable(block));
  });
  t.Method("ObjectID", [](AcadSpace&, CallArgs& a) { return ObjectIdOf(a[0].Object()); }, 1, 1);
  t.Method("OwnerID", [](AcadSpace&, CallArgs& a) { return OwnerIdOf(a[0].Object()); }, 1, 1);
  t.Method(
      "ObjectIDToObject",
      [](AcadSpace&, CallArgs& a) {
        ObjectRef doc = ObjectArg(a, 1);
        ObjectRef found = ObjectFromId(a[0], doc);
        if (a.Has(1)) a[1] = Variant(doc);
        return Variant(found);
      },
      1, 2).Outs({1});
}

std::shared_ptr<DynamicSS> SetArg(const Variant& v) {
  std::shared_ptr<DynamicSS> set = ObjectAs<DynamicSS>(v);
  if (!set) throw v.IsObject() ? errors::TypeMismatch() : errors::ObjectNotSet();
  return set;
}

template <class T>
std::shared_ptr<T> ObjectOf(const Variant& v) {
  std::shared_ptr<T> object = ObjectAs<T>(v);
  if (!object) throw v.IsObject() ? errors::TypeMismatch() : errors::ObjectNotSet();
  return object;
}

void AddPolylineMembers(MemberTable<AcadSpace>& t) {
  using S = AcadSpace;
  t.Method("LwPlineCoords", [](S&, CallArgs& a) { return S::LwPlineCoords(a[0].Object(), a[1], a[2]), Variant(); },
           3, 3).Outs({1, 2});
  t.Method(
      "LwPlineToLoop7",
      [](S&, CallArgs& a) { return Variant(ObjectRef(S::LwPlineToLoop7(a[0].Object(), a[1], a[2]))); }, 1, 3);
  t.Method(
      "LwPlineFromLoop7",
      [](S&, CallArgs& a) { return Variant(S::LwPlineFromLoop7(*ObjectOf<Loop7>(a[0]), ObjectArg(a, 1), a[2])); },
      1, 3);
  t.Method(
      "LwPlinesToLoop7s",
      [](S&, CallArgs& a) { return Variant(ObjectRef(S::LwPlinesToLoop7s(*SetArg(a[0]), a[1]))); }, 1, 2);
  // LwPlineFromLoop7s(Loop7s, AcadBlock, Hatch, AcadHatch, PatternType,
  // PatternName, HatchObjType, NoMMConv).
  t.Method(
      "LwPlineFromLoop7s",
      [](S&, CallArgs& a) {
        S::HatchRequest hatch;
        hatch.make = a.Has(2) && CBool(a[2]);
        if (a.Has(4)) hatch.pattern_type = CLng(a[4]);
        if (a.Has(5)) hatch.pattern_name = CStr(a[5]);
        if (a.Has(6)) hatch.object_type = CLng(a[6]);
        hatch.no_mm_conversion = a[7];
        hatch.made = &a[3];
        return Variant(ObjectRef(S::LwPlineFromLoop7s(*ObjectOf<Loop7s>(a[0]), ObjectArg(a, 1), hatch)));
      },
      1, 8).Outs({3});
  t.Method(
      "LwPlinesSplit",
      [](S&, CallArgs& a) { return S::LwPlinesSplit(*SetArg(a[0]), a[1], a[2], a[3], a[4]), Variant(); }, 5, 5).Outs({3, 4});
  t.Method(
      "LwPlineBoundTo",
      [](S&, CallArgs& a) { return Variant(S::LwPlineBoundTo(a[0].Object(), a[1].Object())); }, 2, 2);
  t.Method(
      "AddLwPolyline",
      [](S&, CallArgs& a) { return Variant(S::AddLwPolyline(ObjectArg(a, 0), a[1], a[2], a[3])); }, 2, 4);
  t.Method(
      "LwRectangle", [](S&, CallArgs& a) { return Variant(S::LwRectangle(a[0], a[1], ObjectArg(a, 2))); }, 2, 3);
  t.Method(
      "TextBoundPline",
      [](S&, CallArgs& a) { return Variant(S::TextBoundPline(a[0].Object(), a[1], a[2])); }, 1, 3);
}

void AddSubEntityMembers(MemberTable<AcadSpace>& t) {
  using S = AcadSpace;
  t.Method("SubEntSelect", [](S&, CallArgs& a) { return S::SubEntSelect(a[0], a[1], a[2]), Variant(); }, 2, 3).Outs({0, 1});
  t.Method(
      "SubEntHighlight", [](S&, CallArgs& a) { return S::SubEntHighlight(a[0].Object(), a[1], a[2]), Variant(); },
      3, 3).Outs({2});
  t.Method("SubEntCopy", [](S&, CallArgs& a) { return S::SubEntCopy(a[0].Object(), a[1], a[2]), Variant(); },
           3, 3).Outs({2});
  t.Method(
      "TransSubLoop7",
      [](S&, CallArgs& a) { return S::TransSubLoop7(a[0].Object(), a[1], a[2], a[3], a[4], a[5]), Variant(); }, 3,
      6).Outs({3, 4, 5});
  t.Method("ClearHighlight", [](S&, CallArgs&) { return S::ClearHighlight(), Variant(); });
}

void AddLispMembers(MemberTable<AcadSpace>& t) {
  t.Method(
      "VL_RunLisp", [](AcadSpace&, CallArgs& a) { return AcadSpace::VL_RunLisp(CStr(a[0])), Variant(); }, 1,
      1);
  t.Method("VL_ClearSSSetFirst", [](AcadSpace&, CallArgs&) { return AcadSpace::VL_ClearSSSetFirst(), Variant(); });
  t.Method("VL_SelectColor", [](AcadSpace&, CallArgs&) { return Variant(AcadSpace::VL_SelectColor()); });
  t.Method(
      "VL_EntNext", [](AcadSpace&, CallArgs& a) { return Variant(AcadSpace::VL_EntNext(a[0].Object())); }, 1, 1);
  t.Method("VL_EntLast", [](AcadSpace&, CallArgs&) { return Variant(AcadSpace::VL_EntLast()); });
  t.Method("VL_CursorPoint", [](AcadSpace&, CallArgs&) { return AcadSpace::VL_CursorPoint(); });
}

}  // namespace

// Members in interface order, by family. The frame registers the value
// members; the attribute, block reference, transform, polyline, sub-entity,
// lisp and identity families register theirs as they are written.
const MemberTable<AcadSpace>& AcadSpace::Members() {
  static const MemberTable<AcadSpace> table = [] {
    MemberTable<AcadSpace> t;
    t.Method(
        "ArrDbls2ArrPoints",
        [](AcadSpace&, CallArgs& a) {
          ArrDbls2ArrPoints(a[0], a[1], a[2]);
          return Variant();
        },
        2, 3).Outs({1});
    AddAttributeMembers(t);
    AddBlockMembers(t);
    AddTransformMembers(t);
    AddPolylineMembers(t);
    AddSubEntityMembers(t);
    AddLispMembers(t);
    AddIdentityMembers(t);
    return t;
  }();
  return table;
}

}  // namespace tovik
