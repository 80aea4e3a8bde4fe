// TextToTable: reading the text form of a table back.
//
// The reading is defined by a character scanner that keeps a brace depth and
// a pending token, flushes the token at a tab on depth 1 or at the brace that
// closes the outermost table, and parses every flushed token that is not a
// plain value by running the same scanner over the token's own text. Run that
// way, a character nested d deep is scanned d times and the call stack grows
// with the nesting. This file gets the same result in one pass:
//
//  - Every token of every scanner is a contiguous stretch of the input (once
//    a scanner reaches depth 1 it never drops below it), so tokens are kept
//    as offsets, never copied.
//  - The scanner of a token is started at the token's first "{" and runs
//    alongside its parent, one level deeper in depth; while a child runs, the
//    parent's depth is exactly the child's plus one, so only the deepest
//    level's depth is stored.
//  - When a child's outermost table closes, its result is final: whatever it
//    collects afterwards can never be flushed, because its parent flushes on
//    the same character first. The child is retired and its result waits as
//    the table value of the parent's token.
//  - Whether a token is a table is known only when it is flushed, so a
//    child's result is built speculatively into an arena of nodes, with
//    strings as offsets and an invalid quoted token as a deferred error; only
//    the nodes reachable from the outermost result become arrays at the end.
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "frame/automation_error.h"
#include "frame/conversions.h"
#include "frame/runtime_number.h"
#include "xdata/table_format.h"

namespace tovik {
namespace {

// One element of a speculative result.
struct Element {
  enum class Kind { kValue, kText, kTable, kBadQuote };
  Kind kind = Kind::kValue;
  Variant value;      // kValue
  size_t start = 0;   // kText: offsets into the input; kTable: node index
  size_t length = 0;  // kText
};

using Node = std::vector<Element>;

// One scanner: the node receiving its elements, where its pending token
// starts, and the state of the scanner of that token.
struct Level {
  enum class Child { kNone, kRunning, kDone };
  size_t node;
  size_t token_start;
  Child child = Child::kNone;
  size_t child_node = 0;  // when kDone
};

class Reader {
 public:
  explicit Reader(std::string_view text) : text_(text) {
    nodes_.emplace_back();
    levels_.push_back(Level{0, 0});
  }

  Variant Read() {
    for (size_t p = 0; p < text_.size(); ++p) Step(text_[p], p);
    // The outermost scanner's unflushed token and any running child are
    // dropped: they were never flushed.
    return Materialize(0);
  }

 private:
  void Step(char c, size_t p) {
    Level& level = levels_.back();
    if (c == '}') {
      if (--depth_ != 0) return;  // collected, or skipped below depth 1
      depth_ = 1;
      Flush(level, p);
      if (levels_.size() > 1) {
        size_t done = level.node;
        levels_.pop_back();
        levels_.back().child = Level::Child::kDone;
        levels_.back().child_node = done;
        // The parent was one deeper and has just closed a brace too.
        depth_ = 1;
      }
    } else if (c == '\t') {
      if (depth_ == 1) Flush(level, p);
    } else if (c == '{') {
      if (depth_ >= 1 && level.child == Level::Child::kNone) {
        // The token's first "{": its scanner starts here, at depth 1, and
        // collects from the next character.
        level.child = Level::Child::kRunning;
        nodes_.emplace_back();
        levels_.push_back(Level{nodes_.size() - 1, p + 1});
        depth_ = 1;
        return;
      }
      // The outermost scanner starts collecting after the "{" that first
      // lifts it to depth 1.
      if (depth_ == 0) level.token_start = p + 1;
      ++depth_;
    }
  }

  // Converts the level's token [token_start, p) and starts the next one.
  void Flush(Level& level, size_t p) {
    std::string_view token = text_.substr(level.token_start, p - level.token_start);
    Element element;
    if (Convert(token, level, element)) nodes_[level.node].push_back(std::move(element));
    level.token_start = p + 1;
    level.child = Level::Child::kNone;
  }

  // Sets `out` to the element the token stands for; false when it adds
  // none (an empty token).
  bool Convert(std::string_view token, const Level& level, Element& out) {
    using Kind = Element::Kind;
    out.kind = Kind::kValue;
    if (token == "TRUE") {
      out.value = Variant(true);
    } else if (token == "FALSE") {
      out.value = Variant(false);
    } else if (token == "EMPTY") {
      out.value = Variant();
    } else if (!token.empty() && token.front() == '"' && token.back() == '"') {
      out.kind = token.size() == 1 ? Kind::kBadQuote : Kind::kText;
      out.start = level.token_start + 1;
      out.length = token.size() - 2;
    } else if (level.child == Level::Child::kNone && ParseNumeric(token).has_value()) {
      // A token holding a brace has a child and is never numeric.
      out.value = Variant(Val(token).value_or(0.0));
    } else if (token.empty()) {
      return false;
    } else if (level.child == Level::Child::kDone) {
      out.kind = Kind::kTable;
      out.start = level.child_node;
    } else {
      // No "{" in the token: its own scan finds nothing.
      nodes_.emplace_back();
      out.kind = Kind::kTable;
      out.start = nodes_.size() - 1;
    }
    return true;
  }

  // Builds the arrays reachable from node `root`, children first.
  Variant Materialize(size_t root) {
    struct Pending {
      size_t node;
      size_t next;
      std::vector<Variant> items;
    };
    std::vector<Pending> stack;
    stack.push_back(Pending{root, 0, {}});
    while (true) {
      size_t top = stack.size() - 1;
      const Node& node = nodes_[stack[top].node];
      if (stack[top].next == node.size()) {
        Variant array(SafeArray::OfVariants(std::move(stack[top].items)));
        stack.pop_back();
        if (stack.empty()) return array;
        stack.back().items.push_back(std::move(array));
        continue;
      }
      const Element& e = node[stack[top].next++];
      switch (e.kind) {
        case Element::Kind::kValue:
          stack[top].items.push_back(e.value);
          break;
        case Element::Kind::kText:
          stack[top].items.emplace_back(std::string(text_.substr(e.start, e.length)));
          break;
        case Element::Kind::kTable:
          stack.push_back(Pending{e.start, 0, {}});
          break;
        case Element::Kind::kBadQuote:
          // Stripping the quotes of a lone '"' asks for -1 characters.
          throw errors::InvalidCall();
      }
    }
  }

  std::string_view text_;
  std::vector<Node> nodes_;
  std::vector<Level> levels_;
  // Depth of the deepest running scanner; each ancestor is one deeper.
  int64_t depth_ = 0;
};

}  // namespace

Variant TextToTable(std::string_view text) { return Reader(text).Read(); }

}  // namespace tovik
