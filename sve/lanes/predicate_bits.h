// Predicates as they stand in the record, as one number: a byte for each bit of the architecture's.
#pragma once

#include "sve/lanes/vector.h"

namespace lanes {

__extension__ typedef unsigned __int128 predicate_bits;

// Bit 0 of each element's first byte.
template <class T>
inline constexpr predicate_bits first_bits = ~predicate_bits{0} / static_cast<T>(-1);

// The slot of a predicate, or a buffer like it, as one number. The elements ascend with the bits.
inline predicate_bits load_bits(const void* slot) {
  predicate_bits bits;
  memcpy(&bits, slot, vector_bytes);
  return bits;
}

inline void store_bits(uint8_t* slot, predicate_bits bits) { memcpy(slot, &bits, vector_bytes); }

// A predicate's elements, the bits without meaning removed.
template <class T> inline predicate_bits element_bits_of(const void* slot) {
  return load_bits(slot) & first_bits<T>;
}

inline predicate_bits lowest_bit(predicate_bits bits) { return bits & -bits; }

// Whether the highest bit of the mask is one of the bits; false for an empty mask. The greater of
// two disjoint numbers has the highest bit of both, and a borrow tells without a branch.
inline bool has_highest_bit(predicate_bits mask, predicate_bits bits) {
  predicate_bits difference;
  return __builtin_sub_overflow(mask & ~bits, mask & bits, &difference);
}

}  // namespace lanes
