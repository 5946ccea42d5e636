// Two neighbouring doublewords, looked at and changed in one atomic step.
#pragma once

#include <cstdint>

#if defined(__aarch64__)
#include <sys/auxv.h>
#endif

namespace host {

// By two registers that are loaded and stored exclusively or, with large-system atomics, compared
// and swapped.
enum class one_step : uint8_t { exclusive, swap, none };

#if defined(__aarch64__)

// The best way on this processor.
inline one_step best_step() {
  return (getauxval(AT_HWCAP) & HWCAP_ATOMICS) != 0 ? one_step::swap : one_step::exclusive;
}

// Adds 1 to the first doubleword of an object of 16 aligned bytes if the second is 0. False, and
// nothing changed, if it is not, or without a step. Orders no other accesses.
template <class Pair>
[[gnu::always_inline]] inline bool add_one_if_zero(Pair& pair, one_step step) {
  static_assert(sizeof(Pair) >= 16 && alignof(Pair) >= 16);
  uint64_t second;
  if (step == one_step::exclusive) [[likely]] {
    uint64_t first;
    uint32_t failed;
    asm volatile(
        "1: ldxp %[first], %[second], %[pair]\n"
        "   cbnz %[second], 2f\n"
        "   add %[first], %[first], #1\n"
        "   stxp %w[failed], %[first], xzr, %[pair]\n"
        "   cbnz %w[failed], 1b\n"
        "2:\n"
        : [first] "=&r"(first), [second] "=&r"(second), [failed] "=&r"(failed), [pair] "+Q"(pair)
        :
        : "memory");
  } else if (step == one_step::swap) {
    register uint64_t first asm("x0") = *reinterpret_cast<const volatile uint64_t*>(&pair);
    register uint64_t found asm("x1") = 0;
    asm volatile(".arch_extension lse\n"
                 "1: mov x4, x0\n"
                 "   add x2, x0, #1\n"
                 "   mov x3, #0\n"
                 "   casp x0, x1, x2, x3, %[pair]\n"
                 "   cbnz x1, 2f\n"
                 "   cmp x0, x4\n"
                 "   b.ne 1b\n"
                 "2:\n"
                 : "+r"(first), "+r"(found), [pair] "+Q"(pair)
                 :
                 : "x2", "x3", "x4", "cc", "memory");
    second = found;
  } else {
    return false;
  }
  return second == 0;
}

#else

inline one_step best_step() { return one_step::none; }
template <class Pair> inline bool add_one_if_zero(Pair&, one_step) { return false; }

#endif

}  // namespace host
