#include "preview/picture_box.h"

#include "frame/automation_error.h"
#include "frame/conversions.h"

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

}  // namespace

double PictureBox::PixelsPerUnitX() const { return PixelsPerUnit(mode_, false); }
double PictureBox::PixelsPerUnitY() const { return PixelsPerUnit(mode_, true); }
double PictureBox::InnerWidth() const { return width_ / PixelsPerUnitX(); }
double PictureBox::InnerHeight() const { return height_ / PixelsPerUnitY(); }

void PictureBox::SetDashes(std::span<const double> on_off) {
  dashes_px_.clear();
  for (double d : on_off) dashes_px_.push_back(d * PixelsPerUnitX());
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
