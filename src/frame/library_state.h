// The state the whole loaded library shares, in one place: one copy for
// every instance of every class, touched only from the host's thread.
// Nothing else in the library keeps mutable global state.
//
// Tests start from a clean library with ResetLibraryState().
#ifndef TOVIK_FRAME_LIBRARY_STATE_H_
#define TOVIK_FRAME_LIBRARY_STATE_H_

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "frame/collection.h"
#include "frame/dispatch.h"
#include "frame/platform.h"
#include "frame/runtime_text.h"

namespace tovik {

struct LibraryState {
  // The host-event object handed in by InitZActiveX, or Nothing: the
  // library's only road to the host application.
  ObjectRef host_events;
  // Forms to disable while the host is modal; Nothing until first use
  // (ModalForms() makes it), and Nothing again after the host begins to
  // close. The maker's other code fills it; this library only walks it.
  std::shared_ptr<Collection> modal_forms;
  // The library's loaded forms, in load order (the runtime's Forms).
  std::vector<ObjectRef> loaded_forms;
  // The implicit instance of each global class, by class name, made on
  // first use.
  std::unordered_map<std::string, ObjectRef> global_instances;
  // Global objects of the maker's sibling libraries present in this host,
  // by library title. A library not listed here is not installed.
  std::unordered_map<std::string, ObjectRef, CaseInsensitiveHasher,
                     CaseInsensitiveEqualTo>
      sibling_libraries;
  // Window functions.
  std::shared_ptr<Platform> platform = std::make_shared<HeadlessPlatform>();
  // The hidden toolbox form's picture box (DwgPicturebox), the default
  // surface of new preview canvases; made on first use.
  ObjectRef toolbox_picture;
  // The maker's block library folder, where JBlock finds drawing files;
  // empty: TOVIK_BLOCK_LIBRARY or the per-user data folder (see
  // document/spaces.h).
  std::string block_library_folder;
  // The working folder of the maker's commons library (scratch files such
  // as RunLisp.lsp); empty: TOVIK_WORK_FOLDER or a per-user temporary
  // folder (see toolkit/commons.h).
  std::string commons_folder;
  // Number of ZActiveXCOM instances made so far (each keeps its own
  // number for AppTitle).
  int32_t zactivex_instances = 0;
};

// The library's state.
LibraryState& Library();

// Drops every reference the library holds and starts afresh: no host link,
// no forms, no implicit instances, no siblings, a new headless platform.
void ResetLibraryState();

// The forms to disable while the host is modal, made (empty) on first use.
const std::shared_ptr<Collection>& ModalForms();

// The window functions in use.
Platform& Windows();

// Adds form to the library's loaded forms (once).
void LoadForm(const ObjectRef& form);
// Calls the form's Unload member and takes it out of the loaded forms.
// Raises what the form's Unload raises (the form stays loaded then).
void UnloadForm(const ObjectRef& form);

// The implicit instance of global class T (T::kClassName), made with
// T::MakeGlobal() on first use and kept until ResetLibraryState.
template <class T>
std::shared_ptr<T> GlobalInstance() {
  ObjectRef& slot = Library().global_instances[std::string(T::kClassName)];
  if (!slot) slot = T::MakeGlobal();
  return std::static_pointer_cast<T>(slot);
}

}  // namespace tovik

#endif  // TOVIK_FRAME_LIBRARY_STATE_H_
