// The library's link to a running host: the current-drawing rule with two
// drawings, DynamicSS creation, the library group and the shared highlight
// set, all against a headless host.
#include <gtest/gtest.h>

#include "frame/conversions.h"
#include "frame/host_link.h"
#include "frame/library_errors.h"
#include "selection/dynamic_ss.h"
#include "tests/support/errors.h"
#include "tests/support/host_fixture.h"
#include "tests/support/properties.h"

namespace tovik {
namespace {

using HostLink = LinkedHostTest;

std::string NameOf(const ObjectRef& document) {
  return document ? CStr(GetProperty(document, "Name")) : "Nothing";
}

TEST_F(HostLink, CurrentDrawingFollowsTheActiveDocumentAtEveryCall) {
  ObjectRef first = ActiveDocument();
  ObjectRef second = NewDrawing();  // Documents.Add makes it active
  EXPECT_EQ(NameOf(CurrentDrawing()), "Drawing2.dwg");
  auto set_in_second = DynamicSS::Create();
  // Activate the first drawing through the application, as a user would.
  SetProperty(app_, "ActiveDocument", first);
  EXPECT_EQ(NameOf(CurrentDrawing()), "Drawing1.dwg");
  auto set_in_first = DynamicSS::Create();
  EXPECT_TRUE(SameObject(set_in_second->Document(), second));
  EXPECT_TRUE(SameObject(set_in_first->Document(), first));
  // And back: nothing was cached.
  SetProperty(app_, "ActiveDocument", second);
  EXPECT_TRUE(SameObject(CurrentDrawing(), second));
  // Through the dispatch interface, as a client reads it.
  EXPECT_EQ(CStr(GetProperty(set_in_first, "DocumentName")), "Drawing1.dwg");
  EXPECT_EQ(CStr(GetProperty(set_in_second, "documentname")), "Drawing2.dwg");
}

TEST_F(HostLink, NoLinkNoDrawing) {
  ResetLibraryState();  // as before InitZActiveX
  EXPECT_FALSE(HasHostEvents());
  EXPECT_EQ(HostApplication(), nullptr);
  EXPECT_EQ(CurrentDrawing(), nullptr);
  EXPECT_EQ(DynamicSS::Create()->Document(), nullptr);
  Link();
  EXPECT_TRUE(HasHostEvents());
  EXPECT_TRUE(SameObject(HostApplication(), app_));
  EXPECT_TRUE(SameObject(DynamicSS::Create()->Document(), ActiveDocument()));
}

TEST_F(HostLink, NoOpenDrawingGivesNothing) {
  app_->CloseDocument(app_->active_document());
  EXPECT_TRUE(SameObject(HostApplication(), app_));
  EXPECT_EQ(CurrentDrawing(), nullptr);
}

TEST_F(HostLink, LibraryGroupIsMadeOnceAndRenewedEmpty) {
  ObjectRef doc = ActiveDocument();
  ObjectRef groups = GetProperty(doc, "Groups").Object();
  int32_t before = CLng(GetProperty(groups, "Count"));
  ObjectRef group = LibraryGroup(doc, false);
  EXPECT_EQ(CStr(GetProperty(group, "Name")), "TOVIK_COM");
  EXPECT_EQ(CLng(GetProperty(groups, "Count")), before + 1);
  // Asked again without renewal: the same group, still one.
  EXPECT_TRUE(SameObject(LibraryGroup(doc, false), group));
  EXPECT_EQ(CLng(GetProperty(groups, "Count")), before + 1);
  ObjectRef line = AddLine(doc, 0);
  Variant members(SafeArray::OfVariants({Variant(line)}));
  CallMethod(group, "AppendItems", {members});
  EXPECT_EQ(CLng(GetProperty(group, "Count")), 1);
  // Renewed: one group of that name, empty; the line stays in the drawing.
  ObjectRef renewed = LibraryGroup(doc, true);
  EXPECT_EQ(CLng(GetProperty(groups, "Count")), before + 1);
  ExpectProperties(renewed, {{"Count", 0}, {"Name", "TOVIK_COM"}});
  EXPECT_FALSE(CStr(GetProperty(line, "Handle")).empty());
}

TEST_F(HostLink, SharedHighlightSetIsStoredInTheHostEventObject) {
  std::shared_ptr<DynamicSS> first = SharedHighlightSet();
  EXPECT_EQ(first, SharedHighlightSet());
  // Another library in the host finds it in the named-object store.
  ObjectRef stored = app_->events()->GetNamedObject("ZHighlightSS", nullptr);
  EXPECT_EQ(stored.get(), first.get());
  // Something else stored under the key is replaced by a fresh set.
  app_->events()->SetNamedObject("ZHighlightSS", app_, "", nullptr);
  std::shared_ptr<DynamicSS> replaced = SharedHighlightSet();
  EXPECT_NE(replaced, first);
  EXPECT_EQ(app_->events()->GetNamedObject("zhighlightss", nullptr).get(), replaced.get());
}

TEST_F(HostLink, DynamicSSItemTakesNumericHandlesAsPositions) {
  ObjectRef doc = ActiveDocument();
  ObjectRef set = DynamicSS::Create();
  // Handles are hex: make lines until one has a letter in its handle.
  ObjectRef lettered;
  ObjectRef numeric;
  for (int i = 0; i < 40 && !(lettered && numeric); ++i) {
    ObjectRef line = AddLine(doc, i);
    CallMethod(set, "Add", {Variant(SafeArray::OfVariants({Variant(line)}))});
    std::string handle = CStr(GetProperty(line, "Handle"));
    if (IsNumeric(Variant(handle))) {
      numeric = line;
    } else {
      lettered = line;
    }
  }
  ASSERT_TRUE(lettered && numeric);
  std::string letter_handle = CStr(GetProperty(lettered, "Handle"));
  EXPECT_TRUE(SameObject(GetProperty(set, "Item", {Variant(letter_handle)}).Object(), lettered));
  // A handle that reads as a number selects by position instead: "31" is
  // position 31, beyond this set's members.
  std::string digit_handle = CStr(GetProperty(numeric, "Handle"));
  int32_t count = CLng(GetProperty(set, "Count"));
  ASSERT_GE(CLng(Variant(digit_handle)), count);
  ExpectError([&] { GetProperty(set, "Item", {Variant(digit_handle)}); }, 9,
              "Subscript out of range", "Tovik_AutoCad_Pro");
}

TEST_F(HostLink, CompanionsPointBackWithoutKeepingTheSetAlive) {
  std::shared_ptr<SSDimensions> dims;
  std::shared_ptr<SSAnimation> anim;
  {
    std::shared_ptr<DynamicSS> set = DynamicSS::Create();
    dims = ObjectAs<SSDimensions>(GetProperty(set, "Dimensions"));
    anim = ObjectAs<SSAnimation>(GetProperty(set, "Animation"));
    ASSERT_NE(dims, nullptr);
    ASSERT_NE(anim, nullptr);
    EXPECT_EQ(dims->Owner(), set);
    EXPECT_EQ(anim->Owner(), set);
    EXPECT_EQ(ObjectAs<SSDimensions>(GetProperty(set, "Dimensions")), dims);
    EXPECT_EQ(TypeName(Variant(ObjectRef(dims))), "SSDimensions");
    EXPECT_EQ(TypeName(Variant(ObjectRef(anim))), "SSAnimation");
  }
  // The companions did not keep their owner alive, and now fail cleanly.
  EXPECT_EQ(ErrorOf([&] { GetProperty(dims, "Height"); }).Number(), 91);
  EXPECT_EQ(ErrorOf([&] { CallMethod(anim, "TileArrangement"); }).Number(), 91);
}

}  // namespace
}  // namespace tovik
