// The application's life: what to do whenever it leaves the code cache.
#include <sys/mman.h>

#include <cerrno>

#include "runtime/core/dispatch.h"
#include "runtime/core/entry.h"
#include "runtime/core/identification.h"
#include "runtime/linux/pages.h"
#include "runtime/linux/process.h"
#include "runtime/linux/signals.h"
#include "runtime/linux/syscalls.h"

namespace os {
namespace {

// Also memory that nobody may access.
bool is_mapped(uint64_t address) {
  return msync(reinterpret_cast<void*>(page_floor(address)), 1, MS_ASYNC) == 0 || errno != ENOMEM;
}

// A jump to where no code is: the fault that the processor would have raised.
void raise_fetch_fault(Thread& thread) {
  // ESR: classes and fault status, the latter as for memory that has a table of pages.
  constexpr uint64_t kAlignment = 0x8a000000, kFetch = 0x82000000;
  constexpr uint64_t kTranslation = 0x7, kPermission = 0xf;
  const uint64_t pc = thread.context.pc;
  if (pc % 4 != 0) {
    raise_fault(thread, SIGBUS, BUS_ADRALN, pc, kAlignment);
  } else if (is_mapped(pc)) {
    raise_fault(thread, SIGSEGV, SEGV_ACCERR, pc, kFetch | kPermission);
  } else {
    raise_fault(thread, SIGSEGV, SEGV_MAPERR, pc, kFetch | kTranslation);
  }
}

// The IC IVAU in front of the PC says that a line of code was written.
void note_flushed_line(Thread& thread) {
  const core::Context& context = thread.context;
  constexpr uint64_t kZeroRegister = 31;
  uint32_t word = 0;
  core_copy(&word, reinterpret_cast<const void*>(context.pc - sizeof word), sizeof word);
  const uint64_t reg = word & kZeroRegister;
  const uint64_t line_size = 4U << (core::application_ctr() & 15);
  const uint64_t address = reg == kZeroRegister ? 0 : core::without_tag(context.x[reg]);
  const uint64_t line = address & ~(line_size - 1);
  code_written(thread, line, line + line_size);
}

}  // namespace

void run_application(Thread& thread) {
  while (!thread.exiting) {
    switch (core::run(thread.context)) {
    case core::Event::system_call:
      system_call(thread);
      break;
    case core::Event::interrupted:
      deliver_pending(thread);
      break;
    case core::Event::code_changed:
      note_flushed_line(thread);
      break;
    case core::Event::not_executable:
      raise_fetch_fault(thread);
      break;
    }
  }
}

}  // namespace os
