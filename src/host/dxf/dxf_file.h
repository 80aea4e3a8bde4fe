// Reading a DXF file into a live host drawing, and writing it back.
#ifndef TOVIK_HOST_DXF_DXF_FILE_H_
#define TOVIK_HOST_DXF_DXF_FILE_H_

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "dxf/source_text.h"
#include "frame/automation_error.h"
#include "host/core/application.h"

namespace tovik::host {
class Application;
class Document;
}  // namespace tovik::host

namespace tovik::host::dxf {

// The DXF version the host writes: R2018, the newest AutoCAD format, UTF-8.
inline constexpr std::string_view kWriteVersion = "AC1032";

// Number of the automation error a file that cannot be read raises (E_FAIL).
inline constexpr int32_t kReadFailedNumber = -2147467259;

// Builds a new document of `app` from the DXF text in `buffer`, named
// `path` (its full name and the file named in messages). Nothing is half
// built: the document is handed back only complete, and is not yet among
// the application's open documents. Damage an audit repairs is repaired
// and listed (Repairs). Throws AutomationError with the reader's text
// ("PATH: line N: what") for input that is no readable DXF.
std::shared_ptr<Document> ReadDrawingBuffer(Application& app, std::string buffer,
                                            const std::string& path);
std::shared_ptr<Document> ReadDrawingText(Application& app, ::tovik::dxf::SourceText text,
                                          const std::string& path);
// Reads the file at `path` as ReadDrawingBuffer does; a missing or
// unreadable file raises the same kind of error.
std::shared_ptr<Document> ReadDrawingFile(Application& app, const std::string& path);

// The repairs made when `document` was read (empty for other drawings).
std::vector<std::string> Repairs(const Document& document);
// The $ACADVER of the file `document` was read from ("AC1018"); empty for
// a drawing not read from DXF or a file without HEADER.
std::string SourceVersion(const Document& document);

// Returns `document` as DXF in `format`: by default ASCII in the host's
// version (kWriteVersion). Objects read from a file keep their handles and
// every group the host does not model; new objects get handles from
// $HANDSEED. A version older than the drawing's data adds to `notes` what it
// cannot hold and how that was written instead. An unknown version raises
// an AutomationError.
std::string WriteDrawing(const Document& document, const SaveFormat& format = {},
                         std::vector<std::string>* notes = nullptr);
// Writes WriteDrawing(document, format) to `path`; raises an AutomationError
// naming the path when it cannot be written.
void WriteDrawingFile(const Document& document, const std::string& path,
                      const SaveFormat& format = {}, std::vector<std::string>* notes = nullptr);
// The $ACADVER of a version name: "R2000" -> "AC1015" (R12, R2000, R2004,
// R2007, R2010, R2013, R2018); empty for any other name.
std::string_view VersionCodeOf(std::string_view release);

// Makes Documents.Open, Document.SaveAs/Save and Import of `app` read and
// write DXF through the functions above.
void InstallDxfFileIo(Application& app);

}  // namespace tovik::host::dxf

#endif  // TOVIK_HOST_DXF_DXF_FILE_H_
