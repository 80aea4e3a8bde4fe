// Xdata: reading, writing, deleting and copying variables on host objects.
#include <string>
#include <utility>
#include <vector>

#include "frame/automation_error.h"
#include "frame/conversions.h"
#include "frame/error_trap.h"
#include "frame/host_link.h"
#include "frame/runtime_text.h"
#include "xdata/table_format.h"
#include "xdata/variable_store.h"
#include "xdata/xdata.h"
#include "xdata/xdata_texts.h"

namespace tovik {
namespace {

// Element `index` of ParArray, counted from index 0 whatever its lower
// bound; raises 9 when there is none (or ParArray is no array).
const Variant& ParElement(const Variant& par_array, int32_t index) {
  if (!par_array.IsArray()) throw errors::SubscriptOutOfRange();
  return par_array.Array().At(index);
}

// Renames the registered application "Pelmar" of the active drawing to
// "Tovik COM" (the host then files every object's data under the new name).
// Returns true when the application exists and the rename failed, which
// happens when both names are registered.
bool RenameLegacyApplication() {
  ResumeNext trap;
  ObjectRef app;
  trap([&] {
    ObjectRef document = GetProperty(HostApplication(), "ActiveDocument").Object();
    ObjectRef apps = GetProperty(document, "RegisteredApplications").Object();
    app = GetProperty(apps, "Item", {Variant(xdata_texts::kLegacyAppName)}).Object();
  });
  if (!app) return false;
  return !trap([&] { LetProperty(app, "Name", Variant(xdata_texts::kAppName)); });
}

// Decodes the stored body `v` of a variable read as `datatype` into
// `value`; leaves `value` as it was when the body does not fit.
void DecodeBody(const std::vector<Variant>& v, int32_t datatype, Variant& value) {
  switch (datatype) {
    case xTable:
      value = GroupCodesToTable(std::span<const Variant>(v));
      return;
    case xMultilinesText: {
      if (v.size() == 2) {  // only the braces
        value = Variant("");
        return;
      }
      if (v.empty()) return;
      Variant text = v.size() == 1 ? v[0] : v[1];
      // Lines 2, 3, ... up to the one before the last element (the closing
      // brace, never appended).
      for (size_t m = 2; m + 1 < v.size(); ++m) {
        text = Variant(CStr(text) + "\r\n" + CStr(v[m]));
      }
      value = std::move(text);
      return;
    }
    case xBoolean:
      if (!v.empty()) value = Variant(CBool(v[0]));
      return;
    default:
      if (v.size() >= 2) {
        value = GroupCodesToTable(std::span<const Variant>(v));
      } else if (!v.empty()) {
        value = v[0];
      }
      return;
  }
}

}  // namespace

VariableCollection ReadObjectVariables(const ObjectRef& object,
                                       const std::vector<VariableEntry>& table) {
  Variant holder(object);
  ObjectRef target = object->TypeName() == "IAcadDocument" ? StorageObjectOf(holder) : object;
  std::vector<int16_t> codes;
  std::vector<Variant> values;
  if (RenameLegacyApplication()) {
    // Both names are registered: move this object's legacy data by hand.
    if (ReadAppData(target, xdata_texts::kLegacyAppName, codes, values)) {
      values[0] = Variant(xdata_texts::kAppName);
      WriteAppData(target, codes, values);
      WriteAppData(target, {1001}, {Variant(xdata_texts::kLegacyAppName)});
    } else {
      ReadAppData(target, xdata_texts::kAppName, codes, values);
    }
  } else {
    ReadAppData(target, xdata_texts::kAppName, codes, values);
  }
  return ParseVariableRun(codes, values, table);
}

void Xdata::GetAppXdata(const Variant& acad_obj, std::string_view varname,
                        Variant& start_up_value, Variant& datatype, Variant& par_array) {
  // The companion commons library's service would see StartUpValue first;
  // it leaves the value as it is.
  ObjectRef object = StorageObjectOf(acad_obj);
  EnsureTable();
  VariableCollection variables = ReadObjectVariables(object, table_);
  ResumeNext trap;
  for (int32_t k = -3;; k += 3) {
    std::string name;
    int32_t type = 0;
    if (k < 0) {
      name = std::string(varname);
      if (!trap([&] { type = CLng(datatype); })) break;
    } else {
      if (!trap([&] { name = CStr(ParElement(par_array, k)); })) break;
      if (!trap([&] { datatype = Variant(CLng(ParElement(par_array, k + 2))); })) break;
      type = CLng(datatype);
    }
    const StoredVariable* variable = variables.Find(UCase(name));
    if (variable == nullptr) continue;  // the slot keeps the caller's default
    if (k < 0) {
      trap([&] { DecodeBody(variable->values, type, start_up_value); });
    } else {
      trap([&] {
        SafeArray& slots = par_array.MutableArray();
        Variant slot = slots.At(k + 1);
        DecodeBody(variable->values, type, slot);
        slots.Set(k + 1, std::move(slot));
      });
    }
  }
}

Variant Xdata::GetAppXdata(const Variant& acad_obj, std::string_view varname,
                           const Variant& default_value, int32_t datatype) {
  Variant value = default_value;
  Variant type(datatype);
  Variant no_pars;
  GetAppXdata(acad_obj, varname, value, type, no_pars);
  return value;
}

void Xdata::SetAppXData(const Variant& acad_obj, std::string_view varname, const Variant& value,
                        int32_t datatype, Variant& par_array) {
  ObjectRef object = StorageObjectOf(acad_obj);
  EnsureTable();
  std::string key = UCase(varname);
  VariableCollection variables = ReadObjectVariables(object, table_);
  variables.Remove(key);
  StoredVariable main{key, GetVariableID(varname), {}, {}};
  EncodeVariableBody(value, datatype, main.codes, main.values);
  variables.Add(std::move(main));

  // Further triples, trapped: an unknown name is added with ID 0 and the
  // pending lookup error ends the walk after it.
  ResumeNext trap;
  for (int32_t k = 0; trap.Number() == 0; k += 3) {
    std::string name;
    if (!trap([&] { name = CStr(ParElement(par_array, k)); })) break;
    StoredVariable extra{UCase(name), 0, {}, {}};
    variables.Remove(extra.key);
    trap([&] { extra.id = GetVariableID(name); });
    int32_t type = 0;
    trap([&] { type = CLng(ParElement(par_array, k + 2)); });
    trap([&] { EncodeVariableBody(ParElement(par_array, k + 1), type, extra.codes, extra.values); });
    variables.Add(std::move(extra));
  }
  WriteObjectVariables(object, variables);
}

void Xdata::SetAppXData(const Variant& acad_obj, std::string_view varname, const Variant& value,
                        int32_t datatype) {
  Variant no_pars;
  SetAppXData(acad_obj, varname, value, datatype, no_pars);
}

void Xdata::DeleteAppXdata(const Variant& acad_obj, std::string_view varname,
                           Variant& par_array) {
  ObjectRef object = StorageObjectOf(acad_obj);
  EnsureTable();
  VariableCollection variables = ReadObjectVariables(object, table_);
  variables.Remove(UCase(varname));
  ResumeNext trap;
  for (int32_t k = 0;; ++k) {
    std::string name;
    if (!trap([&] { name = CStr(ParElement(par_array, k)); })) break;
    variables.Remove(UCase(name));
  }
  WriteObjectVariables(object, variables);
}

void Xdata::DeleteAppXdata(const Variant& acad_obj, std::string_view varname) {
  Variant no_pars;
  DeleteAppXdata(acad_obj, varname, no_pars);
}

void Xdata::RemoveXdata(const Variant& acad_obj, std::string_view appname) {
  WriteAppData(StorageObjectOf(acad_obj), {1001}, {Variant(appname)});
}

void Xdata::InheriteAllXdata(const ObjectRef& source_ent, const ObjectRef& des_ent,
                             bool all_registered_applications) {
  std::vector<std::string> names;
  if (all_registered_applications) {
    ObjectRef document = GetProperty(source_ent, "Document").Object();
    ObjectRef apps = GetProperty(document, "RegisteredApplications").Object();
    for (const Variant& app : ForEach(apps)) names.push_back(CStr(GetProperty(app.Object(), "Name")));
  } else {
    names.emplace_back(xdata_texts::kStudioAppName);
  }
  std::vector<int16_t> codes;
  std::vector<Variant> values;
  for (const std::string& name : names) {
    if (ReadAppData(source_ent, name, codes, values)) WriteAppData(des_ent, codes, values);
  }
}

}  // namespace tovik
