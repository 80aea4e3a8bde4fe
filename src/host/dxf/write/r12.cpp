// R12 DXF (AC1009) made from the drawing written as R2000: the form many
// cutting, CAM and older CAD programs read, and the only one some do.
//
// R12 has no handles, owners, subclass markers, CLASSES, OBJECTS or block
// records, and fewer entity kinds. The R2000 text is read back as tags and
// rewritten: tables and entities lose the groups R12 does not define;
// LWPOLYLINE becomes POLYLINE with VERTEX records, MTEXT one TEXT per line,
// ELLIPSE and SPLINE polylines through points on them; kinds R12 cannot
// hold at all are left out and counted in the notes.
#include <cmath>
#include <map>
#include <numbers>
#include <set>

#include "dxf/encoding.h"
#include "dxf/tag_model.h"
#include "dxf/tag_writer.h"
#include "geometry/vec3.h"
#include "host/dxf/binding.h"
#include "host/dxf/dxf_file.h"
#include "host/dxf/write/writer.h"

namespace tovik::host::dxf {
namespace {

using geometry::Vec3;
using ::tovik::dxf::LineEnd;
using ::tovik::dxf::Record;
using ::tovik::dxf::Section;
using ::tovik::dxf::SectionKind;
using ::tovik::dxf::Tag;
using ::tovik::dxf::TagModel;
using ::tovik::dxf::TextEncoder;

// Entity kinds R12 defines, written with their groups.
const std::set<std::string_view> kR12Kinds = {"LINE",   "POINT",   "CIRCLE", "ARC",     "TRACE",
                                              "SOLID",  "TEXT",    "SHAPE",  "INSERT",  "ATTDEF",
                                              "ATTRIB", "POLYLINE", "VERTEX", "SEQEND", "3DFACE",
                                              "DIMENSION"};
// Tables R12 has, in its order.
constexpr std::string_view kR12Tables[] = {"VPORT", "LTYPE", "LAYER", "STYLE", "VIEW", "UCS", "APPID", "DIMSTYLE"};

// Groups R13 and later added to records: handles and owners, subclass
// markers, references to objects, lineweight, plot style, true colour,
// transparency, linetype scale, visibility, shadows, materials.
bool IsLaterGroup(int code) {
  return code == 5 || code == 105 || code == 100 || code == 102 || code == 48 || code == 60 ||
         (code >= 280 && code <= 289) || (code >= 290 && code <= 299) || (code >= 330 && code <= 369) ||
         (code >= 370 && code <= 379) || (code >= 380 && code <= 389) || (code >= 390 && code <= 399) ||
         (code >= 420 && code <= 449);
}

class R12Writer {
 public:
  R12Writer(const TagModel& model, std::vector<std::string>* notes)
      : model_(model), notes_(notes), encoder_(model.code_page()) {}

  std::string Run() {
    Header();
    Tables();
    Blocks();
    Section("ENTITIES");
    if (const auto* s = model_.FindSection("ENTITIES")) {
      for (const Record& r : s->records) Entity(r);
    }
    String(0, "ENDSEC");
    String(0, "EOF");
    for (const auto& [kind, count] : left_out_) {
      notes_->push_back(std::to_string(count) + " " + kind + " left out: R12 has no such entity");
    }
    for (const auto& [what, count] : approximated_) {
      notes_->push_back(std::to_string(count) + " " + what);
    }
    return std::move(out_);
  }

 private:
  void Put(const Tag& tag) { ::tovik::dxf::AppendTag(tag, &encoder_, LineEnd::kLf, &out_); }
  void String(int code, std::string_view text) { Put(Tag::String(code, text)); }
  void Real(int code, double value) { Put(Tag::Double(code, value)); }
  void Int(int code, int64_t value) { Put(Tag::Integer(code, value)); }
  void Point(int code, const Vec3& p, bool z = true) {
    Real(code, p.x);
    Real(code + 10, p.y);
    if (z) Real(code + 20, p.z);
  }
  void Section(std::string_view name) {
    String(0, "SECTION");
    String(2, name);
  }

  void Header() {
    Section("HEADER");
    String(9, "$ACADVER");
    String(1, "AC1009");
    String(9, "$DWGCODEPAGE");
    String(3, model_.code_page().empty() ? "ANSI_1252" : model_.code_page());
    // The variables R12 defines and the drawing has, as it has them.
    constexpr std::string_view kKept[] = {"$INSBASE", "$EXTMIN", "$EXTMAX", "$LIMMIN", "$LIMMAX",
                                          "$LTSCALE", "$TEXTSIZE", "$TEXTSTYLE", "$CLAYER", "$ANGBASE",
                                          "$ANGDIR", "$LUNITS", "$LUPREC", "$AUNITS", "$AUPREC", "$PDMODE",
                                          "$PDSIZE", "$DIMSCALE", "$DIMASZ", "$DIMTXT"};
    for (std::string_view name : kKept) {
      const auto* v = model_.FindVariable(name);
      if (v == nullptr) continue;
      String(9, name);
      for (const Tag& t : v->tags) Put(t);
    }
    String(9, "$HANDLING");
    Int(70, 0);
    String(0, "ENDSEC");
  }

  // A record's head and the groups R12 defines.
  void Stripped(const Record& r) {
    Put(r.head);
    int depth = 0;
    for (const Tag& t : r.tags) {
      if (t.code == 102) {
        depth += !t.text.empty() && t.text[0] == '{' ? 1 : (depth > 0 ? -1 : 0);
        continue;
      }
      if (depth > 0 || IsLaterGroup(t.code)) continue;
      Put(t);
    }
  }

  void Tables() {
    Section("TABLES");
    const auto* tables = model_.FindSection("TABLES");
    for (std::string_view name : kR12Tables) {
      if (tables == nullptr) break;
      for (const auto& table : tables->tables) {
        if (table.Name() != name) continue;
        String(0, "TABLE");
        String(2, name);
        Int(70, static_cast<int64_t>(table.entries.size()));
        for (const Record& e : table.entries) {
          // R12 has one DIMSTYLE form: the R13 groups naming objects go.
          Stripped(e);
        }
        String(0, "ENDTAB");
      }
    }
    String(0, "ENDSEC");
  }

  void Blocks() {
    Section("BLOCKS");
    if (const auto* blocks = model_.FindSection("BLOCKS")) {
      for (const auto& block : blocks->blocks) {
        std::string name = FoldName(block.Name());
        // The spaces' entities are in ENTITIES; other layouts' paper spaces
        // have no place in R12.
        if (name == "*model_space" || name.starts_with("*paper_space")) continue;
        Stripped(block.begin);
        for (const Record& e : block.entities) Entity(e);
        String(0, "ENDBLK");
        String(8, block.end.StringOr(8, "0"));
      }
    }
    String(0, "ENDSEC");
  }

  // The common groups of an entity R12 keeps (layer, linetype, colour,
  // paper space, thickness).
  void Common(const Record& r) {
    int depth = 0;
    for (const Tag& t : r.tags) {
      if (t.code == 102) depth += !t.text.empty() && t.text[0] == '{' ? 1 : (depth > 0 ? -1 : 0);
      if (depth > 0) continue;
      if (t.code == 8 || t.code == 6 || t.code == 62 || t.code == 67 || t.code == 39) Put(t);
    }
  }

  void Entity(const Record& r) {
    std::string_view type = r.type;
    if (kR12Kinds.count(type)) {
      if (r.Find(370) != nullptr) ++approximated_["lineweights left out: R12 has none"];
      Stripped(r);
      for (const Record& f : r.followers) Stripped(f);
    } else if (type == "LWPOLYLINE") {
      LwPolyline(r);
    } else if (type == "MTEXT") {
      MText(r);
    } else if (type == "ELLIPSE") {
      Ellipse(r);
    } else if (type == "SPLINE") {
      Spline(r);
    } else {
      ++left_out_[std::string(type)];
    }
  }

  // Vertices as a POLYLINE: "66 1" (vertices follow), flags, elevation.
  void Polyline(const Record& r, const std::vector<Vec3>& points, const std::vector<double>& bulges,
                bool closed, const Vec3& normal, double elevation) {
    String(0, "POLYLINE");
    Common(r);
    Int(66, 1);
    Point(10, {0, 0, elevation});
    Int(70, closed ? 1 : 0);
    if (normal.x != 0 || normal.y != 0 || normal.z != 1) Point(210, normal);
    for (size_t i = 0; i < points.size(); ++i) {
      String(0, "VERTEX");
      Common(r);
      Point(10, {points[i].x, points[i].y, elevation});
      if (i < bulges.size() && bulges[i] != 0) Real(42, bulges[i]);
    }
    String(0, "SEQEND");
    Common(r);
  }

  void LwPolyline(const Record& r) {
    std::vector<Vec3> points;
    std::vector<double> bulges;
    Vec3 normal{0, 0, 1};
    for (const Tag& t : r.tags) {
      if (t.code == 10) {
        points.push_back(Vec3{t.real, 0, 0});
        bulges.push_back(0);
      } else if (t.code == 20 && !points.empty()) {
        points.back().y = t.real;
      } else if (t.code == 42 && !bulges.empty()) {
        bulges.back() = t.real;
      } else if (t.code >= 210 && t.code <= 230 && t.code % 10 == 0) {
        (t.code == 210 ? normal.x : t.code == 220 ? normal.y : normal.z) = t.real;
      }
    }
    Polyline(r, points, bulges, (r.IntegerOf(70).value_or(0) & 1) != 0, normal, r.DoubleOf(38).value_or(0));
  }

  // One TEXT per line of the MTEXT's plain text, from its insertion point
  // down at the line spacing AutoCAD uses by default (5/3 of the height).
  void MText(const Record& r) {
    std::string text;
    for (const Tag& t : r.tags) {
      if (t.code == 3) text += t.text;
    }
    text += r.StringOr(1);
    std::vector<std::string> lines(1);
    for (size_t i = 0; i < text.size(); ++i) {
      if (text[i] == '\\' && i + 1 < text.size()) {
        char c = text[i + 1];
        if (c == 'P' || c == 'p') {
          lines.emplace_back();
          ++i;
          continue;
        }
        if (c == '\\' || c == '{' || c == '}') {
          lines.back() += c;
          ++i;
          continue;
        }
        // A formatting code up to its ";" (or a single-letter one).
        size_t end = text.find(';', i);
        if (std::string_view("ACFfHLlOoQTWSpc").find(c) != std::string_view::npos && end != std::string::npos) {
          i = end;
          continue;
        }
        if (c == 'L' || c == 'l' || c == 'O' || c == 'o' || c == 'K' || c == 'k') {
          ++i;
          continue;
        }
      }
      if (text[i] == '{' || text[i] == '}') continue;
      if (text.compare(i, 2, "^J") == 0) {
        lines.emplace_back();
        ++i;
        continue;
      }
      lines.back() += text[i];
    }
    Vec3 at{r.DoubleOf(10).value_or(0), r.DoubleOf(20).value_or(0), r.DoubleOf(30).value_or(0)};
    double height = r.DoubleOf(40).value_or(2.5);
    double angle = r.DoubleOf(50).value_or(0);
    if (auto dx = r.DoubleOf(11)) angle = std::atan2(r.DoubleOf(21).value_or(0), *dx);
    double step = height * 5.0 / 3.0;
    for (size_t k = 0; k < lines.size(); ++k) {
      if (lines[k].empty()) continue;
      String(0, "TEXT");
      Common(r);
      // The first line's top at the insertion point: its baseline a height lower.
      double down = height + step * static_cast<double>(k);
      Point(10, {at.x + down * std::sin(angle), at.y - down * std::cos(angle), at.z});
      Real(40, height);
      String(1, lines[k]);
      if (angle != 0) Real(50, angle * 180 / std::numbers::pi);
      if (auto style = r.StringOr(7); !style.empty()) String(7, style);
    }
    ++approximated_["MTEXT written as one TEXT per line (formatting, wrapping and columns lost)"];
  }

  // An ellipse or its arc through 64 points a turn.
  void Ellipse(const Record& r) {
    Vec3 c{r.DoubleOf(10).value_or(0), r.DoubleOf(20).value_or(0), r.DoubleOf(30).value_or(0)};
    Vec3 major{r.DoubleOf(11).value_or(1), r.DoubleOf(21).value_or(0), r.DoubleOf(31).value_or(0)};
    Vec3 normal{r.DoubleOf(210).value_or(0), r.DoubleOf(220).value_or(0), r.DoubleOf(230).value_or(1)};
    double ratio = r.DoubleOf(40).value_or(1);
    double start = r.DoubleOf(41).value_or(0);
    double end = r.DoubleOf(42).value_or(2 * std::numbers::pi);
    if (end <= start) end += 2 * std::numbers::pi;
    Vec3 minor = geometry::Normalized(geometry::Cross(normal, major)).value_or(Vec3{0, 1, 0}) *
                 (geometry::Length(major) * ratio);
    bool closed = std::abs(end - start - 2 * std::numbers::pi) < 1e-9;
    int steps = std::max(8, static_cast<int>(std::ceil(64 * (end - start) / (2 * std::numbers::pi))));
    std::vector<Vec3> points;
    for (int i = 0; i <= steps - (closed ? 1 : 0); ++i) {
      double t = start + (end - start) * i / steps;
      points.push_back(c + major * std::cos(t) + minor * std::sin(t));
    }
    Polyline3D(r, points, closed);
    ++approximated_["ELLIPSE written as polylines through 64 points a turn"];
  }

  // A spline through its fit points, else its control points.
  void Spline(const Record& r) {
    std::vector<Vec3> fit, control;
    for (const Tag& t : r.tags) {
      if (t.code == 10) control.push_back(Vec3{t.real, 0, 0});
      if (t.code == 20 && !control.empty()) control.back().y = t.real;
      if (t.code == 30 && !control.empty()) control.back().z = t.real;
      if (t.code == 11) fit.push_back(Vec3{t.real, 0, 0});
      if (t.code == 21 && !fit.empty()) fit.back().y = t.real;
      if (t.code == 31 && !fit.empty()) fit.back().z = t.real;
    }
    Polyline3D(r, fit.size() >= 2 ? fit : control, (r.IntegerOf(70).value_or(0) & 1) != 0);
    ++approximated_["SPLINE written as polylines through their fit or control points"];
  }

  // WCS points as a 3D POLYLINE (flag 8), which needs no plane.
  void Polyline3D(const Record& r, const std::vector<Vec3>& points, bool closed) {
    String(0, "POLYLINE");
    Common(r);
    Int(66, 1);
    Point(10, {0, 0, 0});
    Int(70, 8 | (closed ? 1 : 0));
    for (const Vec3& p : points) {
      String(0, "VERTEX");
      Common(r);
      Point(10, p);
      Int(70, 32);
    }
    String(0, "SEQEND");
    Common(r);
  }

  const TagModel& model_;
  std::vector<std::string>* notes_;
  TextEncoder encoder_;
  std::string out_;
  std::map<std::string, size_t> left_out_;
  std::map<std::string, size_t> approximated_;
};

}  // namespace

std::string R12FromR2000(const std::string& r2000, std::vector<std::string>* notes) {
  TagModel model = TagModel::Load(r2000, "the drawing written as R2000", ::tovik::dxf::Faults::kThrow);
  std::vector<std::string> own;
  return R12Writer(model, notes != nullptr ? notes : &own).Run();
}

}  // namespace tovik::host::dxf
