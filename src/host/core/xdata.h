// Extended data as GetXData and SetXData see it, with the host's checks.
#ifndef TOVIK_HOST_CORE_XDATA_H_
#define TOVIK_HOST_CORE_XDATA_H_

#include <cstddef>

#include "frame/variant.h"
#include "host/core/db_object.h"

namespace tovik::host {

// Largest total of extended data on one object, in bytes.
inline constexpr size_t kMaxXDataBytes = 16383;

// GetXData(AppName, XDataType out, XDataValue out): "" or "*" gives every
// application's run, each opening with its 1001; otherwise that app's run
// (case-insensitive). With no data the outs are left as they are.
void GetXDataInto(const DbObject& object, const Variant& app_name, Variant& types,
                  Variant& values);

// SetXData(XDataType, XDataValue): validates everything first (first code
// 1001, known codes, item limits, 16 KB), registers unknown application
// names, then replaces the given applications' runs (a lone 1001 removes
// that app's run). Recorded for undo.
void SetXDataFrom(DbObject& object, const Variant& types, const Variant& values);

// The stored size of `xdata` in bytes, as the 16 KB limit counts it.
size_t XDataSize(const XData& xdata);

}  // namespace tovik::host

#endif  // TOVIK_HOST_CORE_XDATA_H_
