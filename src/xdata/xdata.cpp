// Xdata: the variable table members and the member table.
#include "xdata/xdata.h"

#include <string>

#include "frame/automation_error.h"
#include "frame/conversions.h"
#include "xdata/table_format.h"

namespace tovik {

Xdata::Xdata() : table_(LoadVariableTable(BuiltInVariableLines())) {}

void Xdata::EnsureTable() {
  if (table_.empty()) table_ = LoadVariableTable(BuiltInVariableLines());
}

std::string Xdata::XdataVarname(int32_t index) {
  EnsureTable();
  if (index < 0 || static_cast<size_t>(index) >= table_.size()) {
    throw errors::SubscriptOutOfRange();
  }
  return table_[static_cast<size_t>(index)].name;
}

int16_t Xdata::XdataVarID(int32_t index) {
  EnsureTable();
  if (index < 0 || static_cast<size_t>(index) >= table_.size()) {
    throw errors::SubscriptOutOfRange();
  }
  return table_[static_cast<size_t>(index)].id;
}

int16_t Xdata::GetVariableID(std::string_view varname) const {
  return VariableIdOf(table_, varname);
}

std::string Xdata::GetVariableName(int16_t var_id) const {
  return VariableNameOf(table_, var_id);
}

namespace {

// An optional Boolean argument: False when omitted.
bool OptionalBool(CallArgs& a, size_t i) { return a.Has(i) && CBool(a[i]); }

Variant NoResult() { return Variant(); }

}  // namespace

const MemberTable<Xdata>& Xdata::Members() {
  static const MemberTable<Xdata> table = [] {
    MemberTable<Xdata> t;
    // XdataVarname(index) As String.
    t.Method(
        "XdataVarname",
        [](Xdata& s, CallArgs& a) { return Variant(s.XdataVarname(CInt(a[0]))); }, 1, 1);
    // XdataVarID(index) As Integer.
    t.Method(
        "XdataVarID", [](Xdata& s, CallArgs& a) { return Variant(s.XdataVarID(CInt(a[0]))); },
        1, 1);
    // GetVariableID(Varname) As Integer.
    t.Method(
        "GetVariableID",
        [](Xdata& s, CallArgs& a) { return Variant(s.GetVariableID(CStr(a[0]))); }, 1, 1);
    // GetVariableName(VarID) As String.
    t.Method(
        "GetVariableName",
        [](Xdata& s, CallArgs& a) { return Variant(s.GetVariableName(CInt(a[0]))); }, 1, 1);
    // GetAppXdata(acadObj, Varname, StartUpValue, Datatype[, ParArray]):
    // StartUpValue, Datatype and ParArray are written back.
    t.Method(
        "GetAppXdata",
        [](Xdata& s, CallArgs& a) {
          Variant no_pars;
          Variant& pars = a.size() > 4 ? a[4] : no_pars;
          s.GetAppXdata(a[0], CStr(a[1]), a[2], a[3], pars);
          return NoResult();
        },
        4, 5);
    // SetAppXData(acadObj, Varname, Value, Datatype[, ParArray]).
    t.Method(
        "SetAppXData",
        [](Xdata& s, CallArgs& a) {
          Variant no_pars;
          Variant& pars = a.size() > 4 ? a[4] : no_pars;
          s.SetAppXData(a[0], CStr(a[1]), a[2], CLng(a[3]), pars);
          return NoResult();
        },
        4, 5);
    // DeleteAppXdata(acadObj, Varname[, ParArray]).
    t.Method(
        "DeleteAppXdata",
        [](Xdata& s, CallArgs& a) {
          Variant no_pars;
          Variant& pars = a.size() > 2 ? a[2] : no_pars;
          s.DeleteAppXdata(a[0], CStr(a[1]), pars);
          return NoResult();
        },
        2, 3);
    // RemoveXdata(acadObj[, Appname]): Appname defaults to "Tovik COM".
    t.Method(
        "RemoveXdata",
        [](Xdata& s, CallArgs& a) {
          s.RemoveXdata(a[0], a.Has(1) ? CStr(a[1]) : std::string("Tovik COM"));
          return NoResult();
        },
        1, 2);
    // InheriteAllXdata(sourceEnt, desEnt[, AllRegisteredApplications]).
    t.Method(
        "InheriteAllXdata",
        [](Xdata& s, CallArgs& a) {
          s.InheriteAllXdata(a[0].Object(), a[1].Object(), OptionalBool(a, 2));
          return NoResult();
        },
        2, 3);
    // FormatTableToString(Table) As String.
    t.Method(
        "FormatTableToString", [](Xdata&, CallArgs& a) { return Variant(TableToText(a[0])); },
        1, 1);
    // FormatStringToTable(TString) As Variant.
    t.Method(
        "FormatStringToTable",
        [](Xdata&, CallArgs& a) { return TextToTable(CStr(a[0])); }, 1, 1);
    // FormatTableToDxf(Table, ardxf, ardata): appends to ardxf and ardata.
    t.Method(
        "FormatTableToDxf",
        [](Xdata&, CallArgs& a) {
          TableToGroupCodes(a[0], a[1], a[2]);
          return NoResult();
        },
        3, 3).Outs({1, 2});
    // FormatDxfToTable(Table, ardata): Table receives the decoded table.
    t.Method(
        "FormatDxfToTable",
        [](Xdata&, CallArgs& a) {
          a[0] = GroupCodesToTable(a[1]);
          return NoResult();
        },
        2, 2).Outs({0});
    return t;
  }();
  return table;
}

}  // namespace tovik
