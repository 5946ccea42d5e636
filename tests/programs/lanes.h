// One vector's elements and one predicate's bits as arrays: what the programs with a plain and an
// SVE form of each instruction pass around. A vector has 128 bits here, as it has under tavok.
#pragma once

#include <cstdint>
#include <initializer_list>

#include "kernels.h"

#ifdef __ARM_FEATURE_SVE
#include <arm_sve.h>
#endif

namespace lanes {

inline constexpr int bytes = 16;

template <class T> inline constexpr int count = bytes / sizeof(T);

template <class T> struct Vector { T at[count<T>]; };

// One byte for each bit of the predicate, 0 or 1.
struct Predicate {
  uint8_t bit[bytes];

  template <class T> bool active(int i) const { return bit[i * sizeof(T)]; }
  // The element's lowest bit is the value, the others are clear.
  template <class T> void set(int i, bool value) {
    for (unsigned k = 0; k < sizeof(T); k++)
      bit[i * sizeof(T) + k] = k == 0 && value;
  }
};

template <class T> Vector<T> any_vector(kernels::Numbers& numbers) {
  Vector<T> v;
  for (T& element : v.at)
    element = numbers.any<T>();
  return v;
}

// All, none, few or half of the bits.
inline Predicate any_predicate(kernels::Numbers& numbers) {
  Predicate p;
  const uint64_t a = numbers.next(), b = numbers.next(), c = numbers.next();
  for (int i = 0; i < bytes; i++) {
    const uint64_t patterns[] = {~0ull, 0, a & b & c, a, a | b, a & b, a, b};
    p.bit[i] = patterns[c >> 61] >> i & 1;
  }
  return p;
}

#ifdef __ARM_FEATURE_SVE
template <class T> svbool_t all() {
  if constexpr (sizeof(T) == 1)
    return svptrue_b8();
  if constexpr (sizeof(T) == 2)
    return svptrue_b16();
  if constexpr (sizeof(T) == 4)
    return svptrue_b32();
  if constexpr (sizeof(T) == 8)
    return svptrue_b64();
}

template <class T> auto load(const Vector<T>& v) { return svld1(all<T>(), v.at); }

inline svbool_t load(const Predicate& p) {
  return svcmpne(svptrue_b8(), svld1(svptrue_b8(), p.bit), 0);
}

template <class T, class Z> Vector<T> store(Z z) {
  Vector<T> v;
  svst1(all<T>(), v.at, z);
  return v;
}

inline Predicate store(svbool_t g) {
  Predicate p;
  svst1(svptrue_b8(), p.bit, svdup_u8_z(g, 1));
  return p;
}
#endif

// Collects what a function gives for many random operands, and prints one line.
template <class T, class Function> void check(const char* name, Function f) {
  kernels::Numbers numbers(7 * sizeof(T) + 5);
  uint64_t hash = 0;
  for (int round = 0; round < 40; round++) {
    const auto result = f(numbers);
    hash = kernels::hash_bytes(&result, sizeof result, hash);
  }
  kernels::print_line<T>(name, hash);
}

}  // namespace lanes
