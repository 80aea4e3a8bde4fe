#include "dxf/encoding.h"

#include <gtest/gtest.h>

#include <string>

namespace tovik::dxf {
namespace {

std::string Decoded(std::string_view code_page, bool utf8_file, std::string_view raw) {
  TextDecoder decoder(code_page, utf8_file);
  std::string out;
  return decoder.Decode(raw, &out) ? std::string(raw) : out;
}

TEST(Encoding, CodePageNamesMapToIconv) {
  const std::pair<const char*, const char*> cases[] = {
      {"ANSI_1252", "CP1252"}, {"ansi_1251", "CP1251"}, {"dos932", "CP932"},
      {"ANSI_936", "CP936"},   {"ANSI_1256", "CP1256"}, {"mac-roman", "MACINTOSH"},
      {"ANSI_9999", ""},       {"", ""},
  };
  for (const auto& [dxf, iconv] : cases) {
    SCOPED_TRACE(dxf);
    EXPECT_EQ(IconvNameOfCodePage(dxf), iconv);
  }
}

TEST(Encoding, DecodesCodePagesAndEscapesToUtf8) {
  struct Case {
    const char* name;
    const char* code_page;
    bool utf8_file;
    std::string raw;
    std::string expected;
  };
  const Case cases[] = {
      {"cp1252 a-umlaut and euro", "ANSI_1252", false, "\xE4\x80", "\xC3\xA4\xE2\x82\xAC"},
      {"cp1251 capital A", "ANSI_1251", false, "\xC0", "\xD0\x90"},
      {"cp1250 s-caron", "ANSI_1250", false, "\x9A", "\xC5\xA1"},
      {"dos932 hiragana a", "dos932", false, "\x82\xA0", "\xE3\x81\x82"},
      {"unknown code page reads as cp1252", "NONSENSE", false, "\xE9", "\xC3\xA9"},
      {"\\U+ escape", "ANSI_1252", false, "a\\U+03B1b", "a\xCE\xB1" "b"},
      {"lower-case hex digits", "ANSI_1252", false, "\\U+03b1", "\xCE\xB1"},
      {"surrogate pair escapes", "ANSI_1252", false, "\\U+D83D\\U+DE00", "\xF0\x9F\x98\x80"},
      {"escape in a UTF-8 file stays", "ANSI_1252", true, "\\U+00E9", "\\U+00E9"},
      {"\\M+1 double-byte escape", "ANSI_1252", false, "\\M+182A0", "\xE3\x81\x82"},
      {"three hex digits stay literal", "ANSI_1252", false, "\\U+12G4", "\\U+12G4"},
      {"escape cut at the end", "ANSI_1252", false, "x\\U+00", "x\\U+00"},
      {"MTEXT codes stay", "ANSI_1252", false, "a\\Pb", "a\\Pb"},
      {"UTF-8 file keeps UTF-8", "ANSI_1252", true, "\xC3\xA4", "\xC3\xA4"},
      // A byte that is not UTF-8 in a UTF-8 file: read through the code page.
      {"invalid UTF-8 falls back", "ANSI_1252", true, "\xE4x", "\xC3\xA4x"},
      {"cp1252 0x81 is undefined", "ANSI_1252", false, "\x81", "\xEF\xBF\xBD"},
      {"dos932 lead byte at the end", "dos932", false, "a\x82", "a\xEF\xBF\xBD"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(Decoded(c.code_page, c.utf8_file, c.raw), c.expected);
  }
}

TEST(Encoding, PlainAsciiNeedsNoCopy) {
  TextDecoder decoder("ANSI_1252", false);
  std::string out = "untouched";
  EXPECT_TRUE(decoder.Decode("LINE 1.5 ^J", &out));
  EXPECT_EQ(out, "untouched");
  EXPECT_FALSE(decoder.Decode("\\U+0041", &out));
  EXPECT_EQ(out, "A");
}

TEST(Encoding, ValidatesUtf8) {
  const std::pair<std::string, bool> cases[] = {
      {"plain", true},
      {"\xC3\xA4", true},
      {"\xF4\x8F\xBF\xBF", true},   // U+10FFFF, the last code point
      {"\xF4\x90\x80\x80", false},  // one past U+10FFFF
      {"\xC0\x80", false},          // overlong NUL
      {"\xE0\x9F\xBF", false},      // overlong U+07FF
      {"\xED\xA0\x80", false},      // a surrogate
      {"\xC3", false},              // cut sequence
      {"\x80", false},              // lone continuation byte
  };
  for (const auto& [text, valid] : cases) {
    SCOPED_TRACE(text);
    EXPECT_EQ(IsValidUtf8(text), valid);
  }
}

TEST(Encoding, EncodesForDxfFiles) {
  struct Case {
    std::string text;
    bool escape;
    std::string expected;
  };
  const Case cases[] = {
      {"\xC3\xA4", true, "\\U+00E4"},
      {"\xC3\xA4", false, "\xC3\xA4"},
      {"\xE2\x82\xAC", true, "\\U+20AC"},
      {"\xF0\x9F\x98\x80", true, "\\U+D83D\\U+DE00"},
      {"a\nb\rc\td", false, "a^Jb^Mc\td"},
      {"\xFF", true, "\\U+FFFD"},  // not UTF-8 at all
      {"^ stays", true, "^ stays"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    std::string out;
    EncodeForDxf(c.text, c.escape, &out);
    EXPECT_EQ(out, c.expected);
  }
}

TEST(Encoding, EscapedTextDecodesBackToTheSameCharacters) {
  // U+0080 and U+07FF/U+0800 and U+FFFF/U+10000 are UTF-8 length boundaries.
  const std::string samples[] = {"\xC2\x80", "\xDF\xBF", "\xE0\xA0\x80", "\xEF\xBF\xBF",
                                 "\xF0\x90\x80\x80", "mixed \xCE\xB1\xCE\xB2 text"};
  TextDecoder decoder("ANSI_1252", false);
  for (const std::string& sample : samples) {
    SCOPED_TRACE(sample);
    std::string escaped;
    EncodeForDxf(sample, true, &escaped);
    std::string decoded;
    ASSERT_FALSE(decoder.Decode(escaped, &decoded));
    EXPECT_EQ(decoded, sample);
  }
}

TEST(Encoding, Utf8VersionsStartAtR2007) {
  EXPECT_FALSE(IsUtf8Version("AC1018"));  // R2004, the last code-page version
  EXPECT_TRUE(IsUtf8Version("AC1021"));
  EXPECT_TRUE(IsUtf8Version("AC1032"));
  EXPECT_FALSE(IsUtf8Version("AC1009"));
  EXPECT_FALSE(IsUtf8Version(""));
  // Found by fuzzing: sorts after AC1021 but is no version; the writer's
  // ^B for the control byte made the copy read with another encoding.
  EXPECT_FALSE(IsUtf8Version("AC90\x02y"));
}

}  // namespace
}  // namespace tovik::dxf
