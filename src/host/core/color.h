// Colours: the stored form (CmColor) and the detached colour object the
// host hands out (IAcadAcCmColor).
#ifndef TOVIK_HOST_CORE_COLOR_H_
#define TOVIK_HOST_CORE_COLOR_H_

#include <cstdint>

#include "frame/member_table.h"

namespace tovik::host {

// AcColorMethod values.
inline constexpr int kColorByLayer = 192;
inline constexpr int kColorByBlock = 193;
inline constexpr int kColorByRgb = 194;
inline constexpr int kColorByAci = 195;
inline constexpr int kColorForeground = 197;

// A colour as entities and layers store it.
struct CmColor {
  uint8_t method = kColorByLayer;
  int16_t index = 256;  // ACI: 0 ByBlock, 1..255, 256 ByLayer
  uint32_t rgb = 0;     // 0x00RRGGBB when method is ByRGB

  static CmColor ByLayer() { return {}; }
  static CmColor ByBlock() { return {kColorByBlock, 0, 0}; }
  static CmColor Aci(int16_t index);
  static CmColor Rgb(uint8_t r, uint8_t g, uint8_t b);
  // Red, green, blue as the colour object reports them: the RGB for ByRGB,
  // the palette colour for ACI, 0 for ByLayer/ByBlock.
  uint32_t EffectiveRgb() const;
  friend bool operator==(const CmColor&, const CmColor&) = default;
};

// The standard ACI palette, 0x00RRGGBB; index 0..255.
uint32_t AciToRgb(int index);
// The palette index nearest to an RGB (1..255).
int16_t NearestAci(uint32_t rgb);

// IAcadAcCmColor: a detached copy; assigning it back to TrueColor applies it.
class ColorObject : public DispatchObject<ColorObject> {
 public:
  explicit ColorObject(CmColor color = {}) : color_(color) {}
  std::string_view TypeName() const override { return "IAcadAcCmColor"; }
  static const MemberTable<ColorObject>& Members();
  const CmColor& color() const { return color_; }

 private:
  CmColor color_;
};

// A fresh colour object holding `color`.
Variant ColorValue(const CmColor& color);
// The colour held by a colour object argument; anything else raises
// Invalid argument.
CmColor ColorArg(const Variant& value, std::string_view member);

}  // namespace tovik::host

#endif  // TOVIK_HOST_CORE_COLOR_H_
