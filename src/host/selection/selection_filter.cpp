#include "host/selection/selection_filter.h"

#include <cmath>
#include <cstdint>
#include <optional>

#include "frame/conversions.h"
#include "frame/runtime_text.h"
#include "host/core/host_error.h"

namespace tovik::host {

void TagListSubject::ValuesOf(int code, std::vector<FilterValue>* out) const {
  for (const Tag& tag : tags_) {
    if (tag.code == code) out->push_back(tag.value);
  }
}

// The DXF group-code value ranges (the DXF reference's "group code value
// types" table), folded into the three kinds a filter compares.
FilterValue::Kind KindOfCode(int code) {
  using K = FilterValue::Kind;
  auto in = [code](int lo, int hi) { return code >= lo && code <= hi; };
  if (in(10, 39) || in(110, 139) || in(210, 239) || in(1010, 1013)) return K::kPoint;
  if (in(0, 9) || in(100, 109) || in(300, 369) || in(390, 399) || in(410, 419) ||
      in(430, 439) || in(470, 481) || code == 999 || in(1000, 1009)) {
    return K::kText;
  }
  return K::kNumber;
}

// Builds a SelectionFilter from the pair arrays, one pair at a time, with an
// explicit stack of open logical groups.
class FilterParser {
 public:
  using Node = SelectionFilter::Node;
  using NodeKind = SelectionFilter::NodeKind;
  using Op = SelectionFilter::Op;

  FilterParser(SelectionFilter* out, std::string_view member) : out_(out), member_(member) {
    stack_.push_back({NodeKind::kAnd, {}});
  }

  void Pair(int code, const Variant& value) {
    if (code == -4) {
      Operator(value);
      return;
    }
    Node node;
    node.code = code;
    node.value_kind = KindOfCode(code);
    if (pending_op_) {
      ApplyOperator(&node, *pending_op_);
      pending_op_.reset();
    }
    SetValue(&node, value);
    AddNode(std::move(node));
  }

  void Finish() {
    if (pending_op_ || stack_.size() != 1) throw Bad();
    if (stack_.back().operands.empty()) return;  // no tests: everything matches
    Node root;
    root.kind = NodeKind::kAnd;
    root.operands = std::move(stack_.back().operands);
    out_->nodes_.push_back(std::move(root));
  }

 private:
  struct Frame {
    NodeKind kind;
    std::vector<uint32_t> operands;
  };

  AutomationError Bad() const { return InvalidArgument("FilterData", member_); }

  void Operator(const Variant& value) {
    if (!value.IsString() || pending_op_) throw Bad();
    const std::string op = UCase(Trim(value.RawString()));
    static constexpr struct {
      std::string_view open, close;
      NodeKind kind;
    } kGroups[] = {{"<AND", "AND>", NodeKind::kAnd},
                   {"<OR", "OR>", NodeKind::kOr},
                   {"<XOR", "XOR>", NodeKind::kXor},
                   {"<NOT", "NOT>", NodeKind::kNot}};
    for (const auto& g : kGroups) {
      if (op == g.open) {
        stack_.push_back({g.kind, {}});
        return;
      }
      if (op == g.close) {
        CloseGroup(g.kind);
        return;
      }
    }
    pending_op_ = op;
  }

  void CloseGroup(NodeKind kind) {
    if (stack_.size() < 2 || stack_.back().kind != kind) throw Bad();
    Frame frame = std::move(stack_.back());
    stack_.pop_back();
    const size_t n = frame.operands.size();
    const bool sized = kind == NodeKind::kXor ? n == 2 : kind == NodeKind::kNot ? n == 1 : n >= 1;
    if (!sized) throw Bad();
    Node node;
    node.kind = kind;
    node.operands = std::move(frame.operands);
    AddNode(std::move(node));
  }

  void AddNode(Node node) {
    if (node.kind == NodeKind::kTest) {
      bool seen = false;
      for (int c : out_->codes_) seen = seen || c == node.code;
      if (!seen) out_->codes_.push_back(node.code);
    }
    out_->nodes_.push_back(std::move(node));
    stack_.back().operands.push_back(static_cast<uint32_t>(out_->nodes_.size() - 1));
  }

  Op ParseOp(std::string_view text) const {
    static constexpr struct {
      std::string_view text;
      Op op;
    } kOps[] = {{"*", Op::kAnything}, {"=", Op::kEq},  {"!=", Op::kNe},    {"/=", Op::kNe},
                {"<>", Op::kNe},      {"<", Op::kLt},  {"<=", Op::kLe},    {">", Op::kGt},
                {">=", Op::kGe},      {"&", Op::kBitAny}, {"&=", Op::kBitAll}};
    const std::string_view t = Trim(text);
    for (const auto& o : kOps) {
      if (t == o.text) return o.op;
    }
    throw Bad();
  }

  void ApplyOperator(Node* node, const std::string& text) const {
    std::vector<std::string> parts = Split(text, ",");
    if (parts.size() == 1) {
      const Op op = ParseOp(parts[0]);
      node->ops[0] = node->ops[1] = node->ops[2] = op;
      node->point_single_ne = op == Op::kNe;
    } else if (node->value_kind == FilterValue::Kind::kPoint && parts.size() <= 3) {
      node->ops[2] = Op::kAnything;
      for (size_t i = 0; i < parts.size(); ++i) node->ops[i] = ParseOp(parts[i]);
    } else {
      throw Bad();
    }
    // Strings compare only for (in)equality.
    if (node->value_kind == FilterValue::Kind::kText && node->ops[0] != Op::kAnything &&
        node->ops[0] != Op::kEq && node->ops[0] != Op::kNe) {
      throw Bad();
    }
  }

  void SetValue(Node* node, const Variant& value) {
    switch (node->value_kind) {
      case FilterValue::Kind::kText:
        if (!value.IsString()) throw Bad();
        node->pattern = static_cast<int>(out_->patterns_.size());
        out_->patterns_.emplace_back(value.RawString());
        break;
      case FilterValue::Kind::kNumber:
        if (!value.IsNumber() || value.IsBoolean()) throw Bad();
        node->number = NumberOf(value);
        if (!std::isfinite(node->number)) throw Bad();
        break;
      case FilterValue::Kind::kPoint: {
        if (!value.IsArray() || value.Array().Dims() != 1) throw Bad();
        const auto& items = value.Array().Items();
        if (items.size() != 2 && items.size() != 3) throw Bad();
        for (size_t i = 0; i < items.size(); ++i) {
          if (!items[i].IsNumber() || items[i].IsBoolean()) throw Bad();
          node->point[static_cast<int>(i)] = NumberOf(items[i]);
        }
        if (!geometry::IsFinite(node->point)) throw Bad();
        if (items.size() == 2) node->ops[2] = Op::kAnything;  // a 2D point ignores z
        break;
      }
    }
  }

  SelectionFilter* out_;
  std::string_view member_;
  std::vector<Frame> stack_;
  std::optional<std::string> pending_op_;
};

SelectionFilter SelectionFilter::Parse(const Variant& filter_type, const Variant& filter_data,
                                       std::string_view member) {
  auto absent = [](const Variant& v) { return v.IsMissing() || v.IsEmpty(); };
  if (absent(filter_type) && absent(filter_data)) return SelectionFilter();
  auto bad_shape = [member] { return InvalidArgument("FilterType", member); };
  if (absent(filter_type) || absent(filter_data)) throw bad_shape();
  if (!filter_type.IsArray() || !filter_data.IsArray()) throw bad_shape();
  const SafeArray& types = filter_type.Array();
  const SafeArray& data = filter_data.Array();
  if (types.ElementType() != VarType::kInteger || types.Dims() != 1 ||
      data.ElementType() != VarType::kVariant || data.Dims() != 1 ||
      types.Count() != data.Count()) {
    throw bad_shape();
  }
  SelectionFilter filter;
  FilterParser parser(&filter, member);
  for (int32_t i = 0; i < types.Count(); ++i) {
    parser.Pair(static_cast<int>(types.Items()[static_cast<size_t>(i)].RawInt()),
                data.Items()[static_cast<size_t>(i)]);
  }
  parser.Finish();
  return filter;
}

namespace {

// Real equality tolerates the last bits of a value that went through a
// conversion (degrees to radians and back); integers compare exactly.
bool NumbersEqual(double a, double b) { return geometry::IsClose(a, b, 1e-12, 1e-12); }

}  // namespace

bool SelectionFilter::TestValue(const Node& node, const FilterValue& value) const {
  if (value.kind != node.value_kind) return false;
  auto compare = [](Op op, double v, double f) {
    switch (op) {
      case Op::kAnything: return true;
      case Op::kEq: return NumbersEqual(v, f);
      case Op::kNe: return !NumbersEqual(v, f);
      case Op::kLt: return v < f;
      case Op::kLe: return v <= f || NumbersEqual(v, f);
      case Op::kGt: return v > f;
      case Op::kGe: return v >= f || NumbersEqual(v, f);
      case Op::kBitAny:
        return (static_cast<int64_t>(v) & static_cast<int64_t>(f)) != 0;
      case Op::kBitAll: {
        const auto mask = static_cast<int64_t>(f);
        return (static_cast<int64_t>(v) & mask) == mask;
      }
    }
    return false;
  };
  switch (node.value_kind) {
    case FilterValue::Kind::kText: {
      if (node.ops[0] == Op::kAnything) return true;
      const bool match = patterns_[static_cast<size_t>(node.pattern)].Matches(value.text);
      return node.ops[0] == Op::kNe ? !match : match;
    }
    case FilterValue::Kind::kNumber:
      return compare(node.ops[0], value.number, node.number);
    case FilterValue::Kind::kPoint: {
      if (node.point_single_ne) {
        return !(compare(Op::kEq, value.point.x, node.point.x) &&
                 compare(Op::kEq, value.point.y, node.point.y) &&
                 compare(Op::kEq, value.point.z, node.point.z));
      }
      for (int axis = 0; axis < 3; ++axis) {
        if (!compare(node.ops[axis], value.point[axis], node.point[axis])) return false;
      }
      return true;
    }
  }
  return false;
}

bool SelectionFilter::EvaluateTest(const Node& node, const FilterSubject& subject,
                                   std::vector<FilterValue>* scratch) const {
  scratch->clear();
  subject.ValuesOf(node.code, scratch);
  for (const FilterValue& v : *scratch) {
    if (TestValue(node, v)) return true;
  }
  return false;
}

bool SelectionFilter::Matches(const FilterSubject& subject) const {
  if (nodes_.empty()) return true;
  std::vector<char> result(nodes_.size(), 0);
  std::vector<FilterValue> scratch;
  for (size_t i = 0; i < nodes_.size(); ++i) {
    const Node& node = nodes_[i];
    bool r = false;
    switch (node.kind) {
      case NodeKind::kTest: r = EvaluateTest(node, subject, &scratch); break;
      case NodeKind::kAnd:
        r = true;
        for (uint32_t k : node.operands) r = r && result[k];
        break;
      case NodeKind::kOr:
        for (uint32_t k : node.operands) r = r || result[k];
        break;
      case NodeKind::kXor: r = (result[node.operands[0]] != 0) != (result[node.operands[1]] != 0); break;
      case NodeKind::kNot: r = !result[node.operands[0]]; break;
    }
    result[i] = r;
  }
  return result.back() != 0;
}

}  // namespace tovik::host
