// Choosing the written DXF version from what a drawing's file holds.
#include "host/dxf/write/version.h"

#include <array>

#include "host/dxf/dxf_file.h"

namespace tovik::host::dxf {
namespace {

// Entity kinds whose geometry is ACIS modeller data.
constexpr std::array<std::string_view, 10> kAcisKinds = {
    "3DSOLID",         "REGION",         "BODY",           "SURFACE",      "EXTRUDEDSURFACE",
    "LOFTEDSURFACE",   "REVOLVEDSURFACE", "SWEPTSURFACE",  "PLANESURFACE", "NURBSSURFACE"};

bool IsAcisKind(std::string_view type) {
  for (std::string_view kind : kAcisKinds) {
    if (type == kind) return true;
  }
  return false;
}

// True for an ACIS entity that carries SAT text (groups 1/3 of its
// AcDbModelerGeometry part).
bool HasSatData(const Record& record) {
  if (!IsAcisKind(record.type)) return false;
  auto geometry = record.Subclass("AcDbModelerGeometry");
  if (!geometry) return false;
  for (const Tag& t : *geometry) {
    if ((t.code == 1 || t.code == 3) && !t.text.empty()) return true;
  }
  return false;
}

// True for an MTEXT that links further MTEXT entities as its columns: a
// 1005 handle between "ACAD_MTEXT_COLUMNS_BEGIN" and "..._END" in its ACAD
// xdata.
bool HasLinkedColumns(const Record& record) {
  if (record.type != "MTEXT") return false;
  auto acad = record.Xdata("ACAD");
  if (!acad) return false;
  bool inside = false;
  for (const Tag& t : *acad) {
    if (t.code == 1000 && t.text == "ACAD_MTEXT_COLUMNS_BEGIN") inside = true;
    else if (t.code == 1000 && t.text == "ACAD_MTEXT_COLUMNS_END") inside = false;
    else if (inside && t.code == 1005) return true;
  }
  return false;
}

bool NeedsOlderForms(const Record& record) { return HasSatData(record) || HasLinkedColumns(record); }

}  // namespace

std::string_view WriteVersionFor(const TagModel& model) {
  std::string_view original = model.version();
  if (original.empty() || original >= "AC1027") return kWriteVersion;
  for (const Section& section : model.sections()) {
    for (const Record& record : section.records) {
      if (NeedsOlderForms(record)) return kOlderFormsVersion;
    }
    for (const Block& block : section.blocks) {
      for (const Record& record : block.entities) {
        if (NeedsOlderForms(record)) return kOlderFormsVersion;
      }
    }
  }
  return kWriteVersion;
}

}  // namespace tovik::host::dxf
