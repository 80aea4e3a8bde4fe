#include "dxf/tag_writer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

namespace tovik::dxf {
namespace {

std::string Written(const Tag& tag, TextEncoder* encoder = nullptr,
                    LineEnd line_end = LineEnd::kLf) {
  std::string out;
  AppendTag(tag, encoder, line_end, &out);
  return out;
}

TEST(Writer, FormatsDoublesInShortestRoundTripFormWithAPoint) {
  struct Case {
    double value;
    const char* text;
  };
  const Case cases[] = {
      {1.0, "1.0"},
      {0.1, "0.1"},
      {-0.0, "-0.0"},
      {123456.789, "123456.789"},
      {1e20, "1e+20"},
      {1.5e-7, "1.5e-07"},
      {1.0 / 3.0, "0.3333333333333333"},
      {std::numeric_limits<double>::denorm_min(), "5e-324"},  // smallest positive double
      {std::numeric_limits<double>::max(), "1.7976931348623157e+308"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    std::string out = Written(Tag::Double(40, c.value));
    std::string value = out.substr(4, out.size() - 5);
    // Exponents get a ".0" unless the mantissa has digits after a point.
    std::string expected = c.text;
    std::size_t e = expected.find('e');
    if (e != std::string::npos && expected.find('.') == std::string::npos) {
      expected.insert(e, ".0");
    }
    EXPECT_EQ(value, expected);
    EXPECT_EQ(std::strtod(value.c_str(), nullptr), c.value);
  }
}

TEST(Writer, WritesCodesRightAlignedAndValuesByKind) {
  Tag kept = Tag::Double(10, 2.0);
  kept.text = " 2.000";  // text read from a file wins over the value
  Tag binary = Tag::String(310, "");
  binary.raw_binary = true;
  binary.text = std::string_view("\x00\xAB\x0F", 3);
  struct Case {
    const char* name;
    Tag tag;
    const char* text;
  };
  const Case cases[] = {
      {"structure", Tag::String(0, "LINE"), "  0\nLINE\n"},
      {"kept text", kept, " 10\n 2.000\n"},
      {"int16", Tag::Integer(70, -3), " 70\n-3\n"},
      {"int64", Tag::Integer(160, 9007199254740993), "160\n9007199254740993\n"},
      {"bool", Tag::Integer(290, 1), "290\n1\n"},
      {"handle", Tag::String(330, "1F"), "330\n1F\n"},
      {"raw binary as hex", binary, "310\n00AB0F\n"},
      {"four-digit code", Tag::String(1001, "ACAD"), "1001\nACAD\n"},
      {"line break in text", Tag::String(1, "a\nb"), "  1\na^Jb\n"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(Written(c.tag), c.text);
  }
  TextEncoder cp1252("ANSI_1252");
  // a-umlaut is E4 in code page 1252; alpha is not in it.
  EXPECT_EQ(Written(Tag::String(8, "\xC3\xA4\xCE\xB1"), &cp1252, LineEnd::kCrLf),
            "  8\r\n\xE4\\U+03B1\r\n");
  EXPECT_EQ(Written(Tag::String(8, "\xC3\xA4"), nullptr, LineEnd::kCrLf), "  8\r\n\xC3\xA4\r\n");
}

constexpr const char* kR2000 =
    "0\nSECTION\n2\nHEADER\n9\n$ACADVER\n1\nAC1015\n9\n$DWGCODEPAGE\n3\nANSI_1252\n0\nENDSEC\n"
    "0\nSECTION\n2\nENTITIES\n0\nTEXT\n1\n\xE4\\U+03B1\n0\nENDSEC\n0\nEOF\n";

TEST(Writer, VersionDecidesBetweenEscapesAndUtf8) {
  TagModel model = TagModel::Load(kR2000, "r2000.dxf");
  std::string kept = WriteDxf(model);
  EXPECT_NE(kept.find("\nAC1015\n"), std::string::npos);
  EXPECT_NE(kept.find("\n\xE4\\U+03B1\n"), std::string::npos);  // code page 1252 again

  std::string modern = WriteDxf(model, {.version = "AC1032", .line_end = LineEnd::kLf});
  EXPECT_NE(modern.find("\nAC1032\n"), std::string::npos);
  EXPECT_EQ(modern.find("AC1015"), std::string::npos);
  EXPECT_NE(modern.find("\n\xC3\xA4\xCE\xB1\n"), std::string::npos);  // R2018: UTF-8
}

TEST(Writer, WritesTheWholeModelBackInOrder) {
  // Hand-written R12 text in the layout the writer uses: identical bytes back.
  const std::string text =
      "999\ncomment\n"
      "  0\nSECTION\n  2\nHEADER\n  9\n$ACADVER\n  1\nAC1009\n  0\nENDSEC\n"
      "  0\nSECTION\n  2\nTABLES\n  0\nTABLE\n  2\nLTYPE\n 70\n     1\n"
      "  0\nLTYPE\n  2\nCONTINUOUS\n  0\nENDTAB\n  0\nENDSEC\n"
      "  0\nSECTION\n  2\nBLOCKS\n  0\nBLOCK\n  2\nB\n  0\nCIRCLE\n 40\n1.50\n  0\nENDBLK\n"
      "  0\nENDSEC\n"
      "  0\nSECTION\n  2\nENTITIES\n  0\nPOLYLINE\n 66\n     1\n  0\nVERTEX\n 10\n0.0\n 20\n0.0\n"
      "  0\nSEQEND\n  0\nENDSEC\n"
      "  0\nEOF\n";
  EXPECT_EQ(WriteDxf(TagModel::Load(text, "r12.dxf")), text);
}

TEST(Writer, UnwritablePathThrows) {
  TagModel model = TagModel::Load(kR2000, "r2000.dxf");
  try {
    WriteDxfFile(model, "/nonexistent/dir/out.dxf");
    FAIL() << "no error";
  } catch (const std::runtime_error& error) {
    EXPECT_EQ(std::string(error.what()), "cannot write /nonexistent/dir/out.dxf");
  }
}

}  // namespace
}  // namespace tovik::dxf
