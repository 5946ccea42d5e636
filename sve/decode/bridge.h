// The bridge from a row to its function of the reference model: registers become values, results
// become registers. All of it follows from the function's own types and the row's operand forms.
//
// What does not depend on the function is a template over the types of sve/model/context.h, so that
// rows, for which these are of the built length, and twins, for which they are of any, may meet in
// one program.
#pragma once

#include <cstring>
#include <tuple>
#include <utility>

#include "sve/decode/model_forms.h"
#include "sve/decode/stub.h"
#include "sve/model/context.h"

namespace stubs {

template <class Context> Context enter_model(cpu_state* state) {
  Context context{};
  context.nzcv = static_cast<uint32_t>(state->nzcv);
  context.fpsr = state->fpsr;
  context.fpcr = state->fpcr | state->fz16;
  model::take_first_faults(context, state->ffr);
  return context;
}

// Every instruction carries all of it back, whatever it changed.
template <class Context> void leave_model(cpu_state* state, const Context& context) {
  state->nzcv = context.nzcv;
  state->fpsr = context.fpsr;
  state->fpcr = context.fpcr;
  model::give_first_faults(state->ffr, context);
}

// The low bits of a value.
constexpr uint64_t cut(uint64_t value, unsigned width) {
  return width < 64 ? value & ((1ull << width) - 1) : value;
}

constexpr unsigned width_of(aarch64_i_reg reg) {
  return 8u << (reg.kind != aarch64_i_reg::none ? reg.kind : reg.dn_kind);
}

// What a scalar parameter gets of an operand. Signed immediates are sign-extended.
inline uint64_t scalar(const cpu_state* state, aarch64_i_reg reg) {
  return reg.index == 31 ? 0 : cut(state->x[reg.index], width_of(reg));
}
inline uint64_t scalar(const cpu_state* state, aarch64_i_rsp_reg reg) {
  return state->x[reg.index];
}
inline uint64_t scalar(const cpu_state*, int immediate) { return static_cast<uint64_t>(immediate); }
inline uint64_t scalar(const cpu_state*, unsigned immediate) { return immediate; }
inline uint64_t scalar(const cpu_state*, aarch64_sve_logical64_imm immediate) {
  return immediate.value;
}
inline uint64_t scalar(const cpu_state*, aarch64_sve_fp_arith_imm immediate) {
  return immediate.value;
}

template <class T> constexpr uint64_t element_bits(aarch64_sve_fp_dup_imm immediate) {
  if constexpr (T::size == element_halfword)
    return immediate.half;
  else if constexpr (T::size == element_word)
    return immediate.single;
  else
    return __builtin_bit_cast(uint64_t, immediate.wide);
}

// A vector's bytes above the vector length stay as they are: nobody looks at them.
template <class Value> Value value_of(const uint8_t* slot) {
  Value value;
  model::read_slot(slot, value);
  return value;
}

// One parameter of a model function.
template <class Parameter> struct Argument {
  template <class T, class Form> static Parameter of(const cpu_state* state, uint32_t word) {
    const auto operand = Form::decode(word);
    if constexpr (requires { Form::scalar_bits; }) {
      uint64_t value;
      memcpy(&value, state->z[operand], sizeof value);
      return cut(value, Form::scalar_bits);
    } else if constexpr (std::is_same_v<decltype(operand), const aarch64_sve_fp_dup_imm>) {
      return element_bits<T>(operand);
    } else {
      return scalar(state, operand);
    }
  }
};
template <> struct Argument<VecV> {
  template <class T, class Form> static VecV of(const cpu_state* state, uint32_t word) {
    return value_of<VecV>(state->z[Form::decode(word).index]);
  }
};
template <unsigned count> struct Argument<VecGroup<count>> {
  template <class T, class Form> static VecGroup<count> of(const cpu_state* state, uint32_t word) {
    VecGroup<count> group;
    for (unsigned k = 0; k < count; k++)
      model::read_slot(state->z[(Form::decode(word).index + k) % z_registers], group.vectors[k]);
    return group;
  }
};
template <> struct Argument<PredV> {
  template <class T, class Form> static PredV of(const cpu_state* state, uint32_t word) {
    return value_of<PredV>(state->p[Form::decode(word).index]);
  }
};

// The result into the destination.
template <class Form> inline void give(cpu_state* state, uint32_t word, const VecV& value) {
  model::write_slot(state->z[Form::decode(word).index], value);
}
template <class Form, unsigned count>
inline void give(cpu_state* state, uint32_t word, const VecGroup<count>& group) {
  for (unsigned k = 0; k < count; k++)
    model::write_slot(state->z[(Form::decode(word).index + k) % z_registers], group.vectors[k]);
}
template <class Form> inline void give(cpu_state* state, uint32_t word, const PredV& value) {
  model::write_slot(state->p[Form::decode(word).index], value);
}
template <class Form> inline void give(cpu_state* state, uint32_t word, uint64_t value) {
  const auto destination = Form::decode(word);
  if constexpr (requires { Form::scalar_bits; }) {
    memset(state->z[destination], 0, vector_bytes);
    memcpy(state->z[destination], &value, Form::scalar_bits / 8);
  } else if constexpr (std::is_same_v<decltype(destination), const aarch64_i_rsp_reg>) {
    state->x[destination.index] = value;
  } else if (destination.index != 31) {
    if constexpr (requires { Form::sign_extends; })
      state->x[destination.index] = static_cast<uint64_t>(static_cast<int32_t>(value));
    else
      state->x[destination.index] = cut(value, width_of(destination));
  }
}

template <class Function> struct ModelSignature;
template <class R, class... All> struct ModelSignature<R (*)(All...)> {
  using Result = R;
  using Parameters = std::tuple<All...>;
  static constexpr size_t operands = sizeof...(All) - 1;  // CpuContext* stands behind them
};

template <auto function, class T, template <class> class... Forms, size_t... i>
inline auto call_model([[maybe_unused]] const cpu_state* state, [[maybe_unused]] uint32_t word,
                       CpuContext* context, std::index_sequence<i...>) {
  using Parameters = typename ModelSignature<decltype(function)>::Parameters;
  return function(
      Argument<std::tuple_element_t<i, Parameters>>::template of<T, Forms<T>>(state, word)...,
      context);
}

template <auto function, class T, template <class> class Destination,
          template <class> class... Forms>
inline aarch64_decode_rc bridge(cpu_state* state, unsigned int word) {
  using Signature = ModelSignature<decltype(function)>;
  static_assert(Signature::operands == sizeof...(Forms), "an operand form for each parameter");
  if ((reserved<Forms<T>>(word) || ...))
    return aarch64_decode_ok;
  constexpr auto indices = std::index_sequence_for<Forms<T>...>{};
  auto context = enter_model<CpuContext>(state);
  if constexpr (std::is_void_v<typename Signature::Result>)
    call_model<function, T, Forms...>(state, word, &context, indices);
  else
    give<Destination<T>>(state, word,
                         call_model<function, T, Forms...>(state, word, &context, indices));
  leave_model(state, context);
  return aarch64_decode_ok;
}

// As mask_of, with the old destination over the destination.
template <class T, template <class> class Destination, template <class> class... Forms>
constexpr uint32_t model_mask_of() {
  uint32_t operands = Destination<T>::bits;
  bool sound = true;
  [[maybe_unused]] const auto claim = [&]<class Form>() {
    if constexpr (requires { Form::of_destination; }) {
      sound = sound && Form::bits == Destination<T>::bits;
    } else {
      sound = sound && (operands & Form::bits) == 0;
      operands |= Form::bits;
    }
  };
  (claim.template operator()<Forms<T>>(), ...);
  return sound ? ~operands : 0;
}

}  // namespace stubs
