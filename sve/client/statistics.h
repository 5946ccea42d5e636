// Counts of emulated instructions, in total and for each address.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <map>
#include <mutex>

#include "sve/client/exports.h"

// One place in the application that has an emulated instruction.
struct site_count {
  uint32_t encoding;  // the word at the first execution; it stays, whatever the place holds later
  std::atomic<uint64_t> count;  // without what sve_thread_counts has
};

// Places by address. Entries are never removed, but all at once.
using Sites = std::map<unsigned int*, site_count>;
extern Sites icounts;

// What a thread counts by itself: a line of memory that all threads write would go to and fro
// between them for each instruction. Only its thread changes it.
//
// Volatile fields, since others read them while they change, whole: one load or store each, as of
// an atomic, which would need an instruction more for its address.
struct alignas(64) thread_counts {
  struct place {
    unsigned int* volatile pc;
    volatile uint64_t count;  // executions that the entry of icounts does not have yet
  };
  static constexpr size_t places_size = 1024;
  std::atomic<bool> in_use;
  bool has_places;
  volatile uint64_t uncounted;  // executions that sve_instr_count does not have yet
  std::array<place, places_size> places;
};
inline constexpr size_t counting_threads = 64;

extern "C" {

// tools/gdb reads them.
extern std::array<thread_counts, counting_threads> sve_thread_counts;

// Instructions emulated so far, by all threads. A thread in the middle of a block has not added
// what it has executed of the block.
TAVOK_EXPORT extern std::atomic<uint64_t> sve_instr_count;

// Guards icounts and, in a process of several threads, changes of sve_instr_count.
TAVOK_EXPORT extern std::mutex icounts_mutex;

// Prints each place of icounts to stderr: its address, its word and how often it was executed, by
// all threads. Takes no lock, so that a debugger can call it with all threads stopped.
TAVOK_EXPORT void dump_sve_stats();
}

// Counts one execution of the instruction at pc, after it has succeeded, and what the thread has
// left to it.
void update_sve_stats(unsigned int* pc, uint32_t encoding);

// The same for an instruction behind which the thread comes to another one that is counted, if it
// does not fault before: sve_instr_count is left to that one, so that threads meet at icounts_mutex
// for each block instead of each instruction.
void leave_to_update_sve_stats(unsigned int* pc, uint32_t encoding);

// The calling thread gets counts of its own, if some are left, and gives them back. Without them it
// counts in icounts and sve_instr_count at once.
void begin_thread_counts();
void end_thread_counts();

// sve_instr_count, and what threads have not counted yet. Takes no lock.
uint64_t executed_sve_instructions();

// Makes a fork by another thread wait for an update in progress, so that the child can count on.
// Once, when the library is loaded.
void guard_sve_stats_over_fork();
