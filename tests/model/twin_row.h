// Twins: the reference model's functions of the forms that the fast path serves, bridged as a row
// of the model's own is. They stand in a table that the tests alone link.
#pragma once

#include <span>
#include <string_view>

#include "sve/decode/bridge.h"

// A twin has the name of its row.
struct alignas(32) TwinRow {
  const char* name;
  uint32_t mask;  // what the twin's operand forms leave: the row's mask if the forms are right
  decode_stub stub;
};

std::span<const TwinRow> all_twins();

// The twin of the row of this name, or null.
const TwinRow* twin_named(std::string_view name);

// A line of a table: the operation, its types, the destination's form and one for each parameter.
#define TWIN(operation, types, ...) SVE_EACH(TWIN_ROW, operation, types, __VA_ARGS__)
#define TWIN_ROW(type, operation, ...)                                                             \
  namespace twins {                                                                                \
  using namespace stubs;                                                                           \
  [[gnu::section("sve_twins"), gnu::used]] constinit const TwinRow twin_of_##type##operation{      \
      "Vec" #type #operation, model_mask_of<type, __VA_ARGS__>(),                                  \
      bridge<::Vec##type##operation, type, __VA_ARGS__>};                                          \
  }
