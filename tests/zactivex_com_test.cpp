// ZActiveXCOM against a headless host: the host link it sets and clears,
// the hand-on to sibling libraries, and its handling of the host's events
// (the host raises them; the library's forms and window calls are watched
// through their headless implementations).
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "frame/conversions.h"
#include "frame/host_link.h"
#include "selection/dynamic_ss.h"
#include "tests/support/host_fixture.h"

namespace tovik {
namespace {

// The global object of a sibling library: records what InitZActiveX got.
class SiblingLibrary : public DispatchObject<SiblingLibrary> {
 public:
  std::string_view TypeName() const override { return "ZActiveXCOM"; }
  static const MemberTable<SiblingLibrary>& Members() {
    static const MemberTable<SiblingLibrary> table = [] {
      MemberTable<SiblingLibrary> t;
      t.Method(
          "InitZActiveX",
          [](SiblingLibrary& s, CallArgs& a) {
            s.received.push_back(a[0].IsObject() ? a[0].RawObject() : nullptr);
            if (s.fail) throw errors::InvalidCall();
            return Variant();
          },
          0, 1);
      return t;
    }();
    return table;
  }
  std::vector<ObjectRef> received;
  bool fail = false;
};

class ZActiveXLink : public LinkedHostTest {
 protected:
  std::shared_ptr<HeadlessForm> AddForm(const char* name, int64_t hwnd, bool visible) {
    auto form = std::make_shared<HeadlessForm>(name, hwnd);
    if (visible) form->Show();
    LoadForm(form);
    return form;
  }
};

TEST_F(ZActiveXLink, InitAndTerminateSetAndClearTheHostLink) {
  std::shared_ptr<ZActiveXCOM> z = GlobalInstance<ZActiveXCOM>();
  EXPECT_TRUE(SameObject(HostEvents(), app_->events()));
  EXPECT_TRUE(SameObject(z->event_source(), app_->events()));
  EXPECT_EQ(app_->events()->Events()->SinkCount(), 1);
  app_->Quit();  // BeginClose, documents close, Terminate
  EXPECT_FALSE(HasHostEvents());
  EXPECT_EQ(z->event_source(), nullptr);
  EXPECT_EQ(CurrentDrawing(), nullptr);
  EXPECT_EQ(DynamicSS::Create()->Document(), nullptr);
}

TEST_F(ZActiveXLink, InitWithNothingOrMissingClearsTheLink) {
  ObjectRef z = GlobalInstance<ZActiveXCOM>();
  CallMethod(z, "InitZActiveX", {Variant::Nothing()});
  EXPECT_FALSE(HasHostEvents());
  EXPECT_EQ(app_->events()->Events()->SinkCount(), 0);
  Link();
  CallMethod(z, "InitZActiveX");  // the optional argument omitted
  EXPECT_FALSE(HasHostEvents());
  // Something that raises no events cannot be the event source.
  ExpectError([&] { CallMethod(z, "InitZActiveX", {Variant(ObjectRef(app_))}); }, 13,
              "Type mismatch", "Tovik_AutoCad_Pro");
  ExpectError([&] { CallMethod(z, "InitZActiveX", {Variant(1.0)}); }, 13, "Type mismatch",
              "Tovik_AutoCad_Pro");
}

TEST_F(ZActiveXLink, SiblingsAreToldEachTimeAndMissingOnesSkipped) {
  auto commons = std::make_shared<SiblingLibrary>();
  auto self_entry = std::make_shared<SiblingLibrary>();
  commons->fail = true;  // a failing sibling does not stop the hand-on
  Library().sibling_libraries["Tovik_Commons"] = commons;
  Library().sibling_libraries["Tovik_AutoCad_Pro"] = self_entry;
  // Tovik_Geometry is not installed.
  Link();
  Link();  // a second call replaces the object and tells the siblings again
  ASSERT_EQ(commons->received.size(), 2u);
  EXPECT_TRUE(SameObject(commons->received[1], app_->events()));
  // This library's own entry is never called.
  EXPECT_TRUE(self_entry->received.empty());
  // Only one connection after two calls.
  EXPECT_EQ(app_->events()->Events()->SinkCount(), 1);
}

TEST_F(ZActiveXLink, ModalStateDisablesAndReenablesTheModalForms) {
  auto a = std::make_shared<HeadlessForm>("frmA", 11);
  auto b = std::make_shared<HeadlessForm>("frmB", 12);
  ModalForms()->Add(Variant(ObjectRef(a)));
  ModalForms()->Add(Variant(ObjectRef(b)));
  ModalForms()->Add(Variant("not a form"));  // skipped under the trap
  app_->EnterModal();
  EXPECT_FALSE(a->enabled());
  EXPECT_FALSE(b->enabled());
  app_->LeaveModal();
  EXPECT_TRUE(a->enabled());
  EXPECT_TRUE(b->enabled());
}

TEST_F(ZActiveXLink, ThisDrawingActivateReachesEveryLoadedForm) {
  auto shown = AddForm("frmShown", 21, true);
  auto hidden = AddForm("frmHidden", 22, false);
  NewDrawing();  // activates the new drawing
  EXPECT_EQ(shown->activations(), 1);
  EXPECT_EQ(hidden->activations(), 1);
}

TEST_F(ZActiveXLink, ClosingTheLastDrawingHidesFormsAndFrontsTheHost) {
  auto shown = AddForm("frmShown", 31, true);
  NewDrawing();
  // Two drawings open: closing one changes nothing.
  app_->CloseDocument(app_->active_document());
  EXPECT_TRUE(shown->visible());
  EXPECT_TRUE(Windows().calls().empty());
  // The last one: the visible form is hidden, the host window fronted.
  app_->CloseDocument(app_->active_document());
  EXPECT_FALSE(shown->visible());
  ASSERT_EQ(Windows().calls().size(), 1u);
  EXPECT_EQ(Windows().calls()[0], (WindowCall{"SetForegroundWindow", host::kHostHwnd, 0, 0}));
}

TEST_F(ZActiveXLink, WindowChangesBringVisibleFormsToFrontExceptOnMinimise) {
  auto shown = AddForm("frmShown", 41, true);
  auto hidden = AddForm("frmHidden", 42, false);
  app_->SetWindowState(2);  // minimised: ignored
  EXPECT_EQ(shown->brought_to_front(), 0);
  EXPECT_TRUE(Windows().calls().empty());
  app_->SetWindowState(1);
  EXPECT_EQ(shown->brought_to_front(), 1);
  EXPECT_EQ(hidden->brought_to_front(), 0);
  ASSERT_EQ(Windows().calls().size(), 1u);
  EXPECT_EQ(Windows().calls()[0], (WindowCall{"SetForegroundWindow", 41, 0, 0}));
}

TEST_F(ZActiveXLink, BeginCloseUnloadsFormsAndDropsTheModalCollection) {
  auto form = AddForm("frmMain", 51, true);
  auto modal = std::make_shared<HeadlessForm>("frmModal", 52);
  ModalForms()->Add(Variant(ObjectRef(modal)));
  std::shared_ptr<ZActiveXCOM> z = GlobalInstance<ZActiveXCOM>();
  EXPECT_EQ(z->remembered_forms(), nullptr);
  app_->events()->Raise("BeginClose");
  EXPECT_TRUE(form->unloaded());
  EXPECT_TRUE(Library().loaded_forms.empty());
  EXPECT_EQ(Library().modal_forms, nullptr);
  ASSERT_NE(z->remembered_forms(), nullptr);
  EXPECT_EQ(z->remembered_forms()->Count(), 0);
  // The link is still there until Terminate.
  EXPECT_TRUE(HasHostEvents());
  // A modal state now finds a new, empty collection: the old form is not
  // disabled.
  app_->EnterModal();
  EXPECT_TRUE(modal->enabled());
}

TEST_F(ZActiveXLink, Modal64FormSitsAboveTheHostWindow) {
  auto form = std::make_shared<Modal64Form>(61);
  CallMethod(form, "Show");
  const WindowCall expected[] = {
      {"SetWindowPos", host::kHostHwnd, 0, 83},
      {"SetWindowPos", 61, 0, 83},
  };
  ASSERT_EQ(Windows().calls().size(), 2u);
  EXPECT_EQ(Windows().calls()[0], expected[0]);
  EXPECT_EQ(Windows().calls()[1], expected[1]);
}

TEST_F(ZActiveXLink, AuthorAndAppTitle) {
  ObjectRef z = GlobalInstance<ZActiveXCOM>();
  EXPECT_EQ(CStr(GetProperty(z, "Author")), kAuthorText);
  // The implicit instance was the first one made since the reset.
  EXPECT_EQ(CStr(GetProperty(z, "AppTitle")), "Tovik_AutoCad_Pro 1");
  auto second = std::make_shared<ZActiveXCOM>();
  EXPECT_EQ(second->AppTitle(), "Tovik_AutoCad_Pro 2");
  ExpectError([&] { LetProperty(z, "AppTitle", Variant("x")); }, 438,
              "Object doesn't support this property or method", "Tovik_AutoCad_Pro");
}

}  // namespace
}  // namespace tovik
