#include "toolkit/commons.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "frame/automation_error.h"
#include "frame/library_state.h"

namespace tovik {
namespace {

std::filesystem::path NativePath(std::string path) {
#ifndef _WIN32
  for (char& c : path) {
    if (c == '\\') c = '/';
  }
#endif
  return std::filesystem::path(path);
}

}  // namespace

std::string CommonsWorkingFolder() {
  const std::string& set = Library().commons_folder;
  if (!set.empty()) return set;
  if (const char* env = std::getenv("TOVIK_WORK_FOLDER"); env && *env) return env;
  const char* user = std::getenv("USER");
  if (!user || !*user) user = std::getenv("USERNAME");
  std::error_code ec;
  std::filesystem::path folder = std::filesystem::temp_directory_path(ec) /
                                 ("tovik-" + std::string(user && *user ? user : "user"));
  std::filesystem::create_directories(folder, ec);
  return folder.string();
}

void WriteTextFile(const std::string& path, std::string_view text) {
  std::ofstream out(NativePath(path), std::ios::binary | std::ios::trunc);
  if (!out) throw errors::Runtime(kErrPathNotFound);
  out.write(text.data(), static_cast<std::streamsize>(text.size()));
  if (!out) throw errors::Runtime(kErrPathNotFound);
}

void DeleteTextFile(const std::string& path) {
  std::error_code ec;
  std::filesystem::remove(NativePath(path), ec);
}

}  // namespace tovik
