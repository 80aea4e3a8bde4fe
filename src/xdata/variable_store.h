// Helpers of the Xdata class: the in-memory form of one object's variables
// while they are read or rewritten, and the encoding of one variable's body.
// Not part of the library's interface.
#ifndef TOVIK_XDATA_VARIABLE_STORE_H_
#define TOVIK_XDATA_VARIABLE_STORE_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "frame/dispatch.h"
#include "xdata/variable_table.h"

namespace tovik {

// One stored variable: its ID and its body exactly as stored (braces
// included).
struct StoredVariable {
  std::string key;  // the variable name upper-cased
  int16_t id = 0;
  std::vector<int16_t> codes;
  std::vector<Variant> values;
};

// The variables of one object, in their stored order, keyed by the
// upper-cased name.
class VariableCollection {
 public:
  // The variable under `key`, or nullptr.
  const StoredVariable* Find(std::string_view key) const;
  // Removes the variable under `key`; false when there is none.
  bool Remove(std::string_view key);
  // Appends a variable; false (and nothing added) when its key exists.
  bool Add(StoredVariable variable);

  const std::vector<StoredVariable>& items() const { return items_; }

 private:
  std::vector<StoredVariable> items_;
};

// The object whose extended data holds `acad_obj`'s variables: its layer
// "0" when it is a document ("AcadDocument" or "IAcadDocument"), otherwise
// the object itself. Raises 13 or 91 when acad_obj holds no object, and the
// host's error when the layer cannot be reached.
ObjectRef StorageObjectOf(const Variant& acad_obj);

// Reads `object`'s extended data for `appname` with GetXData. Returns false,
// leaving the vectors empty, when the object has none.
bool ReadAppData(const ObjectRef& object, std::string_view appname, std::vector<int16_t>& codes,
                 std::vector<Variant>& values);

// Writes a run with SetXdata (an Integer code array and a Variant value
// array).
void WriteAppData(const ObjectRef& object, const std::vector<int16_t>& codes,
                  const std::vector<Variant>& values);

// Reads `object`'s variables (ReadObjectVariables), first moving legacy
// "Pelmar" data to "Tovik COM" (see xdata_storage.cpp). Entries with an ID
// the table does not know are kept under the empty name; a second entry
// under one name is dropped.
VariableCollection ReadObjectVariables(const ObjectRef& object,
                                       const std::vector<VariableEntry>& table);

// Splits a "Tovik COM" run (codes and values from index 0, the application
// name first) into variables.
VariableCollection ParseVariableRun(const std::vector<int16_t>& codes,
                                    const std::vector<Variant>& values,
                                    const std::vector<VariableEntry>& table);

// The body of a variable (EncodeVariableBody): empties `codes` and `values`
// and fills them as `datatype` says. Raises the conversion error of a value
// the type cannot take (13 for a Boolean from a non-number text) and the
// table encoder's 2411 refusal; the vectors then hold what was written.
void EncodeVariableBody(const Variant& value, int32_t datatype, std::vector<int16_t>& codes,
                        std::vector<Variant>& values);

// Writes the collection back: 1001 "Tovik COM", then per variable 1070 ID
// and its body, in one SetXdata call.
void WriteObjectVariables(const ObjectRef& object, const VariableCollection& variables);

}  // namespace tovik

#endif  // TOVIK_XDATA_VARIABLE_STORE_H_
