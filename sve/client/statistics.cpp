#include "sve/client/statistics.h"

#include <pthread.h>

#include <cstdio>

std::atomic<uint64_t> sve_instr_count;
std::mutex icounts_mutex;

void update_sve_stats(unsigned int* pc, uint32_t encoding) {
  const std::lock_guard lock(icounts_mutex);
  sve_instr_count.fetch_add(1, std::memory_order_relaxed);
  site_count& site = icounts.try_emplace(pc, encoding, 0).first->second;
  site.count.fetch_add(1, std::memory_order_relaxed);
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
