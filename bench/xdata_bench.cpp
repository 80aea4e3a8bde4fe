// Extended-data throughput: the text and group-code forms of a large nested
// table, and typed variables written and read on many entities of a
// headless drawing.
//
// Table conversions report MB/s against the size of the table's text form,
// so the four directions are measured on the same yardstick.
#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <vector>

#include "frame/dispatch.h"
#include "frame/library_state.h"
#include "frame/value_helpers.h"
#include "frame/zactivex_com.h"
#include "host/core/application.h"
#include "xdata/table_format.h"
#include "xdata/xdata.h"

namespace tovik {
namespace {

// A table of `rows` rows; each row holds numbers, texts, Booleans, Empty and
// a nested table three levels deep.
Variant LargeTable(int rows) {
  std::vector<Variant> items;
  items.reserve(static_cast<size_t>(rows));
  for (int r = 0; r < rows; ++r) {
    Variant inner(SafeArray::Of({Variant(r * 0.25), Variant("leaf"),
                                 Variant(SafeArray::Of({Variant(int16_t{7}), Variant(true)}))}));
    items.emplace_back(SafeArray::Of(
        {Variant(static_cast<int16_t>(r % 30000)), Variant(r * 1.5 + 0.125),
         Variant("row " + std::to_string(r)), Variant(r % 2 == 0), Variant(), inner,
         Variant(-3.0e-5 * r), Variant("a somewhat longer text element of the row")}));
  }
  return Variant(SafeArray::OfVariants(std::move(items)));
}

const Variant& SharedTable() {
  static const Variant table = LargeTable(20000);
  return table;
}

const std::string& SharedText() {
  static const std::string text = TableToText(SharedTable());
  return text;
}

void BM_TableToText(benchmark::State& state) {
  size_t bytes = 0;
  for (auto _ : state) {
    std::string text = TableToText(SharedTable());
    bytes += text.size();
    benchmark::DoNotOptimize(text.data());
  }
  state.SetBytesProcessed(static_cast<int64_t>(bytes));
}
BENCHMARK(BM_TableToText)->Unit(benchmark::kMillisecond);

void BM_TextToTable(benchmark::State& state) {
  for (auto _ : state) {
    Variant table = TextToTable(SharedText());
    benchmark::DoNotOptimize(table);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * SharedText().size()));
}
BENCHMARK(BM_TextToTable)->Unit(benchmark::kMillisecond);

void BM_TableToGroupCodes(benchmark::State& state) {
  for (auto _ : state) {
    std::vector<int16_t> codes;
    std::vector<Variant> values;
    AppendTableRun(SharedTable(), codes, values);
    benchmark::DoNotOptimize(values.data());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * SharedText().size()));
}
BENCHMARK(BM_TableToGroupCodes)->Unit(benchmark::kMillisecond);

void BM_GroupCodesToTable(benchmark::State& state) {
  std::vector<int16_t> codes;
  std::vector<Variant> values;
  AppendTableRun(SharedTable(), codes, values);
  for (auto _ : state) {
    Variant table = GroupCodesToTable(std::span<const Variant>(values));
    benchmark::DoNotOptimize(table);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * SharedText().size()));
}
BENCHMARK(BM_GroupCodesToTable)->Unit(benchmark::kMillisecond);

// A table nested 10,000 deep, both ways through text.
void BM_DeepTextRoundTrip(benchmark::State& state) {
  const int depth = 10000;
  std::string text = std::string(depth, '{') + std::string(depth, '}');
  for (auto _ : state) {
    Variant table = TextToTable(text);
    benchmark::DoNotOptimize(TableToText(table));
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size() * 2));
}
BENCHMARK(BM_DeepTextRoundTrip)->Unit(benchmark::kMillisecond);

// One headless drawing with 100,000 lines, linked as an add-in links the
// library.
struct Drawing {
  std::shared_ptr<host::Application> app;
  std::vector<ObjectRef> lines;
};

Drawing& SharedDrawing() {
  static Drawing drawing = [] {
    Drawing d;
    ResetLibraryState();
    d.app = host::Application::Create();
    Variant link(ObjectRef(d.app->events()));
    GlobalInstance<ZActiveXCOM>()->InitZActiveX(link);
    ObjectRef space = GetProperty(d.app->ActiveDocumentRef(), "ModelSpace").Object();
    d.lines.reserve(100000);
    for (int i = 0; i < 100000; ++i) {
      d.lines.push_back(
          CallMethod(space, "AddLine", {MakePoint(i, 0, 0), MakePoint(i + 1, 1, 0)}).Object());
    }
    return d;
  }();
  return drawing;
}

// Nine more variables, as ParArray triples, beside the call's own one.
Variant NineMore(int i) {
  return Variant(SafeArray::Of({
      Variant("Mass"), Variant(i * 0.5), Variant(int32_t{xDouble}),
      Variant("Story"), Variant(int16_t{3}), Variant(int32_t{xInteger}),
      Variant("Comments"), Variant("first\r\nsecond"), Variant(int32_t{xMultilinesText}),
      Variant("IsViewBox"), Variant(true), Variant(int32_t{xBoolean}),
      Variant("Category"), Variant("steel"), Variant(int32_t{xString}),
      Variant("Top"), Variant(10.0), Variant(int32_t{xDistance}),
      Variant("Bottom"), Variant(-2.0), Variant(int32_t{xDistance}),
      Variant("UnitID"), Variant(int32_t{4}), Variant(int32_t{xLong}),
      Variant("Parameters"),
      Variant(SafeArray::Of({Variant(1.0), Variant("p"), Variant(int16_t{2})})),
      Variant(int32_t{xTable}),
  }));
}

void BM_SetAppXData10Vars100k(benchmark::State& state) {
  Drawing& d = SharedDrawing();
  Xdata& xdata = *GlobalInstance<Xdata>();
  for (auto _ : state) {
    for (size_t i = 0; i < d.lines.size(); ++i) {
      Variant pars = NineMore(static_cast<int>(i));
      xdata.SetAppXData(Variant(d.lines[i]), "Station", Variant(i * 1.0), xDouble, pars);
    }
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * d.lines.size() * 10));
}
BENCHMARK(BM_SetAppXData10Vars100k)->Unit(benchmark::kMillisecond)->Iterations(3);

void BM_GetAppXdata10Vars100k(benchmark::State& state) {
  Drawing& d = SharedDrawing();
  Xdata& xdata = *GlobalInstance<Xdata>();
  // Make sure every line carries the ten variables.
  for (size_t i = 0; i < d.lines.size(); ++i) {
    Variant pars = NineMore(static_cast<int>(i));
    xdata.SetAppXData(Variant(d.lines[i]), "Station", Variant(i * 1.0), xDouble, pars);
  }
  double checksum = 0;
  for (auto _ : state) {
    for (size_t i = 0; i < d.lines.size(); ++i) {
      Variant value;
      Variant type(int32_t{xDouble});
      Variant pars = NineMore(0);
      xdata.GetAppXdata(Variant(d.lines[i]), "Station", value, type, pars);
      checksum += value.RawDouble();
    }
  }
  benchmark::DoNotOptimize(checksum);
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * d.lines.size() * 10));
}
BENCHMARK(BM_GetAppXdata10Vars100k)->Unit(benchmark::kMillisecond)->Iterations(3);

}  // namespace
}  // namespace tovik

BENCHMARK_MAIN();
