// The functions of the client's interface that concern the thread and the process.
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <unistd.h>

#include "runtime/core/context.h"
#include "runtime/include/drmgr.h"

file_t our_stderr = STDERR_FILENO;

namespace {

core::Context& context_of(void* drcontext) { return *static_cast<core::Context*>(drcontext); }

uint64_t& slot_of(void* drcontext, dr_spill_slot_t slot) {
  if (slot < SPILL_SLOT_1 || slot > SPILL_SLOT_MAX) {
    dr_abort();
  }
  return context_of(drcontext).spill[slot - SPILL_SLOT_1];
}

// Also fields that the client gave back while it ends: other threads still run.
bool is_field(int index) { return index >= 0 && index < ir::max_tls_fields; }

}  // namespace

void* dr_get_current_drcontext() { return core::current_context(); }

app_pc dr_fragment_app_pc(void* tag) { return static_cast<app_pc>(tag); }

ptr_uint_t dr_read_saved_reg(void* drcontext, dr_spill_slot_t slot) {
  return slot_of(drcontext, slot);
}

void dr_write_saved_reg(void* drcontext, dr_spill_slot_t slot, ptr_uint_t value) {
  slot_of(drcontext, slot) = value;
}

void* drmgr_get_tls_field(void* drcontext, int index) { return context_of(drcontext).tls[index]; }

bool drmgr_set_tls_field(void* drcontext, int index, void* value) {
  if (!is_field(index)) {
    return false;
  }
  context_of(drcontext).tls[index] = value;
  return true;
}

void* dr_thread_alloc(void* drcontext, size_t size) {
  return core::allocate_thread_memory(context_of(drcontext), size);
}

void dr_thread_free(void* drcontext, void* memory, size_t) {
  core::free_thread_memory(context_of(drcontext), memory);
}

// Nothing shows the client's name: the runtime's diagnostics are its own.
void dr_set_client_name(const char*, const char*) {}

void dr_abort() { std::abort(); }

ptr_int_t dr_fprintf(file_t file, const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  const int written = vdprintf(file, format, arguments);
  va_end(arguments);
  return written;
}

// There is no log.
void dr_log(void*, uint, uint, const char*, ...) {}
