// The test fixture of everything that runs against a drawing: a fresh
// headless host for every test, with Drawing1 active. The library state is
// reset before and after each test; LinkedHostTest also links the library
// to the host as a client add-in links it (ZActiveXCOM.InitZActiveX on the
// implicit instance with the host's host-event object).
#ifndef TOVIK_TESTS_SUPPORT_HOST_FIXTURE_H_
#define TOVIK_TESTS_SUPPORT_HOST_FIXTURE_H_

#include <gtest/gtest.h>

#include <initializer_list>
#include <memory>

#include "frame/conversions.h"
#include "frame/dispatch.h"
#include "frame/library_state.h"
#include "frame/platform.h"
#include "frame/value_helpers.h"
#include "frame/zactivex_com.h"
#include "host/core/application.h"
#include "host/core/document.h"
#include "host/surface/args.h"
#include "tests/support/errors.h"

namespace tovik {

// A 3-Double point.
inline Variant Pt(double x, double y, double z = 0) { return host::PointValue({x, y, z}); }

// An Integer (VT_I2) array, as extended data and filter codes are passed.
inline Variant Codes(std::initializer_list<int16_t> codes) {
  SafeArray a(VarType::kInteger, 0, static_cast<int32_t>(codes.size()));
  int32_t i = 0;
  for (int16_t c : codes) a.Set(i++, Variant(c));
  return Variant(std::move(a));
}

class HostTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ResetLibraryState();
    app_ = host::Application::Create();
    doc = app_->ActiveDocumentRef();
    ms = GetProperty(doc, "ModelSpace").Object();
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
  host::Document& document() { return *app_->active_document(); }
  // A new drawing, made active.
  ObjectRef NewDrawing() { return app_->AddDocument(); }

  // A line in model space of Drawing1.
  ObjectRef Line(double x1, double y1, double x2, double y2) {
    return CallMethod(ms, "AddLine", {Pt(x1, y1), Pt(x2, y2)}).Object();
  }
  // A line in model space of `document` from (x, 0, 0) to (x + 1, 1, 0).
  static ObjectRef AddLine(const ObjectRef& document, double x) {
    ObjectRef space = GetProperty(document, "ModelSpace").Object();
    return CallMethod(space, "AddLine", {MakePoint(x, 0, 0), MakePoint(x + 1, 1, 0)}).Object();
  }

  // The window calls recorded so far.
  static const HeadlessPlatform& Windows() {
    return static_cast<const HeadlessPlatform&>(*Library().platform);
  }

  // Set in a fixture's constructor to link the library at start.
  bool link_at_start_ = false;
  std::shared_ptr<host::Application> app_;
  ObjectRef doc;
  ObjectRef ms;
};

// HostTest with the library linked to the host from the start.
class LinkedHostTest : public HostTest {
 protected:
  LinkedHostTest() { link_at_start_ = true; }
};

}  // namespace tovik

#endif  // TOVIK_TESTS_SUPPORT_HOST_FIXTURE_H_
