// Test helpers for drawing files: the shared corpus, and the independent
// DXF reader (ezdxf, through the shared dxf-summary tool) as a checker.
#ifndef TOVIK_TESTS_SUPPORT_DXF_CHECKS_H_
#define TOVIK_TESTS_SUPPORT_DXF_CHECKS_H_

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <string>

namespace tovik {

// A drawing of the shared corpus, by its path below shared/dxf.
inline std::string CorpusDrawing(const std::string& relative) {
  return std::string(TOVIK_SHARED_DIR) + "/dxf/" + relative;
}

inline bool HaveEzdxf() {
  return std::system("/usr/bin/python3 -c 'import ezdxf' >/dev/null 2>&1") == 0;
}

// Runs `command` and returns what it printed on standard output; `status`
// receives its exit status.
inline std::string RunCommand(const std::string& command, int* status) {
  std::string out;
  FILE* pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return out;
  char buffer[4096];
  size_t n;
  while ((n = fread(buffer, 1, sizeof buffer, pipe)) > 0) out.append(buffer, n);
  int raw = pclose(pipe);
  *status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
  return out;
}

// dxf-summary with `arguments` (and its errors); `status` gets its exit status.
inline std::string DxfSummary(const std::string& arguments, int* status) {
  return RunCommand("/usr/bin/python3 " TOVIK_SHARED_DIR "/tools/dxf-summary " + arguments + " 2>&1",
                    status);
}

// The difference lines of a comparison ("[entity] lost LINE #38B ..."),
// without the summary line.
inline std::set<std::string> DifferenceLines(const std::string& report) {
  std::set<std::string> lines;
  size_t start = 0;
  while (start < report.size()) {
    size_t end = report.find('\n', start);
    if (end == std::string::npos) end = report.size();
    std::string line = report.substr(start, end - start);
    if (line.starts_with("[")) lines.insert(line);
    start = end + 1;
  }
  return lines;
}

}  // namespace tovik

// Skips the test when the corpus drawing `path` is not there.
#define SKIP_WITHOUT_DRAWING(path) \
  if (!std::filesystem::exists(path)) GTEST_SKIP() << "corpus drawing not present: " << (path)

// Skips the test when ezdxf is not installed (scripts/install-deps.sh).
#define SKIP_WITHOUT_EZDXF() \
  if (!::tovik::HaveEzdxf()) GTEST_SKIP() << "python3-ezdxf is not installed"

// The independent reader opens the file at `path` without audit errors.
#define EXPECT_EZDXF_ACCEPTS(path)                                             \
  do {                                                                         \
    SKIP_WITHOUT_EZDXF();                                                      \
    int status_ = 0;                                                           \
    const std::string check_ = ::tovik::DxfSummary("--check '" + std::string(path) + "'", &status_); \
    EXPECT_TRUE(check_.starts_with("OK")) << check_;                           \
  } while (0)

#endif  // TOVIK_TESTS_SUPPORT_DXF_CHECKS_H_
