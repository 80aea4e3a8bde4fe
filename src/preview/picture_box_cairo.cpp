// The picture box's drawing on Linux: cairo records what is drawn as
// vector commands, rendered to pixels for PNG and the clipboard and written
// as vectors for SVG.
#include <cairo-svg.h>
#include <cairo.h>

#include <cctype>
#include <cmath>
#include <cstddef>
#include <numbers>

#include "frame/library_state.h"
#include "preview/picture_box.h"

namespace tovik {
namespace {

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
  std::vector<uint32_t> Pixels() const override {
    int w = width(), h = height();
    std::vector<uint32_t> out;
    out.reserve(static_cast<size_t>(w) * static_cast<size_t>(h));
    const unsigned char* data = cairo_image_surface_get_data(image_);
    int stride = cairo_image_surface_get_stride(image_);
    for (int y = 0; y < h; ++y) {
      const auto* row = reinterpret_cast<const uint32_t*>(data + static_cast<ptrdiff_t>(y) * stride);
      out.insert(out.end(), row, row + w);
    }
    return out;
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

struct PictureBox::Canvas {
  cairo_surface_t* recording = nullptr;
  cairo_t* cr = nullptr;
  ~Canvas() {
    if (cr) cairo_destroy(cr);
    if (recording) cairo_surface_destroy(recording);
  }
};

PictureBox::PictureBox(int32_t width_px, int32_t height_px, ScaleMode mode)
    : width_(width_px), height_(height_px), mode_(mode) {
  Clear();
}

PictureBox::~PictureBox() = default;


void PictureBox::Clear() {
  canvas_ = std::make_unique<Canvas>();
  cairo_rectangle_t extents{0, 0, static_cast<double>(width_), static_cast<double>(height_)};
  canvas_->recording = cairo_recording_surface_create(CAIRO_CONTENT_COLOR_ALPHA, &extents);
  canvas_->cr = cairo_create(canvas_->recording);
  SetColor(canvas_->cr, back_color_);
  cairo_paint(canvas_->cr);
}

void PictureBox::Stroke(int32_t color) {
  SetColor(canvas_->cr, color);
  cairo_set_line_width(canvas_->cr, line_width_);
  cairo_set_dash(canvas_->cr, dashes_px_.data(), static_cast<int>(dashes_px_.size()), 0);
  cairo_stroke(canvas_->cr);
}

void PictureBox::DrawLine(double x1, double y1, double x2, double y2, int32_t color) {
  double sx = PixelsPerUnitX(), sy = PixelsPerUnitY();
  cairo_move_to(canvas_->cr, x1 * sx, y1 * sy);
  cairo_line_to(canvas_->cr, x2 * sx, y2 * sy);
  Stroke(color);
}

void PictureBox::DrawCircle(double cx, double cy, double radius, int32_t color) {
  cairo_new_sub_path(canvas_->cr);
  cairo_arc(canvas_->cr, cx * PixelsPerUnitX(), cy * PixelsPerUnitY(), radius * PixelsPerUnitX(), 0,
            2 * std::numbers::pi);
  Stroke(color);
}

void PictureBox::DrawArc(double cx, double cy, double radius, int32_t color, double start,
                         double end) {
  double px = cx * PixelsPerUnitX(), py = cy * PixelsPerUnitY(), r = radius * PixelsPerUnitX();
  // Screen counter-clockwise is cairo's negative direction (y points down).
  double a = std::fabs(start), b = std::fabs(end);
  cairo_new_sub_path(canvas_->cr);
  cairo_arc_negative(canvas_->cr, px, py, r, -a, -b);
  if (start < 0) {
    cairo_move_to(canvas_->cr, px, py);
    cairo_line_to(canvas_->cr, px + r * std::cos(a), py - r * std::sin(a));
  }
  if (end < 0) {
    cairo_move_to(canvas_->cr, px, py);
    cairo_line_to(canvas_->cr, px + r * std::cos(b), py - r * std::sin(b));
  }
  Stroke(color);
}

void PictureBox::FillRings(std::span<const std::vector<geometry::Vec2>> rings, int32_t color) {
  double sx = PixelsPerUnitX(), sy = PixelsPerUnitY();
  for (const auto& ring : rings) {
    if (ring.empty()) continue;
    cairo_move_to(canvas_->cr, ring[0].x * sx, ring[0].y * sy);
    for (size_t k = 1; k < ring.size(); ++k) cairo_line_to(canvas_->cr, ring[k].x * sx, ring[k].y * sy);
    cairo_close_path(canvas_->cr);
  }
  SetColor(canvas_->cr, color);
  cairo_set_fill_rule(canvas_->cr, CAIRO_FILL_RULE_EVEN_ODD);
  cairo_fill(canvas_->cr);
}

void PictureBox::SelectFace(const char* family, double cap_px) {
  // fontconfig picks the face: the family asked for when the machine has
  // it, its closest substitute otherwise (DejaVu Sans on a bare Debian).
  cairo_select_font_face(canvas_->cr, family, CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
  // A drawing's text height is the height of its capital letters: size the
  // face so that its "H" is that tall.
  cairo_set_font_size(canvas_->cr, cap_px);
  cairo_text_extents_t h;
  cairo_text_extents(canvas_->cr, "H", &h);
  cairo_set_font_size(canvas_->cr, h.height > 0 ? cap_px * cap_px / h.height : cap_px);
}

double PictureBox::TextWidth(const char* utf8, const char* family, double height) {
  double cap = height * PixelsPerUnitY();
  if (!(cap > 0)) return 0;
  cairo_save(canvas_->cr);
  SelectFace(family, cap);
  cairo_text_extents_t ext;
  cairo_text_extents(canvas_->cr, utf8, &ext);
  cairo_restore(canvas_->cr);
  return ext.x_advance / PixelsPerUnitX();
}

void PictureBox::DrawText(double x, double y, double height, double angle, const char* utf8,
                          const char* family, int32_t color, double align_x, double align_y,
                          double x_scale) {
  double sy = PixelsPerUnitY();
  double cap = height * sy;
  if (cap < 0.5) return;  // below half a pixel nothing shows
  cairo_save(canvas_->cr);
  cairo_translate(canvas_->cr, x * PixelsPerUnitX(), y * sy);
  cairo_rotate(canvas_->cr, -angle);
  if (x_scale > 0 && x_scale != 1) cairo_scale(canvas_->cr, x_scale, 1);
  SelectFace(family, cap);
  cairo_text_extents_t ext;
  cairo_text_extents(canvas_->cr, utf8, &ext);
  cairo_move_to(canvas_->cr, -align_x * ext.x_advance, align_y * cap);
  SetColor(canvas_->cr, color);
  cairo_show_text(canvas_->cr, utf8);
  cairo_restore(canvas_->cr);
}

void PictureBox::CopyToClipboard() {
  Windows().SetClipboardBitmap(
      std::make_shared<RenderedImage>(Render(canvas_->recording, width_, height_)));
}

bool PictureBox::SavePicture(const std::string& path) const {
  if (EndsWith(path, ".svg")) {
    cairo_surface_t* svg = cairo_svg_surface_create(path.c_str(), width_, height_);
    cairo_t* cr = cairo_create(svg);
    cairo_set_source_surface(cr, canvas_->recording, 0, 0);
    cairo_paint(cr);
    cairo_destroy(cr);
    cairo_surface_finish(svg);
    bool ok = cairo_surface_status(svg) == CAIRO_STATUS_SUCCESS;
    cairo_surface_destroy(svg);
    return ok;
  }
  RenderedImage image(Render(canvas_->recording, width_, height_));
  return image.SavePng(path);
}

std::vector<uint32_t> PictureBox::Pixels() const {
  return RenderedImage(Render(canvas_->recording, width_, height_)).Pixels();
}


}  // namespace tovik
