// What stands behind the instructions and lists of the interface, for the runtime's block builder.
//
// Every instruction is a word from the moment it exists: what the client creates from operands is
// encoded at once. One bit tells the application's instructions, and those that count as such, from
// what the runtime inserted itself. The only instruction without a word is the call.
#pragma once

#include <cstdint>

#include "runtime/include/dr_api.h"

namespace ir {

// The application never finds its own value in this register: it is the runtime's, and holds the
// address of the thread's context wherever inserted code runs.
inline constexpr unsigned stolen_register = 28;
inline constexpr unsigned max_call_arguments = 3;

enum class kind : std::uint8_t {
  original,  // read from the application's code
  created,   // made with instr_create_*
  meta,      // inserted by the runtime: final, never mangled
  call,      // a call that dr_insert_call_tavok inserted, to be expanded by the block builder
};

struct call_target {
  void* callee;
  std::uint64_t arguments[max_call_arguments];
  std::uint32_t restore;  // the block builder's
};

// Where inserted code finds things in the thread's context, in bytes from X28: multiples of 8 below
// 32768.
struct context_layout {
  unsigned stolen_value;  // the application's X28
  unsigned first_slot;    // SPILL_SLOT_1, the others behind it
};

// Memory for the instructions of one thread, reused from block to block.
struct arena {
  struct chunk;
  chunk* chunks = nullptr;
  instr_t* free = nullptr;
};
// Gives the memory back. No list may be in use any more.
void dispose(arena& memory);

// ---- supplied by the runtime's core -------------------------------------------------------------

extern const context_layout runtime_layout;
// The arena of the thread that `drcontext` stands for.
arena& arena_of(void* drcontext);

}  // namespace ir

struct instr_t {
  instr_t* previous;
  instr_t* next;
  app_pc pc;  // the application address that it is at, or counts as being at
  std::uint32_t word;
  ir::kind kind;
  std::uint8_t opcode;   // of a created instruction
  bool plain;            // of an original one: needs no rewriting
  ir::call_target call;  // of a call
};

struct instrlist_t {
  instr_t* first = nullptr;
  instr_t* last = nullptr;
  bool calls = false;  // there are, or were, inserted calls
};

namespace ir {

// Counts as the application's: a stolen register in it means the application's value.
inline bool is_app(const instr_t& instr) {
  return instr.kind == kind::original || instr.kind == kind::created;
}

// The application's instruction `word` at `pc`.
instr_t* new_original(arena& memory, std::uint32_t word, app_pc pc);
// A final word that counts as being at `pc`.
instr_t* new_meta(arena& memory, std::uint32_t word, app_pc pc);
void append(instrlist_t& list, instr_t* instr);
// Gives all instructions back to the arena.
void clear(arena& memory, instrlist_t& list);

// The word of `opcode` with these operands, destinations first; does not return if the opcode
// cannot take them.
std::uint32_t encode(int opcode, const opnd_t* operands, unsigned count);

// The number 0 to 31 of a general or vector register of any view.
unsigned register_number(reg_id_t reg);
// The offset of a slot in the thread's context.
unsigned slot_offset(dr_spill_slot_t slot);

}  // namespace ir
