// Speed of the host's geometry members on a drawing of one million lines:
// a window selection of a small area (1,000 hits), a point pick, the
// drawing's extents after an edit, and GetBoundingBox over a selection of
// 32,767 entities. The drawing is built once through the automation
// surface; the index is built by the first query, before timing starts.
#include <benchmark/benchmark.h>

#include <memory>

#include "frame/conversions.h"
#include "frame/dispatch.h"
#include "host/core/application.h"
#include "host/core/document.h"
#include "host/shapes/spatial.h"
#include "host/surface/args.h"

namespace tovik::host {
namespace {

constexpr int kSide = 1000;  // 1000 x 1000 short lines, one per unit cell

struct Drawing {
  std::shared_ptr<Application> app = Application::Create();
  ObjectRef doc = app->ActiveDocumentRef();
  ObjectRef ms = GetProperty(doc, "ModelSpace").Object();
  ObjectRef sets = GetProperty(doc, "SelectionSets").Object();
  ObjectRef first;

  Drawing() {
    for (int y = 0; y < kSide; ++y) {
      for (int x = 0; x < kSide; ++x) {
        ObjectRef line = CallMethod(ms, "AddLine", {PointValue({x + 0.1, y + 0.1, 0}),
                                                    PointValue({x + 0.6, y + 0.4, 0})})
                             .Object();
        if (!first) first = line;
      }
    }
    ObjectRef warm = CallMethod(sets, "Add", {Variant("WARM")}).Object();
    CallMethod(warm, "Select", {Variant(int32_t(0)), PointValue({0, 0, 0}), PointValue({1, 1, 0})});
  }
};

Drawing& Shared() {
  static Drawing* drawing = new Drawing();
  return *drawing;
}

// A 40 x 25 unit window: 1,000 lines entirely inside.
void BM_WindowSelect1000Of1M(benchmark::State& state) {
  Drawing& d = Shared();
  ObjectRef ss = CallMethod(d.sets, "Add", {Variant("W")}).Object();
  const Variant p1 = PointValue({500, 500, 0}), p2 = PointValue({540, 525, 0});
  for (auto _ : state) {
    CallMethod(ss, "Clear");
    CallMethod(ss, "Select", {Variant(int32_t(0)), p1, p2});
  }
  state.counters["selected"] = static_cast<double>(CLng(GetProperty(ss, "Count")));
  CallMethod(ss, "Delete");
}

void BM_PointPick(benchmark::State& state) {
  Drawing& d = Shared();
  ObjectRef ss = CallMethod(d.sets, "Add", {Variant("P")}).Object();
  const Variant p = PointValue({700.35, 300.25, 0});
  for (auto _ : state) {
    CallMethod(ss, "Clear");
    CallMethod(ss, "SelectAtPoint", {p});
  }
  CallMethod(ss, "Delete");
}

// Extents of the whole drawing after one entity moved (the edit re-measures
// that entity only).
void BM_FullExtentsAfterEdit(benchmark::State& state) {
  Drawing& d = Shared();
  Document& doc = *d.app->active_document();
  double dx = 1e-6;
  for (auto _ : state) {
    CallMethod(d.first, "Move", {PointValue({0, 0, 0}), PointValue({dx, 0, 0})});
    dx = -dx;
    benchmark::DoNotOptimize(SpatialOf(doc).Extents(doc.model_space()));
  }
}

// GetBoundingBox of every member of a 32,767-entity selection.
void BM_SelectionExtents32767(benchmark::State& state) {
  Drawing& d = Shared();
  ObjectRef ss = CallMethod(d.sets, "Add", {Variant("E")}).Object();
  CallMethod(ss, "Select", {Variant(int32_t(0)), PointValue({0, 0, 0}), PointValue({1000, 32.767, 0})});
  std::vector<ObjectRef> members;
  for (const Variant& v : ForEach(ss)) members.push_back(v.Object());
  members.resize(std::min<size_t>(members.size(), 32767));
  for (auto _ : state) {
    for (const ObjectRef& e : members) {
      std::vector<Variant> out(2);
      CallMethodRef(e, "GetBoundingBox", out);
      benchmark::DoNotOptimize(out);
    }
  }
  state.counters["entities"] = static_cast<double>(members.size());
  CallMethod(ss, "Delete");
}

BENCHMARK(BM_WindowSelect1000Of1M)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PointPick)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_FullExtentsAfterEdit)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SelectionExtents32767)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tovik::host

BENCHMARK_MAIN();
