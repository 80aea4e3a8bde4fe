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

namespace {

// A drawing argument: Nothing or Missing reads as Nothing (the current
// drawing); the drawing used is written back into the caller's variable.
template <class F>
Variant WithDrawing(CallArgs& a, size_t i, F&& body) {
  ObjectRef drawing = a.Has(i) && !a[i].IsNothing() ? a[i].Object() : nullptr;
  Variant result = body(drawing);
  if (a.Has(i)) a[i] = Variant(drawing);
  return result;
}

bool OptionalFlag(CallArgs& a, size_t i) { return a.Has(i) && CBool(a[i]); }

void AddBlockMembers(MemberTable<AcadDocSpace>& t) {
  using T = AcadDocSpace;
  t.Method(
      "JBlock",
      [](T& s, CallArgs& a) {
        return WithDrawing(a, 1, [&](ObjectRef& d) { return Variant(s.JBlock(CStr(a[0]), d)); });
      },
      1, 2);
  t.Method(
      "GetColor", [](T& s, CallArgs& a) { return Variant(s.GetColor(CInt(a[0]))); }, 1, 1);
  t.Method(
      "JLayer",
      [](T& s, CallArgs& a) {
        return WithDrawing(a, 1, [&](ObjectRef& d) {
          return Variant(s.JLayer(CStr(a[0]), d, OptionalFlag(a, 2)));
        });
      },
      1, 3);
  t.Property("DefaultTextStyle", [](T& s, CallArgs&) { return Variant(s.DefaultTextStyle()); });
  t.Property("DefaultNoPrintLayer",
             [](T& s, CallArgs&) { return Variant(s.DefaultNoPrintLayer()); });
  t.Method(
      "DefaultLayer",
      [](T& s, CallArgs& a) {
        int16_t color = a.Has(2) ? CInt(a[2]) : int16_t{-1};
        return WithDrawing(a, 1, [&](ObjectRef& d) {
          return Variant(s.DefaultLayer(CStr(a[0]), d, color));
        });
      },
      1, 3);
  t.Method(
      "ClearBlockEntities",
      [](T& s, CallArgs& a) {
        s.ClearBlockEntities(a[0].Object());
        return Variant();
      },
      1, 1);
  t.Method(
      "NewAnonyBlock",
      [](T& s, CallArgs& a) { return Variant(s.NewAnonyBlock(a[0].Object(), OptionalFlag(a, 1))); },
      1, 2);
  t.Method(
      "InvisibleSpace",
      [](T& s, CallArgs& a) {
        return WithDrawing(a, 0, [&](ObjectRef& d) { return Variant(s.InvisibleSpace(d)); });
      },
      1, 1);
  t.Method(
      "TempAnonyBlock",
      [](T& s, CallArgs& a) {
        std::string id = a.Has(1) ? CStr(a[1]) : std::string();
        return WithDrawing(a, 0, [&](ObjectRef& d) {
          return Variant(s.TempAnonyBlock(d, id, OptionalFlag(a, 2)));
        });
      },
      1, 3);
  t.Method(
      "PurgeTempAnonyBlocks",
      [](T& s, CallArgs& a) {
        return WithDrawing(a, 0, [&](ObjectRef& d) {
          s.PurgeTempAnonyBlocks(d);
          return Variant();
        });
      },
      1, 1);
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
        0, 1).Outs({0});
    // GetAcadUnitSetting([ADwg]): ADwg is written back.
    t.Method(
        "GetAcadUnitSetting",
        [](T& s, CallArgs& a) {
          return WithDrawingArgument(a, [&](ObjectRef& d) {
            return Variant(ObjectRef(s.GetAcadUnitSetting(d)));
          });
        },
        0, 1).Outs({0});
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
    AddBlockMembers(t);
    return t;
  }();
  return table;
}

}  // namespace tovik
