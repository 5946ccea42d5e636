// How instruction functions reach the application's memory: one host access for each element, in
// ascending order, so that a fault leaves exactly the elements below it done; or one for several
// elements, where no fault can fall between them. With faults as the hardware has them a load that
// faults leaves its destination as it was.
#pragma once

#include <bit>
#include <utility>

#include "host/application_memory.h"
#include "sve/fast/operands.h"
#include "sve/fast/predicate_flags.h"
#include "sve/state/switches.h"

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

// Element of a register slot.
template <class T> inline T element(const uint8_t* slot, unsigned i) {
  T value;
  memcpy(&value, slot + i * sizeof(T), sizeof value);
  return value;
}

template <class T> inline void set_element(uint8_t* slot, unsigned i, T value) {
  memcpy(slot + i * sizeof(T), &value, sizeof value);
}

// One bit in the lowest byte of each element of eight.
template <class T> inline constexpr uint64_t lowest_bits = ~0ull / static_cast<T>(~T{});

template <class T> inline bool all_active(const uint8_t* predicate) {
  const uint64_t both = element<uint64_t>(predicate, 0) & element<uint64_t>(predicate, 1);
  return (both & lowest_bits<T>) == lowest_bits<T>;
}

// The number of active elements if they are the lowest ones, as at the end of a loop; else more
// than there are.
template <class T> inline unsigned lowest_active(const uint8_t* predicate) {
  const predicate_bits bits = element_bits_of<T>(predicate);
  const predicate_bits bytes = (bits << 8 * sizeof(T)) - bits;
  if ((bytes & (bytes + 1)) != 0)
    return vector_bytes + 1;
  const int ones = std::countr_one(static_cast<uint64_t>(bytes)) +
                   std::countr_one(static_cast<uint64_t>(bytes >> 64));
  return static_cast<unsigned>(ones) / (8 * sizeof(T));
}

// Reads the active ones of the first count elements from where address_of(i) says, extended from
// Memory to T by Memory's sign; inactive elements become 0.
template <class Memory, class T, class Address>
inline void load_lowest(uint8_t* zt, const uint8_t* predicate, unsigned count, Address address_of) {
  for (unsigned i = 0; i < count; i++) {
    set_element<T>(zt, i,
                   is_active<T>(predicate, i) ? static_cast<T>(read_memory<Memory>(address_of(i)))
                                              : T{});
    host::finish_access();
  }
}

// Calls function(0) to function(n - 1), without a loop, so that values by number stay in registers.
template <unsigned n, class Function> inline void for_each(Function function) {
  [&]<unsigned... i>(std::integer_sequence<unsigned, i...>) { (function(i), ...); }
  (std::make_integer_sequence<unsigned, n>{});
}

// The same with faults as the hardware has them: nothing arrives before all has been read.
template <class Memory, class T, class Address>
inline void load_whole(uint8_t* zt, const uint8_t* predicate, Address address_of) {
  T values[elements<T>];
  const auto read_element = [&](unsigned i) {
    values[i] =
        is_active<T>(predicate, i) ? static_cast<T>(read_memory<Memory>(address_of(i))) : T{};
    host::finish_access();
  };
  if constexpr (elements<T> <= 4) {
    for_each<elements<T>>(read_element);
    for_each<elements<T>>([&](unsigned i) { set_element<T>(zt, i, values[i]); });
  } else {
    for (unsigned i = 0; i < elements<T>; i++)
      read_element(i);
    memcpy(zt, values, vector_bytes);
  }
}

// Where a fault may find elements done, or made 0. Called in the end and with the record where it
// is, so that what comes before needs no frame and no moves for it.
template <class Memory, class T, class Address>
[[gnu::noinline]] inline aarch64_decode_rc
load_elements(cpu_state* state, uint8_t* zt, const uint8_t* predicate, Address address_of) {
  asm volatile("" : : "r"(state));
  if (sve_faults_as_hardware)
    load_whole<Memory, T>(zt, predicate, address_of);
  else
    load_lowest<Memory, T>(zt, predicate, elements<T>, address_of);
  return aarch64_decode_ok;
}

// Writes the low bytes of the active elements to where address_of(i) says.
template <class Memory, class T, class Address>
inline void store_elements(const uint8_t* zt, const uint8_t* predicate, Address address_of) {
  for (unsigned half = 0; half < 2; half++)
    for (uint64_t left = element<uint64_t>(predicate, half) & lowest_bits<T>; left != 0;
         left &= left - 1) {
      const unsigned byte = half * 8 + static_cast<unsigned>(__builtin_ctzll(left)) / 8;
      const unsigned i = byte / sizeof(T);
      write_memory<Memory>(address_of(i), static_cast<Memory>(element<T>(zt, i)));
      host::finish_access();
    }
}

inline bool in_one_page(uint64_t address, uint64_t bytes) {
  return address % host::smallest_page <= host::smallest_page - bytes;
}

// The first bytes of a vector's image in memory, fewer than 16, in few accesses. The pair is the
// image's low and high half, with zeros behind the bytes.
struct ImageBytes {
  uint64_t low, high;
};

inline ImageBytes read_bytes(uint64_t address, unsigned bytes) {
  // What the last part has of the first is dropped: each element comes from one access.
  const auto both_ends = [=]<class Part>(Part first) {
    host::finish_access();
    const auto last = read_memory<Part>(address + bytes - sizeof(Part));
    return first | uint64_t{last} >> 8 * (2 * sizeof(Part) - bytes) << 8 * sizeof(Part);
  };
  if (bytes > 8) {
    const auto low = read_memory<uint64_t>(address);
    host::finish_access();
    return {low, read_memory<uint64_t>(address + bytes - 8) >> 8 * (16 - bytes)};
  }
  if (bytes == 8)
    return {read_memory<uint64_t>(address), 0};
  if (bytes >= 4)
    return {both_ends(read_memory<uint32_t>(address)), 0};
  if (bytes >= 2)
    return {both_ends(read_memory<uint16_t>(address)), 0};
  return {bytes == 0 ? uint64_t{0} : read_memory<uint8_t>(address), 0};
}

inline void write_bytes(uint64_t address, unsigned bytes, ImageBytes image) {
  uint64_t left = image.low;
  const auto write_part = [&]<class Part>(Part part) {
    if ((bytes & sizeof part) == 0)
      return;
    write_memory<Part>(address, part);
    address += sizeof part;
    if constexpr (sizeof part == sizeof left)
      left = image.high;
    else
      left >>= 8 * sizeof part;
  };
  write_part(left);
  write_part(static_cast<uint32_t>(left));
  write_part(static_cast<uint16_t>(left));
  write_part(static_cast<uint8_t>(left));
}

}  // namespace fast
