// tovik preview: a picture of a drawing, drawn by the library's preview
// canvas on a cairo picture box and written as PNG or SVG.
#include "cli/preview_command.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "frame/automation_error.h"
#include "frame/conversions.h"
#include "frame/runtime_text.h"
#include "geometry/bulge.h"
#include "geometry/ocs.h"
#include "host/core/application.h"
#include "host/core/document.h"
#include "host/dxf/dxf_file.h"
#include "host/dxf/source.h"
#include "host/entities/kinds.h"
#include "host/tables/block.h"
#include "host/tables/records.h"
#include "preview/drawing_preview.h"
#include "preview/picture_box.h"

namespace tovik::cli {
namespace {

using geometry::Vec2;
using geometry::Vec3;

// The hatch boundaries and dimension pictures the automation model keeps
// to itself, read from the headless host's own objects.
class HostShapes : public ShapeSource {
 public:
  std::vector<std::vector<Vec3>> HatchLoops(const ObjectRef& hatch) override {
    std::vector<std::vector<Vec3>> out;
    const auto* h = host::As<host::Hatch>(hatch.get());
    if (!h) return out;
    const auto& d = h->data();
    auto axes = geometry::ArbitraryAxis(d.normal);
    if (!axes) return out;
    auto world = [&](Vec2 p) { return geometry::FromFrame(*axes, {p.x, p.y, d.elevation}); };
    for (const host::HatchLoop& loop : d.loops) {
      auto& ring = out.emplace_back();
      size_t n = loop.points.size();
      for (size_t i = 0; i < n; ++i) {
        Vec2 a = loop.points[i], b = loop.points[(i + 1) % n];
        ring.push_back(world(a));
        double bulge = i < loop.bulges.size() ? loop.bulges[i] : 0.0;
        auto arc = geometry::BulgeToArc(a, b, bulge);
        if (!arc) continue;
        double sweep = arc->end_angle - arc->start_angle;
        if (sweep <= 0) sweep += 2 * M_PI;
        int steps = std::max(2, static_cast<int>(sweep / (2 * M_PI) * 72));
        for (int k = 1; k < steps; ++k) {
          double t = arc->reversed ? arc->end_angle - sweep * k / steps
                                   : arc->start_angle + sweep * k / steps;
          ring.push_back(world(arc->center + Vec2{std::cos(t), std::sin(t)} * arc->radius));
        }
      }
    }
    return out;
  }

  std::vector<double> Dashes(const ObjectRef& entity) override {
    const host::Entity* e = host::AsEntity(entity.get());
    if (!e) return {};
    const host::LinetypeRecord* lt = e->props().linetype;
    // ByLayer: the layer's linetype; ByBlock and Continuous: no pattern.
    if (lt && CaseInsensitiveEqual(lt->Name(), "ByLayer") && e->props().layer) {
      lt = e->props().layer->data().linetype;
    }
    if (!lt || lt->data().dashes.empty()) return {};
    double scale = e->props().linetype_scale;
    if (host::Document* doc = e->document()) scale *= CDbl(doc->GetSysVar("LTSCALE"));
    std::vector<double> out = lt->data().dashes;
    for (double& d : out) d *= scale;
    return out;
  }

  ObjectRef PictureBlock(const ObjectRef& entity) override {
    if (const auto* d = host::As<host::Dimension>(entity.get())) {
      return d->data().block ? d->data().block->shared_from_this() : nullptr;
    }
    // A table keeps its whole record; its picture block is named by 2.
    const auto* e = host::AsEntity(entity.get());
    if (!e || !e->document()) return nullptr;
    auto source = host::dxf::SourceOf(*e->document());
    const dxf::Record* record = source ? source->records.ValueOr(e, nullptr) : nullptr;
    const dxf::Tag* name = record ? record->Find(2) : nullptr;
    host::BlockRecord* block = name ? e->document()->blocks().Find(std::string(name->text)) : nullptr;
    return block ? block->shared_from_this() : nullptr;
  }
};

bool ParsePair(const char* text, char sep, double* a, double* b) {
  char* end = nullptr;
  *a = std::strtod(text, &end);
  if (end == text || *end != sep) return false;
  const char* rest = end + 1;
  *b = std::strtod(rest, &end);
  return end != rest && *end == '\0';
}

}  // namespace

int Preview(int argc, char** argv) {
  const char* in = nullptr;
  std::string out;
  int width = 1200, height = 900;
  PreviewOptions options;
  for (int i = 0; i < argc; ++i) {
    std::string arg = argv[i];
    auto next = [&]() -> const char* { return i + 1 < argc ? argv[++i] : nullptr; };
    const char* value = nullptr;
    double w = 0, h = 0;
    if (arg == "-o" && (value = next())) {
      out = value;
    } else if (arg == "--size" && (value = next()) && ParsePair(value, 'x', &w, &h) && w >= 1 &&
               h >= 1 && w <= 20000 && h <= 20000) {
      width = static_cast<int>(w);
      height = static_cast<int>(h);
    } else if (arg == "--layout" && (value = next())) {
      options.layout = value;
    } else if (arg == "--window" && (value = next())) {
      std::array<double, 4> win{};
      if (std::sscanf(value, "%lf,%lf,%lf,%lf", &win[0], &win[1], &win[2], &win[3]) != 4 ||
          !(win[2] > win[0]) || !(win[3] > win[1])) {
        std::fprintf(stderr, "tovik: --window wants X1,Y1,X2,Y2 with X2 > X1 and Y2 > Y1\n");
        return 2;
      }
      options.window = win;
    } else if (arg == "--background" && (value = next()) &&
               (std::string(value) == "black" || std::string(value) == "white")) {
      options.black_background = std::string(value) == "black";
    } else if (!in && arg[0] != '-') {
      in = argv[i];
    } else {
      std::fprintf(stderr, "tovik: preview: bad argument '%s'\n", arg.c_str());
      return 2;
    }
  }
  if (!in || out.empty()) {
    std::fprintf(stderr, "usage: tovik preview FILE.dxf -o OUT.png|OUT.svg [--size WxH] "
                         "[--layout NAME] [--window X1,Y1,X2,Y2] [--background black|white]\n");
    return 2;
  }
  auto app = host::Application::Create({.open_drawing = false});
  try {
    auto doc = host::dxf::ReadDrawingFile(*app, in);
    auto box = std::make_shared<PictureBox>(width, height, ScaleMode::kPixels);
    box->set_back_color(options.black_background ? 0x000000 : 0xFFFFFF);
    box->Clear();
    DwgPicture canvas;
    canvas.Attach(box);
    HostShapes shapes;
    options.shapes = &shapes;
    PreviewReport report = DrawDrawingPreview(doc, canvas, options);
    if (!box->SavePicture(out)) {
      std::fprintf(stderr, "tovik: cannot write %s\n", out.c_str());
      return 1;
    }
    std::printf("drawn: %zu entities\n", report.drawn);
    for (const auto& [kind, n] : report.approximated) std::printf("approximated: %s %zu\n", kind.c_str(), n);
    for (const auto& [kind, n] : report.not_drawn) std::printf("not drawn: %s %zu\n", kind.c_str(), n);
    std::fflush(stdout);
    std::_Exit(0);  // the drawing is not taken apart object by object
  } catch (const AutomationError& e) {
    std::fprintf(stderr, "tovik: %s\n", e.Description().c_str());
    return 1;
  }
}

}  // namespace tovik::cli
