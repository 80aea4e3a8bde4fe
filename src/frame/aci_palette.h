// The standard colour index palette (AutoCAD Color Index) as the host shows
// it: 1 to 9 the named colours, 10 to 249 twenty-four hues 15 degrees apart
// in five values (255, 204, 153, 127, 76), alternately at full and half
// saturation, 250 to 255 greys. Shared by the headless host and the preview.
#ifndef TOVIK_FRAME_ACI_PALETTE_H_
#define TOVIK_FRAME_ACI_PALETTE_H_

#include <cstdint>

namespace tovik {

// The colour of index 0..255 as 0x00RRGGBB; 0 outside.
uint32_t AciPaletteRgb(int index);

}  // namespace tovik

#endif  // TOVIK_FRAME_ACI_PALETTE_H_
