#include "document/acad_transaction.h"

#include "frame/automation_error.h"
#include "frame/conversions.h"
#include "frame/error_trap.h"
#include "frame/library_state.h"
#include "xdata/xdata.h"

namespace tovik {
namespace {

constexpr std::string_view kUnitSettingVar = "UnitSetting";
constexpr std::string_view kOrgLockVar = "OrgLock";
// The UNDO command with a count of one; the trailing blank is Enter.
constexpr std::string_view kUndoCommand = "Undo 1 ";

// Adds one level to a 16-bit depth; raises overflow at the limit, leaving
// the depth as it was.
void Deepen(int16_t& depth) {
  if (depth == INT16_MAX) throw errors::Overflow();
  ++depth;
}

}  // namespace

// Writes the unit setting back whenever it announces a change. Owned by the
// transaction, so the back-pointer never outlives it.
class AcadTransaction::UnitSettingListener : public EventSink {
 public:
  explicit UnitSettingListener(AcadTransaction* owner) : owner_(owner) {}
  void OnEvent(std::string_view event, std::span<Variant>) override {
    if (event == "Modified") owner_->SaveUnitSetting();
  }

 private:
  AcadTransaction* owner_;
};

AcadTransaction::AcadTransaction()
    : listener_(std::make_shared<UnitSettingListener>(this)) {}

AcadTransaction::~AcadTransaction() { DropUnitSetting(); }

std::string AcadTransaction::Name() const { return CStr(GetProperty(document_, "Name")); }

ObjectRef AcadTransaction::ModelSpace() const {
  return GetProperty(document_, "ModelSpace").Object();
}

std::shared_ptr<UnitSetting> AcadTransaction::UnitSetting(bool refresh) {
  bool made = false;
  if (!unit_setting_) {
    unit_setting_ = tovik::UnitSetting::Make();
    unit_setting_->Events()->Connect(listener_);
    made = true;
  }
  if (made || refresh) {
    Variant stored = GlobalInstance<Xdata>()->GetAppXdata(Variant(ModelSpace()), kUnitSettingVar,
                                                          Variant(), xTable);
    if (!stored.IsEmpty()) unit_setting_->LoadTable(stored);
  }
  return unit_setting_;
}

void AcadTransaction::SaveUnitSetting() {
  if (!document_ || !unit_setting_) return;
  GlobalInstance<Xdata>()->SetAppXData(Variant(ModelSpace()), kUnitSettingVar,
                                       unit_setting_->ToTable(), xTable);
}

void AcadTransaction::DropUnitSetting() {
  if (unit_setting_) unit_setting_->Events()->Disconnect(listener_.get());
  unit_setting_.reset();
}

void AcadTransaction::StartUndoMark() {
  Deepen(undo_depth_);
  if (undo_depth_ == 1) CallMethod(document_, "StartUndoMark");
}

void AcadTransaction::EndUndoMark() {
  if (undo_depth_ == 0) return;
  if (--undo_depth_ == 0) CallMethod(document_, "EndUndoMark");
}

void AcadTransaction::StartUnlockLayers() {
  Deepen(unlock_depth_);
  if (unlock_depth_ == 1) UnlockLayers();
}

void AcadTransaction::EndUnlockLayers() {
  if (unlock_depth_ == 0) return;
  if (--unlock_depth_ == 0) RelockLayers();
}

void AcadTransaction::UnlockLayers() {
  ObjectRef layers = GetProperty(document_, "Layers").Object();
  int32_t count = CLng(GetProperty(layers, "Count"));
  Xdata& xdata = *GlobalInstance<Xdata>();
  for (int32_t i = 0; i < count; ++i) {
    // Layers are fetched with a 16-bit index.
    ObjectRef layer = GetProperty(layers, "Item", {Variant(CInt(Variant(i)))}).Object();
    if (!CBool(GetProperty(layer, "Lock"))) continue;
    xdata.SetAppXData(Variant(layer), kOrgLockVar, Variant(true), xBoolean);
    LetProperty(layer, "Lock", Variant(false));
  }
}

void AcadTransaction::RelockLayers() {
  ObjectRef layers = GetProperty(document_, "Layers").Object();
  int32_t count = CLng(GetProperty(layers, "Count"));
  Xdata& xdata = *GlobalInstance<Xdata>();
  for (int32_t i = 0; i < count; ++i) {
    ObjectRef layer = GetProperty(layers, "Item", {Variant(CInt(Variant(i)))}).Object();
    Variant marked = xdata.GetAppXdata(Variant(layer), kOrgLockVar, Variant(false), xBoolean);
    if (!CBool(marked)) continue;
    LetProperty(layer, "Lock", Variant(true));
    xdata.DeleteAppXdata(Variant(layer), kOrgLockVar);
  }
}

void AcadTransaction::Close7() {
  ResumeNext trap;
  if (undo_depth_ >= 1) {
    undo_depth_ = 1;
    trap([&] { EndUndoMark(); });
  }
  if (unlock_depth_ >= 1) {
    unlock_depth_ = 1;
    trap([&] { EndUnlockLayers(); });
  }
  document_.reset();
  DropUnitSetting();
}

void AcadTransaction::Undo() { CallMethod(document_, "SendCommand", {Variant(kUndoCommand)}); }

const MemberTable<AcadTransaction>& AcadTransaction::Members() {
  static const MemberTable<AcadTransaction> table = [] {
    using T = AcadTransaction;
    MemberTable<T> t;
    t.Property("AcadDocument", [](T& s, CallArgs&) { return Variant(s.AcadDocument()); });
    t.Property("Name", [](T& s, CallArgs&) { return Variant(s.Name()); });
    // UnitSetting([Refresh = False]).
    t.Property(
        "UnitSetting",
        [](T& s, CallArgs& a) {
          return Variant(ObjectRef(s.UnitSetting(a.Has(0) && CBool(a[0]))));
        },
        nullptr, nullptr, 0, 1);
    t.Method("StartUndoMark", [](T& s, CallArgs&) { s.StartUndoMark(); return Variant(); });
    t.Method("EndUndoMark", [](T& s, CallArgs&) { s.EndUndoMark(); return Variant(); });
    t.Method("StartUnlockLayers",
             [](T& s, CallArgs&) { s.StartUnlockLayers(); return Variant(); });
    t.Method("EndUnlockLayers", [](T& s, CallArgs&) { s.EndUnlockLayers(); return Variant(); });
    t.Method("Close7", [](T& s, CallArgs&) { s.Close7(); return Variant(); });
    t.Method("Undo", [](T& s, CallArgs&) { s.Undo(); return Variant(); });
    return t;
  }();
  return table;
}

}  // namespace tovik
