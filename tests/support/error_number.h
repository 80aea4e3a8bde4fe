// Test helper: the automation error number a statement raises.
#ifndef TOVIK_TESTS_SUPPORT_ERROR_NUMBER_H_
#define TOVIK_TESTS_SUPPORT_ERROR_NUMBER_H_

#include <cstdint>
#include <functional>

#include "frame/automation_error.h"

namespace tovik::test_support {

// Runs `statement`; returns the number of the automation error it raised,
// or 0 when it completed.
inline int32_t ErrorNumberOf(const std::function<void()>& statement) {
  try {
    statement();
  } catch (const AutomationError& e) {
    return e.Number();
  }
  return 0;
}

}  // namespace tovik::test_support

#endif  // TOVIK_TESTS_SUPPORT_ERROR_NUMBER_H_
