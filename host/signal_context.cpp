#include "host/signal_context.h"

#include <ucontext.h>

#include <cstdint>

// The load has to be one known instruction with no code of the compiler's in between, so the
// function is written in assembly.
#if defined(__aarch64__)
asm(R"(
    .text
    .hidden tavok_probe_byte, tavok_probe_load, tavok_probe_resume
    .globl  tavok_probe_byte, tavok_probe_load, tavok_probe_resume
    .type   tavok_probe_byte, %function
    .balign 4
tavok_probe_byte:
tavok_probe_load:
    ldrb    w0, [x0]
tavok_probe_resume:
    ret
    .size   tavok_probe_byte, . - tavok_probe_byte
)");
#elif defined(__x86_64__)
asm(R"(
    .text
    .hidden tavok_probe_byte, tavok_probe_load, tavok_probe_resume
    .globl  tavok_probe_byte, tavok_probe_load, tavok_probe_resume
    .type   tavok_probe_byte, @function
tavok_probe_byte:
tavok_probe_load:
    movzbl  (%rdi), %eax
tavok_probe_resume:
    ret
    .size   tavok_probe_byte, . - tavok_probe_byte
)");
#else
#error "no probing load for this processor"
#endif

extern "C" {
[[gnu::visibility("hidden")]] void tavok_probe_byte(const volatile char* address);
[[gnu::visibility("hidden")]] extern const char tavok_probe_load[];
[[gnu::visibility("hidden")]] extern const char tavok_probe_resume[];
}

namespace {

// The program counter's place in the context.
auto& program_counter(void* context) {
  auto& machine = static_cast<ucontext_t*>(context)->uc_mcontext;
#if defined(__aarch64__)
  return machine.pc;
#else
  return machine.gregs[REG_RIP];
#endif
}

}  // namespace

namespace host {

void probe_byte(const volatile char* address) { tavok_probe_byte(address); }

bool step_over_probe(void* context) {
  auto& pc = program_counter(context);
  if (static_cast<uintptr_t>(pc) != reinterpret_cast<uintptr_t>(tavok_probe_load))
    return false;
  pc = reinterpret_cast<uintptr_t>(tavok_probe_resume);
  return true;
}

}  // namespace host
