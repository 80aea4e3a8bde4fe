// The headless host's lisp: a reader and evaluator of the host program's
// lisp dialect, run by SendCommand for text that starts with "(" and by
// (load "file"). It keeps one namespace per drawing, binds function
// arguments and locals dynamically (restored when the function returns),
// and reaches the drawing through the host's own objects: system
// variables, entities, selection sets, the scripted input queue.
//
// Errors never escape as C++ exceptions: a failing expression typed at the
// command line prints "; error: <message>" there, as the host's lisp does.
// A runaway loop or recursion is stopped by a step limit and a depth limit
// with an error. docs/lisp.md lists every function it knows.
#ifndef TOVIK_HOST_LISP_INTERPRETER_H_
#define TOVIK_HOST_LISP_INTERPRETER_H_

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/core/document.h"
#include "host/lisp/lisp_value.h"

namespace tovik::host::lisp {

// The name under which the library's own lisp side (lisp/tovik_com.lsp,
// built into the host) is loaded at start; other names are files.
inline constexpr std::string_view kBuiltinLispSide = "<tovik_com.lsp>";

class Interpreter final : public LispEvaluator {
 public:
  // Nested calls deeper than this raise "internal stack limit reached".
  static constexpr int kMaxDepth = 1000;
  // Evaluation steps allowed for one command-line expression or load.
  static constexpr uint64_t kDefaultStepLimit = 20'000'000;

  Interpreter();

  // LispEvaluator: evaluates the expressions of `expression` typed at the
  // command line of `document`, printing each result (or the error) there.
  void Evaluate(Document& document, std::string_view expression) override;
  // Loads lisp source (a file's text) into `document`'s namespace: every
  // expression is evaluated in order. An error prints as Evaluate prints
  // it and stops the load; returns false then.
  bool LoadSource(Document& document, std::string_view source);
  // Loads the startup files: kBuiltinLispSide or file paths.
  void LoadStartup(Document& document, const std::vector<std::string>& files);

  // ---- for the built-in functions
  Document& document() { return *document_; }
  ValuePtr Eval(const ValuePtr& expr);
  ValuePtr Apply(const ValuePtr& function, const std::vector<ValuePtr>& args);
  // A symbol's global value (nil when unbound).
  ValuePtr Get(const std::string& name) const;
  void Set(const std::string& name, ValuePtr value);
  // Writes to the command line.
  void Write(std::string_view text);
  // Loads a file by path (load): its last value; a missing file raises
  // LispError "LOAD failed: <path>".
  ValuePtr LoadFile(const std::string& path);
  // Numbers selection sets as the host shows them.
  int NextPickSetNumber() { return ++picksets_made_; }
  void set_step_limit(uint64_t steps) { step_limit_ = steps; }

 private:
  // Runs `body` with this document current and the limits reset; an error
  // is printed and false returned.
  template <class Body>
  bool Guarded(Document& document, Body&& body);
  // Counts one evaluation step; past the limit raises "evaluation step
  // limit reached".
  void Step() {
    if (++steps_ > step_limit_) throw LispError("evaluation step limit reached");
  }
  ValuePtr EvalList(const ValuePtr& expr);
  ValuePtr EvalBody(ValuePtr body);
  ValuePtr SpecialForm(const std::string& name, const ValuePtr& args, bool& handled);
  ValuePtr CallUser(const ValuePtr& function, const std::vector<ValuePtr>& args);

  Globals globals_;
  Document* document_ = nullptr;
  int depth_ = 0;
  uint64_t steps_ = 0;
  uint64_t step_limit_ = kDefaultStepLimit;
  int picksets_made_ = 0;
};

// Registers the built-in functions (builtins_*.cpp).
void AddCoreFunctions(Globals& globals);
void AddDrawingFunctions(Globals& globals);

// The text of the library's lisp side, built in.
std::string_view BuiltinLispSide();

}  // namespace tovik::host::lisp

#endif  // TOVIK_HOST_LISP_INTERPRETER_H_
