// The bridge from a row to its function of the reference model: registers become values, results
// become registers. All of it follows from the function's own types and the row's operand forms.
#pragma once

#include <cstring>
#include <tuple>
#include <utility>

#include "sve/client/model_forms.h"
#include "sve/client/stub.h"
#include "sve/model/context.h"

namespace stubs {

// Eight predicate bytes and eight predicate bits. Only bit 0 of a byte counts.
constexpr uint64_t low_bit_of_bytes = 0x0101010101010101;

inline uint64_t pack_byte(const uint8_t* bytes) {
  constexpr uint64_t gather = 0x0102040810204080;  // brings bit 0 of byte i to bit 56 + i
  uint64_t value;
  memcpy(&value, bytes, sizeof value);
  return (value & low_bit_of_bytes) * gather >> 56;
}

inline void unpack_byte(uint64_t bits, uint8_t* bytes) {
  constexpr uint64_t bit_i_of_byte_i = 0x8040201008040201;
  constexpr uint64_t carry_to_top = 0x7f7f7f7f7f7f7f7f;
  const uint64_t spread = (bits & 0xff) * low_bit_of_bytes & bit_i_of_byte_i;
  const uint64_t value = (spread + carry_to_top) >> 7 & low_bit_of_bytes;
  memcpy(bytes, &value, sizeof value);
}

inline PredV pack(const uint8_t* slot) {
  return {{pack_byte(slot) | pack_byte(slot + 8) << 8, 0, 0, 0}};
}

inline void unpack(const PredV& predicate, uint8_t* slot) {
  unpack_byte(predicate.words[0], slot);
  unpack_byte(predicate.words[0] >> 8, slot + 8);
}

inline CpuContext enter_model(const cpu_state* state) {
  return {static_cast<uint32_t>(state->nzcv), state->fpsr, state->fpcr | state->fz16,
          vector_bytes / sizeof(uint64_t), pack(state->ffr)};
}

// Every instruction carries all of it back, whatever it changed.
inline void leave_model(cpu_state* state, const CpuContext& context) {
  state->nzcv = context.nzcv;
  state->fpsr = context.fpsr;
  state->fpcr = context.fpcr;
  unpack(context.ffr, state->ffr);
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
inline VecV vector_value(const uint8_t* slot) {
  VecV value;
  memcpy(value.bytes, slot, vector_bytes);
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
    return vector_value(state->z[Form::decode(word).index]);
  }
};
template <unsigned count> struct Argument<VecGroup<count>> {
  template <class T, class Form> static VecGroup<count> of(const cpu_state* state, uint32_t word) {
    VecGroup<count> group;
    for (unsigned k = 0; k < count; k++)
      memcpy(group.vectors[k].bytes, state->z[(Form::decode(word).index + k) % z_registers],
             vector_bytes);
    return group;
  }
};
template <> struct Argument<PredV> {
  template <class T, class Form> static PredV of(const cpu_state* state, uint32_t word) {
    return pack(state->p[Form::decode(word).index]);
  }
};

// The result into the destination.
template <class Form> inline void give(cpu_state* state, uint32_t word, const VecV& value) {
  memcpy(state->z[Form::decode(word).index], value.bytes, vector_bytes);
}
template <class Form, unsigned count>
inline void give(cpu_state* state, uint32_t word, const VecGroup<count>& group) {
  for (unsigned k = 0; k < count; k++)
    memcpy(state->z[(Form::decode(word).index + k) % z_registers], group.vectors[k].bytes,
           vector_bytes);
}
template <class Form> inline void give(cpu_state* state, uint32_t word, const PredV& value) {
  unpack(value, state->p[Form::decode(word).index]);
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
  CpuContext context = enter_model(state);
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

// One row: type, operation, value, the destination's form, and a form for each parameter.
#define SVE_MODEL_ROW(type, operation, value, ...)                                                 \
  SVE_ROW(Vec##type##operation, value, Tier::model, (model_mask_of<type, __VA_ARGS__>()),          \
          bridge<::Vec##type##operation, type, __VA_ARGS__>)
#define SVE_MODEL_SIZED(type, operation, value, ...)                                               \
  SVE_MODEL_ROW(type, operation, (value) | size_field(type::size), __VA_ARGS__)

// Rows of the reference model, with the value as it stands or with the size field of each type.
#define MODEL(operation, types, value, ...)                                                        \
  SVE_EACH(SVE_MODEL_ROW, operation, types, value, __VA_ARGS__)
#define MODEL_SIZED(operation, types, value, ...)                                                  \
  SVE_EACH(SVE_MODEL_SIZED, operation, types, value, __VA_ARGS__)
