#include "frame/aci_palette.h"

#include <cmath>

namespace tovik {
namespace {

uint32_t Pack(int r, int g, int b) {
  return (static_cast<uint32_t>(r) << 16) | (static_cast<uint32_t>(g) << 8) |
         static_cast<uint32_t>(b);
}

// The fully saturated colour of `hue` degrees (multiple of 15) as fractions.
void HueFractions(int hue, double f[3]) {
  double h = hue / 60.0;
  int sector = static_cast<int>(h) % 6;
  double t = h - std::floor(h);
  double rising = t, falling = 1 - t;
  switch (sector) {
    case 0: f[0] = 1; f[1] = rising; f[2] = 0; break;
    case 1: f[0] = falling; f[1] = 1; f[2] = 0; break;
    case 2: f[0] = 0; f[1] = 1; f[2] = rising; break;
    case 3: f[0] = 0; f[1] = falling; f[2] = 1; break;
    case 4: f[0] = rising; f[1] = 0; f[2] = 1; break;
    default: f[0] = 1; f[1] = 0; f[2] = falling; break;
  }
}

}  // namespace

uint32_t AciPaletteRgb(int index) {
  static constexpr uint32_t kFixed[10] = {0x000000, 0xFF0000, 0xFFFF00, 0x00FF00,
                                          0x00FFFF, 0x0000FF, 0xFF00FF, 0xFFFFFF,
                                          0x808080, 0xC0C0C0};
  static constexpr int kGrays[6] = {51, 91, 132, 173, 214, 255};
  if (index >= 0 && index <= 9) return kFixed[index];
  if (index >= 250 && index <= 255) {
    int g = kGrays[index - 250];
    return Pack(g, g, g);
  }
  if (index < 10 || index > 255) return 0;
  // 10..249: 24 hues of 15 degrees, each with five values (255, 204, 153,
  // 127, 76), alternately at full and half saturation.
  static constexpr int kValues[5] = {255, 204, 153, 127, 76};
  int offset = index - 10;
  int hue = (offset / 10) * 15;
  int value = kValues[(offset % 10) / 2];
  bool half = (offset % 2) == 1;
  double f[3];
  HueFractions(hue, f);
  int c[3];
  for (int i = 0; i < 3; ++i) {
    double s = half ? 1 - 0.5 * (1 - f[i]) : f[i];
    c[i] = static_cast<int>(value * s);
  }
  return Pack(c[0], c[1], c[2]);
}

}  // namespace tovik
