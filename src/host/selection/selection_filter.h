// Selection filters: the FilterType / FilterData pair of arrays that
// SelectionSet.Select*, SelectAtPoint and SelectOnScreen take, parsed once
// into an expression and evaluated against many entities.
//
// A filter is a list of (DXF group code, value) pairs, ANDed together:
//   - string codes (0 type, 2 block, 6 linetype, 8 layer, 410 layout, 1001
//     application, ...) match the subject's value against a wildcard pattern
//     (wildcard.h);
//   - numbers and points compare for equality, or by the relational operator
//     of a preceding (-4, op) pair: "*" (anything), "=", "!=", "/=", "<>",
//     "<", "<=", ">", ">=", "&" (bitwise AND nonzero), "&=" (value AND mask
//     equals mask). A point takes one operator for all axes or one per axis
//     ("<,>,*"); a single "!=" on a point means "not all axes equal";
//   - (-4, "<AND") ... (-4, "AND>"), "<OR"/"OR>" take one or more operands,
//     "<XOR"/"XOR>" exactly two, "<NOT"/"NOT>" exactly one; groups nest to
//     any depth (parsed and evaluated without recursion).
// A subject without any value for a code fails that test, negated patterns
// included (as the host's filters: no group, no match); a <NOT> around the
// test turns that into a match.
//
// The value type of each code follows the DXF group-code ranges (0–9
// strings, 10–39 points, 40–59 reals, 60–99 integers, ...); FilterData is
// converted to it, and a value that does not convert is refused.
#ifndef TOVIK_HOST_SELECTION_SELECTION_FILTER_H_
#define TOVIK_HOST_SELECTION_SELECTION_FILTER_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "frame/variant.h"
#include "geometry/vec3.h"
#include "host/selection/wildcard.h"

namespace tovik::host {

// One value a subject holds for a group code: text, a number (integers and
// reals alike) or a point.
struct FilterValue {
  enum class Kind : uint8_t { kText, kNumber, kPoint };
  Kind kind = Kind::kNumber;
  std::string_view text;  // kText; must outlive the evaluation
  double number = 0;      // kNumber
  geometry::Vec3 point;   // kPoint

  static FilterValue Text(std::string_view t) { return {Kind::kText, t, 0, {}}; }
  static FilterValue Number(double n) { return {Kind::kNumber, {}, n, {}}; }
  static FilterValue Point(const geometry::Vec3& p) { return {Kind::kPoint, {}, 0, p}; }
};

// What a filter reads of one object: its values for a DXF group code, as
// the object's DXF form would hold them (angles in degrees, points in the
// DXF's own system). Entities implement it through the host's adapter.
class FilterSubject {
 public:
  virtual ~FilterSubject() = default;
  // Appends the subject's values for `code` to *out (none: the code is
  // absent). Several values for one code (1001 applications) are alternatives:
  // a test matches when any of them does.
  virtual void ValuesOf(int code, std::vector<FilterValue>* out) const = 0;
};

// A subject given as a plain list of tagged values (a DXF tag list, an
// xrecord's data): every pair with the code answers.
class TagListSubject final : public FilterSubject {
 public:
  struct Tag {
    int code;
    FilterValue value;
  };
  explicit TagListSubject(std::vector<Tag> tags) : tags_(std::move(tags)) {}
  void ValuesOf(int code, std::vector<FilterValue>* out) const override;

 private:
  std::vector<Tag> tags_;
};

// The kind of value a DXF group code carries.
FilterValue::Kind KindOfCode(int code);

// A parsed filter. An empty filter (no pairs) matches everything.
class SelectionFilter {
 public:
  // Matches everything.
  SelectionFilter() = default;

  // Parses the FilterType / FilterData arguments of `member`. Both Missing
  // (or both Empty) gives the empty filter. Raises "Invalid argument
  // FilterType in <member>" when only one is given, when FilterType is not
  // a one-dimensional Integer array, when FilterData is not a Variant array,
  // or when the lengths differ; "Invalid argument FilterData in <member>"
  // for a value that does not fit its code, an unknown -4 operator, a
  // relational operator not followed by a value, or an unbalanced or
  // wrongly sized logical group.
  static SelectionFilter Parse(const Variant& filter_type, const Variant& filter_data,
                               std::string_view member);

  // True when the subject passes every test.
  bool Matches(const FilterSubject& subject) const;

  bool empty() const { return nodes_.empty(); }

  // The codes the filter reads (so a caller can skip computing the rest).
  const std::vector<int>& codes() const { return codes_; }

 private:
  enum class Op : uint8_t { kAnything, kEq, kNe, kLt, kLe, kGt, kGe, kBitAny, kBitAll };
  enum class NodeKind : uint8_t { kTest, kAnd, kOr, kXor, kNot };
  struct Node {
    NodeKind kind = NodeKind::kTest;
    // kTest
    int code = 0;
    FilterValue::Kind value_kind = FilterValue::Kind::kNumber;
    Op ops[3] = {Op::kEq, Op::kEq, Op::kEq};  // one per axis for points
    bool point_single_ne = false;  // a lone "!=" on a point
    double number = 0;
    geometry::Vec3 point;
    int pattern = -1;  // index into patterns_
    // groups: indexes of the operands (all earlier in nodes_)
    std::vector<uint32_t> operands;
  };
  friend class FilterParser;

  bool TestValue(const Node& node, const FilterValue& value) const;
  bool EvaluateTest(const Node& node, const FilterSubject& subject,
                    std::vector<FilterValue>* scratch) const;

  // Nodes in post-order: operands before their group; the last is the root.
  std::vector<Node> nodes_;
  std::vector<Wildcard> patterns_;
  std::vector<int> codes_;
};

}  // namespace tovik::host

#endif  // TOVIK_HOST_SELECTION_SELECTION_FILTER_H_
