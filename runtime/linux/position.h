// Where in the application a thread stands that was interrupted in the code cache.
#pragma once

#include <ucontext.h>

#include "runtime/core/context.h"

namespace os {

// If the thread stands between two instructions of the application, or in a prediction or look-up
// between two blocks: puts the application's registers and PC into the context. False, and nothing
// is changed, if it is in the midst of what the runtime or the client inserted.
bool load_exact_state(core::Context& context, const mcontext_t& machine);

// The same for a fault of the application's instruction that the thread stands at.
void load_fault_state(core::Context& context, const mcontext_t& machine);

}  // namespace os
