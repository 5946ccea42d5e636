// Drops from a finished block what inserted code does in vain.
//
// The client puts a full exchange around each emulated instruction. Between two that stand side by
// side, the first one's restoring half loads what the second one's saving half stores to the same
// place:
//
//   call
//   X27 = record
//   LDR W26, fpcr;  MSR FPCR, X26           stays: a register may keep fewer bits than the memory
//   LDR Q0, z[0] ...  LDP X0, X1, x[0] ...  goes: overwritten by the next restoring half
//   LDR X26, x[31];  ADD SP, X26, #0        goes
//   restore X28, X27, X26                   goes
//   save X26, X27, X28;  X27 = record       goes: X27 holds it
//   ADD X26, SP, #0;  STR X26, x[31]        goes: the memory holds it
//   STP X0, X1, x[0] ...  STR Q0, z[0] ...  goes
//   MRS X26, NZCV;  STR X26, nzcv           stays
//   call
//
// The pass knows nothing of the client. It goes by the words alone: a store goes if the memory
// holds the value already, an instruction goes if all that it writes is written again before
// anything reads it. Both are told for constant addresses only, and an instruction of the
// application that may touch memory, or may fault, reads everything and writes everything. So the
// registers are exact at each such instruction and at the end of the block, where signals arrive.
// A fault inside a call finds them through the call's restoring half as it was before the pass.
#pragma once

#include "runtime/ir/ir.h"

namespace core {

// For blocks with inserted calls: others have nothing to gain. `context` is the value of X28 while
// the block runs.
void optimise_block(ir::arena& memory, instrlist_t& list, uint64_t context);

}  // namespace core
