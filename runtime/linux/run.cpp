// The application's life: what to do whenever it leaves the code cache.
#include "runtime/core/code_map.h"
#include "runtime/core/dispatch.h"
#include "runtime/core/entry.h"
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
      // Which line is not looked at: a program that writes code writes more than one.
      code_changed(thread, 0, ~uint64_t{0});
      break;
    case core::Event::not_executable:
      raise_fetch_fault(thread);
      break;
    }
  }
}

}  // namespace os
