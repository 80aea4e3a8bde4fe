// AcadDocSpace: the drawing's transaction and the command bracket, and the
// member table.
#include "document/acad_doc_space.h"

#include "frame/automation_error.h"
#include "frame/conversions.h"
#include "frame/error_trap.h"
#include "frame/host_link.h"

namespace tovik {

std::shared_ptr<AcadTransaction> AcadDocSpace::GetAcadTransaction(ObjectRef& adwg) {
  if (!adwg) adwg = CurrentDrawing();
  ObjectRef store = HostEvents();
  Variant key(AcadTransaction::kStoreKey);
  Variant owner(adwg);
  auto found = ObjectAs<AcadTransaction>(CallMethod(store, "GetNamedObject", {key, owner}));
  if (found) return found;
  auto made = AcadTransaction::Make();
  made->SetDocument(adwg);
  CallMethod(store, "SetNamedObject", {key, Variant(made), Variant(""), owner});
  found = ObjectAs<AcadTransaction>(CallMethod(store, "GetNamedObject", {key, owner}));
  return found ? found : made;
}

void AcadDocSpace::comBegin() {
  ObjectRef drawing;  // Nothing: the current drawing
  saved_ = GetAcadTransaction(drawing);
  saved_->StartUndoMark();
}

void AcadDocSpace::comEnd() {
  ResumeNext trap;
  trap([&] {
    ObjectRef group = LibraryGroup(CurrentDrawing(), false);
    CallMethod(group, "Delete");
  });
  trap.Clear();
  if (saved_) trap([&] { saved_->EndUndoMark(); });
}

namespace {

// An optional Object argument: Nothing when omitted.
ObjectRef OptionalObject(CallArgs& a, size_t i) {
  if (!a.Has(i)) return nullptr;
  return a[i].IsNothing() ? nullptr : a[i].Object();
}

// Runs `body` with an optional by-reference Object argument and writes the
// object used back into the caller's variable when one was passed.
template <class Body>
Variant WithDrawingArgument(CallArgs& a, Body body) {
  ObjectRef drawing = OptionalObject(a, 0);
  Variant result = body(drawing);
  if (a.Has(0)) a[0] = Variant(drawing);
  return result;
}

}  // namespace

const MemberTable<AcadDocSpace>& AcadDocSpace::Members() {
  static const MemberTable<AcadDocSpace> table = [] {
    using T = AcadDocSpace;
    MemberTable<T> t;
    t.Method("comBegin", [](T& s, CallArgs&) { s.comBegin(); return Variant(); });
    t.Method("comEnd", [](T& s, CallArgs&) { s.comEnd(); return Variant(); });
    // GetAcadTransaction([ADwg]): ADwg is written back.
    t.Method(
        "GetAcadTransaction",
        [](T& s, CallArgs& a) {
          return WithDrawingArgument(a, [&](ObjectRef& d) {
            return Variant(ObjectRef(s.GetAcadTransaction(d)));
          });
        },
        0, 1);
    // GetAcadUnitSetting([ADwg]): ADwg is written back.
    t.Method(
        "GetAcadUnitSetting",
        [](T& s, CallArgs& a) {
          return WithDrawingArgument(a, [&](ObjectRef& d) {
            return Variant(ObjectRef(s.GetAcadUnitSetting(d)));
          });
        },
        0, 1);
    t.Method(
        "GetAcadDLengthUnitID",
        [](T& s, CallArgs& a) { return Variant(s.GetAcadDLengthUnitID(OptionalObject(a, 0))); },
        0, 1);
    t.Method(
        "GetAcad_Millimeter_ScaleFactor",
        [](T& s, CallArgs& a) {
          return Variant(s.GetAcad_Millimeter_ScaleFactor(OptionalObject(a, 0)));
        },
        0, 1);
    // GetAcadDLength(Dist[, ABlock]).
    t.Method(
        "GetAcadDLength",
        [](T& s, CallArgs& a) {
          return Variant(ObjectRef(s.GetAcadDLength(CDbl(a[0]), OptionalObject(a, 1))));
        },
        1, 2);
    // ConvertAcadVectorsToMM(AcadBlock, Vectors): Vectors is rewritten.
    t.Method(
        "ConvertAcadVectorsToMM",
        [](T& s, CallArgs& a) {
          s.ConvertAcadVectorsToMM(OptionalObject(a, 0), a[1]);
          return Variant();
        },
        2, 2);
    t.Method(
        "ConvertMMVectorsToAcad",
        [](T& s, CallArgs& a) {
          s.ConvertMMVectorsToAcad(OptionalObject(a, 0), a[1]);
          return Variant();
        },
        2, 2);
    return t;
  }();
  return table;
}

}  // namespace tovik
