// Counts of emulated instructions, in total and for each address.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <map>
#include <mutex>

#include "sve/state/exports.h"
#include "sve/stats/short_lock.h"

// One place in the application that has an emulated instruction.
struct site_count {
  uint32_t encoding;  // the word at the first execution; it stays, whatever the place holds later
  std::atomic<uint64_t> count;  // without what sve_thread_counts has
};

// Places by address. Entries are never removed, but all at once.
struct Sites : std::map<unsigned int*, site_count> {
  void clear();
};
extern Sites icounts;

// A thread's share of the counts of addresses: a cache line that all threads write would go to and
// fro between them for each instruction. Only its thread changes it. A share stays when its thread
// ends, and a later thread goes on with it. The last two fields are the same in all shares, where
// they are at hand.
struct alignas(64) thread_counts {
  struct place {
    unsigned int* pc;
    uint64_t count;  // executions that the entry of icounts does not have
  };
  static constexpr size_t places_size = 1024;
  std::array<place, places_size> places;
  thread_counts* next;              // in sve_thread_counts
  thread_counts* next_free;         // among those without a thread
  short_lock::one_step step;        // to count in the total while the process has other threads
  short_lock::GuardedCount* total;  // the mutex is behind it only if there is a step
};

extern "C" {

// All shares. None is ever removed. tools/gdb reads them.
extern std::atomic<thread_counts*> sve_thread_counts;

// Instructions emulated so far, by all threads.
TAVOK_EXPORT extern std::atomic<uint64_t> sve_instr_count;

// Guards icounts, and serialises all calls of update_sve_stats: while somebody holds it, nothing is
// added to sve_instr_count.
TAVOK_EXPORT extern std::mutex icounts_mutex;

// Prints each place of icounts to stderr: its address, its word and how often it was executed.
// Takes no lock, so that a debugger can call it with all threads stopped.
TAVOK_EXPORT void dump_sve_stats();
}

// How often the instruction at a place of icounts was executed, by all threads. Takes no lock.
uint64_t executions(const Sites::value_type& place);

// Counts one execution of the instruction at pc, after it has succeeded.
void update_sve_stats(unsigned int* pc, uint32_t encoding);

// The calling thread gets its share of the counts, and gives it back. Without one, or if there is
// no memory for it, it counts in icounts, which takes longer.
void begin_thread_counts();
void end_thread_counts();

// Gives the child of a fork exact counts, and a lock that no lost thread holds, so that it can
// count on. A thread that forks while it holds the lock holds it in the child, too. Once, when the
// library is loaded.
void guard_sve_stats_over_fork();
