// Saturating integer arithmetic of the architecture's pseudocode.
#pragma once

#include "sve/model/wide_integer.h"

// A value and whether it was clamped.
struct SaturationPair {
  uint64_t value;
  int32_t saturated;
};

// i clamped to esize bits, signed or unsigned, and cut to them.
constexpr SaturationPair SatQ(WideInt i, int esize, int is_unsigned) {
  if (is_unsigned != 0) {
    if (i < 0)
      return {0, 1};
    if (i >> esize != 0)
      return {ones(esize), 1};
  } else {
    const WideInt bound = static_cast<WideInt>(1) << (esize - 1);
    if (i >= bound)
      return {bits(bound - 1), 1};
    if (i < -bound)
      return {bits(bound), 1};
  }
  return {bits(i) & ones(esize), 0};
}

// The same decisions, with a value that is not cut to esize bits.
constexpr SaturationPair SatQShift(WideInt i, int esize, int is_unsigned) {
  const SaturationPair pair = SatQ(i, esize, is_unsigned);
  if (pair.saturated == 0)
    return {bits(i), 0};
  return is_unsigned == 0 && i < 0
             ? SaturationPair{bits(-(static_cast<WideInt>(1) << (esize - 1))), 1}
             : pair;
}

// i, shifted from a signed value, clamped to an unsigned one. esize: up to 32. In range the high
// half of i is not looked at.
constexpr SaturationPair SatQUShift(WideInt i, int esize) {
  if (bits(i) <= ones(esize))
    return {bits(i), 0};
  return {i >> (2 * esize) == 0 ? ones(esize) : 0, 1};
}

// The sum, difference or product of the low esize bits, clamped. Only the low esize bits of the
// result are defined.
constexpr uint64_t SatAdd(uint64_t a, uint64_t b, int esize, int is_unsigned) {
  const WideInt sum = Int(a, esize, is_unsigned) + Int(b, esize, is_unsigned);
  const SaturationPair pair = SatQ(sum, esize, is_unsigned);
  return pair.saturated != 0 ? pair.value : bits(sum);
}
constexpr uint64_t SatSub(uint64_t a, uint64_t b, int esize, int is_unsigned) {
  return SatQ(Int(a, esize, is_unsigned) - Int(b, esize, is_unsigned), esize, is_unsigned).value;
}
constexpr uint64_t SatMult(uint64_t a, uint64_t b, int esize, int is_unsigned) {
  const WideInt product = MulInt(Int(a, esize, is_unsigned), Int(b, esize, is_unsigned));
  const SaturationPair pair = SatQ(product, esize, is_unsigned);
  return pair.saturated != 0 ? pair.value : bits(product);
}

// a shifted left by n, clamped; right for a negative n.
constexpr SaturationPair ShiftQLeftInt(WideInt a, WideInt n, int esize, int is_unsigned) {
  if (n < 0)
    return {bits(ShiftRightInt(a, NegInt(n))), 0};
  if (n < esize)
    return SatQShift(ShiftLeftInt(a, n), esize, is_unsigned);
  if (a == 0)
    return {0, 0};
  if (is_unsigned == 1)
    return {ones(esize), 1};
  const WideInt bound = static_cast<WideInt>(1) << (esize - 1);
  return {bits(a > 0 ? bound - 1 : -bound), 1};
}

// The low esize bits of a shifted left by those of b, at most by esize, clamped.
constexpr uint64_t SatShiftLeft(uint64_t a, uint64_t b, int esize, int is_unsigned) {
  const WideInt count = Int(b, esize, is_unsigned);
  const WideInt shifted =
      ShiftLeftInt(Int(a, esize, is_unsigned), count > esize ? WideInt{esize} : count);
  if (SatQ(shifted, esize, is_unsigned).saturated == 0)
    return bits(shifted);
  if (is_unsigned != 0)
    return ones(esize);
  const uint64_t bound = 1ull << (esize - 1);
  return a >> (esize - 1) != 0 ? bound : bound - 1;
}

// The same from a signed a to an unsigned result, with an unsigned count.
constexpr SaturationPair SatShiftLeftU(uint64_t a, uint64_t b, int esize) {
  const WideInt count = UInt(b, esize);
  const WideInt shifted = ShiftLeftInt(Int(a, esize, 0), count > esize ? WideInt{esize} : count);
  if (shifted >> esize == 0)
    return {bits(shifted), 0};
  return {a >> (esize - 1) == 0 ? ones(esize) : 0, 1};
}
