// Registers between the kernel's signal context and the runtime's.
#pragma once

#include <ucontext.h>

#include "runtime/core/context.h"

namespace os {

// All registers of the application from, or to, a signal context, the vector registers from its
// FPSIMD record (there is no change to them if it has none).
void load_registers(core::Context& context, const mcontext_t& machine);
void store_registers(const core::Context& context, mcontext_t& machine);
// Puts what a signal context tells of the processor's modes in force.
void write_modes(const mcontext_t& machine);

// A record of the area behind the registers: the first with this magic, null if there is none.
struct RecordHead {
  uint32_t magic;
  uint32_t size;
};
const RecordHead* find_record(const mcontext_t& machine, uint32_t magic);

}  // namespace os
