#include "frame/platform.h"

#include "frame/conversions.h"
#include "frame/error_trap.h"
#include "frame/host_link.h"
#include "frame/library_state.h"

namespace tovik {

void HeadlessPlatform::SetForegroundWindow(int64_t hwnd) {
  calls_.push_back(WindowCall{"SetForegroundWindow", hwnd, 0, 0});
}

void HeadlessPlatform::SetWindowPos(int64_t hwnd, int64_t insert_after, int32_t,
                                    int32_t, int32_t, int32_t, int32_t flags) {
  calls_.push_back(WindowCall{"SetWindowPos", hwnd, insert_after, flags});
}

HeadlessForm::HeadlessForm(std::string name, int64_t hwnd)
    : name_(std::move(name)), hwnd_(hwnd) {}

void HeadlessForm::Show() {
  visible_ = true;
  unloaded_ = false;
  OnShow();
}

void HeadlessForm::Unload() {
  visible_ = false;
  unloaded_ = true;
}

const MemberTable<HeadlessForm>& HeadlessForm::Members() {
  static const MemberTable<HeadlessForm> table = [] {
    MemberTable<HeadlessForm> t;
    t.Property("Name", [](HeadlessForm& f, CallArgs&) { return Variant(f.name_); });
    t.Property(
        "Enabled", [](HeadlessForm& f, CallArgs&) { return Variant(f.enabled_); },
        [](HeadlessForm& f, CallArgs&, Variant& v) { f.enabled_ = CBool(v); });
    t.Property(
        "Visible", [](HeadlessForm& f, CallArgs&) { return Variant(f.visible_); },
        [](HeadlessForm& f, CallArgs&, Variant& v) {
          if (CBool(v)) {
            f.Show();
          } else {
            f.Hide();
          }
        });
    t.Property("hWnd", [](HeadlessForm& f, CallArgs&) {
      return Variant(static_cast<int32_t>(f.hwnd_));
    });
    t.Method("ThisDrawingActivate", [](HeadlessForm& f, CallArgs&) {
      ++f.activations_;
      return Variant();
    });
    t.Method("Show", [](HeadlessForm& f, CallArgs&) {
      f.Show();
      return Variant();
    }, 0, 2);
    t.Method("Hide", [](HeadlessForm& f, CallArgs&) {
      f.Hide();
      return Variant();
    });
    // ZOrder 0 brings the form to the front of its peers.
    t.Method("ZOrder", [](HeadlessForm& f, CallArgs& a) {
      if (!a.Has(0) || CLng(a[0]) == 0) ++f.brought_to_front_;
      return Variant();
    }, 0, 1);
    t.Method("Unload", [](HeadlessForm& f, CallArgs&) {
      f.Unload();
      return Variant();
    });
    return t;
  }();
  return table;
}

void Modal64Form::OnShow() {
  ResumeNext trap;
  trap([&] {
    int64_t host_hwnd = CLngLng(GetProperty(HostApplication(), "HWND"));
    Windows().SetWindowPos(host_hwnd, kHwndTop, 0, 0, 0, 0,
                           kSwpNoSizeNoMoveNoActivateShow);
  });
  trap([&] {
    Windows().SetWindowPos(hwnd(), kHwndTop, 0, 0, 0, 0,
                           kSwpNoSizeNoMoveNoActivateShow);
  });
}

}  // namespace tovik
