#include "host/lisp/lisp_value.h"

#include <cmath>
#include <cctype>
#include <cstdio>
#include <cstdlib>

#include "frame/runtime_text.h"

namespace tovik::host::lisp {
namespace {

std::shared_ptr<Value> Make(Value::Kind kind) {
  auto v = std::make_shared<Value>();
  v->kind = kind;
  return v;
}

// Reals print with six significant digits and always show a decimal point
// or an exponent, as the host's lisp prints them (1.0, 0.333333, 1.0e+20).
std::string PrintReal(double x) {
  if (std::isnan(x)) return "-1.#IND";
  if (std::isinf(x)) return x < 0 ? "-1.#INF" : "1.#INF";
  char buffer[48];
  std::snprintf(buffer, sizeof(buffer), "%.6g", x);
  std::string text = buffer;
  size_t e = text.find('e');
  std::string mantissa = text.substr(0, e);
  if (mantissa.find('.') == std::string::npos) mantissa += ".0";
  return e == std::string::npos ? mantissa : mantissa + text.substr(e);
}

std::string Quoted(const std::string& s) {
  std::string out = "\"";
  for (char c : s) {
    switch (c) {
      case '"': out += "\\\""; break;
      case '\\': out += "\\\\"; break;
      case '\n': out += "\\n"; break;
      case '\r': out += "\\r"; break;
      case '\t': out += "\\t"; break;
      case '\x1b': out += "\\e"; break;
      default: out += c;
    }
  }
  return out + "\"";
}

}  // namespace

ValuePtr Int(int32_t value) {
  auto v = Make(Value::Kind::kInt);
  v->integer = value;
  return v;
}

ValuePtr Real(double value) {
  auto v = Make(Value::Kind::kReal);
  v->real = value;
  return v;
}

ValuePtr Str(std::string text) {
  auto v = Make(Value::Kind::kString);
  v->text = std::move(text);
  return v;
}

ValuePtr Symbol(std::string_view name) {
  auto v = Make(Value::Kind::kSymbol);
  v->text = UCase(name);
  return v;
}

ValuePtr Cons(ValuePtr car, ValuePtr cdr) {
  auto v = Make(Value::Kind::kCons);
  v->car = std::move(car);
  v->cdr = std::move(cdr);
  return v;
}

ValuePtr Ename(uint64_t handle, std::string group_dictionary) {
  auto v = Make(Value::Kind::kEname);
  v->handle = handle;
  v->text = std::move(group_dictionary);
  return v;
}

ValuePtr True() {
  static const ValuePtr t = Symbol("T");
  return t;
}

ValuePtr ListOf(const std::vector<ValuePtr>& items) {
  ValuePtr list;
  for (auto it = items.rbegin(); it != items.rend(); ++it) list = Cons(*it, list);
  return list;
}

bool IsNumber(const ValuePtr& v) {
  return v && (v->Is(Value::Kind::kInt) || v->Is(Value::Kind::kReal));
}

bool IsSymbol(const ValuePtr& v, std::string_view upper_name) {
  return v && v->Is(Value::Kind::kSymbol) && v->text == upper_name;
}

std::vector<ValuePtr> ToVector(const ValuePtr& list) {
  std::vector<ValuePtr> out;
  ValuePtr p = list;
  while (p) {
    if (!p->Is(Value::Kind::kCons)) throw LispError("bad list: " + Print(list));
    out.push_back(p->car);
    p = p->cdr;
  }
  return out;
}

double NumberOf(const ValuePtr& v) {
  if (!IsNumber(v)) BadArgument("numberp", v);
  return v->Is(Value::Kind::kInt) ? v->integer : v->real;
}

namespace {

// Lists nested deeper than this print as "..." (a structure built at run
// time can nest far deeper than any reader input).
constexpr int kMaxPrintDepth = 1000;

void PrintTo(std::string& out, const ValuePtr& v, bool quote_strings, int depth);

}  // namespace

std::string Print(const ValuePtr& v, bool quote_strings) {
  std::string out;
  PrintTo(out, v, quote_strings, 0);
  return out;
}

namespace {

std::string PrintAtom(const ValuePtr& v, bool quote_strings) {
  if (!v) return "nil";
  switch (v->kind) {
    case Value::Kind::kInt: return std::to_string(v->integer);
    case Value::Kind::kReal: return PrintReal(v->real);
    case Value::Kind::kString: return quote_strings ? Quoted(v->text) : v->text;
    case Value::Kind::kSymbol: return v->text;
    case Value::Kind::kEname: {
      char buffer[48];
      std::snprintf(buffer, sizeof(buffer), "<Entity name: %llx>",
                    static_cast<unsigned long long>(v->handle));
      return buffer;
    }
    case Value::Kind::kPickSet: return "<Selection set: " + std::to_string(v->pickset->number) + ">";
    case Value::Kind::kSubr: return "<Subr: #" + v->text + ">";
    case Value::Kind::kUsubr: return "#<USUBR @" + v->text + ">";
    case Value::Kind::kCons: break;
  }
  return "nil";
}

void PrintTo(std::string& out, const ValuePtr& v, bool quote_strings, int depth) {
  if (!v || !v->Is(Value::Kind::kCons)) {
    out += PrintAtom(v, quote_strings);
    return;
  }
  if (depth >= kMaxPrintDepth) {
    out += "...";
    return;
  }
  if (IsSymbol(v->car, "QUOTE") && v->cdr && v->cdr->Is(Value::Kind::kCons) && !v->cdr->cdr) {
    out += '\'';
    PrintTo(out, v->cdr->car, quote_strings, depth + 1);
    return;
  }
  out += '(';
  ValuePtr p = v;
  for (bool first = true; p && p->Is(Value::Kind::kCons); p = p->cdr, first = false) {
    if (!first) out += ' ';
    PrintTo(out, p->car, quote_strings, depth + 1);
  }
  if (p) {
    out += " . ";
    PrintTo(out, p, quote_strings, depth + 1);
  }
  out += ')';
}

}  // namespace

void BadArgument(std::string_view what, const ValuePtr& v) {
  // The host's lisp puts a colon after numberp only.
  std::string separator = what == "numberp" ? ": " : " ";
  throw LispError("bad argument type: " + std::string(what) + separator + Print(v));
}

}  // namespace tovik::host::lisp

// ------------------------------------------------------------------ reader
namespace tovik::host::lisp {

Value::~Value() {
  std::vector<ValuePtr> pending;
  auto take = [&](ValuePtr& p) {
    if (p && p.use_count() == 1) pending.push_back(std::move(p));
    p.reset();
  };
  take(car);
  take(cdr);
  while (!pending.empty()) {
    ValuePtr v = std::move(pending.back());
    pending.pop_back();
    auto* cell = const_cast<Value*>(v.get());
    take(cell->car);
    take(cell->cdr);
  }
}

namespace {

constexpr int kMaxNesting = 1000;

bool IsDelimiter(char c) {
  return std::isspace(static_cast<unsigned char>(c)) || c == '(' || c == ')' || c == '\'' ||
         c == '"' || c == ';';
}

// An atom's text as a number when it reads as one: integers that do not
// fit 32 bits become reals, as the host's reader makes them.
ValuePtr NumberAtom(const std::string& atom) {
  size_t i = 0;
  if (i < atom.size() && (atom[i] == '+' || atom[i] == '-')) ++i;
  size_t digits = 0, dots = 0, start = i;
  bool exponent = false;
  for (; i < atom.size(); ++i) {
    char c = atom[i];
    if (std::isdigit(static_cast<unsigned char>(c))) {
      ++digits;
    } else if (c == '.' && !exponent) {
      ++dots;
    } else if ((c == 'e' || c == 'E') && digits > 0 && !exponent) {
      exponent = true;
      if (i + 1 < atom.size() && (atom[i + 1] == '+' || atom[i + 1] == '-')) ++i;
      if (i + 1 >= atom.size()) return nullptr;
    } else {
      return nullptr;
    }
  }
  if (digits == 0 || dots > 1 || start == atom.size()) return nullptr;
  double value = std::strtod(atom.c_str(), nullptr);
  if (dots == 0 && !exponent && value >= -2147483648.0 && value <= 2147483647.0) {
    return Int(static_cast<int32_t>(value));
  }
  return Real(value);
}

class Reader {
 public:
  explicit Reader(std::string_view text) : text_(text) {}

  // The next expression, or nullopt at the end of the text.
  bool Next(ValuePtr& out) {
    SkipBlanks();
    if (pos_ >= text_.size()) return false;
    if (text_[pos_] == ')') throw LispError("extra right paren on input");
    out = ReadExpression(0);
    return true;
  }

 private:
  void SkipBlanks() {
    while (pos_ < text_.size()) {
      char c = text_[pos_];
      if (std::isspace(static_cast<unsigned char>(c))) {
        ++pos_;
      } else if (c == ';' && pos_ + 1 < text_.size() && text_[pos_ + 1] == '|') {
        size_t end = text_.find("|;", pos_ + 2);
        pos_ = end == std::string_view::npos ? text_.size() : end + 2;
      } else if (c == ';') {
        while (pos_ < text_.size() && text_[pos_] != '\n') ++pos_;
      } else {
        return;
      }
    }
  }

  ValuePtr ReadExpression(int depth) {
    if (depth > kMaxNesting) throw LispError("malformed list on input");
    SkipBlanks();
    if (pos_ >= text_.size()) throw LispError("malformed list on input");
    char c = text_[pos_];
    if (c == '(') {
      ++pos_;
      return ReadList(depth + 1);
    }
    if (c == '\'') {
      ++pos_;
      return ListOf({Symbol("QUOTE"), ReadExpression(depth + 1)});
    }
    if (c == '"') return ReadString();
    if (c == ')') throw LispError("extra right paren on input");
    size_t start = pos_;
    while (pos_ < text_.size() && !IsDelimiter(text_[pos_])) ++pos_;
    std::string atom(text_.substr(start, pos_ - start));
    if (ValuePtr number = NumberAtom(atom)) return number;
    if (UCase(atom) == "NIL") return nullptr;
    return Symbol(atom);
  }

  ValuePtr ReadList(int depth) {
    std::vector<ValuePtr> items;
    ValuePtr tail;
    for (;;) {
      SkipBlanks();
      if (pos_ >= text_.size()) throw LispError("malformed list on input");
      if (text_[pos_] == ')') {
        ++pos_;
        break;
      }
      // A lone dot between blanks makes a dotted pair.
      if (text_[pos_] == '.' && !items.empty() && pos_ + 1 < text_.size() &&
          IsDelimiter(text_[pos_ + 1])) {
        ++pos_;
        tail = ReadExpression(depth);
        SkipBlanks();
        if (pos_ >= text_.size() || text_[pos_] != ')') throw LispError("malformed list on input");
        ++pos_;
        break;
      }
      items.push_back(ReadExpression(depth));
    }
    ValuePtr list = tail;
    for (auto it = items.rbegin(); it != items.rend(); ++it) list = Cons(*it, list);
    return list;
  }

  ValuePtr ReadString() {
    ++pos_;
    std::string out;
    while (pos_ < text_.size()) {
      char c = text_[pos_++];
      if (c == '"') return Str(std::move(out));
      if (c != '\\' || pos_ >= text_.size()) {
        out += c;
        continue;
      }
      char e = text_[pos_++];
      switch (e) {
        case 'n': out += '\n'; break;
        case 'r': out += '\r'; break;
        case 't': out += '\t'; break;
        case 'e': out += '\x1b'; break;
        default:
          if (e >= '0' && e <= '7') {  // \nnn: an octal character code
            int code = e - '0';
            for (int k = 0; k < 2 && pos_ < text_.size() && text_[pos_] >= '0' && text_[pos_] <= '7'; ++k) {
              code = code * 8 + (text_[pos_++] - '0');
            }
            out += static_cast<char>(code);
          } else {
            out += e;
          }
      }
    }
    throw LispError("malformed string on input");
  }

  std::string_view text_;
  size_t pos_ = 0;
};

}  // namespace

std::vector<ValuePtr> ReadAll(std::string_view source) {
  std::vector<ValuePtr> out;
  ReadEach(source, [&](const ValuePtr& v) { out.push_back(v); });
  return out;
}

void ReadEach(std::string_view source, const std::function<void(const ValuePtr&)>& each) {
  Reader reader(source);
  ValuePtr v;
  while (reader.Next(v)) each(v);
}

}  // namespace tovik::host::lisp
