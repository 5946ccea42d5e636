// The application's life: what to do whenever it leaves the code cache.
#include "runtime/core/dispatch.h"
#include "runtime/core/entry.h"
#include "runtime/core/identification.h"
#include "runtime/linux/process.h"
#include "runtime/linux/signals.h"
#include "runtime/linux/syscalls.h"

namespace os {
namespace {

// A jump to where no code is: the fault that the processor would have raised.
void raise_fetch_fault(Thread& thread) {
  const uint64_t pc = thread.context.pc;
  if (pc % 4 != 0) {
    raise_fault(thread, SIGBUS, BUS_ADRALN, pc);
    return;
  }
  char probe;
  const bool mapped = core_copy(&probe, reinterpret_cast<const void*>(pc), 1) == 0;
  raise_fault(thread, SIGSEGV, mapped ? SEGV_ACCERR : SEGV_MAPERR, pc);
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
