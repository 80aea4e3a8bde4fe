#include "host/core/journal.h"

#include <utility>

namespace tovik::host {

void Journal::BeginCall() {
  if (depth_++ == 0 && !group_open_) new_step_due_ = true;
}

void Journal::EndCall() {
  if (depth_ > 0) --depth_;
}

void Journal::StartGroup() {
  group_open_ = true;
  new_step_due_ = true;
}

void Journal::EndGroup() {
  if (!group_open_) return;
  group_open_ = false;
  new_step_due_ = true;
}

Journal::Step& Journal::Current() {
  if (new_step_due_ || steps_.empty()) {
    if (steps_.size() < kMaxSteps) {
      steps_.emplace_back();
    } else {
      // The oldest step is dropped; its lists are reused, emptied.
      Step oldest = std::move(steps_.front());
      steps_.pop_front();
      oldest.undo.clear();
      oldest.touched.clear();
      oldest.touched_many.clear();
      steps_.push_back(std::move(oldest));
    }
    new_step_due_ = false;
  }
  return steps_.back();
}

void Journal::Record(std::function<void()> undo) {
  if (undoing_ || paused_) return;
  Current().undo.push_back(std::move(undo));
}

void Journal::NoteStep() {
  if (!undoing_ && !paused_) Current();
}

bool Journal::FirstTouch(const void* object) {
  if (undoing_ || paused_) return false;
  Step& step = Current();
  if (step.touched.size() < kFewTouched) {
    for (const void* seen : step.touched) {
      if (seen == object) return false;
    }
    step.touched.push_back(object);
    return true;
  }
  if (step.touched_many.empty()) step.touched_many.insert(step.touched.begin(), step.touched.end());
  if (!step.touched_many.insert(object).second) return false;
  step.touched.push_back(object);
  return true;
}

int Journal::Undo(int count) {
  EndGroup();
  int done = 0;
  undoing_ = true;
  while (done < count && !steps_.empty()) {
    Step step = std::move(steps_.back());
    steps_.pop_back();
    for (auto it = step.undo.rbegin(); it != step.undo.rend(); ++it) (*it)();
    ++done;
  }
  undoing_ = false;
  new_step_due_ = true;
  return done;
}

}  // namespace tovik::host
