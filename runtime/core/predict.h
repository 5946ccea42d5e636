// Indirect branches that know where they went before.
//
//   branch:  (LDR X30, =return address)      of a call
//   site:    LDR  X28, =first target         or B stub: not known yet, or somebody unlinked it
//            SUB  X28, X28, Xt
//            CBZ  X28, body                  or hop, if the body is too far away
//            B    chain                      or B stub
//   hop:     B    body
//
//   chain:   ADD  X28, X28, #difference      or LDR X28, =second target; SUB X28, X28, Xt
//            CBZ  X28, body                  a direct exit like others
//            ...
//            B    stub                       of the site
//
// The stub goes to the dispatcher, which adds the target. Where one more than kMaxPredictions comes
// up, the site becomes B search, and all sites of the thread with the same Xt share that look-up.
// The application's registers hold its values all the way; X28 is the only one that changes.
//
// A leaf is a fragment of few instructions, all as the application has them, and a RET to the
// address that was in X30 when it was entered. An exit that knows X30 gets a copy of it, in which
// that RET is a direct exit.
#pragma once

#include "runtime/core/emit.h"

namespace core {

// Off only for comparison.
extern constinit bool predict_branches;

// Whether the indirect branch `word` gets predictions. Those that need another register cannot, and
// BR by another register than X16 and X17 stands for a jump table.
bool is_predictable(uint32_t word);
// The branch to Xt; `returns` is what it has put in X30, 0 if nothing.
void emit_prediction(Emitter& emitter, unsigned target, uint64_t returns);
// In a complete fragment: lets its site, if it has one, wait for the first target.
void settle_prediction(Emitter& emitter);
// Notes whether the fragment, of which all instructions are there, is a leaf.
void find_leaf(Emitter& emitter);

// Whether the exit goes to a copy of `target`, a leaf, of its own.
bool wants_copy(const Cache& cache, const Exit& exit, const Fragment& target);
// If one of the site's targets lies in [begin, end), the site forgets all that it knows.
void forget_prediction(Cache& cache, Exit& exit, uint64_t begin, uint64_t end);
// Lets the exit that led to `target` go there by itself next time.
void follow_exit(Context& context, uint32_t number, const Fragment& target);

}  // namespace core
