// Memory for the entities a drawing file brings in at once. A large file's
// entities are a hundred thousand or more objects of a few hundred bytes:
// taken one after the other from large blocks they lie in file order (the
// order every later walk visits them), and a helper thread prepares the
// pages just ahead of the loader (on Linux), so that the loader does not
// stop at each new page.
//
// Objects are made with allocate_shared and a PoolAllocator, whose copy in
// each object's control block keeps the pool alive. A block is freed when
// the loading is over and the last object in it is gone; memory of objects
// released before that is not reused.
#ifndef TOVIK_HOST_DXF_READ_OBJECT_POOL_H_
#define TOVIK_HOST_DXF_READ_OBJECT_POOL_H_

#include <array>
#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>
#include <thread>

namespace tovik::host::dxf {

class ObjectPool {
 public:
  // `expected_bytes`: about what the objects will take (more blocks are
  // made when they take more).
  static std::shared_ptr<ObjectPool> Create(size_t expected_bytes);
  ~ObjectPool();
  ObjectPool(const ObjectPool&) = delete;
  ObjectPool& operator=(const ObjectPool&) = delete;

  // Memory for an object; from the loading thread only, before Seal.
  void* Allocate(size_t bytes, size_t alignment);
  // Gives back what Allocate returned (any thread, any time).
  void Release(void* memory);
  // Ends the loading: no more allocations; blocks already empty are freed
  // and the helper thread stops.
  void Seal();

  // Blocks holding memory (for tests).
  size_t LiveBlocks() const;

 private:
  explicit ObjectPool(size_t expected_bytes);
  struct Block {
    char* base = nullptr;
    size_t size = 0;
    std::atomic<size_t> live{0};      // objects not yet released
    std::atomic<bool> sealed{false};  // no more objects will come into it
    std::atomic<bool> freed{false};
  };
  Block* NewBlock(size_t bytes);
  void FreeIfDone(Block& block);
  void Prepare();

  // Fixed room: blocks never move, so that Release can find one while
  // another is added. Each new block is at least as large as all before.
  static constexpr size_t kMaxBlocks = 48;
  std::array<Block, kMaxBlocks> blocks_;
  std::atomic<size_t> block_count_{0};
  size_t expected_bytes_;
  size_t used_ = 0;  // in the last block

  // The helper: prepares the last block's pages up to a window ahead of
  // `prepare_to_`.
  std::mutex mutex_;
  std::condition_variable wake_;
  size_t prepare_to_ = 0;  // offset in the last block (guarded by mutex_)
  Block* prepare_block_ = nullptr;
  bool stop_ = false;
  std::thread helper_;
  size_t next_wake_ = 0;
};

template <class T>
class PoolAllocator {
 public:
  using value_type = T;
  static_assert(alignof(T) <= alignof(std::max_align_t), "blocks are aligned as malloc aligns");
  explicit PoolAllocator(std::shared_ptr<ObjectPool> pool) : pool_(std::move(pool)) {}
  template <class U>
  PoolAllocator(const PoolAllocator<U>& other) : pool_(other.pool()) {}
  T* allocate(size_t n) { return static_cast<T*>(pool_->Allocate(n * sizeof(T), alignof(T))); }
  void deallocate(T* p, size_t) { pool_->Release(p); }
  const std::shared_ptr<ObjectPool>& pool() const { return pool_; }
  template <class U>
  bool operator==(const PoolAllocator<U>& other) const {
    return pool_ == other.pool();
  }

 private:
  std::shared_ptr<ObjectPool> pool_;
};

}  // namespace tovik::host::dxf

#endif  // TOVIK_HOST_DXF_READ_OBJECT_POOL_H_
