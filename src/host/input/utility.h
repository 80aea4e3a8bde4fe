// IAcadUtility, headless: interactive requests answer from the document's
// queue of scripted input (Document::QueueInput); with nothing queued a
// request fails as the user's Escape does. Prompt writes to the command
// line log.
#ifndef TOVIK_HOST_INPUT_UTILITY_H_
#define TOVIK_HOST_INPUT_UTILITY_H_

#include <cstdint>
#include <string>
#include <vector>

#include "frame/member_table.h"

namespace tovik::host {

class Document;

// InitializeUserInput bits the headless host applies (8 limits and 32
// dashed rubber bands concern the display only).
inline constexpr int32_t kInputNoNull = 1;
inline constexpr int32_t kInputNoZero = 2;
inline constexpr int32_t kInputNoNegative = 4;
inline constexpr int32_t kInputFlat = 64;        // GetDistance ignores Z
inline constexpr int32_t kInputArbitrary = 128;  // any text answers

// One keyword of InitializeUserInput's list.
struct InputKeyword {
  std::string local;     // as listed ("LType")
  std::string global;    // what GetInput returns (the "_" name, or local)
  std::string shortcut;  // the required part ("LT"); "" = the whole word
  bool shortcut_at_start = false;  // then any longer prefix also matches
};

// What InitializeUserInput set for the next request.
struct InputControl {
  int32_t bits = 0;
  std::vector<InputKeyword> keywords;
};

class Utility : public DispatchObject<Utility> {
 public:
  explicit Utility(Document* doc) : doc_(doc) {}
  std::string_view TypeName() const override { return "IAcadUtility"; }
  static const MemberTable<Utility>& Members();
  Document* document() const { return doc_; }

  // InitializeUserInput applies to the next request only: each Get* takes
  // it (and leaves none behind).
  const InputControl& input_control() const { return control_; }
  void SetInputControl(InputControl control) { control_ = std::move(control); }
  InputControl TakeInputControl();

 private:
  Document* doc_;
  InputControl control_;
};

// The Get* members answered from the input queue, GetInput and
// InitializeUserInput (utility_input.cpp).
void AddUtilityInputMembers(MemberTable<Utility>& t);

}  // namespace tovik::host

#endif  // TOVIK_HOST_INPUT_UTILITY_H_
