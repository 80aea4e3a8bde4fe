#include "geometry/loop.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "geometry/bulge.h"

namespace tovik::geometry {
namespace {

struct Segment {
  Vec2 start, end;
  double bulge = 0;
};

double Cross2(const Vec2& a, const Vec2& b) { return a.x * b.y - a.y * b.x; }
double Norm(const Vec2& a) { return std::hypot(a.x, a.y); }

// The loop's segments, zero-length ones dropped.
std::vector<Segment> Segments(const Loop& loop) {
  std::vector<Segment> out;
  const size_t n = loop.vertices.size();
  for (size_t i = 0; i < n; ++i) {
    const Vec2& a = loop.vertices[i];
    const Vec2& b = loop.vertices[(i + 1) % n];
    if (Norm(b - a) <= kLoopTolerance) continue;
    double bulge = i < loop.bulges.size() ? loop.bulges[i] : 0.0;
    out.push_back({a, b, std::isfinite(bulge) ? bulge : 0.0});
  }
  return out;
}

// The circle of a bulged segment with its start angle and signed sweep.
struct ArcOf {
  Vec2 center;
  double radius = 0, start = 0, sweep = 0;
};
std::optional<ArcOf> ArcOfSegment(const Segment& s) {
  std::optional<BulgeArc> arc = BulgeToArc(s.start, s.end, s.bulge);
  if (!arc) return std::nullopt;
  Vec2 d = s.start - arc->center;
  return ArcOf{arc->center, arc->radius, std::atan2(d.y, d.x), IncludedAngle(s.bulge)};
}

// Fraction (0..1 inside the sweep) of the point at angle `angle` on the arc.
double SweepFraction(const ArcOf& arc, double angle) {
  double delta = arc.sweep > 0 ? angle - arc.start : arc.start - angle;
  delta = std::fmod(delta, 2 * kPi);
  if (delta < 0) delta += 2 * kPi;
  return delta / std::fabs(arc.sweep);
}

double DistanceToSegment(const Segment& s, const Vec2& p) {
  if (std::optional<ArcOf> arc = ArcOfSegment(s)) {
    Vec2 d = p - arc->center;
    double u = SweepFraction(*arc, std::atan2(d.y, d.x));
    if (u <= 1) return std::fabs(Norm(d) - arc->radius);
    return std::min(Norm(p - s.start), Norm(p - s.end));
  }
  Vec2 ab = s.end - s.start;
  double t = std::clamp(((p.x - s.start.x) * ab.x + (p.y - s.start.y) * ab.y) / (ab.x * ab.x + ab.y * ab.y), 0.0, 1.0);
  return Norm(p - (s.start + ab * t));
}

// Winding of the chord polygon about p (Sunday's crossing rule).
int ChordWinding(const std::vector<Segment>& segments, const Vec2& p) {
  int winding = 0;
  for (const Segment& s : segments) {
    const Vec2 &a = s.start, &b = s.end;
    double is_left = Cross2(b - a, p - a);
    if (a.y <= p.y) {
      if (b.y > p.y && is_left > 0) ++winding;
    } else if (b.y <= p.y && is_left < 0) {
      --winding;
    }
  }
  return winding;
}

// The arc's cap (between chord and arc) holds p: inside the circle and on
// the arc's side of the chord.
bool InCap(const Segment& s, const ArcOf& arc, const Vec2& p) {
  if (Norm(p - arc.center) >= arc.radius) return false;
  double side = Cross2(s.end - s.start, p - s.start);
  return s.bulge > 0 ? side < 0 : side > 0;  // a positive bulge lies right of the chord
}

// ---------------------------------------------------------------- splitting

// Signed distance of p from the directed line (positive on its left).
struct Line2 {
  Vec2 origin, direction;  // direction of unit length
  double Side(const Vec2& p) const { return Cross2(direction, p - origin); }
  double Along(const Vec2& p) const { return (p.x - origin.x) * direction.x + (p.y - origin.y) * direction.y; }
};

int SignOf(double d) { return d > kLoopTolerance ? 1 : (d < -kLoopTolerance ? -1 : 0); }

// Cuts segment s where it crosses the line; pieces in order.
void CutSegment(const Segment& s, const Line2& line, std::vector<Segment>& out) {
  std::vector<double> cuts;  // fractions strictly inside (0, 1)
  std::optional<ArcOf> arc = ArcOfSegment(s);
  if (!arc) {
    double d0 = line.Side(s.start), d1 = line.Side(s.end);
    if (SignOf(d0) * SignOf(d1) < 0) cuts.push_back(d0 / (d0 - d1));
  } else {
    // |origin + t·direction − centre|² = r²
    Vec2 w = line.origin - arc->center;
    double b = w.x * line.direction.x + w.y * line.direction.y;
    double c = w.x * w.x + w.y * w.y - arc->radius * arc->radius;
    double disc = b * b - c;
    if (disc > 0) {
      double root = std::sqrt(disc);
      for (double t : {-b - root, -b + root}) {
        Vec2 q = line.origin + line.direction * t;
        Vec2 d = q - arc->center;
        double u = SweepFraction(*arc, std::atan2(d.y, d.x));
        double arc_length = std::fabs(arc->sweep) * arc->radius;
        if (u * arc_length > kLoopTolerance && (1 - u) * arc_length > kLoopTolerance) cuts.push_back(u);
      }
    }
  }
  std::sort(cuts.begin(), cuts.end());
  double from = 0;
  Vec2 start = s.start;
  for (double u : cuts) {
    Vec2 at = SegmentPointAt(s.start, s.end, s.bulge, u);
    double bulge = arc ? BulgeFromIncludedAngle(arc->sweep * (u - from)) : 0.0;
    out.push_back({start, at, bulge});
    start = at;
    from = u;
  }
  out.push_back({start, s.end, arc ? BulgeFromIncludedAngle(arc->sweep * (1 - from)) : 0.0});
}

int SegmentSide(const Segment& s, const Line2& line) {
  int side = SignOf(line.Side(SegmentPointAt(s.start, s.end, s.bulge, 0.5)));
  if (side != 0) return side;
  return SignOf(line.Side(s.start)) != 0 ? SignOf(line.Side(s.start)) : SignOf(line.Side(s.end));
}

Loop LoopOf(const std::vector<Segment>& segments) {
  Loop loop;
  for (const Segment& s : segments) {
    loop.vertices.push_back(s.start);
    loop.bulges.push_back(s.bulge);
  }
  return loop;
}

}  // namespace

double SignedArea(const Loop& loop) {
  double area = 0;
  for (const Segment& s : Segments(loop)) {
    area += Cross2(s.start, s.end) / 2 + BulgeSegmentArea(s.start, s.end, s.bulge);
  }
  return area;
}

Containment Locate(const Loop& loop, const Vec2& p) {
  std::vector<Segment> segments = Segments(loop);
  for (const Segment& s : segments) {
    if (DistanceToSegment(s, p) <= kLoopTolerance) return Containment::kOnBoundary;
  }
  int winding = ChordWinding(segments, p);
  for (const Segment& s : segments) {
    if (std::optional<ArcOf> arc = ArcOfSegment(s); arc && InCap(s, *arc, p)) winding += s.bulge > 0 ? 1 : -1;
  }
  return winding != 0 ? Containment::kInside : Containment::kOutside;
}

Vec2 PointOnSegment(const Loop& loop, size_t i, double u) {
  const size_t n = loop.vertices.size();
  double bulge = i < loop.bulges.size() ? loop.bulges[i] : 0.0;
  return SegmentPointAt(loop.vertices[i], loop.vertices[(i + 1) % n], bulge, u);
}

SplitPieces SplitByLine(const Loop& loop, const Vec2& from, const Vec2& to) {
  SplitPieces pieces;
  double length = Norm(to - from);
  if (length <= kLoopTolerance) return pieces;
  const Line2 line{from, (to - from) / length};
  std::vector<Segment> cut;
  for (const Segment& s : Segments(loop)) CutSegment(s, line, cut);
  if (cut.empty()) return pieces;
  const size_t n = cut.size();
  std::vector<int> side(n);
  for (size_t i = 0; i < n; ++i) side[i] = SegmentSide(cut[i], line);

  // A crossing is where the boundary passes from one side to the other:
  // at the end of the last segment on the old side (segments along the
  // line in between lead into the new side).
  std::vector<size_t> crossings;  // segment index where a run starts
  size_t first_sided = n;
  for (size_t i = 0; i < n; ++i) {
    if (side[i] != 0) {
      first_sided = i;
      break;
    }
  }
  if (first_sided == n) return pieces;  // the loop lies along the line
  int current = side[first_sided];
  for (size_t k = 1; k <= n; ++k) {
    size_t i = (first_sided + k) % n;
    if (side[i] == 0 || side[i] == current) continue;
    // Walk back over the segments along the line: the run starts after the
    // last segment on the old side.
    size_t start = i;
    while (side[(start + n - 1) % n] == 0) start = (start + n - 1) % n;
    crossings.push_back(start);
    current = side[i];
  }
  if (crossings.empty()) {
    (current > 0 ? pieces.left : pieces.right).push_back(LoopOf(cut));
    return pieces;
  }
  // Crossings in order along the line, paired: each pair's chord lies inside.
  std::vector<size_t> by_position(crossings.size());
  for (size_t k = 0; k < crossings.size(); ++k) by_position[k] = k;
  std::sort(by_position.begin(), by_position.end(), [&](size_t a, size_t b) {
    return line.Along(cut[crossings[a]].start) < line.Along(cut[crossings[b]].start);
  });
  std::vector<size_t> partner(crossings.size());
  for (size_t k = 0; k + 1 < by_position.size(); k += 2) {
    partner[by_position[k]] = by_position[k + 1];
    partner[by_position[k + 1]] = by_position[k];
  }
  // Each run goes from its crossing along the boundary to the next
  // crossing; a piece follows runs, jumping along chords between partners.
  std::vector<bool> used(crossings.size(), false);
  for (size_t start = 0; start < crossings.size(); ++start) {
    if (used[start]) continue;
    std::vector<Segment> piece;
    int piece_side = 0;
    size_t run = start;
    for (size_t guard = 0; guard <= crossings.size() && !used[run]; ++guard) {
      used[run] = true;
      size_t next_run = (run + 1) % crossings.size();
      size_t i = crossings[run];
      do {
        piece.push_back(cut[i]);
        if (piece_side == 0) piece_side = side[i];
        i = (i + 1) % n;
      } while (i != crossings[next_run]);
      // The chord from where the run ends to its partner's start.
      size_t jump = partner[next_run];
      Vec2 chord_from = cut[crossings[next_run]].start, chord_to = cut[crossings[jump]].start;
      if (Norm(chord_to - chord_from) > kLoopTolerance) piece.push_back({chord_from, chord_to, 0.0});
      run = jump;
    }
    if (piece_side != 0 && piece.size() >= 2) (piece_side > 0 ? pieces.left : pieces.right).push_back(LoopOf(piece));
  }
  return pieces;
}

}  // namespace tovik::geometry
