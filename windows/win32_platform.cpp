#include "win32_platform.h"

#include <windows.h>

#include <cstring>

namespace tovik::com {
namespace {

HWND Window(int64_t hwnd) { return reinterpret_cast<HWND>(static_cast<intptr_t>(hwnd)); }

}  // namespace

void Win32Platform::SetForegroundWindow(int64_t hwnd) { ::SetForegroundWindow(Window(hwnd)); }

void Win32Platform::SetWindowPos(int64_t hwnd, int64_t insert_after, int32_t x, int32_t y,
                                 int32_t cx, int32_t cy, int32_t flags) {
  ::SetWindowPos(Window(hwnd), Window(insert_after), x, y, cx, cy, static_cast<UINT>(flags));
}

void Win32Platform::SetClipboardBitmap(std::shared_ptr<const ClipboardImage> image) {
  if (!OpenClipboard(nullptr)) return;
  EmptyClipboard();
  if (image && image->width() > 0 && image->height() > 0) {
    std::vector<uint32_t> pixels = image->Pixels();
    size_t bytes = pixels.size() * sizeof(uint32_t);
    HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, sizeof(BITMAPINFOHEADER) + bytes);
    if (memory) {
      auto* header = static_cast<BITMAPINFOHEADER*>(GlobalLock(memory));
      *header = {};
      header->biSize = sizeof(BITMAPINFOHEADER);
      header->biWidth = image->width();
      header->biHeight = -image->height();  // rows from the top
      header->biPlanes = 1;
      header->biBitCount = 32;
      header->biCompression = BI_RGB;
      std::memcpy(header + 1, pixels.data(), bytes);
      GlobalUnlock(memory);
      if (!SetClipboardData(CF_DIB, memory)) GlobalFree(memory);
    }
  }
  CloseClipboard();
}

}  // namespace tovik::com
