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
#include <sys/auxv.h>
#ifdef __SANITIZE_THREAD__
#include <sanitizer/tsan_interface.h>
#endif

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <new>

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

// How a count is changed together with a look at the mutex that guards it: by two registers that
// are loaded and stored exclusively or, with large-system atomics, compared and swapped.
enum class one_step : uint8_t { exclusive, swap, none };

// A count and its mutex, in the reach of one atomic instruction.
struct alignas(16) GuardedCount {
  volatile uint64_t count;  // read without the mutex as well
  std::mutex mutex;
};
static_assert(offsetof(GuardedCount, mutex) == sizeof(uint64_t));

#ifdef __aarch64__

// The best way on this processor. None if the two do not lie side by side: a program that names
// one of a shared library's variables may get it moved into its own data.
template <class Native = pthread_mutex_t>
one_step step_for(const std::atomic<uint64_t>& count, const std::mutex& mutex) {
  if constexpr (!HasLockWord<Native>)
    return one_step::none;
  else
    static_assert(offsetof(Native, __data.__lock) == 0);
  const auto address = reinterpret_cast<uintptr_t>(&count);
  if (address % alignof(GuardedCount) != 0 ||
      reinterpret_cast<uintptr_t>(&mutex) != address + offsetof(GuardedCount, mutex))
    return one_step::none;
  return (getauxval(AT_HWCAP) & HWCAP_ATOMICS) != 0 ? one_step::swap : one_step::exclusive;
}

// Adds 1 to the count if the mutex is free: as if it were locked, the count changed and the mutex
// unlocked, but in one step, so that nobody ever finds it locked by this. False, and nothing
// changed, if it is held, or without a step. It orders no other accesses, since it guards nothing
// but the count.
[[gnu::always_inline]] inline bool add_one_if_free(GuardedCount& guarded, one_step step) {
  uint64_t lock;  // and the field behind it, which a free mutex has 0 as well
  if (step == one_step::exclusive) [[likely]] {
    uint64_t count;
    uint32_t failed;
    asm volatile(
        "1: ldxp %[count], %[lock], %[guarded]\n"
        "   cbnz %[lock], 2f\n"
        "   add %[count], %[count], #1\n"
        "   stxp %w[failed], %[count], xzr, %[guarded]\n"
        "   cbnz %w[failed], 1b\n"
        "2:\n"
        : [count] "=&r"(count), [lock] "=&r"(lock), [failed] "=&r"(failed), [guarded] "+Q"(guarded)
        :
        : "memory");
  } else if (step == one_step::swap) {
    register uint64_t count asm("x0") = guarded.count;
    register uint64_t found asm("x1") = 0;
    asm volatile(".arch_extension lse\n"
                 "1: mov x4, x0\n"
                 "   add x2, x0, #1\n"
                 "   mov x3, #0\n"
                 "   casp x0, x1, x2, x3, %[guarded]\n"
                 "   cbnz x1, 2f\n"
                 "   cmp x0, x4\n"
                 "   b.ne 1b\n"
                 "2:\n"
                 : "+r"(count), "+r"(found), [guarded] "+Q"(guarded)
                 :
                 : "x2", "x3", "x4", "cc", "memory");
    lock = found;
  } else {
    return false;
  }
  return lock == 0;
}

#else

inline one_step step_for(const std::atomic<uint64_t>& /*count*/, const std::mutex& /*mutex*/) {
  return one_step::none;
}
inline bool add_one_if_free(GuardedCount& /*guarded*/, one_step /*step*/) { return false; }

#endif

}  // namespace short_lock
