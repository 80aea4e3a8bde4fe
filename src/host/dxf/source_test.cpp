// RecordBindings: a record finds the binding made for it, in the order the
// bindings were made; a copy of a bound record (which carries its slot)
// finds nothing, as it would in a map keyed by address. ObjectMap:
// objects of two drawings sharing a slot, and objects never registered,
// each find their own record.
#include "host/dxf/source.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "host/core/application.h"
#include "host/core/document.h"
#include "host/tables/block.h"
#include "host/tables/records.h"

namespace tovik::host::dxf {
namespace {

constexpr const char* kThree =
    "0\nSECTION\n2\nENTITIES\n"
    "0\nLINE\n5\n2A\n8\n0\n0\nCIRCLE\n5\n2B\n8\n0\n0\nPOINT\n5\n2C\n8\n0\n"
    "0\nENDSEC\n0\nEOF\n";

TEST(RecordBindings, EachRecordFindsItsOwnBindingAndCopiesFindNone) {
  TagModel model = TagModel::Load(kThree, "b.dxf");
  const std::vector<Record>& records = model.FindSection("ENTITIES")->records;
  ASSERT_EQ(records.size(), 3u);
  // Stand-ins for live objects: only their addresses matter here.
  XData xdata_a, xdata_b;
  RecordBindings bindings;
  // Bound out of file order: POINT, LINE, then CIRCLE.
  bindings[&records[2]].loaded_xdata = &xdata_a;
  bindings[&records[0]].loaded_xdata = &xdata_b;
  EXPECT_EQ(bindings.count(&records[1]), 0u);
  EXPECT_EQ(bindings.find(&records[1]), bindings.end());
  bindings[&records[1]];
  ASSERT_EQ(bindings.size(), 3u);
  EXPECT_EQ(bindings.find(&records[2])->second.loaded_xdata, &xdata_a);
  EXPECT_EQ(bindings.find(&records[0])->second.loaded_xdata, &xdata_b);
  EXPECT_EQ(bindings.find(&records[1])->second.loaded_xdata, nullptr);
  // A second subscript returns the same binding and adds none.
  Binding& again = bindings[&records[0]];
  EXPECT_EQ(&again, &bindings.find(&records[0])->second);
  EXPECT_EQ(bindings.size(), 3u);
  // Iteration follows the order the bindings were made.
  std::vector<const Record*> order;
  for (const auto& [record, binding] : bindings) order.push_back(record);
  EXPECT_EQ(order, (std::vector<const Record*>{&records[2], &records[0], &records[1]}));
  // A copy carries the slot of the LINE's binding but is another record.
  Record copy = records[0];
  EXPECT_EQ(copy.binding_slot, records[0].binding_slot);
  EXPECT_EQ(bindings.count(&copy), 0u);
  EXPECT_EQ(bindings.find(&copy), bindings.end());
}

TEST(ObjectMap, ObjectsInTheSameSlotOfTwoDrawingsAndUnregisteredOnesKeepTheirOwnRecords) {
  TagModel model = TagModel::Load(kThree, "b.dxf");
  const std::vector<Record>& records = model.FindSection("ENTITIES")->records;
  auto app = Application::Create({.open_drawing = false});
  auto a = std::make_shared<Document>(app.get(), "A.dwg", false);
  auto b = std::make_shared<Document>(app.get(), "B.dwg", false);
  a->Initialize();
  b->Initialize();
  // Both drawings made model space in the same order: same slot, other IDs.
  ASSERT_EQ(a->model_space()->id() - a->id_base(), b->model_space()->id() - b->id_base());
  ASSERT_NE(a->model_space()->id(), b->model_space()->id());
  // Never registered: ID 0.
  auto loose = std::make_shared<LayerRecord>();

  ObjectMap<const Record*> map;
  map[a->model_space()] = &records[0];
  EXPECT_EQ(map.ValueOr(b->model_space(), nullptr), nullptr);
  EXPECT_EQ(map.count(a->paper_space()), 0u);
  map[b->model_space()] = &records[1];
  map[loose.get()] = &records[2];
  EXPECT_EQ(map.ValueOr(a->model_space(), nullptr), &records[0]);
  EXPECT_EQ(map.ValueOr(b->model_space(), nullptr), &records[1]);
  EXPECT_EQ(map.ValueOr(loose.get(), nullptr), &records[2]);
  EXPECT_EQ(map.count(b->model_space()), 1u);
  // A second subscript returns the same entry.
  EXPECT_EQ(map[a->model_space()], &records[0]);
  EXPECT_EQ(map.ValueOr(b->paper_space(), nullptr), nullptr);

  // Merging keeps both maps' entries, the merged one's value winning, the
  // slot shared by two drawings' objects included.
  ObjectMap<const Record*> other;
  other[a->paper_space()] = &records[2];
  other[b->model_space()] = &records[0];
  other[loose.get()] = &records[1];
  ObjectMap<const Record*> merged;
  merged[a->model_space()] = &records[0];
  merged.Merge(other);
  EXPECT_EQ(merged.ValueOr(a->model_space(), nullptr), &records[0]);
  EXPECT_EQ(merged.ValueOr(b->model_space(), nullptr), &records[0]);
  EXPECT_EQ(merged.ValueOr(a->paper_space(), nullptr), &records[2]);
  EXPECT_EQ(merged.ValueOr(loose.get(), nullptr), &records[1]);
  map.Merge(other);
  EXPECT_EQ(map.ValueOr(b->model_space(), nullptr), &records[0]);
  EXPECT_EQ(map.ValueOr(a->model_space(), nullptr), &records[0]);
}

}  // namespace
}  // namespace tovik::host::dxf
