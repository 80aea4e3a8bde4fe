// A long entity list is written in two halves at once, the second by a
// helper thread. The text must be the one a single pass writes, whatever
// the drawing holds: the drawings of the shared corpus, the damaged ones
// and the fuzz findings (upgraded versions, records without handles,
// repaired records), and a drawing edited after it was read.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "frame/automation_error.h"
#include "frame/conversions.h"
#include "frame/dispatch.h"
#include "host/core/application.h"
#include "host/core/document.h"
#include "host/dxf/dxf_file.h"
#include "host/dxf/write/writer.h"
#include "tests/support/host_fixture.h"

namespace tovik::host::dxf {
namespace {

struct Written {
  std::string text;
  std::vector<std::string> notes;
};

Written WriteWithSplit(const Document& doc, size_t split_records, std::string_view version = {}) {
  Written out;
  DbWriter writer(doc, *doc.dxf_source(), version);
  writer.set_split_records(split_records);
  writer.Run([&out](std::string_view piece) { out.text.append(piece); });
  out.notes = writer.TakeNotes();
  return out;
}

// Where two texts part: the line and what each has there ("" when equal).
// A whole-text comparison would print megabytes.
std::string FirstDifference(const std::string& a, const std::string& b) {
  if (a == b) return "";
  size_t at = 0;
  while (at < a.size() && at < b.size() && a[at] == b[at]) ++at;
  size_t line = 1 + static_cast<size_t>(std::count(a.begin(), a.begin() + static_cast<std::ptrdiff_t>(at), '\n'));
  size_t start = a.rfind('\n', at == 0 ? 0 : at - 1);
  start = start == std::string::npos ? 0 : start + 1;
  return "line " + std::to_string(line) + ": \"" + a.substr(start, at - start + 40) + "\" / \"" +
         b.substr(start, at - start + 40) + "\" (sizes " + std::to_string(a.size()) + ", " +
         std::to_string(b.size()) + ")";
}

void ExpectSameTextSplitOrNot(const Document& doc, std::string_view version = {}) {
  Written one = WriteWithSplit(doc, SIZE_MAX, version);
  Written two = WriteWithSplit(doc, 2, version);
  EXPECT_EQ(FirstDifference(one.text, two.text), "");
  EXPECT_EQ(one.notes, two.notes);
}

std::string Bytes(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream bytes;
  bytes << in.rdbuf();
  return bytes.str();
}

TEST(DxfWriterSplit, EveryDrawingIsWrittenAsInOnePass) {
  auto app = Application::Create({.open_drawing = false});
  const std::vector<std::filesystem::path> dirs = {
      std::filesystem::path(TOVIK_SHARED_DIR) / "dxf",
      std::filesystem::path(TOVIK_SOURCE_DIR) / "tests/dxf_damaged",
      std::filesystem::path(TOVIK_SOURCE_DIR) / "tests/dxf_fuzz_regressions"};
  int compared = 0;
  for (const auto& dir : dirs) {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(dir)) {
      if (entry.path().extension() != ".dxf") continue;
      SCOPED_TRACE(entry.path().string());
      std::shared_ptr<Document> doc;
      try {
        doc = ReadDrawingBuffer(*app, Bytes(entry.path()), entry.path().string());
      } catch (const AutomationError&) {
        continue;  // refused: nothing to write
      }
      ExpectSameTextSplitOrNot(*doc);
      // Through a code page (R2004 and before): the encoder is not shared.
      ExpectSameTextSplitOrNot(*doc, "AC1018");
      ++compared;
    }
  }
  EXPECT_GT(compared, 40);
}

TEST(DxfWriterSplit, AnEditedDrawingIsWrittenAsInOnePass) {
  auto app = Application::Create({.open_drawing = false});
  std::shared_ptr<Document> built = app->AddDocument();
  ObjectRef ms = GetProperty(ObjectRef(built), "ModelSpace").Object();
  ObjectRef blocks = GetProperty(ObjectRef(built), "Blocks").Object();
  ObjectRef tag = CallMethod(blocks, "Add", {Pt(0, 0), Variant("TAG")}).Object();
  CallMethod(tag, "AddCircle", {Pt(0, 0), Variant(1.0)});
  CallMethod(tag, "AddAttribute", {Variant(0.5), Variant(int32_t{0}), Variant("id"), Pt(0, -2), Variant("ID"),
                                   Variant("?")});
  for (int i = 0; i < 40; ++i) {
    CallMethod(ms, "InsertBlock", {Pt(4.0 * i, 0), Variant("TAG"), Variant(1.0), Variant(1.0), Variant(1.0),
                                   Variant(0.0)});
    CallMethod(ms, "AddLine", {Pt(4.0 * i, 3), Pt(4.0 * i + 2, 3)});
  }
  std::shared_ptr<Document> doc = ReadDrawingBuffer(*app, WriteDrawing(*built), "edited.dxf");
  std::vector<Variant> items = ForEach(GetProperty(ObjectRef(doc), "ModelSpace").Object());
  ASSERT_EQ(items.size(), 80u);
  // In the second half: an entity erased, an attribute's text and a line
  // changed, extended data given; and a new line after the list.
  CallMethod(items[70].Object(), "Delete");
  ObjectRef att = CallMethod(items[60].Object(), "GetAttributes").Array().Items()[0].Object();
  LetProperty(att, "TextString", Variant("sixty"));
  LetProperty(items[61].Object(), "EndPoint", Pt(500, 500));
  CallMethod(items[63].Object(), "SetXData",
             {Codes({1001, 1000}), Variant(SafeArray::Of({Variant("TOVIK_TEST"), Variant("note")}))});
  CallMethod(GetProperty(ObjectRef(doc), "ModelSpace").Object(), "AddLine", {Pt(0, 0), Pt(1, 1)});
  ExpectSameTextSplitOrNot(*doc);
}

}  // namespace
}  // namespace tovik::host::dxf
