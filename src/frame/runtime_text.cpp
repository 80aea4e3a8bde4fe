#include "frame/runtime_text.h"

#include <optional>

#include <utility>

#include "frame/char_class.h"

namespace tovik {
namespace {

// Invalid bytes decode to kInvalidBase + byte: outside Unicode, distinct per
// byte, never changed by case mapping, and written back as the same byte.
constexpr char32_t kInvalidBase = 0x110000;

bool IsContinuation(unsigned char b) { return (b & 0xC0) == 0x80; }

// Decodes the code point at `*pos` and advances past it. A byte that does
// not start a well-formed sequence (overlong, surrogate, beyond U+10FFFF,
// truncated) is one unit by itself.
char32_t DecodeNext(std::string_view s, size_t* pos) {
  const size_t i = *pos;
  const auto b0 = static_cast<unsigned char>(s[i]);
  *pos = i + 1;
  if (b0 < 0x80) return b0;
  size_t extra = 0;
  char32_t cp = 0;
  char32_t min = 0;
  if (b0 >= 0xC2 && b0 <= 0xDF) {
    extra = 1, cp = b0 & 0x1F, min = 0x80;
  } else if (b0 >= 0xE0 && b0 <= 0xEF) {
    extra = 2, cp = b0 & 0x0F, min = 0x800;
  } else if (b0 >= 0xF0 && b0 <= 0xF4) {
    extra = 3, cp = b0 & 0x07, min = 0x10000;
  } else {
    return kInvalidBase + b0;
  }
  if (i + extra >= s.size()) return kInvalidBase + b0;  // truncated
  for (size_t k = 1; k <= extra; ++k) {
    const auto b = static_cast<unsigned char>(s[i + k]);
    if (!IsContinuation(b)) return kInvalidBase + b0;
    cp = (cp << 6) | (b & 0x3F);
  }
  if (cp < min || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) {
    return kInvalidBase + b0;
  }
  *pos = i + 1 + extra;
  return cp;
}

void Encode(char32_t cp, std::string* out) {
  if (cp >= kInvalidBase) {
    out->push_back(static_cast<char>(cp - kInvalidBase));
  } else if (cp < 0x80) {
    out->push_back(static_cast<char>(cp));
  } else if (cp < 0x800) {
    out->push_back(static_cast<char>(0xC0 | (cp >> 6)));
    out->push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  } else if (cp < 0x10000) {
    out->push_back(static_cast<char>(0xE0 | (cp >> 12)));
    out->push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
    out->push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  } else {
    out->push_back(static_cast<char>(0xF0 | (cp >> 18)));
    out->push_back(static_cast<char>(0x80 | ((cp >> 12) & 0x3F)));
    out->push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
    out->push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  }
}

template <typename Map>
std::string MapCodePoints(std::string_view text, Map map) {
  std::string out;
  out.reserve(text.size());
  for (size_t pos = 0; pos < text.size();) {
    const char32_t cp = DecodeNext(text, &pos);
    Encode(cp >= kInvalidBase ? cp : static_cast<char32_t>(map(cp)), &out);
  }
  return out;
}

char32_t Fold(char32_t cp) {
  if (cp < 0x80) return (cp >= 'A' && cp <= 'Z') ? cp + 32 : cp;
  if (cp >= kInvalidBase) return cp;
  return chars::Fold(cp);
}

unsigned char AsciiLower(unsigned char c) {
  return (c >= 'A' && c <= 'Z') ? static_cast<unsigned char>(c + 32) : c;
}

// Compares folded code points from byte offset `start` (a code point
// boundary in both texts).
int CompareFoldedFrom(std::string_view a, std::string_view b, size_t start) {
  size_t i = start;
  size_t j = start;
  while (i < a.size() && j < b.size()) {
    const char32_t ca = Fold(DecodeNext(a, &i));
    const char32_t cb = Fold(DecodeNext(b, &j));
    if (ca != cb) return ca < cb ? -1 : 1;
  }
  if (i < a.size()) return 1;
  if (j < b.size()) return -1;
  return 0;
}

// Like, compiled: every token but kStar consumes exactly one character,
// which is what lets Match backtrack only to the most recent star.
struct CharClass {
  bool negate = false;
  std::vector<std::pair<char32_t, char32_t>> ranges;
  bool Contains(char32_t c) const {
    bool found = false;
    for (const auto& [lo, hi] : ranges) found = found || (c >= lo && c <= hi);
    return found != negate;
  }
};

struct Token {
  enum Kind { kLiteral, kAny, kDigit, kStar, kClass } kind;
  char32_t literal = 0;
  size_t class_index = 0;
};

struct CompiledPattern {
  std::vector<Token> tokens;
  std::vector<CharClass> classes;
};

std::vector<char32_t> Decode(std::string_view text) {
  std::vector<char32_t> out;
  out.reserve(text.size());
  for (size_t pos = 0; pos < text.size();)
    out.push_back(DecodeNext(text, &pos));
  return out;
}

std::optional<CompiledPattern> CompilePattern(std::string_view pattern) {
  const std::vector<char32_t> p = Decode(pattern);
  CompiledPattern compiled;
  for (size_t i = 0; i < p.size();) {
    const char32_t c = p[i++];
    if (c == '*') {
      // Consecutive stars behave as one.
      if (compiled.tokens.empty() ||
          compiled.tokens.back().kind != Token::kStar) {
        compiled.tokens.push_back({Token::kStar});
      }
    } else if (c == '?') {
      compiled.tokens.push_back({Token::kAny});
    } else if (c == '#') {
      compiled.tokens.push_back({Token::kDigit});
    } else if (c != '[') {
      compiled.tokens.push_back({Token::kLiteral, c});
    } else {
      CharClass cls;
      if (i < p.size() && p[i] == '!') {
        cls.negate = true;
        ++i;
      }
      bool closed = false;
      while (i < p.size()) {
        const char32_t lo = p[i++];
        if (lo == ']') {
          closed = true;
          break;
        }
        if (i + 1 < p.size() && p[i] == '-' && p[i + 1] != ']') {
          const char32_t hi = p[i + 1];
          if (hi < lo) return std::nullopt;  // descending range
          cls.ranges.emplace_back(lo, hi);
          i += 2;
        } else {
          cls.ranges.emplace_back(lo, lo);
        }
      }
      if (!closed) return std::nullopt;
      // "[]" stands for the empty string: it adds no token.
      if (cls.ranges.empty() && !cls.negate) continue;
      compiled.tokens.push_back({Token::kClass, 0, compiled.classes.size()});
      compiled.classes.push_back(std::move(cls));
    }
  }
  return compiled;
}

bool TokenMatches(const CompiledPattern& pattern, const Token& token,
                  char32_t c) {
  switch (token.kind) {
    case Token::kLiteral:
      return c == token.literal;
    case Token::kAny:
      return true;
    case Token::kDigit:
      return c >= '0' && c <= '9';
    case Token::kClass:
      return pattern.classes[token.class_index].Contains(c);
    case Token::kStar:
      break;
  }
  return false;
}

// Greedy matching that, on a mismatch, lets the most recent star absorb one
// more character. Earlier stars never need revisiting because every other
// token has a fixed width of one.
bool Match(const CompiledPattern& pattern, const std::vector<char32_t>& text) {
  const std::vector<Token>& tokens = pattern.tokens;
  size_t t = 0;
  size_t p = 0;
  bool have_star = false;
  size_t star_p = 0;
  size_t star_t = 0;
  while (t < text.size()) {
    if (p < tokens.size() && tokens[p].kind == Token::kStar) {
      have_star = true;
      star_p = p++;
      star_t = t;
    } else if (p < tokens.size() && TokenMatches(pattern, tokens[p], text[t])) {
      ++p;
      ++t;
    } else if (have_star) {
      p = star_p + 1;
      t = ++star_t;
    } else {
      return false;
    }
  }
  while (p < tokens.size() && tokens[p].kind == Token::kStar) ++p;
  return p == tokens.size();
}

// Byte offset of the character after the first `count` characters.
size_t OffsetAfter(std::string_view text, int64_t count) {
  size_t pos = 0;
  for (int64_t k = 0; k < count && pos < text.size(); ++k) {
    DecodeNext(text, &pos);
  }
  return pos;
}

}  // namespace

namespace {

// ASCII text mapped byte by byte (no letter outside ASCII maps into it or
// out of it); nullopt for other text.
template <typename Map>
std::optional<std::string> MapAscii(std::string_view text, Map map) {
  for (char c : text) {
    if (static_cast<unsigned char>(c) >= 0x80) return std::nullopt;
  }
  std::string out(text);
  for (char& c : out) c = map(c);
  return out;
}

}  // namespace

std::string UCase(std::string_view text) {
  if (auto ascii = MapAscii(text, [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; })) {
    return *std::move(ascii);
  }
  return MapCodePoints(
      text, [](char32_t c) { return chars::Upper(c); });
}

std::string LCase(std::string_view text) {
  if (auto ascii = MapAscii(text, [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; })) {
    return *std::move(ascii);
  }
  return MapCodePoints(
      text, [](char32_t c) { return chars::Lower(c); });
}

std::string FoldCase(std::string_view text) {
  if (auto ascii = MapAscii(text, [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; })) {
    return *std::move(ascii);
  }
  return MapCodePoints(text, [](char32_t c) { return Fold(c); });
}

bool CaseInsensitiveEqual(std::string_view a, std::string_view b) {
  return CaseInsensitiveCompare(a, b) == 0;
}

int CaseInsensitiveCompare(std::string_view a, std::string_view b) {
  // ASCII fast path: byte by byte while both sides are ASCII.
  size_t i = 0;
  for (; i < a.size() && i < b.size(); ++i) {
    const auto ca = static_cast<unsigned char>(a[i]);
    const auto cb = static_cast<unsigned char>(b[i]);
    if (ca >= 0x80 || cb >= 0x80) return CompareFoldedFrom(a, b, i);
    const unsigned char la = AsciiLower(ca);
    const unsigned char lb = AsciiLower(cb);
    if (la != lb) return la < lb ? -1 : 1;
  }
  if (a.size() == b.size()) return 0;
  return a.size() > i ? 1 : -1;
}

size_t CaseInsensitiveHash(std::string_view text) {
  // FNV-1a over folded code points; an ASCII byte is its own code point, so
  // the fast path and the decoding path feed identical values.
  uint64_t hash = 14695981039346656037ull;
  auto mix = [&hash](char32_t cp) {
    hash ^= cp;
    hash *= 1099511628211ull;
  };
  for (size_t pos = 0; pos < text.size();) {
    const auto byte = static_cast<unsigned char>(text[pos]);
    if (byte < 0x80) {
      mix(AsciiLower(byte));
      ++pos;
    } else {
      mix(Fold(DecodeNext(text, &pos)));
    }
  }
  return static_cast<size_t>(hash);
}

std::string_view LTrim(std::string_view text) {
  const size_t first = text.find_first_not_of(' ');
  return first == std::string_view::npos ? std::string_view()
                                         : text.substr(first);
}

std::string_view RTrim(std::string_view text) {
  const size_t last = text.find_last_not_of(' ');
  return last == std::string_view::npos ? std::string_view()
                                        : text.substr(0, last + 1);
}

std::string_view Trim(std::string_view text) { return LTrim(RTrim(text)); }

std::vector<std::string> Split(std::string_view text,
                               std::string_view delimiter, int limit) {
  std::vector<std::string> pieces;
  if (text.empty() || limit == 0) return pieces;
  if (delimiter.empty()) {
    pieces.emplace_back(text);
    return pieces;
  }
  size_t start = 0;
  while (limit < 0 || pieces.size() + 1 < static_cast<size_t>(limit)) {
    const size_t found = text.find(delimiter, start);
    if (found == std::string_view::npos) break;
    pieces.emplace_back(text.substr(start, found - start));
    start = found + delimiter.size();
  }
  pieces.emplace_back(text.substr(start));
  return pieces;
}

std::optional<bool> Like(std::string_view text, std::string_view pattern) {
  const std::optional<CompiledPattern> compiled = CompilePattern(pattern);
  if (!compiled) return std::nullopt;
  return Match(*compiled, Decode(text));
}

int64_t Len(std::string_view text) {
  int64_t count = 0;
  for (size_t pos = 0; pos < text.size(); ++count) DecodeNext(text, &pos);
  return count;
}

std::string Left(std::string_view text, int64_t length) {
  return std::string(text.substr(0, OffsetAfter(text, length)));
}

std::string Right(std::string_view text, int64_t length) {
  const int64_t total = Len(text);
  if (length >= total) return std::string(text);
  return std::string(text.substr(OffsetAfter(text, total - length)));
}

std::string Mid(std::string_view text, int64_t start,
                std::optional<int64_t> length) {
  const size_t begin = OffsetAfter(text, start - 1);
  std::string_view rest = text.substr(begin);
  if (!length) return std::string(rest);
  return std::string(rest.substr(0, OffsetAfter(rest, *length)));
}

}  // namespace tovik
