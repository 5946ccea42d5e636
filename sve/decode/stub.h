// What all decode stubs of one kind have in common.
#pragma once

#include "host/fp_unit.h"
#include "sve/decode/dispatch.h"
#include "sve/decode/operand_forms.h"

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

}  // namespace stubs
