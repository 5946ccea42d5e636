#include "sve/stats/statistics.h"

#include <pthread.h>
#include <sys/mman.h>
#include <sys/single_threaded.h>
#include <unistd.h>

#include <cstdio>

#include "sve/state/guarded_reads.h"

constinit std::atomic<thread_counts*> sve_thread_counts = nullptr;

namespace {

// Of a thread that has none: no address is found there, and so none is counted.
constinit thread_counts no_counts = {};

TAVOK_SIGNAL_SAFE_TLS constinit thread_local thread_counts* own_counts = &no_counts;

constinit thread_counts* free_counts = nullptr;  // guarded by icounts_mutex

// Guards the structures once more, against a fork: icounts_mutex may be in the hands of the
// program, which forks while it holds it. Taken last, and never held for longer than it takes to
// change them.
constinit std::mutex structures_mutex;
constinit int forking_thread = 0;

size_t place_number(const unsigned int* pc) {
  return reinterpret_cast<uintptr_t>(pc) / sizeof *pc % thread_counts::places_size;
}

// Others read a share while its thread counts, whole values: one load or store each, as of an
// atomic, which would need an instruction more for its address. The thread sanitizer takes that
// for races.
[[gnu::no_sanitize_thread]] uint64_t count_of(const thread_counts::place& place) {
  return static_cast<const volatile uint64_t&>(place.count);
}
[[gnu::no_sanitize_thread]] unsigned int* pc_of(const thread_counts::place& place) {
  return static_cast<unsigned int* const volatile&>(place.pc);
}
[[gnu::no_sanitize_thread]] void set_count(thread_counts::place& place, uint64_t count) {
  static_cast<volatile uint64_t&>(place.count) = count;
}
[[gnu::no_sanitize_thread]] void set_pc(thread_counts::place& place, unsigned int* pc) {
  static_cast<unsigned int* volatile&>(place.pc) = pc;
}

// Under the lock.
void add(std::atomic<uint64_t>& count, uint64_t times) {
  count.store(count.load(std::memory_order_relaxed) + times, std::memory_order_relaxed);
}

struct Locked {
  Locked() {
    if (!short_lock::try_lock(icounts_mutex)) [[unlikely]]
      short_lock::lock(icounts_mutex);
    structures_mutex.lock();
  }
  ~Locked() {
    structures_mutex.unlock();
    if (!short_lock::try_unlock(icounts_mutex)) [[unlikely]]
      short_lock::wake(icounts_mutex);
  }
};

// The first execution at an address, or after another one has taken its place, or on a thread
// without a share.
[[gnu::noinline, gnu::cold]] void count_new_place(unsigned int* pc, uint32_t encoding) {
  thread_counts& counts = *own_counts;
  const Locked locked;
  site_count& site = icounts.try_emplace(pc, encoding, 0).first->second;
  add(sve_instr_count, 1);
  if (&counts == &no_counts)
    return add(site.count, 1);
  thread_counts::place& place = counts.places[place_number(pc)];
  if (unsigned int* const displaced = place.pc; displaced != nullptr) {
    const uint64_t times = place.count;  // for a moment, a reader without the lock misses them
    set_count(place, 0);
    add(icounts.find(displaced)->second.count, times);
  }
  set_pc(place, pc);
  set_count(place, 1);
}

[[gnu::noinline, gnu::cold]] void count_behind_holder(thread_counts::place& place) {
  const Locked locked;
  add(sve_instr_count, 1);
  set_count(place, place.count + 1);
}

// In the child of a fork, which has the forking thread alone. Another one may have been lost
// between total and place: what its place does not have is not counted.
void take_over_counts() {
  uint64_t total = 0;
  for (const auto& [pc, site] : icounts)
    total += site.count;
  free_counts = nullptr;
  for (thread_counts* counts = sve_thread_counts; counts != nullptr; counts = counts->next) {
    for (const thread_counts::place& place : counts->places)
      total += place.count;
    if (counts != own_counts) {
      counts->next_free = free_counts;
      free_counts = counts;
    }
  }
  sve_instr_count = total;
}

}  // namespace

void Sites::clear() {
  for (thread_counts* counts = sve_thread_counts; counts != nullptr; counts = counts->next)
    counts->places = {};
  std::map<unsigned int*, site_count>::clear();
}

// Runs for each emulated instruction: what is rare is left to functions that it ends in, so that it
// needs no frame. Nobody else can hold the lock, or see that it is not taken, in a process of one
// thread.
void update_sve_stats(unsigned int* pc, uint32_t encoding) {
  thread_counts& counts = *own_counts;
  thread_counts::place* place = &counts.places[place_number(pc)];
  asm("" : "+r"(place));  // one address, so that both fields come by one load
  const thread_counts::place known = *place;
  if (known.pc != pc) [[unlikely]]
    return count_new_place(pc, encoding);
  if (__libc_single_threaded)
    counts.total->count = counts.total->count + 1;
  else if (!short_lock::add_one_if_free(*counts.total, counts.step)) [[unlikely]]
    return count_behind_holder(*place);
  set_count(*place, known.count + 1);
}

uint64_t executions(const Sites::value_type& place) {
  const auto& [pc, site] = place;
  uint64_t times = site.count;
  for (const thread_counts* counts = sve_thread_counts; counts != nullptr; counts = counts->next)
    if (const thread_counts::place& own = counts->places[place_number(pc)]; pc_of(own) == pc)
      times += count_of(own);
  return times;
}

void dump_sve_stats() {
  for (const auto& place : icounts)
    fprintf(stderr, "%p: 0x%08x %ld\n", static_cast<void*>(place.first), place.second.encoding,
            static_cast<long>(executions(place)));
}

// Shares are large and mostly empty: fresh pages are only there when they are used.
void begin_thread_counts() {
  const Locked locked;
  if (free_counts != nullptr) {
    own_counts = free_counts;
    free_counts = own_counts->next_free;
    return;
  }
  void* const memory = mmap(nullptr, sizeof(thread_counts), PROT_READ | PROT_WRITE,
                            MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED)
    return;
  own_counts = static_cast<thread_counts*>(memory);
  own_counts->total = reinterpret_cast<short_lock::GuardedCount*>(&sve_instr_count);
  own_counts->step = short_lock::step_for(sve_instr_count, icounts_mutex);
  own_counts->next = sve_thread_counts;
  sve_thread_counts = own_counts;
}

void end_thread_counts() {
  if (own_counts == &no_counts)
    return;
  const Locked locked;
  own_counts->next_free = free_counts;
  free_counts = own_counts;
  own_counts = &no_counts;
}

void guard_sve_stats_over_fork() {
  const auto before = [] {
    structures_mutex.lock();
    forking_thread = gettid();
  };
  const auto after_in_child = [] {
    take_over_counts();
    structures_mutex.unlock();
    short_lock::keep_over_fork(icounts_mutex, forking_thread, gettid());
  };
  pthread_atfork(
      before, [] { structures_mutex.unlock(); }, after_in_child);
}
