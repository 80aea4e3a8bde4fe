#include "host/selection/wildcard.h"

#include <gtest/gtest.h>

namespace tovik::host {
namespace {

struct Case {
  const char* text;
  const char* pattern;
  bool match;
};

TEST(Wildcard, MatchesEachSpecialCharacterAsTheHostDefinesIt) {
  const Case cases[] = {
      {"WALLS", "*", true},
      {"", "*", true},
      {"", "", true},
      {"A", "", false},
      {"WALLS", "W*S", true},
      {"WALLS", "W*X", false},
      {"W", "W*", true},          // * may match nothing
      {"AB", "A?", true},
      {"A", "A?", false},         // ? needs exactly one character
      {"ABC", "A?", false},
      {"L1", "L#", true},
      {"LX", "L#", false},
      {"L12", "L#", false},
      {"A1", "@#", true},
      {"11", "@#", false},
      {"ÄB", "@B", true},         // a non-ASCII letter is a letter
      {"A-B", "A.B", true},       // . is one non-alphanumeric character
      {"A_B", "A.B", true},
      {"AXB", "A.B", false},
      {"A5B", "A.B", false},
      {"MY LAYER", "MY LAYER", true},
      {"MY   LAYER", "MY LAYER", true},  // a space stands for one or more
      {"MYLAYER", "MY LAYER", false},
      {"DOOR", "~DOOR", false},
      {"WINDOW", "~DOOR", true},
      {"D1", "~D#", false},
      {"BOX", "[ABC]OX", true},
      {"FOX", "[ABC]OX", false},
      {"FOX", "[~ABC]OX", true},
      {"BOX", "[~ABC]OX", false},
      {"M", "[A-Z]", true},
      {"5", "[A-Z]", false},
      {"5", "[0-35-9]", true},
      {"4", "[0-35-9]", false},
      {"]", "[]]", true},         // ] right after [ is a member
      {"A*B", "A`*B", true},      // escaped star is literal
      {"AXB", "A`*B", false},
      {"A,B", "A`,B", true},      // escaped comma does not split
      {"A", "A`,B", false},
      {"#", "`#", true},
      {"1", "`#", false},
      {"DOOR", "WALL,DOOR", true},
      {"WIN", "WALL,DOOR", false},
      {"", "A,", true},           // the empty alternative matches ""
      {"X", "[,]", false},        // a comma inside brackets is a member
      {",", "[,]", true},
      {"[A", "[A", true},         // an unclosed bracket is literal
      {"walls", "WALLS", true},   // case is ignored
      {"ёлка", "ЁЛ*", true},
      {"*U12", "`*U*", true},
      {"U12", "`*U*", false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string("\"") + c.text + "\" vs \"" + c.pattern + "\"");
    EXPECT_EQ(WildcardMatch(c.text, c.pattern), c.match);
  }
}

TEST(Wildcard, NegationAppliesPerAlternative) {
  // "~A*,B*": either "not starting with A" or "starting with B".
  Wildcard w("~A*,B*");
  EXPECT_TRUE(w.Matches("CAT"));
  EXPECT_TRUE(w.Matches("BAT"));
  EXPECT_FALSE(w.Matches("APE"));
}

TEST(Wildcard, ManyStarsDoNotBlowUp) {
  // A backtracking matcher takes exponential time on this; the row-by-row
  // matcher answers at once.
  std::string text(200, 'A');
  std::string pattern;
  for (int i = 0; i < 30; ++i) pattern += "*A";
  pattern += "*B";
  EXPECT_FALSE(WildcardMatch(text, pattern));
  EXPECT_TRUE(WildcardMatch(text + "B", pattern));
}

TEST(Wildcard, ReportsWhetherThePatternIsLiteral) {
  EXPECT_TRUE(Wildcard("WALLS").IsLiteral());
  EXPECT_TRUE(Wildcard("A`*B").IsLiteral());
  EXPECT_FALSE(Wildcard("WALL*").IsLiteral());
  EXPECT_FALSE(Wildcard("A,B").IsLiteral());
  EXPECT_FALSE(Wildcard("~A").IsLiteral());
}

TEST(Wildcard, InvalidUtf8BytesCountAsOneCharacterEach) {
  const std::string text = std::string("A") + char(0xFF) + "B";
  EXPECT_TRUE(WildcardMatch(text, "A?B"));
  EXPECT_FALSE(WildcardMatch(text, "A??B"));
}

}  // namespace
}  // namespace tovik::host
