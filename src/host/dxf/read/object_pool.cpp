#include "host/dxf/read/object_pool.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <new>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace tovik::host::dxf {
namespace {

constexpr size_t kSmallestBlock = size_t{1} << 20;
// How far ahead of the loader the helper prepares pages, and how often the
// loader tells it how far it got.
constexpr size_t kPrepareAhead = size_t{8} << 20;
constexpr size_t kReportEvery = size_t{1} << 20;
constexpr size_t kPage = 4096;

#if defined(__linux__) && defined(MADV_POPULATE_WRITE)
constexpr bool kCanPrepare = true;
// Maps the pages of [from, to) (whole pages inside it) as if written.
void PreparePages(char* from, char* to) {
  auto first = (reinterpret_cast<uintptr_t>(from) + kPage - 1) & ~uintptr_t{kPage - 1};
  auto last = reinterpret_cast<uintptr_t>(to) & ~uintptr_t{kPage - 1};
  if (last > first) madvise(reinterpret_cast<void*>(first), last - first, MADV_POPULATE_WRITE);
}
#else
constexpr bool kCanPrepare = false;
void PreparePages(char*, char*) {}
#endif

}  // namespace

std::shared_ptr<ObjectPool> ObjectPool::Create(size_t expected_bytes) {
  return std::shared_ptr<ObjectPool>(new ObjectPool(expected_bytes));
}

ObjectPool::ObjectPool(size_t expected_bytes) : expected_bytes_(std::max(expected_bytes, kSmallestBlock)) {
  NewBlock(expected_bytes_);
  if (kCanPrepare) helper_ = std::thread([this] { Prepare(); });
}

ObjectPool::~ObjectPool() {
  Seal();
  for (size_t i = 0; i < block_count_; ++i) {
    if (!blocks_[i].freed.exchange(true)) std::free(blocks_[i].base);
  }
}

ObjectPool::Block* ObjectPool::NewBlock(size_t bytes) {
  size_t count = block_count_.load();
  if (count == kMaxBlocks) return nullptr;
  Block& block = blocks_[count];
  // A large allocation is mapped fresh: its pages cost nothing until used.
  block.base = static_cast<char*>(std::malloc(bytes));
  if (block.base == nullptr) throw std::bad_alloc();
  block.size = bytes;
  block_count_.store(count + 1);
  used_ = 0;
  next_wake_ = 0;
  return &block;
}

void* ObjectPool::Allocate(size_t bytes, size_t alignment) {
  Block* block = &blocks_[block_count_.load() - 1];
  size_t at = (used_ + alignment - 1) & ~(alignment - 1);
  if (block->sealed || at + bytes > block->size) {
    size_t before = 0;
    for (size_t i = 0; i < block_count_; ++i) before += blocks_[i].size;
    Block* next = block->sealed ? nullptr : NewBlock(std::max({bytes, before, kSmallestBlock}));
    block->sealed = true;
    FreeIfDone(*block);
    // Past its last block (or sealed) the pool hands out ordinary memory.
    if (next == nullptr) return ::operator new(bytes);
    block = next;
    at = 0;
  }
  used_ = at + bytes;
  ++block->live;
  if (kCanPrepare && used_ >= next_wake_) {
    {
      std::lock_guard<std::mutex> lock(mutex_);
      prepare_block_ = block;
      prepare_to_ = used_;
    }
    wake_.notify_one();
    next_wake_ = used_ + kReportEvery;
  }
  return block->base + at;
}

void ObjectPool::Release(void* memory) {
  auto* p = static_cast<char*>(memory);
  for (size_t i = 0; i < block_count_.load(); ++i) {
    Block& block = blocks_[i];
    // A freed block's memory may have gone to what the pool handed out
    // past its blocks.
    if (!block.freed && p >= block.base && p < block.base + block.size) {
      if (--block.live == 0) FreeIfDone(block);
      return;
    }
  }
  ::operator delete(memory);
}

void ObjectPool::FreeIfDone(Block& block) {
  if (block.sealed && block.live == 0 && !block.freed.exchange(true)) std::free(block.base);
}

void ObjectPool::Seal() {
  size_t count = block_count_.load();
  if (count > 0) blocks_[count - 1].sealed = true;
  for (size_t i = 0; i < count; ++i) FreeIfDone(blocks_[i]);
  {
    std::lock_guard<std::mutex> lock(mutex_);
    stop_ = true;
  }
  wake_.notify_one();
  if (helper_.joinable()) helper_.join();
}

size_t ObjectPool::LiveBlocks() const {
  size_t live = 0;
  for (size_t i = 0; i < block_count_.load(); ++i) live += blocks_[i].freed ? 0 : 1;
  return live;
}

void ObjectPool::Prepare() {
  Block* block = nullptr;
  size_t done = 0;
  std::unique_lock<std::mutex> lock(mutex_);
  for (;;) {
    wake_.wait(lock, [&] {
      return stop_ || (prepare_block_ != nullptr &&
                       (prepare_block_ != block || std::min(prepare_to_ + kPrepareAhead, prepare_block_->size) > done));
    });
    if (stop_) return;
    if (prepare_block_ != block) {
      block = prepare_block_;
      done = 0;
    }
    size_t target = std::min(prepare_to_ + kPrepareAhead, block->size);
    // The loader may have gone past what is prepared: start where it is.
    size_t from = std::max(done, prepare_to_);
    lock.unlock();
    if (target > from) PreparePages(block->base + from, block->base + target);
    lock.lock();
    done = std::max(done, target);
  }
}

}  // namespace tovik::host::dxf
