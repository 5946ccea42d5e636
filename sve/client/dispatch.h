// From an instruction word to the decode stub that carries it out.
#pragma once

#include <cstdint>
#include <map>
#include <span>

#include "sve/client/cpu_state.h"
#include "sve/client/exports.h"

// Carries out the word on the record. Returns the result of the instruction's function.
using decode_stub = aarch64_decode_rc (*)(cpu_state* state, unsigned int word);

// What carries a row out.
enum class Tier : uint32_t {
  fast,         // a function written for this vector length
  host_fp,      // the same, on the host's floating-point unit, with its status bracketed
  model,        // the reference model, on any vector length
  no_operation  // prefetches
};

// One instruction form: a word matches when its bits under the mask equal the value.
struct alignas(32) Row {
  uint32_t value;
  uint32_t mask;  // all bits but the operand fields
  decode_stub stub;
  const char* name;  // the stub's
  Tier tier;
};

// All rows, in no particular order. Each table of sve/client/rows adds its own.
std::span<const Row> all_rows();

// The row whose stub this is, or null.
const Row* row_of_stub(decode_stub stub);

// One set of rows that leave the same bits to operands. The key is the word's bits under the mask,
// most significant first, packed to the right.
struct decoder_map {
  uint32_t mask;
  unsigned step;    // place in the cascade of execute_sve_instruction
  uint16_t groups;  // bit k: there are rows of the encoding group k
  std::map<int32_t, decode_stub> stubs;
};

inline constexpr unsigned decoder_maps = 44;

// decoder_map_1 to decoder_map_44, in the order of the cascade of is_sve. number: 1 to 44.
const decoder_map& decoder_map_number(unsigned number);

// The word's bits under the mask, packed to the right.
constexpr int32_t decoder_key(uint32_t word, uint32_t mask) {
  uint32_t key = 0;
  unsigned place = 0;
  while (mask != 0) {
    const int low = __builtin_ctz(mask);
    const uint32_t above = mask >> low;
    const int run = above == ~0u ? 32 : __builtin_ctz(~above);
    const uint32_t ones = run == 32 ? ~0u : (1u << run) - 1;
    key |= (word >> low & ones) << place;
    place += run;
    mask = run + low == 32 ? 0 : mask >> (low + run) << (low + run);
  }
  return static_cast<int32_t>(key);
}

// Every row lies in the SVE encoding space: bits 28 to 25 are 0010.
constexpr bool in_sve_space(uint32_t word) { return (word >> 25 & 0xf) == 2; }

// As is_sve, by the cascade of execute_sve_instruction. No word has a different stub there.
decode_stub stub_to_execute(unsigned int word);

// Words by bits 31 to 29 and 24, which every map keeps and the SVE space leaves free: 0 to 15. Most
// maps have rows in one or two groups only.
constexpr unsigned encoding_group(uint32_t word) { return (word >> 28 & 0xe) | (word >> 24 & 1); }

extern "C" {

// The decode stub of the word, or null if no row holds it. No side effects; safe on any thread.
TAVOK_EXPORT decode_stub is_sve(unsigned int word);

// Carries out the instruction at the record's pc: counts it, advances pc by 4 and returns 0.
// Returns aarch64_decode_unimplemented, with nothing changed, for a word without a row, and a
// stub's own failure with pc unchanged.
TAVOK_EXPORT aarch64_decode_rc execute_sve_instruction(cpu_state* state);
}
