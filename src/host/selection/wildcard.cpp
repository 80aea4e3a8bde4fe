#include "host/selection/wildcard.h"

#include "frame/char_class.h"

namespace tovik::host {
namespace {

// Decodes UTF-8 into code points, folding case on the way. A byte that does
// not start a valid sequence is taken as one character (its byte value).
std::vector<char32_t> DecodeFolded(std::string_view s) {
  std::vector<char32_t> out;
  out.reserve(s.size());
  size_t i = 0;
  while (i < s.size()) {
    const auto b0 = static_cast<unsigned char>(s[i]);
    if (b0 < 0x80) {
      out.push_back(b0 >= 'A' && b0 <= 'Z' ? char32_t(b0 + 32) : char32_t(b0));
      ++i;
      continue;
    }
    int extra = b0 >= 0xF0 && b0 < 0xF5 ? 3 : b0 >= 0xE0 ? 2 : b0 >= 0xC2 && b0 < 0xE0 ? 1 : -1;
    char32_t cp = extra == 3 ? (b0 & 0x07) : extra == 2 ? (b0 & 0x0F) : (b0 & 0x1F);
    bool ok = extra > 0;
    for (int k = 1; ok && k <= extra; ++k) {
      if (i + static_cast<size_t>(k) >= s.size()) {
        ok = false;
        break;
      }
      const auto b = static_cast<unsigned char>(s[i + static_cast<size_t>(k)]);
      if ((b & 0xC0) != 0x80) ok = false;
      cp = (cp << 6) | (b & 0x3F);
    }
    if (!ok) {
      out.push_back(b0);
      ++i;
      continue;
    }
    out.push_back(chars::Fold(cp));
    i += static_cast<size_t>(extra) + 1;
  }
  return out;
}

bool IsDigit(char32_t c) { return c < 0x80 ? (c >= '0' && c <= '9') : chars::IsDigit(c); }
bool IsLetter(char32_t c) {
  return c < 0x80 ? ((c | 0x20) >= 'a' && (c | 0x20) <= 'z') : chars::IsLetter(c);
}

}  // namespace

Wildcard::Wildcard(std::string_view pattern) {
  const std::vector<char32_t> p = DecodeFolded(pattern);
  // Split on commas that are neither escaped nor inside brackets.
  size_t begin = 0;
  bool in_set = false;
  for (size_t i = 0; i < p.size(); ++i) {
    if (p[i] == '`') {
      ++i;
    } else if (in_set) {
      if (p[i] == ']') in_set = false;
    } else if (p[i] == '[') {
      in_set = true;
      // "]" right after "[" or "[~" is a member, not the end.
      if (i + 1 < p.size() && p[i + 1] == '~') ++i;
      if (i + 1 < p.size() && p[i + 1] == ']') ++i;
    } else if (p[i] == ',') {
      CompileAlternative(p, begin, i);
      begin = i + 1;
    }
  }
  CompileAlternative(p, begin, p.size());
  if (alternatives_.size() > 1) literal_ = false;
}

void Wildcard::CompileAlternative(const std::vector<char32_t>& p, size_t begin, size_t end) {
  Alternative alt;
  size_t i = begin;
  if (i < end && p[i] == '~') {
    alt.negated = true;
    literal_ = false;
    ++i;
  }
  for (; i < end; ++i) {
    Token t;
    const char32_t c = p[i];
    switch (c) {
      case '`':
        t.c = i + 1 < end ? p[++i] : c;
        break;
      case '?': t.kind = TokenKind::kAnyOne; break;
      case '*': t.kind = TokenKind::kAnyRun; break;
      case '#': t.kind = TokenKind::kDigit; break;
      case '@': t.kind = TokenKind::kLetter; break;
      case '.': t.kind = TokenKind::kNonAlnum; break;
      case ' ': t.kind = TokenKind::kSpaces; break;
      case '[': {
        size_t j = i + 1;
        Token set;
        set.kind = TokenKind::kSet;
        if (j < end && p[j] == '~') {
          set.negated = true;
          ++j;
        }
        set.first = static_cast<unsigned>(ranges_.size());
        bool closed = false;
        for (bool first = true; j < end; first = false) {
          char32_t low = p[j];
          if (low == ']' && !first) {
            closed = true;
            break;
          }
          if (low == '`' && j + 1 < end) low = p[++j];
          char32_t high = low;
          if (j + 2 < end && p[j + 1] == '-' && p[j + 2] != ']') {
            j += 2;
            high = p[j] == '`' && j + 1 < end ? p[++j] : p[j];
          }
          ranges_.push_back(low <= high ? Range{low, high} : Range{high, low});
          ++j;
        }
        if (!closed) {  // an unclosed bracket is a plain "["
          ranges_.resize(set.first);
          t.c = c;
          break;
        }
        set.last = static_cast<unsigned>(ranges_.size());
        t = set;
        i = j;
        break;
      }
      default:
        t.c = c;
    }
    if (t.kind != TokenKind::kChar) literal_ = false;
    alt.tokens.push_back(t);
  }
  alternatives_.push_back(std::move(alt));
}

bool Wildcard::TokenAccepts(const Token& t, char32_t c) const {
  switch (t.kind) {
    case TokenKind::kChar: return t.c == c;
    case TokenKind::kAnyOne:
    case TokenKind::kAnyRun: return true;
    case TokenKind::kDigit: return IsDigit(c);
    case TokenKind::kLetter: return IsLetter(c);
    case TokenKind::kNonAlnum: return !IsDigit(c) && !IsLetter(c);
    case TokenKind::kSpaces: return c == ' ';
    case TokenKind::kSet: {
      bool in = false;
      for (unsigned r = t.first; r < t.last && !in; ++r) {
        in = c >= ranges_[r].low && c <= ranges_[r].high;
      }
      return in != t.negated;
    }
  }
  return false;
}

// A dynamic programme over (token, text position): `reach[j]` is true when
// the tokens so far can consume exactly the first j characters. "*" and the
// space token may repeat, so they extend the reach forward within a row.
bool Wildcard::MatchAlternative(const Alternative& alt, const std::vector<char32_t>& text) const {
  const size_t n = text.size();
  std::vector<char> reach(n + 1, 0), next(n + 1, 0);
  reach[0] = 1;
  for (const Token& t : alt.tokens) {
    std::fill(next.begin(), next.end(), 0);
    bool any = false;
    if (t.kind == TokenKind::kAnyRun) {
      char carry = 0;
      for (size_t j = 0; j <= n; ++j) {
        carry = carry || reach[j];
        next[j] = carry;
        any = any || carry;
      }
    } else {
      const bool repeats = t.kind == TokenKind::kSpaces;
      for (size_t j = 0; j < n; ++j) {
        const bool from = reach[j] || (repeats && next[j]);
        if (from && TokenAccepts(t, text[j])) {
          next[j + 1] = 1;
          any = true;
        }
      }
    }
    if (!any) return false;
    reach.swap(next);
  }
  return reach[n] != 0;
}

bool Wildcard::Matches(std::string_view text) const {
  const std::vector<char32_t> folded = DecodeFolded(text);
  for (const Alternative& alt : alternatives_) {
    if (MatchAlternative(alt, folded) != alt.negated) return true;
  }
  return false;
}

bool WildcardMatch(std::string_view text, std::string_view pattern) {
  return Wildcard(pattern).Matches(text);
}

}  // namespace tovik::host
