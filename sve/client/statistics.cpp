#include "sve/client/statistics.h"

#include <pthread.h>
#include <sys/single_threaded.h>

#include <cstdio>

#include "sve/client/short_lock.h"
#include "sve/client/sve_signals.h"

// One section, so that they lie in one cache line: who gets the lock gets the total with it.
#define WITH_THE_LOCK [[gnu::section(".data.sve_totals")]]
WITH_THE_LOCK constinit std::mutex icounts_mutex;
WITH_THE_LOCK alignas(64) constinit std::atomic<uint64_t> sve_instr_count = 0;
#undef WITH_THE_LOCK

constinit std::array<thread_counts, counting_threads> sve_thread_counts = {};

namespace {

// Of a thread that has none: no address is found there, and so none is counted.
constinit thread_counts no_counts = {};

TAVOK_SIGNAL_SAFE_TLS constinit thread_local thread_counts* own_counts = &no_counts;

size_t place_number(const unsigned int* pc) {
  return reinterpret_cast<uintptr_t>(pc) / sizeof *pc % thread_counts::places_size;
}

// Under the lock. Readers without it see whole values.
void add(std::atomic<uint64_t>& count, uint64_t times) {
  count.store(count.load(std::memory_order_relaxed) + times, std::memory_order_relaxed);
}

void lock() {
  if (!short_lock::try_lock(icounts_mutex)) [[unlikely]]
    short_lock::lock(icounts_mutex);
}

void unlock() {
  if (!short_lock::try_unlock(icounts_mutex)) [[unlikely]]
    short_lock::wake(icounts_mutex);
}

// Under the lock.
void move_to_icounts(thread_counts::place& place) {
  unsigned int* const pc = place.pc;
  const uint64_t times = place.count;
  if (times == 0)
    return;
  place.count = 0;
  add(icounts.find(pc)->second.count, times);
}

// Adds so many executions to the total, and what the thread has left. Under the lock, unless the
// process has one thread.
void count_with_uncounted(thread_counts& counts, uint64_t times) {
  times += counts.uncounted;
  counts.uncounted = 0;
  add(sve_instr_count, times);
}

// Under the lock.
void give_back(thread_counts& counts) {
  count_with_uncounted(counts, 0);
  if (counts.has_places)
    for (thread_counts::place& place : counts.places) {
      move_to_icounts(place);
      place.pc = nullptr;
    }
  counts.has_places = false;
  counts.in_use = false;
}

[[gnu::noinline, gnu::cold]] void take_place(thread_counts& counts, unsigned int* pc,
                                             uint32_t encoding) {
  thread_counts::place& place = counts.places[place_number(pc)];
  lock();
  move_to_icounts(place);
  icounts.try_emplace(pc, encoding, 0);
  place.pc = pc;
  counts.has_places = true;
  unlock();
}

// Whether the thread has counted the address lately, and counts it now, but not in the total.
[[gnu::always_inline]] inline bool count_known_place(thread_counts& counts, unsigned int* pc) {
  thread_counts::place& place = counts.places[place_number(pc)];
  if (place.pc != pc) [[unlikely]]
    return false;
  place.count = place.count + 1;
  return true;
}

[[gnu::noinline]] void count_among_threads(thread_counts& counts) {
  lock();
  count_with_uncounted(counts, 1);
  unlock();
}

// The first execution of a place, or of another one in its place, or on a thread without counts.
[[gnu::noinline, gnu::cold]] void count_new_place(unsigned int* pc, uint32_t encoding) {
  thread_counts& counts = *own_counts;
  if (&counts != &no_counts) {
    take_place(counts, pc, encoding);
    count_known_place(counts, pc);
    return count_among_threads(counts);
  }
  lock();
  add(icounts.try_emplace(pc, encoding, 0).first->second.count, 1);
  add(sve_instr_count, 1);
  unlock();
}

// In the child of a fork, which has the forking thread alone: the others got as far as this.
void count_for_lost_threads() {
  for (thread_counts& counts : sve_thread_counts)
    if (counts.in_use && &counts != own_counts)
      give_back(counts);
}

}  // namespace

// These two run for each emulated instruction: what is rare is left to functions that they end in,
// so that they need no frame. In a process of one thread nobody else can hold the lock, or see that
// it is not taken.
void update_sve_stats(unsigned int* pc, uint32_t encoding) {
  thread_counts& counts = *own_counts;
  if (!count_known_place(counts, pc)) [[unlikely]]
    return count_new_place(pc, encoding);
  if (!__libc_single_threaded)
    return count_among_threads(counts);
  count_with_uncounted(counts, 1);
}

void leave_to_update_sve_stats(unsigned int* pc, uint32_t encoding) {
  thread_counts& counts = *own_counts;
  if (!count_known_place(counts, pc)) [[unlikely]]
    return count_new_place(pc, encoding);
  counts.uncounted = counts.uncounted + 1;
}

void begin_thread_counts() {
  for (thread_counts& counts : sve_thread_counts)
    if (!counts.in_use.exchange(true)) {
      own_counts = &counts;
      return;
    }
}

void end_thread_counts() {
  if (own_counts == &no_counts)
    return;
  lock();
  give_back(*own_counts);
  unlock();
  own_counts = &no_counts;
}

// Looks again if a thread has moved something to the total meanwhile: it would be missed, or be
// there twice.
uint64_t executed_sve_instructions() {
  uint64_t total = sve_instr_count, uncounted = 0;
  for (int tries = 0; tries < 100; tries++) {
    uncounted = 0;
    for (const thread_counts& counts : sve_thread_counts)
      uncounted += counts.uncounted;
    const uint64_t before = total;
    total = sve_instr_count;
    if (total == before)
      break;
  }
  return total + uncounted;
}

void dump_sve_stats() {
  for (const auto& [pc, site] : icounts) {
    uint64_t count = site.count;
    for (const thread_counts& counts : sve_thread_counts)
      if (const auto& place = counts.places[place_number(pc)]; place.pc == pc)
        count += place.count;
    fprintf(stderr, "%p: 0x%08x %ld\n", static_cast<void*>(pc), site.encoding,
            static_cast<long>(count));
  }
}

void guard_sve_stats_over_fork() {
  pthread_atfork([] { icounts_mutex.lock(); }, [] { icounts_mutex.unlock(); },
                 [] {
                   count_for_lost_threads();
                   icounts_mutex.unlock();
                 });
}
