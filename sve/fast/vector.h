// What all fast-path instruction functions share: 128-bit vectors of any element type, predicates
// as masks, and the way from an operand's size word to an element type.
//
// Instruction functions are inline: a stub's operands have constant kind words, so each stub keeps
// only its own size's path. They return aarch64_decode_ok on every path.
#pragma once

#include <cstdint>
#include <cstring>
#include <type_traits>

#include "sve/client/cpu_state.h"
#include "sve/client/operands.h"

namespace fast {

template <class T> struct VectorOf { typedef T type __attribute__((vector_size(vector_bytes))); };
template <class T> using vector = typename VectorOf<T>::type;

template <class T> inline constexpr unsigned elements = vector_bytes / sizeof(T);

// The slot of a Z or P register, or ffr, as a vector.
template <class T> inline vector<T> load(const uint8_t* slot) {
  vector<T> value;
  memcpy(&value, slot, vector_bytes);
  return value;
}

template <class T> inline void store(uint8_t* slot, vector<T> value) {
  memcpy(slot, &value, vector_bytes);
}

template <class T> inline vector<T> broadcast(T value) { return value - vector<T>{}; }

// All ones in the active elements. Of an element's predicate bytes only bit 0 of the first counts.
template <class T> inline vector<T> active(const uint8_t* predicate) {
  using S = std::make_signed_t<T>;
  return reinterpret_cast<vector<T>>(-(load<S>(predicate) & broadcast<S>(1)));
}

template <class T> inline vector<T> select(vector<T> mask, vector<T> chosen, vector<T> other) {
  return (chosen & mask) | (other & ~mask);
}

template <class T> inline bool is_active(const uint8_t* predicate, unsigned element) {
  return (predicate[element * sizeof(T)] & 1) != 0;
}

// Writes an element-sized predicate from 0 or all ones for each element.
template <class T> inline void store_predicate(uint8_t* predicate, vector<T> mask) {
  store<T>(predicate, mask & broadcast<T>(1));
}

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
