// Spatial index speed on one million random boxes: bulk build, insert one
// by one, a window query returning about 1,000 hits, and a pick query.
#include <benchmark/benchmark.h>

#include <random>
#include <vector>

#include "geometry/spatial_index.h"

namespace tovik::geometry {
namespace {

constexpr size_t kCount = 1'000'000;
// Boxes spread over 10,000 × 10,000 with sides up to 5: a window of about
// 316 × 316 holds ~1,000 of them.
constexpr double kWorld = 10000.0;
constexpr double kWindow = 316.0;

const std::vector<std::pair<uint64_t, Box2>>& Entries() {
  static const std::vector<std::pair<uint64_t, Box2>> entries = [] {
    std::mt19937_64 rng(1);
    std::uniform_real_distribution<double> pos(0, kWorld), size(0, 5);
    std::vector<std::pair<uint64_t, Box2>> v;
    v.reserve(kCount);
    for (uint64_t i = 0; i < kCount; ++i) {
      const double x = pos(rng), y = pos(rng);
      v.push_back({i, {x, y, x + size(rng), y + size(rng)}});
    }
    return v;
  }();
  return entries;
}

const SpatialIndex& BuiltIndex() {
  static const SpatialIndex index = [] {
    SpatialIndex i;
    i.Build(Entries());
    return i;
  }();
  return index;
}

void BM_Build1M(benchmark::State& state) {
  const auto& entries = Entries();
  for (auto _ : state) {
    SpatialIndex index;
    index.Build(entries);
    benchmark::DoNotOptimize(index.size());
  }
}
BENCHMARK(BM_Build1M)->Unit(benchmark::kMillisecond);

void BM_Insert1M(benchmark::State& state) {
  const auto& entries = Entries();
  for (auto _ : state) {
    SpatialIndex index;
    for (const auto& [id, box] : entries) index.Insert(id, box);
    benchmark::DoNotOptimize(index.size());
  }
}
BENCHMARK(BM_Insert1M)->Unit(benchmark::kMillisecond)->Iterations(1);

void BM_WindowQuery1kHits(benchmark::State& state) {
  const SpatialIndex& index = BuiltIndex();
  std::mt19937_64 rng(2);
  std::uniform_real_distribution<double> pos(0, kWorld - kWindow);
  std::vector<uint64_t> hits;
  size_t total = 0;
  for (auto _ : state) {
    const double x = pos(rng), y = pos(rng);
    hits.clear();
    index.QueryRect({x, y, x + kWindow, y + kWindow}, &hits);
    total += hits.size();
  }
  state.counters["hits"] = benchmark::Counter(static_cast<double>(total), benchmark::Counter::kAvgIterations);
}
BENCHMARK(BM_WindowQuery1kHits)->Unit(benchmark::kMicrosecond);

void BM_PointQuery(benchmark::State& state) {
  const SpatialIndex& index = BuiltIndex();
  std::mt19937_64 rng(3);
  std::uniform_real_distribution<double> pos(0, kWorld);
  std::vector<uint64_t> hits;
  for (auto _ : state) {
    hits.clear();
    index.QueryPoint({pos(rng), pos(rng)}, 0.5, &hits);
    benchmark::DoNotOptimize(hits.data());
  }
}
BENCHMARK(BM_PointQuery)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace tovik::geometry

BENCHMARK_MAIN();
