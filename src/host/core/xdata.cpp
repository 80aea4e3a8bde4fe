#include "host/core/xdata.h"

#include <algorithm>
#include <string>

#include "frame/conversions.h"
#include "frame/runtime_text.h"
#include "host/core/document.h"
#include "host/core/host_error.h"
#include "host/surface/args.h"
#include "host/tables/records.h"

namespace tovik::host {
namespace {

constexpr std::string_view kSetXData = "SetXData";

bool IsPointCode(int code) { return code >= 1010 && code <= 1013; }
bool IsRealCode(int code) { return code >= 1040 && code <= 1042; }

size_t ItemSize(const XDataItem& item) {
  const Variant& v = item.value;
  switch (item.code) {
    case 1070: return 2 + 2;
    case 1071: return 2 + 4;
    case 1004: return 2 + 1 + static_cast<size_t>(v.Array().Count());
    case 1005: return 2 + 8;
    default: break;
  }
  if (IsPointCode(item.code)) return 2 + 24;
  if (IsRealCode(item.code)) return 2 + 8;
  return 2 + (v.IsString() ? v.RawString().size() : 0) + 1;
}

// One item converted to its stored form; raises for a value the code
// cannot take.
XDataItem ConvertItem(Document& doc, int code, const Variant& raw, int& braces) {
  XDataItem item{static_cast<int16_t>(code), Variant()};
  auto bad = [] { return HostError(HostFailure::kInvalidInput); };
  if (IsPointCode(code)) {
    item.value = PointValue(PointArg(raw, {"XDataValue", kSetXData}));
    return item;
  }
  if (IsRealCode(code)) {
    if (!raw.IsNumber() && !raw.IsString()) throw bad();
    item.value = Variant(CDbl(raw));
    return item;
  }
  switch (code) {
    case 1070:
      if (!raw.IsNumber() && !raw.IsString()) throw bad();
      item.value = Variant(CInt(raw));
      return item;
    case 1071:
      if (!raw.IsNumber() && !raw.IsString()) throw bad();
      item.value = Variant(CLng(raw));
      return item;
    case 1004: {
      if (!raw.IsArray() || raw.Array().Count() > 127) throw bad();
      SafeArray bytes(VarType::kByte, 0, raw.Array().Count());
      for (int32_t i = 0; i < raw.Array().Count(); ++i) {
        bytes.Set(i, Variant::Byte(CByte(raw.Array().Items()[static_cast<size_t>(i)])));
      }
      item.value = Variant(std::move(bytes));
      return item;
    }
    default: break;
  }
  if (!raw.IsString()) throw bad();
  const std::string& text = raw.RawString();
  switch (code) {
    case 1000:
      if (text.size() > 255) throw bad();
      break;
    case 1002:
      if (text == "{") {
        ++braces;
      } else if (text == "}" && braces > 0) {
        --braces;
      } else {
        throw bad();
      }
      break;
    case 1003:
      if (!doc.layers().Find(text)) throw bad();
      break;
    case 1005:
      if (text.empty() || text.size() > 16 ||
          text.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos) {
        throw bad();
      }
      break;
    default: throw bad();
  }
  item.value = raw;
  return item;
}

struct IncomingRun {
  std::string app;
  std::vector<XDataItem> items;
};

std::vector<IncomingRun> ParseRuns(Document& doc, const Variant& types,
                                   const Variant& values) {
  if (!types.IsArray() || types.Array().Dims() != 1) {
    throw InvalidArgument("XDataType", kSetXData);
  }
  if (!values.IsArray() || values.Array().Dims() != 1) {
    throw InvalidArgument("XDataValue", kSetXData);
  }
  const auto& codes = types.Array().Items();
  const auto& data = values.Array().Items();
  if (codes.size() != data.size() || codes.empty()) {
    throw InvalidArgument("XDataValue", kSetXData);
  }
  std::vector<IncomingRun> runs;
  int braces = 0;
  for (size_t i = 0; i < codes.size(); ++i) {
    if (!codes[i].IsNumber()) throw InvalidArgument("XDataType", kSetXData);
    int code = CInt(codes[i]);
    if (code == 1001) {
      if (braces != 0) throw HostError(HostFailure::kInvalidInput);
      if (!data[i].IsString()) throw HostError(HostFailure::kInvalidInput);
      const std::string& app = data[i].RawString();
      if (app.empty() || app.size() > 31 || !IsValidSymbolName(app)) {
        throw HostError(HostFailure::kInvalidInput);
      }
      runs.push_back({app, {}});
      continue;
    }
    if (runs.empty()) throw HostError(HostFailure::kInvalidInput);
    runs.back().items.push_back(ConvertItem(doc, code, data[i], braces));
  }
  if (braces != 0) throw HostError(HostFailure::kInvalidInput);
  return runs;
}

}  // namespace

size_t XDataSize(const XData& xdata) {
  size_t total = 0;
  for (const XDataRun& run : xdata) {
    total += 2 + run.app->Name().size() + 1;
    for (const XDataItem& item : run.items) total += ItemSize(item);
  }
  return total;
}

void GetXDataInto(const DbObject& object, const Variant& app_name, Variant& types,
                  Variant& values) {
  std::string app = app_name.IsMissing() ? std::string() : CStr(app_name);
  const XData* xdata = object.xdata();
  if (!xdata) return;
  bool all = app.empty() || app == "*";
  std::vector<int16_t> codes;
  std::vector<Variant> data;
  for (const XDataRun& run : *xdata) {
    if (!all && !CaseInsensitiveEqual(run.app->Name(), app)) continue;
    codes.push_back(1001);
    data.emplace_back(run.app->Name());
    for (const XDataItem& item : run.items) {
      codes.push_back(item.code);
      data.push_back(item.value);
    }
  }
  if (codes.empty()) return;
  SafeArray code_array(VarType::kInteger, 0, static_cast<int32_t>(codes.size()));
  for (size_t i = 0; i < codes.size(); ++i) {
    code_array.Set(static_cast<int32_t>(i), Variant(codes[i]));
  }
  types = Variant(std::move(code_array));
  values = Variant(SafeArray::OfVariants(std::move(data)));
}

void SetXDataFrom(DbObject& object, const Variant& types, const Variant& values) {
  Document& doc = *object.document();
  std::vector<IncomingRun> runs = ParseRuns(doc, types, values);
  object.CheckWritable();
  // Build the result with names only, check the size, then register.
  XData result = object.xdata() ? *object.xdata() : XData();
  std::vector<std::pair<std::string, std::vector<XDataItem>>> pending;
  for (IncomingRun& run : runs) {
    auto same = [&](const XDataRun& r) { return CaseInsensitiveEqual(r.app->Name(), run.app); };
    std::erase_if(result, same);
    for (auto& p : pending) {
      if (CaseInsensitiveEqual(p.first, run.app)) p.second.clear();
    }
    std::erase_if(pending, [&](const auto& p) { return CaseInsensitiveEqual(p.first, run.app); });
    if (!run.items.empty()) pending.emplace_back(run.app, std::move(run.items));
  }
  size_t size = XDataSize(result);
  for (const auto& p : pending) {
    size += 2 + p.first.size() + 1;
    for (const XDataItem& item : p.second) size += ItemSize(item);
  }
  if (size > kMaxXDataBytes) throw HostError(HostFailure::kInvalidInput);
  object.Touch();
  for (auto& p : pending) {
    result.push_back({doc.EnsureRegApp(p.first), std::move(p.second)});
  }
  object.SetXData(std::make_shared<const XData>(std::move(result)));
}

}  // namespace tovik::host
