// Bad luck for threads. The runtime is compiled here as for the thread sanitizer, which is not
// linked: its calls, one in front of each access to memory, come to this file. Where
// TAVOK_TEST_YIELDS is a number, that number chooses places of the code at which threads sleep;
// elsewhere they give way now and then. So other threads, and signals, come between any two
// accesses, and the same number chooses the same places again.
#include <sys/syscall.h>

#include <cstdint>
#include <cstdlib>
#include <ctime>

namespace {

uint64_t seed = 0;

[[gnu::constructor]] void read_seed() {
  const char* const wanted = std::getenv("TAVOK_TEST_YIELDS");
  seed = wanted != nullptr ? std::strtoull(wanted, nullptr, 0) : 0;
}

uint64_t mix(uint64_t value) {
  value = (value ^ value >> 30) * 0xbf58476d1ce4e5b9;
  value = (value ^ value >> 27) * 0x94d049bb133111eb;
  return value ^ value >> 31;
}

// By hand, since signals may find the C library's own call where they must not.
void call(long number, const void* argument) {
  register long x8 asm("x8") = number;
  register const void* x0 asm("x0") = argument;
  register const void* x1 asm("x1") = nullptr;
  asm volatile("svc #0" : "+r"(x0) : "r"(x8), "r"(x1) : "memory");
}

// Threads are slowed down to a part of their speed, and not at the beginning alone: who has slept
// at a place does so there again only after some thousandths of a second.
[[gnu::noinline]] void visit(const void* site) {
  constexpr uint64_t kSleepers = 8, kGiveWay = 512, kTimes = 12, kRestsPerSecond = 32;
  static uint64_t rested[4096], visits;
  const uint64_t place = reinterpret_cast<uint64_t>(site) - reinterpret_cast<uint64_t>(&visit);
  const uint64_t chosen = mix(place ^ mix(seed));
  const uint64_t random = mix(chosen + __atomic_fetch_add(&visits, 1, __ATOMIC_RELAXED));
  if (chosen % kSleepers == 0) {
    uint64_t now, frequency;
    asm volatile("mrs %0, cntvct_el0\n mrs %1, cntfrq_el0" : "=r"(now), "=r"(frequency));
    uint64_t* const at = &rested[chosen / kSleepers % 4096];
    if (now >= __atomic_load_n(at, __ATOMIC_RELAXED)) {
      __atomic_store_n(at, now + frequency / kRestsPerSecond, __ATOMIC_RELAXED);
      const timespec time = {0, 1000L << random % kTimes};
      call(SYS_nanosleep, &time);
    }
  } else if (random % kGiveWay == 0) {
    call(SYS_sched_yield, nullptr);
  }
}

[[gnu::always_inline]] inline void come_by() {
  if (seed != 0) {
    visit(__builtin_return_address(0));
  }
}

}  // namespace

#define ACCESSES(size)                                                                             \
  void __tsan_read##size(void*) { come_by(); }                                                     \
  void __tsan_write##size(void*) { come_by(); }                                                    \
  void __tsan_unaligned_read##size(void*) { come_by(); }                                           \
  void __tsan_unaligned_write##size(void*) { come_by(); }

// Behind a change, too: it is seen, and what follows is still to come.
#define CHANGE(bits, name, builtin)                                                                \
  uint##bits##_t __tsan_atomic##bits##_##name(volatile uint##bits##_t* at, uint##bits##_t value,   \
                                              int) {                                               \
    come_by();                                                                                     \
    const auto result = builtin(at, value, __ATOMIC_SEQ_CST);                                      \
    come_by();                                                                                     \
    return result;                                                                                 \
  }

#define COMPARE(bits, name)                                                                        \
  bool __tsan_atomic##bits##_compare_exchange_##name(                                              \
      volatile uint##bits##_t* at, uint##bits##_t* expected, uint##bits##_t wanted, int, int) {    \
    come_by();                                                                                     \
    const bool done = __atomic_compare_exchange_n(at, expected, wanted, false, __ATOMIC_SEQ_CST,   \
                                                  __ATOMIC_SEQ_CST);                               \
    come_by();                                                                                     \
    return done;                                                                                   \
  }

#define ATOMICS(bits)                                                                              \
  uint##bits##_t __tsan_atomic##bits##_load(const volatile uint##bits##_t* at, int) {              \
    come_by();                                                                                     \
    return __atomic_load_n(at, __ATOMIC_SEQ_CST);                                                  \
  }                                                                                                \
  void __tsan_atomic##bits##_store(volatile uint##bits##_t* at, uint##bits##_t value, int) {       \
    come_by();                                                                                     \
    __atomic_store_n(at, value, __ATOMIC_SEQ_CST);                                                 \
    come_by();                                                                                     \
  }                                                                                                \
  CHANGE(bits, exchange, __atomic_exchange_n)                                                      \
  CHANGE(bits, fetch_add, __atomic_fetch_add)                                                      \
  CHANGE(bits, fetch_sub, __atomic_fetch_sub)                                                      \
  CHANGE(bits, fetch_and, __atomic_fetch_and)                                                      \
  CHANGE(bits, fetch_or, __atomic_fetch_or)                                                        \
  COMPARE(bits, strong)                                                                            \
  COMPARE(bits, weak)

extern "C" {
void __tsan_init() {}
void __tsan_vptr_update(void*, void*) {}
void __tsan_read_range(void*, unsigned long) { come_by(); }
void __tsan_write_range(void*, unsigned long) { come_by(); }
void __tsan_atomic_thread_fence(int) {
  __atomic_thread_fence(__ATOMIC_SEQ_CST);
  come_by();
}
void __tsan_atomic_signal_fence(int) { come_by(); }
ACCESSES(1)
ACCESSES(2)
ACCESSES(4)
ACCESSES(8)
ACCESSES(16)
ATOMICS(8)
ATOMICS(32)
ATOMICS(64)
}
