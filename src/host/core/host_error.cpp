#include "host/core/host_error.h"

#include <string>

namespace tovik::host {
namespace {

struct FailureText {
  int32_t scode;
  std::string_view text;
};

// Numbers observed on the real host where known (Key not found, Object was
// erased, the keyword and cancel codes); the others follow the host's
// 0x8020xxxx pattern and are recorded in docs/headless-host.md.
constexpr FailureText kTable[] = {
    /* kKeyNotFound */ {kScodeKeyNotFound, "Key not found"},
    /* kObjectErased */ {kScodeObjectErased, "Object was erased"},
    /* kUserInputIsKeyword */ {kScodeUserInputKeyword, "User input is a keyword"},
    /* kCancelled */ {kScodeCancelled, "Function cancelled"},
    /* kInvalidInput */ {-2145386493, "Invalid input"},                 // 0x80200003
    /* kDuplicateRecordName */ {-2145386405, "Duplicate record name"},  // 0x8020005B
    /* kDuplicateKey */ {-2145386434, "Duplicate key"},                 // 0x8020003E
    /* kInvalidHandle */ {-2145386483, "Invalid handle"},               // 0x8020000D
    /* kInvalidObjectId */ {-2145386480, "Invalid object ID"},          // 0x80200010
    /* kOnLockedLayer */ {-2145386423, "On locked layer"},              // 0x80200049
    /* kObjectReferenced */ {-2145386445, "Object is referenced"},      // 0x80200033
    /* kNotApplicable */ {-2145386494, "Not applicable"},               // 0x80200002
    /* kInvalidOwner */ {-2145386444, "Invalid owner object"},          // 0x80200034
    /* kGetSysVarFailed */ {-2145320825, "Error getting system variable"},
    /* kSetSysVarFailed */ {-2145320824, "Error setting system variable"},
    /* kTooManySelectionSets */ {-2145386380, "Exceeded maximum number of selection sets"},
    /* kInvalidLayer */ {-2145386422, "Invalid layer"},                 // 0x8020004A
    /* kNoDocument */ {-2145386460, "No database"},                     // 0x80200024
    /* kFileNotFound */ {-2145386437, "File not found"},                // 0x8020003B
    /* kCannotDelete */ {-2145386449, "Cannot delete"},                 // 0x8020002F
    /* kNullExtents */ {-2145386458, "Null extents"},                   // 0x80200026
};

}  // namespace

AutomationError HostError(HostFailure failure) {
  const FailureText& f = kTable[static_cast<size_t>(failure)];
  return errors::Host(f.scode, f.text, kHostErrorSource);
}

AutomationError InvalidArgument(std::string_view arg, std::string_view member) {
  std::string text = "Invalid argument ";
  text += arg;
  text += " in ";
  text += member;
  return errors::Host(kScodeInvalidArgument, text, kHostErrorSource);
}

}  // namespace tovik::host
