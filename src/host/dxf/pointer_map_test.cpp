// PointerMap: every key found again after the index grows, iteration in the
// order keys were first inserted, values that stay where they are.
#include "host/dxf/pointer_map.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <vector>

namespace tovik::host::dxf {
namespace {

TEST(PointerMap, FindsEveryKeyAfterGrowingAndIteratesInInsertionOrder) {
  // 1000 keys grow the index from 16 slots six times. Adjacent ints share
  // a hash (the lowest three address bits are dropped), so probing runs
  // over occupied slots too.
  std::vector<int> items(1000);
  std::vector<size_t> order(items.size());
  std::iota(order.begin(), order.end(), 0);
  // A fixed scramble (k * 7 mod 1000 visits every index once, 7 and 1000
  // being coprime): insertion order differs from address order.
  for (size_t k = 0; k < order.size(); ++k) order[k] = (k * 7) % order.size();
  PointerMap<const int*, size_t> map;
  for (size_t k : order) map[&items[k]] = k * 10;
  ASSERT_EQ(map.size(), 1000u);
  for (size_t k = 0; k < items.size(); ++k) {
    SCOPED_TRACE(k);
    auto it = map.find(&items[k]);
    ASSERT_NE(it, map.end());
    EXPECT_EQ(it->first, &items[k]);
    EXPECT_EQ(it->second, k * 10);
    EXPECT_EQ(map.count(&items[k]), 1u);
    EXPECT_EQ(map.at(&items[k]), k * 10);
  }
  size_t position = 0;
  for (const auto& [key, value] : map) {
    ASSERT_EQ(key, &items[order[position]]) << "entry " << position;
    ++position;
  }
  EXPECT_EQ(position, 1000u);
}

TEST(PointerMap, AbsentKeysAreNotFoundAndSubscriptAddsOnlyNewKeys) {
  int items[4] = {};
  PointerMap<const int*, int> map;
  // An empty map has no index yet.
  EXPECT_EQ(map.count(&items[0]), 0u);
  EXPECT_EQ(map.find(&items[0]), map.end());
  map[&items[0]] = 5;
  map[&items[2]] = 7;
  EXPECT_EQ(map.count(&items[1]), 0u);
  EXPECT_EQ(map.find(&items[3]), map.end());
  // A second subscript of a present key returns its value, adds nothing.
  map[&items[0]] += 1;
  EXPECT_EQ(map.size(), 2u);
  EXPECT_EQ(map.at(&items[0]), 6);
  // A new key starts value-initialised.
  EXPECT_EQ(map[&items[3]], 0);
  EXPECT_EQ(map.size(), 3u);
}

TEST(PointerMap, ValuesStayWhereTheyAreWhileTheMapGrows) {
  std::vector<int> items(600);
  PointerMap<const int*, int> map;
  map.reserve(2);
  int& first = map[&items[0]];
  const int* where = &first;
  for (size_t k = 1; k < items.size(); ++k) map[&items[k]] = static_cast<int>(k);
  // The reference taken before 599 inserts still names the stored value.
  first = 42;
  EXPECT_EQ(&map.at(&items[0]), where);
  EXPECT_EQ(map.find(&items[0])->second, 42);
  EXPECT_EQ(map.at(&items[599]), 599);
}

}  // namespace
}  // namespace tovik::host::dxf
