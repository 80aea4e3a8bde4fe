// The headless host's costs: building a drawing of one million lines
// through the automation surface (time and heap bytes per entity), and one
// by-name property read on an entity.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include "frame/conversions.h"
#include "frame/dispatch.h"
#include "host/core/application.h"
#include "host/core/document.h"
#include "host/surface/args.h"

namespace {

using tovik::CallMethod;
using tovik::GetProperty;
using tovik::ObjectRef;
using tovik::Variant;

size_t HeapInUse() { return mallinfo2().uordblks; }

// AddLine on model space, one call per line, as a client builds a drawing.
void BM_AddMillionLines(benchmark::State& state) {
  const int64_t count = state.range(0);
  for (auto _ : state) {
    state.PauseTiming();
    auto app = tovik::host::Application::Create();
    ObjectRef doc = app->ActiveDocumentRef();
    ObjectRef ms = GetProperty(doc, "ModelSpace").Object();
    size_t before = HeapInUse();
    state.ResumeTiming();
    for (int64_t i = 0; i < count; ++i) {
      double x = static_cast<double>(i);
      CallMethod(ms, "AddLine",
                 {tovik::host::PointValue({x, 0, 0}), tovik::host::PointValue({x, 1, 0})});
    }
    state.PauseTiming();
    size_t after = HeapInUse();
    state.counters["bytes_per_entity"] =
        static_cast<double>(after - before) / static_cast<double>(count);
    benchmark::DoNotOptimize(app);
    app.reset();
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(BM_AddMillionLines)->Arg(1'000'000)->Unit(benchmark::kMillisecond)->Iterations(1);

// One property read by name: name lookup and invocation.
void BM_ReadLayerByName(benchmark::State& state) {
  auto app = tovik::host::Application::Create();
  ObjectRef ms = GetProperty(app->ActiveDocumentRef(), "ModelSpace").Object();
  ObjectRef line = CallMethod(ms, "AddLine", {tovik::host::PointValue({0, 0, 0}),
                                              tovik::host::PointValue({1, 1, 0})})
                       .Object();
  for (auto _ : state) {
    Variant layer = GetProperty(line, "Layer");
    benchmark::DoNotOptimize(layer);
  }
}
BENCHMARK(BM_ReadLayerByName);

}  // namespace

BENCHMARK_MAIN();
