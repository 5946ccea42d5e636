// Holds a std::mutex for a dozen instructions: without a function call if the mutex is free, and
// after a little patience if it is not, since to sleep and to be woken takes a hundred times as
// long as what others do under it.
//
// glibc's plain mutex begins with its lock word: 0 free, 1 held, 2 held and perhaps waited for. To
// lock is to change 0 into 1; to unlock is to change 1 into 0, and only from 2 on is there somebody
// to wake. The C library also notes owner and number of users beside the word, which mean nothing
// for this kind of mutex, but it insists that a free one has no owner. So they stay 0 here, and its
// own functions and these work on one mutex together. With another C library, its functions are all
// there is.
#pragma once

#include <pthread.h>

#include <mutex>

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
  if constexpr (HasLockWord<Native>)
    return change<Native>(mutex, 0, 1);
  else
    return mutex.try_lock();
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
  if constexpr (HasLockWord<Native>)
    return change<Native>(mutex, 1, 0);
  else
    return false;
}

}  // namespace short_lock
