// Elements of the model's vectors and predicates, and the loops that all families share.
#pragma once

#include <cstring>
#include <type_traits>

#include "sve/model/context.h"
#include "sve/model/wide_integer.h"

namespace model {

// The types in the names of model functions, as the integers that hold such an element.
using U8 = uint8_t;
using U16 = uint16_t;
using U32 = uint32_t;
using U64 = uint64_t;
__extension__ typedef unsigned __int128 U128;
using S8 = int8_t;
using S16 = int16_t;
using S32 = int32_t;
using S64 = int64_t;
using F16 = uint16_t;
using F32 = uint32_t;
using D64 = uint64_t;
using H32 = uint32_t;  // half in a word
using H64 = uint64_t;  // half in a doubleword
using F64 = uint64_t;  // single in a doubleword
using B8 = uint8_t;
using H16 = uint16_t;
using P = uint8_t;  // single predicate bits
using P8 = uint8_t;
using P16 = uint16_t;
using P32 = uint32_t;
using P64 = uint64_t;

template <class E> inline constexpr int esize = 8 * sizeof(E);  // in bits
template <class E> inline constexpr int is_unsigned = std::is_unsigned_v<E>;

inline constexpr unsigned segment_bytes = 16;

// The low bits of any integer, sign-extended if it is signed: arithmetic on them wraps.
template <class E> constexpr uint64_t raw(E x) { return static_cast<uint64_t>(x); }
// Its value, for arithmetic that never wraps.
template <class E> constexpr WideInt exact(E x) { return Int(raw(x), esize<E>, is_unsigned<E>); }

inline unsigned vector_bytes(const CpuContext* context) { return context->vl * 8; }
inline unsigned segments(const CpuContext* context) { return context->vl / 2; }
template <class E> inline unsigned elements(const CpuContext* context) {
  return context->vl * 64 / esize<E>;
}

inline const uint8_t* bytes_of(const VecV& vector) {
  return reinterpret_cast<const uint8_t*>(&vector.bytes);
}
inline uint8_t* bytes_of(VecV& vector) { return reinterpret_cast<uint8_t*>(&vector.bytes); }

template <class E> inline E get(const VecV& vector, unsigned e) {
  E x;
  memcpy(&x, bytes_of(vector) + e * sizeof(E), sizeof(E));
  return x;
}

template <class E> inline void set(VecV& vector, unsigned e, E x) {
  memcpy(bytes_of(vector) + e * sizeof(E), &x, sizeof(E));
}

// The 64-bit element that lies over element e.
template <class E> inline uint64_t wide(const VecV& vector, unsigned e) {
  return get<uint64_t>(vector, e * sizeof(E) / 8);
}

template <class E> inline bool active(const PredV& predicate, unsigned e) {
  return bit(predicate, e * sizeof(E));
}

// Element by element in ascending order, without a predicate.
template <class E, class Operation> inline VecV map(const CpuContext* context, Operation f) {
  VecV result;
  const unsigned n = elements<E>(context);
  for (unsigned e = 0; e < n; e++)
    set<E>(result, e, f(e));
  return result;
}

// The same, inactive elements being those of old.
template <class E, class Operation>
inline VecV merge(const VecV& old, const PredV& pg, const CpuContext* context, Operation f) {
  return map<E>(context, [&](unsigned e) { return active<E>(pg, e) ? f(e) : get<E>(old, e); });
}

// The same, inactive elements being zero.
template <class E, class Operation>
inline VecV zero_inactive(const PredV& pg, const CpuContext* context, Operation f) {
  return map<E>(context, [&](unsigned e) { return active<E>(pg, e) ? f(e) : E{0}; });
}

// A predicate of one bit for each element, groups otherwise clear.
template <class E, class Operation> inline PredV map_bits(const CpuContext* context, Operation f) {
  PredV result = {};
  const unsigned n = elements<E>(context);
  for (unsigned e = 0; e < n; e++)
    set_bit(result, e * sizeof(E), f(e));
  return result;
}

// The same, inactive elements being false.
template <class E, class Operation>
inline PredV map_active_bits(const PredV& pg, const CpuContext* context, Operation f) {
  return map_bits<E>(context, [&](unsigned e) { return active<E>(pg, e) && f(e); });
}

}  // namespace model
