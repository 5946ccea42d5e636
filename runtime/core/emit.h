// Turns a block's instructions into the words of a fragment: mangling.
#pragma once

#include <vector>

#include "runtime/core/cache.h"
#include "runtime/core/context.h"
#include "runtime/core/loop.h"

namespace core {

// What a call loads, and which word takes its address.
struct CallConstants {
  uint32_t word;
  const ir::call_target* call;
};

// A fragment under construction. Offsets are in bytes from the cache's beginning; nothing is
// written to the cache before the fragment is complete.
struct Emitter {
  Cache& cache;
  const uint64_t context;  // address of the thread's
  Words& words;
  Fragment fragment;
  const uint64_t behind;  // the application address behind the block
  std::vector<CallConstants> constants;
  bool marking = false;           // the words of an instruction of the application follow
  bool context_loaded = false;    // X28 holds the context
  bool on_runtime_stack = false;  // SP is the runtime's, between two calls
  uint32_t context_word = 0;      // where its address stands behind the instructions, 0: not yet

  // `calls`: whether clean calls are among the instructions.
  Emitter(Context& context, uint64_t tag, uint64_t behind, bool calls);
  uint32_t offset() const { return fragment.begin + static_cast<uint32_t>(words.size()) * 4; }
  void emit(uint32_t word) { words.push_back(word); }
  uint32_t& word_at(uint32_t at) { return words[(at - fragment.begin) / 4]; }
};

// One instruction of the finished list: the application's are rewritten as need be, the runtime's
// go in as they are. Returns whether control does not go on behind it.
bool emit_instruction(Emitter& emitter, const instr_t& instr);
// A call of the client's.
void emit_call(Emitter& emitter, const instr_t& instr);
// The inserted MOVZ and MOVKs of a constant that begins here, as one load; returns the instruction
// behind them, or this one if none begins.
const instr_t* emit_inserted_constant(Emitter& emitter, const instr_t* instr);
// The way from the last call of a loop to its `body`, an offset, in front of its last restoring
// half.
void emit_way_round(Emitter& emitter, const Loop& loop, uint32_t body);
// The application's instructions from this one on that need no rewriting; returns the one behind
// them.
const instr_t* emit_plain_instructions(Emitter& emitter, const instr_t* instr);
// The direct exit of a block that ends without a control transfer.
void emit_exit(Emitter& emitter, uint64_t target, ExitKind kind = ExitKind::direct);

// An exit that is not written yet, since its site waits for the stub. Returns its number.
uint32_t add_exit(Emitter& emitter, uint64_t target, ExitKind kind);
// An exit whose site is the next word, the conditional branch `branch`.
uint32_t emit_conditional_site(Emitter& emitter, uint64_t target, uint32_t branch);
// The search of the table for the target in Xt, t > 1, or with `saved` in X2, whose own value is in
// its slot. X0 and X1 are in theirs, and X28 is the context.
void emit_search(Emitter& emitter, unsigned target, bool saved);

// X28 = context, unless it holds that already.
void need_context(Emitter& emitter);
// A register to or from a field of the context.
void load_field(Emitter& emitter, unsigned reg, unsigned field);
void store_field(Emitter& emitter, unsigned reg, unsigned field);
// One instruction: a load from a literal, or a MOVZ where that does.
void emit_literal(Emitter& emitter, unsigned reg, uint64_t value);
void emit_constant(Emitter& emitter, unsigned reg, uint64_t value);
// Notes that the application's instruction at `pc` begins with the next word. In the midst of what
// the client inserted the registers are not the application's.
void mark(Emitter& emitter, uint64_t pc, unsigned scratch = kNoScratch);

// The stub of an exit, and with it what stands at its site.
void emit_stub(Emitter& emitter, uint32_t number);
// Adds the stubs and the constants, and puts the fragment into the cache; null, and no trace of it,
// if there is no room.
Fragment* finish(Emitter& emitter);
// Takes back what the tables hold of a fragment that is not to be.
void forget(Cache& cache, const Fragment& fragment);

}  // namespace core
