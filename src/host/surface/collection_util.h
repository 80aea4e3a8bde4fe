// Item(Index) as every host collection resolves it: an integer (Integer or
// Long) is a 0-based position, a string a name. A bad index or a missing
// name raises Key not found; any other argument Invalid argument.
#ifndef TOVIK_HOST_SURFACE_COLLECTION_UTIL_H_
#define TOVIK_HOST_SURFACE_COLLECTION_UTIL_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "frame/conversions.h"
#include "frame/runtime_text.h"
#include "frame/variant.h"
#include "host/core/host_error.h"

namespace tovik::host {

enum class NameMatch : uint8_t { kCaseInsensitive, kCaseSensitive, kIndexOnly };

// The position Item(index) designates among `count` items whose names
// `name_of(i)` gives.
template <class NameOf>
size_t ItemPosition(const Variant& index, size_t count, NameOf name_of,
                    NameMatch match = NameMatch::kCaseInsensitive) {
  if (index.IsNumber() && !index.IsBoolean()) {
    int64_t i = CLngLng(index);
    if (i < 0 || static_cast<uint64_t>(i) >= count) {
      throw HostError(HostFailure::kKeyNotFound);
    }
    return static_cast<size_t>(i);
  }
  if (index.IsString() && match != NameMatch::kIndexOnly) {
    const std::string& key = index.RawString();
    for (size_t i = 0; i < count; ++i) {
      std::string_view name = name_of(i);
      bool same = match == NameMatch::kCaseSensitive ? name == key
                                                     : CaseInsensitiveEqual(name, key);
      if (same) return i;
    }
    throw HostError(HostFailure::kKeyNotFound);
  }
  throw InvalidArgument("Index", "Item");
}

// Item(index) of a collection that takes integers only (a block's
// entities, a group, a selection set).
inline size_t ItemPositionIndexOnly(const Variant& index, size_t count) {
  return ItemPosition(index, count, [](size_t) { return std::string_view(); },
                      NameMatch::kIndexOnly);
}

}  // namespace tovik::host

#endif  // TOVIK_HOST_SURFACE_COLLECTION_UTIL_H_
