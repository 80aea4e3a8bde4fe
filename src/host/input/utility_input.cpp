// The Utility members that ask the user for a value (GetPoint, GetCorner,
// GetDistance, GetInteger, GetReal, GetKeyword, GetString), GetInput and
// InitializeUserInput. Headless, the answers come from the document's
// queue of scripted input; an answer the request cannot take (a refused
// Enter, zero or negative value, a text matching no keyword, the wrong kind
// of answer) is refused as the host refuses it at its prompt: a message on
// the command line, and the next answer is taken. An empty queue is the
// user's Escape.
#include <cctype>
#include <cmath>
#include <optional>

#include "frame/conversions.h"
#include "frame/runtime_text.h"
#include "host/core/document.h"
#include "host/core/host_error.h"
#include "host/input/utility.h"
#include "host/surface/args.h"

namespace tovik::host {
namespace {

using Kind = UserInput::Kind;

// What one Get* request accepts and which control bits apply to it.
struct Request {
  bool point = false;     // a picked point answers
  bool number = false;    // a typed number answers
  bool integer = false;   // ...and must be a 16-bit integer
  bool signed_bits = false;  // no-zero (2) and no-negative (4) apply
};

// The keyword a typed text stands for under the keyword list, or "".
std::string MatchKeyword(const std::vector<InputKeyword>& list, std::string_view typed) {
  std::string_view text = typed;
  bool global = !text.empty() && text[0] == '_';
  if (global) text.remove_prefix(1);
  if (text.empty()) return {};
  for (const InputKeyword& k : list) {
    const std::string& against = global ? k.global : k.local;
    if (CaseInsensitiveEqual(text, against)) return k.global;
    // An abbreviation: at least the required part, and a prefix of the
    // keyword (or, when the required part is not at the start, exactly it).
    if (k.shortcut.empty() || global) continue;
    if (k.shortcut_at_start) {
      if (text.size() >= k.shortcut.size() && text.size() <= against.size() &&
          CaseInsensitiveEqual(text, std::string_view(against).substr(0, text.size()))) {
        return k.global;
      }
    } else if (CaseInsensitiveEqual(text, k.shortcut)) {
      return k.global;
    }
  }
  return {};
}

[[noreturn]] void RaiseKeyword(Document& doc, std::string keyword) {
  doc.last_keyword() = std::move(keyword);
  throw HostError(HostFailure::kUserInputIsKeyword);
}

// The next answer the request takes. Keywords and Enter end the request
// with "User input is a keyword" (GetInput then returns the keyword, or ""
// for Enter); Escape with the cancel error.
UserInput Answer(Utility& u, const Request& request) {
  Document& doc = *u.document();
  const InputControl control = u.TakeInputControl();
  for (;;) {
    UserInput input = doc.NextInput();
    switch (input.kind) {
      case Kind::kCancel: throw HostError(HostFailure::kCancelled);
      case Kind::kEnter:
        if (control.bits & kInputNoNull) {
          doc.WriteCommandLine("\nRequires a value.\n");
          continue;
        }
        RaiseKeyword(doc, "");
      case Kind::kKeyword: {
        // With no keyword list in effect a scripted text stands for a
        // keyword of the caller's own.
        if (control.keywords.empty()) RaiseKeyword(doc, input.keyword);
        std::string keyword = MatchKeyword(control.keywords, input.keyword);
        if (!keyword.empty()) RaiseKeyword(doc, keyword);
        if (control.bits & kInputArbitrary) RaiseKeyword(doc, input.keyword);
        doc.WriteCommandLine("\nInvalid option keyword.\n");
        continue;
      }
      case Kind::kPoint:
        if (request.point) return input;
        break;
      case Kind::kDistance: {
        if (!request.number) break;
        const double v = input.distance;
        if (request.integer && (v != std::floor(v) || v < -32768 || v > 32767)) {
          doc.WriteCommandLine("\nRequires an integer between -32768 and 32767.\n");
          continue;
        }
        if (request.signed_bits && (control.bits & kInputNoZero) && v == 0) {
          doc.WriteCommandLine("\nValue must be nonzero.\n");
          continue;
        }
        if (request.signed_bits && (control.bits & kInputNoNegative) && v < 0) {
          doc.WriteCommandLine("\nValue must be positive.\n");
          continue;
        }
        return input;
      }
      case Kind::kPick: break;
    }
    doc.WriteCommandLine(request.point ? "\nInvalid point.\n" : "\nRequires numeric value.\n");
  }
}

void WritePrompt(Document& doc, CallArgs& a, size_t index) {
  if (a.Has(index) && a[index].IsString()) doc.WriteCommandLine(a[index].RawString());
}

Variant GetPoint(Utility& s, CallArgs& a) {
  if (a.Has(0)) PointArg(a[0], {"Point", "GetPoint"});
  WritePrompt(*s.document(), a, 1);
  return PointValue(Answer(s, {.point = true}).point);
}

Variant GetCorner(Utility& s, CallArgs& a) {
  PointArg(a[0], {"Point", "GetCorner"});
  WritePrompt(*s.document(), a, 1);
  return PointValue(Answer(s, {.point = true}).point);
}

// A typed distance, or the distance from the base point (given, or picked
// first) to a picked point; bit 64 measures in the XY plane only.
Variant GetDistance(Utility& s, CallArgs& a) {
  std::optional<geometry::Vec3> base;
  if (a.Has(0)) base = PointArg(a[0], {"Point", "GetDistance"});
  WritePrompt(*s.document(), a, 1);
  // Every answer of this request is judged under the same control.
  const InputControl control = s.input_control();
  const Request request{.point = true, .number = true, .signed_bits = true};
  UserInput first = Answer(s, request);
  if (first.kind == Kind::kDistance) return Variant(first.distance);
  if (!base) {
    // The first point was the base; a second one answers.
    base = first.point;
    s.SetInputControl(control);
    first = Answer(s, {.point = true});
  }
  geometry::Vec3 d = first.point - *base;
  if (control.bits & kInputFlat) d.z = 0;
  const double distance = geometry::Length(d);
  if (distance == 0 && (control.bits & kInputNoZero)) {
    s.document()->WriteCommandLine("\nValue must be nonzero.\n");
    s.SetInputControl(control);
    return GetDistance(s, a);
  }
  return Variant(distance);
}

Variant GetInteger(Utility& s, CallArgs& a) {
  WritePrompt(*s.document(), a, 0);
  UserInput input = Answer(s, {.number = true, .integer = true, .signed_bits = true});
  return Variant(static_cast<int32_t>(input.distance));
}

Variant GetReal(Utility& s, CallArgs& a) {
  WritePrompt(*s.document(), a, 0);
  return Variant(Answer(s, {.number = true, .signed_bits = true}).distance);
}

// GetKeyword returns the keyword instead of raising: the full keyword for
// an abbreviation, "" for Enter.
Variant GetKeyword(Utility& s, CallArgs& a) {
  WritePrompt(*s.document(), a, 0);
  try {
    Answer(s, {});
  } catch (const AutomationError& e) {
    if (e.Number() != kScodeUserInputKeyword) throw;
    return Variant(s.document()->last_keyword());
  }
  return Variant(std::string());  // not reached: every answer is refused or raises
}

// GetString(HasSpaces [, Prompt]): the typed text; without HasSpaces a
// space ends it, as at the host's prompt. Enter gives "". Not subject to
// InitializeUserInput.
Variant GetString(Utility& s, CallArgs& a) {
  const bool spaces = CBool(a[0]);
  Document& doc = *s.document();
  WritePrompt(doc, a, 1);
  for (;;) {
    UserInput input = doc.NextInput();
    if (input.kind == Kind::kCancel) throw HostError(HostFailure::kCancelled);
    if (input.kind == Kind::kEnter) return Variant(std::string());
    if (input.kind == Kind::kKeyword) {
      std::string text = input.keyword;
      if (!spaces) text = text.substr(0, text.find(' '));
      return Variant(text);
    }
    doc.WriteCommandLine("\nRequires a string.\n");
  }
}

// The keyword list of InitializeUserInput: words separated by spaces, each
// with its required part in capitals ("LType": LT) or given after a comma
// ("LTYPE,LT"); after a lone "_" come the global names, matched by position.
std::vector<InputKeyword> ParseKeywords(std::string_view text) {
  std::vector<std::string> words, globals;
  bool in_globals = false;
  size_t i = 0;
  while (i < text.size()) {
    while (i < text.size() && text[i] == ' ') ++i;
    size_t end = text.find(' ', i);
    if (end == std::string_view::npos) end = text.size();
    if (end > i) {
      std::string word(text.substr(i, end - i));
      if (word[0] == '_') {
        in_globals = true;
        word.erase(0, 1);
      }
      if (!word.empty()) (in_globals ? globals : words).push_back(std::move(word));
    }
    i = end;
  }
  std::vector<InputKeyword> list;
  for (size_t k = 0; k < words.size(); ++k) {
    InputKeyword kw;
    std::string word = words[k];
    size_t comma = word.find(',');
    if (comma != std::string::npos) {
      kw.shortcut = word.substr(comma + 1);
      word.erase(comma);
      kw.shortcut_at_start = true;
    } else {
      size_t first = word.find_first_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ");
      size_t lower = word.find_first_of("abcdefghijklmnopqrstuvwxyz");
      // All capitals or no capitals: the whole word is required.
      if (first != std::string::npos && lower != std::string::npos) {
        size_t last = first;
        while (last + 1 < word.size() && std::isupper(static_cast<unsigned char>(word[last + 1]))) {
          ++last;
        }
        kw.shortcut = word.substr(first, last - first + 1);
        kw.shortcut_at_start = first == 0;
      }
    }
    kw.local = word;
    kw.global = k < globals.size() ? globals[k] : word;
    list.push_back(std::move(kw));
  }
  return list;
}

// InitializeUserInput(Bits [, Keywords]): Keywords is a text of words
// separated by spaces, or an array of such texts.
Variant InitializeUserInput(Utility& s, CallArgs& a) {
  constexpr std::string_view kMember = "InitializeUserInput";
  const int32_t bits = LongArg(a[0], {"Bits", kMember});
  if (bits < 0 || bits > 255) throw InvalidArgument("Bits", kMember);
  std::string keywords;
  if (a.Has(1)) {
    if (a[1].IsArray()) {
      for (const Variant& item : a[1].Array().Items()) {
        if (!item.IsString()) throw InvalidArgument("KeyWordList", kMember);
        keywords += item.RawString() + " ";
      }
    } else if (a[1].IsString()) {
      keywords = a[1].RawString();
    } else {
      throw InvalidArgument("KeyWordList", kMember);
    }
  }
  s.SetInputControl({bits, ParseKeywords(keywords)});
  return Variant();
}

}  // namespace

InputControl Utility::TakeInputControl() {
  InputControl taken = std::move(control_);
  control_ = {};
  return taken;
}

void AddUtilityInputMembers(MemberTable<Utility>& t) {
  t.Method("InitializeUserInput", InitializeUserInput, 1, 2);
  t.Method("GetPoint", GetPoint, 0, 2);
  t.Method("GetCorner", GetCorner, 1, 2);
  t.Method("GetDistance", GetDistance, 0, 2);
  t.Method("GetInteger", GetInteger, 0, 1);
  t.Method("GetReal", GetReal, 0, 1);
  t.Method("GetKeyword", GetKeyword, 0, 1);
  t.Method("GetString", GetString, 1, 2);
  t.Method("GetInput", [](Utility& s, CallArgs&) {
    return Variant(s.document()->last_keyword());
  });
}

}  // namespace tovik::host
