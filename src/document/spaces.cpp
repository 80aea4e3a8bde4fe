#include "document/spaces.h"

#include <cstdlib>
#include <filesystem>

#include "frame/conversions.h"
#include "frame/error_trap.h"
#include "frame/host_link.h"
#include "frame/library_state.h"

namespace tovik {

ObjectRef CurrentSpaceOf(const ObjectRef& drawing) {
  ObjectRef doc = drawing ? drawing : CurrentDrawing();
  if (CLng(GetProperty(doc, "ActiveSpace")) != 0 || CBool(GetProperty(doc, "MSpace"))) {
    return GetProperty(doc, "ModelSpace").Object();
  }
  ObjectRef paper;
  ResumeNext trap;
  if (trap([&] { paper = GetProperty(doc, "PaperSpace").Object(); })) return paper;
  return GetProperty(GetProperty(doc, "ActiveLayout").Object(), "Block").Object();
}

std::string BlockLibraryFolder() {
  const std::string& set = Library().block_library_folder;
  if (!set.empty()) return set;
  if (const char* env = std::getenv("TOVIK_BLOCK_LIBRARY"); env && *env) return env;
  if (const char* data = std::getenv("XDG_DATA_HOME"); data && *data) {
    return std::string(data) + "/tovik/blocks";
  }
  const char* home = std::getenv("HOME");
  return std::string(home ? home : ".") + "/.local/share/tovik/blocks";
}

std::string LibraryBlockFile(const std::string& folder, const std::string& name) {
  std::error_code ec;
  for (const char* ext : {".dwg", ".dxf"}) {
    std::filesystem::path file = std::filesystem::path(folder) / (name + ext);
    if (std::filesystem::is_regular_file(file, ec)) return file.string();
  }
  return "";
}

ObjectRef LoadBlockFromFile(const ObjectRef& drawing, const std::string& path) {
  ObjectRef model = GetProperty(drawing, "ModelSpace").Object();
  ObjectRef ref = CallMethod(model, "InsertBlock",
                             {Variant(SafeArray::OfDoubles({0, 0, 0})), Variant(path), Variant(1.0),
                              Variant(1.0), Variant(1.0), Variant(0.0)})
                      .Object();
  Variant name = GetProperty(ref, "Name");
  CallMethod(ref, "Delete");
  return CallMethod(GetProperty(drawing, "Blocks").Object(), "Item", {name}).Object();
}

}  // namespace tovik
