// The last words about an instruction that the processor does not know.
#pragma once

#include "runtime/linux/thread.h"

namespace os {

// In front of the death by SIGILL at context.pc: one line on standard error that says where the
// instruction is and what it is. Safe in a signal handler that interrupted the application's code.
void tell_illegal_instruction(const Thread& thread);

}  // namespace os
