// The geometric shape of every entity kind, as a list of primitives in WCS
// (or under a placing matrix, for the contents of block references): the
// one description extents, selection, intersection and explode read.
//
// Text has no glyphs here. Its box comes from a stated font model that
// stands in for the host's glyph measurement: every character is
// 0.6 · height · width factor wide and `height` tall, sitting on the
// baseline (no descenders), so "Bottom" alignments coincide with the
// baseline. Multiline text uses the same estimate per line, lines 5/3 of the
// height apart times the line spacing factor.
#ifndef TOVIK_HOST_SHAPES_ENTITY_SHAPES_H_
#define TOVIK_HOST_SHAPES_ENTITY_SHAPES_H_

#include <optional>
#include <variant>
#include <vector>

#include "geometry/box.h"
#include "geometry/intersect.h"
#include "geometry/matrix.h"
#include "geometry/selection_geometry.h"
#include "geometry/vec3.h"
#include "host/core/font_metrics.h"
#include "host/entities/kinds.h"

namespace tovik::host {

// A closed outline of straight edges (a text's box, an image frame).
struct Outline {
  std::vector<geometry::Vec3> points;
};
// One piece of an entity's shape.
using Primitive = std::variant<geometry::Curve, Outline, geometry::Vec3>;

// How deep block references may nest before the contents are ignored (a
// guard against cycles a loader might create; InsertBlock refuses them).
inline constexpr int kMaxBlockNesting = 64;

// Appends the shape of `entity` transformed by `place` (nullptr: as it is,
// in WCS) to *out. Block references contribute their definition's contents
// (nested to any depth, attribute definitions left out) and their
// attribute references; thickness adds the extruded copy of a curve.
void AppendPrimitives(const Entity& entity, const geometry::Matrix4* place,
                      std::vector<Primitive>* out, int depth = 0);

// The matrix taking a block reference's definition coordinates to WCS:
// insertion · OCS(normal) · rotation · scale · (− block origin).
geometry::Matrix4 BlockRefMatrix(const BlockRef::Data& data);
// The same for the MINSERT cell (column, row).
geometry::Matrix4 BlockRefCellMatrix(const BlockRef::Data& data, int column, int row);

// The four corners of a text's box in WCS (font model above), in order
// bottom-left, bottom-right, top-right, top-left of the reading frame;
// nullopt for an empty string. `text` is the shown string (a definition
// shows its tag).
std::optional<std::vector<geometry::Vec3>> TextBox(const TextData& data, std::string_view text);
// The natural width of `text` in the font model (code points counted).
double TextWidth(const TextData& data, std::string_view text);

// Result of measuring primitives.
struct ShapeExtents {
  geometry::BoundingBox box;
  bool unbounded = false;  // a ray or construction line is among them
};
ShapeExtents ExtentsOf(const std::vector<Primitive>& primitives);

// The primitives projected into the plan of `to_plan` for selection tests.
geometry::PlanShape PlanOf(const std::vector<Primitive>& primitives,
                           const geometry::Matrix4& to_plan);

}  // namespace tovik::host

#endif  // TOVIK_HOST_SHAPES_ENTITY_SHAPES_H_
