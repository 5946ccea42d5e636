// What all fast-path instruction functions share: the lanes' operations, and the way from operands
// to element types and general registers.
//
// Instruction functions are inline: a stub's operands have constant kind words, so each stub keeps
// only its own size's path. They return aarch64_decode_ok on every path.
#pragma once

#include "sve/lanes/vector.h"
#include "sve/state/operands.h"

namespace fast {

using namespace lanes;

// Calls function.operator()<T>() with the unsigned element type of a size word. Words, doublewords
// and halfwords have a path each; every other value takes the byte path.
template <class Function> inline auto by_size(uint32_t size, Function function) {
  switch (size) {
  case element_word:
    return function.template operator()<uint32_t>();
  case element_doubleword:
    return function.template operator()<uint64_t>();
  case element_halfword:
    return function.template operator()<uint16_t>();
  default:
    return function.template operator()<uint8_t>();
  }
}

// For functions of words and doublewords alone.
template <class Function> inline auto by_wide_size(uint32_t size, Function function) {
  if (size == element_doubleword)
    return function.template operator()<uint64_t>();
  return function.template operator()<uint32_t>();
}

// General registers: number 31 reads as zero and is not written. The read of slot 31, which is SP,
// spares a branch.
inline uint64_t read(const cpu_state* state, aarch64_i_reg reg) {
  const uint64_t value = state->x[reg.index];
  return reg.index == 31 ? 0 : value;
}

inline void write(cpu_state* state, aarch64_i_reg reg, uint64_t value) {
  if (reg.index != 31)
    state->x[reg.index] = value;
}

// General registers of which number 31 is the stack pointer.
inline uint64_t read(const cpu_state* state, aarch64_i_rsp_reg reg) { return state->x[reg.index]; }

inline void write(cpu_state* state, aarch64_i_rsp_reg reg, uint64_t value) {
  state->x[reg.index] = value;
}

}  // namespace fast
