// Transactions against drawings of the headless host: nested undo and
// unlock brackets checked on the host's undo journal and layer locks, the
// marks kept in the drawing, the shared store, the unit setting and the
// command bracket.
#include "document/acad_transaction.h"

#include <gtest/gtest.h>

#include <string>

#include "document/acad_doc_space.h"
#include "frame/conversions.h"
#include "frame/host_link.h"
#include "frame/library_state.h"
#include "tests/support/host_fixture.h"
#include "xdata/xdata.h"

namespace tovik {
namespace {

using Transactions = LinkedHostTest;

int32_t ModelSpaceCount(const ObjectRef& doc) {
  return CLng(GetProperty(GetProperty(doc, "ModelSpace").Object(), "Count"));
}

ObjectRef AddLayer(const ObjectRef& doc, std::string_view name, bool locked) {
  ObjectRef layers = GetProperty(doc, "Layers").Object();
  ObjectRef layer = CallMethod(layers, "Add", {Variant(name)}).Object();
  LetProperty(layer, "Lock", Variant(locked));
  return layer;
}

bool Locked(const ObjectRef& layer) { return CBool(GetProperty(layer, "Lock")); }

// The layer's "Tovik COM" run as "code value|...", or "none".
std::string Marks(const ObjectRef& layer) {
  Variant args[3] = {Variant("Tovik COM"), Variant(), Variant()};
  CallMethodRef(layer, "GetXData", args);
  if (!args[1].IsArray()) return "none";
  std::string out;
  for (int32_t i = 0; i < args[1].Array().Count(); ++i) {
    if (i > 0) out += "|";
    out += CStr(args[1].Array().At(i)) + " " + CStr(args[2].Array().At(i));
  }
  return out;
}

std::shared_ptr<AcadTransaction> TransactionOf(ObjectRef doc) {
  return GlobalInstance<AcadDocSpace>()->GetAcadTransaction(doc);
}

host::Document& HostDocument(const ObjectRef& doc) {
  return dynamic_cast<host::Document&>(*doc);
}

TEST_F(Transactions, NestedUndoMarksMakeOneHostGroup) {
  ObjectRef doc = ActiveDocument();
  auto t = TransactionOf(doc);
  int32_t before = ModelSpaceCount(doc);
  t->StartUndoMark();
  AddLine(doc, 0);
  t->StartUndoMark();  // nested: no second host group
  AddLine(doc, 1);
  t->EndUndoMark();
  EXPECT_TRUE(HostDocument(doc).journal().group_open());  // still the outer group
  AddLine(doc, 2);
  t->EndUndoMark();
  EXPECT_FALSE(HostDocument(doc).journal().group_open());
  EXPECT_EQ(ModelSpaceCount(doc), before + 3);
  // The whole bracket is one step for "Undo 1 ".
  t->Undo();
  EXPECT_EQ(ModelSpaceCount(doc), before);
}

TEST_F(Transactions, EndUndoMarkAtDepthZeroLeavesTheHostAlone) {
  ObjectRef doc = ActiveDocument();
  auto t = TransactionOf(doc);
  CallMethod(doc, "StartUndoMark");  // a group opened by someone else
  t->EndUndoMark();
  EXPECT_TRUE(HostDocument(doc).journal().group_open());
  EXPECT_EQ(t->undo_depth(), 0);
}

TEST_F(Transactions, DepthsOverflowAt32767) {
  ObjectRef doc = ActiveDocument();
  auto t = TransactionOf(doc);
  for (int i = 0; i < 32767; ++i) t->StartUndoMark();
  // 32767 is the largest Integer: one more is an overflow, depth unchanged.
  ExpectError([&] { t->StartUndoMark(); }, 6, "Overflow", "Tovik_AutoCad_Pro");
  EXPECT_EQ(t->undo_depth(), 32767);
  for (int i = 0; i < 32767; ++i) t->StartUnlockLayers();
  ExpectError([&] { t->StartUnlockLayers(); }, 6, "Overflow", "Tovik_AutoCad_Pro");
  EXPECT_EQ(t->unlock_depth(), 32767);
}

TEST_F(Transactions, Close7AfterDeepNestingClosesEachBracketOnce) {
  ObjectRef doc = ActiveDocument();
  ObjectRef walls = AddLayer(doc, "Walls", true);
  auto t = TransactionOf(doc);
  for (int i = 0; i < 3; ++i) t->StartUndoMark();
  for (int i = 0; i < 5; ++i) t->StartUnlockLayers();
  AddLine(doc, 0);
  EXPECT_FALSE(Locked(walls));
  t->Close7();
  EXPECT_FALSE(HostDocument(doc).journal().group_open());
  EXPECT_TRUE(Locked(walls));
  EXPECT_EQ(Marks(walls), "none");
  EXPECT_EQ(t->undo_depth(), 0);
  EXPECT_EQ(t->unlock_depth(), 0);
  EXPECT_EQ(t->AcadDocument(), nullptr);
  // Close7 on a closed transaction does nothing and raises nothing.
  t->Close7();
  // Still the drawing's transaction in the store.
  EXPECT_EQ(TransactionOf(doc), t);
}

TEST_F(Transactions, UnlockMarksLockedLayersAndRelocksOnlyThose) {
  ObjectRef doc = ActiveDocument();
  ObjectRef a = AddLayer(doc, "A", true);
  ObjectRef b = AddLayer(doc, "B", false);
  ObjectRef c = AddLayer(doc, "C", false);
  auto t = TransactionOf(doc);
  t->StartUnlockLayers();
  t->StartUnlockLayers();
  EXPECT_FALSE(Locked(a));
  // "OrgLock" is ID 73, stored as an xBoolean: 1070 -1.
  EXPECT_EQ(Marks(a), "1001 Tovik COM|1070 73|1070 -1");
  EXPECT_EQ(Marks(b), "none");
  LetProperty(b, "Lock", Variant(true));  // locked meanwhile
  t->EndUnlockLayers();
  EXPECT_FALSE(Locked(a));  // inner level: nothing relocked yet
  t->EndUnlockLayers();
  EXPECT_TRUE(Locked(a));
  EXPECT_EQ(Marks(a), "none");
  EXPECT_TRUE(Locked(b));   // no mark: left as it is
  EXPECT_FALSE(Locked(c));
  t->EndUnlockLayers();     // extra end at depth 0: nothing
  EXPECT_TRUE(Locked(a));
}

TEST_F(Transactions, UnlockingLetsTheLibraryWriteToEntitiesOnLockedLayers) {
  ObjectRef doc = ActiveDocument();
  ObjectRef layer = AddLayer(doc, "Frozen", false);
  ObjectRef line = AddLine(doc, 0);
  LetProperty(line, "Layer", Variant("Frozen"));
  LetProperty(layer, "Lock", Variant(true));
  auto t = TransactionOf(doc);
  t->StartUnlockLayers();
  GlobalInstance<Xdata>()->SetAppXData(Variant(line), "Top", Variant(2.0), xDouble);
  t->EndUnlockLayers();
  EXPECT_TRUE(Locked(layer));
  EXPECT_EQ(CDbl(GlobalInstance<Xdata>()->GetAppXdata(Variant(line), "Top", Variant(), xDouble)),
            2.0);
}

TEST_F(Transactions, LockMarksSurviveInTheDrawingNotInTheTransaction) {
  ObjectRef doc = ActiveDocument();
  ObjectRef a = AddLayer(doc, "A", true);
  TransactionOf(doc)->StartUnlockLayers();
  // Another transaction object for the same drawing (as after a reload):
  // its own unlock finds nothing locked, its relock finds the marks.
  auto other = AcadTransaction::Make();
  other->SetDocument(doc);
  other->StartUnlockLayers();
  other->EndUnlockLayers();
  EXPECT_TRUE(Locked(a));
  EXPECT_EQ(Marks(a), "none");
}

TEST_F(Transactions, OneTransactionPerDrawingSharedThroughTheStore) {
  ObjectRef first = ActiveDocument();
  ObjectRef second = NewDrawing();
  auto t1 = TransactionOf(first);
  auto t2 = TransactionOf(second);
  EXPECT_EQ(TransactionOf(first), t1);
  EXPECT_NE(t1, t2);
  EXPECT_TRUE(SameObject(t1->AcadDocument(), first));
  // Another library in the host asks the store directly and gets the same.
  ObjectRef stored = CallMethod(HostEvents(), "GetNamedObject",
                                {Variant("AcadTransaction"), Variant(second)})
                         .Object();
  EXPECT_EQ(stored, t2);
  // An omitted drawing means the current one, written back.
  Variant drawing = Variant::Nothing();
  ObjectRef doc_space = GlobalInstance<AcadDocSpace>();
  Variant got = CallMethodRef(doc_space, "GetAcadTransaction", std::span<Variant>(&drawing, 1));
  EXPECT_TRUE(SameObject(drawing.Object(), second));
  EXPECT_EQ(got.Object(), t2);
  EXPECT_EQ(CStr(GetProperty(t2, "Name")), "Drawing2.dwg");
}

TEST_F(Transactions, UndoSendsExactlyUndoOneWithTheClosingBlank) {
  ObjectRef doc = ActiveDocument();
  auto t = TransactionOf(doc);
  std::string before = HostDocument(doc).command_log();
  CallMethod(t, "Undo");
  EXPECT_EQ(HostDocument(doc).command_log().substr(before.size()).find("Undo 1 "), 0u);
}

TEST_F(Transactions, UnitSettingIsLoadedSavedAndRefreshed) {
  ObjectRef doc = ActiveDocument();
  ObjectRef model = GetProperty(doc, "ModelSpace").Object();
  auto xdata = GlobalInstance<Xdata>();
  Variant stored(SafeArray::Of({Variant("UnitSetting"), Variant(int16_t{3}),
                                Variant(int16_t{0}), Variant(int16_t{4}),
                                Variant(int16_t{1})}));
  xdata->SetAppXData(Variant(model), "UnitSetting", stored, xTable);
  // GetAcadUnitSetting with a variable holding Nothing: the current
  // drawing's setting, loaded from the drawing, and the drawing written back.
  ObjectRef drawing;
  auto setting = GlobalInstance<AcadDocSpace>()->GetAcadUnitSetting(drawing);
  EXPECT_TRUE(SameObject(drawing, doc));
  EXPECT_EQ(setting->LengthUnit(), kLengthMetre);
  EXPECT_EQ(setting->LinearPrecision(), 4);

  // A change is written back at once, as the table under ID 10.
  LetProperty(setting, "LengthUnit", Variant(int16_t{kLengthFoot}));
  EXPECT_EQ(Marks(model),
            "1001 Tovik COM|1070 10|1002 {|1000 UnitSetting|1070 5|1070 0|1070 4|1070 1|1002 }");

  // Another program changes the variable: seen only with Refresh.
  Variant changed(SafeArray::Of({Variant("UnitSetting"), Variant(int16_t{4}),
                                 Variant(int16_t{2}), Variant(int16_t{0}),
                                 Variant(int16_t{0})}));
  xdata->SetAppXData(Variant(model), "UnitSetting", changed, xTable);
  auto t = TransactionOf(doc);
  EXPECT_EQ(t->UnitSetting(false)->LengthUnit(), kLengthFoot);
  Variant refreshed = GetProperty(t, "UnitSetting", {Variant(true)});
  EXPECT_EQ(CInt(GetProperty(refreshed.Object(), "LengthUnit")), kLengthInch);
  EXPECT_EQ(CInt(GetProperty(refreshed.Object(), "AngleUnit")), kAngleGrad);
}

TEST_F(Transactions, ComEndClosesTheUndoOfTheDrawingCurrentAtComBegin) {
  ObjectRef first = ActiveDocument();
  auto doc_space = GlobalInstance<AcadDocSpace>();
  doc_space->comBegin();
  EXPECT_TRUE(HostDocument(first).journal().group_open());
  ObjectRef second = NewDrawing();  // now current
  LibraryGroup(first, false);
  LibraryGroup(second, false);
  doc_space->comEnd();
  EXPECT_FALSE(HostDocument(first).journal().group_open());
  // The group went from the drawing current at comEnd only.
  ObjectRef first_groups = GetProperty(first, "Groups").Object();
  ObjectRef second_groups = GetProperty(second, "Groups").Object();
  EXPECT_EQ(CStr(GetProperty(CallMethod(first_groups, "Item", {Variant(int32_t{0})}).Object(),
                             "Name")),
            "TOVIK_COM");
  EXPECT_EQ(CLng(GetProperty(second_groups, "Count")), 0);
}

TEST_F(Transactions, ComEndWithoutComBeginOnlyDeletesTheGroup) {
  ObjectRef doc = ActiveDocument();
  AcadDocSpace fresh;
  fresh.comEnd();  // makes and deletes the group; no transaction, no error
  EXPECT_EQ(CLng(GetProperty(GetProperty(doc, "Groups").Object(), "Count")), 0);
  EXPECT_FALSE(HostDocument(doc).journal().group_open());
}

}  // namespace
}  // namespace tovik
