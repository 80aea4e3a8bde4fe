// The lisp as the command line runs it: source text in, what the command
// line shows out (each result printed on its own line, or the host's error
// text).
#include <gtest/gtest.h>

#include "host/core/application.h"
#include "host/lisp/interpreter.h"
#include "tests/support/host_fixture.h"

namespace tovik::host::lisp {
namespace {

class Lisp : public HostTest {
 protected:
  // What typing `source` at the command line writes there.
  std::string Run(std::string_view source) {
    size_t before = document().command_log().size();
    lisp.Evaluate(document(), source);
    return document().command_log().substr(before + 0);
  }
  Interpreter lisp;
};

TEST_F(Lisp, ExpressionsPrintAsTheHostPrintsThem) {
  const struct {
    const char* source;
    const char* shown;
  } cases[] = {
      {"(+ 1 2)", "3\n"},
      {"(+ 2147483647 1)", "-2147483648\n"},  // integers wrap
      {"(/ 7 2)", "3\n"},
      {"(/ 7 2.0)", "3.5\n"},
      {"(* 1.0 3)", "3.0\n"},
      {"(/ 1.0 3)", "0.333333\n"},
      {"3000000000", "3.0e+09\n"},  // too big for an integer: read as a real
      {"(- 5)", "-5\n"},
      {"(rem 7 3) (fix -2.7) (float 2)", "1\n-2\n2.0\n"},
      {"(max 1 2.5) (min 3 1)", "2.5\n1\n"},
      {"(= 1 1.0) (< 1 2 3) (> 1 2) (/= \"a\" \"b\")", "T\nT\nnil\nT\n"},
      {"'(1 \"two\" 3.0 sym (nested . pair))", "(1 \"two\" 3.0 SYM (NESTED . PAIR))\n"},
      {"(list 'a ''b)", "(A 'B)\n"},
      {"\"tab\\there \\\"q\\\" \\101\"", "\"tab\\there \\\"q\\\" A\"\n"},
      {"(strcat \"ab\" \"cd\") (strlen \"abc\" \"de\") (substr \"abcdef\" 2 3)", "\"abcd\"\n5\n\"bcd\"\n"},
      {"(strcase \"Ab\") (strcase \"Ab\" T) (itoa 42) (atoi \"12x\") (atof \"2.5\")",
       "\"AB\"\n\"ab\"\n\"42\"\n12\n2.5\n"},
      {"(rtos 3.14159) (rtos 2 2 1)", "\"3.1416\"\n\"2.0\"\n"},
      {"(vl-string-search \"cd\" \"abcd\") (vl-string-subst \"X\" \"b\" \"abcb\") (vl-string-trim \" \" \"  x \")",
       "2\n\"aXcb\"\n\"x\"\n"},
      {"(car '(1 2)) (cdr '(1 2)) (cadr '(1 2 3)) (caddr '(1 2 3)) (car nil)", "1\n(2)\n2\n3\nnil\n"},
      {"(cons 1 2) (cons 1 '(2)) (append '(1) '(2 3)) (length '(1 2 3)) (nth 1 '(a b))",
       "(1 . 2)\n(1 2)\n(1 2 3)\n3\nB\n"},
      {"(assoc 2 '((1 . a) (2 . b))) (member 2 '(1 2 3)) (reverse '(1 2 3)) (last '(1 2))",
       "(2 . B)\n(2 3)\n(3 2 1)\n2\n"},
      {"(mapcar '1+ '(1 2)) (mapcar '(lambda (x y) (* x y)) '(1 2) '(3 4)) (apply '+ '(1 2 3))",
       "(2 3)\n(3 8)\n6\n"},
      {"(setq a 1 b (+ a 1)) (if (> b a) \"yes\" \"no\") (if nil 1)", "2\n\"yes\"\nnil\n"},
      {"(cond ((= 1 2) 'no) ((+ 1 1)) (T 'late))", "2\n"},
      {"(setq i 0) (while (< i 5) (setq i (1+ i))) (repeat 3 (setq i (* i 2)))", "0\n5\n40\n"},
      {"(setq s 0) (foreach x '(1 2 3) (setq s (+ s x))) x", "0\n6\nnil\n"},
      {"(and 1 nil) (or nil 2) (not nil) (null '(1))", "nil\nT\nT\nnil\n"},
      {"(type 1) (type 1.0) (type \"s\") (type 'a) (type '(1)) (type car)", "INT\nREAL\nSTR\nSYM\nLIST\nSUBR\n"},
      // Arguments and locals are bound dynamically and restored afterwards.
      {"(setq v 'outer) (defun f (v / w) (setq w v) (g)) (defun g () v) (f 'inner) v",
       "OUTER\nF\nG\nINNER\nOUTER\n"},
      {"(defun fact (n) (if (< n 2) 1 (* n (fact (1- n))))) (fact 10)", "FACT\n3628800\n"},
      {"(princ \"hi\") (prin1 \"hi\") (princ)", "hi\"hi\"\n\"hi\"\"hi\"\n"},
      {"; a comment\n;| a block\ncomment |; (+ 1 1)", "2\n"},
      {"(equal '(1 (2)) '(1 (2))) (equal 1.0 1.05 0.1) (eq 'a 'a)", "T\nT\nT\n"},
      {"(polar '(0 0) 0 2) (angle '(0 0) '(0 1)) (distance '(0 0) '(3 4))", "(2.0 0.0 0.0)\n1.5708\n5.0\n"},
  };
  for (const auto& c : cases) EXPECT_EQ(Run(c.source), c.shown) << c.source;
}

TEST_F(Lisp, ErrorsPrintTheHostsTextAndNeverEscape) {
  lisp.set_step_limit(100'000);
  const struct {
    const char* source;
    const char* shown;
  } cases[] = {
      {"(foo 1)", "; error: no function definition: FOO\n"},
      {"(+ 1 \"a\")", "; error: bad argument type: numberp: \"a\"\n"},
      {"(strcat 1)", "; error: bad argument type: stringp 1\n"},
      {"(car 5)", "; error: bad argument type: consp 5\n"},
      {"(/ 1 0)", "; error: divide by zero\n"},
      {"(defun two (a b) a) (two 1)", "TWO\n; error: too few arguments\n"},
      {"(itoa 1 2)", "; error: too many arguments\n"},
      {"(+ 1 2", "; error: malformed list on input\n"},
      {"(+ 1 2))", "3\n; error: extra right paren on input\n"},
      {"\"open", "; error: malformed string on input\n"},
      {"(setvar \"USERS1\" 5)", "; error: AutoCAD variable setting rejected: \"USERS1\" 5\n"},
      {"(defun deep (n) (deep (1+ n))) (deep 0)", "DEEP\n; error: internal stack limit reached\n"},
      {"(while T 1)", "; error: evaluation step limit reached\n"},
      {"(load \"/no/such/file.lsp\")", "; error: LOAD failed: \"/no/such/file.lsp\"\n"},
      {"(load \"/no/such/file.lsp\" 'fallback)", "FALLBACK\n"},
      {"(setq 1 2)", "; error: bad argument type: symbolp 1\n"},
  };
  for (const auto& c : cases) EXPECT_EQ(Run(c.source), c.shown) << c.source;
  // Structures built deeper than anything read print and compare safely.
  EXPECT_EQ(Run("(progn (setq x nil) (repeat 3000 (setq x (list x))) (princ x) (equal x x))"),
            std::string(1000, '(') + "..." + std::string(1000, ')') + "T\n");
}

TEST_F(Lisp, TheDrawingIsReachedThroughItsVariablesAndEntities) {
  ObjectRef first = Line(0, 0, 1, 0);
  ObjectRef last = CallMethod(ms, "AddCircle", {Pt(5, 5), Variant(2.0)}).Object();
  std::string h1 = CStr(GetProperty(first, "Handle")), h2 = CStr(GetProperty(last, "Handle"));
  EXPECT_EQ(Run("(setvar \"USERS1\" \"x\") (getvar \"users1\") (getvar \"NOSUCHVAR\")"), "\"x\"\n\"x\"\nnil\n");
  EXPECT_EQ(Run("(cdr (assoc 5 (entget (entlast))))"), "\"" + h2 + "\"\n");
  EXPECT_EQ(Run("(cdr (assoc 5 (entget (entnext (handent \"" + h1 + "\")))))"), "\"" + h2 + "\"\n");
  EXPECT_EQ(Run("(entnext (entlast)) (handent \"FFFFFF\")"), "nil\nnil\n");
  EXPECT_EQ(Run("(cdr (assoc 40 (entget (entlast)))) (cdr (assoc 10 (entget (handent \"" + h1 + "\"))))"),
            "2.0\n(0.0 0.0 0.0)\n");
  // Selection sets: built, counted, handed to the pick-first set.
  EXPECT_EQ(Run("(setq ss (ssadd (entlast))) (sslength (ssadd (handent \"" + h1 + "\") ss))"),
            "<Selection set: 1>\n2\n");
  Run("(sssetfirst nil ss)");
  EXPECT_EQ(MemberHandles(GetProperty(doc, "PickfirstSelectionSet").Object()), HandlesOf({first, last}));
  EXPECT_EQ(Run("(sslength (ssget \"_I\")) (sssetfirst nil nil) (ssget \"_I\")"), "2\n(nil nil)\nnil\n");
  // Scripted input answers the interactive functions.
  document().QueueInput(UserInput::Number(3));
  document().QueueInput(UserInput::Point({1, 2, 3}));
  document().QueueInput(UserInput::Cancel());
  EXPECT_EQ(Run("(acad_colordlg 1) (grread T) (getpoint)"),
            "3\n(5 (1.0 2.0 3.0))\n; error: Function cancelled\n");
}

}  // namespace
}  // namespace tovik::host::lisp
