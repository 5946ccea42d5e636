// How a line of a table in sve/decode/rows becomes rows.
//
//   ROW("ADD Zdn.T, Pg/M, Zdn.T, Zm5.T", AddVVM, (U8, U16, U32, U64), sized(0x04000000),
//       FAST, sve_add_zpz, Zdn, PgM, Zm5)
//
// The assembly form: mnemonic and operands, in the notation of disassemble.h.
// The operation, and the types of its elements: one row for each, whose stub is named
//   Vec<type><operation>, here VecU8AddVVM and so on. An operation ends in its shape: a letter for
//   each source (V vector, P predicate, I immediate, S scalar; 0 zero), and M for merging, Z for
//   zeroing or X for no predicate. Loads and stores have the bytes of a memory element in front of
//   it, and X or Y for offsets that are sign- or zero-extended; CLoad and CStore are contiguous.
// The value: the word with all operand fields zero. A sized one lacks the size field, bits 23 and
//   22, which is the type's.
// The tier, and what it needs:
//   FAST, function, forms       stores the word and calls the function
//   HOST_FP, function, forms    the same, with FPSR loaded and stored around it, and FPCR kept
//   MODEL, destination, forms   packs values, calls the model function of the stub's name, writes
//   back NOP, forms                  returns
// The operand forms stand in the order of the function's parameters. What they leave of the word is
// the row's mask. Forms Old are the destination's former value.
#pragma once

#include "sve/decode/bridge.h"
#include "sve/decode/stub.h"
#include "sve/state/each_type.h"

namespace stubs {

// A value that lacks its size field.
struct sized {
  uint32_t value;
};
template <class T> constexpr uint32_t row_value(uint32_t value) { return value; }
template <class T> constexpr uint32_t row_value(sized row) {
  return row.value | static_cast<uint32_t>(T::size) << 22;
}

}  // namespace stubs

#define ROW(assembly, operation, types, value, tier, ...)                                          \
  SVE_EACH(SVE_ROW_##tier, operation, types, assembly, value, __VA_ARGS__)

#define SVE_ROW_FAST(type, operation, assembly, value, function, ...)                              \
  SVE_ROW(type, operation, value, Tier::fast, (mask_of<type __VA_OPT__(, ) __VA_ARGS__>()),        \
          assembly "\0" #function __VA_OPT__(", ") #__VA_ARGS__,                                   \
          plain<function, type __VA_OPT__(, ) __VA_ARGS__>)
#define SVE_ROW_HOST_FP(type, operation, assembly, value, function, ...)                           \
  SVE_ROW(type, operation, value, Tier::host_fp, (mask_of<type, __VA_ARGS__>()),                   \
          assembly "\0" #function ", " #__VA_ARGS__, bracketed<function, type, __VA_ARGS__>)
#define SVE_ROW_MODEL(type, operation, assembly, value, ...)                                       \
  SVE_ROW(type, operation, value, Tier::model, (model_mask_of<type, __VA_ARGS__>()),               \
          assembly "\0" #__VA_ARGS__, bridge<::Vec##type##operation, type, __VA_ARGS__>)
#define SVE_ROW_NOP(type, operation, assembly, value, ...)                                         \
  SVE_ROW(type, operation, value, Tier::no_operation, (mask_of<type, __VA_ARGS__>()),              \
          assembly "\0" #__VA_ARGS__, no_operation)

// Rows are collected by the linker, so that a table is complete by being linked in. The stub's body
// is a function of the record and the word.
#define SVE_ROW(type, operation, value, tier, mask, texts, ...)                                    \
  SVE_NAMED_ROW(Vec##type##operation, type, row_value<type>(value), tier, mask,                    \
                "Vec" #type #operation "\0" texts, __VA_ARGS__)
#define SVE_NAMED_ROW(name, type, row_value, tier, row_mask, texts, ...)                           \
  namespace stubs {                                                                                \
  aarch64_decode_rc name(cpu_state* state, unsigned int word) { return __VA_ARGS__(state, word); } \
  static_assert(((row_value) & ~(row_mask)) == 0, "the value has bits of an operand");             \
  static_assert(decoder_map_index(row_mask) < decoder_map_count, "no map has this mask");          \
  [[gnu::section("sve_rows"), gnu::used]] constinit const Row row_of_##name{                       \
      row_value, row_mask, name, texts, tier, uint8_t{type::size}};                                \
  }
