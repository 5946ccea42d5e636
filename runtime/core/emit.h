// Turns a block's instructions into the words of a fragment: mangling.
#pragma once

#include <vector>

#include "runtime/core/cache.h"
#include "runtime/core/context.h"

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
  std::vector<uint32_t>& words;
  Fragment fragment;
  const uint64_t behind;  // the application address behind the block
  std::vector<CallConstants> constants;
  bool marking = false;  // the words of an instruction of the application follow

  // `calls`: whether clean calls are among the instructions.
  Emitter(Cache& to, uint64_t tag, uint64_t behind, bool calls);
  uint32_t offset() const { return fragment.begin + static_cast<uint32_t>(words.size()) * 4; }
  void emit(uint32_t word) { words.push_back(word); }
};

// One instruction of the finished list: the application's are rewritten as need be, the runtime's
// go in as they are. Returns whether control does not go on behind it.
bool emit_instruction(Emitter& emitter, const instr_t& instr);
// The application's instructions from this one on that need no rewriting; returns the one behind
// them.
const instr_t* emit_plain_instructions(Emitter& emitter, const instr_t* instr);
// The direct exit of a block that ends without a control transfer.
void emit_exit(Emitter& emitter, uint64_t target, ExitKind kind = ExitKind::direct);

// The stubs of the exits, behind the block's code.
void emit_stubs(Emitter& emitter);
// The constants of the calls, behind all instructions.
void emit_constants(Emitter& emitter);

// The value that the application sees in CTR_EL0.
uint64_t application_ctr();

}  // namespace core
