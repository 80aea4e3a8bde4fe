// Plane loops of straight and arc (bulge) segments: area, orientation,
// point containment exact on arcs, and splitting along a line into closed
// pieces that keep their arcs.
//
// A loop is a list of vertices with one bulge per vertex; the bulge of
// vertex i (tan of a quarter of the included angle, positive counter-
// clockwise) shapes the segment from vertex i to vertex i + 1, the last one
// closing back to vertex 0. Segments shorter than kLoopTolerance are
// dropped before any computation, so repeated vertices do no harm.
#ifndef TOVIK_GEOMETRY_LOOP_H_
#define TOVIK_GEOMETRY_LOOP_H_

#include <vector>

#include "geometry/vec3.h"

namespace tovik::geometry {

// Distance within which a point counts as on a loop's boundary, and below
// which a segment is of zero length (in the loop's units: millimetres for
// the library's loops).
inline constexpr double kLoopTolerance = 1e-6;

struct Loop {
  std::vector<Vec2> vertices;
  std::vector<double> bulges;  // one per vertex (missing ones are 0)
};

// Signed area: positive for a counter-clockwise loop; arcs count exactly.
double SignedArea(const Loop& loop);

enum class Containment { kOutside, kInside, kOnBoundary };
// Where p lies: on the boundary within kLoopTolerance, else by winding
// number (non-zero is inside), arcs taken exactly.
Containment Locate(const Loop& loop, const Vec2& p);

// The closed pieces of `loop` on the left and on the right of the directed
// line through `from` and `to` (infinite both ways). Each piece keeps the
// loop's orientation; parts of the boundary that run along the line go to
// the piece they lead into; arcs cut by the line stay arcs. A loop the line
// misses (or only touches) goes whole to its side. Both empty when from and
// to coincide.
struct SplitPieces {
  std::vector<Loop> left, right;
};
SplitPieces SplitByLine(const Loop& loop, const Vec2& from, const Vec2& to);

// A point of segment i at fraction u (0..1) along it.
Vec2 PointOnSegment(const Loop& loop, size_t i, double u);

}  // namespace tovik::geometry

#endif  // TOVIK_GEOMETRY_LOOP_H_
