#include "host/lisp/interpreter.h"

#include <fstream>
#include <sstream>

#include "frame/automation_error.h"

namespace tovik::host::lisp {
namespace {

bool IsEmptySymbol(const ValuePtr& v) { return v && v->Is(Value::Kind::kSymbol) && v->text.empty(); }

const ValuePtr& Nth(const std::vector<ValuePtr>& items, size_t i) {
  if (i >= items.size()) throw LispError("too few arguments");
  return items[i];
}

std::string SymbolName(const ValuePtr& v) {
  if (!v || !v->Is(Value::Kind::kSymbol)) BadArgument("symbolp", v);
  return v->text;
}

ValuePtr MakeUsubr(std::string name, ValuePtr params, ValuePtr body) {
  auto f = std::make_shared<Value>();
  f->kind = Value::Kind::kUsubr;
  f->text = std::move(name);
  f->car = std::move(params);
  f->cdr = std::move(body);
  return f;
}

// Saves a symbol's value and puts it back when the scope ends (dynamic
// binding of arguments, locals and foreach variables).
class Binding {
 public:
  Binding(Interpreter& lisp, std::string name) : lisp_(lisp), name_(std::move(name)), saved_(lisp.Get(name_)) {}
  ~Binding() { lisp_.Set(name_, saved_); }
  Binding(const Binding&) = delete;
  Binding& operator=(const Binding&) = delete;

 private:
  Interpreter& lisp_;
  std::string name_;
  ValuePtr saved_;
};

}  // namespace

Interpreter::Interpreter() {
  AddCoreFunctions(globals_);
  AddDrawingFunctions(globals_);
}

template <class Body>
bool Interpreter::Guarded(Document& document, Body&& body) {
  Document* outer = document_;
  const bool nested = outer != nullptr;
  document_ = &document;
  if (!nested) {
    depth_ = 0;
    steps_ = 0;
  }
  bool ok = true;
  try {
    body();
  } catch (const LispError& e) {
    Write(std::string("; error: ") + e.what() + "\n");
    ok = false;
  } catch (const AutomationError& e) {
    Write("; error: " + e.Description() + "\n");
    ok = false;
  }
  document_ = outer;
  return ok;
}

void Interpreter::Evaluate(Document& document, std::string_view expression) {
  Guarded(document, [&] {
    ReadEach(expression, [&](const ValuePtr& item) {
      ValuePtr value = Eval(item);
      if (!IsEmptySymbol(value)) Write(Print(value) + "\n");
    });
  });
}

bool Interpreter::LoadSource(Document& document, std::string_view source) {
  return Guarded(document, [&] {
    ReadEach(source, [&](const ValuePtr& item) { Eval(item); });
  });
}

void Interpreter::LoadStartup(Document& document, const std::vector<std::string>& files) {
  for (const std::string& file : files) {
    if (file == kBuiltinLispSide) {
      LoadSource(document, BuiltinLispSide());
    } else {
      Guarded(document, [&] { LoadFile(file); });
    }
  }
}

ValuePtr Interpreter::LoadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) throw LispError("LOAD failed: \"" + path + "\"");
  std::stringstream text;
  text << in.rdbuf();
  ValuePtr last;
  ReadEach(text.str(), [&](const ValuePtr& item) { last = Eval(item); });
  return last;
}

ValuePtr Interpreter::Get(const std::string& name) const {
  auto it = globals_.find(name);
  return it == globals_.end() ? nullptr : it->second;
}

void Interpreter::Set(const std::string& name, ValuePtr value) {
  if (value) {
    globals_[name] = std::move(value);
  } else {
    globals_.erase(name);
  }
}

void Interpreter::Write(std::string_view text) {
  if (document_) document_->WriteCommandLine(text);
}

ValuePtr Interpreter::Eval(const ValuePtr& expr) {
  if (!expr) return nullptr;
  switch (expr->kind) {
    case Value::Kind::kSymbol:
      return expr->text == "T" ? True() : Get(expr->text);
    case Value::Kind::kCons:
      return EvalList(expr);
    default:
      return expr;
  }
}

ValuePtr Interpreter::EvalBody(ValuePtr body) {
  ValuePtr last;
  for (; body; body = body->cdr) {
    if (!body->Is(Value::Kind::kCons)) throw LispError("bad list: " + Print(body));
    last = Eval(body->car);
  }
  return last;
}

ValuePtr Interpreter::EvalList(const ValuePtr& expr) {
  Step();
  if (depth_ >= kMaxDepth) throw LispError("internal stack limit reached");
  struct Depth {
    int& d;
    explicit Depth(int& depth) : d(depth) { ++d; }
    ~Depth() { --d; }
  } depth(depth_);

  const ValuePtr& head = expr->car;
  ValuePtr function;
  if (head && head->Is(Value::Kind::kSymbol)) {
    bool handled = false;
    ValuePtr result = SpecialForm(head->text, expr->cdr, handled);
    if (handled) return result;
    function = Get(head->text);
    if (!function || (!function->Is(Value::Kind::kSubr) && !function->Is(Value::Kind::kUsubr))) {
      throw LispError("no function definition: " + head->text);
    }
  } else {
    function = Eval(head);
  }
  std::vector<ValuePtr> args;
  for (ValuePtr p = expr->cdr; p; p = p->cdr) {
    if (!p->Is(Value::Kind::kCons)) throw LispError("bad list: " + Print(expr));
    args.push_back(Eval(p->car));
  }
  return Apply(function, args);
}

ValuePtr Interpreter::Apply(const ValuePtr& function, const std::vector<ValuePtr>& args) {
  if (function && function->Is(Value::Kind::kSubr)) return function->builtin(*this, args);
  if (function && function->Is(Value::Kind::kUsubr)) return CallUser(function, args);
  // A quoted symbol or lambda list given to mapcar or apply.
  if (function && function->Is(Value::Kind::kSymbol)) {
    ValuePtr named = Get(function->text);
    if (named && (named->Is(Value::Kind::kSubr) || named->Is(Value::Kind::kUsubr))) {
      return Apply(named, args);
    }
    throw LispError("no function definition: " + function->text);
  }
  if (function && function->Is(Value::Kind::kCons) && IsSymbol(function->car, "LAMBDA")) {
    return Apply(Eval(function), args);
  }
  throw LispError("bad function: " + Print(function));
}

ValuePtr Interpreter::CallUser(const ValuePtr& function, const std::vector<ValuePtr>& args) {
  std::vector<std::string> params, locals;
  bool in_locals = false;
  for (const ValuePtr& p : ToVector(function->car)) {
    std::string name = SymbolName(p);
    if (name == "/") {
      in_locals = true;
    } else {
      (in_locals ? locals : params).push_back(name);
    }
  }
  if (args.size() < params.size()) throw LispError("too few arguments");
  if (args.size() > params.size()) throw LispError("too many arguments");
  // Undone in reverse order, on return or error (a name listed twice ends
  // as it started).
  struct Scope {
    std::vector<std::unique_ptr<Binding>> bindings;
    ~Scope() {
      while (!bindings.empty()) bindings.pop_back();
    }
  } scope;
  for (size_t i = 0; i < params.size(); ++i) {
    scope.bindings.push_back(std::make_unique<Binding>(*this, params[i]));
    Set(params[i], args[i]);
  }
  for (const std::string& local : locals) {
    scope.bindings.push_back(std::make_unique<Binding>(*this, local));
    Set(local, nullptr);
  }
  return EvalBody(function->cdr);
}

ValuePtr Interpreter::SpecialForm(const std::string& name, const ValuePtr& args, bool& handled) {
  handled = true;
  std::vector<ValuePtr> a;
  auto list = [&] {
    a = ToVector(args);
    return a;
  };
  if (name == "QUOTE") return Nth(list(), 0);
  if (name == "PROGN") return EvalBody(args);
  if (name == "SETQ") {
    list();
    if (a.size() % 2 != 0) throw LispError("too few arguments");
    ValuePtr value;
    for (size_t i = 0; i < a.size(); i += 2) {
      std::string target = SymbolName(a[i]);
      value = Eval(a[i + 1]);
      Set(target, value);
    }
    return value;
  }
  if (name == "IF") {
    list();
    if (a.size() < 2) throw LispError("too few arguments");
    if (a.size() > 3) throw LispError("too many arguments");
    if (Eval(a[0])) return Eval(a[1]);
    return a.size() == 3 ? Eval(a[2]) : nullptr;
  }
  if (name == "COND") {
    for (const ValuePtr& clause : list()) {
      std::vector<ValuePtr> c = ToVector(clause);
      if (c.empty()) continue;
      if (ValuePtr test = Eval(c[0])) return c.size() == 1 ? test : EvalBody(clause->cdr);
    }
    return nullptr;
  }
  if (name == "WHILE") {
    if (!args) throw LispError("too few arguments");
    ValuePtr last;
    while (Eval(args->car)) {
      Step();
      last = EvalBody(args->cdr);
    }
    return last;
  }
  if (name == "REPEAT") {
    if (!args) throw LispError("too few arguments");
    ValuePtr count = Eval(args->car);
    if (!count || !count->Is(Value::Kind::kInt)) BadArgument("fixnump", count);
    ValuePtr last;
    for (int32_t i = 0; i < count->integer; ++i) {
      Step();
      last = EvalBody(args->cdr);
    }
    return last;
  }
  if (name == "FOREACH") {
    list();
    if (a.size() < 2) throw LispError("too few arguments");
    std::string variable = SymbolName(a[0]);
    std::vector<ValuePtr> items = ToVector(Eval(a[1]));
    Binding scope(*this, variable);
    ValuePtr last;
    for (const ValuePtr& item : items) {
      Set(variable, item);
      last = EvalBody(args->cdr->cdr);
    }
    return last;
  }
  if (name == "LAMBDA") {
    if (!args) throw LispError("too few arguments");
    ToVector(args->car);
    return MakeUsubr("", args->car, args->cdr);
  }
  if (name == "FUNCTION") {
    ValuePtr f = Nth(list(), 0);
    return f && f->Is(Value::Kind::kCons) ? Eval(f) : f;
  }
  if (name == "DEFUN") {
    list();
    if (a.size() < 2) throw LispError("too few arguments");
    std::string function_name = SymbolName(a[0]);
    ToVector(a[1]);
    Set(function_name, MakeUsubr(function_name, a[1], args->cdr->cdr));
    return a[0];
  }
  if (name == "AND") {
    for (const ValuePtr& x : list()) {
      if (!Eval(x)) return nullptr;
    }
    return True();
  }
  if (name == "OR") {
    for (const ValuePtr& x : list()) {
      if (Eval(x)) return True();
    }
    return nullptr;
  }
  handled = false;
  return nullptr;
}

}  // namespace tovik::host::lisp
