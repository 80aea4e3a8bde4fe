// Values of the headless host's lisp: nil, integers (32-bit, wrapping as
// the host's lisp does), reals, strings, symbols (upper-cased), cons cells,
// entity names, selection sets and functions. Values are immutable once
// built and shared through reference counts; nil is the null pointer.
#ifndef TOVIK_HOST_LISP_LISP_VALUE_H_
#define TOVIK_HOST_LISP_LISP_VALUE_H_

#include <cstdint>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace tovik::host {
class Document;
class Entity;
}  // namespace tovik::host

namespace tovik::host::lisp {

struct Value;
using ValuePtr = std::shared_ptr<const Value>;
class Interpreter;

// A namespace: symbol name (upper-cased) to value.
using Globals = std::unordered_map<std::string, ValuePtr>;

// A built-in function: receives its evaluated arguments.
using Builtin = ValuePtr (*)(Interpreter& lisp, const std::vector<ValuePtr>& args);

// A selection set: entities in order, each once.
struct PickSet {
  std::vector<std::shared_ptr<Entity>> members;
  int number = 0;  // shown as <Selection set: n>
};

struct Value {
  enum class Kind : uint8_t { kInt, kReal, kString, kSymbol, kCons, kEname, kPickSet, kSubr, kUsubr };
  Kind kind;
  int32_t integer = 0;
  double real = 0;
  std::string text;  // string contents, symbol name, function name
  ValuePtr car, cdr;  // kCons; kUsubr: car = parameter list, cdr = body
  uint64_t handle = 0;  // kEname: 0 with text "ACAD_GROUP" is the group dictionary
  std::shared_ptr<PickSet> pickset;  // kPickSet (shared: ssadd changes it)
  Builtin builtin = nullptr;  // kSubr

  bool Is(Kind k) const { return kind == k; }

  Value() = default;
  Value(const Value&) = delete;
  Value& operator=(const Value&) = delete;
  // Unlinks long lists and deep trees without recursing once per cell.
  ~Value();
};

// The error the host's lisp prints as "; error: <message>".
class LispError : public std::runtime_error {
 public:
  explicit LispError(const std::string& message) : std::runtime_error(message) {}
};

// ------------------------------------------------------------ constructors
ValuePtr Int(int32_t value);
ValuePtr Real(double value);
ValuePtr Str(std::string text);
// The symbol `name`, upper-cased. Symbol("T") is truth.
ValuePtr Symbol(std::string_view name);
ValuePtr Cons(ValuePtr car, ValuePtr cdr);
ValuePtr Ename(uint64_t handle, std::string group_dictionary = {});
ValuePtr True();
// A proper list of the values.
ValuePtr ListOf(const std::vector<ValuePtr>& items);

// ---------------------------------------------------------------- readers
bool IsNumber(const ValuePtr& v);
bool IsSymbol(const ValuePtr& v, std::string_view upper_name);
// The elements of a proper list; "bad list" for a dotted or non-list.
std::vector<ValuePtr> ToVector(const ValuePtr& list);
// A number as a double; "bad argument type: numberp: <v>" otherwise.
double NumberOf(const ValuePtr& v);

// Reads every expression of `source`, in order. Malformed input raises
// "malformed list on input", "extra right paren on input" or "malformed
// string on input"; nesting deeper than 1,000 lists is malformed too.
std::vector<ValuePtr> ReadAll(std::string_view source);
// Reads the expressions one at a time, calling `each` on each before the
// next is read (so a later malformed expression does not stop the earlier
// ones from running).
void ReadEach(std::string_view source, const std::function<void(const ValuePtr&)>& each);

// The printed form (prin1: strings quoted and escaped; princ: as they are).
std::string Print(const ValuePtr& v, bool quote_strings = true);
// "bad argument type: <what>: <printed value>".
[[noreturn]] void BadArgument(std::string_view what, const ValuePtr& v);

}  // namespace tovik::host::lisp

#endif  // TOVIK_HOST_LISP_LISP_VALUE_H_
