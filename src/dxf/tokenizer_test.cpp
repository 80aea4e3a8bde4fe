#include "dxf/tokenizer.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace tovik::dxf {
namespace {

// Builds binary DXF bytes piece by piece (little-endian, as the format is).
class BinaryBuilder {
 public:
  explicit BinaryBuilder(bool one_byte_codes = false) : one_byte_(one_byte_codes) {
    bytes_.assign(kBinarySentinel);
  }
  BinaryBuilder& Code(int code) {
    if (one_byte_ && code < 255) {
      bytes_ += static_cast<char>(code);
    } else {
      if (one_byte_) bytes_ += '\xFF';
      bytes_ += static_cast<char>(code & 0xFF);
      bytes_ += static_cast<char>(code >> 8);
    }
    return *this;
  }
  BinaryBuilder& Str(int code, std::string_view text) {
    Code(code);
    bytes_.append(text);
    bytes_ += '\0';
    return *this;
  }
  template <typename T>
  BinaryBuilder& Num(int code, T value) {
    Code(code);
    bytes_.append(reinterpret_cast<const char*>(&value), sizeof value);
    return *this;
  }
  BinaryBuilder& Raw(std::string_view bytes) {
    bytes_.append(bytes);
    return *this;
  }
  const std::string& bytes() const { return bytes_; }

 private:
  bool one_byte_;
  std::string bytes_;
};

TEST(Tokenizer, AsciiValuesAreTypedByTheirGroupCode) {
  // Leading spaces in code lines, CR LF and LF mixed, no line end after EOF.
  std::string text =
      "  0\r\nLINE\r\n  5\r\n2F\r\n 10\r\n 1.5\r\n 62\n     7\n 90\n-2147483648\n"
      "160\n9007199254740993\n290\n1\n310\n0aFF\n1071\n2147483647\n  0\nEOF";
  TokenStream stream = Tokenize(text, "t.dxf");
  ASSERT_EQ(stream.tags.size(), 10u);
  EXPECT_TRUE(stream.saw_eof);
  EXPECT_EQ(stream.format, FileFormat::kAscii);
  const TagArray& t = stream.tags;
  EXPECT_EQ(t[0].text, "LINE");
  EXPECT_EQ(t[1].kind, ValueKind::kHandle);
  EXPECT_EQ(t[1].integer, 0x2F);
  EXPECT_EQ(t[2].kind, ValueKind::kDouble);
  EXPECT_EQ(t[2].real, 1.5);
  EXPECT_EQ(t[2].text, " 1.5");  // original text kept for write-back
  EXPECT_EQ(t[3].kind, ValueKind::kInt16);
  EXPECT_EQ(t[3].integer, 7);
  EXPECT_EQ(t[4].integer, -2147483648LL);  // lowest 32-bit value
  EXPECT_EQ(t[5].integer, 9007199254740993LL);  // 2^53 + 1: not through a double
  EXPECT_EQ(t[6].kind, ValueKind::kBool);
  EXPECT_EQ(t[7].BinaryBytes(), std::string("\x0A\xFF", 2));
  EXPECT_EQ(t[8].integer, 2147483647);
  EXPECT_EQ(t[9].text, "EOF");
  // Lines count from 1; a tag's position is its group code line.
  EXPECT_EQ(t[0].position, 1u);
  EXPECT_EQ(t[9].position, 19u);
}

TEST(Tokenizer, StopsAtEofAndToleratesItsAbsence) {
  struct Case {
    const char* name;
    std::string text;
    std::size_t tags;
    bool saw_eof;
  };
  const Case cases[] = {
      {"bytes after EOF are ignored", "0\nEOF\ngarbage\n", 1, true},
      {"no EOF at all", "0\nSECTION\n2\nENTITIES\n0\nENDSEC\n", 3, false},
      {"blank lines at the end", "0\nSECTION\n\n  \r\n", 1, false},
      {"empty file", "", 0, false},
      {"string values keep their spaces", "1\n  text  \n", 1, false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    TokenStream stream = Tokenize(c.text, "t.dxf");
    EXPECT_EQ(stream.tags.size(), c.tags);
    EXPECT_EQ(stream.saw_eof, c.saw_eof);
  }
  EXPECT_EQ(Tokenize("1\n  text  \n", "t").tags[0].text, "  text  ");
}

TEST(Tokenizer, AsciiErrorsNameFileLineAndCode) {
  struct Case {
    std::string text;
    std::string message;
  };
  const Case cases[] = {
      {"0\nLINE\n10\nabc\n", "d.dxf: line 4: group code 10: expected a number, got \"abc\""},
      {"0\nLINE\n10\n1.5x\n", "d.dxf: line 4: group code 10: expected a number, got \"1.5x\""},
      {"10\nnan\n", "d.dxf: line 2: group code 10: expected a number, got \"nan\""},
      {"10\n1e999\n", "d.dxf: line 2: group code 10: expected a number, got \"1e999\""},
      {"10\n\n", "d.dxf: line 2: group code 10: expected a number, got \"\""},
      // 32767 is the largest 16-bit value; one more is refused.
      {"70\n32768\n", "d.dxf: line 2: group code 70: value out of range for a 16-bit integer: "
                      "\"32768\""},
      {"90\n2147483648\n", "d.dxf: line 2: group code 90: value out of range for a 32-bit "
                           "integer: \"2147483648\""},
      {"70\n1.0\n", "d.dxf: line 2: group code 70: expected a 16-bit integer, got \"1.0\""},
      {"290\n256\n", "d.dxf: line 2: group code 290: value out of range for a byte (0 to 255): "
                     "\"256\""},
      {"310\nABC\n", "d.dxf: line 2: group code 310: expected hexadecimal binary data, got "
                     "\"ABC\""},
      {"0\nLINE\nxy\n1\n", "d.dxf: line 3: expected a group code, got \"xy\""},
      {"0\nLINE\n85\n1\n", "d.dxf: line 3: not a DXF group code: \"85\""},
      {"1072\nx\n", "d.dxf: line 1: not a DXF group code: \"1072\""},
      {"-1\nx\n", "d.dxf: line 1: not a DXF group code: \"-1\""},
      {"0\nLINE\n8\n", "d.dxf: line 3: group code 8: the file ends after the group code, the "
                       "value is missing"},
      {"1\n\xE4\x01\n10\nz\n", "d.dxf: line 4: group code 10: expected a number, got \"z\""},
      {"10\n\xE4\x01\n", "d.dxf: line 2: group code 10: expected a number, got \"\\xE4\\x01\""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    try {
      Tokenize(c.text, "d.dxf");
      ADD_FAILURE() << "no error";
    } catch (const ReadError& error) {
      EXPECT_EQ(std::string(error.what()), c.message);
    }
  }
}

// A file of a few megabytes is read in two halves at once: whatever falls
// after the middle must come out as from one pass, with true line numbers.
TEST(Tokenizer, LargeFilesReadAsOnePass) {
  // 200,000 records of 3 tags (6 lines each), about 3.6 MB, `middle` just
  // after the first half of them, then `tail`. A type starting with a digit is
  // never taken for the start of a record when looking for the middle.
  auto big = [](std::string_view middle, std::string_view tail, std::string_view type = "LINE") {
    std::string text;
    for (int i = 0; i < 200000; ++i) {
      text += "  0\n" + std::string(type) + "\n  8\n0\n 10\n1.5\n";
      if (i == 100010) text += middle;
    }
    text += tail;
    return text;
  };
  constexpr int kLines = 200000 * 6;
  struct Case {
    const char* name;
    std::string text;
    size_t tags;            // 0: an error is expected
    std::string message;
  };
  const Case cases[] = {
      {"plain", big("", "  0\nEOF\n"), 600001, ""},
      // A value "0" after the middle followed by a line that is no group
      // code: a second reader starting there would read "0" as a code.
      {"value 0 at the middle", big("  1\n0\nXYZ\n", "", "3DFACE"), 0,
       "d.dxf: line " + std::to_string(100011 * 6 + 3) + ": expected a group code, got \"XYZ\""},
      {"error near the end", big("", " 10\nabc\n"), 0,
       "d.dxf: line " + std::to_string(kLines + 2) + ": group code 10: expected a number, got \"abc\""},
      {"EOF before the middle", "  0\nEOF\n" + big("", "junk\n"), 1, ""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    try {
      TokenStream stream = Tokenize(c.text, "d.dxf");
      ASSERT_EQ(c.tags, stream.tags.size());
      const Tag& last = stream.tags[stream.tags.size() - 1];
      EXPECT_EQ(last.code, 0);
      EXPECT_EQ(last.text, "EOF");
      if (c.tags > 1) {
        EXPECT_EQ(last.position, static_cast<uint32_t>(kLines + 1));
        EXPECT_EQ(stream.tags[300000].position, 300000u * 2 + 1);
        EXPECT_EQ(stream.tags[300000].text, "LINE");
      }
    } catch (const ReadError& error) {
      EXPECT_EQ(c.tags, 0u) << error.what();
      EXPECT_EQ(std::string(error.what()), c.message);
    }
  }
}

TEST(Tokenizer, HandlesThatAreNotHexKeepTheirText) {
  // R12 files write empty handles; libdxfrw writes a style name under 340.
  TokenStream stream = Tokenize("5\n\n340\nStandard\n330\n1F\n", "t");
  EXPECT_EQ(stream.tags[0].integer, kNoHandle);
  EXPECT_EQ(stream.tags[1].integer, kNoHandle);
  EXPECT_EQ(stream.tags[1].text, "Standard");
  EXPECT_EQ(stream.tags[2].integer, 0x1F);
}

TEST(Tokenizer, BinaryTwoByteCodesCarryTypedValues) {
  BinaryBuilder b;
  b.Str(0, "SECTION").Str(2, "HEADER").Str(9, "$X").Num<double>(10, -2.25)
      .Num<std::int16_t>(70, -3).Num<std::int32_t>(90, 70000).Num<std::int64_t>(160, -5)
      .Num<std::uint8_t>(290, 1).Str(5, "A1").Code(310).Raw(std::string("\x03\x00\xFF\x10", 4))
      .Str(1000, "x").Str(0, "EOF").Raw("trailing");
  TokenStream stream = Tokenize(b.bytes(), "b.dxf");
  EXPECT_EQ(stream.format, FileFormat::kBinary);
  EXPECT_FALSE(stream.one_byte_codes);
  EXPECT_TRUE(stream.saw_eof);
  const TagArray& t = stream.tags;
  ASSERT_EQ(t.size(), 12u);
  EXPECT_EQ(t[3].real, -2.25);
  EXPECT_TRUE(t[3].text.empty());  // the writer formats binary numbers
  EXPECT_EQ(t[4].integer, -3);
  EXPECT_EQ(t[5].integer, 70000);
  EXPECT_EQ(t[6].integer, -5);
  EXPECT_EQ(t[7].integer, 1);
  EXPECT_EQ(t[8].integer, 0xA1);
  EXPECT_TRUE(t[9].raw_binary);
  EXPECT_EQ(t[9].BinaryHex(), "00FF10");
  EXPECT_EQ(t[10].text, "x");
  // Offsets: 22-byte sentinel, then "00 00 SECTION\0" = 10 bytes.
  EXPECT_EQ(t[0].position, 22u);
  EXPECT_EQ(t[1].position, 32u);
}

TEST(Tokenizer, BinaryR12UsesOneByteCodesWithEscape) {
  BinaryBuilder b(true);
  b.Str(0, "SECTION").Str(2, "ENTITIES").Num<std::int16_t>(70, 1).Str(1001, "APP")
      .Num<std::int16_t>(1070, 42).Str(0, "ENDSEC");
  TokenStream stream = Tokenize(b.bytes(), "r12.dxf");
  EXPECT_TRUE(stream.one_byte_codes);
  ASSERT_EQ(stream.tags.size(), 6u);
  EXPECT_EQ(stream.tags[3].code, 1001);
  EXPECT_EQ(stream.tags[3].text, "APP");
  EXPECT_EQ(stream.tags[4].code, 1070);
  EXPECT_EQ(stream.tags[4].integer, 42);
}

TEST(Tokenizer, BinaryErrorsNameTheByteOffset) {
  struct Case {
    const char* name;
    std::string bytes;
    std::string message;
  };
  const std::string s(kBinarySentinel);
  const Case cases[] = {
      // Sentinel 0-21, "0 X" 22-25, code 10 at 26-27: the value starts at 28.
      {"double cut short", BinaryBuilder().Str(0, "X").Code(10).Raw("1234").bytes(),
       "b.dxf: byte 28: group code 10: the file ends inside a number"},
      {"string without NUL", BinaryBuilder().Code(1).Raw("abc").bytes(),
       "b.dxf: byte 24: group code 1: the file ends inside a text value"},
      {"unknown code", BinaryBuilder().Code(85).Raw("xx").bytes(),
       "b.dxf: byte 22: group code 85: not a DXF group code"},
      // Length byte at 28 promises 9 bytes from 29; only 3 follow.
      {"chunk longer than the file",
       BinaryBuilder().Str(0, "X").Code(310).Raw("\x09" "abc").bytes(),
       "b.dxf: byte 29: group code 310: the file ends inside binary data"},
      {"half a group code", s + std::string("\x00", 1),
       "b.dxf: byte 22: the file ends inside a group code"},
      {"infinite double",
       BinaryBuilder().Num<double>(40, std::numeric_limits<double>::infinity()).bytes(),
       "b.dxf: byte 24: group code 40: expected a finite number"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    try {
      Tokenize(c.bytes, "b.dxf");
      ADD_FAILURE() << "no error";
    } catch (const ReadError& error) {
      EXPECT_EQ(std::string(error.what()), c.message);
      EXPECT_EQ(error.position_kind(), PositionKind::kByteOffset);
    }
  }
}

}  // namespace
}  // namespace tovik::dxf
