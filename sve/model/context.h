// The values of the reference model: vectors and predicates of any length up to 2048 bits, and what
// a model function knows of the processor.
#pragma once

#include <cstdint>

#include "sve/client/exports.h"

// The longest vector length, in 64-bit units. Lengths are even and at least 2.
inline constexpr uint32_t longest_vl = 32;

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

extern "C" {

// The configured vector length, for whoever looks from outside. Written at load by SVEInitialize
// and never read.
TAVOK_EXPORT extern CpuContext cpu_ctxt;
TAVOK_EXPORT extern CpuContext* ctxt;
}

// The registers of a structure load or store.
template <unsigned count> struct VecGroup { VecV vectors[count]; };
