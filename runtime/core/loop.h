// A block of emulated instructions that branches back to its own beginning.
//
// Between two rounds the application's registers are loaded from the record and stored there again.
// If the branch is taken and nobody waits for the thread, nobody sees them, and the block goes
// round within its fragment:
//
//            saving half
//   body:    call ... call
//            what the branch asks for             Loop::decide
//            B.!cond out
//            LDR X26, pending;  CBNZ X26, out
//            what is left of both halves          Loop::again
//            B body
//   out:     restoring half                       Loop::out
//            B.cond, with the exits as always
//
// Around the halves there may be computations of the application, as CMP: they belong to them.
//
// What is left is found as in optimise.h: the restoring half, the saving half and the next round as
// one piece of straight code. So state is exact at each instruction that may fault, and wherever a
// signal is delivered, which is behind `out`.
#pragma once

#include <vector>

#include "runtime/ir/ir.h"

namespace core {

inline constexpr unsigned kPendingRegister = 26;  // dead in the midst of what the client inserts

struct Loop {
  const instr_t* body = nullptr;  // null: the block is no such loop
  const instr_t* out = nullptr;
  uint32_t branch = 0;
  std::vector<uint32_t> decide, again;
};

// The loop of a block that begins at `tag` and has been optimised.
Loop find_loop(const instrlist_t& list, uint64_t tag, uint64_t context);

}  // namespace core
