#include "frame/runtime_text.h"

#include <gtest/gtest.h>

#include <string>
#include <unordered_map>
#include <vector>

namespace tovik {
namespace {

struct TextPair {
  std::string in;
  std::string out;
};

// UCase, LCase and FoldCase map code point by code point (simple mappings:
// no string grows, nothing depends on a locale or on context).
TEST(CaseMapping, MapsEachCodePointSimply) {
  using Map = std::string (*)(std::string_view);
  const struct {
    const char* name;
    Map map;
    std::string in, out;
  } cases[] = {
      {"UCase", UCase, "MiXeD 123!", "MIXED 123!"},
      {"UCase", UCase, "ёлка", "ЁЛКА"},
      {"UCase", UCase, "élève", "ÉLÈVE"},
      {"UCase", UCase, "αβγ ς", "ΑΒΓ Σ"},
      {"UCase", UCase, "straße", "STRAßE"},      // no single-character uppercase: ß stays
      {"UCase", UCase, "istanbul", "ISTANBUL"},  // no Turkish dotted İ
      {"UCase", UCase, "ǆ", "Ǆ"},
      {"UCase", UCase, "a\xFF" "b", "A\xFF" "B"},  // an invalid byte passes through
      {"UCase", UCase, "", ""},
      {"LCase", LCase, "ΣΑΣ", "σασ"},            // per character: no word-final ς
      {"LCase", LCase, "İ", "i"},                // simple mapping drops the combining dot
      {"LCase", LCase, "\xE2\x82", "\xE2\x82"},  // truncated sequence kept byte for byte
      {"FoldCase", FoldCase, "InsertionPoint", "insertionpoint"},
      {"FoldCase", FoldCase, "σας", "σασ"},        // final sigma folds with sigma
      {"FoldCase", FoldCase, "\u212A", "k"},       // Kelvin sign
      {"FoldCase", FoldCase, "straße", "straße"},  // simple folding keeps ß
      {"FoldCase", FoldCase, "ЁЛКА", "ёлка"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.name) + " " + c.in);
    EXPECT_EQ(c.map(c.in), c.out);
  }
}

struct ComparePair {
  std::string a;
  std::string b;
  int sign;  // expected sign of CaseInsensitiveCompare(a, b)
};

TEST(CaseInsensitiveCompare, OrdersByFoldedCodePoints) {
  const std::vector<ComparePair> cases = {
      {"InsertionPoint", "INSERTIONPOINT", 0},
      {"", "", 0},
      {"a", "B", -1},
      {"B", "a", 1},
      {"ab", "ABC", -1},  // a proper prefix comes first
      {"Layers", "layer", 1},
      {"Ёлка", "ёЛКА", 0},
      {"Ж", "е", 1},     // ж U+0436 after е U+0435
      {"aZ", "aé", -1},  // z U+007A before é U+00E9 (fast to slow path)
      {"xÉ", "XÉ", 0},
      {"\u212A", "K", 0},        // Kelvin sign folds to k
      {"straße", "STRASSE", 1},  // ß U+00DF is not "ss"; it sorts after s
      {"\xFF", "\xFE", 1},       // invalid bytes compare by value
      {"\xFF", "\xFF", 0},
      {"\xFF", "a", 1},  // and after every character
  };
  for (const ComparePair& c : cases) {
    SCOPED_TRACE(c.a + " vs " + c.b);
    const int result = CaseInsensitiveCompare(c.a, c.b);
    EXPECT_EQ((result > 0) - (result < 0), c.sign);
    const int reverse = CaseInsensitiveCompare(c.b, c.a);
    EXPECT_EQ((reverse > 0) - (reverse < 0), -c.sign);
    EXPECT_EQ(CaseInsensitiveEqual(c.a, c.b), c.sign == 0);
  }
}

TEST(CaseInsensitiveHash, AgreesWithEquality) {
  const std::vector<std::pair<std::string, std::string>> equal = {
      {"InsertionPoint", "INSERTIONPOINT"},
      {"élève", "ÉLÈVE"},
      {"\u212A", "k"},
      {"Layer\u212A", "LAYERK"},
      {"σας", "ΣΑΣ"},
  };
  for (const auto& [a, b] : equal) {
    SCOPED_TRACE(a);
    EXPECT_EQ(CaseInsensitiveHash(a), CaseInsensitiveHash(b));
  }
  EXPECT_NE(CaseInsensitiveHash("Layer"), CaseInsensitiveHash("Layers"));
  EXPECT_NE(CaseInsensitiveHash("ab"), CaseInsensitiveHash("ba"));
}

TEST(CaseInsensitiveHash, KeysAnUnorderedMapByHostName) {
  std::unordered_map<std::string, int, CaseInsensitiveHasher,
                     CaseInsensitiveEqualTo>
      members = {{"InsertionPoint", 1}, {"Ёлка", 2}};
  EXPECT_EQ(members.count("insertionpoint"), 1u);
  EXPECT_EQ(members.at("ЁЛКА"), 2);
  EXPECT_EQ(members.count("InsertionPoints"), 0u);
}

TEST(Trim, RemovesSpacesOnly) {
  struct Case {
    std::string in, left, right, both;
  };
  const std::vector<Case> cases = {
      {"  a b  ", "a b  ", "  a b", "a b"},
      {"\ta\t", "\ta\t", "\ta\t", "\ta\t"},  // tabs are not trimmed
      {" \t x \t ", "\t x \t ", " \t x \t", "\t x \t"},
      {"   ", "", "", ""},
      {"", "", "", ""},
      {"x", "x", "x", "x"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE("[" + c.in + "]");
    EXPECT_EQ(LTrim(c.in), c.left);
    EXPECT_EQ(RTrim(c.in), c.right);
    EXPECT_EQ(Trim(c.in), c.both);
  }
}

TEST(Split, FollowsRuntimeSplit) {
  struct Case {
    std::string text;
    std::string delimiter;
    int limit;
    std::vector<std::string> pieces;
  };
  const std::vector<Case> cases = {
      {"a b c", " ", -1, {"a", "b", "c"}},
      {"", ",", -1, {}},  // empty text: an empty array
      {"", "", -1, {}},
      {"abc", "", -1, {"abc"}},  // empty delimiter: the whole text
      {"a,,b", ",", -1, {"a", "", "b"}},
      {",", ",", -1, {"", ""}},
      {"a,", ",", -1, {"a", ""}},
      {"x", ",", -1, {"x"}},
      {"a::b::c", "::", -1, {"a", "b", "c"}},
      {"aaa", "aa", -1, {"", "a"}},     // matches do not overlap
      {"a,b,c", ",", 2, {"a", "b,c"}},  // the last piece keeps the rest
      {"a,b,c", ",", 1, {"a,b,c"}},
      {"a,b,c", ",", 3, {"a", "b", "c"}},
      {"a,b,c", ",", 9, {"a", "b", "c"}},
      {"a,b,c", ",", 0, {}},
      {"ёxлxка", "x", -1, {"ё", "л", "ка"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE("[" + c.text + "] by [" + c.delimiter + "] limit " +
                 std::to_string(c.limit));
    EXPECT_EQ(Split(c.text, c.delimiter, c.limit), c.pieces);
  }
}

TEST(Split, DefaultsToSpaceDelimiter) {
  EXPECT_EQ(Split("one two"), (std::vector<std::string>{"one", "two"}));
}

struct LikeCase {
  std::string text;
  std::string pattern;
  bool matches;
};

TEST(Like, MatchesRuntimePatterns) {
  const std::vector<LikeCase> cases = {
      {"aBBBa", "a*a", true},
      {"F", "[A-Z]", true},
      {"F", "[!A-Z]", false},
      {"a2a", "a#a", true},
      {"aM5b", "a[L-P]#[!c-e]", true},
      {"BAT123khg", "B?T*", true},
      {"CAT123khg", "B?T*", false},
      {"ab", "a*b", true},  // * matches an empty run
      {"", "*", true},
      {"", "**", true},
      {"", "", true},
      {"", "?", false},
      {"a", "", false},
      {"abc", "a?", false},  // the whole text must match
      {"A", "a", false},     // binary comparison
      {"5", "#", true},
      {"x", "#", false},
      {"12", "#", false},
      {"a*b", "a[*]b", true},
      {"axb", "a[*]b", false},
      {"a?b", "a[?]b", true},
      {"axb", "a[?]b", false},
      {"a#", "a[#]", true},
      {"a[", "a[[]", true},
      {"a]", "a]", true},    // ] alone is literal
      {"ab", "a[]b", true},  // [] is zero-length
      {"axb", "a[]b", false},
      {"-", "[-a]", true},  // leading hyphen is literal
      {"-", "[a-]", true},  // trailing hyphen is literal
      {"b", "[a-]", false},
      {"-", "[!-a]", false},
      {"!", "[a!]", true},  // ! after the first position is literal
      {"!", "!", true},
      {"b", "[!a]", true},
      {"x", "[!]", true},
      {"", "[!]", false},
      {"q", "[a-cx-z]", false},
      {"y", "[a-cx-z]", true},
      {"ё", "?", true},  // one code point
      {"лка", "[а-я]*", true},
      {"ёлка", "[а-я]*", false},  // ё U+0451 lies outside а-я U+0430..044F
      {"ёлка", "[ёа-я]*", true},
      {"😀x", "?x", true},
      {"abcabd", "*abd", true},  // needs the star to retry
      {"abcabc", "*abd", false},
      {"mississippi", "m*iss*ppi", true},
      {"mississippi", "m*iss*ppx", false},
  };
  for (const LikeCase& c : cases) {
    SCOPED_TRACE("[" + c.text + "] Like [" + c.pattern + "]");
    EXPECT_EQ(Like(c.text, c.pattern), c.matches);
  }
}

TEST(Like, MalformedPatternGivesNoResult) {
  const std::vector<std::string> patterns = {"[a",    "abc[",    "[!",
                                             "[z-a]", "x[b-a]y", "[[]["};
  for (const std::string& pattern : patterns) {
    SCOPED_TRACE(pattern);
    EXPECT_EQ(Like("a", pattern), std::nullopt);
  }
}

TEST(Like, ManyStarsOverLongTextReturn) {
  // Exponential backtracking would never finish on these.
  const std::string many_a(10000, 'a');
  EXPECT_EQ(Like(many_a, "*a*a*a*a*a*b"), false);
  EXPECT_EQ(Like(many_a + "b", "*a*a*a*a*a*b"), true);
  EXPECT_EQ(Like(many_a, "*?*?*?*?*?*#"), false);
}

TEST(Characters, CountAndCutByCodePoint) {
  EXPECT_EQ(Len(""), 0);
  EXPECT_EQ(Len("abc"), 3);
  EXPECT_EQ(Len("ёлка"), 4);
  EXPECT_EQ(Len("a😀"), 2);  // one code point, though two UTF-16 units
  EXPECT_EQ(Len("a\xFF\xFE"), 3);

  struct Case {
    std::string got;
    std::string want;
  };
  const std::vector<Case> cases = {
      {Left("ёлка", 2), "ёл"},  {Left("ab", 5), "ab"},
      {Left("ab", 0), ""},      {Right("ёлка", 2), "ка"},
      {Right("ab", 5), "ab"},   {Right("ab", 0), ""},
      {Mid("ёлка", 2), "лка"},  {Mid("ёлка", 2, 2), "лк"},
      {Mid("ёлка", 4, 1), "а"}, {Mid("abc", 3, 10), "c"},
      {Mid("abc", 4), ""},  // one past the end
      {Mid("abc", 9, 2), ""},   {Mid("abc", 1, 0), ""},
      {Mid("😀ab", 2, 1), "a"},
  };
  for (size_t i = 0; i < cases.size(); ++i) {
    SCOPED_TRACE(i);
    EXPECT_EQ(cases[i].got, cases[i].want);
  }
}

}  // namespace
}  // namespace tovik
