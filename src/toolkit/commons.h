// What the library needs of the maker's commons library: its working
// folder and a text-file writer.
#ifndef TOVIK_TOOLKIT_COMMONS_H_
#define TOVIK_TOOLKIT_COMMONS_H_

#include <string>
#include <string_view>

namespace tovik {

// The commons working folder, without a trailing separator: the library
// state's commons_folder when set, else $TOVIK_WORK_FOLDER, else the
// per-user folder "tovik-<user>" in the system's temporary folder, made
// on first use.
std::string CommonsWorkingFolder();

// Writes `text` (UTF-8, as given) to the file at `path`, replacing it. A
// backslash separates folders on every platform, as in the host program's
// paths. A folder that does not exist or a file that cannot be written
// raises 76 (Path not found).
void WriteTextFile(const std::string& path, std::string_view text);

// Deletes the file at `path` (backslashes as above); a missing file is no
// error.
void DeleteTextFile(const std::string& path);

}  // namespace tovik

#endif  // TOVIK_TOOLKIT_COMMONS_H_
