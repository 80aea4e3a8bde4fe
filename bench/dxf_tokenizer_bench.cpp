// Throughput of the DXF layer: tokenizer, tag-model load and ASCII write, in
// MB/s of input, on the largest shared drawing and on a synthesized ~100 MB
// file of mixed entities.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

#include "dxf/tag_model.h"
#include "dxf/tag_writer.h"
#include "dxf/tokenizer.h"

namespace tovik::dxf {
namespace {

std::string SharedDir() {
#ifdef TOVIK_SHARED_DIR
  return TOVIK_SHARED_DIR;
#else
  std::string here = __FILE__;
  return here.substr(0, here.rfind('/')) + "/../../shared";
#endif
}

const std::string& Sample() {
  static const std::string bytes = [] {
    std::ifstream file(SharedDir() + "/dxf/acadsharp/sample_AC1018_ascii.dxf", std::ios::binary);
    return std::string((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  }();
  return bytes;
}

// Appends "code\nvalue\n" in AutoCAD's layout.
void Put(std::string* out, int code, std::string_view value) {
  char buffer[16];
  std::snprintf(buffer, sizeof buffer, "%3d\n", code);
  out->append(buffer);
  out->append(value);
  *out += '\n';
}

void PutNumber(std::string* out, int code, double value) {
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%.15g", value);
  Put(out, code, buffer);
}

// An R2018-style ENTITIES section of LINE, CIRCLE, LWPOLYLINE, TEXT and
// INSERT with ATTRIBs, grown to `target` bytes.
std::string Synthesize(std::size_t target) {
  std::string out;
  out.reserve(target + (1 << 20));
  Put(&out, 0, "SECTION");
  Put(&out, 2, "HEADER");
  Put(&out, 9, "$ACADVER");
  Put(&out, 1, "AC1032");
  Put(&out, 0, "ENDSEC");
  Put(&out, 0, "SECTION");
  Put(&out, 2, "ENTITIES");
  unsigned handle = 0x100;
  char hex[16];
  auto common = [&](const char* type, const char* subclass) {
    Put(&out, 0, type);
    std::snprintf(hex, sizeof hex, "%X", handle++);
    Put(&out, 5, hex);
    Put(&out, 330, "1F");
    Put(&out, 100, "AcDbEntity");
    Put(&out, 8, "Layer-1");
    Put(&out, 100, subclass);
  };
  for (int i = 0; out.size() < target; ++i) {
    double x = i * 0.731, y = i * 1.377;
    common("LINE", "AcDbLine");
    PutNumber(&out, 10, x), PutNumber(&out, 20, y), PutNumber(&out, 30, 0.0);
    PutNumber(&out, 11, x + 10.5), PutNumber(&out, 21, y - 3.25), PutNumber(&out, 31, 0.0);
    common("CIRCLE", "AcDbCircle");
    PutNumber(&out, 10, x), PutNumber(&out, 20, y), PutNumber(&out, 30, 0.0);
    PutNumber(&out, 40, 2.5 + i % 7);
    common("LWPOLYLINE", "AcDbPolyline");
    Put(&out, 90, "4");
    Put(&out, 70, "     1");
    for (int v = 0; v < 4; ++v) {
      PutNumber(&out, 10, x + v * 1.1);
      PutNumber(&out, 20, y + v * v * 0.3);
      PutNumber(&out, 42, v == 2 ? 0.41421356237 : 0.0);
    }
    common("TEXT", "AcDbText");
    PutNumber(&out, 10, x), PutNumber(&out, 20, y), PutNumber(&out, 30, 0.0);
    PutNumber(&out, 40, 2.5);
    Put(&out, 1, "Room 101 - storage");
    Put(&out, 100, "AcDbText");
    if (i % 4 == 0) {
      common("INSERT", "AcDbBlockReference");
      Put(&out, 66, "     1");
      Put(&out, 2, "DOOR");
      PutNumber(&out, 10, x), PutNumber(&out, 20, y), PutNumber(&out, 30, 0.0);
      for (int a = 0; a < 2; ++a) {
        common("ATTRIB", "AcDbText");
        PutNumber(&out, 10, x), PutNumber(&out, 20, y), PutNumber(&out, 30, 0.0);
        PutNumber(&out, 40, 1.8);
        Put(&out, 1, a == 0 ? "D-17" : "fire door");
        Put(&out, 100, "AcDbAttribute");
        Put(&out, 2, a == 0 ? "TAG" : "TYPE");
        Put(&out, 70, "     0");
      }
      common("SEQEND", "AcDbEntity");
    }
  }
  Put(&out, 0, "ENDSEC");
  Put(&out, 0, "EOF");
  return out;
}

const std::string& Large() {
  static const std::string bytes = Synthesize(100u << 20);
  return bytes;
}

void RunTokenize(benchmark::State& state, const std::string& bytes) {
  for (auto _ : state) {
    TokenStream stream = Tokenize(bytes, "bench.dxf");
    benchmark::DoNotOptimize(stream.tags.data());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * bytes.size()));
}

void RunLoad(benchmark::State& state, const std::string& bytes) {
  for (auto _ : state) {
    TagModel model = TagModel::Load(bytes, "bench.dxf");  // includes one buffer copy
    benchmark::DoNotOptimize(model.sections().data());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * bytes.size()));
}

void RunWrite(benchmark::State& state, const std::string& bytes) {
  TagModel model = TagModel::Load(bytes, "bench.dxf");
  std::size_t written = 0;
  for (auto _ : state) {
    std::string text = WriteDxf(model);
    written = text.size();
    benchmark::DoNotOptimize(text.data());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * written));
}

void BM_TokenizeSample(benchmark::State& state) { RunTokenize(state, Sample()); }
void BM_LoadSample(benchmark::State& state) { RunLoad(state, Sample()); }
void BM_WriteSample(benchmark::State& state) { RunWrite(state, Sample()); }
void BM_TokenizeLarge(benchmark::State& state) { RunTokenize(state, Large()); }
void BM_LoadLarge(benchmark::State& state) { RunLoad(state, Large()); }
void BM_WriteLarge(benchmark::State& state) { RunWrite(state, Large()); }

BENCHMARK(BM_TokenizeSample)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_LoadSample)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_WriteSample)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_TokenizeLarge)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(2.0);
BENCHMARK(BM_LoadLarge)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(2.0);
BENCHMARK(BM_WriteLarge)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(2.0);

}  // namespace
}  // namespace tovik::dxf

BENCHMARK_MAIN();
