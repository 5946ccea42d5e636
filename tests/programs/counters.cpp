// Counting by vector length and by predicate, and saturating arithmetic, by intrinsics beside plain
// loops. Families: CNTB to CNTD with patterns, INC and DEC of general registers and vectors, SQINC,
// UQINC, SQDEC, UQDEC and their P forms, SQADD, UQADD, SQSUB, UQSUB, RDVL, ADR, ADDVL by way of the
// stack, INDEX.
#include "lanes.h"

using kernels::Numbers;
using namespace lanes;

namespace {

// What saturates: the exact result, cut to the type.
template <class T> T saturate(__int128 value) {
  const __int128 low = std::numeric_limits<T>::min(), high = std::numeric_limits<T>::max();
  return static_cast<T>(value < low ? low : value > high ? high : value);
}

#ifdef __ARM_FEATURE_SVE

uint64_t pattern_counts() {
  uint64_t hash = 0;
  const auto add = [&hash](uint64_t n) { hash = hash * 41 + n; };
  add(svcntb()), add(svcnth()), add(svcntw()), add(svcntd());
  add(svcntb_pat(SV_POW2)), add(svcntb_pat(SV_VL1)), add(svcntb_pat(SV_VL5));
  add(svcntb_pat(SV_VL16)), add(svcntb_pat(SV_VL32)), add(svcntb_pat(SV_MUL3));
  add(svcnth_pat(SV_VL7)), add(svcnth_pat(SV_MUL3)), add(svcnth_pat(SV_VL8));
  add(svcntw_pat(SV_MUL4)), add(svcntw_pat(SV_MUL3)), add(svcntw_pat(SV_VL3));
  add(svcntd_pat(SV_VL2)), add(svcntd_pat(SV_VL3)), add(svcntd_pat(SV_ALL));
  return hash;
}

Predicate pattern(int which) {
  switch (which) {
  case 0:
    return store(svptrue_pat_b8(SV_MUL3));
  case 1:
    return store(svptrue_pat_b8(SV_VL7));
  case 2:
    return store(svptrue_pat_b16(SV_POW2));
  case 3:
    return store(svptrue_pat_b16(SV_VL5));
  case 4:
    return store(svptrue_pat_b32(SV_VL3));
  case 5:
    return store(svptrue_pat_b64(SV_VL4));
  default:
    return store(svptrue_pat_b64(SV_VL1));
  }
}

template <class T> T step_scalar(T x) {
  x = svqincb(x, 3);
  x = svqdech_pat(x, SV_VL5, 2);
  x = svqincw_pat(x, SV_MUL3, 16);
  return svqdecd(x, 1);
}

template <class T> T step_by_predicate(const Predicate& g, T x) {
  return svqdecp_b16(svqincp_b8(x, load(g)), load(g));
}

template <class T> Vector<T> step_vector(const Predicate& g, const Vector<T>& a) {
  const svbool_t pg = load(g);
  const auto za = load(a);
  if constexpr (sizeof(T) == 2)
    return store<T>(svqincp(svqdech(svqinch_pat(za, SV_MUL3, 4), 1), pg));
  if constexpr (sizeof(T) == 4)
    return store<T>(svqdecp(svqdecw(svqincw_pat(za, SV_VL3, 4), 1), pg));
  if constexpr (sizeof(T) == 8)
    return store<T>(svqincp(svqdecd(svqincd_pat(za, SV_ALL, 4), 1), pg));
}

template <class T> Vector<T> saturating(const Vector<T>& a, const Vector<T>& b) {
  const auto za = load(a), zb = load(b);
  return store<T>(svqsub(svqadd(za, zb), svqadd(svqsub(zb, za), T(100))));
}

// Addresses base + index * 4, and base + the index's low half signed.
Vector<uint64_t> addresses(const Vector<uint64_t>& base, const Vector<int64_t>& index) {
  const svuint64_t scaled = svadrw_index(load(base), load(index));
  return store<uint64_t>(svadrb_offset(scaled, svextw_x(svptrue_b64(), load(index))));
}

#else

int limit(int pattern_elements, int available) {
  return pattern_elements <= available ? pattern_elements : 0;
}

uint64_t pattern_counts() {
  uint64_t hash = 0;
  const auto add = [&hash](uint64_t n) { hash = hash * 41 + n; };
  add(16), add(8), add(4), add(2);
  add(16), add(1), add(5);
  add(16), add(limit(32, 16)), add(15);
  add(7), add(6), add(8);
  add(4), add(3), add(3);
  add(2), add(limit(3, 2)), add(2);
  return hash;
}

Predicate first_elements(int size, int n) {
  Predicate p{};
  for (int i = 0; i < n; i++)
    p.bit[i * size] = 1;
  return p;
}

Predicate pattern(int which) {
  switch (which) {
  case 0:
    return first_elements(1, 15);
  case 1:
    return first_elements(1, 7);
  case 2:
    return first_elements(2, 8);
  case 3:
    return first_elements(2, 5);
  case 4:
    return first_elements(4, 3);
  case 5:
    return first_elements(8, limit(4, 2));
  default:
    return first_elements(8, 1);
  }
}

template <class T> int set_elements(const Predicate& g) {
  int n = 0;
  for (int i = 0; i < count<T>; i++)
    n += g.active<T>(i);
  return n;
}

template <class T> T step_scalar(T x) {
  x = saturate<T>(__int128(x) + 16 * 3);
  x = saturate<T>(__int128(x) - 5 * 2);
  x = saturate<T>(__int128(x) + 3 * 16);
  return saturate<T>(__int128(x) - 2);
}

template <class T> T step_by_predicate(const Predicate& g, T x) {
  x = saturate<T>(__int128(x) + set_elements<uint8_t>(g));
  return saturate<T>(__int128(x) - set_elements<uint16_t>(g));
}

template <class T> Vector<T> step_vector(const Predicate& g, const Vector<T>& a) {
  const int up = sizeof(T) == 2 ? 6 * 4 : sizeof(T) == 4 ? 3 * 4 : 2 * 4;
  const int by_predicate = sizeof(T) == 4 ? -set_elements<T>(g) : set_elements<T>(g);
  Vector<T> d;
  for (int i = 0; i < count<T>; i++) {
    d.at[i] = saturate<T>(__int128(a.at[i]) + up);
    d.at[i] = saturate<T>(__int128(d.at[i]) - count<T>);
    d.at[i] = saturate<T>(__int128(d.at[i]) + by_predicate);
  }
  return d;
}

template <class T> Vector<T> saturating(const Vector<T>& a, const Vector<T>& b) {
  Vector<T> d;
  for (int i = 0; i < count<T>; i++) {
    const T sum = saturate<T>(__int128(a.at[i]) + b.at[i]);
    const T difference = saturate<T>(__int128(b.at[i]) - a.at[i]);
    d.at[i] = saturate<T>(__int128(sum) - saturate<T>(__int128(difference) + 100));
  }
  return d;
}

Vector<uint64_t> addresses(const Vector<uint64_t>& base, const Vector<int64_t>& index) {
  Vector<uint64_t> d;
  for (int i = 0; i < 2; i++)
    d.at[i] = base.at[i] + 4 * index.at[i] + static_cast<int32_t>(index.at[i]);
  return d;
}

#endif

template <class T> void scalars() {
  check<T>("step", [](Numbers& some) { return step_scalar(some.any<T>()); });
  check<T>("step by a predicate", [](Numbers& some) {
    const Predicate g = any_predicate(some);
    return step_by_predicate(g, some.any<T>());
  });
}

template <class T> void vectors() {
  if constexpr (sizeof(T) > 1)
    check<T>("step a vector", [](Numbers& some) {
      const Predicate g = any_predicate(some);
      return step_vector(g, any_vector<T>(some));
    });
  check<T>("saturating", [](Numbers& some) {
    const Vector<T> a = any_vector<T>(some);
    return saturating(a, any_vector<T>(some));
  });
}

}  // namespace

int main() {
  check<uint64_t>("patterns", [](Numbers&) { return pattern_counts(); });
  for (int which = 0; which < 7; which++)
    check<uint8_t>("pattern", [which](Numbers&) { return pattern(which); });
  scalars<int32_t>();
  scalars<uint32_t>();
  scalars<int64_t>();
  scalars<uint64_t>();
  vectors<int8_t>();
  vectors<uint8_t>();
  vectors<int16_t>();
  vectors<uint16_t>();
  vectors<int32_t>();
  vectors<uint32_t>();
  vectors<int64_t>();
  vectors<uint64_t>();
  check<uint64_t>("addresses", [](Numbers& some) {
    const Vector<uint64_t> base = any_vector<uint64_t>(some);
    return addresses(base, any_vector<int64_t>(some));
  });
}
