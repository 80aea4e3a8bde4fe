#include "frame/zactivex_com.h"

#include <vector>

#include "frame/autocad_enum.h"
#include "frame/automation_error.h"
#include "frame/conversions.h"
#include "frame/error_trap.h"
#include "frame/host_link.h"
#include "frame/library_state.h"
#include "frame/runtime_text.h"

namespace tovik {
namespace {

// True when the form answers Visible with True (a form that cannot answer
// counts as hidden).
bool IsVisible(const Variant& form) {
  bool visible = false;
  ResumeNext trap;
  trap([&] { visible = CBool(GetProperty(form.Object(), "Visible")); });
  return visible;
}

// Brings form in front of the host window and gives it the foreground.
void BringToFront(const Variant& form, ResumeNext& trap) {
  trap([&] { CallMethod(form.Object(), "ZOrder", {Variant(int16_t{0})}); });
  trap([&] {
    Windows().SetForegroundWindow(CLngLng(GetProperty(form.Object(), "hWnd")));
  });
}

// A hook for the start and end of a bulk object modification. It does
// nothing yet.
void ObjectModificationBoundary() {}

}  // namespace

ZActiveXCOM::ZActiveXCOM() : number_(++Library().zactivex_instances) {}

ZActiveXCOM::~ZActiveXCOM() {
  if (event_source_ && event_source_->Events() && cookie_ != 0) {
    event_source_->Events()->Disconnect(cookie_);
  }
}

std::string ZActiveXCOM::AppTitle() const {
  return std::string(kAppTitle) + " " + std::to_string(number_);
}

void ZActiveXCOM::SetEventSource(const ObjectRef& source) {
  // Like a WithEvents variable, only an object that raises events can be
  // the source.
  if (source && !source->Events()) throw errors::TypeMismatch();
  if (event_source_ && event_source_->Events() && cookie_ != 0) {
    event_source_->Events()->Disconnect(cookie_);
  }
  cookie_ = 0;
  event_source_ = source;
  if (source) {
    std::shared_ptr<ZActiveXCOM> self = Self();
    cookie_ = source->Events()->Connect(std::weak_ptr<EventSink>(self));
  }
}

void ZActiveXCOM::InitZActiveX(Variant& z_activex) {
  ObjectRef source;
  if (!z_activex.IsMissing()) {
    if (!z_activex.IsObject()) throw errors::TypeMismatch();
    source = z_activex.RawObject();
  }
  SetEventSource(source);
  Library().host_events = source;
  HandOnToSiblings(z_activex);
}

void ZActiveXCOM::HandOnToSiblings(Variant& z_activex) {
  // Each sibling is told under a resume-next trap: one that is not
  // installed (429) or fails is skipped.
  ResumeNext trap;
  for (std::string_view title : kSiblingLibraryTitles) {
    if (CaseInsensitiveEqual(title, kAppTitle)) continue;
    trap([&] {
      auto& siblings = Library().sibling_libraries;
      auto it = siblings.find(std::string(title));
      if (it == siblings.end() || !it->second) {
        throw errors::Runtime(kErrCannotCreate);
      }
      ObjectRef sibling = it->second;
      CallMethodRef(sibling, "InitZActiveX", std::span<Variant>(&z_activex, 1));
    });
  }
}

void ZActiveXCOM::OnEvent(std::string_view event, std::span<Variant> args) {
  Variant first = args.empty() ? Variant() : args[0];
  if (CaseInsensitiveEqual(event, "AcadWindowChanged")) {
    OnAcadWindowChanged(first);
  } else if (CaseInsensitiveEqual(event, "EnterModal")) {
    OnEnterModal();
  } else if (CaseInsensitiveEqual(event, "LeaveModal")) {
    OnLeaveModal();
  } else if (CaseInsensitiveEqual(event, "ThisDrawingActivate")) {
    OnThisDrawingActivate();
  } else if (CaseInsensitiveEqual(event, "ThisDrawingBeginClose")) {
    OnThisDrawingBeginClose();
  } else if (CaseInsensitiveEqual(event, "BeginClose")) {
    OnBeginClose();
  } else if (CaseInsensitiveEqual(event, "Terminate")) {
    OnTerminate();
  } else if (CaseInsensitiveEqual(event, "ObjectModified")) {
    OnObjectModified(first);
  }
}

void ZActiveXCOM::OnAcadWindowChanged(const Variant& state) {
  ResumeNext trap;
  bool minimised = false;
  trap([&] { minimised = CLng(state) == acMin; });
  if (minimised) return;
  if (remembered_forms_) {
    for (const Variant& form : remembered_forms_->Enumerate()) BringToFront(form, trap);
  }
  std::vector<ObjectRef> loaded = Library().loaded_forms;
  for (const ObjectRef& form : loaded) {
    if (IsVisible(Variant(form))) BringToFront(Variant(form), trap);
  }
}

void ZActiveXCOM::OnEnterModal() {
  ResumeNext trap;
  for (const Variant& form : ModalForms()->Enumerate()) {
    trap([&] { LetProperty(form.Object(), "Enabled", Variant(false)); });
  }
}

void ZActiveXCOM::OnLeaveModal() {
  ResumeNext trap;
  for (const Variant& form : ModalForms()->Enumerate()) {
    trap([&] { LetProperty(form.Object(), "Enabled", Variant(true)); });
  }
}

void ZActiveXCOM::OnThisDrawingActivate() {
  ResumeNext trap;
  std::vector<ObjectRef> loaded = Library().loaded_forms;
  for (const ObjectRef& form : loaded) {
    trap([&] { CallMethod(form, "ThisDrawingActivate"); });
  }
}

void ZActiveXCOM::OnThisDrawingBeginClose() {
  ResumeNext trap;
  int32_t open_drawings = 0;
  trap([&] {
    open_drawings = CLng(GetProperty(GetProperty(HostApplication(), "Documents").Object(),
                                     "Count"));
  });
  // Only when the last open drawing closes.
  if (open_drawings != 1) return;
  std::vector<ObjectRef> loaded = Library().loaded_forms;
  for (const ObjectRef& form : loaded) {
    if (IsVisible(Variant(form))) trap([&] { CallMethod(form, "Hide"); });
  }
  trap([&] {
    Windows().SetForegroundWindow(CLngLng(GetProperty(HostApplication(), "HWND")));
  });
}

void ZActiveXCOM::OnBeginClose() {
  remembered_forms_ = std::make_shared<Collection>();
  Library().modal_forms = nullptr;
  ResumeNext trap;
  std::vector<ObjectRef> loaded = Library().loaded_forms;
  for (const ObjectRef& form : loaded) trap([&] { UnloadForm(form); });
}

void ZActiveXCOM::OnTerminate() {
  ResumeNext trap;
  trap([&] { SetEventSource(nullptr); });
  Library().host_events = nullptr;
}

void ZActiveXCOM::OnObjectModified(const Variant& text) {
  ResumeNext trap;
  trap([&] {
    std::string value = CStr(text);
    if (Like(value, "Start*").value_or(false) || Like(value, "End*").value_or(false)) {
      ObjectModificationBoundary();
    }
  });
}

const MemberTable<ZActiveXCOM>& ZActiveXCOM::Members() {
  static const MemberTable<ZActiveXCOM> table = [] {
    MemberTable<ZActiveXCOM> t;
    t.Method(
        "InitZActiveX",
        [](ZActiveXCOM& z, CallArgs& a) {
          z.InitZActiveX(a[0]);
          return Variant();
        },
        0, 1);
    t.Property("Author", [](ZActiveXCOM& z, CallArgs&) { return Variant(z.Author()); });
    t.Property("AppTitle",
               [](ZActiveXCOM& z, CallArgs&) { return Variant(z.AppTitle()); });
    return t;
  }();
  return table;
}

}  // namespace tovik
