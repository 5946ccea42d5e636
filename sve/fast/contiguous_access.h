// How instruction functions reach the application's memory: one host access for each element, in
// ascending order, so that a fault leaves exactly the elements below it done.
#pragma once

#include <atomic>

#include "sve/fast/vector.h"

namespace fast {

// One access of the datum's size, at any alignment.
template <class Datum> inline Datum read_memory(uint64_t address) {
  Datum datum;
  memcpy(&datum, reinterpret_cast<const void*>(address), sizeof datum);
  return datum;
}

template <class Datum> inline void write_memory(uint64_t address, Datum datum) {
  memcpy(reinterpret_cast<void*>(address), &datum, sizeof datum);
}

// A fault is a signal on this thread: what stands in front of this is done when it arrives.
inline void finish_element() { std::atomic_signal_fence(std::memory_order_seq_cst); }

// Element of a register slot.
template <class T> inline T element(const uint8_t* slot, unsigned i) {
  T value;
  memcpy(&value, slot + i * sizeof(T), sizeof value);
  return value;
}

template <class T> inline void set_element(uint8_t* slot, unsigned i, T value) {
  memcpy(slot + i * sizeof(T), &value, sizeof value);
}

template <class T> inline bool all_active(const uint8_t* predicate) {
  constexpr uint64_t lowest_bytes = ~0ull / static_cast<T>(~T{});
  const uint64_t both = element<uint64_t>(predicate, 0) & element<uint64_t>(predicate, 1);
  return (both & lowest_bytes) == lowest_bytes;
}

// Reads the active ones of the first count elements from where address_of(i) says, extended from
// Memory to T by Memory's sign; inactive elements become 0.
template <class Memory, class T, class Address>
inline void load_elements(uint8_t* zt, const uint8_t* predicate, unsigned count,
                          Address address_of) {
  for (unsigned i = 0; i < count; i++) {
    set_element<T>(zt, i,
                   is_active<T>(predicate, i) ? static_cast<T>(read_memory<Memory>(address_of(i)))
                                              : T{});
    finish_element();
  }
}

// Writes the low bytes of the active elements to where address_of(i) says.
template <class Memory, class T, class Address>
inline void store_elements(const uint8_t* zt, const uint8_t* predicate, Address address_of) {
  for (unsigned i = 0; i < elements<T>; i++) {
    if (is_active<T>(predicate, i))
      write_memory<Memory>(address_of(i), static_cast<Memory>(element<T>(zt, i)));
    finish_element();
  }
}

}  // namespace fast
