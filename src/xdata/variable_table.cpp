#include "xdata/variable_table.h"

#include <array>
#include <optional>

#include "frame/automation_error.h"
#include "frame/library_errors.h"
#include "frame/runtime_number.h"
#include "frame/runtime_text.h"

namespace tovik {
namespace {

// Line n holds the pairs whose IDs are n, 99 + n, 69 + n and 299 + n. Drawings
// hold only the IDs, so a name may never move to another ID.
constexpr std::array<std::string_view, 15> kBuiltInLines = {
    "VBCodes\t1\tInertiaBlock\t100\tPreviousLayer\t70\tCSILabel\t300",
    "DataType\t2\tMainSectionHandle\t101\tOriginLineType\t71\tStation\t301",
    "Boundary\t3\tStressFactor\t102\tOriginColorIndex\t72\tStory\t302",
    "\t4\tParameters\t103\tOrgLock\t73\tAnonyBType\t303",
    "DoubleOrg\t5\tSectionMark\t104\tOriginBlock\t74\tWPMatrix\t304",
    "\t6\tMaterialDatabase\t105\tGreyBlock\t75\tDateMod\t305",
    "\t7\tForce4D\t106\tHiddenBlock\t76\tSectionColor\t306",
    "Category\t8\tFormula\t107\t\t77\tTop\t307",
    "\t9\tMass\t108\t\t78\tBottom\t308",
    "UnitSetting\t10\t\t109\t\t79\tIsViewBox\t309",
    "\t11\t\t110\t\t80\tVisibility\t310",
    "\t12\t\t111\t\t81\tClippedD1\t311",
    "\t13\t\t112\t\t82\tClippedD2\t312",
    "Comments\t14\t\t113\t\t83\tETModel\t313",
    "InvisibleRef\t15\t\t114\t\t84\tUnitID\t314",
};

void AppendPair(std::string& text, const VariableEntry& a, const VariableEntry& b) {
  text += "{" + a.name + ", " + b.name + "}";
}

}  // namespace

std::span<const std::string_view> BuiltInVariableLines() { return kBuiltInLines; }

std::vector<VariableEntry> ParseVariableLines(std::span<const std::string_view> lines) {
  std::string joined;
  bool first = true;
  for (std::string_view line : lines) {
    std::string_view trimmed = Trim(line);
    if (trimmed.empty() || trimmed.front() == '\'') continue;  // comment
    if (!first) joined += '\t';
    joined += line;
    first = false;
  }
  std::vector<std::string> fields = Split(joined, "\t");
  std::vector<VariableEntry> entries;
  for (size_t k = 0; k + 1 < fields.size(); k += 2) {
    std::string name(Trim(fields[k]));
    std::optional<double> value = Val(fields[k + 1]);
    std::optional<int16_t> id = value ? ToInteger(*value) : std::nullopt;
    if (!id) throw errors::Overflow();
    if (name.empty()) continue;  // a free slot
    std::string key = UCase(name);
    entries.push_back(VariableEntry{std::move(name), *id, std::move(key)});
  }
  return entries;
}

void ValidateVariableTable(const std::vector<VariableEntry>& entries) {
  std::string names(kDuplicateVarnamePrefix);
  std::string ids(kDuplicateVarIdPrefix);
  std::string invalid(kInvalidVarIdPrefix);
  bool fault = false;
  size_t n = entries.size();
  // The outer walk ends one short of the last entry, so the last entry's ID
  // is never tested for zero; drawings were validated this way.
  for (size_t i = 0; i + 1 < n; ++i) {
    const VariableEntry& a = entries[i];
    if (a.id == 0) {
      invalid += "{" + a.name + "," + std::to_string(a.id) + "}";
      fault = true;
    }
    for (size_t j = i + 1; j < n; ++j) {
      const VariableEntry& b = entries[j];
      if (a.key == b.key) {
        AppendPair(names, a, b);
        fault = true;
      } else if (a.id == b.id) {
        AppendPair(ids, a, b);
        fault = true;
      }
    }
  }
  if (fault) {
    throw errors::Library(std::string(kInvalidVariableTable) + "\r\n" + names +
                              "\r\n" + ids + "\r\n" + invalid,
                          kSourceTovikStudio);
  }
}

std::vector<VariableEntry> LoadVariableTable(std::span<const std::string_view> lines) {
  std::vector<VariableEntry> entries = ParseVariableLines(lines);
  ValidateVariableTable(entries);
  return entries;
}

int16_t VariableIdOf(const std::vector<VariableEntry>& entries, std::string_view name) {
  std::string upper = UCase(name);
  for (const VariableEntry& entry : entries) {
    if (entry.key == upper) return entry.id;
  }
  throw errors::Library(VariableNameNotFound(name), kSourceTovikCom);
}

std::string VariableNameOf(const std::vector<VariableEntry>& entries, int16_t id) {
  for (const VariableEntry& entry : entries) {
    if (entry.id == id) return entry.name;
  }
  throw errors::Library(VariableIdNotFound(id), kSourceTovikCom);
}

}  // namespace tovik
