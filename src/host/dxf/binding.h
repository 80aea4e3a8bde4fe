// Helpers the DXF reader and writer of the host database share.
#ifndef TOVIK_HOST_DXF_BINDING_H_
#define TOVIK_HOST_DXF_BINDING_H_

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <numbers>
#include <string>
#include <string_view>
#include <utility>

#include "dxf/record.h"
#include "frame/runtime_text.h"
#include "geometry/ocs.h"
#include "geometry/vec3.h"

namespace tovik::host::dxf {

using namespace ::tovik::dxf;

inline constexpr double kDegToRad = std::numbers::pi / 180.0;
inline constexpr double kRadToDeg = 180.0 / std::numbers::pi;

// Whether `n` is exactly +Z, where OCS and WCS coincide.
inline bool IsZAxis(const geometry::Vec3& n) { return n.x == 0 && n.y == 0 && n.z == 1; }
// A world point in the OCS of `normal` (as given when the normal is +Z or
// unusable).
inline geometry::Vec3 ToOcs(const geometry::Vec3& p, const geometry::Vec3& normal) {
  if (IsZAxis(normal)) return p;
  return geometry::WcsToOcs(p, normal).value_or(p);
}

// The handle of `tag` when it is a valid handle tag, else 0.
inline uint64_t HandleValue(const Tag* tag) {
  if (tag == nullptr || tag->kind != ValueKind::kHandle || tag->integer <= 0) return 0;
  return static_cast<uint64_t>(tag->integer);
}

// The record's own handle (5, or 105 for DIMSTYLE); 0 when it has none.
inline uint64_t HandleOf(const Record& record) {
  const Tag* tag = record.Find(5);
  if (tag == nullptr) tag = record.Find(105);
  return HandleValue(tag);
}

// The owner handle: the first 330 outside 102 groups; 0 when none.
inline uint64_t OwnerOf(const Record& record) {
  int depth = 0;
  for (const Tag& t : record.Body()) {
    if (t.code == 102) depth += !t.text.empty() && t.text[0] == '{' ? 1 : (depth > 0 ? -1 : 0);
    if (t.code == 330 && depth == 0) return HandleValue(&t);
  }
  return 0;
}

// The number held by `tag` whatever its numeric kind.
inline double NumberOf(const Tag& tag) {
  return tag.IsDouble() ? tag.real : static_cast<double>(tag.integer);
}

// The first value of `code` as a double, or `fallback`. `Fields` is a
// Record or a RecordFields (anything with Find(code)); likewise below.
template <class Fields>
double RealOr(const Fields& record, int code, double fallback) {
  const Tag* tag = record.Find(code);
  return tag != nullptr && (tag->IsDouble() || tag->IsInteger()) ? NumberOf(*tag) : fallback;
}

// The first value of `code` as an integer, or `fallback`.
template <class Fields>
int64_t IntOr(const Fields& record, int code, int64_t fallback) {
  const Tag* tag = record.Find(code);
  return tag != nullptr && tag->IsInteger() ? tag->integer : fallback;
}

// The point of group `code` (x at code, y at code+10, z at code+20).
template <class Fields>
geometry::Vec3 PointOr(const Fields& record, int code, geometry::Vec3 fallback = {}) {
  return {RealOr(record, code, fallback.x), RealOr(record, code + 10, fallback.y),
          RealOr(record, code + 20, fallback.z)};
}

// acAlignment from TEXT's horizontal (72) and vertical (73/74) justification.
inline int32_t AlignmentOf(int64_t horizontal, int64_t vertical) {
  if (vertical <= 0 || horizontal > 2) return static_cast<int32_t>(horizontal < 0 || horizontal > 5 ? 0 : horizontal);
  static constexpr int32_t kByVertical[4] = {0, 12, 9, 6};  // Bottom, Middle, Top left
  if (vertical > 3) return 0;
  return kByVertical[vertical] + static_cast<int32_t>(horizontal);
}

// The (72, vertical) pair of an acAlignment.
inline std::pair<int, int> JustificationOf(int32_t alignment) {
  if (alignment <= 5) return {alignment, 0};
  if (alignment <= 8) return {alignment - 6, 3};
  if (alignment <= 11) return {alignment - 9, 2};
  return {alignment - 12, 1};
}

// A handle as DXF writes it: upper-case hex without leading zeros.
inline std::string HexOf(uint64_t value) {
  char buffer[24];
  std::snprintf(buffer, sizeof buffer, "%llX", static_cast<unsigned long long>(value));
  return buffer;
}

// Folds a name for lookups as the host's tables compare names: case-
// insensitively, non-ASCII letters included ("ÄRA" matches "ära").
inline std::string FoldName(std::string_view name) {
  std::string out(name);
  bool ascii = true;
  for (char& c : out) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    if (static_cast<unsigned char>(c) >= 0x80) ascii = false;
  }
  return ascii ? out : FoldCase(name);
}

// Angle in radians normalised to [0, 2π).
inline double NormalAngle(double radians) {
  double two_pi = 2 * std::numbers::pi;
  double a = std::fmod(radians, two_pi);
  return a < 0 ? a + two_pi : a;
}

}  // namespace tovik::host::dxf

#endif  // TOVIK_HOST_DXF_BINDING_H_
