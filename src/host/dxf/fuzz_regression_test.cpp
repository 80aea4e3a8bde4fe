// Inputs the fuzz target found: each is read (or refused with the reader's
// error), and a drawing that reads is written and must read back.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "frame/automation_error.h"
#include "host/core/application.h"
#include "host/core/document.h"
#include "host/dxf/dxf_file.h"

namespace tovik::host::dxf {
namespace {

TEST(DxfFuzzRegressions, EveryDrawingThatReadsIsWrittenSoThatItReadsBack) {
  const std::filesystem::path dir = std::filesystem::path(TOVIK_SOURCE_DIR) / "tests/dxf_fuzz_regressions";
  auto app = Application::Create({.open_drawing = false});
  int cases = 0;
  for (const auto& entry : std::filesystem::directory_iterator(dir)) {
    if (entry.path().extension() != ".dxf") continue;
    ++cases;
    SCOPED_TRACE(entry.path().filename().string());
    std::ifstream in(entry.path(), std::ios::binary);
    std::stringstream bytes;
    bytes << in.rdbuf();
    std::shared_ptr<Document> doc;
    try {
      doc = ReadDrawingBuffer(*app, bytes.str(), entry.path().string());
    } catch (const AutomationError& e) {
      // Refusing is fine, with the reader's text naming the file.
      EXPECT_NE(e.Description().find(entry.path().string()), std::string::npos) << e.Description();
      continue;
    }
    std::string written = WriteDrawing(*doc);
    try {
      ReadDrawingBuffer(*app, written, "written.dxf");
    } catch (const AutomationError& e) {
      ADD_FAILURE() << "the copy does not read: " << e.Description();
    }
  }
  EXPECT_EQ(cases, 8);
}

}  // namespace
}  // namespace tovik::host::dxf
