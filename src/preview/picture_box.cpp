#include "preview/picture_box.h"

#include <cairo-svg.h>
#include <cairo.h>

#include <cctype>
#include <cmath>
#include <cstddef>
#include <numbers>

#include "frame/automation_error.h"
#include "frame/conversions.h"
#include "frame/library_state.h"

namespace tovik {
namespace {

// Pixels per unit of each scale mode at 96 pixels per inch; characters are
// 120 twips wide and 240 tall.
double PixelsPerUnit(ScaleMode mode, bool vertical) {
  switch (mode) {
    case ScaleMode::kUser:
    case ScaleMode::kPixels: return 1.0;
    case ScaleMode::kTwips: return 1.0 / 15.0;
    case ScaleMode::kPoints: return 96.0 / 72.0;
    case ScaleMode::kCharacters: return vertical ? 16.0 : 8.0;
    case ScaleMode::kInches: return 96.0;
    case ScaleMode::kMillimeters: return 96.0 / 25.4;
    case ScaleMode::kCentimeters: return 96.0 / 2.54;
  }
  return 1.0;
}

void SetColor(cairo_t* cr, int32_t color) {
  cairo_set_source_rgb(cr, (color & 0xFF) / 255.0, ((color >> 8) & 0xFF) / 255.0,
                       ((color >> 16) & 0xFF) / 255.0);
}

// A rendered copy of a picture, as the clipboard holds it.
class RenderedImage : public ClipboardImage {
 public:
  explicit RenderedImage(cairo_surface_t* image) : image_(image) {}
  ~RenderedImage() override { cairo_surface_destroy(image_); }
  int32_t width() const override { return cairo_image_surface_get_width(image_); }
  int32_t height() const override { return cairo_image_surface_get_height(image_); }
  bool SavePng(const std::string& path) const override {
    return cairo_surface_write_to_png(image_, path.c_str()) == CAIRO_STATUS_SUCCESS;
  }

 private:
  cairo_surface_t* image_;
};

cairo_surface_t* Render(cairo_surface_t* recording, int32_t width, int32_t height) {
  cairo_surface_t* image = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height);
  cairo_t* cr = cairo_create(image);
  cairo_set_source_surface(cr, recording, 0, 0);
  cairo_paint(cr);
  cairo_destroy(cr);
  cairo_surface_flush(image);
  return image;
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

}  // namespace

PictureBox::PictureBox(int32_t width_px, int32_t height_px, ScaleMode mode)
    : width_(width_px), height_(height_px), mode_(mode) {
  Clear();
}

PictureBox::~PictureBox() {
  if (cr_) cairo_destroy(cr_);
  if (recording_) cairo_surface_destroy(recording_);
}

double PictureBox::PixelsPerUnitX() const { return PixelsPerUnit(mode_, false); }
double PictureBox::PixelsPerUnitY() const { return PixelsPerUnit(mode_, true); }
double PictureBox::InnerWidth() const { return width_ / PixelsPerUnitX(); }
double PictureBox::InnerHeight() const { return height_ / PixelsPerUnitY(); }

void PictureBox::Clear() {
  if (cr_) cairo_destroy(cr_);
  if (recording_) cairo_surface_destroy(recording_);
  cairo_rectangle_t extents{0, 0, static_cast<double>(width_), static_cast<double>(height_)};
  recording_ = cairo_recording_surface_create(CAIRO_CONTENT_COLOR_ALPHA, &extents);
  cr_ = cairo_create(recording_);
  SetColor(cr_, back_color_);
  cairo_paint(cr_);
}

void PictureBox::Stroke(int32_t color) {
  SetColor(cr_, color);
  cairo_set_line_width(cr_, line_width_);
  cairo_set_dash(cr_, dashes_px_.data(), static_cast<int>(dashes_px_.size()), 0);
  cairo_stroke(cr_);
}

void PictureBox::SetDashes(std::span<const double> on_off) {
  dashes_px_.clear();
  for (double d : on_off) dashes_px_.push_back(d * PixelsPerUnitX());
}

void PictureBox::DrawLine(double x1, double y1, double x2, double y2, int32_t color) {
  double sx = PixelsPerUnitX(), sy = PixelsPerUnitY();
  cairo_move_to(cr_, x1 * sx, y1 * sy);
  cairo_line_to(cr_, x2 * sx, y2 * sy);
  Stroke(color);
}

void PictureBox::DrawCircle(double cx, double cy, double radius, int32_t color) {
  cairo_new_sub_path(cr_);
  cairo_arc(cr_, cx * PixelsPerUnitX(), cy * PixelsPerUnitY(), radius * PixelsPerUnitX(), 0,
            2 * std::numbers::pi);
  Stroke(color);
}

void PictureBox::DrawArc(double cx, double cy, double radius, int32_t color, double start,
                         double end) {
  double px = cx * PixelsPerUnitX(), py = cy * PixelsPerUnitY(), r = radius * PixelsPerUnitX();
  // Screen counter-clockwise is cairo's negative direction (y points down).
  double a = std::fabs(start), b = std::fabs(end);
  cairo_new_sub_path(cr_);
  cairo_arc_negative(cr_, px, py, r, -a, -b);
  if (start < 0) {
    cairo_move_to(cr_, px, py);
    cairo_line_to(cr_, px + r * std::cos(a), py - r * std::sin(a));
  }
  if (end < 0) {
    cairo_move_to(cr_, px, py);
    cairo_line_to(cr_, px + r * std::cos(b), py - r * std::sin(b));
  }
  Stroke(color);
}

void PictureBox::FillRings(std::span<const std::vector<geometry::Vec2>> rings, int32_t color) {
  double sx = PixelsPerUnitX(), sy = PixelsPerUnitY();
  for (const auto& ring : rings) {
    if (ring.empty()) continue;
    cairo_move_to(cr_, ring[0].x * sx, ring[0].y * sy);
    for (size_t k = 1; k < ring.size(); ++k) cairo_line_to(cr_, ring[k].x * sx, ring[k].y * sy);
    cairo_close_path(cr_);
  }
  SetColor(cr_, color);
  cairo_set_fill_rule(cr_, CAIRO_FILL_RULE_EVEN_ODD);
  cairo_fill(cr_);
}

void PictureBox::SelectFace(const char* family, double cap_px) {
  // fontconfig picks the face: the family asked for when the machine has
  // it, its closest substitute otherwise (DejaVu Sans on a bare Debian).
  cairo_select_font_face(cr_, family, CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
  // A drawing's text height is the height of its capital letters: size the
  // face so that its "H" is that tall.
  cairo_set_font_size(cr_, cap_px);
  cairo_text_extents_t h;
  cairo_text_extents(cr_, "H", &h);
  cairo_set_font_size(cr_, h.height > 0 ? cap_px * cap_px / h.height : cap_px);
}

double PictureBox::TextWidth(const char* utf8, const char* family, double height) {
  double cap = height * PixelsPerUnitY();
  if (!(cap > 0)) return 0;
  cairo_save(cr_);
  SelectFace(family, cap);
  cairo_text_extents_t ext;
  cairo_text_extents(cr_, utf8, &ext);
  cairo_restore(cr_);
  return ext.x_advance / PixelsPerUnitX();
}

void PictureBox::DrawText(double x, double y, double height, double angle, const char* utf8,
                          const char* family, int32_t color, double align_x, double align_y,
                          double x_scale) {
  double sy = PixelsPerUnitY();
  double cap = height * sy;
  if (cap < 0.5) return;  // below half a pixel nothing shows
  cairo_save(cr_);
  cairo_translate(cr_, x * PixelsPerUnitX(), y * sy);
  cairo_rotate(cr_, -angle);
  if (x_scale > 0 && x_scale != 1) cairo_scale(cr_, x_scale, 1);
  SelectFace(family, cap);
  cairo_text_extents_t ext;
  cairo_text_extents(cr_, utf8, &ext);
  cairo_move_to(cr_, -align_x * ext.x_advance, align_y * cap);
  SetColor(cr_, color);
  cairo_show_text(cr_, utf8);
  cairo_restore(cr_);
}

void PictureBox::CopyToClipboard() {
  Windows().SetClipboardBitmap(
      std::make_shared<RenderedImage>(Render(recording_, width_, height_)));
}

bool PictureBox::SavePicture(const std::string& path) const {
  if (EndsWith(path, ".svg")) {
    cairo_surface_t* svg = cairo_svg_surface_create(path.c_str(), width_, height_);
    cairo_t* cr = cairo_create(svg);
    cairo_set_source_surface(cr, recording_, 0, 0);
    cairo_paint(cr);
    cairo_destroy(cr);
    cairo_surface_finish(svg);
    bool ok = cairo_surface_status(svg) == CAIRO_STATUS_SUCCESS;
    cairo_surface_destroy(svg);
    return ok;
  }
  RenderedImage image(Render(recording_, width_, height_));
  return image.SavePng(path);
}

std::vector<uint32_t> PictureBox::Pixels() const {
  cairo_surface_t* image = Render(recording_, width_, height_);
  std::vector<uint32_t> out;
  out.reserve(static_cast<size_t>(width_) * height_);
  const unsigned char* data = cairo_image_surface_get_data(image);
  int stride = cairo_image_surface_get_stride(image);
  for (int y = 0; y < height_; ++y) {
    const auto* row = reinterpret_cast<const uint32_t*>(data + static_cast<ptrdiff_t>(y) * stride);
    out.insert(out.end(), row, row + width_);
  }
  cairo_surface_destroy(image);
  return out;
}

const MemberTable<PictureBox>& PictureBox::Members() {
  static const MemberTable<PictureBox> table = [] {
    MemberTable<PictureBox> t;
    t.Property("ScaleWidth", [](PictureBox& b, CallArgs&) { return Variant(b.InnerWidth()); });
    t.Property("ScaleHeight", [](PictureBox& b, CallArgs&) { return Variant(b.InnerHeight()); });
    t.Property(
        "ScaleMode", [](PictureBox& b, CallArgs&) { return Variant(int16_t(b.Mode())); },
        [](PictureBox& b, CallArgs&, Variant& v) {
          int16_t mode = CInt(v);
          if (mode < 0 || mode > 7) throw errors::InvalidCall();
          b.SetMode(static_cast<ScaleMode>(mode));
        });
    t.Property(
        "AutoRedraw", [](PictureBox& b, CallArgs&) { return Variant(b.persistent()); },
        [](PictureBox& b, CallArgs&, Variant& v) { b.SetPersistent(CBool(v)); });
    t.Property(
        "BackColor", [](PictureBox& b, CallArgs&) { return Variant(b.back_color()); },
        [](PictureBox& b, CallArgs&, Variant& v) { b.set_back_color(CLng(v)); });
    t.Property("Width", [](PictureBox& b, CallArgs&) { return Variant(b.width_px()); });
    t.Property("Height", [](PictureBox& b, CallArgs&) { return Variant(b.height_px()); });
    t.Method("Cls", [](PictureBox& b, CallArgs&) {
      b.Clear();
      return Variant();
    });
    t.Method(
        "SavePicture",
        [](PictureBox& b, CallArgs& a) {
          if (!b.SavePicture(CStr(a[0]))) throw errors::Runtime(75);  // path/file access error
          return Variant();
        },
        1, 1);
    return t;
  }();
  return table;
}

}  // namespace tovik
