#include "xdata/variable_store.h"

#include <span>
#include <utility>

#include "frame/automation_error.h"
#include "frame/conversions.h"
#include "frame/error_trap.h"
#include "frame/runtime_text.h"
#include "xdata/table_format.h"
#include "xdata/xdata.h"
#include "xdata/xdata_texts.h"

namespace tovik {
namespace {

constexpr int16_t kCodeAppName = 1001;
constexpr int16_t kCodeBrace = 1002;
constexpr int16_t kCodeText = 1000;
constexpr int16_t kCodeInteger = 1070;

bool IsBraceValue(const Variant& value, char brace) {
  return value.IsString() && value.RawString().size() == 1 && value.RawString()[0] == brace;
}

}  // namespace

const StoredVariable* VariableCollection::Find(std::string_view key) const {
  for (const StoredVariable& item : items_) {
    if (item.key == key) return &item;
  }
  return nullptr;
}

bool VariableCollection::Remove(std::string_view key) {
  for (auto it = items_.begin(); it != items_.end(); ++it) {
    if (it->key == key) {
      items_.erase(it);
      return true;
    }
  }
  return false;
}

bool VariableCollection::Add(StoredVariable variable) {
  if (Find(variable.key) != nullptr) return false;
  items_.push_back(std::move(variable));
  return true;
}

ObjectRef StorageObjectOf(const Variant& acad_obj) {
  const ObjectRef& object = acad_obj.Object();
  std::string_view type = object->TypeName();
  // The host's documents call themselves "IAcadDocument"; a document
  // reached through the runtime's own wrapper calls itself "AcadDocument".
  if (type != "AcadDocument" && type != "IAcadDocument") return object;
  Variant layers = GetProperty(object, "Layers");
  return GetProperty(layers.Object(), "Item", {Variant("0")}).Object();
}

bool ReadAppData(const ObjectRef& object, std::string_view appname, std::vector<int16_t>& codes,
                 std::vector<Variant>& values) {
  codes.clear();
  values.clear();
  Variant args[3] = {Variant(appname), Variant(), Variant()};
  CallMethodRef(object, "GetXData", args);
  // No data: the host leaves both outs untouched (Empty).
  if (!args[1].IsArray() || !args[2].IsArray()) return false;
  for (const Variant& code : args[1].Array().Items()) codes.push_back(CInt(code));
  values = args[2].Array().Items();
  return !values.empty();
}

void WriteAppData(const ObjectRef& object, const std::vector<int16_t>& codes,
                  const std::vector<Variant>& values) {
  SafeArray code_array(VarType::kInteger, 0, static_cast<int32_t>(codes.size()));
  for (size_t i = 0; i < codes.size(); ++i) {
    code_array.Ref(static_cast<int32_t>(i)) = Variant(codes[i]);
  }
  Variant args[2] = {Variant(std::move(code_array)),
                     Variant(SafeArray::OfVariants(values))};
  CallMethodRef(object, "SetXdata", args);
}

VariableCollection ParseVariableRun(const std::vector<int16_t>& codes,
                                    const std::vector<Variant>& values,
                                    const std::vector<VariableEntry>& table) {
  VariableCollection variables;
  size_t n = std::min(codes.size(), values.size());
  size_t i = 1;  // element 0 is the application name
  while (i < n) {
    StoredVariable variable;
    try {
      variable.id = CInt(values[i]);
    } catch (const AutomationError&) {
      break;  // not an ID: the rest cannot be read
    }
    try {
      variable.key = UCase(VariableNameOf(table, variable.id));
    } catch (const AutomationError&) {
      // An ID the table does not know: kept under the empty name.
    }
    // The body: one element, or a brace-enclosed run up to its matching
    // close (or the end of the data).
    size_t j = i + 1;
    int depth = 0;
    do {
      if (j >= n) break;
      variable.codes.push_back(codes[j]);
      variable.values.push_back(values[j]);
      if (codes[j] == kCodeBrace && IsBraceValue(values[j], '{')) ++depth;
      if (codes[j] == kCodeBrace && IsBraceValue(values[j], '}')) --depth;
      ++j;
    } while (depth != 0);
    variables.Add(std::move(variable));  // a second entry under one name is dropped
    i = j;
  }
  return variables;
}

void EncodeVariableBody(const Variant& value, int32_t datatype, std::vector<int16_t>& codes,
                        std::vector<Variant>& values) {
  codes.clear();
  values.clear();
  switch (datatype) {
    case xString:
    case xLayerName:
    case xHandle:
    case xPoint:
    case XVector:
    case xDouble:
    case xDistance:
    case xInteger:
    case xLong:
      // The value as given: no conversion and no unit scaling.
      codes.push_back(static_cast<int16_t>(datatype));
      values.push_back(value);
      return;
    case xBoolean:
      // Stored as an Integer; the type number 1006 never reaches the drawing.
      values.emplace_back(static_cast<int16_t>(CBool(value) ? kTrue : kFalse));
      codes.push_back(kCodeInteger);
      return;
    case xMultilinesText: {
      std::string text = CStr(value);
      std::vector<std::string> lines = Split(text, "\r\n");
      if (lines.empty()) lines.emplace_back();  // an empty text is one empty line
      codes.push_back(kCodeBrace);
      values.emplace_back("{");
      for (std::string& line : lines) {
        codes.push_back(kCodeText);
        values.emplace_back(std::move(line));
      }
      codes.push_back(kCodeBrace);
      values.emplace_back("}");
      return;
    }
    case xTable:
      AppendTableRun(value, codes, values);
      return;
    default:
      return;  // an unknown type writes no body: the variable is its ID alone
  }
}

void WriteObjectVariables(const ObjectRef& object, const VariableCollection& variables) {
  std::vector<int16_t> codes{kCodeAppName};
  std::vector<Variant> values{Variant(xdata_texts::kAppName)};
  for (const StoredVariable& variable : variables.items()) {
    codes.push_back(kCodeInteger);
    values.emplace_back(variable.id);
    codes.insert(codes.end(), variable.codes.begin(), variable.codes.end());
    values.insert(values.end(), variable.values.begin(), variable.values.end());
  }
  WriteAppData(object, codes, values);
}

}  // namespace tovik
