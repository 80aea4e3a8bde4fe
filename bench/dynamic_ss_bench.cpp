// The walking members of DynamicSS at 1,000, 8,000 and 32,767 members (the
// Integer cap of Count), called by name as add-ins call them. Time per
// member should stay flat as the set grows (Sort2D grows as n log n).
#include <benchmark/benchmark.h>

#include "frame/conversions.h"
#include "frame/dispatch.h"
#include "frame/library_state.h"
#include "frame/zactivex_com.h"
#include "geometry/vector_service.h"
#include "host/core/application.h"
#include "selection/dynamic_ss.h"

namespace tovik {
namespace {

// A drawing of n texts on a grid of rows (heights vary inside a row) and a
// set holding them in creation order.
struct Drawing {
  std::shared_ptr<host::Application> app = host::Application::Create();
  ObjectRef ms;
  std::shared_ptr<DynamicSS> set;
  explicit Drawing(int n) {
    ResetLibraryState();
    Variant link(ObjectRef(app->events()));
    GlobalInstance<ZActiveXCOM>()->InitZActiveX(link);
    ms = GetProperty(app->ActiveDocumentRef(), "ModelSpace").Object();
    set = DynamicSS::Create();
    std::vector<Variant> texts;
    texts.reserve(static_cast<size_t>(n));
    for (int i = 0; i < n; ++i) {
      // Scattered: neighbours in creation order are far apart on the sheet.
      int k = (i * 7919) % n;
      double x = (k % 200) * 10.0, y = (k / 200) * -5.0, h = 1.0 + (k % 3) * 0.5;
      texts.push_back(CallMethod(ms, "AddText", {Variant("T"), PointOf({x, y, 0}), Variant(h)}));
    }
    Fill(texts);
  }
  void Fill(std::vector<Variant> items) {
    set->Clear();
    CallMethod(set, "Add", {Variant(SafeArray::Of({Variant(SafeArray::OfVariants(std::move(items)))}))});
  }
};

template <class Body>
void Run(benchmark::State& state, Body body) {
  const int n = static_cast<int>(state.range(0));
  Drawing d(n);
  std::vector<Variant> members = d.set->Enumerate();
  for (auto _ : state) {
    state.PauseTiming();
    d.Fill(members);
    state.ResumeTiming();
    body(d);
  }
  state.SetItemsProcessed(state.iterations() * n);
}

void BM_Add(benchmark::State& state) {
  Run(state, [](Drawing& d) {
    d.set->Clear();
    CallMethod(d.set, "Add", {Variant(SafeArray::Of({Variant(d.ms)}))});
  });
}
void BM_ItemWalk(benchmark::State& state) {
  Run(state, [](Drawing& d) {
    ObjectRef set = d.set;
    int32_t count = CLng(GetProperty(set, "Count"));
    for (int32_t i = 0; i < count; ++i) benchmark::DoNotOptimize(GetProperty(set, "Item", {Variant(i)}));
  });
}
void BM_Clean(benchmark::State& state) {
  Run(state, [](Drawing& d) { CallMethod(d.set, "Clean"); });
}
void BM_RemoveTypeName(benchmark::State& state) {
  Run(state, [](Drawing& d) { CallMethod(d.set, "RemoveTypeName", {Variant("IAcadText")}); });
}
void BM_ToArray(benchmark::State& state) {
  Run(state, [](Drawing& d) { benchmark::DoNotOptimize(CallMethod(d.set, "ToArray")); });
}
void BM_Sort2D(benchmark::State& state) {
  Run(state, [](Drawing& d) { CallMethod(d.set->Animation(), "Sort2D"); });
}
void BM_Extents(benchmark::State& state) {
  Run(state, [](Drawing& d) { benchmark::DoNotOptimize(GetProperty(d.set->Dimensions(), "Height")); });
}
void BM_ScaleEach(benchmark::State& state) {
  Run(state, [](Drawing& d) { CallMethod(d.set->Animation(), "ScaleEach", {Variant(1.0)}); });
}

#define TOVIK_SET_BENCH(name) \
  BENCHMARK(name)->Arg(1000)->Arg(8000)->Arg(32767)->Unit(benchmark::kMillisecond)
TOVIK_SET_BENCH(BM_Add);
TOVIK_SET_BENCH(BM_ItemWalk);
TOVIK_SET_BENCH(BM_Clean);
TOVIK_SET_BENCH(BM_RemoveTypeName);
TOVIK_SET_BENCH(BM_ToArray);
TOVIK_SET_BENCH(BM_Sort2D);
TOVIK_SET_BENCH(BM_Extents);
TOVIK_SET_BENCH(BM_ScaleEach);

}  // namespace
}  // namespace tovik

BENCHMARK_MAIN();
