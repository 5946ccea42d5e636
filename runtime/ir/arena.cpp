
#include "runtime/ir/arena.h"

namespace ir {

// About what one emulated instruction and its neighbours take.
constexpr unsigned chunk_instructions = 256;

struct arena::chunk {
  chunk* next;
  instr_t instructions[chunk_instructions];
};

void grow(arena& memory) {
  auto* const added = new arena::chunk;
  added->next = memory.chunks;
  memory.chunks = added;
  for (instr_t& instr : added->instructions) {
    release(memory, &instr);
  }
}

void dispose(arena& memory) {
  while (memory.chunks != nullptr) {
    arena::chunk* const next = memory.chunks->next;
    delete memory.chunks;
    memory.chunks = next;
  }
  memory.free = nullptr;
}

}  // namespace ir
