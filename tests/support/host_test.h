// HostTest: a fresh headless host for every test, with the library linked
// to it as a client add-in links it: library state reset, then
// ZActiveXCOM.InitZActiveX called on the implicit instance with the host's
// host-event object. The library state is reset again after the test.
#ifndef TOVIK_TESTS_SUPPORT_HOST_TEST_H_
#define TOVIK_TESTS_SUPPORT_HOST_TEST_H_

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

#include "frame/automation_error.h"
#include "frame/dispatch.h"
#include "frame/library_state.h"
#include "frame/platform.h"
#include "frame/value_helpers.h"
#include "frame/zactivex_com.h"
#include "host/core/application.h"
#include "host/core/document.h"

namespace tovik {

class HostTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ResetLibraryState();
    app_ = host::Application::Create();
    if (link_at_start_) Link();
  }

  void TearDown() override { ResetLibraryState(); }

  // InitZActiveX(host-event object) on the implicit ZActiveXCOM instance.
  void Link() {
    Variant link(ObjectRef(app_->events()));
    GlobalInstance<ZActiveXCOM>()->InitZActiveX(link);
  }

  // The host's active document, reached as the library reaches it.
  ObjectRef ActiveDocument() const { return app_->ActiveDocumentRef(); }

  // A new drawing, made active.
  ObjectRef NewDrawing() { return app_->AddDocument(); }

  // A line in model space of `document` from (x, 0, 0) to (x + 1, 1, 0).
  static ObjectRef AddLine(const ObjectRef& document, double x) {
    ObjectRef space = GetProperty(document, "ModelSpace").Object();
    return CallMethod(space, "AddLine", {MakePoint(x, 0, 0), MakePoint(x + 1, 1, 0)})
        .Object();
  }

  // The window calls recorded so far.
  static const HeadlessPlatform& Windows() {
    return static_cast<const HeadlessPlatform&>(*Library().platform);
  }

  // Runs statement and checks the automation error it raises.
  static void ExpectError(const std::function<void()>& statement, int32_t number,
                          const std::string& description,
                          const std::string& source = "") {
    try {
      statement();
      ADD_FAILURE() << "no error, expected " << number;
    } catch (const AutomationError& e) {
      EXPECT_EQ(e.Number(), number);
      EXPECT_EQ(e.Description(), description);
      EXPECT_EQ(e.Source(), source);
    }
  }

  // Set to false in a fixture's constructor to start without a host link.
  bool link_at_start_ = true;
  std::shared_ptr<host::Application> app_;
};

}  // namespace tovik

#endif  // TOVIK_TESTS_SUPPORT_HOST_TEST_H_
