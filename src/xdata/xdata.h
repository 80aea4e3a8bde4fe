// Xdata: named, typed variables kept in the extended data of host objects
// (entities, block definitions, layers, documents), and the text and
// group-code forms of tables.
//
// A variable is addressed by a name from the built-in variable table; only
// its ID is written into the drawing. All variables of one object live in
// the object's extended data for the registered application "Tovik COM":
//   1001 "Tovik COM", then per variable 1070 ID followed by its body,
// in the object's variable order. Every write reads that run, changes it and
// writes the whole run back with one SetXdata call; a rewritten variable
// moves to the end. A document's variables are kept on its layer "0".
//
// The instance owns its copy of the variable table (loaded when it is made)
// and borrows the host objects it is given for the length of a call.
#ifndef TOVIK_XDATA_XDATA_H_
#define TOVIK_XDATA_XDATA_H_

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "frame/member_table.h"
#include "xdata/variable_table.h"

namespace tovik {

// How a variable's value is written (the type itself is not stored). Most
// types write one pair whose code is the type number; xBoolean writes 1070
// -1/0, xMultilinesText a brace-enclosed run of 1000 lines, xTable the
// table's group-code run.
enum XdataType : int32_t {
  xString = 1000,
  xTable = 1002,
  xLayerName = 1003,
  xHandle = 1005,
  xBoolean = 1006,
  xMultilinesText = 1008,
  xPoint = 1011,
  XVector = 1013,
  xDouble = 1040,
  xDistance = 1042,
  xInteger = 1070,
  xLong = 1071,
};

class Xdata : public DispatchObject<Xdata> {
 public:
  static constexpr std::string_view kClassName = "Xdata";

  // Loads the built-in variable table. Raises 2411 "Invalid VariableTable"
  // (source "Tovik Studio") when it fails validation.
  Xdata();
  static std::shared_ptr<Xdata> Make() { return std::make_shared<Xdata>(); }
  // The library's implicit instance is made this way.
  static ObjectRef MakeGlobal() { return Make(); }

  std::string_view TypeName() const override { return kClassName; }
  static const MemberTable<Xdata>& Members();

  // XdataVarname(index): the name at table index `index` (0-based); loads
  // the table if empty. Raises 9 for an index outside the table.
  std::string XdataVarname(int32_t index);
  // XdataVarID(index): the ID at table index `index`; as XdataVarname.
  int16_t XdataVarID(int32_t index);
  // GetVariableID(Varname): the ID of a name, matched without regard to
  // case. Raises 2411 "SetXdata fails. Variable names <name> not found"
  // (source "Tovik COM").
  int16_t GetVariableID(std::string_view varname) const;
  // GetVariableName(VarID): the name of an ID. Raises 2411 "SetXdata fails.
  // VarID<id> not found" (source "Tovik COM").
  std::string GetVariableName(int16_t var_id) const;

  // GetAppXdata(acadObj, Varname, StartUpValue, Datatype, ParArray): reads
  // the variable Varname of acadObj (a document means its layer "0") into
  // StartUpValue, decoded by Datatype; then each triple (name, value,
  // Datatype) of ParArray from index 0 into its value slot. A variable the
  // object lacks leaves its slot as the caller set it (the default).
  // Datatype is written back with the type of the last triple read. The
  // request walk is trapped: a bad triple ends it. Host failures of reading
  // the object's extended data reach the caller.
  void GetAppXdata(const Variant& acad_obj, std::string_view varname,
                   Variant& start_up_value, Variant& datatype, Variant& par_array);
  // Convenience form: the value of one variable, or `default_value`.
  Variant GetAppXdata(const Variant& acad_obj, std::string_view varname,
                      const Variant& default_value, int32_t datatype);

  // SetAppXData(acadObj, Varname, Value, Datatype, ParArray): writes Varname
  // = Value encoded by Datatype, then each triple (name, value, Datatype) of
  // ParArray, at the end of the object's variables, all in one SetXdata
  // call. Raises 2411 "SetXdata fails. Variable names <name> not found" for
  // an unknown Varname (nothing is written). The ParArray walk is trapped:
  // an unknown name there is written with ID 0 and ends the walk. Host
  // failures (a locked layer, an object without extended data) reach the
  // caller.
  void SetAppXData(const Variant& acad_obj, std::string_view varname, const Variant& value,
                   int32_t datatype, Variant& par_array);
  void SetAppXData(const Variant& acad_obj, std::string_view varname, const Variant& value,
                   int32_t datatype);

  // DeleteAppXdata(acadObj, Varname, ParArray): removes Varname and every
  // name listed in ParArray (from index 0 until an element is missing) from
  // the object's variables and writes the rest back; no name is checked
  // against the table. With none left, the object's "Tovik COM" data goes.
  void DeleteAppXdata(const Variant& acad_obj, std::string_view varname, Variant& par_array);
  void DeleteAppXdata(const Variant& acad_obj, std::string_view varname);

  // RemoveXdata(acadObj, Appname): deletes all extended data of application
  // Appname from the object (a document means its layer "0").
  void RemoveXdata(const Variant& acad_obj, std::string_view appname);

  // InheriteAllXdata(sourceEnt, desEnt, AllRegisteredApplications): copies
  // the source's extended data to desEnt unchanged, application by
  // application: every registered application of the source's Document
  // when AllRegisteredApplications is True, otherwise only "Tovik Studio"
  // (not "Tovik COM"). Host failures reach the caller.
  void InheriteAllXdata(const ObjectRef& source_ent, const ObjectRef& des_ent,
                        bool all_registered_applications);

  // The variable table in use.
  const std::vector<VariableEntry>& variable_table() const { return table_; }

 private:
  void EnsureTable();

  std::vector<VariableEntry> table_;
};

}  // namespace tovik

#endif  // TOVIK_XDATA_XDATA_H_
