// Definitions of families whose result element is an expression of the operands' elements.
//
// A table line is the operation, its types, and the expression. In the expression E is the element
// type, esize<E> its width in bits and is_unsigned<E> its signedness.
#pragma once

#include "sve/model/family.h"
#include "sve/model/vector.h"

// Merging, one source x.
#define MERGING_UNARY(operation, types, ...)                                                       \
  SVE_EACH(MERGING_UNARY_FUNCTION, operation, types, __VA_ARGS__)
#define MERGING_UNARY_FUNCTION(type, operation, ...)                                               \
  MODEL_DEFINE(type, operation, VecV, (VecV old, PredV pg, VecV zn)) {                             \
    using E = model::type;                                                                         \
    return merge<E>(old, pg, context, [&](unsigned e) {                                            \
      const E x = get<E>(zn, e);                                                                   \
      return static_cast<E>(__VA_ARGS__);                                                          \
    });                                                                                            \
  }

// Merging, the old destination a and a second source b.
#define MERGING_BINARY(operation, types, ...)                                                      \
  SVE_EACH(MERGING_BINARY_FUNCTION, operation, types, __VA_ARGS__)
#define MERGING_BINARY_FUNCTION(type, operation, ...)                                              \
  MODEL_DEFINE(type, operation, VecV, (VecV old, PredV pg, VecV zn)) {                             \
    using E = model::type;                                                                         \
    return merge<E>(old, pg, context, [&](unsigned e) {                                            \
      const E a = get<E>(old, e), b = get<E>(zn, e);                                               \
      return static_cast<E>(__VA_ARGS__);                                                          \
    });                                                                                            \
  }

// Merging, the old destination x and a 64-bit element of the second source as count.
#define MERGING_WIDE(operation, types, ...)                                                        \
  SVE_EACH(MERGING_WIDE_FUNCTION, operation, types, __VA_ARGS__)
#define MERGING_WIDE_FUNCTION(type, operation, ...)                                                \
  MODEL_DEFINE(type, operation, VecV, (VecV old, PredV pg, VecV zn)) {                             \
    using E = model::type;                                                                         \
    return merge<E>(old, pg, context, [&](unsigned e) {                                            \
      const E x = get<E>(old, e);                                                                  \
      const uint64_t count = wide<E>(zn, e);                                                       \
      return static_cast<E>(__VA_ARGS__);                                                          \
    });                                                                                            \
  }

// Merging, the old destination x and an immediate called count.
#define MERGING_IMMEDIATE(operation, types, ...)                                                   \
  SVE_EACH(MERGING_IMMEDIATE_FUNCTION, operation, types, __VA_ARGS__)
#define MERGING_IMMEDIATE_FUNCTION(type, operation, ...)                                           \
  MODEL_DEFINE(type, operation, VecV, (VecV old, PredV pg, uint64_t count)) {                      \
    using E = model::type;                                                                         \
    return merge<E>(old, pg, context, [&](unsigned e) {                                            \
      const E x = get<E>(old, e);                                                                  \
      return static_cast<E>(__VA_ARGS__);                                                          \
    });                                                                                            \
  }

// Merging, the old destination a and sources b and c.
#define MERGING_TERNARY(operation, types, ...)                                                     \
  SVE_EACH(MERGING_TERNARY_FUNCTION, operation, types, __VA_ARGS__)
#define MERGING_TERNARY_FUNCTION(type, operation, ...)                                             \
  MODEL_DEFINE(type, operation, VecV, (VecV old, PredV pg, VecV zn, VecV zm)) {                    \
    using E = model::type;                                                                         \
    return merge<E>(old, pg, context, [&](unsigned e) {                                            \
      const E a = get<E>(old, e), b = get<E>(zn, e), c = get<E>(zm, e);                            \
      return static_cast<E>(__VA_ARGS__);                                                          \
    });                                                                                            \
  }

// Without predicate: one source x.
#define PLAIN_UNARY(operation, types, ...)                                                         \
  SVE_EACH(PLAIN_UNARY_FUNCTION, operation, types, __VA_ARGS__)
#define PLAIN_UNARY_FUNCTION(type, operation, ...)                                                 \
  MODEL_DEFINE(type, operation, VecV, (VecV zn)) {                                                 \
    using E = model::type;                                                                         \
    return map<E>(context, [&](unsigned e) {                                                       \
      const E x = get<E>(zn, e);                                                                   \
      return static_cast<E>(__VA_ARGS__);                                                          \
    });                                                                                            \
  }

// Without predicate: sources a and b.
#define PLAIN_BINARY(operation, types, ...)                                                        \
  SVE_EACH(PLAIN_BINARY_FUNCTION, operation, types, __VA_ARGS__)
#define PLAIN_BINARY_FUNCTION(type, operation, ...)                                                \
  MODEL_DEFINE(type, operation, VecV, (VecV zn, VecV zm)) {                                        \
    using E = model::type;                                                                         \
    return map<E>(context, [&](unsigned e) {                                                       \
      const E a = get<E>(zn, e), b = get<E>(zm, e);                                                \
      return static_cast<E>(__VA_ARGS__);                                                          \
    });                                                                                            \
  }

// Without predicate: a source x and a 64-bit element of the second source as count.
#define PLAIN_WIDE(operation, types, ...)                                                          \
  SVE_EACH(PLAIN_WIDE_FUNCTION, operation, types, __VA_ARGS__)
#define PLAIN_WIDE_FUNCTION(type, operation, ...)                                                  \
  MODEL_DEFINE(type, operation, VecV, (VecV zn, VecV zm)) {                                        \
    using E = model::type;                                                                         \
    return map<E>(context, [&](unsigned e) {                                                       \
      const E x = get<E>(zn, e);                                                                   \
      const uint64_t count = wide<E>(zm, e);                                                       \
      return static_cast<E>(__VA_ARGS__);                                                          \
    });                                                                                            \
  }

// Without predicate: a source x, perhaps the old destination, and an immediate.
#define PLAIN_IMMEDIATE(operation, types, ...)                                                     \
  SVE_EACH(PLAIN_IMMEDIATE_FUNCTION, operation, types, __VA_ARGS__)
#define PLAIN_IMMEDIATE_FUNCTION(type, operation, ...)                                             \
  MODEL_DEFINE(type, operation, VecV, (VecV source, uint64_t imm)) {                               \
    using E = model::type;                                                                         \
    return map<E>(context, [&](unsigned e) {                                                       \
      const E x = get<E>(source, e);                                                               \
      return static_cast<E>(__VA_ARGS__);                                                          \
    });                                                                                            \
  }
