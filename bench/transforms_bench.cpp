// Point transforms between a block definition and the space holding its
// reference, over a million points, as a client makes them: by member name
// on the implicit AcadSpace instance (each call reads the reference's
// placement from the host), and through the library's own entry point.
// Items per second are points per second.
#include <benchmark/benchmark.h>

#include <array>

#include "frame/dispatch.h"
#include "frame/library_state.h"
#include "frame/zactivex_com.h"
#include "geometry/vector_service.h"
#include "host/core/application.h"
#include "toolkit/acad_space.h"

namespace tovik {
namespace {

constexpr int kPoints = 1'000'000;

struct Drawing {
  std::shared_ptr<host::Application> app = host::Application::Create();
  ObjectRef bref;
  Drawing() {
    ResetLibraryState();
    Variant link(ObjectRef(app->events()));
    GlobalInstance<ZActiveXCOM>()->InitZActiveX(link);
    ObjectRef doc = app->ActiveDocumentRef();
    ObjectRef block = CallMethod(GetProperty(doc, "Blocks").Object(), "Add",
                                 {PointOf({0, 0, 0}), Variant("B")})
                          .Object();
    LetProperty(block, "Origin", PointOf({3, 4, 0}));
    bref = CallMethod(GetProperty(doc, "ModelSpace").Object(), "InsertBlock",
                      {PointOf({10, 20, 0}), Variant("B"), Variant(2.0), Variant(-1.5),
                       Variant(1.0), Variant(0.7)})
               .Object();
  }
};

void BM_FromBlockByName(benchmark::State& state) {
  Drawing d;
  ObjectRef space = GlobalInstance<AcadSpace>();
  for (auto _ : state) {
    for (int i = 0; i < kPoints; ++i) {
      std::array<Variant, 3> args{PointOf({i * 0.001, 1.0, 0}), Variant(d.bref), Variant()};
      CallMethodRef(space, "TranslatePointFromBlock", args);
      benchmark::DoNotOptimize(args[2]);
    }
  }
  state.SetItemsProcessed(state.iterations() * kPoints);
}
BENCHMARK(BM_FromBlockByName)->Unit(benchmark::kMillisecond)->Iterations(1);

void BM_RoundTripDirect(benchmark::State& state) {
  Drawing d;
  for (auto _ : state) {
    for (int i = 0; i < kPoints; ++i) {
      Variant out, back;
      AcadSpace::TranslatePointFromBlock(PointOf({i * 0.001, 1.0, 0}), d.bref, out);
      AcadSpace::TranslatePointToBlock(out, d.bref, back);
      benchmark::DoNotOptimize(back);
    }
  }
  state.SetItemsProcessed(state.iterations() * kPoints);
}
BENCHMARK(BM_RoundTripDirect)->Unit(benchmark::kMillisecond)->Iterations(1);

}  // namespace
}  // namespace tovik

BENCHMARK_MAIN();
