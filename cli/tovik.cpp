// tovik: runs the library's work on DXF drawings from the command line.
//
//   tovik --version        the library's name and version
//   tovik classes          the automation classes and how each is obtained
//   tovik info FILE.dxf    a summary of a drawing (version, units, tables,
//                          entity counts, extended data, repairs)
//   tovik convert IN OUT [--version R12|R2000|...|R2018] [--binary]
//                          reads any DXF, repairs it, and writes it in the
//                          host's version or the one asked for
//   tovik preview FILE.dxf -o OUT.png|OUT.svg [options]
//                          a picture of the drawing (see preview_command.h)
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <unistd.h>

#include "dxf/tag_model.h"
#include "frame/automation_error.h"
#include "host/core/application.h"
#include "host/core/document.h"
#include "host/dxf/dxf_file.h"
#include "host/entities/kinds.h"
#include "host/tables/block.h"
#include "host/tables/records.h"
#include "cli/preview_command.h"
#include "type_library.h"

namespace {

constexpr const char* kUsage =
    "usage: tovik --version\n"
    "       tovik classes\n"
    "       tovik info FILE.dxf\n"
    "       tovik convert IN.dxf OUT.dxf [--version R12|R2000|R2004|R2007|R2010|R2013|R2018]\n"
    "                     [--binary]\n"
    "       tovik preview FILE.dxf -o OUT.png|OUT.svg [--size WxH] [--layout NAME]\n"
    "                     [--window X1,Y1,X2,Y2] [--background black|white]\n"
    "       tovik run SCRIPT.py [DRAWING|FOLDER ...] [-o OUTDIR] [--jobs N] [--log LOG]\n"
    "                 [--resume LOG]   (the script defines run(doc, args))\n";

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

std::shared_ptr<tovik::host::Document> Open(tovik::host::Application& app, const char* path) {
  return tovik::host::dxf::ReadDrawingFile(app, path);
}


// Ends the process once a command's output is flushed, without taking a
// large drawing apart object by object: the system reclaims it at once.
[[noreturn]] void ExitNow(int status) {
  std::fflush(stdout);
  std::fflush(stderr);
  std::_Exit(status);
}

int Info(const char* path) {
  using namespace tovik::host;
  auto app = Application::Create({.open_drawing = false});
  std::shared_ptr<Document> doc;
  try {
    doc = Open(*app, path);
  } catch (const tovik::AutomationError& e) {
    std::fprintf(stderr, "tovik: %s\n", e.Description().c_str());
    return 1;
  }
  std::printf("file:      %s\n", path);
  std::string version = tovik::host::dxf::SourceVersion(*doc);
  std::printf("version:   %s\n", version.empty() ? "(no header)" : version.c_str());
  tovik::Variant units = doc->GetSysVar("INSUNITS");
  std::printf("units:     %lld (INSUNITS)\n", static_cast<long long>(units.RawInt()));
  std::printf("handseed:  %llX\n", static_cast<unsigned long long>(doc->handle_seed()));
  std::printf("layers (%zu):", doc->layers().items.size());
  for (auto* l : doc->layers().items) std::printf(" %s", l->Name().c_str());
  std::printf("\nblocks (%zu):", doc->blocks().items.size());
  for (auto* b : doc->blocks().items) std::printf(" %s(%zu)", b->Name().c_str(), b->entities().size());
  std::map<std::string, size_t> counts;
  std::set<std::string> apps;
  size_t total = 0;
  for (auto* b : doc->blocks().items) {
    for (auto* e : b->entities()) {
      ++counts[std::string(tovik::host::DxfNameOf(*e))];
      ++total;
      if (e->xdata()) {
        for (const auto& run : *e->xdata()) {
          if (run.app) apps.insert(run.app->Name());
        }
      }
    }
  }
  std::printf("\nentities (%zu):\n", total);
  for (const auto& [kind, n] : counts) std::printf("  %-24s %zu\n", kind.c_str(), n);
  std::printf("extended data applications (%zu):", apps.size());
  for (const auto& a : apps) std::printf(" %s", a.c_str());
  auto repairs = tovik::host::dxf::Repairs(*doc);
  std::printf("\nrepairs (%zu):\n", repairs.size());
  for (const auto& r : repairs) std::printf("  %s\n", r.c_str());
  ExitNow(0);  // while the drawing is still alive: it is not taken apart
}

int Convert(int argc, char** argv) {
  using namespace tovik::host;
  const char* in = argv[2];
  const char* out = argv[3];
  SaveFormat format;
  for (int i = 4; i < argc; ++i) {
    std::string_view option = argv[i];
    if (option == "--binary") {
      format.binary = true;
    } else if (option == "--version" && i + 1 < argc) {
      format.version = std::string(tovik::host::dxf::VersionCodeOf(argv[++i]));
      if (format.version.empty()) {
        std::fprintf(stderr, "tovik: unknown version '%s' (R12, R2000, R2004, R2007, R2010, R2013, R2018)\n",
                     argv[i]);
        return 2;
      }
    } else {
      std::fprintf(stderr, "tovik: unknown option '%s'\n%s", argv[i], kUsage);
      return 2;
    }
  }
  auto app = Application::Create({.open_drawing = false});
  try {
    auto doc = Open(*app, in);
    std::vector<std::string> notes;
    tovik::host::dxf::WriteDrawingFile(*doc, out, format, &notes);
    for (const auto& r : tovik::host::dxf::Repairs(*doc)) std::fprintf(stderr, "repaired: %s\n", r.c_str());
    for (const auto& n : notes) std::fprintf(stderr, "written: %s\n", n.c_str());
    ExitNow(0);  // while the drawing is still alive: it is not taken apart
  } catch (const tovik::AutomationError& e) {
    std::fprintf(stderr, "tovik: %s\n", e.Description().c_str());
    return 1;
  }
  return 0;
}

// `tovik run ...`: the Python batch runner (python/tovik_run.py) with the
// same arguments, the module's folder put first on Python's path.
int Run(int argc, char** argv) {
  std::string path = TOVIK_PYTHON_DIR;
  const char* old = std::getenv("PYTHONPATH");
  if (old && *old) path += std::string(":") + old;
  setenv("PYTHONPATH", path.c_str(), 1);
  std::vector<char*> args;
  std::string python = "/usr/bin/python3", flag = "-m", module = "tovik_run";
  args.push_back(python.data());
  args.push_back(flag.data());
  args.push_back(module.data());
  for (int i = 2; i < argc; ++i) args.push_back(argv[i]);
  args.push_back(nullptr);
  execv(python.c_str(), args.data());
  std::perror("tovik run: /usr/bin/python3");
  return 127;
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
  if (command == "info" && argc == 3) return Info(argv[2]);
  if (command == "convert" && argc >= 4) return Convert(argc, argv);
  if (command == "preview") return tovik::cli::Preview(argc - 2, argv + 2);
  if (command == "run") return Run(argc, argv);
  if (command == "--help" || command == "help") {
    std::fputs(kUsage, stdout);
    return 0;
  }
  std::fprintf(stderr, "tovik: unknown command '%s'\n%s", argv[1], kUsage);
  return 2;
}
