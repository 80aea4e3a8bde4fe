#include "xdata/table_format.h"

#include <string>
#include <utility>
#include <vector>

#include "frame/automation_error.h"
#include "frame/conversions.h"
#include "frame/dispatch.h"
#include "frame/library_errors.h"
#include "frame/runtime_number.h"

namespace tovik {
namespace {

// Group codes of the table run.
constexpr int16_t kCodeText = 1000;
constexpr int16_t kCodeBrace = 1002;
constexpr int16_t kCodeLayer = 1003;
constexpr int16_t kCodeReal = 1040;
constexpr int16_t kCodeInteger = 1070;
constexpr int16_t kCodeLong = 1071;

AutomationError NotNative() {
  return errors::Library(kTableNotNative, kSourceTovikCom);
}

// One table being walked: its array and the next index to read.
struct WalkFrame {
  const SafeArray* array;  // nullptr for a value that is no array
  int32_t count;
  int32_t next;
};

WalkFrame FrameOf(const Variant& table) {
  if (!table.IsArray()) return WalkFrame{nullptr, 0, 0};
  return WalkFrame{&table.Array(), TableElementCount(table), 0};
}

void AppendElementText(const Variant& element, std::string& out) {
  switch (element.Type()) {
    case VarType::kEmpty:
      out += "EMPTY";
      return;
    case VarType::kInteger:
      out += std::to_string(element.RawInt());
      return;
    case VarType::kDouble:
      out += FormatDouble(element.RawDouble());
      return;
    case VarType::kString:
      out += '"';
      out += element.RawString();
      out += '"';
      return;
    case VarType::kBoolean:
      out += element.RawBool() ? "TRUE" : "FALSE";
      return;
    default:
      throw NotNative();
  }
}

bool IsLayerObject(const Variant& element) {
  std::string name = TypeName(element);
  return name == "IAcadLayer" || name == "IAcadLayer2";
}

// The one code/value pair of a plain element of a group-code run.
void AppendElementPair(const Variant& element, std::vector<int16_t>& codes,
                       std::vector<Variant>& values) {
  if (element.IsObject()) {
    if (element.IsNothing()) {
      codes.push_back(kCodeText);
      values.emplace_back("");
      return;
    }
    if (!IsLayerObject(element)) throw NotNative();
    Variant name = GetProperty(element.RawObject(), "Name");
    codes.push_back(kCodeLayer);
    values.push_back(std::move(name));
    return;
  }
  switch (element.Type()) {
    case VarType::kEmpty:
      codes.push_back(kCodeReal);
      values.emplace_back(0.0);
      return;
    case VarType::kInteger:
      codes.push_back(kCodeInteger);
      break;
    case VarType::kLong:
      codes.push_back(kCodeLong);
      break;
    case VarType::kDouble:
      codes.push_back(kCodeReal);
      break;
    case VarType::kString:
      codes.push_back(kCodeText);
      break;
    case VarType::kBoolean:
      codes.push_back(kCodeInteger);
      values.emplace_back(static_cast<int16_t>(element.RawBool() ? kTrue : kFalse));
      return;
    default:
      throw NotNative();
  }
  values.push_back(element);
}

// `target` as a one-dimensional array to append to; a value that is no array
// becomes a new empty array of `element_type`.
SafeArray& AppendTarget(Variant& target, VarType element_type) {
  if (!target.IsArray()) target = Variant(SafeArray::Empty(element_type));
  return target.MutableArray();
}

// True when `value` is the String `brace`; other types never equal a brace.
bool IsBrace(const Variant& value, char brace) {
  return value.IsString() && value.RawString().size() == 1 &&
         value.RawString()[0] == brace;
}

}  // namespace

int32_t TableElementCount(const Variant& table) {
  if (!table.IsArray()) return 0;
  const SafeArray& array = table.Array();
  if (array.Dims() < 1) return 0;
  return array.UBound(1) - array.LBound(1) + 1;
}

std::string TableToText(const Variant& table) {
  std::string out = "{";
  std::vector<WalkFrame> stack{FrameOf(table)};
  while (!stack.empty()) {
    WalkFrame& frame = stack.back();
    if (frame.next >= frame.count) {
      out += '}';
      stack.pop_back();
      continue;
    }
    int32_t i = frame.next++;
    if (i > 0) out += '\t';
    // Read from index 0 whatever the lower bound: another bound runs into
    // the subscript error, as indexing the array directly would.
    const Variant& element = frame.array->At(i);
    if (element.IsArray()) {
      out += '{';
      stack.push_back(FrameOf(element));  // invalidates `frame`
    } else {
      AppendElementText(element, out);
    }
  }
  return out;
}

void AppendTableRun(const Variant& table, std::vector<int16_t>& codes,
                    std::vector<Variant>& values) {
  // The run is built aside; a nested table reaches the output only once
  // all of it has been encoded, so on a refusal the output keeps exactly
  // the top-level elements before the failing one.
  std::vector<int16_t> run_codes{kCodeBrace};
  std::vector<Variant> run_values{Variant("{")};
  size_t committed = run_codes.size();
  std::vector<WalkFrame> stack{FrameOf(table)};
  bool failed = false;
  AutomationError error(0, std::string());
  try {
    while (!stack.empty()) {
      WalkFrame& frame = stack.back();
      if (stack.size() == 1) committed = run_codes.size();
      if (frame.next >= frame.count) {
        run_codes.push_back(kCodeBrace);
        run_values.emplace_back("}");
        stack.pop_back();
        continue;
      }
      const Variant& element = frame.array->At(frame.next++);
      if (element.IsArray()) {
        run_codes.push_back(kCodeBrace);
        run_values.emplace_back("{");
        stack.push_back(FrameOf(element));  // invalidates `frame`
      } else {
        AppendElementPair(element, run_codes, run_values);
      }
    }
    committed = run_codes.size();
  } catch (const AutomationError& e) {
    failed = true;
    error = e;
  }
  codes.insert(codes.end(), run_codes.begin(), run_codes.begin() + committed);
  values.insert(values.end(), std::make_move_iterator(run_values.begin()),
                std::make_move_iterator(run_values.begin() + committed));
  if (failed) throw error;
}

void TableToGroupCodes(const Variant& table, Variant& codes, Variant& values) {
  std::vector<int16_t> run_codes;
  std::vector<Variant> run_values;
  bool failed = false;
  AutomationError error(0, std::string());
  try {
    AppendTableRun(table, run_codes, run_values);
  } catch (const AutomationError& e) {
    failed = true;
    error = e;
  }
  SafeArray& code_array = AppendTarget(codes, VarType::kInteger);
  SafeArray& value_array = AppendTarget(values, VarType::kVariant);
  for (size_t i = 0; i < run_codes.size(); ++i) {
    code_array.Append(Variant(run_codes[i]));
    value_array.Append(std::move(run_values[i]));
  }
  if (failed) throw error;
}

Variant GroupCodesToTable(const Variant& values) {
  if (!values.IsArray()) return Variant(SafeArray::Empty());
  return GroupCodesToTable(std::span<const Variant>(values.Array().Items()));
}

Variant GroupCodesToTable(std::span<const Variant> values) {
  std::vector<Variant> top;
  // Tables opened inside the outermost one and not yet closed.
  std::vector<std::vector<Variant>> open;
  // Brace depth; it may go negative on stray closing braces, and a "{" that
  // brings it back to 1 reopens the outermost table.
  int64_t depth = 0;
  for (const Variant& v : values) {
    bool closes = IsBrace(v, '}');
    bool opens = IsBrace(v, '{');
    if (closes) --depth;
    if (depth >= 1) {
      if (closes) {
        Variant done(SafeArray::OfVariants(std::move(open.back())));
        open.pop_back();
        (open.empty() ? top : open.back()).push_back(std::move(done));
      } else if (opens) {
        open.emplace_back();
      } else {
        (depth == 1 ? top : open.back()).push_back(v);
      }
    }
    if (opens) ++depth;
  }
  return Variant(SafeArray::OfVariants(std::move(top)));
}

}  // namespace tovik
