// A mutex for what is done for each block: rarely wanted by two threads, and held shortly. Taking
// and giving back a free one is a few instructions each.
#pragma once

#include <atomic>
#include <cstdint>

namespace core {

class Lock {
public:
  void lock() {
    uint32_t state = kFree;
    if (!state_.compare_exchange_strong(state, kHeld, std::memory_order_acquire)) [[unlikely]] {
      wait();
    }
  }
  void unlock() {
    if (state_.exchange(kFree, std::memory_order_release) == kWaitedFor) [[unlikely]] {
      state_.notify_one();
    }
  }

private:
  enum : uint32_t { kFree, kHeld, kWaitedFor };

  // Whoever has waited cannot know whether others do still.
  [[gnu::noinline]] void wait() {
    while (state_.exchange(kWaitedFor, std::memory_order_acquire) != kFree) {
      state_.wait(kWaitedFor, std::memory_order_relaxed);
    }
  }

  std::atomic<uint32_t> state_ = kFree;
};

}  // namespace core
