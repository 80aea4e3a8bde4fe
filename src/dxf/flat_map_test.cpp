// FlatMap: every key found again after the index grows, iteration in the
// order keys were first inserted, values that stay where they are, integer
// keys whose first value stays.
#include "dxf/flat_map.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <vector>

namespace tovik::dxf {
namespace {

TEST(FlatMap, FindsEveryKeyAfterGrowingAndIteratesInInsertionOrder) {
  // 1000 keys grow the index from 16 slots six times. Adjacent ints share
  // a hash (the lowest three address bits are dropped), so probing runs
  // over occupied slots too.
  std::vector<int> items(1000);
  std::vector<size_t> order(items.size());
  std::iota(order.begin(), order.end(), 0);
  // A fixed scramble (k * 7 mod 1000 visits every index once, 7 and 1000
  // being coprime): insertion order differs from address order.
  for (size_t k = 0; k < order.size(); ++k) order[k] = (k * 7) % order.size();
  FlatMap<const int*, size_t> map;
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

TEST(FlatMap, AbsentKeysAreNotFoundAndSubscriptAddsOnlyNewKeys) {
  int items[4] = {};
  FlatMap<const int*, int> map;
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

TEST(FlatMap, ValuesStayWhereTheyAreWhileTheMapGrows) {
  std::vector<int> items(600);
  FlatMap<const int*, int> map;
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

TEST(FlatMap, IntegerKeysKeepTheirFirstValueWhenEmplacedAgain) {
  // Handles as keys: consecutive values, then far apart ones (the top bit
  // set, zero), as the duplicate-handle check meets them.
  FlatMap<uint64_t, uint32_t> seen;
  for (uint64_t h = 1; h <= 300; ++h) {
    auto [it, fresh] = seen.try_emplace(h, static_cast<uint32_t>(h * 2));
    ASSERT_TRUE(fresh) << h;
    EXPECT_EQ(it->second, h * 2);
  }
  EXPECT_TRUE(seen.try_emplace(0x8000000000000000ull, 7).second);
  EXPECT_TRUE(seen.try_emplace(0, 9).second);
  // A second emplace of a present key reports the first value, changes nothing.
  auto [again, fresh] = seen.try_emplace(150, 1);
  EXPECT_FALSE(fresh);
  EXPECT_EQ(again->first, 150u);
  EXPECT_EQ(again->second, 300u);
  EXPECT_EQ(seen.size(), 302u);
  EXPECT_EQ(seen.at(0x8000000000000000ull), 7u);
  EXPECT_EQ(seen.at(0), 9u);
  EXPECT_EQ(seen.count(301), 0u);
}

}  // namespace
}  // namespace tovik::dxf
