// The one exception type of the automation layer: an error number, a
// description and a source, shaped the way an automation client sees them
// (Err.Number, Err.Description, Err.Source).
#ifndef TOVIK_FRAME_AUTOMATION_ERROR_H_
#define TOVIK_FRAME_AUTOMATION_ERROR_H_

#include <cstdint>
#include <exception>
#include <iosfwd>
#include <string>
#include <string_view>

namespace tovik {

// Runtime error numbers, as the automation runtime numbers them.
enum RuntimeErrorNumber : int32_t {
  kErrInvalidCall = 5,         // Invalid procedure call or argument
  kErrOverflow = 6,            // Overflow
  kErrSubscript = 9,           // Subscript out of range
  kErrDivisionByZero = 11,     // Division by zero
  kErrTypeMismatch = 13,       // Type mismatch
  kErrPathNotFound = 76,       // Path not found
  kErrObjectNotSet = 91,       // Object variable or With block variable not set
  kErrInvalidPattern = 93,     // Invalid pattern string
  kErrInvalidUseOfNull = 94,   // Invalid use of Null
  kErrNotSupported = 438,      // Object doesn't support this property or method
  kErrArgNotOptional = 449,    // Argument not optional
  kErrWrongArgCount = 450,     // Wrong number of arguments or invalid property assignment
  kErrDuplicateKey = 457,      // This key is already associated with an element of this collection
  kErrCannotCreate = 429,      // ActiveX component can't create object
  kErrElementNotFound = 32811, // Element not found (scripting runtime)
};

// The library's own error number; every misuse the library detects itself
// raises it with a fixed description.
inline constexpr int32_t kLibraryErrorNumber = 2411;

// Source text of runtime errors raised inside the library (the type library's
// project name, as the runtime fills Err.Source).
inline constexpr std::string_view kRuntimeErrorSource = "Tovik_AutoCad_Pro";

// An automation error. Thrown by value, caught by reference.
class AutomationError : public std::exception {
 public:
  AutomationError(int32_t number, std::string description,
                  std::string source = std::string());

  int32_t Number() const { return number_; }
  const std::string& Description() const { return description_; }
  const std::string& Source() const { return source_; }
  const char* what() const noexcept override { return what_.c_str(); }

 private:
  int32_t number_;
  std::string description_;
  std::string source_;
  std::string what_;
};

// The runtime's wording for a runtime error number ("Overflow", ...);
// "Application-defined or object-defined error" for numbers it does not name.
std::string_view RuntimeErrorText(int32_t number);

// Named factories. Raise with `throw errors::Overflow();`.
namespace errors {
// The library's own error: number 2411, a fixed description, an optional source.
AutomationError Library(std::string_view description,
                        std::string_view source = std::string_view());
// A runtime error with the runtime's wording and source.
AutomationError Runtime(int32_t number);
inline AutomationError InvalidCall() { return Runtime(kErrInvalidCall); }
inline AutomationError Overflow() { return Runtime(kErrOverflow); }
inline AutomationError SubscriptOutOfRange() { return Runtime(kErrSubscript); }
inline AutomationError DivisionByZero() { return Runtime(kErrDivisionByZero); }
inline AutomationError TypeMismatch() { return Runtime(kErrTypeMismatch); }
inline AutomationError ObjectNotSet() { return Runtime(kErrObjectNotSet); }
inline AutomationError NotSupported() { return Runtime(kErrNotSupported); }
inline AutomationError ArgumentNotOptional() { return Runtime(kErrArgNotOptional); }
inline AutomationError WrongArgumentCount() { return Runtime(kErrWrongArgCount); }
inline AutomationError DuplicateKey() { return Runtime(kErrDuplicateKey); }
// An error reported by the host application: its status code and text pass
// through unchanged.
AutomationError Host(int32_t scode, std::string_view description,
                     std::string_view source = std::string_view());
}  // namespace errors

// For GoogleTest failure messages.
void PrintTo(const AutomationError& error, std::ostream* os);

}  // namespace tovik

#endif  // TOVIK_FRAME_AUTOMATION_ERROR_H_
