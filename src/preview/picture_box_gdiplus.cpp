// The picture box's drawing on Windows: GDI+ draws on an antialiased 32-bit
// bitmap, written as PNG and put on the clipboard as it is. SVG output is
// not offered here (SavePicture of an .svg path fails).
#include <windows.h>
// GDI+ needs min and max before its headers.
#include <algorithm>
namespace Gdiplus {
using std::max;
using std::min;
}  // namespace Gdiplus
#include <gdiplus.h>

#include <cctype>
#include <cmath>
#include <numbers>
#include <vector>

#include "frame/library_state.h"
#include "frame/wide_text_windows.h"
#include "preview/picture_box.h"

namespace tovik {
namespace {

Gdiplus::Color ColorOf(int32_t color) {
  return Gdiplus::Color(255, static_cast<BYTE>(color & 0xFF), static_cast<BYTE>((color >> 8) & 0xFF),
                        static_cast<BYTE>((color >> 16) & 0xFF));
}

bool EndsWith(const std::string& s, std::string_view tail) {
  if (s.size() < tail.size()) return false;
  for (size_t i = 0; i < tail.size(); ++i) {
    if (std::tolower(static_cast<unsigned char>(s[s.size() - tail.size() + i])) != tail[i]) {
      return false;
    }
  }
  return true;
}

// The encoder GDI+ writes PNG files with.
bool PngEncoder(CLSID* clsid) {
  UINT count = 0, size = 0;
  if (Gdiplus::GetImageEncodersSize(&count, &size) != Gdiplus::Ok || size == 0) return false;
  std::vector<BYTE> buffer(size);
  auto* codecs = reinterpret_cast<Gdiplus::ImageCodecInfo*>(buffer.data());
  if (Gdiplus::GetImageEncoders(count, size, codecs) != Gdiplus::Ok) return false;
  for (UINT i = 0; i < count; ++i) {
    if (wcscmp(codecs[i].MimeType, L"image/png") == 0) {
      *clsid = codecs[i].Clsid;
      return true;
    }
  }
  return false;
}

// A GDI+ session: started by each canvas and ended with it (GDI+ counts
// them), so the library keeps no process-wide drawing state.
class GdiplusSession {
 public:
  GdiplusSession() {
    Gdiplus::GdiplusStartupInput input;
    if (Gdiplus::GdiplusStartup(&token_, &input, nullptr) != Gdiplus::Ok) token_ = 0;
  }
  ~GdiplusSession() {
    if (token_) Gdiplus::GdiplusShutdown(token_);
  }
  GdiplusSession(const GdiplusSession&) = delete;
  GdiplusSession& operator=(const GdiplusSession&) = delete;

 private:
  ULONG_PTR token_ = 0;
};

// A rendered copy of a picture, as the clipboard holds it.
class BitmapImage : public ClipboardImage {
 public:
  BitmapImage(int32_t width, int32_t height, std::vector<uint32_t> pixels)
      : width_(width), height_(height), pixels_(std::move(pixels)) {}
  int32_t width() const override { return width_; }
  int32_t height() const override { return height_; }
  std::vector<uint32_t> Pixels() const override { return pixels_; }
  bool SavePng(const std::string& path) const override {
    GdiplusSession session;
    Gdiplus::Bitmap bitmap(width_, height_, width_ * 4, PixelFormat32bppARGB,
                           reinterpret_cast<BYTE*>(const_cast<uint32_t*>(pixels_.data())));
    CLSID png;
    if (!PngEncoder(&png)) return false;
    return bitmap.Save(WideOf(path.c_str()).c_str(), &png, nullptr) == Gdiplus::Ok;
  }

 private:
  int32_t width_;
  int32_t height_;
  std::vector<uint32_t> pixels_;
};

}  // namespace

struct PictureBox::Canvas {
  GdiplusSession session;
  std::unique_ptr<Gdiplus::Bitmap> bitmap;
  std::unique_ptr<Gdiplus::Graphics> graphics;
  Gdiplus::GraphicsPath path;  // what the next Stroke draws
  // The face chosen by SelectFace and its em size in pixels.
  std::unique_ptr<Gdiplus::FontFamily> family;
  double em_px = 0;
};

PictureBox::PictureBox(int32_t width_px, int32_t height_px, ScaleMode mode)
    : width_(width_px), height_(height_px), mode_(mode) {
  Clear();
}

PictureBox::~PictureBox() {
  if (canvas_) {
    canvas_->graphics.reset();
    canvas_->bitmap.reset();
    canvas_->family.reset();
  }
}

void PictureBox::Clear() {
  if (!canvas_) canvas_ = std::make_unique<Canvas>();
  canvas_->graphics.reset();
  canvas_->bitmap = std::make_unique<Gdiplus::Bitmap>(std::max(width_, 1), std::max(height_, 1),
                                                      PixelFormat32bppARGB);
  canvas_->graphics = std::make_unique<Gdiplus::Graphics>(canvas_->bitmap.get());
  canvas_->graphics->SetSmoothingMode(Gdiplus::SmoothingModeAntiAlias);
  canvas_->graphics->SetTextRenderingHint(Gdiplus::TextRenderingHintAntiAlias);
  canvas_->graphics->SetPixelOffsetMode(Gdiplus::PixelOffsetModeHalf);
  canvas_->graphics->Clear(ColorOf(back_color_));
}

void PictureBox::Stroke(int32_t color) {
  Gdiplus::Pen pen(ColorOf(color), static_cast<Gdiplus::REAL>(line_width_));
  if (!dashes_px_.empty()) {
    // GDI+ dash lengths are in pen widths.
    std::vector<Gdiplus::REAL> pattern;
    for (double d : dashes_px_) {
      pattern.push_back(static_cast<Gdiplus::REAL>(std::max(d / line_width_, 0.01)));
    }
    pen.SetDashPattern(pattern.data(), static_cast<INT>(pattern.size()));
  }
  canvas_->graphics->DrawPath(&pen, &canvas_->path);
  canvas_->path.Reset();
}

void PictureBox::DrawLine(double x1, double y1, double x2, double y2, int32_t color) {
  double sx = PixelsPerUnitX(), sy = PixelsPerUnitY();
  canvas_->path.AddLine(static_cast<Gdiplus::REAL>(x1 * sx), static_cast<Gdiplus::REAL>(y1 * sy),
                        static_cast<Gdiplus::REAL>(x2 * sx), static_cast<Gdiplus::REAL>(y2 * sy));
  Stroke(color);
}

void PictureBox::DrawCircle(double cx, double cy, double radius, int32_t color) {
  double px = cx * PixelsPerUnitX(), py = cy * PixelsPerUnitY(), r = radius * PixelsPerUnitX();
  canvas_->path.AddEllipse(static_cast<Gdiplus::REAL>(px - r), static_cast<Gdiplus::REAL>(py - r),
                           static_cast<Gdiplus::REAL>(2 * r), static_cast<Gdiplus::REAL>(2 * r));
  Stroke(color);
}

void PictureBox::DrawArc(double cx, double cy, double radius, int32_t color, double start,
                         double end) {
  double px = cx * PixelsPerUnitX(), py = cy * PixelsPerUnitY(), r = radius * PixelsPerUnitX();
  double a = std::fabs(start), b = std::fabs(end);
  double sweep = b - a;
  while (sweep <= 0) sweep += 2 * std::numbers::pi;
  // GDI+ angles run clockwise on the screen (y down): counter-clockwise
  // from a is a negative sweep from -a.
  constexpr double kDeg = 180.0 / std::numbers::pi;
  canvas_->path.AddArc(static_cast<Gdiplus::REAL>(px - r), static_cast<Gdiplus::REAL>(py - r),
                       static_cast<Gdiplus::REAL>(2 * r), static_cast<Gdiplus::REAL>(2 * r),
                       static_cast<Gdiplus::REAL>(-a * kDeg), static_cast<Gdiplus::REAL>(-sweep * kDeg));
  for (double angle : {start < 0 ? a : -1.0, end < 0 ? b : -1.0}) {
    if (angle < 0) continue;
    canvas_->path.StartFigure();
    canvas_->path.AddLine(static_cast<Gdiplus::REAL>(px), static_cast<Gdiplus::REAL>(py),
                          static_cast<Gdiplus::REAL>(px + r * std::cos(angle)),
                          static_cast<Gdiplus::REAL>(py - r * std::sin(angle)));
  }
  Stroke(color);
}

void PictureBox::FillRings(std::span<const std::vector<geometry::Vec2>> rings, int32_t color) {
  double sx = PixelsPerUnitX(), sy = PixelsPerUnitY();
  Gdiplus::GraphicsPath path(Gdiplus::FillModeAlternate);
  for (const auto& ring : rings) {
    if (ring.size() < 2) continue;
    std::vector<Gdiplus::PointF> points;
    for (const auto& p : ring) {
      points.emplace_back(static_cast<Gdiplus::REAL>(p.x * sx), static_cast<Gdiplus::REAL>(p.y * sy));
    }
    path.AddPolygon(points.data(), static_cast<INT>(points.size()));
  }
  Gdiplus::SolidBrush brush(ColorOf(color));
  canvas_->graphics->FillPath(&brush, &path);
}

void PictureBox::SelectFace(const char* family, double cap_px) {
  canvas_->family = std::make_unique<Gdiplus::FontFamily>(WideOf(family).c_str());
  if (canvas_->family->GetLastStatus() != Gdiplus::Ok) {
    canvas_->family.reset(Gdiplus::FontFamily::GenericSansSerif()->Clone());
  }
  // A drawing's text height is the height of its capitals: measure "H" at
  // a known em size and scale.
  constexpr Gdiplus::REAL kProbeEm = 1000;
  Gdiplus::GraphicsPath probe;
  probe.AddString(L"H", 1, canvas_->family.get(), Gdiplus::FontStyleRegular, kProbeEm,
                  Gdiplus::PointF(0, 0), Gdiplus::StringFormat::GenericTypographic());
  Gdiplus::RectF bounds;
  probe.GetBounds(&bounds);
  canvas_->em_px = bounds.Height > 0 ? cap_px * kProbeEm / bounds.Height : cap_px;
}

double PictureBox::TextWidth(const char* utf8, const char* family, double height) {
  double cap = height * PixelsPerUnitY();
  if (!(cap > 0)) return 0;
  SelectFace(family, cap);
  std::wstring text = WideOf(utf8);
  Gdiplus::Font font(canvas_->family.get(), static_cast<Gdiplus::REAL>(canvas_->em_px),
                     Gdiplus::FontStyleRegular, Gdiplus::UnitPixel);
  Gdiplus::StringFormat format(Gdiplus::StringFormat::GenericTypographic());
  format.SetFormatFlags(format.GetFormatFlags() | Gdiplus::StringFormatFlagsMeasureTrailingSpaces);
  Gdiplus::RectF box;
  canvas_->graphics->MeasureString(text.c_str(), static_cast<INT>(text.size()), &font,
                                   Gdiplus::PointF(0, 0), &format, &box);
  return box.Width / PixelsPerUnitX();
}

void PictureBox::DrawText(double x, double y, double height, double angle, const char* utf8,
                          const char* family, int32_t color, double align_x, double align_y,
                          double x_scale) {
  double sy = PixelsPerUnitY();
  double cap = height * sy;
  if (cap < 0.5) return;  // below half a pixel nothing shows
  double advance = TextWidth(utf8, family, height) * PixelsPerUnitX();
  std::wstring text = WideOf(utf8);
  Gdiplus::FontFamily* face = canvas_->family.get();
  // The path's origin is the top of the line: the baseline lies one ascent
  // below it.
  double ascent = canvas_->em_px * face->GetCellAscent(Gdiplus::FontStyleRegular) /
                  face->GetEmHeight(Gdiplus::FontStyleRegular);
  Gdiplus::GraphicsPath path;
  path.AddString(text.c_str(), static_cast<INT>(text.size()), face, Gdiplus::FontStyleRegular,
                 static_cast<Gdiplus::REAL>(canvas_->em_px),
                 Gdiplus::PointF(static_cast<Gdiplus::REAL>(-align_x * advance),
                                 static_cast<Gdiplus::REAL>(align_y * cap - ascent)),
                 Gdiplus::StringFormat::GenericTypographic());
  Gdiplus::Matrix place;
  place.Translate(static_cast<Gdiplus::REAL>(x * PixelsPerUnitX()), static_cast<Gdiplus::REAL>(y * sy));
  place.Rotate(static_cast<Gdiplus::REAL>(-angle * 180.0 / std::numbers::pi));
  if (x_scale > 0 && x_scale != 1) place.Scale(static_cast<Gdiplus::REAL>(x_scale), 1);
  path.Transform(&place);
  Gdiplus::SolidBrush brush(ColorOf(color));
  canvas_->graphics->FillPath(&brush, &path);
}

void PictureBox::CopyToClipboard() {
  Windows().SetClipboardBitmap(std::make_shared<BitmapImage>(width_, height_, Pixels()));
}

bool PictureBox::SavePicture(const std::string& path) const {
  if (EndsWith(path, ".svg")) return false;
  return BitmapImage(width_, height_, Pixels()).SavePng(path);
}

std::vector<uint32_t> PictureBox::Pixels() const {
  std::vector<uint32_t> out(static_cast<size_t>(width_) * static_cast<size_t>(height_));
  if (out.empty()) return out;
  Gdiplus::Rect all(0, 0, width_, height_);
  Gdiplus::BitmapData data;
  if (canvas_->bitmap->LockBits(&all, Gdiplus::ImageLockModeRead, PixelFormat32bppARGB, &data) !=
      Gdiplus::Ok) {
    return out;
  }
  for (int y = 0; y < height_; ++y) {
    const auto* row = reinterpret_cast<const uint32_t*>(static_cast<const BYTE*>(data.Scan0) +
                                                        static_cast<ptrdiff_t>(y) * data.Stride);
    std::copy(row, row + width_, out.begin() + static_cast<ptrdiff_t>(y) * width_);
  }
  canvas_->bitmap->UnlockBits(&data);
  return out;
}

}  // namespace tovik
