#include "host/core/application.h"

#include <algorithm>
#include <cmath>

#include "frame/conversions.h"
#include "host/core/document.h"
#include "host/core/host_error.h"
#include "host/surface/args.h"
#include "host/lisp/interpreter.h"
#include "host/surface/collection_util.h"

namespace tovik::host {

std::shared_ptr<Application> Application::Create(HostOptions options) {
  std::shared_ptr<Application> app(new Application(std::move(options)));
  app->events_ = std::make_shared<HostEvents>(app);
  app->documents_collection_ = std::make_shared<Documents>(app.get());
  if (app->options_.open_drawing) app->AddDocument();
  return app;
}

FontMetrics& Application::fonts() {
  if (!fonts_) fonts_ = std::make_unique<FontMetrics>();
  return *fonts_;
}

Application::~Application() {
  for (auto& doc : documents_) doc->Close();
}

ObjectRef Application::ActiveDocumentRef() const { return active_; }

std::shared_ptr<Document> Application::AddDocument() {
  std::string name = "Drawing" + std::to_string(next_drawing_number_++) + ".dwg";
  auto doc = std::make_shared<Document>(this, name, options_.id32_only);
  doc->Initialize();
  documents_.push_back(doc);
  StartLisp(*doc);
  Activate(doc);
  return doc;
}

void Application::AdoptDocument(std::shared_ptr<Document> document) {
  documents_.push_back(document);
  StartLisp(*document);
  Activate(document);
}

void Application::StartLisp(Document& document) {
  if (!options_.lisp) return;
  auto lisp = std::make_shared<lisp::Interpreter>();
  document.set_lisp_evaluator(lisp);
  lisp->LoadStartup(document, options_.lisp_startup);
}

int32_t Application::NextIdBase() {
  const int32_t range = next_id_range_++ % kObjectIdRanges;
  return kObjectIdBase32 + range * kObjectIdRange;
}


void Application::Activate(const std::shared_ptr<Document>& document) {
  if (std::find(documents_.begin(), documents_.end(), document) == documents_.end()) {
    throw HostError(HostFailure::kInvalidInput);
  }
  if (active_ == document) return;
  active_ = document;
  events_->Raise("ThisDrawingActivate");
}

void Application::CloseDocument(const std::shared_ptr<Document>& document) {
  auto it = std::find(documents_.begin(), documents_.end(), document);
  if (it == documents_.end()) return;
  // Raised before the document leaves Documents: Count still counts it.
  events_->Raise("ThisDrawingBeginClose");
  it = std::find(documents_.begin(), documents_.end(), document);
  if (it == documents_.end()) return;
  documents_.erase(it);
  events_->DropOwner(document.get());
  document->Close();
  if (active_ == document) {
    active_.reset();
    if (!documents_.empty()) Activate(documents_.back());
  }
}

void Application::EnterModal() { events_->Raise("EnterModal"); }
void Application::LeaveModal() { events_->Raise("LeaveModal"); }

void Application::SetWindowState(int state) {
  window_state_ = state;
  events_->Raise("AcadWindowChanged", {Variant(int32_t{state})});
}

void Application::Quit() {
  events_->Raise("BeginClose");
  while (!documents_.empty()) {
    std::shared_ptr<Document> doc = documents_.back();
    documents_.pop_back();
    events_->DropOwner(doc.get());
    doc->Close();
  }
  active_.reset();
  events_->Raise("Terminate");
}

void Application::RaiseObjectModified(std::string text) {
  events_->Raise("ObjectModified", {Variant(std::move(text))});
}

namespace {

std::shared_ptr<Document> ActiveOrFail(Application& app) {
  if (!app.active_document()) throw HostError(HostFailure::kNoDocument);
  return app.active_document();
}

void ZoomWindow(Application& app, CallArgs& a) {
  geometry::Vec3 ll = PointArg(a[0], {"LowerLeft", "ZoomWindow"});
  geometry::Vec3 ur = PointArg(a[1], {"UpperRight", "ZoomWindow"});
  std::shared_ptr<Document> doc = ActiveOrFail(app);
  auto& vars = doc->sysvar_values();
  std::vector<double> org = vars["UCSORG"].Array().ToDoubles();
  std::vector<double> xd = vars["UCSXDIR"].Array().ToDoubles();
  std::vector<double> yd = vars["UCSYDIR"].Array().ToDoubles();
  geometry::Vec3 o{org[0], org[1], org[2]}, x{xd[0], xd[1], xd[2]}, y{yd[0], yd[1], yd[2]};
  geometry::Vec3 z = geometry::Cross(x, y);
  geometry::Vec3 c = (ll + ur) * 0.5 - o;
  // The view centre is kept in UCS.
  geometry::Vec3 centre{geometry::Dot(c, x), geometry::Dot(c, y), geometry::Dot(c, z)};
  std::vector<double> screen = vars["SCREENSIZE"].Array().ToDoubles();
  double aspect = screen[0] / screen[1];
  double width = std::fabs(ur.x - ll.x), height = std::fabs(ur.y - ll.y);
  vars["VIEWCTR"] = PointValue(centre);
  vars["VIEWSIZE"] = Variant(std::max(height, width / aspect));
}

}  // namespace

const MemberTable<Application>& Application::Members() {
  static const MemberTable<Application> table = [] {
    MemberTable<Application> t;
    auto set_active = [](Application& s, CallArgs&, Variant& v) {
      auto doc = ObjectAs<Document>(v);
      if (!doc) throw InvalidArgument("ActiveDocument", "ActiveDocument");
      s.Activate(doc);
    };
    t.Property(
        "ActiveDocument",
        [](Application& s, CallArgs&) { return Variant(ObjectRef(ActiveOrFail(s))); },
        set_active, set_active);
    t.Property("Documents", [](Application& s, CallArgs&) {
      return Variant(s.documents_collection_);
    });
    t.Method(
        "ZoomWindow",
        [](Application& s, CallArgs& a) {
          ZoomWindow(s, a);
          return Variant();
        },
        2, 2);
    t.Method("Update", [](Application&, CallArgs&) { return Variant(); });
    t.Property("HWND", [](Application& s, CallArgs&) {
      if (s.options_.id32_only) return Variant(static_cast<int32_t>(kHostHwnd));
      return Variant(kHostHwnd);
    });
    t.Property("HWND32", [](Application&, CallArgs&) {
      return Variant(static_cast<int32_t>(kHostHwnd));
    });
    t.Property("Name", [](Application&, CallArgs&) { return Variant("AutoCAD"); });
    t.Property("Caption", [](Application& s, CallArgs&) {
      std::string caption = "Autodesk AutoCAD";
      if (s.active_) caption += " - [" + s.active_->name() + "]";
      return Variant(caption);
    });
    t.Property("Version", [](Application&, CallArgs&) { return Variant("24.1s (LMS Tech)"); });
    t.Property("Visible", [](Application&, CallArgs&) { return Variant(true); },
               [](Application&, CallArgs&, Variant&) {});
    t.Property(
        "WindowState",
        [](Application& s, CallArgs&) { return Variant(int32_t{s.window_state_}); },
        [](Application& s, CallArgs&, Variant& v) {
          int32_t state = LongArg(v, {"WindowState", "WindowState"});
          if (state < 1 || state > 3) throw HostError(HostFailure::kInvalidInput);
          s.SetWindowState(state);
        });
    t.Method("Quit", [](Application& s, CallArgs&) {
      s.Quit();
      return Variant();
    });
    return t;
  }();
  return table;
}

// ------------------------------------------------------------- Documents

const MemberTable<Documents>& Documents::Members() {
  static const MemberTable<Documents> table = [] {
    MemberTable<Documents> t;
    t.Property("Count", [](Documents& s, CallArgs&) {
      return Variant(static_cast<int32_t>(s.app_->documents().size()));
    });
    t.Method(
        "Item",
        [](Documents& s, CallArgs& a) {
          const auto& docs = s.app_->documents();
          size_t i = ItemPosition(a[0], docs.size(),
                                  [&](size_t k) -> std::string_view { return docs[k]->name(); });
          return Variant(ObjectRef(docs[i]));
        },
        1, 1);
    t.Default("Item");
    t.Method(
        "Add",
        [](Documents& s, CallArgs&) { return Variant(ObjectRef(s.app_->AddDocument())); }, 0,
        1);
    t.Method("Close", [](Documents& s, CallArgs&) {
      while (!s.app_->documents().empty()) {
        s.app_->CloseDocument(s.app_->documents().back());
      }
      return Variant();
    });
    t.Method(
        "Open",
        [](Documents& s, CallArgs& a) -> Variant {
          std::string path = StringArg(a[0], {"Name", "Open"});
          const DrawingFileIo& io = s.app_->file_io();
          if (!io.open) throw HostError(HostFailure::kFileNotFound);
          for (const auto& doc : s.app_->documents()) {
            if (doc->full_name() == path) return Variant(ObjectRef(doc));
          }
          std::shared_ptr<Document> doc = io.open(*s.app_, path);
          s.app_->AdoptDocument(doc);
          return Variant(ObjectRef(doc));
        },
        1, 3);
    return t;
  }();
  return table;
}

std::vector<Variant> Documents::Enumerate() {
  std::vector<Variant> out;
  for (const auto& doc : app_->documents()) out.emplace_back(ObjectRef(doc));
  return out;
}

}  // namespace tovik::host
