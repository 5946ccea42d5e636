// What all decode stubs of one kind have in common, and how a row is made of a line of a table.
#pragma once

#include "host/fp_unit.h"
#include "sve/client/dispatch.h"
#include "sve/client/operand_forms.h"
#include "sve/model/each_type.h"

namespace stubs {

// A row's mask is what its operands leave. An operand bit that two forms claim is an error.
template <class T, template <class> class... Forms> constexpr uint32_t mask_of() {
  uint32_t operands = 0;
  bool disjoint = true;
  ((disjoint = disjoint && (operands & Forms<T>::bits) == 0, operands |= Forms<T>::bits), ...);
  return disjoint ? ~operands : 0;
}

// A reserved bitmask immediate has no element size: the stub then changes nothing and returns 0.
template <class Form> constexpr bool reserved(uint32_t word) {
  if constexpr (requires { Form::reserved(word); })
    return Form::reserved(word);
  else
    return false;
}

// Flattened, since only inside the stub are the operands' kind words constants.
template <auto function, class T, template <class> class... Forms>
[[gnu::flatten]] inline aarch64_decode_rc plain(cpu_state* state, unsigned int word) {
  if ((reserved<Forms<T>>(word) || ...))
    return aarch64_decode_ok;
  state->instruction = word;
  return function(state, Forms<T>::decode(word)...);
}

// The function runs host floating-point instructions: their flags are to be the application's, and
// the host's control register is to survive.
template <auto function, class T, template <class> class... Forms>
inline aarch64_decode_rc bracketed(cpu_state* state, unsigned int word) {
  const host::FPBracket bracket(state->fpcr, state->fpsr);
  state->instruction = word;
  const aarch64_decode_rc result = function(state, Forms<T>::decode(word)...);
  state->fpsr = bracket.status();
  return result;
}

inline aarch64_decode_rc no_operation(cpu_state*, unsigned int) { return aarch64_decode_ok; }

// The field in which most families have their element size.
constexpr uint32_t size_field(element_size size) { return static_cast<uint32_t>(size) << 22; }

}  // namespace stubs

// Rows are collected by the linker, so that a table is complete by being linked in. After name and
// value come the tier, the row's mask and the stub's body, a function of the record and the word.
#define SVE_ROW(name, row_value, tier, row_mask, ...)                                              \
  namespace stubs {                                                                                \
  aarch64_decode_rc name(cpu_state* state, unsigned int word) { return __VA_ARGS__(state, word); } \
  static_assert(((row_value) & ~(row_mask)) == 0, "the value has bits of an operand");             \
  static_assert(decoder_map_index(row_mask) < decoder_map_count, "no map has this mask");          \
  [[gnu::section("sve_rows"), gnu::used]] constinit const Row row_of_##name{row_value, row_mask,   \
                                                                            name, #name, tier};    \
  }

// One row of a tier: type, operation, value, function, operand forms in the function's order.
#define SVE_FAST_ROW(type, operation, value, function, ...)                                        \
  SVE_ROW(Vec##type##operation, value, Tier::fast, (mask_of<type __VA_OPT__(, ) __VA_ARGS__>()),   \
          plain<function, type __VA_OPT__(, ) __VA_ARGS__>)
#define SVE_HOST_FP_ROW(type, operation, value, function, ...)                                     \
  SVE_ROW(Vec##type##operation, value, Tier::host_fp, (mask_of<type, __VA_ARGS__>()),              \
          bracketed<function, type, __VA_ARGS__>)
#define SVE_NOP_ROW(type, operation, value, ...)                                                   \
  SVE_ROW(Vec##type##operation, value, Tier::no_operation, (mask_of<type, __VA_ARGS__>()),         \
          no_operation)

// The same with a value that lacks its size field: the type brings it.
#define SVE_FAST_SIZED(type, operation, value, ...)                                                \
  SVE_FAST_ROW(type, operation, (value) | size_field(type::size), __VA_ARGS__)
#define SVE_HOST_FP_SIZED(type, operation, value, ...)                                             \
  SVE_HOST_FP_ROW(type, operation, (value) | size_field(type::size), __VA_ARGS__)

// A line of a table: the operation, its types in parentheses, and what is the same for all of them.
// Rows of the fast path, with the value as it stands or with the size field of each type.
#define FAST(operation, types, value, ...)                                                         \
  SVE_EACH(SVE_FAST_ROW, operation, types, value, __VA_ARGS__)
#define FAST_SIZED(operation, types, value, ...)                                                   \
  SVE_EACH(SVE_FAST_SIZED, operation, types, value, __VA_ARGS__)
#define HOST_FP(operation, types, value, ...)                                                      \
  SVE_EACH(SVE_HOST_FP_ROW, operation, types, value, __VA_ARGS__)
#define HOST_FP_SIZED(operation, types, value, ...)                                                \
  SVE_EACH(SVE_HOST_FP_SIZED, operation, types, value, __VA_ARGS__)
#define NOP(operation, types, value, ...)                                                          \
  SVE_EACH(SVE_NOP_ROW, operation, types, value, __VA_ARGS__)
