// Hatch boundaries read from DXF: the loops and the area they enclose.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "frame/dispatch.h"
#include "host/core/application.h"
#include "host/core/document.h"
#include "host/dxf/dxf_file.h"
#include "host/surface/args.h"

namespace tovik::host::dxf {
namespace {

const std::string kCorpus = std::string(TOVIK_SHARED_DIR) + "/dxf/ezdxf/";

ObjectRef HatchOf(const std::shared_ptr<Document>& doc, const char* handle) {
  return CallMethod(ObjectRef(doc), "HandleToObject", {Variant(std::string(handle))}).Object();
}

std::string HatchRecord(const std::string& edges, int edge_count) {
  return "0\nSECTION\n2\nENTITIES\n0\nHATCH\n5\n70\n100\nAcDbEntity\n8\n0\n100\nAcDbHatch\n"
         "10\n0\n20\n0\n30\n0\n210\n0\n220\n0\n230\n1\n2\nSOLID\n70\n1\n71\n0\n91\n1\n92\n1\n93\n" +
         std::to_string(edge_count) + "\n" + edges + "97\n0\n75\n0\n76\n1\n98\n0\n0\nENDSEC\n0\nEOF\n";
}

TEST(DxfHatchLoops, LineAndArcEdgesEncloseTheirExactAreaEitherWayRound) {
  auto app = Application::Create({.open_drawing = false});
  // The 2 x 2 square (0,0)-(2,2) whose top side is a half circle of radius 1
  // around (1,2) bulging upwards: 4 + pi/2.
  const double expected = 4 + 3.141592653589793 / 2;
  // Counter-clockwise: the arc runs from 0 to 180 degrees.
  const std::string ccw =
      "72\n1\n10\n0\n20\n0\n11\n2\n21\n0\n72\n1\n10\n2\n20\n0\n11\n2\n21\n2\n"
      "72\n2\n10\n1\n20\n2\n40\n1\n50\n0\n51\n180\n73\n1\n72\n1\n10\n0\n20\n2\n11\n0\n21\n0\n";
  // Clockwise: the arc runs from 180 down to 0 degrees, stored as the
  // complementary angles 360-180 and 360-0 with the ccw flag 0.
  const std::string cw =
      "72\n1\n10\n0\n20\n0\n11\n0\n21\n2\n72\n2\n10\n1\n20\n2\n40\n1\n50\n180\n51\n360\n73\n0\n"
      "72\n1\n10\n2\n20\n2\n11\n2\n21\n0\n72\n1\n10\n2\n20\n0\n11\n0\n21\n0\n";
  for (const std::string& edges : {ccw, cw}) {
    SCOPED_TRACE(edges == ccw ? "counter-clockwise" : "clockwise");
    auto doc = ReadDrawingBuffer(*app, HatchRecord(edges, 4), "h.dxf");
    ObjectRef hatch = HatchOf(doc, "70");
    EXPECT_EQ(GetProperty(hatch, "NumberOfLoops").RawInt(), 1);
    EXPECT_NEAR(GetProperty(hatch, "Area").RawDouble(), expected, 1e-9);
  }
}

TEST(DxfHatchLoops, CorpusHatchesMatchAnIndependentReader) {
  if (!std::filesystem::exists(kCorpus + "hatches_1.dxf")) GTEST_SKIP() << "corpus not present";
  auto app = Application::Create({.open_drawing = false});
  // Areas by ezdxf 0.18 (boundary paths flattened to 1e-5): external loops
  // count positive, islands negative.
  struct Case {
    const char* file;
    const char* handle;
    int loops;
    double area;
    double tolerance;
  };
  const Case cases[] = {
      {"hatches_1.dxf", "248", 2, 31.23006, 1e-4},   // polyline loop with one island
      {"hatches_1.dxf", "277", 3, 62.00476, 1e-4},   // an island inside an island
      {"hatches_2.dxf", "570", 1, 1268.34953, 1e-4},  // one bulged polyline loop
      // Line, elliptic-arc, arc and spline edges; the elliptic arc (256
      // points a turn) and the spline (32 points a span) are followed by
      // chords, which cut off a sliver: close, not exact.
      {"hatches_2.dxf", "233", 1, 1268.83922, 0.05},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.file) + " #" + c.handle);
    auto doc = ReadDrawingFile(*app, kCorpus + c.file);
    ObjectRef hatch = HatchOf(doc, c.handle);
    EXPECT_EQ(GetProperty(hatch, "NumberOfLoops").RawInt(), c.loops);
    EXPECT_NEAR(GetProperty(hatch, "Area").RawDouble(), c.area, c.tolerance);
  }
}

TEST(DxfHatchLoops, AMovedHatchIsSavedWithItsNewBoundaryAndAnUnmovedOneAsItCame) {
  if (!std::filesystem::exists(kCorpus + "hatches_2.dxf")) GTEST_SKIP() << "corpus not present";
  auto app = Application::Create({.open_drawing = false});
  auto doc = ReadDrawingFile(*app, kCorpus + "hatches_2.dxf");
  ObjectRef moved = HatchOf(doc, "233");
  std::vector<Variant> before(2);
  CallMethodRef(moved, "GetBoundingBox", before);
  CallMethod(moved, "Move", {PointValue({0, 0, 0}), PointValue({10, -4, 0})});
  std::string written = WriteDrawing(*doc);

  auto again = ReadDrawingBuffer(*app, written, "again.dxf");
  ObjectRef reread = HatchOf(again, "233");
  std::vector<Variant> after(2);
  CallMethodRef(reread, "GetBoundingBox", after);
  for (int k = 0; k < 2; ++k) {
    SCOPED_TRACE(k == 0 ? "x" : "y");
    double shift = k == 0 ? 10 : -4;
    size_t at = static_cast<size_t>(k);
    for (int corner = 0; corner < 2; ++corner) {
      EXPECT_NEAR(after[corner].Array().Items()[at].RawDouble(),
                  before[corner].Array().Items()[at].RawDouble() + shift, 1e-6);
    }
  }
  // Moving keeps the enclosed area (the curved edges now as chords).
  EXPECT_NEAR(GetProperty(reread, "Area").RawDouble(), 1268.83922, 0.05);
  // The untouched hatch 570 is written as the file had it: its one
  // polyline path of bulged vertices, record for record.
  const std::string original_570 = "\n  5\n570\n";
  EXPECT_NE(written.find(original_570), std::string::npos);
  EXPECT_NEAR(GetProperty(HatchOf(again, "570"), "Area").RawDouble(), 1268.34953, 1e-4);
}

}  // namespace
}  // namespace tovik::host::dxf
