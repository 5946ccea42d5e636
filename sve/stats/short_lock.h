// Holds a std::mutex for a dozen instructions: without a function call if the mutex is free, and
// after a little patience if it is not, since to sleep and to be woken takes a hundred times as
// long as what others do under it.
//
// glibc's plain mutex begins with its lock word: 0 free, 1 held, 2 held and perhaps waited for. To
// lock is to change 0 into 1; to unlock is to change 1 into 0, and only from 2 on is there somebody
// to wake. The C library also notes owner and number of users beside the word, which mean nothing
// for this kind of mutex, but it insists that a free one has no owner. So they stay 0 here, and its
// own functions and these work on one mutex together. With another C library, its functions are all
// there is. What is guarded can also be a count beside the mutex, which one atomic instruction
// changes without locking: add_one_if_free.
#pragma once

#include <pthread.h>
#ifdef __SANITIZE_THREAD__
#include <sanitizer/tsan_interface.h>
#endif

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <new>

#include "host/one_step.h"

namespace short_lock {

template <class Native>
concept HasLockWord = requires(Native native) {
  native.__data.__lock = 1;
  native.__data.__owner = 0;
  native.__data.__nusers = 0;
};

inline constexpr int patience = 200;  // looks at the mutex before sleeping
inline constexpr int pause = 60;  // steps from look to look: a look takes the line from its holder

template <class Native> auto& data(std::mutex& mutex) {
  return static_cast<Native*>(mutex.native_handle())->__data;
}

// For the thread sanitizer, which knows a mutex by the C library's functions: it is held or not.
inline void note([[maybe_unused]] std::mutex& mutex, [[maybe_unused]] bool held) {
#ifdef __SANITIZE_THREAD__
  if (held) {
    __tsan_mutex_pre_lock(&mutex, __tsan_mutex_try_lock);
    __tsan_mutex_post_lock(&mutex, __tsan_mutex_try_lock, 0);
  } else {
    __tsan_mutex_pre_unlock(&mutex, 0);
    __tsan_mutex_post_unlock(&mutex, 0);
  }
#endif
}

template <class Native> bool change(std::mutex& mutex, int from, int to) {
  return __atomic_compare_exchange_n(&data<Native>(mutex).__lock, &from, to, false,
                                     to == 1 ? __ATOMIC_ACQUIRE : __ATOMIC_RELEASE,
                                     __ATOMIC_RELAXED);
}

// Whether the mutex looks free. Only to read it leaves its cache line with the thread that holds
// it.
template <class Native = pthread_mutex_t> bool looks_free(std::mutex& mutex) {
  if constexpr (HasLockWord<Native>)
    return __atomic_load_n(&data<Native>(mutex).__lock, __ATOMIC_RELAXED) == 0;
  else
    return true;
}

// Whether the mutex was free and is held now.
template <class Native = pthread_mutex_t> bool try_lock(std::mutex& mutex) {
  if constexpr (HasLockWord<Native>) {
    const bool taken = change<Native>(mutex, 0, 1);
    if (taken)
      note(mutex, true);
    return taken;
  } else {
    return mutex.try_lock();
  }
}

// Waits until it is.
template <class Native = pthread_mutex_t> void lock(std::mutex& mutex) {
  for (int i = 0; i < patience; i++) {
    for (int j = 0; j < pause; j++)
      asm volatile("");
    if (looks_free<Native>(mutex) && try_lock<Native>(mutex))
      return;
  }
  mutex.lock();
  if constexpr (HasLockWord<Native>) {
    data<Native>(mutex).__owner = 0;
    data<Native>(mutex).__nusers--;
  }
}

// Gives back what one of the two took, while others wait or not.
template <class Native = pthread_mutex_t> void wake(std::mutex& mutex) {
  if constexpr (HasLockWord<Native>)
    data<Native>(mutex).__nusers++;
  mutex.unlock();
}
template <class Native = pthread_mutex_t> bool try_unlock(std::mutex& mutex) {
  if constexpr (HasLockWord<Native>) {
    note(mutex, false);
    const bool given = change<Native>(mutex, 1, 0);
    if (!given)
      note(mutex, true);
    return given;
  } else {
    return false;
  }
}

// In the child of a fork, which has the forking thread alone: if that one had taken the mutex by
// its own functions, it keeps it under its new number. In the hands of a thread that is lost it
// would never be free again, so it becomes free.
template <class Native = pthread_mutex_t>
void keep_over_fork(std::mutex& mutex, int number_before, int number) {
  if constexpr (HasLockWord<Native>)
    if (data<Native>(mutex).__owner == number_before) {
      data<Native>(mutex).__owner = number;
      return;
    }
  new (&mutex) std::mutex;
}

// A count and its mutex, in the reach of one atomic instruction.
struct alignas(16) GuardedCount {
  volatile uint64_t count;  // read without the mutex as well
  std::mutex mutex;
};
static_assert(offsetof(GuardedCount, mutex) == sizeof(uint64_t));

using host::one_step;

// The best way of a step on both. None if the two do not lie side by side: a program that names one
// of a shared library's variables may get it moved into its own data.
template <class Native = pthread_mutex_t>
one_step step_for(const std::atomic<uint64_t>& count, const std::mutex& mutex) {
  if constexpr (HasLockWord<Native>)
    static_assert(offsetof(Native, __data.__lock) == 0);
  const auto address = reinterpret_cast<uintptr_t>(&count);
  if (!HasLockWord<Native> || address % alignof(GuardedCount) != 0 ||
      reinterpret_cast<uintptr_t>(&mutex) != address + offsetof(GuardedCount, mutex))
    return one_step::none;
  return host::best_step();
}

// Adds 1 to the count if the mutex is free: as if it were locked, the count changed and the mutex
// unlocked, but in one step, so that nobody ever finds it locked by this. False, and nothing
// changed, if it is held, or without a step. It orders no other accesses, since it guards nothing
// but the count. A free mutex has 0 in the field behind its lock word as well.
[[gnu::always_inline]] inline bool add_one_if_free(GuardedCount& guarded, one_step step) {
  return host::add_one_if_zero(guarded, step);
}

}  // namespace short_lock
