// One application thread as the runtime sees it. Code of the cache has its address as a constant,
// and brings it into X28 where it needs it.
#pragma once

#include <cstddef>
#include <cstdint>

#include "runtime/core/context_offsets.h"
#include "runtime/ir/events.h"
#include "runtime/ir/ir.h"

namespace core {

struct Cache;

inline constexpr unsigned kStolenRegister = ir::stolen_register;
inline constexpr unsigned kLookupBits = 14;
inline constexpr int kSpillSlots = SPILL_SLOT_MAX;

// An entry of the table that indirect branches search: a fragment by its application address.
struct LookupEntry {
  uint64_t tag;
  uint64_t code;
};

// Memory that dr_thread_alloc gave out: part of what a signal handler saves and restores.
struct ThreadMemory {
  ThreadMemory* next;
  size_t size;
  // The client's bytes follow, 16-byte aligned.
};

// The registers of the application as they stand while its code does not run. While it runs, only
// x[28] and tpidr are current here.
struct alignas(16) Context {
  // What emitted code uses by offset; see context_offsets.h.
  uint64_t exit_x0, exit_x1, exit_x2;  // saved by an exit stub or by the inline look-up
  uint64_t mangle_save;                // the scratch register of a rewritten instruction
  const LookupEntry* lookup_table;     // the thread's own table, or the empty one
  uint64_t runtime_sp;                 // the stack for clean calls and for leaving the cache
  uint64_t call;                       // the constants of the last clean call
  uint64_t mangle_save2;               // the second one, where a pair is needed
  uint64_t x[31];
  uint64_t sp;
  uint64_t pc;
  uint64_t nzcv, fpsr, fpcr;
  uint64_t tpidr;              // the application's TPIDR_EL0
  volatile uint64_t pending;   // non-zero: come to the dispatcher
  volatile uint64_t in_cache;  // non-zero from entering the cache to leaving it
  uint64_t call_sp;            // the application's SP between two clean calls
  // The client's slots, from SPILL_SLOT_1 on: aligned, for whoever copies two at once.
  alignas(16) uint64_t spill[kSpillSlots];
  alignas(16) unsigned char q[32][16];

  Cache* cache;
  ir::arena arena;
  void* tls[ir::max_tls_fields];
  ThreadMemory* memory;
  uint32_t last_exit;  // the exit to link to the next fragment, or EXIT_*
};

// Bits of Context::pending. The others are the operating system side's.
inline constexpr uint64_t kChangesPending = 1;  // Cache::changes has some

inline void add_pending(Context& context, uint64_t bits) {
  __atomic_fetch_or(&context.pending, bits, __ATOMIC_SEQ_CST);
}
inline void remove_pending(Context& context, uint64_t bits) {
  __atomic_fetch_and(&context.pending, ~bits, __ATOMIC_SEQ_CST);
}

// The calling thread's context, null before it has one.
Context* current_context();
void set_current_context(Context* context);

// The table without any entry: with it, every indirect branch leaves the cache.
const LookupEntry* empty_lookup_table();

// Memory that belongs to the thread, zeroed, 16-byte aligned.
void* allocate_thread_memory(Context& context, size_t size);
void free_thread_memory(Context& context, void* memory);
void free_all_thread_memory(Context& context);
// All such memory of a thread as one sequence of bytes, for the frame of a signal handler.
// Restoring expects the blocks that stood when it was saved.
size_t thread_memory_size(const Context& context);
void save_thread_memory(const Context& context, unsigned char* to);
void restore_thread_memory(Context& context, const unsigned char* from);
// A new thread takes over what such memory of its parent, which waits for it, holds: as if it were
// registers. Both have the same blocks, as far as the client allocates them when a thread begins.
void inherit_thread_memory(Context& context, const Context& parent);

}  // namespace core
