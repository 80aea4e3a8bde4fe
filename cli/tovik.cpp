// tovik: runs the library's work on DXF drawings from the command line.
//
//   tovik --version        the library's name and version
//   tovik classes          the automation classes and how each is obtained
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>

#include "type_library.h"

namespace {

constexpr const char* kUsage =
    "usage: tovik --version\n"
    "       tovik classes\n";

int PrintVersion() {
  std::printf("tovik %.*s (type library %.*s)\n",
              static_cast<int>(tovik::kTypeLibraryVersion.size()),
              tovik::kTypeLibraryVersion.data(),
              static_cast<int>(tovik::kTypeLibraryName.size()),
              tovik::kTypeLibraryName.data());
  return 0;
}

int PrintClasses() {
  for (const tovik::ClassInfo& info : tovik::Classes()) {
    std::string how(tovik::InstancingText(info.instancing));
    if (!info.factory.empty()) how += " (from " + std::string(info.factory) + ")";
    std::printf("%-16.*s %s\n", static_cast<int>(info.name.size()),
                info.name.data(), how.c_str());
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fputs(kUsage, stderr);
    return 2;
  }
  std::string_view command = argv[1];
  if (command == "--version" || command == "version") return PrintVersion();
  if (command == "classes") return PrintClasses();
  if (command == "--help" || command == "help") {
    std::fputs(kUsage, stdout);
    return 0;
  }
  std::fprintf(stderr, "tovik: unknown command '%s'\n%s", argv[1], kUsage);
  return 2;
}
