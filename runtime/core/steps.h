// The instructions of a finished block as the passes see them.
#pragma once

#include <vector>

#include "runtime/core/effects.h"
#include "runtime/core/values.h"

namespace core {

struct Step {
  instr_t* instr;
  Effect effect;
  uint64_t address = 0;  // of a load or store, if it is known
  bool known = false;
  bool dropped = false;
  bool kept = false;  // never dropped for being unread
};
using Steps = std::vector<Step>;

Steps steps_of(const instrlist_t& list);

// Follows the steps of [first, last) forwards, from what `values` knows, and drops those that
// change nothing.
void drop_repetitions(Steps& steps, size_t first, size_t last, Values& values);
// Follows them backwards, and drops those that write what nothing reads before it is written again.
// Behind them everything is read. Returns what they read of the state in front of them. `context`
// is the value of X28.
StateSet drop_unread(Steps& steps, uint64_t context);
// MSR NZCV, Xt;  MRS Xt, NZCV: what is left of Xt are the flags, and if nothing asks for them, they
// need not be set for that.
void mask_flags(Steps& steps);
// Joins single accesses that stand side by side, in the instructions; their effects are what they
// were.
void join_pairs(Steps& steps);

}  // namespace core
