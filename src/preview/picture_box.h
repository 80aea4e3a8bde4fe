// PictureBox: the headless picture surface. On Linux cairo keeps what is
// drawn as vector commands (a recording surface) so that the same picture
// is written as PNG (antialiased) or SVG; on Windows GDI+ draws on an
// antialiased bitmap written as PNG. Its size is in
// pixels; ScaleWidth and ScaleHeight give it in the current scale mode at
// 96 pixels per inch (15 twips per pixel).
//
// Automation members: ScaleWidth, ScaleHeight, ScaleMode (read and
// assigned), AutoRedraw, BackColor, Width and Height in pixels, Cls,
// SavePicture(path) (PNG or SVG by extension).
#ifndef TOVIK_PREVIEW_PICTURE_BOX_H_
#define TOVIK_PREVIEW_PICTURE_BOX_H_

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "frame/member_table.h"
#include "preview/picture_surface.h"

namespace tovik {

class PictureBox : public DispatchObject<PictureBox>, public PictureSurface {
 public:
  static constexpr std::string_view kClassName = "PictureBox";
  // A box of width x height pixels, white, in twips as a new picture box is.
  PictureBox(int32_t width_px, int32_t height_px, ScaleMode mode = ScaleMode::kTwips);
  ~PictureBox() override;
  PictureBox(const PictureBox&) = delete;
  PictureBox& operator=(const PictureBox&) = delete;

  std::string_view TypeName() const override { return kClassName; }
  static const MemberTable<PictureBox>& Members();

  double InnerWidth() const override;
  double InnerHeight() const override;
  ScaleMode Mode() const override { return mode_; }
  void SetMode(ScaleMode mode) { mode_ = mode; }
  void SetPersistent(bool on) override { persistent_ = on; }
  bool persistent() const { return persistent_; }
  void Clear() override;
  void DrawLine(double x1, double y1, double x2, double y2, int32_t color) override;
  void DrawCircle(double cx, double cy, double radius, int32_t color) override;
  void DrawArc(double cx, double cy, double radius, int32_t color, double start,
               double end) override;
  void SetDashes(std::span<const double> on_off) override;
  void FillRings(std::span<const std::vector<geometry::Vec2>> rings, int32_t color) override;
  void DrawText(double x, double y, double height, double angle, const char* utf8,
                const char* family, int32_t color, double align_x = 0, double align_y = 0,
                double x_scale = 1) override;
  double TextWidth(const char* utf8, const char* family, double height) override;
  void CopyToClipboard() override;

  int32_t width_px() const { return width_; }
  int32_t height_px() const { return height_; }
  // Background colour (RGB, red in the low byte) used by Clear.
  void set_back_color(int32_t color) { back_color_ = color; }
  int32_t back_color() const { return back_color_; }
  // Line width in pixels (1 by default).
  void set_line_width(double px) { line_width_ = px; }

  // Writes the picture as PNG or SVG (by the extension of `path`, PNG
  // otherwise). False when the file cannot be written.
  bool SavePicture(const std::string& path) const;
  // The picture rendered to pixels: 0xAARRGGBB per pixel, row by row.
  std::vector<uint32_t> Pixels() const;

 private:
  // Pixels per scale unit along x and y.
  double PixelsPerUnitX() const;
  double PixelsPerUnitY() const;
  void Stroke(int32_t color);
  // Selects `family` sized so that its capitals are cap_px pixels tall.
  void SelectFace(const char* family, double cap_px);

  int32_t width_;
  int32_t height_;
  ScaleMode mode_;
  bool persistent_ = false;
  int32_t back_color_ = 0xFFFFFF;
  double line_width_ = 1.0;
  std::vector<double> dashes_px_;
  // What is drawn, in the platform's drawing library (cairo on Linux, GDI+
  // on Windows).
  struct Canvas;
  std::unique_ptr<Canvas> canvas_;
};

}  // namespace tovik

#endif  // TOVIK_PREVIEW_PICTURE_BOX_H_
