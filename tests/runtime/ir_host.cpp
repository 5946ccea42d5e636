// Stands in for the runtime's core where only instruction lists are needed.
#include "runtime/ir/ir.h"

namespace ir {

const context_layout runtime_layout = {.stolen_value = 0xe0, .first_slot = 0x200};

// `drcontext` is the arena itself.
arena& arena_of(void* drcontext) { return *static_cast<arena*>(drcontext); }

}  // namespace ir
