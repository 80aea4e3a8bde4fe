// What the preview canvas needs of a picture surface: its inner size in
// its own scale units, its scale mode, clearing, lines, circles and arcs in
// a colour, a persistent image, and putting that image on the clipboard.
//
// Coordinates are in the surface's scale units with y down, as a picture
// box has them. Colours are RGB Longs with red in the low byte.
#ifndef TOVIK_PREVIEW_PICTURE_SURFACE_H_
#define TOVIK_PREVIEW_PICTURE_SURFACE_H_

#include <cstdint>
#include <span>
#include <vector>

#include "geometry/vec3.h"

namespace tovik {

// The scale modes of a picture box (ScaleMode).
enum class ScaleMode : int16_t {
  kUser = 0,
  kTwips = 1,
  kPoints = 2,
  kPixels = 3,
  kCharacters = 4,
  kInches = 5,
  kMillimeters = 6,
  kCentimeters = 7,
};

class PictureSurface {
 public:
  virtual ~PictureSurface() = default;
  // Inner width and height (ScaleWidth, ScaleHeight) in scale units.
  virtual double InnerWidth() const = 0;
  virtual double InnerHeight() const = 0;
  virtual ScaleMode Mode() const = 0;
  // Keeps what is drawn in a persistent image (AutoRedraw).
  virtual void SetPersistent(bool on) = 0;
  // Clears to the background colour (Cls).
  virtual void Clear() = 0;
  virtual void DrawLine(double x1, double y1, double x2, double y2, int32_t color) = 0;
  // A full circle; an arc from `start` to `end` (radians, counter-clockwise
  // as seen on the screen; a negative angle also draws the radius to that
  // end, as a picture box does).
  virtual void DrawCircle(double cx, double cy, double radius, int32_t color) = 0;
  virtual void DrawArc(double cx, double cy, double radius, int32_t color, double start,
                       double end) = 0;
  // The dash pattern of the lines, circles and arcs drawn from now on:
  // lengths in scale units, alternately drawn and skipped, starting with a
  // drawn one; empty for continuous lines.
  virtual void SetDashes(std::span<const double> on_off) = 0;
  // Closed rings filled by the even-odd rule (a ring inside another is a
  // hole), points in scale units: hatches and solids.
  virtual void FillRings(std::span<const std::vector<geometry::Vec2>> rings, int32_t color) = 0;
  // A line of text anchored at (x, y), its capital letters `height` scale
  // units tall, turned by `angle` radians counter-clockwise on the screen,
  // in the face fontconfig gives for `family`. The anchor is at the
  // fraction align_x of the text's advance (0 left, 0.5 centre, 1 right)
  // and align_y of the capital height above the baseline (0 baseline, 0.5
  // middle, 1 top). x_scale stretches the letters along the baseline.
  virtual void DrawText(double x, double y, double height, double angle, const char* utf8,
                        const char* family, int32_t color, double align_x = 0,
                        double align_y = 0, double x_scale = 1) = 0;
  // The advance width, in scale units, of `utf8` drawn as DrawText would.
  virtual double TextWidth(const char* utf8, const char* family, double height) = 0;
  // Clears the clipboard and puts the persistent image on it as a bitmap.
  virtual void CopyToClipboard() = 0;
};

}  // namespace tovik

#endif  // TOVIK_PREVIEW_PICTURE_SURFACE_H_
