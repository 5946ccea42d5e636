#include "sve/client/statistics.h"

#include <pthread.h>
#include <sys/single_threaded.h>

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <memory>

#include "sve/client/short_lock.h"

// One section, so that they lie in one cache line: who gets the lock gets the total with it.
#define WITH_THE_LOCK [[gnu::section(".data.sve_totals")]]
WITH_THE_LOCK constinit std::mutex icounts_mutex;
WITH_THE_LOCK alignas(64) constinit std::atomic<uint64_t> sve_instr_count = 0;
#undef WITH_THE_LOCK

namespace {

// Where the entries of recent addresses are: an entry of the map never moves. Guarded by
// icounts_mutex.
struct KnownSite {
  unsigned int* pc;
  std::atomic<uint64_t>* count;
};
constexpr size_t known_sites_size = 1024;
constinit KnownSite known_sites[known_sites_size] = {};

KnownSite& known_site(unsigned int* pc) {
  KnownSite* site = &known_sites[reinterpret_cast<uintptr_t>(pc) / sizeof *pc % known_sites_size];
  asm("" : "+r"(site));  // one address, so that both fields come by one load
  return *site;
}

// All changes are made one at a time, and readers without the lock see whole values.
void add_one(std::atomic<uint64_t>& count) {
  count.store(count.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
}

void unlock() {
  if (!short_lock::try_unlock(icounts_mutex)) [[unlikely]]
    short_lock::wake(icounts_mutex);
}

// Whether the address was counted lately, and is counted now.
[[gnu::always_inline]] inline bool count_known_site(unsigned int* pc) {
  const KnownSite known = known_site(pc);
  if (known.pc != pc) [[unlikely]]
    return false;
  add_one(*known.count);
  add_one(sve_instr_count);
  return true;
}

// Under the lock, which it gives back.
[[gnu::noinline]] void count_new_site(unsigned int* pc, uint32_t encoding) {
  const std::unique_ptr<std::mutex, decltype([](auto*) { unlock(); })> guard(&icounts_mutex);
  std::atomic<uint64_t>& count = icounts.try_emplace(pc, encoding, 0).first->second.count;
  known_site(pc) = {pc, &count};
  add_one(count);
  add_one(sve_instr_count);
}

// Under the lock, which it gives back.
[[gnu::always_inline]] inline void count_and_unlock(unsigned int* pc, uint32_t encoding) {
  if (!count_known_site(pc)) [[unlikely]]
    return count_new_site(pc, encoding);
  unlock();
}

[[gnu::noinline, gnu::cold]] void update_behind_others(unsigned int* pc, uint32_t encoding) {
  short_lock::lock(icounts_mutex);
  count_and_unlock(pc, encoding);
}

}  // namespace

void Sites::clear() {
  std::fill(std::begin(known_sites), std::end(known_sites), KnownSite{});
  std::map<unsigned int*, site_count>::clear();
}

// Runs for each emulated instruction: what is rare is left to functions that it ends in, so that it
// needs no frame. Nobody else can hold the lock, or see that it is not taken, in a process of one
// thread.
void update_sve_stats(unsigned int* pc, uint32_t encoding) {
  if (__libc_single_threaded && count_known_site(pc))
    return;
  if (!short_lock::try_lock(icounts_mutex)) [[unlikely]]
    return update_behind_others(pc, encoding);
  count_and_unlock(pc, encoding);
}

void dump_sve_stats() {
  for (const auto& [pc, site] : icounts)
    fprintf(stderr, "%p: 0x%08x %ld\n", static_cast<void*>(pc), site.encoding,
            static_cast<long>(site.count.load(std::memory_order_relaxed)));
}

void guard_sve_stats_over_fork() {
  pthread_atfork([] { icounts_mutex.lock(); }, [] { icounts_mutex.unlock(); },
                 [] { icounts_mutex.unlock(); });
}
