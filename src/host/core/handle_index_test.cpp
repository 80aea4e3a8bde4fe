#include "host/core/handle_index.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

namespace tovik::host {
namespace {

// Inserts and erases at random against an ordered map, with handles from a
// small range so that probe runs collide, wrap round and shift back.
TEST(HandleIndexTest, AgreesWithAMapThroughInsertsAndErases) {
  std::mt19937 random(7);
  HandleIndex index;
  std::map<uint64_t, DbObject*> model;
  auto object = [](uint64_t h) { return reinterpret_cast<DbObject*>(h * 16); };
  for (int step = 0; step < 20000; ++step) {
    uint64_t handle = 1 + random() % 300;
    if (model.count(handle)) {
      index.Erase(handle);
      model.erase(handle);
    } else {
      index.Insert(handle, object(handle));
      model[handle] = object(handle);
    }
    if (step % 97 == 0) {
      for (uint64_t h = 0; h <= 301; ++h) {
        ASSERT_EQ(index.Find(h), model.count(h) ? object(h) : nullptr) << "step " << step << " handle " << h;
      }
    }
  }
  EXPECT_EQ(index.size(), model.size());
}

}  // namespace
}  // namespace tovik::host
