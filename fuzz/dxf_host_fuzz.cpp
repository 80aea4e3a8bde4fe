// libFuzzer target over reading a DXF file into a live host drawing and
// writing it back: any input must either load (repaired) or raise the
// reader's automation error (never crash, hang or leak), and whatever loads
// must write a file that loads again with nothing to repair, and an R12
// binary copy that loads.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "frame/automation_error.h"
#include "host/core/application.h"
#include "host/core/document.h"
#include "host/dxf/dxf_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tovik::host;
  auto app = Application::Create({.open_drawing = false});
  std::shared_ptr<Document> doc;
  try {
    doc = dxf::ReadDrawingBuffer(*app, std::string(reinterpret_cast<const char*>(data), size), "fuzz.dxf");
  } catch (const tovik::AutomationError&) {
    return 0;
  }
  std::string written = dxf::WriteDrawing(*doc);
  std::string r12 = dxf::WriteDrawing(*doc, SaveFormat{"AC1009", true});
  try {
    auto again = dxf::ReadDrawingBuffer(*app, written, "written.dxf");
    // What the host wrote must read back as it was written.
    for (const std::string& repair : dxf::Repairs(*again)) {
      std::fprintf(stderr, "the written drawing needs a repair: %s\n", repair.c_str());
    }
    if (!dxf::Repairs(*again).empty()) std::abort();
    again->Close();
    dxf::ReadDrawingBuffer(*app, r12, "r12.dxf")->Close();
  } catch (const tovik::AutomationError& e) {
    // What the host wrote must always read back.
    std::fprintf(stderr, "the written drawing does not read: %s\n", e.Description().c_str());
    std::abort();
  }
  doc->Close();
  return 0;
}
