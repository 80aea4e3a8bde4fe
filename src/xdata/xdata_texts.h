// The registered application names the extended-data subsystem reads and
// writes. Drawings carry these names, so they are kept verbatim. (The error
// texts the subsystem raises live with all others in frame/library_errors.h.)
#ifndef TOVIK_XDATA_XDATA_TEXTS_H_
#define TOVIK_XDATA_XDATA_TEXTS_H_

#include <string_view>

namespace tovik::xdata_texts {

// The registered application under which the library keeps its variables.
inline constexpr std::string_view kAppName = "Tovik COM";
// The application name earlier versions of the library stored under; data
// found under it is moved to kAppName on the first read.
inline constexpr std::string_view kLegacyAppName = "Pelmar";
// The application InheriteAllXdata copies by default.
inline constexpr std::string_view kStudioAppName = "Tovik Studio";

}  // namespace tovik::xdata_texts

#endif  // TOVIK_XDATA_XDATA_TEXTS_H_
