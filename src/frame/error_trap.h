// Error traps, written so that a reader sees at a glance which statements
// run trapped.
//
// Resume-next stretch: each trapped statement that raises an automation
// error is skipped (its target keeps the value it had) and the error is
// remembered, as Err is after a failing statement under a resume-next trap:
//
//   ResumeNext trap;
//   trap([&] { name = CStr(GetProperty(doc, "Name")); });
//   trap([&] { count = CLng(GetProperty(blocks, "Count")); });
//   if (trap.Number() != 0) ...
//
// Clean-up trap: the body runs until a step raises; then the clean-up step
// runs with the error and the procedure returns:
//
//   OnErrorGoTo([&] { Unlock(); Write(); Relock(); },
//               [&](const AutomationError&) { Relock(); });
//
// Only automation errors are trapped; anything else (a programming error,
// out of memory) goes on to the caller.
#ifndef TOVIK_FRAME_ERROR_TRAP_H_
#define TOVIK_FRAME_ERROR_TRAP_H_

#include <cstdint>
#include <optional>
#include <utility>

#include "frame/automation_error.h"

namespace tovik {

class ResumeNext {
 public:
  // Runs one statement; returns false when it raised (and was skipped).
  template <class Statement>
  bool operator()(Statement&& statement) {
    try {
      std::forward<Statement>(statement)();
      return true;
    } catch (const AutomationError& error) {
      error_ = error;
      return false;
    }
  }

  // Err.Number: the number of the last trapped error, 0 when none (or
  // after Clear).
  int32_t Number() const { return error_ ? error_->Number() : 0; }
  // The last trapped error, or nullptr when none.
  const AutomationError* Error() const { return error_ ? &*error_ : nullptr; }
  // Err.Clear.
  void Clear() { error_.reset(); }

 private:
  // Made only when a statement fails: a trap around statements that
  // succeed costs nothing.
  std::optional<AutomationError> error_;
};

// Runs `body`; when it raises an automation error, runs `cleanup(error)`
// and returns false. Returns true when the body completed.
template <class Body, class Cleanup>
bool OnErrorGoTo(Body&& body, Cleanup&& cleanup) {
  try {
    std::forward<Body>(body)();
    return true;
  } catch (const AutomationError& error) {
    std::forward<Cleanup>(cleanup)(error);
    return false;
  }
}

}  // namespace tovik

#endif  // TOVIK_FRAME_ERROR_TRAP_H_
