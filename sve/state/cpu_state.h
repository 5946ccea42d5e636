// The emulated processor as the emulation sees it, one record for each application thread.
#pragma once

#include <cstddef>
#include <cstdint>

// Result of decode stubs and instruction functions. Any non-zero value is a failure.
enum aarch64_decode_rc : int {
  aarch64_decode_ok = 0,             // the instruction was executed
  aarch64_decode_unimplemented = 2,  // no handler exists for the encoding
};

inline constexpr size_t vector_bytes = 16;  // the vector length of this build, 128 bits
inline constexpr unsigned z_registers = 32;
inline constexpr unsigned p_registers = 16;
inline constexpr unsigned stack_pointer =
    31;  // slot of SP in x; there is none for the zero register

// Inserted code addresses the fields by their place, so order and widths are a contract with the
// block rewriter.
struct cpu_state {
  uint64_t x[32];  // X0 to X30, then SP
  uint64_t pc;     // address of the instruction being emulated
  uint64_t nzcv;   // as MRS NZCV delivers it: N, Z, C, V in bits 31 to 28
  uint32_t fpsr;   // image of FPSR
  uint32_t fpcr;   // image of FPCR as the host reads it
  uint32_t fz16;   // FPCR.FZ16 as the application last wrote it: 0 or 0x80000
  alignas(16) uint8_t z[z_registers][vector_bytes];  // Z0 to Z31, little-endian elements
  uint8_t p[p_registers][vector_bytes];  // P0 to P15, one byte (bit 0) for each predicate bit
  uint8_t ffr[vector_bytes];             // first-fault register, in the form of one slot of p
  uint64_t instruction;                  // the word being emulated, zero-extended
};

// z is reached by scaled 16-byte stores, all else by scaled 8- and 4-byte ones.
static_assert(offsetof(cpu_state, pc) == 256 && offsetof(cpu_state, nzcv) == 264);
static_assert(offsetof(cpu_state, fpsr) == 272 && offsetof(cpu_state, fpcr) == 276);
static_assert(offsetof(cpu_state, fz16) == 280 && offsetof(cpu_state, z) == 288);
static_assert(offsetof(cpu_state, p) == 800 && offsetof(cpu_state, ffr) == 1056);
static_assert(offsetof(cpu_state, instruction) == 1072);

// FPCR.FZ16, and so the value of cpu_state::fz16 when it is set.
inline constexpr uint32_t fpcr_fz16 = 1u << 19;

// Condition flags in cpu_state::nzcv.
inline constexpr uint64_t flag_n = 1ull << 31;
inline constexpr uint64_t flag_z = 1ull << 30;
inline constexpr uint64_t flag_c = 1ull << 29;
inline constexpr uint64_t flag_v = 1ull << 28;
