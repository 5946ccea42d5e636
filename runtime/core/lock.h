// A mutex for what is done for each block: rarely wanted by two threads, and held shortly. Taking
// and giving back a free one is a few instructions each.
//
// It knows its holder: a vfork child runs as its parent's thread, and when it is killed, what that
// thread holds nobody else will ever release.
#pragma once

#include <atomic>
#include <cstdint>

namespace core {

// The calling thread's number: even, and no other thread of the process has it.
inline constexpr uint32_t kFirstLockOwner = 2;
inline constinit thread_local uint32_t lock_owner = kFirstLockOwner;
// Gives the thread a number of its own. The first thread has one.
inline void draw_lock_owner() {
  static constinit std::atomic<uint32_t> last = kFirstLockOwner;
  lock_owner = last.fetch_add(kFirstLockOwner) + kFirstLockOwner;
}

class Lock {
public:
  void lock() {
    uint32_t state = kFree;
    if (!state_.compare_exchange_strong(state, lock_owner, std::memory_order_acquire))
        [[unlikely]] {
      wait();
    }
  }
  void unlock() {
    if ((state_.exchange(kFree, std::memory_order_release) & kWaitedFor) != 0) [[unlikely]] {
      state_.notify_one();
    }
  }
  // Whether the calling thread holds it; and releases it then.
  bool is_own() const {
    return (state_.load(std::memory_order_relaxed) & ~kWaitedFor) == lock_owner;
  }
  bool unlock_own() {
    const bool own = is_own();
    if (own) {
      unlock();
    }
    return own;
  }

  // While a Change lives: what the lock guards is half done.
  std::atomic<bool> changing = false;

private:
  // The holder's number, and a bit.
  static constexpr uint32_t kFree = 0, kWaitedFor = 1;

  // Whoever has waited cannot know whether others do still.
  [[gnu::noinline]] void wait() {
    for (;;) {
      uint32_t state = state_.load(std::memory_order_relaxed);
      const uint32_t next = state == kFree ? lock_owner | kWaitedFor : state | kWaitedFor;
      if (state != next && !state_.compare_exchange_weak(state, next, std::memory_order_acquire)) {
        continue;
      }
      if (state == kFree) {
        return;
      }
      state_.wait(next, std::memory_order_relaxed);
    }
  }

  std::atomic<uint32_t> state_ = kFree;
};

// Holds the lock of a table that is of no use once a change of it has been broken off.
class Change {
public:
  explicit Change(Lock& lock) : lock_(lock) {
    lock_.lock();
    mark(true);
  }
  ~Change() {
    mark(false);
    lock_.unlock();
  }
  Change(const Change&) = delete;
  Change& operator=(const Change&) = delete;

private:
  void mark(bool changing) {
    std::atomic_signal_fence(std::memory_order_seq_cst);
    lock_.changing.store(changing, std::memory_order_relaxed);
    std::atomic_signal_fence(std::memory_order_seq_cst);
  }

  Lock& lock_;
};

}  // namespace core
