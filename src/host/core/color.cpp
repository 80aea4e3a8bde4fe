#include "host/core/color.h"

#include <cmath>
#include <limits>

#include "frame/aci_palette.h"
#include "frame/conversions.h"
#include "host/core/host_error.h"
#include "host/surface/args.h"

namespace tovik::host {
namespace {

uint32_t Pack(int r, int g, int b) {
  return (static_cast<uint32_t>(r) << 16) | (static_cast<uint32_t>(g) << 8) |
         static_cast<uint32_t>(b);
}

}  // namespace

uint32_t AciToRgb(int index) { return AciPaletteRgb(index); }

int16_t NearestAci(uint32_t rgb) {
  int r = (rgb >> 16) & 0xFF, g = (rgb >> 8) & 0xFF, b = rgb & 0xFF;
  int16_t best = 7;
  long best_d = std::numeric_limits<long>::max();
  for (int i = 1; i <= 255; ++i) {
    uint32_t p = AciToRgb(i);
    long dr = r - static_cast<int>((p >> 16) & 0xFF);
    long dg = g - static_cast<int>((p >> 8) & 0xFF);
    long db = b - static_cast<int>(p & 0xFF);
    long d = dr * dr + dg * dg + db * db;
    if (d < best_d) {
      best_d = d;
      best = static_cast<int16_t>(i);
    }
  }
  return best;
}

CmColor CmColor::Aci(int16_t index) {
  if (index == 256) return ByLayer();
  if (index == 0) return ByBlock();
  return {kColorByAci, index, 0};
}

CmColor CmColor::Rgb(uint8_t r, uint8_t g, uint8_t b) {
  uint32_t rgb = Pack(r, g, b);
  return {kColorByRgb, NearestAci(rgb), rgb};
}

uint32_t CmColor::EffectiveRgb() const {
  if (method == kColorByRgb) return rgb;
  if (method == kColorByAci) return AciToRgb(index);
  return 0;
}

const MemberTable<ColorObject>& ColorObject::Members() {
  static const MemberTable<ColorObject> table = [] {
    MemberTable<ColorObject> t;
    t.Property(
        "ColorIndex",
        [](ColorObject& s, CallArgs&) { return Variant(int32_t{s.color_.index}); },
        [](ColorObject& s, CallArgs&, Variant& v) {
          int32_t index = LongArg(v, {"ColorIndex", "ColorIndex"});
          if (index < 0 || index > 256) throw HostError(HostFailure::kInvalidInput);
          s.color_ = CmColor::Aci(static_cast<int16_t>(index));
        });
    t.Property(
        "ColorMethod",
        [](ColorObject& s, CallArgs&) { return Variant(int32_t{s.color_.method}); },
        [](ColorObject& s, CallArgs&, Variant& v) {
          int32_t m = LongArg(v, {"ColorMethod", "ColorMethod"});
          switch (m) {
            case kColorByLayer: s.color_ = CmColor::ByLayer(); break;
            case kColorByBlock: s.color_ = CmColor::ByBlock(); break;
            case kColorByRgb:
              s.color_.rgb = s.color_.EffectiveRgb();
              s.color_.method = kColorByRgb;
              break;
            case kColorByAci:
              if (s.color_.index == 0 || s.color_.index == 256) s.color_.index = 7;
              s.color_.method = kColorByAci;
              break;
            case kColorForeground: s.color_ = {kColorForeground, 7, 0}; break;
            default: throw HostError(HostFailure::kInvalidInput);
          }
        });
    t.Property("Red", [](ColorObject& s, CallArgs&) {
      return Variant(static_cast<int32_t>((s.color_.EffectiveRgb() >> 16) & 0xFF));
    });
    t.Property("Green", [](ColorObject& s, CallArgs&) {
      return Variant(static_cast<int32_t>((s.color_.EffectiveRgb() >> 8) & 0xFF));
    });
    t.Property("Blue", [](ColorObject& s, CallArgs&) {
      return Variant(static_cast<int32_t>(s.color_.EffectiveRgb() & 0xFF));
    });
    t.Method(
        "SetRGB",
        [](ColorObject& s, CallArgs& a) {
          int32_t r = LongArg(a[0], {"Red", "SetRGB"});
          int32_t g = LongArg(a[1], {"Green", "SetRGB"});
          int32_t b = LongArg(a[2], {"Blue", "SetRGB"});
          for (int32_t c : {r, g, b}) {
            if (c < 0 || c > 255) throw HostError(HostFailure::kInvalidInput);
          }
          s.color_ = CmColor::Rgb(static_cast<uint8_t>(r), static_cast<uint8_t>(g),
                                  static_cast<uint8_t>(b));
          return Variant();
        },
        3, 3);
    return t;
  }();
  return table;
}

Variant ColorValue(const CmColor& color) {
  return Variant(std::make_shared<ColorObject>(color));
}

CmColor ColorArg(const Variant& value, std::string_view member) {
  auto color = ObjectAs<ColorObject>(value);
  if (!color) throw InvalidArgument("TrueColor", member);
  return color->color();
}

}  // namespace tovik::host
