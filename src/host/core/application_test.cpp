#include "host/core/application.h"

#include <gtest/gtest.h>

#include "host/core/host_error.h"
#include "tests/support/host_fixture.h"

namespace tovik::host {
namespace {

class Recorder : public EventSink {
 public:
  explicit Recorder(ObjectRef app = nullptr) : app_(std::move(app)) {}
  void OnEvent(std::string_view event, std::span<Variant> args) override {
    std::string entry(event);
    if (!args.empty()) entry += ":" + CStr(args[0]);
    // Documents.Count as the handler sees it.
    if (app_ && event == "ThisDrawingBeginClose") {
      entry += "#" + CStr(GetProperty(GetProperty(app_, "Documents").Object(), "Count"));
    }
    log.push_back(entry);
  }
  std::vector<std::string> log;

 private:
  ObjectRef app_;
};

TEST(Application, StartsWithOneActiveDrawing) {
  auto app = Application::Create();
  ObjectRef docs = GetProperty(app, "Documents").Object();
  EXPECT_EQ(CLng(GetProperty(docs, "Count")), 1);
  ObjectRef doc = GetProperty(app, "ActiveDocument").Object();
  EXPECT_EQ(CStr(GetProperty(doc, "Name")), "Drawing1.dwg");
  EXPECT_EQ(TypeName(Variant(app)), "IAcadApplication");
  EXPECT_EQ(TypeName(Variant(doc)), "IAcadDocument");
  EXPECT_EQ(TypeName(Variant(docs)), "IAcadDocuments");
  // The same document object on every read.
  EXPECT_TRUE(SameObject(doc, CallMethod(docs, "Item", {Variant(int16_t{0})}).Object()));
  EXPECT_TRUE(SameObject(doc, CallMethod(docs, "Item", {Variant("DRAWING1.DWG")}).Object()));
  EXPECT_NE(CLngLng(GetProperty(app, "hwnd")), 0);
}

TEST(Application, EventsFollowDocumentLife) {
  auto app = Application::Create();
  auto sink = std::make_shared<Recorder>(app);
  app->events()->Events()->Connect(sink);
  ObjectRef docs = GetProperty(app, "Documents").Object();
  ObjectRef first = GetProperty(app, "ActiveDocument").Object();
  ObjectRef second = CallMethod(docs, "Add").Object();
  EXPECT_EQ(CStr(GetProperty(second, "Name")), "Drawing2.dwg");
  EXPECT_TRUE(SameObject(GetProperty(app, "ActiveDocument").Object(), second));
  SetProperty(app, "ActiveDocument", first);
  // Activating the active document again raises nothing.
  SetProperty(app, "ActiveDocument", first);
  CallMethod(first, "Close");
  EXPECT_TRUE(SameObject(GetProperty(app, "ActiveDocument").Object(), second));
  app->EnterModal();
  app->LeaveModal();
  app->SetWindowState(2);
  app->RaiseObjectModified("Start");
  app->Quit();
  std::vector<std::string> expected = {
      "ThisDrawingActivate",        "ThisDrawingActivate",  // Add, then switching back
      "ThisDrawingBeginClose#2",    "ThisDrawingActivate",  // counted while closing
      "EnterModal", "LeaveModal", "AcadWindowChanged:2", "ObjectModified:Start",
      "BeginClose", "Terminate"};
  EXPECT_EQ(sink->log, expected);
  EXPECT_EQ(app->documents().size(), 0u);
}

TEST(Application, ZoomWindowCentresTheView) {
  auto app = Application::Create();
  ObjectRef doc = app->ActiveDocumentRef();
  // Screen 1600 x 900: a 320 x 90 window is limited by its width:
  // 320 / (1600/900) = 180 > 90.
  CallMethod(app, "ZoomWindow", {Pt(10, 20), Pt(330, 110)});
  std::vector<double> ctr =
      CallMethod(doc, "GetVariable", {Variant("VIEWCTR")}).Array().ToDoubles();
  EXPECT_DOUBLE_EQ(ctr[0], 170);
  EXPECT_DOUBLE_EQ(ctr[1], 65);
  EXPECT_DOUBLE_EQ(CDbl(CallMethod(doc, "GetVariable", {Variant("VIEWSIZE")})), 180);
  AutomationError r = ErrorOf([&] { CallMethod(app, "ZoomWindow", {Variant(1.0), Pt(1, 1)}); });
  EXPECT_EQ(r.Description(), "Invalid argument LowerLeft in ZoomWindow");
}

TEST(HostEvents, NamedObjectStoreKeysByOwnerIdentity) {
  auto app = Application::Create();
  ObjectRef link = app->events();
  EXPECT_EQ(TypeName(Variant(link)), "ZActiveX");
  EXPECT_TRUE(SameObject(GetProperty(link, "Application").Object(), app));
  ObjectRef doc1 = app->ActiveDocumentRef();
  ObjectRef doc2 = app->AddDocument();
  ObjectRef value1 = std::make_shared<Documents>(app.get());
  ObjectRef value2 = std::make_shared<Documents>(app.get());
  CallMethod(link, "SetNamedObject",
             {Variant("AcadTransaction"), Variant(value1), Variant(""), Variant(doc1)});
  CallMethod(link, "SetNamedObject",
             {Variant("ZHighlightSS"), Variant(value2), Variant(""), Variant::Nothing()});
  auto get = [&](const char* key, const Variant& owner) {
    return CallMethod(link, "GetNamedObject", {Variant(key), owner});
  };
  EXPECT_TRUE(SameObject(get("AcadTransaction", Variant(doc1)).Object(), value1));
  EXPECT_TRUE(get("AcadTransaction", Variant(doc2)).IsNothing());
  EXPECT_TRUE(get("AcadTransaction", Variant::Nothing()).IsNothing());
  EXPECT_TRUE(SameObject(get("zhighlightss", Variant::Nothing()).Object(), value2));
  // Replacing keeps one entry.
  CallMethod(link, "SetNamedObject",
             {Variant("AcadTransaction"), Variant(value2), Variant(""), Variant(doc1)});
  EXPECT_TRUE(SameObject(get("AcadTransaction", Variant(doc1)).Object(), value2));
  EXPECT_EQ(app->events()->named_object_count(), 2u);
  // Closing the owner drops its entries.
  CallMethod(doc1, "Close");
  EXPECT_EQ(app->events()->named_object_count(), 1u);
}

}  // namespace
}  // namespace tovik::host
