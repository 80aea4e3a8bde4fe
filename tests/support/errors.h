// Test helpers for automation errors.
#ifndef TOVIK_TESTS_SUPPORT_ERRORS_H_
#define TOVIK_TESTS_SUPPORT_ERRORS_H_

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>

#include "frame/automation_error.h"

namespace tovik {

// The automation error `statement` raises; number 0 and empty texts when
// it completes.
inline AutomationError ErrorOf(const std::function<void()>& statement) {
  try {
    statement();
  } catch (const AutomationError& e) {
    return e;
  }
  return AutomationError(0, "");
}

// Runs `statement` and checks the number, description and source of the
// automation error it raises.
inline void ExpectError(const std::function<void()>& statement, int32_t number,
                        const std::string& description, const std::string& source = "") {
  const AutomationError e = ErrorOf(statement);
  EXPECT_EQ(e.Number(), number);
  EXPECT_EQ(e.Description(), description);
  EXPECT_EQ(e.Source(), source);
}

}  // namespace tovik

#endif  // TOVIK_TESTS_SUPPORT_ERRORS_H_
