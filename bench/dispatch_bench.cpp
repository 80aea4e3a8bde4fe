// Cost of reaching a member by name, as every call into the host and into
// the library's own classes does, against a plain virtual call.
//
//   BM_DirectVirtualCall     the member called through a C++ base pointer
//   BM_CachedDispIdInvoke    Invoke with a DispId looked up once
//   BM_ByNameGetProperty     GetIdOfName + Invoke at every call
//   BM_ByNameMixedCase       the same with a name in another case
//   BM_ByNameNonAscii        a member name with non-ASCII letters
//   BM_ByNameWithArguments   a method with two by-value arguments
//   BM_DictionaryKeyedRead   the scripting Dictionary's Item(key) by name
//
// items_per_second is calls per second; the ratio of two benchmarks' times
// is the cost of by-name dispatch relative to a direct virtual call.
#include <benchmark/benchmark.h>

#include <memory>
#include <string>

#include "frame/conversions.h"
#include "frame/dictionary.h"
#include "frame/dispatch.h"
#include "frame/member_table.h"

namespace tovik {
namespace {

// The interface a direct call goes through.
class Counter {
 public:
  virtual ~Counter() = default;
  virtual int32_t Count() const = 0;
  virtual double Scale(double a, double b) = 0;
};

// An automation class with a dozen members, so the name lookup is not in a
// trivially small table.
class BenchObject : public DispatchObject<BenchObject>, public Counter {
 public:
  std::string_view TypeName() const override { return "BenchObject"; }
  int32_t Count() const override { return count_; }
  double Scale(double a, double b) override { return a * b + count_; }

  static const MemberTable<BenchObject>& Members() {
    static const MemberTable<BenchObject> table = [] {
      MemberTable<BenchObject> t;
      for (const char* name : {"Name", "Layer", "Linetype", "Color", "Visible",
                               "Handle", "ObjectID", "OwnerID", "Document"}) {
        t.Property(name, [](BenchObject&, CallArgs&) { return Variant(); });
      }
      t.Property("Count", [](BenchObject& s, CallArgs&) { return Variant(s.Count()); });
      t.Method(
          "Scale",
          [](BenchObject& s, CallArgs& a) {
            return Variant(s.Scale(CDbl(a[0]), CDbl(a[1])));
          },
          2, 2);
      t.Property("Длина", [](BenchObject& s, CallArgs&) { return Variant(s.Count()); });
      return t;
    }();
    return table;
  }

 private:
  int32_t count_ = 7;
};

// A second implementation of Counter, so the compiler cannot turn the
// direct calls below into calls of BenchObject's members.
class NullCounter : public Counter {
 public:
  int32_t Count() const override { return 0; }
  double Scale(double, double) override { return 0.0; }
};

// The object behind a Counter pointer, chosen out of the compiler's sight:
// the direct calls stay real virtual calls.
std::unique_ptr<Counter> MakeOpaque() {
  bool null_counter = false;
  benchmark::DoNotOptimize(null_counter);
  if (null_counter) return std::make_unique<NullCounter>();
  return std::make_unique<BenchObject>();
}

void BM_DirectVirtualCall(benchmark::State& state) {
  std::unique_ptr<Counter> object = MakeOpaque();
  Counter* counter = object.get();
  for (auto _ : state) {
    benchmark::DoNotOptimize(counter);
    benchmark::DoNotOptimize(counter->Count());
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_DirectVirtualCall);

void BM_CachedDispIdInvoke(benchmark::State& state) {
  ObjectRef object = std::make_shared<BenchObject>();
  DispId id = object->GetIdOfName("Count");
  for (auto _ : state) {
    Variant result = object->Invoke(id, InvokeKind::kPropertyGet, {});
    benchmark::DoNotOptimize(result);
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_CachedDispIdInvoke);

void BM_ByNameGetProperty(benchmark::State& state) {
  ObjectRef object = std::make_shared<BenchObject>();
  for (auto _ : state) {
    Variant result = GetProperty(object, "Count");
    benchmark::DoNotOptimize(result);
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_ByNameGetProperty);

void BM_ByNameMixedCase(benchmark::State& state) {
  ObjectRef object = std::make_shared<BenchObject>();
  for (auto _ : state) {
    Variant result = GetProperty(object, "cOUNT");
    benchmark::DoNotOptimize(result);
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_ByNameMixedCase);

void BM_ByNameNonAscii(benchmark::State& state) {
  ObjectRef object = std::make_shared<BenchObject>();
  for (auto _ : state) {
    Variant result = GetProperty(object, "ДЛИНА");
    benchmark::DoNotOptimize(result);
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_ByNameNonAscii);

void BM_DirectVirtualCallWithArguments(benchmark::State& state) {
  std::unique_ptr<Counter> object = MakeOpaque();
  Counter* counter = object.get();
  double a = 1.5;
  double b = 2.0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(counter);
    benchmark::DoNotOptimize(a);
    benchmark::DoNotOptimize(counter->Scale(a, b));
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_DirectVirtualCallWithArguments);

void BM_ByNameWithArguments(benchmark::State& state) {
  ObjectRef object = std::make_shared<BenchObject>();
  for (auto _ : state) {
    Variant result = CallMethod(object, "Scale", {Variant(1.5), Variant(2.0)});
    benchmark::DoNotOptimize(result);
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_ByNameWithArguments);

void BM_DictionaryKeyedRead(benchmark::State& state) {
  auto dictionary = std::make_shared<Dictionary>();
  for (int i = 0; i < 1000; ++i) {
    dictionary->Add(Variant(std::to_string(i)), Variant(double{1.0 * i}));
  }
  ObjectRef object = dictionary;
  Variant key("517");
  for (auto _ : state) {
    Variant result = GetProperty(object, "Item", {key});
    benchmark::DoNotOptimize(result);
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_DictionaryKeyedRead);

}  // namespace
}  // namespace tovik

BENCHMARK_MAIN();
