#include "frame/library_state.h"

#include <algorithm>

namespace tovik {

LibraryState& Library() {
  // The one copy of the library-wide state.
  static LibraryState state;
  return state;
}

void ResetLibraryState() {
  // Objects released here may reach the state from their destructors: let
  // them see the fresh state, not a half-destroyed one.
  LibraryState old = std::move(Library());
  Library() = LibraryState();
}

const std::shared_ptr<Collection>& ModalForms() {
  std::shared_ptr<Collection>& forms = Library().modal_forms;
  if (!forms) forms = std::make_shared<Collection>();
  return forms;
}

Platform& Windows() {
  std::shared_ptr<Platform>& platform = Library().platform;
  if (!platform) platform = std::make_shared<HeadlessPlatform>();
  return *platform;
}

void LoadForm(const ObjectRef& form) {
  std::vector<ObjectRef>& forms = Library().loaded_forms;
  if (std::find(forms.begin(), forms.end(), form) == forms.end()) {
    forms.push_back(form);
  }
}

void UnloadForm(const ObjectRef& form) {
  CallMethod(form, "Unload");
  std::erase(Library().loaded_forms, form);
}

}  // namespace tovik
