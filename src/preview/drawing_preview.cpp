#include "preview/drawing_preview.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <span>
#include <tuple>
#include <unordered_map>

#include "frame/aci_palette.h"
#include "frame/automation_error.h"
#include "frame/conversions.h"
#include "frame/error_trap.h"
#include "frame/runtime_text.h"
#include "geometry/bulge.h"
#include "geometry/matrix.h"
#include "geometry/ocs.h"
#include "geometry/vector_service.h"

namespace tovik {
namespace {

using geometry::Matrix4;
using geometry::Vec2;
using geometry::Vec3;

constexpr double kTwoPi = 2 * std::numbers::pi;
constexpr int kMaxNesting = 16;

// The colour index codes with a meaning of their own.
constexpr int32_t kByBlock = 0, kByLayer = 256, kForeground = 7;
// AcColorMethod values.
constexpr int32_t kMethodByLayer = 192, kMethodByBlock = 193, kMethodByRgb = 194;

// An object's colour as its TrueColor says: an index (0 ByBlock, 256
// ByLayer, 1 to 255) or, for a true colour, the RGB Long in `rgb`.
struct Colour {
  int32_t aci = kByLayer;
  int32_t rgb = -1;
};

Colour ColourOf(const ObjectRef& obj) {
  ObjectRef c = GetProperty(obj, "TrueColor").Object();
  int32_t method = CLng(GetProperty(c, "ColorMethod"));
  if (method == kMethodByLayer) return {kByLayer, -1};
  if (method == kMethodByBlock) return {kByBlock, -1};
  if (method == kMethodByRgb) {
    return {kForeground, CLng(GetProperty(c, "Red")) | CLng(GetProperty(c, "Green")) << 8 |
                             CLng(GetProperty(c, "Blue")) << 16};
  }
  return {std::abs(CLng(GetProperty(c, "ColorIndex"))), -1};
}

// Line families standing in for hatch patterns: angles (degrees) of
// families 3.175 units apart at scale 1 (acadiso.pat); 45° for patterns
// not listed.
std::vector<double> PatternAngles(std::string_view name) {
  if (CaseInsensitiveEqual(name, "LINE")) return {0};
  if (CaseInsensitiveEqual(name, "NET")) return {0, 90};
  if (CaseInsensitiveEqual(name, "ANSI37") || CaseInsensitiveEqual(name, "NET3")) return {45, 135};
  return {45};
}

Vec2 Plan(const Vec3& p) { return {p.x, p.y}; }

}  // namespace

std::vector<std::string> PlainMTextLines(std::string_view s) {
  std::vector<std::string> lines(1);
  for (size_t i = 0; i < s.size(); ++i) {
    char c = s[i];
    if (c == '{' || c == '}') continue;
    if (c != '\\' || i + 1 >= s.size()) {
      lines.back() += c;
      continue;
    }
    char code = s[++i];
    switch (code) {
      case 'P': lines.emplace_back(); break;
      case '~': lines.back() += ' '; break;
      case '\\': case '{': case '}': lines.back() += code; break;
      case 'L': case 'l': case 'O': case 'o': case 'K': case 'k': break;
      case 'S': {  // stacked text a^b or a/b: shown as a/b
        size_t end = s.find(';', i);
        std::string stack(s.substr(i + 1, end == std::string_view::npos ? end : end - i - 1));
        std::replace(stack.begin(), stack.end(), '^', '/');
        std::replace(stack.begin(), stack.end(), '#', '/');
        lines.back() += stack;
        i = end == std::string_view::npos ? s.size() : end;
        break;
      }
      default: {  // \f...; \H...; \C...; and the other codes with an argument
        size_t end = s.find(';', i);
        i = end == std::string_view::npos ? s.size() : end;
      }
    }
  }
  return lines;
}

namespace {

class Renderer {
 public:
  Renderer(const ObjectRef& doc, DwgPicture& canvas, const PreviewOptions& options)
      : doc_(doc), canvas_(canvas), options_(options) {
    ResumeNext trap;
    for (const Variant& layer : ForEach(GetProperty(doc, "Layers").Object())) {
      trap([&] {
        const ObjectRef& l = layer.Object();
        LayerInfo info;
        info.color = ColourOf(l);
        info.visible = CBool(GetProperty(l, "LayerOn")) && !CBool(GetProperty(l, "Freeze"));
        layers_[CStr(GetProperty(l, "Name"))] = info;
      });
    }
    blocks_ = GetProperty(doc, "Blocks").Object();
  }

  PreviewReport Run() {
    ObjectRef space = SpaceBlock();
    std::vector<Variant> items = ForEach(space);
    Fit(items);
    for (const Variant& item : items) Entity(item.Object(), "0", {kForeground, -1});
    return std::move(report_);
  }

 private:
  struct LayerInfo {
    Colour color{kForeground, -1};
    bool visible = true;
  };

  ObjectRef SpaceBlock() {
    const std::string& name = options_.layout;
    if (name.empty() || CaseInsensitiveEqual(name, "Model")) {
      return GetProperty(doc_, "ModelSpace").Object();
    }
    ObjectRef layout =
        CallMethod(GetProperty(doc_, "Layouts").Object(), "Item", {Variant(name)}).Object();
    return GetProperty(layout, "Block").Object();
  }

  // The window, or the extents of the entities with a margin of 2 %.
  void Fit(const std::vector<Variant>& items) {
    double x1, y1, x2, y2;
    if (options_.window) {
      std::tie(x1, y1, x2, y2) = std::tuple((*options_.window)[0], (*options_.window)[1],
                                            (*options_.window)[2], (*options_.window)[3]);
    } else {
      x1 = y1 = HUGE_VAL;
      x2 = y2 = -HUGE_VAL;
      ResumeNext trap;
      for (const Variant& item : items) {
        std::array<Variant, 2> box;
        if (!trap([&] { CallMethodRef(item.Object(), "GetBoundingBox", box); })) continue;
        Vec3 lo = VectorOf(box[0]), hi = VectorOf(box[1]);
        if (!std::isfinite(lo.x + lo.y + hi.x + hi.y)) continue;
        x1 = std::min(x1, lo.x);
        y1 = std::min(y1, lo.y);
        x2 = std::max(x2, hi.x);
        y2 = std::max(y2, hi.y);
      }
      if (x1 > x2) x1 = y1 = 0, x2 = y2 = 1;  // nothing with extents
      double margin = std::max(x2 - x1, y2 - y1) * 0.02;
      if (margin == 0) margin = 1;
      x1 -= margin, y1 -= margin, x2 += margin, y2 += margin;
    }
    canvas_.SetCoordinateToFit(PointOf({x1, y1, 0}), PointOf({x2, y2, 0}));
    view_size_ = std::hypot(x2 - x1, y2 - y1);
  }

  int32_t Rgb(Colour c) const {
    if (c.rgb >= 0) return c.rgb;
    if (c.aci == kForeground || c.aci <= 0 || c.aci > 255) {
      return options_.black_background ? 0xFFFFFF : 0x000000;
    }
    return AciToRgb(c.aci);
  }

  // Draws one entity placed by m_, in the context of the reference that
  // holds it (its layer for entities on layer 0, its colour for ByBlock).
  void Entity(const ObjectRef& e, const std::string& parent_layer, Colour parent_color) {
    std::string kind = CStr(GetProperty(e, "ObjectName"));
    std::string layer = CStr(GetProperty(e, "Layer"));
    if (layer == "0" && depth_ > 0) layer = parent_layer;
    auto it = layers_.find(layer);
    LayerInfo info = it == layers_.end() ? LayerInfo{} : it->second;
    if (!info.visible || !CBool(GetProperty(e, "Visible"))) return;
    Colour aci = ColourOf(e);
    if (aci.rgb < 0 && aci.aci == kByLayer) aci = info.color;
    if (aci.rgb < 0 && aci.aci == kByBlock) aci = parent_color;
    color_ = Rgb(aci);
    SetDashes(e);
    bool drawn = true;
    ResumeNext trap;
    bool ok = trap([&] { drawn = Draw(kind, e, layer, aci); });
    if (!ok || !drawn) {
      ++report_.not_drawn[kind];
    } else {
      ++report_.drawn;
    }
  }

  // The entity's dash pattern on the surface, in picture units under the
  // current placement. Patterns finer than two pixels are drawn solid, as
  // they would show as a grey line anyway.
  void SetDashes(const ObjectRef& e) {
    dashes_.clear();
    if (options_.shapes) {
      std::vector<double> pattern = options_.shapes->Dashes(e);
      double scale = geometry::Length(m_.TransformVector({1, 0, 0})) * canvas_.scale();
      double total = 0;
      for (double d : pattern) total += std::fabs(d) * scale;
      if (total >= 2) {
        // Drawn and skipped lengths alternate, starting with a drawn one;
        // dots are half a pixel; a pattern starting with a gap is turned.
        std::vector<double> runs;
        bool drawing = true;
        for (double d : pattern) {
          bool on = d >= 0;
          double len = on ? std::max(d * scale, 0.5) : -d * scale;
          if (runs.empty() && !on) runs.push_back(0);  // a drawn run of nothing first
          if (!runs.empty() && on == drawing) {
            runs.back() += len;
          } else {
            runs.push_back(len);
            drawing = on;
          }
        }
        if (runs.size() % 2 == 1) runs.push_back(0);
        dashes_ = std::move(runs);  // picture units are the surface's scale units
      }
    }
    canvas_.surface().SetDashes(dashes_);
  }

  bool Draw(const std::string& kind, const ObjectRef& e, const std::string& layer, Colour aci) {
    if (kind == "AcDbLine") {
      Segment(Point(e, "StartPoint"), Point(e, "EndPoint"));
    } else if (kind == "AcDbCircle" || kind == "AcDbArc") {
      auto axes = geometry::ArbitraryAxis(Point(e, "Normal"));
      if (!axes) return false;
      double r = CDbl(GetProperty(e, "Radius"));
      bool full = kind == "AcDbCircle";
      double t0 = full ? 0 : CDbl(GetProperty(e, "StartAngle"));
      double t1 = full ? kTwoPi : CDbl(GetProperty(e, "EndAngle"));
      if (t1 <= t0) t1 += kTwoPi;
      Conic(Point(e, "Center"), axes->x * r, axes->y * r, t0, t1, full);
    } else if (kind == "AcDbEllipse") {
      Vec3 major = Point(e, "MajorAxis");
      auto normal = geometry::Normalized(Point(e, "Normal"));
      if (!normal) return false;
      Vec3 minor = geometry::Cross(*normal, major) * CDbl(GetProperty(e, "RadiusRatio"));
      double t0 = CDbl(GetProperty(e, "StartParameter")), t1 = CDbl(GetProperty(e, "EndParameter"));
      if (t1 <= t0) t1 += kTwoPi;
      Conic(Point(e, "Center"), major, minor, t0, t1, std::fabs(t1 - t0 - kTwoPi) < 1e-12);
    } else if (kind == "AcDbPolyline" || kind == "AcDb2dPolyline") {
      BulgedPolyline(e, kind == "AcDbPolyline" ? 2 : 3);
    } else if (kind == "AcDb3dPolyline" || kind == "AcDbLeader") {
      Points(Flat(e, "Coordinates", 3), kind == "AcDb3dPolyline" && CBool(GetProperty(e, "Closed")));
    } else if (kind == "AcDbSpline") {
      Spline(e);
    } else if (kind == "AcDbPoint") {
      Vec2 p = Plan(m_.TransformPoint(Point(e, "Coordinates")));
      canvas_.DrawCircle(p, 0.5 / canvas_.scale(), color_);
    } else if (kind == "AcDbSolid" || kind == "AcDbTrace") {
      std::vector<Vec3> c = Flat(e, "Coordinates", 3);
      if (c.size() < 4) return false;
      Fill({{c[0], c[1], c[3], c[2]}});
    } else if (kind == "AcDbFace") {
      Points(Flat(e, "Coordinates", 3), true);
    } else if (kind == "AcDbText" || kind == "AcDbAttribute") {
      if (kind == "AcDbAttribute" && CBool(GetProperty(e, "Invisible"))) return true;
      Text(e, kind);
    } else if (kind == "AcDbAttributeDefinition") {
      if (depth_ == 0) Text(e, kind);  // inside blocks the references show the values
    } else if (kind == "AcDbMText") {
      MText(e);
    } else if (kind == "AcDbBlockReference" || kind == "AcDbMInsertBlock") {
      return Insert(e, layer, aci);
    } else if (kind == "AcDbHatch") {
      return Hatch(e);
    } else if ((kind.starts_with("AcDb") && kind.find("Dimension") != std::string::npos) ||
               kind == "AcDbTable") {
      return Dimension(e, layer, aci);
    } else if (kind == "AcDbRay" || kind == "AcDbXline") {
      std::vector<Vec3> p = Flat(e, "Coordinates", 3);
      if (p.size() < 2) return false;
      Vec3 far = p[1] * (4 * view_size_ / std::max(geometry::Length(p[1]), 1e-300));
      Segment(kind == "AcDbRay" ? p[0] : p[0] - far, p[0] + far);
    } else {
      return false;
    }
    return true;
  }

  Vec3 Point(const ObjectRef& e, std::string_view name) { return VectorOf(GetProperty(e, name)); }

  static std::vector<Vec3> Flat(const ObjectRef& e, std::string_view name, size_t dims) {
    std::vector<double> v = GetProperty(e, name).Array().ToDoubles();
    std::vector<Vec3> out;
    for (size_t i = 0; i + dims <= v.size(); i += dims) {
      out.push_back({v[i], v[i + 1], dims == 3 ? v[i + 2] : 0.0});
    }
    return out;
  }

  void Segment(const Vec3& a, const Vec3& b) {
    canvas_.DrawLine(Plan(m_.TransformPoint(a)), Plan(m_.TransformPoint(b)), color_);
  }

  void Points(const std::vector<Vec3>& p, bool closed) {
    for (size_t i = 1; i < p.size(); ++i) Segment(p[i - 1], p[i]);
    if (closed && p.size() > 2) Segment(p.back(), p.front());
  }

  void Fill(std::vector<std::vector<Vec3>> rings) {
    std::vector<std::vector<Vec2>> picture;
    for (const auto& ring : rings) {
      auto& out = picture.emplace_back();
      for (const Vec3& p : ring) {
        Vec2 w = Plan(m_.TransformPoint(p));
        out.push_back(canvas_.ToPicture(w.x, w.y));
      }
    }
    canvas_.surface().FillRings(picture, color_);
  }

  // The conic c + u cos t + v sin t for t from t0 to t1 (world vectors,
  // before the placement m_): an arc or circle through the canvas when it
  // stays circular in the plan, line pieces otherwise.
  void Conic(const Vec3& c, const Vec3& u, const Vec3& v, double t0, double t1, bool full) {
    Vec3 cw = m_.TransformPoint(c), uw = m_.TransformVector(u), vw = m_.TransformVector(v);
    double ru = std::hypot(uw.x, uw.y), rv = std::hypot(vw.x, vw.y);
    double cross = uw.x * vw.y - uw.y * vw.x;
    bool circular = std::fabs(ru - rv) <= 1e-9 * ru && std::fabs(uw.x * vw.x + uw.y * vw.y) <= 1e-9 * ru * rv;
    if (circular && ru > 0) {
      if (full) {
        canvas_.DrawCircle(Plan(cw), ru, color_);
        return;
      }
      double a0 = std::atan2(uw.y, uw.x);
      double s = cross > 0 ? 1 : -1;
      double start = a0 + s * t0, end = a0 + s * t1;
      if (s < 0) std::swap(start, end);
      auto norm = [](double a) {
        a = std::fmod(a, kTwoPi);
        return a < 0 ? a + kTwoPi : a;
      };
      canvas_.DrawArc(Plan(cw), ru, color_, norm(start), norm(end));
      return;
    }
    int n = std::clamp(static_cast<int>(std::ceil((t1 - t0) / kTwoPi * 72)), 4, 360);
    Vec2 prev{};
    for (int k = 0; k <= n; ++k) {
      double t = t0 + (t1 - t0) * k / n;
      Vec2 p = Plan(cw + uw * std::cos(t) + vw * std::sin(t));
      if (k > 0) canvas_.DrawLine(prev, p, color_);
      prev = p;
    }
  }

  void BulgedPolyline(const ObjectRef& e, size_t dims) {
    std::vector<Vec3> p = Flat(e, "Coordinates", dims);
    Vec3 normal = Point(e, "Normal");
    auto axes = geometry::ArbitraryAxis(normal);
    if (!axes || p.empty()) return;
    double elevation = dims == 2 ? CDbl(GetProperty(e, "Elevation")) : 0.0;
    bool closed = CBool(GetProperty(e, "Closed"));
    size_t n = p.size(), segments = closed ? n : n - 1;
    auto world = [&](Vec2 q, double z) { return geometry::FromFrame(*axes, {q.x, q.y, z}); };
    for (size_t i = 0; i < segments; ++i) {
      Vec3 a = p[i], b = p[(i + 1) % n];
      double z = dims == 2 ? elevation : a.z;
      double bulge = CDbl(CallMethod(e, "GetBulge", {Variant(static_cast<int32_t>(i))}));
      auto arc = geometry::BulgeToArc({a.x, a.y}, {b.x, b.y}, bulge);
      if (!arc) {
        Segment(world({a.x, a.y}, z), world({b.x, b.y}, z));
        continue;
      }
      double t1 = arc->end_angle <= arc->start_angle ? arc->end_angle + kTwoPi : arc->end_angle;
      Conic(world(arc->center, z), axes->x * arc->radius, axes->y * arc->radius, arc->start_angle,
            t1, false);
    }
  }

  // A NURBS curve sampled by de Boor's algorithm; fit points joined when a
  // spline has no control points.
  void Spline(const ObjectRef& e) {
    std::vector<Vec3> ctrl = Flat(e, "ControlPoints", 3);
    std::vector<double> knots = GetProperty(e, "Knots").Array().ToDoubles();
    std::vector<double> w = GetProperty(e, "Weights").Array().ToDoubles();
    int p = CLng(GetProperty(e, "Degree"));
    size_t n = ctrl.size();
    if (n < 2 || p < 1 || knots.size() != n + static_cast<size_t>(p) + 1) {
      Points(Flat(e, "FitPoints", 3), false);
      return;
    }
    if (w.size() != n) w.assign(n, 1.0);
    double lo = knots[static_cast<size_t>(p)], hi = knots[n];
    int samples = static_cast<int>(std::min<size_t>(n * 8, 2000));
    std::vector<Vec3> pts;
    for (int k = 0; k <= samples; ++k) {
      double t = lo + (hi - lo) * k / samples;
      size_t span = static_cast<size_t>(p);
      while (span + 1 < n && knots[span + 1] <= t) ++span;
      std::vector<Vec3> d(static_cast<size_t>(p) + 1);
      std::vector<double> dw(static_cast<size_t>(p) + 1);
      for (int j = 0; j <= p; ++j) {
        size_t idx = span - static_cast<size_t>(p) + static_cast<size_t>(j);
        d[static_cast<size_t>(j)] = ctrl[idx] * w[idx];
        dw[static_cast<size_t>(j)] = w[idx];
      }
      for (int r = 1; r <= p; ++r) {
        for (int j = p; j >= r; --j) {
          size_t i = span - static_cast<size_t>(p) + static_cast<size_t>(j);
          double den = knots[i + static_cast<size_t>(p - r) + 1] - knots[i];
          double a = den == 0 ? 0 : (t - knots[i]) / den;
          size_t uj = static_cast<size_t>(j);
          d[uj] = d[uj - 1] * (1 - a) + d[uj] * a;
          dw[uj] = dw[uj - 1] * (1 - a) + dw[uj] * a;
        }
      }
      pts.push_back(d[static_cast<size_t>(p)] * (1.0 / dw[static_cast<size_t>(p)]));
    }
    Points(pts, false);
  }

  // The text's face: the family named by its style's font file.
  std::string FontFamily(const ObjectRef& e) {
    std::string style = CStr(GetProperty(e, "StyleName"));
    auto it = fonts_.find(style);
    if (it != fonts_.end()) return it->second;
    std::string family = "DejaVu Sans";
    ResumeNext trap;
    trap([&] {
      ObjectRef s = CallMethod(GetProperty(doc_, "TextStyles").Object(), "Item", {Variant(style)})
                        .Object();
      std::string file = CStr(GetProperty(s, "fontFile"));
      size_t slash = file.find_last_of("/\\");
      if (slash != std::string::npos) file = file.substr(slash + 1);
      size_t dot = file.rfind('.');
      if (dot != std::string::npos) file = file.substr(0, dot);
      if (!file.empty()) family = file;
    });
    return fonts_[style] = family;
  }

  void TextLine(const std::string& text, const Vec3& at, const Vec3& x_dir, double height,
                const std::string& family, double align_x, double align_y, double x_scale = 1) {
    Vec3 p = m_.TransformPoint(at);
    Vec3 dir = m_.TransformVector(x_dir);
    Vec3 up = m_.TransformVector(geometry::Cross({0, 0, 1}, x_dir));
    double h = height * std::hypot(up.x, up.y) * canvas_.scale();
    Vec2 pic = canvas_.ToPicture(p.x, p.y);
    canvas_.surface().DrawText(pic.x, pic.y, h, std::atan2(dir.y, dir.x), text.c_str(),
                               family.c_str(), color_, align_x, align_y, x_scale);
  }

  void Text(const ObjectRef& e, const std::string& kind) {
    kind_ = kind;
    std::string text = CStr(GetProperty(e, "TextString"));
    if (text.empty()) return;
    int32_t align = CLng(GetProperty(e, "Alignment"));
    double height = CDbl(GetProperty(e, "Height"));
    double rotation = CDbl(GetProperty(e, "Rotation"));
    auto axes = geometry::ArbitraryAxis(Point(e, "Normal"));
    if (!axes) return;
    Vec3 x_dir = geometry::FromFrame(*axes, {std::cos(rotation), std::sin(rotation), 0});
    double width_factor = kind_ == "AcDbText" ? CDbl(GetProperty(e, "ScaleFactor")) : 1.0;
    std::string family = FontFamily(e);
    if (align == 3 || align == 5) {
      // Aligned and fit texts fill the baseline from the insertion point to
      // the alignment point: aligned ones keep their proportions, fit ones
      // their height.
      Vec3 from = Point(e, "InsertionPoint"), to = Point(e, "TextAlignmentPoint");
      Vec3 base = to - from;
      double natural = canvas_.surface().TextWidth(text.c_str(), family.c_str(), 100.0) *
                       height / 100.0 * width_factor;
      double length = geometry::Length(base);
      if (length > 0 && natural > 0) {
        double stretch = length / natural;
        if (align == 3) height *= stretch;
        TextLine(text, from, base * (1 / length), height, family, 0, 0,
                 width_factor * (align == 3 ? 1.0 : stretch));
        return;
      }
    }
    // Left texts start at the insertion point; the others hang on the
    // alignment point.
    bool left = align == 0 || align == 3 || align == 5;
    Vec3 at = Point(e, left ? "InsertionPoint" : "TextAlignmentPoint");
    static constexpr double kColumn[] = {0, 0.5, 1, 0, 0.5, 0, 0, 0.5, 1, 0, 0.5, 1, 0, 0.5, 1};
    static constexpr double kRow[] = {0, 0, 0, 0, 0.5, 0, 1, 1, 1, 0.5, 0.5, 0.5, -0.3, -0.3, -0.3};
    size_t a = align >= 0 && align < 15 ? static_cast<size_t>(align) : 0;
    TextLine(text, at, x_dir, height, family, kColumn[a], kRow[a], width_factor);
  }

  // Paragraphs broken into lines no wider than `width` (drawing units) at
  // spaces; a width of 0 means no wrapping. Widths are measured with the
  // face the text is drawn in.
  std::vector<std::string> Wrapped(const std::vector<std::string>& paragraphs, double width,
                                   double height, const std::string& family) {
    if (!(width > 0)) return paragraphs;
    PictureSurface& s = canvas_.surface();
    // Measure at a fixed 100-unit height and scale: the face's widths are
    // proportional to its height.
    double per_unit = height / 100.0;
    std::vector<std::string> out;
    for (const std::string& paragraph : paragraphs) {
      std::string line;
      size_t i = 0;
      while (i <= paragraph.size()) {
        size_t space = paragraph.find(' ', i);
        if (space == std::string::npos) space = paragraph.size();
        std::string word = paragraph.substr(i, space - i);
        std::string candidate = line.empty() ? word : line + " " + word;
        if (!line.empty() &&
            s.TextWidth(candidate.c_str(), family.c_str(), 100.0) * per_unit > width) {
          out.push_back(line);
          line = word;
        } else {
          line = candidate;
        }
        i = space + 1;
      }
      out.push_back(line);
    }
    return out;
  }

  void MText(const ObjectRef& e) {
    double height = CDbl(GetProperty(e, "Height"));
    std::string family = FontFamily(e);
    std::vector<std::string> lines =
        Wrapped(PlainMTextLines(CStr(GetProperty(e, "TextString"))), CDbl(GetProperty(e, "Width")),
                height, family);
    double rotation = CDbl(GetProperty(e, "Rotation"));
    int32_t attach = std::clamp(CLng(GetProperty(e, "AttachmentPoint")), 1, 9);
    auto axes = geometry::ArbitraryAxis(Point(e, "Normal"));
    if (!axes) return;
    Vec3 x_dir = geometry::FromFrame(*axes, {std::cos(rotation), std::sin(rotation), 0});
    Vec3 y_dir = geometry::FromFrame(*axes, {-std::sin(rotation), std::cos(rotation), 0});
    double spacing = height * 5.0 / 3.0;
    double total = height + spacing * static_cast<double>(lines.size() - 1);
    int row = (attach - 1) / 3, column = (attach - 1) % 3;
    double top = row == 0 ? 0 : row == 1 ? total / 2 : total;  // above the point
    Vec3 at = Point(e, "InsertionPoint");
    for (size_t i = 0; i < lines.size(); ++i) {
      double baseline = top - height - spacing * static_cast<double>(i);
      TextLine(lines[i], at + y_dir * baseline, x_dir, height, family, column * 0.5, 0);
    }
    ++report_.approximated["AcDbMText"];
  }

  // The placement of a block reference's definition (cell offset for the
  // grid of a multiple insert).
  Matrix4 Placement(const ObjectRef& e, const ObjectRef& definition, Vec2 cell) {
    auto axes = geometry::ArbitraryAxis(Point(e, "Normal"));
    if (!axes) throw errors::InvalidCall();
    double r = CDbl(GetProperty(e, "Rotation"));
    Vec3 scale{CDbl(GetProperty(e, "XScaleFactor")), CDbl(GetProperty(e, "YScaleFactor")),
               CDbl(GetProperty(e, "ZScaleFactor"))};
    Matrix4 ocs = Matrix4::FromAxes(axes->x, axes->y, axes->z, Point(e, "InsertionPoint"));
    Matrix4 turn = *Matrix4::Rotation({}, {0, 0, 1}, r);
    return ocs * turn * Matrix4::Translation({cell.x, cell.y, 0}) * Matrix4::Scaling(scale) *
           Matrix4::Translation(-Point(definition, "Origin"));
  }

  bool Insert(const ObjectRef& e, const std::string& layer, Colour aci) {
    if (depth_ >= kMaxNesting) return false;
    ObjectRef definition =
        CallMethod(blocks_, "Item", {GetProperty(e, "Name")}).Object();
    int32_t rows = 1, columns = 1;
    double row_spacing = 0, column_spacing = 0;
    if (CStr(GetProperty(e, "ObjectName")) == "AcDbMInsertBlock") {
      rows = std::max(1, CLng(GetProperty(e, "Rows")));
      columns = std::max(1, CLng(GetProperty(e, "Columns")));
      row_spacing = CDbl(GetProperty(e, "RowSpacing"));
      column_spacing = CDbl(GetProperty(e, "ColumnSpacing"));
    }
    std::vector<Variant> items = ForEach(definition);
    Matrix4 outer = m_;
    int32_t color = color_;
    for (int32_t r = 0; r < rows; ++r) {
      for (int32_t c = 0; c < columns; ++c) {
        m_ = outer * Placement(e, definition, {c * column_spacing, r * row_spacing});
        ++depth_;
        for (const Variant& item : items) Entity(item.Object(), layer, aci);
        --depth_;
      }
    }
    m_ = outer;
    color_ = color;
    Variant attributes = CallMethod(e, "GetAttributes");
    if (attributes.IsArray()) {
      for (const Variant& a : attributes.Array().Items()) Entity(a.Object(), layer, aci);
    }
    return true;
  }

  bool Dimension(const ObjectRef& e, const std::string& layer, Colour aci) {
    if (!options_.shapes || depth_ >= kMaxNesting) return false;
    ObjectRef block = options_.shapes->PictureBlock(e);
    if (!block) return false;
    ++depth_;
    for (const Variant& item : ForEach(block)) Entity(item.Object(), layer, aci);
    --depth_;
    return true;
  }

  // Solid hatches are filled; patterned ones are drawn as the line families
  // of PatternAngles, turned by the pattern angle and spaced by its scale.
  bool Hatch(const ObjectRef& e) {
    if (!options_.shapes) return false;
    auto loops = options_.shapes->HatchLoops(e);
    if (loops.empty()) return false;
    if (CaseInsensitiveEqual(CStr(GetProperty(e, "PatternName")), "SOLID")) {
      Fill(loops);
      return true;
    }
    ++report_.approximated["AcDbHatch"];
    double spacing = 3.175 * CDbl(GetProperty(e, "PatternScale"));
    double turn = CDbl(GetProperty(e, "PatternAngle"));
    for (double degrees : PatternAngles(CStr(GetProperty(e, "PatternName")))) {
      LineFamily(loops, turn + degrees * std::numbers::pi / 180, spacing);
    }
    return true;
  }

  // Parallel lines at `angle`, `spacing` apart, cut to the inside of the
  // loops by the even-odd rule.
  void LineFamily(const std::vector<std::vector<Vec3>>& loops, double angle, double spacing) {
    Vec3 dir{std::cos(angle), std::sin(angle), 0}, across{-dir.y, dir.x, 0};
    double lo = HUGE_VAL, hi = -HUGE_VAL;
    for (const auto& loop : loops) {
      for (const Vec3& p : loop) {
        lo = std::min(lo, geometry::Dot(p, across));
        hi = std::max(hi, geometry::Dot(p, across));
      }
    }
    if (!(spacing > 0) || (hi - lo) / spacing > 5000) spacing = (hi - lo) / 5000;
    if (!(spacing > 0)) return;
    for (double d = std::ceil(lo / spacing) * spacing; d <= hi; d += spacing) {
      std::vector<double> cuts;
      for (const auto& loop : loops) {
        for (size_t i = 0; i < loop.size(); ++i) {
          const Vec3& a = loop[i];
          const Vec3& b = loop[(i + 1) % loop.size()];
          double da = geometry::Dot(a, across) - d, db = geometry::Dot(b, across) - d;
          if ((da < 0) == (db < 0)) continue;
          double t = da / (da - db);
          cuts.push_back(geometry::Dot(a + (b - a) * t, dir));
        }
      }
      std::sort(cuts.begin(), cuts.end());
      for (size_t k = 0; k + 1 < cuts.size(); k += 2) {
        Segment(across * d + dir * cuts[k], across * d + dir * cuts[k + 1]);
      }
    }
  }

  ObjectRef doc_;
  ObjectRef blocks_;
  DwgPicture& canvas_;
  const PreviewOptions& options_;
  PreviewReport report_;
  std::unordered_map<std::string, LayerInfo> layers_;
  std::unordered_map<std::string, std::string> fonts_;
  Matrix4 m_;
  int depth_ = 0;
  int32_t color_ = 0;
  std::vector<double> dashes_;
  std::string kind_;
  double view_size_ = 1;
};

}  // namespace

int32_t AciToRgb(int32_t aci) {
  // The palette is 0x00RRGGBB; an RGB Long has red in the low byte.
  uint32_t rgb = AciPaletteRgb(aci);
  return static_cast<int32_t>(((rgb >> 16) & 0xFF) | (rgb & 0xFF00) | ((rgb & 0xFF) << 16));
}

PreviewReport DrawDrawingPreview(const ObjectRef& document, DwgPicture& canvas,
                                 const PreviewOptions& options) {
  return Renderer(document, canvas, options).Run();
}

}  // namespace tovik
