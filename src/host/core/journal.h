// The undo journal of one document. Every change the host makes records a
// closure that puts the old state back; changes are grouped into steps. A
// step is one undo group (StartUndoMark ... EndUndoMark) or, outside a
// group, one top-level automation call. "Undo N" runs the last N steps'
// closures in reverse order.
#ifndef TOVIK_HOST_CORE_JOURNAL_H_
#define TOVIK_HOST_CORE_JOURNAL_H_

#include <cstddef>
#include <deque>
#include <functional>
#include <unordered_set>
#include <vector>

namespace tovik::host {

class Journal {
 public:
  // Steps kept outside groups and closed groups alike; older ones are
  // dropped (the host's undo history is finite too).
  static constexpr size_t kMaxSteps = 256;

  // Brackets one automation call; nested calls belong to the outermost.
  void BeginCall();
  void EndCall();

  // Opens a group; an open group is closed first (groups do not nest).
  void StartGroup();
  // Closes the open group; without one it does nothing.
  void EndGroup();
  bool group_open() const { return group_open_; }

  // Records how to undo a change just made (ignored while undoing).
  void Record(std::function<void()> undo);
  // Opens the current step if none is open yet (a call whose changes need
  // no closure still counts as a step).
  void NoteStep();
  // True the first time `object` is touched in the current step: the caller
  // then records a snapshot of it. False while undoing.
  bool FirstTouch(const void* object);
  // True while steps are being undone (changes made then are not recorded).
  bool undoing() const { return undoing_; }
  // Stops or resumes recording: a drawing being read from a file is not an
  // undoable change, and closures for each of its objects would only be
  // dropped afterwards.
  void set_paused(bool paused) { paused_ = paused; }

  // Undoes the last `count` steps (an open group is closed first); returns
  // the number undone.
  int Undo(int count);
  // Number of steps that can be undone.
  size_t StepCount() const { return steps_.size(); }

 private:
  struct Step {
    std::vector<std::function<void()>> undo;
    // The objects touched: a step of one call touches a few, searched in
    // order; past kFewTouched they are also hashed.
    std::vector<const void*> touched;
    std::unordered_set<const void*> touched_many;
  };
  static constexpr size_t kFewTouched = 16;
  Step& Current();

  std::deque<Step> steps_;
  bool group_open_ = false;
  bool new_step_due_ = true;
  bool undoing_ = false;
  bool paused_ = false;
  int depth_ = 0;
};

// RAII bracket of one automation call.
class CallScope {
 public:
  explicit CallScope(Journal* journal) : journal_(journal) {
    if (journal_) journal_->BeginCall();
  }
  ~CallScope() {
    if (journal_) journal_->EndCall();
  }
  CallScope(const CallScope&) = delete;
  CallScope& operator=(const CallScope&) = delete;

 private:
  Journal* journal_;
};

}  // namespace tovik::host

#endif  // TOVIK_HOST_CORE_JOURNAL_H_
