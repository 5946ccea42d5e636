// Allocation of instructions.
#pragma once

#include "runtime/ir/ir.h"

namespace ir {

// An instruction that is in no list, all zero.
instr_t* allocate(arena& memory);
void release(arena& memory, instr_t* instr);

}  // namespace ir
