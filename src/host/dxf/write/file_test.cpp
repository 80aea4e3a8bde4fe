// Writing a drawing to a file: the body is held in pieces until the header
// is written; the file must hold exactly the text WriteDrawing returns, and
// a file that cannot be created raises the host's error.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "host/core/application.h"
#include "host/dxf/dxf_file.h"
#include "host/entities/kinds.h"
#include "host/tables/block.h"
#include "tests/support/host_fixture.h"

namespace tovik::host::dxf {
namespace {

std::string FileText(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

class DxfDrawingFile : public HostTest {};

TEST_F(DxfDrawingFile, AFileOfManyPiecesHoldsTheDrawingInOrder) {
  // 25,000 lines (about 110 bytes each) make a body of nearly 3 MB: more
  // than two of the writer's one-megabyte pieces, handed over in sequence.
  constexpr int kLines = 25000;
  for (int k = 0; k < kLines; ++k) Line(k, 0, k, 1);
  ObjectRef last = Line(-1, -2, -3, -4);
  std::string last_handle = GetProperty(last, "Handle").RawString();
  std::string text = WriteDrawing(document());
  ASSERT_GT(text.size(), size_t{2} << 20);

  std::string path = ::testing::TempDir() + "/pieces.dxf";
  WriteDrawingFile(document(), path);
  std::string written = FileText(path);
  EXPECT_EQ(written.size(), text.size());
  EXPECT_TRUE(written == text) << "the file differs from the drawing text";
  // The header (written last) comes first, the end of the last piece last.
  EXPECT_LT(written.find("HEADER"), written.find("ENTITIES"));
  EXPECT_TRUE(written.ends_with("  0\nEOF\n"));

  // Read back: every line is there, the last one where it was drawn.
  auto app = Application::Create({.open_drawing = false});
  auto again = ReadDrawingFile(*app, path);
  size_t lines = 0;
  for (const Entity* e : again->model_space()->entities()) lines += As<host::Line>(e) != nullptr;
  EXPECT_EQ(lines, size_t{kLines} + 1);
  auto* line = As<host::Line>(again->FindByHandle(std::stoull(last_handle, nullptr, 16)));
  ASSERT_NE(line, nullptr);
  EXPECT_EQ(line->data().start.x, -1.0);
  EXPECT_EQ(line->data().end.y, -4.0);
}

TEST_F(DxfDrawingFile, AFileThatCannotBeCreatedRaisesTheHostError) {
  Line(0, 0, 1, 1);
  std::string path = ::testing::TempDir() + "/no-such-folder/d.dxf";
  AutomationError raised = ErrorOf([&] { WriteDrawingFile(document(), path); });
  EXPECT_EQ(raised.Number(), -2147467259);
  EXPECT_EQ(raised.Description(), path + ": cannot write the file");
  EXPECT_FALSE(std::filesystem::exists(path));
}

}  // namespace
}  // namespace tovik::host::dxf
