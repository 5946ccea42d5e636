// From the application's code to a fragment of the cache.
#pragma once

#include "runtime/core/cache.h"
#include "runtime/core/context.h"

namespace core {

// A block ends here at the latest, so that its fragment stays within what a Place can say: each
// instruction may become more than half a kilobyte.
inline constexpr unsigned kMaxBlockInstructions = 128;

// Builds the fragment for the application's code at context.pc, and flushes the cache first if it
// is full. Null if the code there cannot be read or must not be executed.
Fragment* build_fragment(Context& context);

// Whether optimise_block sees the blocks. Off only for comparison.
extern constinit bool optimise_blocks;

}  // namespace core
