// The host's errors, in one table: every failure the headless host reports
// goes through HostError() so that numbers and texts stay identical to what
// an automation client of the real host sees (Err.Number, Err.Description).
#ifndef TOVIK_HOST_CORE_HOST_ERROR_H_
#define TOVIK_HOST_CORE_HOST_ERROR_H_

#include <cstdint>
#include <string_view>

#include "frame/automation_error.h"

namespace tovik::host {

// Err.Source of every host error.
inline constexpr std::string_view kHostErrorSource = "AutoCAD.Application";

// Status codes the library compares against.
inline constexpr int32_t kScodeKeyNotFound = -2145386476;       // 0x80200014
inline constexpr int32_t kScodeObjectErased = -2145386420;      // 0x8020004C
inline constexpr int32_t kScodeUserInputKeyword = -2145320928;  // 0x80210020
inline constexpr int32_t kScodeCancelled = -2147352567;         // DISP_E_EXCEPTION
inline constexpr int32_t kScodeInvalidArgument = -2147024809;   // E_INVALIDARG

// Why a host member failed. The number and text of each live in the table
// in host_error.cpp.
enum class HostFailure : uint8_t {
  kKeyNotFound,          // missing key, bad index, unknown name assigned
  kObjectErased,         // member of an erased object
  kUserInputIsKeyword,   // Utility.Get* answered by a keyword or Enter
  kCancelled,            // Utility.Get* cancelled (Esc)
  kInvalidInput,         // out-of-range value
  kDuplicateRecordName,  // rename onto an existing name, Groups.Add clash
  kDuplicateKey,         // SelectionSets.Add of an existing name
  kInvalidHandle,        // HandleToObject of an unknown or malformed handle
  kInvalidObjectId,      // ObjectIDToObject of an unknown ID
  kOnLockedLayer,        // change to an entity on a locked layer
  kObjectReferenced,     // Delete of something still in use
  kNotApplicable,        // member that does not apply to this object's state
  kInvalidOwner,         // objects of another owner or drawing
  kGetSysVarFailed,      // GetVariable of an unknown name
  kSetSysVarFailed,      // SetVariable of an unknown or read-only name
  kTooManySelectionSets, // more than 128 selection sets
  kInvalidLayer,         // freezing or making current what cannot be
  kNoDocument,           // member of a closed document
  kFileNotFound,         // Documents.Open / Import of a missing file
  kCannotDelete,         // Delete on a collection or a fixed record
  kNullExtents,          // GetBoundingBox of an entity without extents
};

// The host's error for `failure`.
AutomationError HostError(HostFailure failure);

// "Invalid argument <arg> in <member>" (E_INVALIDARG): an argument of the
// wrong type or shape.
AutomationError InvalidArgument(std::string_view arg, std::string_view member);

}  // namespace tovik::host

#endif  // TOVIK_HOST_CORE_HOST_ERROR_H_
