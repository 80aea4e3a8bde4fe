// The library's window functions on Windows: user32's own
// SetForegroundWindow and SetWindowPos, and the clipboard as a device-
// independent bitmap.
#ifndef TOVIK_WINDOWS_WIN32_PLATFORM_H_
#define TOVIK_WINDOWS_WIN32_PLATFORM_H_

#include "frame/platform.h"

namespace tovik::com {

class Win32Platform : public Platform {
 public:
  void SetForegroundWindow(int64_t hwnd) override;
  void SetWindowPos(int64_t hwnd, int64_t insert_after, int32_t x, int32_t y, int32_t cx,
                    int32_t cy, int32_t flags) override;
  void SetClipboardBitmap(std::shared_ptr<const ClipboardImage> image) override;
};

}  // namespace tovik::com

#endif  // TOVIK_WINDOWS_WIN32_PLATFORM_H_
