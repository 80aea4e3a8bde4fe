// A picture of a whole drawing on a preview canvas: the entities of a
// layout, reached late-bound through the automation model, drawn with the
// canvas's lines, circles and arcs (and the surface's fills and texts), in
// their effective colours, block references expanded with their placement.
//
// What the automation model does not describe (a hatch's boundary, the
// block holding a dimension's or a table's picture, a linetype's pattern) comes from a ShapeSource the
// caller may supply; without one such entities are counted as not drawn.
#ifndef TOVIK_PREVIEW_DRAWING_PREVIEW_H_
#define TOVIK_PREVIEW_DRAWING_PREVIEW_H_

#include <array>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "frame/dispatch.h"
#include "geometry/vec3.h"
#include "preview/dwg_picture.h"

namespace tovik {

class ShapeSource {
 public:
  virtual ~ShapeSource() = default;
  // A hatch's boundary loops in world coordinates (arcs flattened); empty
  // when unknown.
  virtual std::vector<std::vector<geometry::Vec3>> HatchLoops(const ObjectRef& hatch) = 0;
  // The block holding the picture of a dimension or a table (placed in
  // world coordinates), or Nothing.
  virtual ObjectRef PictureBlock(const ObjectRef& entity) = 0;
  // The dash pattern of an entity's linetype in drawing units, scaled by
  // the entity's and the drawing's linetype scales: positive dashes,
  // negative gaps, 0 dots. Empty for continuous lines.
  virtual std::vector<double> Dashes(const ObjectRef& entity) = 0;
};

struct PreviewOptions {
  // The layout drawn: "" or "Model" for model space, else a paper layout.
  std::string layout;
  // The drawing window x1, y1, x2, y2; the extents of what is drawn when
  // absent.
  std::optional<std::array<double, 4>> window;
  // White on black instead of black on white (colour 7 follows).
  bool black_background = false;
  ShapeSource* shapes = nullptr;
};

struct PreviewReport {
  size_t drawn = 0;
  // Entities not drawn, by object name ("AcDbRegion").
  std::map<std::string, size_t> not_drawn;
  // Entities drawn approximately (hatch patterns as plain line families,
  // mtext without its formatting), by object name.
  std::map<std::string, size_t> approximated;
};

// Fits the window (or the layout's extents) into the canvas and draws the
// layout's entities. Raises what the host raises for an unknown layout.
PreviewReport DrawDrawingPreview(const ObjectRef& document, DwgPicture& canvas,
                                 const PreviewOptions& options);

// The lines of an MText string without its formatting codes: \P breaks a
// paragraph, \~ is a space, \\ \{ \} are the characters, stacked text
// \Sa^b; shows as a/b, other codes and braces are dropped.
std::vector<std::string> PlainMTextLines(std::string_view text);

// The RGB Long (red in the low byte) of colour index `aci` (1 to 255) in
// the standard palette.
int32_t AciToRgb(int32_t aci);

}  // namespace tovik

#endif  // TOVIK_PREVIEW_DRAWING_PREVIEW_H_
