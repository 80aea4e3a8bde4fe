// The command line of a headless document: SendCommand text is split into
// tokens at spaces and line breaks (each one an Enter), parenthesised
// expressions go to the lisp evaluator, and the UNDO and U commands work
// on the undo journal. Other commands are logged and otherwise ignored, as
// the host raises no error for an unknown command.
#include <cctype>

#include "frame/runtime_text.h"
#include "host/core/document.h"

namespace tovik::host {
namespace {

// Length of the balanced expression at the start of `text` (which starts
// with '('), or 0 when it is not complete yet. Strings may hold parentheses.
size_t ExpressionLength(std::string_view text) {
  int depth = 0;
  bool in_string = false;
  for (size_t i = 0; i < text.size(); ++i) {
    char c = text[i];
    if (in_string) {
      if (c == '\\') ++i;
      else if (c == '"') in_string = false;
      continue;
    }
    if (c == '"') in_string = true;
    else if (c == '(') ++depth;
    else if (c == ')' && --depth == 0) return i + 1;
  }
  return 0;
}

bool IsEnter(char c) { return c == ' ' || c == '\r' || c == '\n'; }

std::string CommandName(std::string_view token) {
  std::string name = UCase(token);
  while (!name.empty() && (name[0] == '_' || name[0] == '.' || name[0] == '-')) {
    name.erase(0, 1);
  }
  return name;
}

bool IsCount(std::string_view token) {
  if (token.empty()) return false;
  for (char c : token) {
    if (!std::isdigit(static_cast<unsigned char>(c))) return false;
  }
  return true;
}

}  // namespace

void Document::SendCommand(std::string_view text) {
  pending_input_ += text;
  command_log_ += text;
  while (!pending_input_.empty()) {
    std::string_view rest = pending_input_;
    if (rest[0] == '(') {
      size_t length = ExpressionLength(rest);
      if (length == 0) return;  // wait for the rest of the expression
      std::string expression(rest.substr(0, length));
      pending_input_.erase(0, length);
      if (!pending_input_.empty() && IsEnter(pending_input_[0])) pending_input_.erase(0, 1);
      if (lisp_) lisp_->Evaluate(*this, expression);
      continue;
    }
    size_t end = 0;
    while (end < rest.size() && !IsEnter(rest[end])) ++end;
    if (end == rest.size()) return;  // a token is complete only with its Enter
    std::string token(rest.substr(0, end));
    pending_input_.erase(0, end + 1);
    if (pending_command_ == "UNDO") {
      pending_command_.clear();
      std::string option = CommandName(token);
      if (token.empty()) {
        Undo(1);
      } else if (IsCount(token)) {
        Undo(std::stoi(token));
      } else if (option == "BEGIN" || option == "BE" || option == "GROUP" || option == "G") {
        StartUndoMark();
      } else if (option == "END" || option == "E") {
        EndUndoMark();
      }
      continue;
    }
    std::string command = CommandName(token);
    if (command == "UNDO") {
      pending_command_ = "UNDO";
    } else if (command == "U") {
      Undo(1);
    }
  }
}

}  // namespace tovik::host
