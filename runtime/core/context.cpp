#include "runtime/core/context.h"

#include <cstring>
#include <new>

namespace core {
namespace {

// The runtime is always a program, never a library.
[[gnu::tls_model("local-exec")]] constinit thread_local Context* current = nullptr;

// What the assembly and the emitted code believe.
#define CHECK_OFFSET(field, offset) static_assert(offsetof(Context, field) == (offset))
CHECK_OFFSET(exit_x0, CTX_EXIT_X0);
CHECK_OFFSET(exit_x1, CTX_EXIT_X1);
CHECK_OFFSET(exit_x2, CTX_EXIT_X2);
CHECK_OFFSET(mangle_save, CTX_MANGLE_SAVE);
CHECK_OFFSET(lookup_table, CTX_LOOKUP_TABLE);
CHECK_OFFSET(runtime_sp, CTX_RUNTIME_SP);
CHECK_OFFSET(call, CTX_CALL);
CHECK_OFFSET(mangle_save2, CTX_MANGLE_SAVE2);
CHECK_OFFSET(x, CTX_X);
CHECK_OFFSET(sp, CTX_SP);
CHECK_OFFSET(pc, CTX_PC);
CHECK_OFFSET(nzcv, CTX_NZCV);
CHECK_OFFSET(fpsr, CTX_FPSR);
CHECK_OFFSET(fpcr, CTX_FPCR);
CHECK_OFFSET(tpidr, CTX_TPIDR);
CHECK_OFFSET(pending, CTX_PENDING);
CHECK_OFFSET(in_cache, CTX_IN_CACHE);
CHECK_OFFSET(call_sp, CTX_CALL_SP);
CHECK_OFFSET(spill, CTX_SPILL);
CHECK_OFFSET(q, CTX_Q);
#undef CHECK_OFFSET

unsigned char* bytes_of(ThreadMemory* memory) {
  return reinterpret_cast<unsigned char*>(memory) + sizeof(ThreadMemory);
}

}  // namespace

Context* current_context() { return current; }
void set_current_context(Context* context) { current = context; }

void* allocate_thread_memory(Context& context, size_t size) {
  constexpr size_t kAlignment = 16;
  static_assert(sizeof(ThreadMemory) % kAlignment == 0);
  const size_t total = (sizeof(ThreadMemory) + size + kAlignment - 1) / kAlignment * kAlignment;
  static_assert(kAlignment <= __STDCPP_DEFAULT_NEW_ALIGNMENT__);
  void* block = operator new(total);
  std::memset(block, 0, total);
  context.memory = new (block) ThreadMemory{context.memory, size};
  return bytes_of(context.memory);
}

void free_thread_memory(Context& context, void* memory) {
  for (ThreadMemory** link = &context.memory; *link != nullptr; link = &(*link)->next) {
    if (bytes_of(*link) == memory) {
      ThreadMemory* block = *link;
      *link = block->next;
      operator delete(block);
      return;
    }
  }
}

void free_all_thread_memory(Context& context) {
  while (context.memory != nullptr) {
    free_thread_memory(context, bytes_of(context.memory));
  }
}

size_t thread_memory_size(const Context& context) {
  size_t total = 0;
  for (const ThreadMemory* block = context.memory; block != nullptr; block = block->next) {
    total += block->size;
  }
  return total;
}

void save_thread_memory(const Context& context, unsigned char* to) {
  for (ThreadMemory* block = context.memory; block != nullptr; block = block->next) {
    std::memcpy(to, bytes_of(block), block->size);
    to += block->size;
  }
}

void restore_thread_memory(Context& context, const unsigned char* from) {
  for (ThreadMemory* block = context.memory; block != nullptr; block = block->next) {
    std::memcpy(bytes_of(block), from, block->size);
    from += block->size;
  }
}

void inherit_thread_memory(Context& context, const Context& parent) {
  ThreadMemory* to = context.memory;
  for (ThreadMemory* from = parent.memory; from != nullptr && to != nullptr; from = from->next) {
    if (from->size != to->size) {
      return;
    }
    std::memcpy(bytes_of(to), bytes_of(from), to->size);
    to = to->next;
  }
}

}  // namespace core

namespace ir {

const context_layout runtime_layout = {CTX_X + stolen_register * 8, CTX_SPILL};

arena& arena_of(void* drcontext) { return static_cast<core::Context*>(drcontext)->arena; }

}  // namespace ir
