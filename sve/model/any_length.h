// The values of the reference model at any vector length up to 2048 bits.
#pragma once

#include <cstdint>
#include <cstring>

#include "sve/state/exports.h"

// The longest vector length, in 64-bit units. Lengths are even and at least 2.
inline constexpr uint32_t longest_vl = 32;

// What a model function's declaration starts with.
#define MODEL_LINKAGE extern "C"

// One vector, little-endian. Only the bytes below the vector length in force mean anything: nobody
// reads the others, and a result leaves them undefined.
struct VecV {
  uint8_t bytes[longest_vl * 8];
};

// One predicate, one bit for each byte of a VecV, least significant word first. An element's bit is
// that of its lowest byte; the bits of all its bytes are its group.
struct PredV {
  uint64_t words[longest_vl / 8];
};

// What a model function knows of the processor, always its last parameter.
struct CpuContext {
  uint32_t nzcv;  // N, Z, C, V in bits 31 to 28
  uint32_t fpsr;  // cumulative floating-point status
  uint32_t fpcr;  // floating-point control, FZ16 included
  uint32_t vl;    // vector length in 64-bit units
  PredV ffr;      // first-fault register
};

inline constexpr uint32_t predicate_words = longest_vl / 8;

extern "C" {

// The configured vector length, for whoever looks from outside. Written at load by SVEInitialize
// and never read.
TAVOK_EXPORT extern CpuContext cpu_ctxt;
TAVOK_EXPORT extern CpuContext* ctxt;
}

// The registers of a structure load or store.
template <unsigned count> struct VecGroup { VecV vectors[count]; };

namespace model {

inline bool bit(const PredV& predicate, unsigned i) {
  return (predicate.words[i / 64] >> (i % 64) & 1) != 0;
}

inline void set_bit(PredV& predicate, unsigned i, bool value) {
  const uint64_t mask = 1ull << (i % 64);
  uint64_t& word = predicate.words[i / 64];
  word = value ? word | mask : word & ~mask;
}

// All bits of an element, in the form in which set_group takes them.
template <class E> inline uint64_t group(const PredV& predicate, unsigned e) {
  const unsigned i = e * sizeof(E);
  return predicate.words[i / 64] >> (i % 64) & ((1u << sizeof(E)) - 1);
}

template <class E> inline void set_group(PredV& predicate, unsigned e, uint64_t value) {
  const unsigned i = e * sizeof(E);
  uint64_t& word = predicate.words[i / 64];
  const uint64_t mask = ((1ull << sizeof(E)) - 1) << (i % 64);
  word = (word & ~mask) | (value << (i % 64) & mask);
}

// Slots of the register record: one byte for each predicate bit, of which only bit 0 counts.

inline constexpr unsigned slot_bytes = 16;

inline void read_slot(const uint8_t* slot, VecV& vector) { memcpy(vector.bytes, slot, slot_bytes); }
inline void write_slot(uint8_t* slot, const VecV& vector) {
  memcpy(slot, vector.bytes, slot_bytes);
}

inline void read_slot(const uint8_t* slot, PredV& predicate) {
  predicate = {};
  for (unsigned i = 0; i < slot_bytes; i++)
    set_bit(predicate, i, (slot[i] & 1) != 0);
}
inline void write_slot(uint8_t* slot, const PredV& predicate) {
  for (unsigned i = 0; i < slot_bytes; i++)
    slot[i] = bit(predicate, i);
}

// The context takes the first-fault register out of its slot, and gives it back as 0s and 1s.
inline void take_first_faults(CpuContext& context, uint8_t* slot) {
  context.vl = slot_bytes / sizeof(uint64_t);
  read_slot(slot, context.ffr);
}
inline void give_first_faults(uint8_t* slot, const CpuContext& context) {
  write_slot(slot, context.ffr);
}

}  // namespace model
