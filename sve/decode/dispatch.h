// From an instruction word to the decode stub that carries it out.
#pragma once

#include <cstdint>
#include <iterator>
#include <span>

#include "sve/state/cpu_state.h"
#include "sve/state/exports.h"

// Carries out the word on the record. Returns the result of the instruction's function.
using decode_stub = aarch64_decode_rc (*)(cpu_state* state, unsigned int word);

// What carries a row out.
enum class Tier : uint8_t {
  fast,         // a function written for this vector length
  host_fp,      // the same, on the host's floating-point unit, with its status bracketed
  model,        // the reference model, on any vector length
  no_operation  // prefetches
};

// One set of rows that leave the same bits to operands. A row's key in its map is its value: the
// word's bits under the map's mask.
struct decoder_map {
  uint32_t mask;
  unsigned step;  // place in the cascade of execute_sve_instruction
};

// decoder_map_1 to decoder_map_44, in the order of the cascade of is_sve: from the most fixed bits
// to the fewest. Between maps with equally many, the steps have an order of their own.
// clang-format off
inline constexpr decoder_map decoder_maps[] = {
    {0xffffffff,  1},  {0xfffffe1f,  2},  {0xfffffff0,  3},  {0xfffffe10,  5},
    {0xffffc21f,  4},  {0xfffffc10,  6},  {0xfffffe00,  7},  {0xffffe3c0,  8},
    {0xffe0fc1f,  9},  {0xfffffc00, 10},  {0xffffe300, 11},  {0xfffff800, 12},
    {0xffffc210, 15},  {0xffffe200, 17},  {0xfff0fe10, 14},  {0xffffe010, 16},
    {0xff3ffc00, 13},  {0xff2ffc00, 20},  {0xfff8fc00, 19},  {0xffffe000, 21},
    {0xffffc200, 18},  {0xfff0fc00, 25},  {0xffffc000, 23},  {0xffbfe000, 24},
    {0xffe0fc10, 27},  {0xff27fc00, 26},  {0xfffee000, 22},  {0xff23fc00, 28},
    {0xffe0fc00, 29},  {0xffa0fc00, 33},  {0xffe0f800, 30},  {0xff21fc00, 32},
    {0xfff0c210, 31},  {0xffe0e010, 34},  {0xffe0f000, 35},  {0xfff0e000, 36},
    {0xffe0e000, 37},  {0xfff0c000, 38},  {0xfffc0000, 39},  {0xffc0e010, 40},
    {0xffc0e000, 43},  {0xffe0c000, 41},  {0xffe02010, 42},  {0xffe08000, 44},
};
// clang-format on
inline constexpr unsigned decoder_map_count = std::size(decoder_maps);

// The index of the map with this mask; decoder_map_count if there is none.
constexpr uint8_t decoder_map_index(uint32_t mask) {
  uint8_t index = 0;
  while (index < decoder_map_count && decoder_maps[index].mask != mask)
    index++;
  return index;
}

// One instruction form: a word matches when its bits under the mask equal the value.
struct alignas(32) Row {
  uint32_t value;
  uint32_t mask;  // all bits but the operand fields
  decode_stub stub;
  // The stub's name; behind its end the assembly form, and behind that what stands in the table
  // after the tier. One pointer to three texts, since each start of a process relocates the rows.
  const char* name;
  Tier tier;
  uint8_t size;  // of the elements: an element_size, or quadword
  uint8_t map = decoder_map_index(mask);

  // Mnemonic and operands, as disassemble.h explains them.
  const char* assembly() const { return name + __builtin_strlen(name) + 1; }
  // The instruction's function, unless it has the stub's name or there is none, and operand forms.
  const char* operands() const { return assembly() + __builtin_strlen(assembly()) + 1; }
};

// All rows, in no particular order. Each table of sve/decode/rows adds its own.
std::span<const Row> all_rows();

// Fills the decoder maps with the rows. Once, at load, before anything is looked up.
void enter_rows();

// The row whose stub this is, or null.
const Row* row_of_stub(decode_stub stub);

// The row of decoder_maps[index] that holds the word, or null.
const Row* row_in_map(unsigned index, uint32_t word);

// Every row lies in the SVE encoding space: bits 28 to 25 are 0010.
constexpr bool in_sve_space(uint32_t word) { return (word >> 25 & 0xf) == 2; }

// As is_sve, by the cascade of execute_sve_instruction. No word has a different stub there.
decode_stub stub_to_execute(unsigned int word);

// Words by bits 31 to 29 and 24, which every map keeps and the SVE space leaves free: 0 to 15. Most
// maps have rows in one or two groups only.
inline constexpr unsigned encoding_groups = 16;
constexpr unsigned encoding_group(uint32_t word) { return (word >> 28 & 0xe) | (word >> 24 & 1); }

extern "C" {

// The decode stub of the word, or null if no row holds it. No side effects; safe on any thread.
TAVOK_EXPORT decode_stub is_sve(unsigned int word);

// Carries out the instruction at the record's pc: counts it, advances pc by 4 and returns 0.
// Returns aarch64_decode_unimplemented, with nothing changed, for a word without a row, and a
// stub's own failure with pc unchanged. The host's floating-point control and status stay.
TAVOK_EXPORT aarch64_decode_rc execute_sve_instruction(cpu_state* state);
}
