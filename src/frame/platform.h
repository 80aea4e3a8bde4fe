// What the library asks of the window system and of its own forms.
//
// Window calls (SetForegroundWindow, SetWindowPos) go through Platform.
// The library's forms are automation objects reached by member name
// (Enabled, Visible, hwnd, ThisDrawingActivate, Show, Hide, ZOrder,
// Unload), so any form implementation that answers these names will do.
// The headless implementations below record what was asked of them, so
// the host event handlers can be watched at work without a screen.
#ifndef TOVIK_FRAME_PLATFORM_H_
#define TOVIK_FRAME_PLATFORM_H_

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "frame/member_table.h"

namespace tovik {

// SetWindowPos flags the library passes: no size, no move, no activate,
// show window (1 + 2 + 16 + 64).
inline constexpr int32_t kSwpNoSizeNoMoveNoActivateShow = 83;
// SetWindowPos insert-after value that puts a window on top of its peers.
inline constexpr int64_t kHwndTop = 0;

// A picture put on the clipboard; it can be saved as a PNG file.
class ClipboardImage {
 public:
  virtual ~ClipboardImage() = default;
  virtual int32_t width() const = 0;
  virtual int32_t height() const = 0;
  // Writes the picture to `path`; false when the file cannot be written.
  virtual bool SavePng(const std::string& path) const = 0;
  // The pixels, 0xAARRGGBB, row by row from the top.
  virtual std::vector<uint32_t> Pixels() const = 0;
};

// The window functions the library calls.
class Platform {
 public:
  virtual ~Platform() = default;
  // Brings window hwnd to the foreground.
  virtual void SetForegroundWindow(int64_t hwnd) = 0;
  // Places window hwnd in the z-order after insert_after, at (x, y) with
  // size (cx, cy), as flags allow.
  virtual void SetWindowPos(int64_t hwnd, int64_t insert_after, int32_t x,
                            int32_t y, int32_t cx, int32_t cy, int32_t flags) = 0;
  // Empties the clipboard, then puts `image` on it as a bitmap.
  virtual void SetClipboardBitmap(std::shared_ptr<const ClipboardImage> image) = 0;
};

// One window call as HeadlessPlatform recorded it.
struct WindowCall {
  std::string function;  // "SetForegroundWindow" or "SetWindowPos"
  int64_t hwnd = 0;
  int64_t insert_after = 0;
  int32_t flags = 0;
  bool operator==(const WindowCall&) const = default;
};

// A platform without windows: records every call in order.
class HeadlessPlatform : public Platform {
 public:
  void SetForegroundWindow(int64_t hwnd) override;
  void SetWindowPos(int64_t hwnd, int64_t insert_after, int32_t x, int32_t y,
                    int32_t cx, int32_t cy, int32_t flags) override;
  // The clipboard is a store in the process holding the last bitmap.
  void SetClipboardBitmap(std::shared_ptr<const ClipboardImage> image) override {
    clipboard_ = std::move(image);
  }
  // The calls so far, oldest first.
  const std::vector<WindowCall>& calls() const { return calls_; }
  // The bitmap on the clipboard, or nullptr.
  const std::shared_ptr<const ClipboardImage>& clipboard() const { return clipboard_; }

 private:
  std::vector<WindowCall> calls_;
  std::shared_ptr<const ClipboardImage> clipboard_;
};

// A form without a window: keeps the state a form has (enabled, visible,
// loaded, a window handle) and records the requests it got.
class HeadlessForm : public DispatchObject<HeadlessForm> {
 public:
  // A form named `name` with window handle `hwnd`, enabled and hidden.
  HeadlessForm(std::string name, int64_t hwnd);

  std::string_view TypeName() const override { return name_; }
  static const MemberTable<HeadlessForm>& Members();

  bool enabled() const { return enabled_; }
  bool visible() const { return visible_; }
  bool unloaded() const { return unloaded_; }
  int64_t hwnd() const { return hwnd_; }
  // How many times ThisDrawingActivate and ZOrder were called.
  int activations() const { return activations_; }
  int brought_to_front() const { return brought_to_front_; }

  // Show: makes the form visible and runs OnShow.
  void Show();
  // Hide: makes the form invisible.
  void Hide() { visible_ = false; }
  // Unload: hides the form and marks it unloaded.
  void Unload();

 protected:
  // Runs after the form became visible.
  virtual void OnShow() {}

 private:
  std::string name_;
  int64_t hwnd_;
  bool enabled_ = true;
  bool visible_ = false;
  bool unloaded_ = false;
  int activations_ = 0;
  int brought_to_front_ = 0;
};

// Z_Modal64Form, the library's form for use while the host is modal: when
// shown it sits above the host window without taking the focus from it.
class Modal64Form : public HeadlessForm {
 public:
  explicit Modal64Form(int64_t hwnd) : HeadlessForm("Z_Modal64Form", hwnd) {}

 protected:
  // SetWindowPos(host main window, top, 0, 0, 0, 0, 83), then the same on
  // the form's own window, under a resume-next trap (without a host link
  // only the form's own call is made).
  void OnShow() override;
};

}  // namespace tovik

#endif  // TOVIK_FRAME_PLATFORM_H_
