// Integer operations on whole vectors, each for every element width. Elements are unsigned vectors
// everywhere, since only they wrap by definition; signed operations reinterpret them.
#pragma once

#include <limits>
#include <utility>

#include "sve/fast/operands.h"

namespace fast {

template <class V> using element_of = std::remove_cvref_t<decltype(std::declval<V&>()[0])>;

template <class V> inline constexpr unsigned element_bits = 8 * sizeof(element_of<V>);

template <class V> inline auto as_signed(V value) {
  return reinterpret_cast<vector<std::make_signed_t<element_of<V>>>>(value);
}

template <class V> inline auto as_unsigned(V value) {
  return reinterpret_cast<vector<std::make_unsigned_t<element_of<V>>>>(value);
}

// The same value in every element of a vector type.
template <class V> inline V splat(element_of<V> value) { return broadcast(value); }

// 0, 1, 2 and so on.
template <class T> inline constexpr vector<T> iota = []<size_t... i>(std::index_sequence<i...>) {
  return vector<T>{static_cast<T>(i)...};
}
(std::make_index_sequence<elements<T>>{});

// Two operands, element by element.

inline constexpr auto add = [](auto a, auto b) { return a + b; };
inline constexpr auto sub = [](auto a, auto b) { return a - b; };
inline constexpr auto mul = [](auto a, auto b) { return a * b; };
inline constexpr auto bitwise_and = [](auto a, auto b) { return a & b; };
inline constexpr auto bitwise_or = [](auto a, auto b) { return a | b; };
inline constexpr auto bitwise_xor = [](auto a, auto b) { return a ^ b; };
inline constexpr auto bit_clear = [](auto a, auto b) { return a & ~b; };

inline constexpr auto unsigned_max = [](auto a, auto b) { return a > b ? a : b; };
inline constexpr auto unsigned_min = [](auto a, auto b) { return a < b ? a : b; };
inline constexpr auto signed_max = [](auto a, auto b) {
  return as_unsigned(unsigned_max(as_signed(a), as_signed(b)));
};
inline constexpr auto signed_min = [](auto a, auto b) {
  return as_unsigned(unsigned_min(as_signed(a), as_signed(b)));
};

// Shifts by the whole element of b. The host's shift has a meaning below the element's width alone.

inline constexpr auto shift_left = []<class V>(V a, V b) {
  constexpr unsigned bits = element_bits<V>;
  return (a << (b & splat<V>(bits - 1))) & as_unsigned(b < splat<V>(bits));
};
inline constexpr auto shift_right = []<class V>(V a, V b) {
  constexpr unsigned bits = element_bits<V>;
  return (a >> (b & splat<V>(bits - 1))) & as_unsigned(b < splat<V>(bits));
};
inline constexpr auto shift_right_signed = []<class V>(V a, V b) {
  const V amount = unsigned_min(b, splat<V>(element_bits<V> - 1));
  return as_unsigned(as_signed(a) >> as_signed(amount));
};

// Division by zero gives zero. That, and the signed quotient by -1, which can overflow, never
// reach the host's divide: it gets the divisor 1 instead.

inline constexpr auto unsigned_divide = []<class V>(V a, V b) {
  const V zero = as_unsigned(b == V{});
  return (a / (b - zero)) & ~zero;
};
inline constexpr auto signed_divide = []<class V>(V a, V b) {
  using T = element_of<V>;
  const V zero = as_unsigned(b == V{});
  const V minus_one = as_unsigned(b == ~V{});
  const V divisor = select<T>(zero | minus_one, splat<V>(1), b);
  const V quotient = as_unsigned(as_signed(a) / as_signed(divisor));
  return select<T>(minus_one, -a, quotient) & ~zero;
};

// Takes the operands of an operation the other way round.
template <class Operation> constexpr auto reversed(Operation operation) {
  return [operation](auto a, auto b) { return operation(b, a); };
}

// One operand, element by element.

inline constexpr auto negate = [](auto a) { return -a; };

// The low bits of each element, sign- or zero-extended. An element has at least so many.
template <unsigned low>
inline constexpr auto sign_extend = []<class V>(V a) {
  constexpr unsigned shift = element_bits<V> - low;
  return as_unsigned(as_signed(a << shift) >> shift);
};
template <unsigned low>
inline constexpr auto zero_extend = []<class V>(V a) {
  return a & splat<V>(std::numeric_limits<element_of<V>>::max() >> (element_bits<V> - low));
};

inline constexpr auto swap_words = [](vector<uint64_t> a) { return a << 32 | a >> 32; };

// Bits within bytes by three swaps, then the bytes of each element.
inline constexpr auto reverse_bits = []<class V>(V a) {
  using Bytes = vector<uint8_t>;
  auto bytes = reinterpret_cast<Bytes>(a);
  bytes = (bytes >> 4) | (bytes << 4);
  bytes = (bytes >> 2 & splat<Bytes>(0x33)) | (bytes & splat<Bytes>(0x33)) << 2;
  bytes = (bytes >> 1 & splat<Bytes>(0x55)) | (bytes & splat<Bytes>(0x55)) << 1;
  return reinterpret_cast<V>(
      __builtin_shuffle(bytes, iota<uint8_t> ^ splat<Bytes>(sizeof(element_of<V>) - 1)));
};

}  // namespace fast
