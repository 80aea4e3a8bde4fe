// The host application (IAcadApplication) and its Documents collection. The
// entry point of the headless host:
//
//   auto app = tovik::host::Application::Create();   // "Drawing1.dwg" open
//   ObjectRef doc = app->ActiveDocumentRef();
//   std::shared_ptr<HostEvents> link = app->events();
#ifndef TOVIK_HOST_CORE_APPLICATION_H_
#define TOVIK_HOST_CORE_APPLICATION_H_

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "frame/member_table.h"
#include "host/core/font_metrics.h"
#include "host/core/host_events.h"

namespace tovik::host {

class Application;
class Document;

// Reads and writes drawing files. The DXF layer installs these on an
// application (it builds on the host, so the host reaches it through this
// hook); without them Documents.Open finds no file and SaveAs raises Not
// applicable.
// How a drawing is written.
struct SaveFormat {
  // The $ACADVER to write ("AC1015"); empty: the host's own choice.
  std::string version;
  // Binary DXF instead of ASCII.
  bool binary = false;
};

struct DrawingFileIo {
  // Builds a complete new document from the file at `path` (not yet open
  // in the application); throws an AutomationError naming file and line.
  std::function<std::shared_ptr<Document>(Application& app, const std::string& path)> open;
  // Writes `document` to `path` in `format`; throws an AutomationError on
  // failure.
  std::function<void(Document& document, const std::string& path, const SaveFormat& format)> save;
};

// Settings of a headless host.
struct HostOptions {
  // Open "Drawing1.dwg" at start, as the host does.
  bool open_drawing = true;
  // Behave like an older 32-bit build: only ObjectID32, OwnerID32 and
  // ObjectIDToObject32 answer; HWND is a Long.
  bool id32_only = false;
  // Give every open drawing a lisp interpreter (SendCommand runs lisp
  // expressions), loading these files into it when the drawing opens.
  // "<tovik_com.lsp>" is the library's own lisp side, built in.
  bool lisp = true;
  std::vector<std::string> lisp_startup = {"<tovik_com.lsp>"};
};

// The fixed window handle the headless host reports.
inline constexpr int64_t kHostHwnd = 0x000A0B2C;

class Application : public DispatchObject<Application> {
 public:
  // A new headless host.
  static std::shared_ptr<Application> Create(HostOptions options = {});
  ~Application() override;

  std::string_view TypeName() const override { return "IAcadApplication"; }
  static const MemberTable<Application>& Members();

  // The host-event object connected to this application.
  const std::shared_ptr<HostEvents>& events() const { return events_; }
  const HostOptions& options() const { return options_; }

  // Open documents in Documents.Item order.
  const std::vector<std::shared_ptr<Document>>& documents() const { return documents_; }
  // The active document, or nullptr when none is open.
  const std::shared_ptr<Document>& active_document() const { return active_; }
  ObjectRef ActiveDocumentRef() const;

  // Documents.Add: a new "DrawingN.dwg", made active (ThisDrawingActivate).
  std::shared_ptr<Document> AddDocument();
  // Adds a document built outside (a drawing read from a file) to the open
  // documents and makes it active.
  void AdoptDocument(std::shared_ptr<Document> document);
  // Makes `document` active; raises ThisDrawingActivate when it changes.
  // A document that is not open raises Invalid input.
  void Activate(const std::shared_ptr<Document>& document);
  // Closes `document`: ThisDrawingBeginClose is raised while it is still
  // counted; its named objects are dropped; another becomes active.
  void CloseDocument(const std::shared_ptr<Document>& document);

  // The first object ID of the next document's range (each document made
  // for this application takes the next one).
  int32_t NextIdBase();

  // The drawing-file readers and writers of this application (empty
  // functions until the DXF layer installs them).
  void SetFileIo(DrawingFileIo io) { file_io_ = std::move(io); }
  const DrawingFileIo& file_io() const { return file_io_; }

  // What the host does without an automation trigger.
  void EnterModal();
  void LeaveModal();
  // AcadWindowChanged: 1 normal, 2 minimised, 3 maximised.
  void SetWindowState(int state);
  int window_state() const { return window_state_; }
  // The host quits: BeginClose, the documents close, then Terminate.
  void Quit();
  // ObjectModified(text).
  void RaiseObjectModified(std::string text);

 // The widths of texts in their faces, shared by the documents; made on
  // first use.
  FontMetrics& fonts();

 private:
  explicit Application(HostOptions options) : options_(std::move(options)) {}
  // Installs a lisp interpreter in `document` and loads the startup files.
  void StartLisp(Document& document);

  HostOptions options_;
  std::unique_ptr<FontMetrics> fonts_;
  std::shared_ptr<HostEvents> events_;
  std::vector<std::shared_ptr<Document>> documents_;
  std::shared_ptr<Document> active_;
  std::shared_ptr<Dispatch> documents_collection_;
  int next_drawing_number_ = 1;
  int next_id_range_ = 0;
  DrawingFileIo file_io_;
  int window_state_ = 3;
};

// IAcadDocuments.
class Documents : public DispatchObject<Documents> {
 public:
  explicit Documents(Application* app) : app_(app) {}
  std::string_view TypeName() const override { return "IAcadDocuments"; }
  static const MemberTable<Documents>& Members();
  std::vector<Variant> Enumerate() override;
  Application* app() const { return app_; }

 private:
  Application* app_;
};

}  // namespace tovik::host

#endif  // TOVIK_HOST_CORE_APPLICATION_H_
