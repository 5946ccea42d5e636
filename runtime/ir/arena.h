// Allocation of instructions.
#pragma once

#include "runtime/ir/ir.h"

namespace ir {

void grow(arena& memory);

// An instruction that is in no list, all zero.
inline instr_t* allocate(arena& memory) {
  if (memory.free == nullptr) {
    grow(memory);
  }
  instr_t* const instr = memory.free;
  memory.free = instr->next;
  *instr = {};
  return instr;
}

inline void release(arena& memory, instr_t* instr) {
  instr->next = memory.free;
  memory.free = instr;
}

}  // namespace ir
