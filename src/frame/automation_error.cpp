#include "frame/automation_error.h"

#include <ostream>

namespace tovik {

AutomationError::AutomationError(int32_t number, std::string description,
                                 std::string source)
    : number_(number),
      description_(std::move(description)),
      source_(std::move(source)) {
  what_ = "error " + std::to_string(number_) + ": " + description_;
  if (!source_.empty()) what_ += " (" + source_ + ")";
}

std::string_view RuntimeErrorText(int32_t number) {
  switch (number) {
    case kErrInvalidCall: return "Invalid procedure call or argument";
    case kErrOverflow: return "Overflow";
    case kErrSubscript: return "Subscript out of range";
    case kErrDivisionByZero: return "Division by zero";
    case kErrTypeMismatch: return "Type mismatch";
    case kErrPathNotFound: return "Path not found";
    case kErrObjectNotSet:
      return "Object variable or With block variable not set";
    case kErrInvalidPattern: return "Invalid pattern string";
    case kErrInvalidUseOfNull: return "Invalid use of Null";
    case kErrCannotCreate: return "ActiveX component can't create object";
    case kErrNotSupported:
      return "Object doesn't support this property or method";
    case kErrArgNotOptional: return "Argument not optional";
    case kErrWrongArgCount:
      return "Wrong number of arguments or invalid property assignment";
    case kErrDuplicateKey:
      return "This key is already associated with an element of this "
             "collection";
    case kErrElementNotFound: return "Element not found";
    default: return "Application-defined or object-defined error";
  }
}

namespace errors {

AutomationError Library(std::string_view description, std::string_view source) {
  return AutomationError(kLibraryErrorNumber, std::string(description),
                         std::string(source));
}

AutomationError Runtime(int32_t number) {
  return AutomationError(number, std::string(RuntimeErrorText(number)),
                         std::string(kRuntimeErrorSource));
}

AutomationError Host(int32_t scode, std::string_view description,
                     std::string_view source) {
  return AutomationError(scode, std::string(description), std::string(source));
}

}  // namespace errors

void PrintTo(const AutomationError& error, std::ostream* os) {
  *os << error.what();
}

}  // namespace tovik
