// The pool the loader takes a large file's entities from: objects in order
// in its blocks, blocks freed once sealed and empty, the pool kept alive by
// its objects; and a large drawing read through it, edited, written and
// read again.
#include "host/dxf/read/object_pool.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "frame/conversions.h"
#include "frame/dispatch.h"
#include "host/core/application.h"
#include "host/dxf/dxf_file.h"
#include "host/dxf/read/loader.h"
#include "tests/support/host_fixture.h"

namespace tovik::host::dxf {
namespace {

struct Payload {
  double values[5] = {1, 2, 3, 4, 5};
};

TEST(ObjectPool, ObjectsLieInOrderAndBlocksGoWhenSealedAndEmpty) {
  std::shared_ptr<ObjectPool> pool = ObjectPool::Create(0);  // the smallest block, 1 MB
  std::vector<std::shared_ptr<Payload>> objects;
  for (int i = 0; i < 40000; ++i) {  // about 3 MB with the control blocks: a second block
    objects.push_back(std::allocate_shared<Payload>(PoolAllocator<Payload>(pool)));
  }
  auto address = [](const std::shared_ptr<Payload>& p) { return reinterpret_cast<uintptr_t>(p.get()); };
  EXPECT_GT(address(objects[1]), address(objects[0]));
  EXPECT_LT(address(objects[1]) - address(objects[0]), 2 * sizeof(Payload) + 64);
  EXPECT_EQ(address(objects[0]) % alignof(std::max_align_t), 0u);
  EXPECT_EQ(objects[39999]->values[4], 5);
  EXPECT_GE(pool->LiveBlocks(), 2u);
  // The blocks before the last are full, hence sealed: emptied, they go at
  // once.
  objects.erase(objects.begin(), objects.end() - 1);
  EXPECT_EQ(pool->LiveBlocks(), 1u);
  pool->Seal();
  EXPECT_EQ(pool->LiveBlocks(), 1u);
  // Past the seal the pool hands out ordinary memory.
  objects.push_back(std::allocate_shared<Payload>(PoolAllocator<Payload>(pool)));
  std::weak_ptr<ObjectPool> watch = pool;
  pool.reset();
  EXPECT_FALSE(watch.expired());  // its objects keep it
  objects.clear();
  EXPECT_TRUE(watch.expired());
}

// A drawing of `count` lines, one per unit along x.
std::string Lines(int count) {
  std::string text = "0\nSECTION\n2\nENTITIES\n";
  for (int i = 0; i < count; ++i) {
    text += "0\nLINE\n8\n0\n10\n" + std::to_string(i) + "\n20\n0\n11\n" + std::to_string(i) + "\n21\n1\n";
  }
  return text + "0\nENDSEC\n0\nEOF\n";
}

TEST(ObjectPool, ALargeDrawingReadThroughItIsEditedWrittenAndReadAgain) {
  const int count = static_cast<int>(Loader::kPooledEntities) + 10;
  auto app = Application::Create({.open_drawing = false});
  std::shared_ptr<Document> doc = ReadDrawingBuffer(*app, Lines(count), "lines.dxf");
  ObjectRef ms = GetProperty(ObjectRef(doc), "ModelSpace").Object();
  ASSERT_EQ(CLng(GetProperty(ms, "Count")), count);
  ObjectRef last = CallMethod(ms, "Item", {Variant(int32_t{count - 1})}).Object();
  EXPECT_EQ(CDbl(GetProperty(last, "EndPoint").Array().Items()[0]), count - 1);
  LetProperty(last, "EndPoint", Pt(0, 5));
  CallMethod(CallMethod(ms, "Item", {Variant(int32_t{0})}).Object(), "Delete");
  std::string written = WriteDrawing(*doc);
  doc->Close();
  doc.reset();
  ms = nullptr;
  // A reference kept past the drawing's close is still an object.
  EXPECT_EQ(last->TypeName(), "IAcadLine");
  std::shared_ptr<Document> again = ReadDrawingBuffer(*app, written, "again.dxf");
  ObjectRef ms2 = GetProperty(ObjectRef(again), "ModelSpace").Object();
  ASSERT_EQ(CLng(GetProperty(ms2, "Count")), count - 1);
  ObjectRef moved = CallMethod(ms2, "Item", {Variant(int32_t{count - 2})}).Object();
  EXPECT_EQ(CDbl(GetProperty(moved, "EndPoint").Array().Items()[1]), 5);
}

}  // namespace
}  // namespace tovik::host::dxf
