// Counts of emulated instructions, in total and for each address.
#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <mutex>

#include "sve/client/exports.h"

// One place in the application that has an emulated instruction.
struct site_count {
  uint32_t encoding;  // the word at the first execution; it stays, whatever the place holds later
  std::atomic<uint64_t> count;
};

// Places by address. Entries are never removed, but all at once.
struct Sites : std::map<unsigned int*, site_count> {
  void clear();
};
extern Sites icounts;

extern "C" {

// Instructions emulated so far, by all threads.
TAVOK_EXPORT extern std::atomic<uint64_t> sve_instr_count;

// Guards icounts, and serialises all calls of update_sve_stats.
TAVOK_EXPORT extern std::mutex icounts_mutex;

// Prints each place of icounts to stderr: its address, its word and how often it was executed.
// Takes no lock, so that a debugger can call it with all threads stopped.
TAVOK_EXPORT void dump_sve_stats();
}

// Counts one execution of the instruction at pc, after it has succeeded.
void update_sve_stats(unsigned int* pc, uint32_t encoding);

// Makes a fork by another thread wait for an update in progress, so that the child can count on.
// Once, when the library is loaded.
void guard_sve_stats_over_fork();
