#include "runtime/core/memory.h"

#include <sys/mman.h>

#include <algorithm>
#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <new>

#include "runtime/core/fatal.h"

namespace core {

constinit Lock memory_mutex;

namespace {

// Blocks of a power of two come out of chunks of one size each, larger ones have a mapping of their
// own. What is at an address says the first word of its chunk or mapping, both aligned to kChunk.
constexpr size_t kSmallest = 16, kLargest = 8192, kChunk = 65536, kRefill = 16 * kChunk;
constexpr size_t kAlignment = 64;  // of a block with a mapping of its own
constexpr unsigned kClasses = std::countr_zero(kLargest / kSmallest) + 1;

struct FreeBlock {
  FreeBlock* next;
};

struct Class {
  FreeBlock* free;
  uintptr_t unused;  // up to the chunk's end
};
constinit Class classes[kClasses] = {};
constinit uintptr_t unused_chunks = 0;  // up to a multiple of kRefill

// The stores in front of it are made, and those behind it are not.
void commit() { std::atomic_signal_fence(std::memory_order_seq_cst); }

// The lock, unless the thread has it already.
struct Hold {
  const bool had = memory_mutex.is_own();
  Hold() {
    if (!had) {
      memory_mutex.lock();
    }
  }
  ~Hold() {
    if (!had) {
      memory_mutex.unlock();
    }
  }
};

size_t& size_at(uintptr_t chunk) { return *reinterpret_cast<size_t*>(chunk); }
uintptr_t chunk_of(void* block) { return reinterpret_cast<uintptr_t>(block) & ~(kChunk - 1); }

// Fresh memory, aligned to `alignment`.
uintptr_t map(size_t size, size_t alignment) {
  const size_t room = size + alignment;
  void* const got = mmap(nullptr, room, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (got == MAP_FAILED) {
    fatal("no memory");
  }
  const auto begin = reinterpret_cast<uintptr_t>(got);
  const uintptr_t at = (begin + alignment - 1) & ~(alignment - 1);
  if (at != begin) {
    munmap(got, at - begin);
  }
  munmap(reinterpret_cast<void*>(at + size), begin + room - at - size);
  return at;
}

uintptr_t take_chunk() {
  if (unused_chunks % kRefill == 0) {
    unused_chunks = map(kRefill, kRefill);
  }
  const uintptr_t chunk = unused_chunks;
  unused_chunks = chunk + kChunk;
  return chunk;
}

void* take_block(size_t size) {
  Class& from = classes[std::countr_zero(size / kSmallest)];
  if (FreeBlock* const block = from.free) {
    from.free = block->next;
    return block;
  }
  if (from.unused % kChunk == 0) {
    const uintptr_t chunk = take_chunk();
    size_at(chunk) = size;
    commit();
    from.unused = chunk + std::max(size, kSmallest);
  }
  const uintptr_t block = from.unused;
  from.unused = block + size;
  return reinterpret_cast<void*>(block);
}

void* allocate(size_t size) {
  if (size > kLargest) {
    const size_t total = (size + kAlignment + kChunk - 1) & ~(kChunk - 1);
    const uintptr_t mapping = map(total, kChunk);
    size_at(mapping) = total;
    return reinterpret_cast<void*>(mapping + kAlignment);
  }
  const Hold hold;
  return take_block(std::bit_ceil(std::max(size, kSmallest)));
}

void release(void* block) {
  if (block == nullptr) {
    return;
  }
  const uintptr_t chunk = chunk_of(block);
  const size_t size = size_at(chunk);
  if (size > kLargest) {
    munmap(reinterpret_cast<void*>(chunk), size);
    return;
  }
  const Hold hold;
  Class& to = classes[std::countr_zero(size / kSmallest)];
  auto* const added = static_cast<FreeBlock*>(block);
  added->next = to.free;
  commit();
  to.free = added;
}

}  // namespace
}  // namespace core

void* operator new(size_t size) { return core::allocate(size); }
void* operator new[](size_t size) { return core::allocate(size); }
void operator delete(void* block) noexcept { core::release(block); }
void operator delete[](void* block) noexcept { core::release(block); }
void operator delete(void* block, size_t) noexcept { core::release(block); }
void operator delete[](void* block, size_t) noexcept { core::release(block); }
