// Which words fragments were built from. A program that writes code often writes it beside code
// that stays, and says so for more than it wrote: what matters is whether a word is another one
// now.
#pragma once

#include <cstdint>

#include "runtime/core/lock.h"

namespace core {

// Fragments will be built from these words, which stood at `pc`. Whoever notes them looks behind it
// whether they still stand there and may be executed: a change by another thread may have fallen
// between reading and noting.
void note_decoded(uint64_t pc, const uint32_t* words, unsigned count);
// Whether fragments were or will be built from any byte of [begin, end). If so, the table forgets
// the words there: every thread is going to forget its fragments of them.
bool forget_decoded(uint64_t begin, uint64_t end);
// The same, but only if the memory does not hold one of the words any more.
bool forget_rewritten(uint64_t begin, uint64_t end);

// The table's lock, to be held over a fork.
extern Lock decoded_mutex;
// A new table, after a change of the old one was broken off. Every thread has to forget all.
void abandon_decoded();

}  // namespace core
