// The lisp's functions on numbers, strings, symbols and lists, and its
// printing functions. Integers are 32-bit and wrap on overflow; an
// operation with any real argument gives a real.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "frame/conversions.h"
#include "frame/runtime_text.h"
#include "host/lisp/builtins.h"
#include "host/lisp/interpreter.h"

namespace tovik::host::lisp {
namespace {

using Args = std::vector<ValuePtr>;

bool AllInts(const Args& a) {
  return std::all_of(a.begin(), a.end(), [](const ValuePtr& v) { return v && v->Is(Value::Kind::kInt); });
}

int32_t Wrap(int64_t x) { return static_cast<int32_t>(static_cast<uint32_t>(static_cast<uint64_t>(x))); }

// +, -, * over the arguments: integers while every argument is one.
template <class IntOp, class RealOp>
ValuePtr Arithmetic(const Args& a, IntOp int_op, RealOp real_op) {
  for (const ValuePtr& v : a) NumberOf(v);
  if (a.empty()) return Int(0);
  if (AllInts(a)) {
    int32_t acc = a[0]->integer;
    for (size_t i = 1; i < a.size(); ++i) acc = Wrap(int_op(int64_t{acc}, int64_t{a[i]->integer}));
    return Int(acc);
  }
  double acc = NumberOf(a[0]);
  for (size_t i = 1; i < a.size(); ++i) acc = real_op(acc, NumberOf(a[i]));
  return Real(acc);
}

ValuePtr Add(Interpreter&, const Args& a) {
  return Arithmetic(a, std::plus<int64_t>(), std::plus<double>());
}
ValuePtr Subtract(Interpreter&, const Args& a) {
  if (a.size() == 1) {
    return a[0] && a[0]->Is(Value::Kind::kInt) ? Int(Wrap(-int64_t{a[0]->integer})) : Real(-NumberOf(a[0]));
  }
  return Arithmetic(a, std::minus<int64_t>(), std::minus<double>());
}
ValuePtr Multiply(Interpreter&, const Args& a) {
  return Arithmetic(a, std::multiplies<int64_t>(), std::multiplies<double>());
}
ValuePtr Divide(Interpreter&, const Args& a) {
  for (const ValuePtr& v : a) NumberOf(v);
  if (a.empty()) return Int(0);
  if (AllInts(a)) {
    int32_t acc = a[0]->integer;
    for (size_t i = 1; i < a.size(); ++i) {
      if (a[i]->integer == 0) throw LispError("divide by zero");
      acc = Wrap(int64_t{acc} / a[i]->integer);
    }
    return Int(acc);
  }
  double acc = NumberOf(a[0]);
  for (size_t i = 1; i < a.size(); ++i) {
    if (NumberOf(a[i]) == 0) throw LispError("divide by zero");
    acc /= NumberOf(a[i]);
  }
  return Real(acc);
}
ValuePtr OnePlus(Interpreter& lisp, const Args& a) {
  Arity(a, 1, 1);
  return Add(lisp, {a[0], Int(1)});
}
ValuePtr OneMinus(Interpreter& lisp, const Args& a) {
  Arity(a, 1, 1);
  return Subtract(lisp, {a[0], Int(1)});
}
ValuePtr Abs(Interpreter&, const Args& a) {
  Arity(a, 1, 1);
  if (a[0] && a[0]->Is(Value::Kind::kInt)) return Int(Wrap(std::llabs(a[0]->integer)));
  return Real(std::fabs(NumberOf(a[0])));
}
template <bool kMax>
ValuePtr Extreme(Interpreter&, const Args& a) {
  Arity(a, 1, SIZE_MAX);
  for (const ValuePtr& v : a) NumberOf(v);
  size_t best = 0;
  for (size_t i = 1; i < a.size(); ++i) {
    if (kMax ? NumberOf(a[i]) > NumberOf(a[best]) : NumberOf(a[i]) < NumberOf(a[best])) best = i;
  }
  if (AllInts(a)) return a[best];
  return Real(NumberOf(a[best]));
}
ValuePtr Rem(Interpreter&, const Args& a) {
  Arity(a, 2, 2);
  if (AllInts(a)) {
    if (a[1]->integer == 0) throw LispError("divide by zero");
    return Int(Wrap(int64_t{a[0]->integer} % a[1]->integer));
  }
  if (NumberOf(a[1]) == 0) throw LispError("divide by zero");
  return Real(std::fmod(NumberOf(a[0]), NumberOf(a[1])));
}
ValuePtr Fix(Interpreter&, const Args& a) {
  Arity(a, 1, 1);
  double x = std::trunc(NumberOf(a[0]));
  if (x < -2147483648.0 || x > 2147483647.0) return Real(x);
  return Int(static_cast<int32_t>(x));
}
ValuePtr Float(Interpreter&, const Args& a) {
  Arity(a, 1, 1);
  return Real(NumberOf(a[0]));
}
template <double (*kFn)(double)>
ValuePtr Math(Interpreter&, const Args& a) {
  Arity(a, 1, 1);
  return Real(kFn(NumberOf(a[0])));
}
ValuePtr Sqrt(Interpreter&, const Args& a) {
  Arity(a, 1, 1);
  if (NumberOf(a[0]) < 0) throw LispError("function undefined for argument: " + Print(a[0]));
  return Real(std::sqrt(NumberOf(a[0])));
}
ValuePtr Atan(Interpreter&, const Args& a) {
  Arity(a, 1, 2);
  return Real(a.size() == 1 ? std::atan(NumberOf(a[0])) : std::atan2(NumberOf(a[0]), NumberOf(a[1])));
}
ValuePtr Expt(Interpreter&, const Args& a) {
  Arity(a, 2, 2);
  if (AllInts(a) && a[1]->integer >= 0) {
    int64_t r = 1;
    for (int32_t i = 0; i < a[1]->integer && i < 64; ++i) r = Wrap(r * a[0]->integer);
    return Int(Wrap(r));
  }
  return Real(std::pow(NumberOf(a[0]), NumberOf(a[1])));
}

// Comparison of two numbers or two strings: -1, 0 or 1.
int Compare(const ValuePtr& x, const ValuePtr& y) {
  if (x && y && x->Is(Value::Kind::kString) && y->Is(Value::Kind::kString)) {
    return x->text < y->text ? -1 : (x->text > y->text ? 1 : 0);
  }
  if (x && x->Is(Value::Kind::kString)) BadArgument("numberp", y);
  double p = NumberOf(x), q = NumberOf(y);
  return p < q ? -1 : (p > q ? 1 : 0);
}
template <bool (*kHolds)(int)>
ValuePtr Comparison(Interpreter&, const Args& a) {
  Arity(a, 1, SIZE_MAX);
  for (size_t i = 0; i + 1 < a.size(); ++i) {
    if (!kHolds(Compare(a[i], a[i + 1]))) return nullptr;
  }
  if (a.size() == 1) Compare(a[0], a[0]);
  return True();
}
bool Eq(int c) { return c == 0; }
bool Ne(int c) { return c != 0; }
bool Lt(int c) { return c < 0; }
bool Gt(int c) { return c > 0; }
bool Le(int c) { return c <= 0; }
bool Ge(int c) { return c >= 0; }

bool Equal(const ValuePtr& x, const ValuePtr& y, double fuzz, int depth = 0) {
  if (x == y) return true;
  if (depth > Interpreter::kMaxDepth) throw LispError("internal stack limit reached");
  if (!x || !y) return false;
  if (IsNumber(x) && IsNumber(y)) return std::fabs(NumberOf(x) - NumberOf(y)) <= fuzz;
  if (x->kind != y->kind) return false;
  switch (x->kind) {
    case Value::Kind::kString:
    case Value::Kind::kSymbol: return x->text == y->text;
    case Value::Kind::kEname: return x->handle == y->handle && x->text == y->text;
    case Value::Kind::kCons: {
      ValuePtr p = x, q = y;
      for (; p && q && p->Is(Value::Kind::kCons) && q->Is(Value::Kind::kCons); p = p->cdr, q = q->cdr) {
        if (!Equal(p->car, q->car, fuzz, depth + 1)) return false;
      }
      return Equal(p, q, fuzz, depth + 1);
    }
    default: return x == y;
  }
}
ValuePtr EqualFn(Interpreter&, const Args& a) {
  Arity(a, 2, 3);
  return Equal(a[0], a[1], a.size() == 3 ? NumberOf(a[2]) : 0) ? True() : nullptr;
}
ValuePtr EqFn(Interpreter&, const Args& a) {
  Arity(a, 2, 2);
  const ValuePtr &x = a[0], &y = a[1];
  bool same = x == y || (x && y && x->kind == y->kind &&
                         (x->Is(Value::Kind::kSymbol) || x->Is(Value::Kind::kEname) || x->Is(Value::Kind::kInt)) &&
                         Equal(x, y, 0));
  return same ? True() : nullptr;
}
ValuePtr Not(Interpreter&, const Args& a) {
  Arity(a, 1, 1);
  return a[0] ? nullptr : True();
}
ValuePtr Atom(Interpreter&, const Args& a) {
  Arity(a, 1, 1);
  return a[0] && a[0]->Is(Value::Kind::kCons) ? nullptr : True();
}
ValuePtr Listp(Interpreter&, const Args& a) {
  Arity(a, 1, 1);
  return !a[0] || a[0]->Is(Value::Kind::kCons) ? True() : nullptr;
}
ValuePtr Numberp(Interpreter&, const Args& a) {
  Arity(a, 1, 1);
  return IsNumber(a[0]) ? True() : nullptr;
}
ValuePtr Zerop(Interpreter&, const Args& a) {
  Arity(a, 1, 1);
  return NumberOf(a[0]) == 0 ? True() : nullptr;
}
ValuePtr Minusp(Interpreter&, const Args& a) {
  Arity(a, 1, 1);
  return NumberOf(a[0]) < 0 ? True() : nullptr;
}
ValuePtr Boundp(Interpreter& lisp, const Args& a) {
  Arity(a, 1, 1);
  if (!a[0] || !a[0]->Is(Value::Kind::kSymbol)) BadArgument("symbolp", a[0]);
  return lisp.Get(a[0]->text) ? True() : nullptr;
}
ValuePtr Type(Interpreter&, const Args& a) {
  Arity(a, 1, 1);
  if (!a[0]) return nullptr;
  static const char* const kNames[] = {"INT", "REAL", "STR", "SYM", "LIST", "ENAME", "PICKSET", "SUBR", "USUBR"};
  return Symbol(kNames[static_cast<int>(a[0]->kind)]);
}

// ------------------------------------------------------------------ strings
ValuePtr Strcat(Interpreter&, const Args& a) {
  std::string out;
  for (const ValuePtr& v : a) out += StringOf(v);
  return Str(out);
}
ValuePtr Strlen(Interpreter&, const Args& a) {
  int64_t n = 0;
  for (const ValuePtr& v : a) n += Len(StringOf(v));
  return Int(static_cast<int32_t>(n));
}
ValuePtr Substr(Interpreter&, const Args& a) {
  Arity(a, 2, 3);
  const std::string& s = StringOf(a[0]);
  int32_t start = IntOf(a[1]);
  if (start < 1) throw LispError("bad argument value: positive " + Print(a[1]));
  if (a.size() == 3) {
    int32_t length = IntOf(a[2]);
    if (length < 0) throw LispError("bad argument value: non-negative " + Print(a[2]));
    return Str(Mid(s, start, length));
  }
  return Str(Mid(s, start));
}
ValuePtr Strcase(Interpreter&, const Args& a) {
  Arity(a, 1, 2);
  const std::string& s = StringOf(a[0]);
  return Str(a.size() == 2 && a[1] ? LCase(s) : UCase(s));
}
ValuePtr Itoa(Interpreter&, const Args& a) {
  Arity(a, 1, 1);
  return Str(std::to_string(IntOf(a[0])));
}
ValuePtr Atoi(Interpreter&, const Args& a) {
  Arity(a, 1, 1);
  long long v = std::strtoll(StringOf(a[0]).c_str(), nullptr, 10);
  return Int(Wrap(v));
}
ValuePtr Atof(Interpreter&, const Args& a) {
  Arity(a, 1, 1);
  return Real(std::strtod(StringOf(a[0]).c_str(), nullptr));
}
// Decimal text with `precision` places (LUPREC when omitted); every mode
// is written in decimal form.
ValuePtr Rtos(Interpreter& lisp, const Args& a) {
  Arity(a, 1, 3);
  double x = NumberOf(a[0]);
  int precision = a.size() == 3 ? IntOf(a[2]) : CLng(lisp.document().GetSysVar("LUPREC"));
  precision = std::clamp(precision, 0, 8);
  char buffer[64];
  std::snprintf(buffer, sizeof(buffer), "%.*f", precision, x);
  return Str(buffer);
}
ValuePtr Chr(Interpreter&, const Args& a) {
  Arity(a, 1, 1);
  return Str(std::string(1, static_cast<char>(IntOf(a[0]))));
}
ValuePtr Ascii(Interpreter&, const Args& a) {
  Arity(a, 1, 1);
  const std::string& s = StringOf(a[0]);
  return Int(s.empty() ? 0 : static_cast<unsigned char>(s[0]));
}
ValuePtr StringSearch(Interpreter&, const Args& a) {
  Arity(a, 2, 3);
  size_t start = a.size() == 3 ? static_cast<size_t>(std::max(0, IntOf(a[2]))) : 0;
  size_t at = StringOf(a[1]).find(StringOf(a[0]), start);
  return at == std::string::npos ? nullptr : Int(static_cast<int32_t>(at));
}
ValuePtr StringSubst(Interpreter&, const Args& a) {
  Arity(a, 3, 4);
  std::string s = StringOf(a[2]);
  const std::string &replacement = StringOf(a[0]), &pattern = StringOf(a[1]);
  size_t start = a.size() == 4 ? static_cast<size_t>(std::max(0, IntOf(a[3]))) : 0;
  size_t at = s.find(pattern, start);
  if (at != std::string::npos) s.replace(at, pattern.size(), replacement);
  return Str(s);
}
template <bool kLeft, bool kRight>
ValuePtr StringTrim(Interpreter&, const Args& a) {
  Arity(a, 2, 2);
  const std::string &chars = StringOf(a[0]), &s = StringOf(a[1]);
  size_t begin = kLeft ? s.find_first_not_of(chars) : 0;
  if (begin == std::string::npos) return Str("");
  size_t end = kRight ? s.find_last_not_of(chars) + 1 : s.size();
  return Str(s.substr(begin, end - begin));
}

// -------------------------------------------------------------------- lists
ValuePtr ConsOf(const ValuePtr& v, std::string_view) {
  if (v && !v->Is(Value::Kind::kCons)) BadArgument("consp", v);
  return v;
}
// car/cdr compositions: the letters of "ad" applied right to left.
template <const char* kPath>
ValuePtr Cxr(Interpreter&, const Args& a) {
  Arity(a, 1, 1);
  ValuePtr v = a[0];
  std::string_view path(kPath);
  for (auto it = path.rbegin(); it != path.rend(); ++it) {
    ConsOf(v, "");
    if (!v) return nullptr;
    v = *it == 'a' ? v->car : v->cdr;
  }
  return v;
}
constexpr char kA[] = "a", kD[] = "d", kAA[] = "aa", kAD[] = "ad", kDA[] = "da", kDD[] = "dd",
               kADD[] = "add", kADA[] = "ada", kDDD[] = "ddd", kADDD[] = "addd";

ValuePtr ConsFn(Interpreter&, const Args& a) {
  Arity(a, 2, 2);
  return Cons(a[0], a[1]);
}
ValuePtr List(Interpreter&, const Args& a) { return ListOf(a); }
ValuePtr Append(Interpreter&, const Args& a) {
  std::vector<ValuePtr> all;
  for (const ValuePtr& list : a) {
    if (list && !list->Is(Value::Kind::kCons)) BadArgument("listp", list);
    for (const ValuePtr& v : ToVector(list)) all.push_back(v);
  }
  return ListOf(all);
}
ValuePtr Length(Interpreter&, const Args& a) {
  Arity(a, 1, 1);
  if (a[0] && !a[0]->Is(Value::Kind::kCons)) BadArgument("listp", a[0]);
  return Int(static_cast<int32_t>(ToVector(a[0]).size()));
}
ValuePtr NthFn(Interpreter&, const Args& a) {
  Arity(a, 2, 2);
  int32_t n = IntOf(a[0]);
  ValuePtr p = ConsOf(a[1], "");
  for (int32_t i = 0; p && i < n; ++i) p = ConsOf(p->cdr, "");
  return n < 0 || !p ? nullptr : p->car;
}
ValuePtr Assoc(Interpreter&, const Args& a) {
  Arity(a, 2, 2);
  for (ValuePtr p = ConsOf(a[1], ""); p; p = ConsOf(p->cdr, "")) {
    if (p->car && p->car->Is(Value::Kind::kCons) && Equal(p->car->car, a[0], 0)) return p->car;
  }
  return nullptr;
}
ValuePtr Member(Interpreter&, const Args& a) {
  Arity(a, 2, 2);
  for (ValuePtr p = ConsOf(a[1], ""); p; p = ConsOf(p->cdr, "")) {
    if (Equal(p->car, a[0], 0)) return p;
  }
  return nullptr;
}
ValuePtr Reverse(Interpreter&, const Args& a) {
  Arity(a, 1, 1);
  std::vector<ValuePtr> items = ToVector(ConsOf(a[0], ""));
  std::reverse(items.begin(), items.end());
  return ListOf(items);
}
ValuePtr Last(Interpreter&, const Args& a) {
  Arity(a, 1, 1);
  std::vector<ValuePtr> items = ToVector(ConsOf(a[0], ""));
  return items.empty() ? nullptr : items.back();
}
ValuePtr Mapcar(Interpreter& lisp, const Args& a) {
  Arity(a, 2, SIZE_MAX);
  std::vector<std::vector<ValuePtr>> lists;
  size_t n = SIZE_MAX;
  for (size_t i = 1; i < a.size(); ++i) {
    lists.push_back(ToVector(ConsOf(a[i], "")));
    n = std::min(n, lists.back().size());
  }
  std::vector<ValuePtr> out;
  for (size_t k = 0; k < n; ++k) {
    Args call;
    for (const auto& list : lists) call.push_back(list[k]);
    out.push_back(lisp.Apply(a[0], call));
  }
  return ListOf(out);
}
ValuePtr ApplyFn(Interpreter& lisp, const Args& a) {
  Arity(a, 2, 2);
  return lisp.Apply(a[0], ToVector(ConsOf(a[1], "")));
}

// ----------------------------------------------------------------- printing
ValuePtr Princ(Interpreter& lisp, const Args& a) {
  Arity(a, 0, 2);
  if (a.empty()) return Symbol("");
  lisp.Write(Print(a[0], false));
  return a[0];
}
ValuePtr Prin1(Interpreter& lisp, const Args& a) {
  Arity(a, 0, 2);
  if (a.empty()) return Symbol("");
  lisp.Write(Print(a[0]));
  return a[0];
}
ValuePtr PrintFn(Interpreter& lisp, const Args& a) {
  Arity(a, 0, 2);
  if (a.empty()) return Symbol("");
  lisp.Write("\n" + Print(a[0]) + " ");
  return a[0];
}
ValuePtr Terpri(Interpreter& lisp, const Args& a) {
  Arity(a, 0, 0);
  lisp.Write("\n");
  return nullptr;
}
ValuePtr Prompt(Interpreter& lisp, const Args& a) {
  Arity(a, 1, 1);
  lisp.Write(StringOf(a[0]));
  return nullptr;
}

}  // namespace

void Arity(const std::vector<ValuePtr>& args, size_t min, size_t max) {
  if (args.size() < min) throw LispError("too few arguments");
  if (args.size() > max) throw LispError("too many arguments");
}

const std::string& StringOf(const ValuePtr& v) {
  if (!v || !v->Is(Value::Kind::kString)) BadArgument("stringp", v);
  return v->text;
}

int32_t IntOf(const ValuePtr& v) {
  if (!v || !v->Is(Value::Kind::kInt)) BadArgument("fixnump", v);
  return v->integer;
}

void Define(Globals& globals, std::string_view name, Builtin function) {
  auto v = std::make_shared<Value>();
  v->kind = Value::Kind::kSubr;
  v->text = UCase(name);
  v->builtin = function;
  globals[v->text] = v;
}

void AddCoreFunctions(Globals& g) {
  Define(g, "+", Add);
  Define(g, "-", Subtract);
  Define(g, "*", Multiply);
  Define(g, "/", Divide);
  Define(g, "1+", OnePlus);
  Define(g, "1-", OneMinus);
  Define(g, "abs", Abs);
  Define(g, "max", Extreme<true>);
  Define(g, "min", Extreme<false>);
  Define(g, "rem", Rem);
  Define(g, "fix", Fix);
  Define(g, "float", Float);
  Define(g, "sqrt", Sqrt);
  Define(g, "sin", Math<std::sin>);
  Define(g, "cos", Math<std::cos>);
  Define(g, "atan", Atan);
  Define(g, "expt", Expt);
  Define(g, "=", Comparison<Eq>);
  Define(g, "/=", Comparison<Ne>);
  Define(g, "<", Comparison<Lt>);
  Define(g, ">", Comparison<Gt>);
  Define(g, "<=", Comparison<Le>);
  Define(g, ">=", Comparison<Ge>);
  Define(g, "eq", EqFn);
  Define(g, "equal", EqualFn);
  Define(g, "not", Not);
  Define(g, "null", Not);
  Define(g, "atom", Atom);
  Define(g, "listp", Listp);
  Define(g, "numberp", Numberp);
  Define(g, "zerop", Zerop);
  Define(g, "minusp", Minusp);
  Define(g, "boundp", Boundp);
  Define(g, "type", Type);
  Define(g, "strcat", Strcat);
  Define(g, "strlen", Strlen);
  Define(g, "substr", Substr);
  Define(g, "strcase", Strcase);
  Define(g, "itoa", Itoa);
  Define(g, "atoi", Atoi);
  Define(g, "atof", Atof);
  Define(g, "rtos", Rtos);
  Define(g, "chr", Chr);
  Define(g, "ascii", Ascii);
  Define(g, "vl-string-search", StringSearch);
  Define(g, "vl-string-subst", StringSubst);
  Define(g, "vl-string-trim", StringTrim<true, true>);
  Define(g, "vl-string-left-trim", StringTrim<true, false>);
  Define(g, "vl-string-right-trim", StringTrim<false, true>);
  Define(g, "car", Cxr<kA>);
  Define(g, "cdr", Cxr<kD>);
  Define(g, "caar", Cxr<kAA>);
  Define(g, "cadr", Cxr<kAD>);
  Define(g, "cdar", Cxr<kDA>);
  Define(g, "cddr", Cxr<kDD>);
  Define(g, "caddr", Cxr<kADD>);
  Define(g, "cadar", Cxr<kADA>);
  Define(g, "cdddr", Cxr<kDDD>);
  Define(g, "cadddr", Cxr<kADDD>);
  Define(g, "cons", ConsFn);
  Define(g, "list", List);
  Define(g, "append", Append);
  Define(g, "length", Length);
  Define(g, "nth", NthFn);
  Define(g, "assoc", Assoc);
  Define(g, "member", Member);
  Define(g, "reverse", Reverse);
  Define(g, "last", Last);
  Define(g, "mapcar", Mapcar);
  Define(g, "apply", ApplyFn);
  Define(g, "princ", Princ);
  Define(g, "prin1", Prin1);
  Define(g, "print", PrintFn);
  Define(g, "terpri", Terpri);
  Define(g, "prompt", Prompt);
}

}  // namespace tovik::host::lisp
