// The host's wildcard patterns (wcmatch, selection filters on names and
// strings), compiled once and matched against many names.
//
// Syntax, per comma-separated alternative:
//   *        any run of characters, none included
//   ?        exactly one character
//   #        one digit
//   @        one letter (Unicode letters count)
//   .        one character that is neither a letter nor a digit
//   (space)  one or more spaces
//   ~        as the FIRST character of an alternative: matches every text the
//            rest of the alternative does not match
//   [...]    one of the listed characters; "a-z" is a range; "]" right after
//            the opening bracket is itself
//   [~...]   one character that is not listed
//   `        takes the next character literally (`*, `,, `#, ``)
//   ,        separates alternatives; the pattern matches when any does
// Case is ignored (simple Unicode case folding of both sides). Bytes that are
// not valid UTF-8 count as one character each. An unclosed "[" is taken
// literally up to the end, and a trailing "`" stands for itself.
// Matching costs O(len(text) · len(pattern)) whatever the pattern.
#ifndef TOVIK_HOST_SELECTION_WILDCARD_H_
#define TOVIK_HOST_SELECTION_WILDCARD_H_

#include <string>
#include <string_view>
#include <vector>

namespace tovik::host {

class Wildcard {
 public:
  // Compiles `pattern` (never fails: see the file comment for odd input).
  explicit Wildcard(std::string_view pattern);

  // True when `text` matches some alternative.
  bool Matches(std::string_view text) const;

  // True when the pattern has no wildcard character at all, so that it
  // matches exactly one name up to case (lookups may then use an index).
  bool IsLiteral() const { return literal_; }

 private:
  enum class TokenKind : unsigned char {
    kChar,      // the code point c
    kAnyOne,    // ?
    kAnyRun,    // *
    kDigit,     // #
    kLetter,    // @
    kNonAlnum,  // .
    kSpaces,    // one or more spaces
    kSet,       // [..]: ranges [first, last) of set_ranges_
  };
  struct Token {
    TokenKind kind = TokenKind::kChar;
    bool negated = false;  // kSet: [~..]
    char32_t c = 0;
    unsigned first = 0;  // kSet: index into ranges_
    unsigned last = 0;
  };
  struct Alternative {
    bool negated = false;
    std::vector<Token> tokens;
  };
  struct Range {
    char32_t low;
    char32_t high;
  };

  void CompileAlternative(const std::vector<char32_t>& p, size_t begin, size_t end);
  bool TokenAccepts(const Token& t, char32_t c) const;
  bool MatchAlternative(const Alternative& alt, const std::vector<char32_t>& text) const;

  std::vector<Alternative> alternatives_;
  std::vector<Range> ranges_;
  bool literal_ = true;
};

// Convenience: compiles `pattern` and matches `text` once.
bool WildcardMatch(std::string_view text, std::string_view pattern);

}  // namespace tovik::host

#endif  // TOVIK_HOST_SELECTION_WILDCARD_H_
