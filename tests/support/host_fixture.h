// Helpers for the host's tests: a fresh host per test and error capture.
#ifndef TOVIK_TESTS_SUPPORT_HOST_FIXTURE_H_
#define TOVIK_TESTS_SUPPORT_HOST_FIXTURE_H_

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "frame/automation_error.h"
#include "frame/conversions.h"
#include "frame/dispatch.h"
#include "host/core/application.h"
#include "host/core/document.h"
#include "host/surface/args.h"

namespace tovik::host {

// The error a statement raises: number and description (0, "" when none).
struct Raised {
  int32_t number = 0;
  std::string description;
};
inline Raised ErrorOf(const std::function<void()>& statement) {
  try {
    statement();
  } catch (const AutomationError& e) {
    return {e.Number(), e.Description()};
  }
  return {};
}

inline Variant Pt(double x, double y, double z = 0) { return PointValue({x, y, z}); }

// A fresh host with Drawing1 active; `doc` and `ms` are its automation
// objects.
class HostTest : public ::testing::Test {
 protected:
  void SetUp() override {
    app_ = Application::Create();
    doc = app_->ActiveDocumentRef();
    ms = GetProperty(doc, "ModelSpace").Object();
  }
  Document& document() { return *app_->active_document(); }
  ObjectRef Line(double x1, double y1, double x2, double y2) {
    return CallMethod(ms, "AddLine", {Pt(x1, y1), Pt(x2, y2)}).Object();
  }

  std::shared_ptr<Application> app_;
  ObjectRef doc;
  ObjectRef ms;
};

}  // namespace tovik::host

#endif  // TOVIK_TESTS_SUPPORT_HOST_FIXTURE_H_
