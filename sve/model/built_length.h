// The values of the reference model at the vector length of this build, 128 bits: with them the
// model's loops have constant bounds, operands travel in vector registers, and a predicate is what
// the register record has.
//
// The inline namespace keeps what is compiled with these apart from what is compiled for any vector
// length.
#pragma once

#include <cstdint>
#include <cstring>

#define MODEL_LINKAGE

inline namespace built_length {

inline constexpr uint32_t longest_vl = 2;
inline constexpr uint32_t predicate_words = 2;

struct VecV {
  typedef uint8_t Bytes __attribute__((vector_size(longest_vl * 8)));
  Bytes bytes;
};

// One byte, 0 or 1, for each byte of a VecV.
struct PredV {
  typedef uint64_t Words __attribute__((vector_size(predicate_words * 8)));
  Words words;
};

// The low bit of each byte.
inline constexpr uint64_t predicate_bit_of_bytes = 0x0101010101010101;

// The first-fault register where it stands in the record.
struct FirstFaultRegister {
  uint8_t* slot;

  operator PredV() const {
    PredV value;
    memcpy(&value, slot, sizeof value);
    return {value.words & predicate_bit_of_bytes};
  }
  void operator=(const PredV& value) { memcpy(slot, &value, sizeof value); }
};

// As CpuContext of any length, but for a constant vector length.
struct CpuContext {
  static constexpr uint32_t vl = longest_vl;

  uint32_t nzcv;
  uint32_t fpsr;
  uint32_t fpcr;
  FirstFaultRegister ffr;
};

template <unsigned count> struct VecGroup { VecV vectors[count]; };

}  // namespace built_length

namespace model {

inline bool bit(const PredV& predicate, unsigned i) {
  return (reinterpret_cast<const uint8_t*>(&predicate)[i] & 1) != 0;
}

inline void set_bit(PredV& predicate, unsigned i, bool value) {
  reinterpret_cast<uint8_t*>(&predicate)[i] = value;
}

// All bits of an element, in the form in which set_group takes them.
template <class E> inline uint64_t group(const PredV& predicate, unsigned e) {
  uint64_t value = 0;
  memcpy(&value, reinterpret_cast<const uint8_t*>(&predicate) + e * sizeof(E), sizeof(E));
  return value;
}

template <class E> inline void set_group(PredV& predicate, unsigned e, uint64_t value) {
  memcpy(reinterpret_cast<uint8_t*>(&predicate) + e * sizeof(E), &value, sizeof(E));
}
template <class E> inline void set_group(FirstFaultRegister ffr, unsigned e, uint64_t value) {
  PredV predicate = ffr;
  set_group<E>(predicate, e, value);
  ffr = predicate;
}

inline void read_slot(const uint8_t* slot, VecV& vector) { memcpy(&vector, slot, sizeof vector); }
inline void write_slot(uint8_t* slot, const VecV& vector) { memcpy(slot, &vector, sizeof vector); }

inline void read_slot(const uint8_t* slot, PredV& predicate) {
  memcpy(&predicate, slot, sizeof predicate);
  predicate.words &= predicate_bit_of_bytes;
}
inline void write_slot(uint8_t* slot, const PredV& predicate) {
  memcpy(slot, &predicate, sizeof predicate);
}

inline void take_first_faults(CpuContext& context, uint8_t* slot) { context.ffr.slot = slot; }
inline void give_first_faults(uint8_t*, const CpuContext& context) {
  const PredV clean = context.ffr;
  write_slot(context.ffr.slot, clean);
}

}  // namespace model
