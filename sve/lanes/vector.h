// 128-bit vectors of any element type, and predicates as masks over them.
#pragma once

#include <cstdint>
#include <cstring>
#include <type_traits>

#include "sve/state/cpu_state.h"

namespace lanes {

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

}  // namespace lanes
