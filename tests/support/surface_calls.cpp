#include "tests/support/surface_calls.h"

#include <map>

#include "host/core/host_error.h"

namespace tovik::host {

int32_t NumberOfText(const std::string& text) {
  static const std::map<std::string, int32_t> kNumbers = {
      {"Key not found", kScodeKeyNotFound},
      {"Object was erased", kScodeObjectErased},
      {"Function cancelled", kScodeCancelled},
      {"Invalid input", -2145386493},
      {"Duplicate record name", -2145386405},
      {"Duplicate key", -2145386434},
      {"Invalid handle", -2145386483},
      {"Invalid object ID", -2145386480},
      {"On locked layer", -2145386423},
      {"Object is referenced", -2145386445},
      {"Not applicable", -2145386494},
      {"Invalid owner object", -2145386444},
      {"Error getting system variable", -2145320825},
      {"Error setting system variable", -2145320824},
      {"Invalid layer", -2145386422},
      {"Cannot delete", -2145386449},
      {"Null extents", -2145386458},
      {"File not found", -2145386437},
      {"Type mismatch", 13},
      {"Argument not optional", 449},
      {"Wrong number of arguments or invalid property assignment", 450},
      {"Object doesn't support this property or method", 438},
  };
  if (text.rfind("Invalid argument ", 0) == 0) return kScodeInvalidArgument;
  auto it = kNumbers.find(text);
  return it == kNumbers.end() ? 0 : it->second;
}

void ExpectErrors(const std::vector<ErrorCase>& cases) {
  for (const ErrorCase& c : cases) {
    SCOPED_TRACE(std::string(c.what) + ": " + c.member);
    AutomationError r = ErrorOf([&] {
      std::vector<Variant> args = c.args;
      switch (c.op) {
        case Op::kGet:
        case Op::kCall: CallMethodRef(c.object, c.member, args); break;
        case Op::kLet: LetProperty(c.object, c.member, args.at(0)); break;
        case Op::kSet: SetProperty(c.object, c.member, args.at(0).RawObject()); break;
      }
    });
    EXPECT_EQ(r.Description(), c.text);
    EXPECT_EQ(r.Number(), NumberOfText(c.text));
  }
}

}  // namespace tovik::host
