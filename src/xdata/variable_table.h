// The built-in variable table: the fixed list of variable names the library
// stores in extended data, each with the small integer ID that is written
// into the drawing instead of the name.
//
// The table is kept as design-time text lines, each a run of tab-separated
// fields alternating name and ID. The lines are laid out as four columns of
// ID ranges (1-15, 100-114, 70-84, 300-314), one name/ID pair per column on
// each line; a free ID is written with an empty name.
#ifndef TOVIK_XDATA_VARIABLE_TABLE_H_
#define TOVIK_XDATA_VARIABLE_TABLE_H_

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tovik {

// One variable: its name (matched without regard to case) and its ID.
struct VariableEntry {
  std::string name;
  int16_t id;
  std::string key;  // the name upper-cased (UCase), for lookups
};

// The fifteen design-time lines of the built-in table.
std::span<const std::string_view> BuiltInVariableLines();

// Builds the pairs from design-time lines. A line is used only if, after
// trimming spaces, it is not empty and does not start with "'" (a comment).
// The used lines are joined with tabs and split at tabs; fields 2k and 2k+1
// are a name (trimmed) and its ID (the numeric value of the text as an
// Integer). A pair with an empty name is a free slot and skipped; reading
// stops at the first pair that is incomplete.
// Raises 6 when an ID does not fit an Integer.
std::vector<VariableEntry> ParseVariableLines(std::span<const std::string_view> lines);

// Checks the pairs and raises 2411 "Invalid VariableTable" (source "Tovik
// Studio") followed, each on its own line (CR LF), by the duplicate names,
// the duplicate IDs and the zero IDs found. The zero-ID test covers every
// entry but the last, as the table has always been checked.
void ValidateVariableTable(const std::vector<VariableEntry>& entries);

// Parses and validates `lines` (LoadVariableTable of the Xdata class).
std::vector<VariableEntry> LoadVariableTable(std::span<const std::string_view> lines);

// ID of the first entry whose name equals `name` without regard to case.
// Raises 2411 "SetXdata fails. Variable names <name> not found", source
// "Tovik COM", when there is none.
int16_t VariableIdOf(const std::vector<VariableEntry>& entries, std::string_view name);

// Name of the first entry with ID `id`. Raises 2411 "SetXdata fails. VarID<id>
// not found", source "Tovik COM", when there is none.
std::string VariableNameOf(const std::vector<VariableEntry>& entries, int16_t id);

}  // namespace tovik

#endif  // TOVIK_XDATA_VARIABLE_TABLE_H_
