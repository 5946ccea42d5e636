// How families of model functions are declared and defined. A function is named
// Vec<type><operation>, and takes CpuContext* behind its operands.
#pragma once

#include "sve/model/context.h"
#include "sve/state/each_type.h"

// MODEL_FUNCTIONS(result, (operands), (types), operations...): declares all operations for all
// types.
#define MODEL_FUNCTIONS(result, operands, types, ...)                                              \
  MODEL_EXPAND(MODEL_OPERATIONS(result, operands, types, __VA_ARGS__))
#define MODEL_OPERATIONS(result, operands, types, operation, ...)                                  \
  SVE_EACH(MODEL_DECLARE, operation, types, result, operands)                                      \
  __VA_OPT__(MODEL_OPERATIONS_AGAIN MODEL_NOTHING()()(result, operands, types, __VA_ARGS__))
#define MODEL_OPERATIONS_AGAIN() MODEL_OPERATIONS
#define MODEL_NOTHING()
#define MODEL_DECLARE(type, operation, result, operands)                                           \
  MODEL_LINKAGE result Vec##type##operation(MODEL_PARAMETERS operands);
#define MODEL_PARAMETERS(...) __VA_ARGS__ __VA_OPT__(, ) CpuContext* context

// Rescans often enough for thirty operations.
#define MODEL_EXPAND(...) MODEL_EXPAND_1(MODEL_EXPAND_1(MODEL_EXPAND_1(__VA_ARGS__)))
#define MODEL_EXPAND_1(...) MODEL_EXPAND_2(MODEL_EXPAND_2(MODEL_EXPAND_2(__VA_ARGS__)))
#define MODEL_EXPAND_2(...) MODEL_EXPAND_3(MODEL_EXPAND_3(MODEL_EXPAND_3(__VA_ARGS__)))
#define MODEL_EXPAND_3(...) __VA_ARGS__

// MODEL_DEFINE(type, operation, result, (operands)): the head of the definition of
// Vec<type><operation>.
#define MODEL_DEFINE(type, operation, result, operands)                                            \
  MODEL_LINKAGE result Vec##type##operation(MODEL_PARAMETERS operands)
