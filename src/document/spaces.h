// The drawing resources the document services and the entity toolkit
// share: the space new entities go to, and block definitions loaded from
// the maker's block library.
#ifndef TOVIK_DOCUMENT_SPACES_H_
#define TOVIK_DOCUMENT_SPACES_H_

#include <string>

#include "frame/dispatch.h"

namespace tovik {

// The block of the space new entities go to in `drawing` (Nothing: the
// current drawing): model space, unless the drawing is in paper space with
// no model-space viewport active; then PaperSpace (ActiveLayout.Block when
// reading PaperSpace fails).
ObjectRef CurrentSpaceOf(const ObjectRef& drawing);

// The library block folder: LibraryState::block_library_folder, else the
// environment variable TOVIK_BLOCK_LIBRARY, else
// $XDG_DATA_HOME/tovik/blocks (~/.local/share/tovik/blocks).
std::string BlockLibraryFolder();

// The drawing file of library block `name` in `folder`: folder/name.dwg,
// or folder/name.dxf when only that is there (the headless host reads
// DXF); "" when neither exists.
std::string LibraryBlockFile(const std::string& folder, const std::string& name);

// Loads the drawing file at `path` into `drawing` as a block definition
// named after the file, as the host's InsertBlock of a file path does (a
// reference is inserted into model space and deleted again), and returns
// the definition. Host errors reach the caller.
ObjectRef LoadBlockFromFile(const ObjectRef& drawing, const std::string& path);

}  // namespace tovik

#endif  // TOVIK_DOCUMENT_SPACES_H_
