#include "sve/state/guarded_reads.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "host/signal_context.h"
#include "sve/state/cpu_state.h"
#include "sve/state/switches.h"

constinit thread_local sigjmp_buf sveFaultJB = {};
constinit thread_local volatile int SVEFaultRegion;

namespace {

constexpr int handler_flags = SA_SIGINFO | SA_RESTART | SA_NODEFER;
static_assert(handler_flags == 0x50000004);

// Set when the probe of this thread has faulted.
TAVOK_SIGNAL_SAFE_TLS constinit thread_local volatile bool access_violation = false;

void install(struct sigaction action) {
  action.sa_flags = handler_flags;
  sigemptyset(&action.sa_mask);
  sigaction(SIGSEGV, &action, nullptr);
  sigaction(SIGBUS, &action, nullptr);
}

// Lets the kernel read the byte: sigprocmask looks at its set before it finds that `how` is none of
// the known ones, and changes nothing. The set is the aligned doubleword around the byte. At 0 it
// would be no set at all, and nothing is ever mapped there.
bool kernel_can_read(volatile char* address) {
  constexpr int no_such_how = -1;
  constexpr uintptr_t set_bytes = 8;
  const uintptr_t set = host::without_tag(reinterpret_cast<uintptr_t>(address)) & ~(set_bytes - 1);
  if (set == 0)
    return false;
  const int saved_errno = errno;
  const bool readable =
      syscall(SYS_rt_sigprocmask, no_such_how, set, nullptr, set_bytes) == 0 || errno != EFAULT;
  errno = saved_errno;
  return readable;
}

bool is_in_force(int signal) {
  struct sigaction action;
  sigaction(signal, nullptr, &action);
  return (action.sa_flags & SA_SIGINFO) != 0 && action.sa_sigaction == SVESigHandler;
}

void touch(uint64_t address) {
  [[maybe_unused]] const volatile uint8_t byte = *reinterpret_cast<volatile uint8_t*>(address);
}

}  // namespace

void install_fault_handler() {
  struct sigaction action = {};
  action.sa_sigaction = SVESigHandler;
  install(action);
}

void SVESigHandler(int signal, siginfo_t* info, void* context) {
  // A signal that was sent, and not raised by an access, has a code of 0 or below.
  if ((signal == SIGSEGV || sve_faults_as_hardware) && info->si_code > 0 &&
      host::step_over_probe(context)) {
    access_violation = true;
    return;
  }
  if (SVEFaultRegion != 0) {
    SVEFaultRegion = 0;
    siglongjmp(sveFaultJB, 1);
  }
  struct sigaction action = {};
  action.sa_handler = SIG_DFL;
  install(action);
  fprintf(stderr,
          "tavok's SVESigHandler caught signal %s from the process being emulated, passing it to "
          "the default signal handler.\n",
          signal == SIGSEGV ? "SIGSEGV" : "SIGBUS");
  fflush(stderr);
}

// The probe needs a handler that knows its load, and installing one for the span of the load would
// put every other thread's faults into the wrong hands. So SVESigHandler, which is there already,
// knows the load. Under a runtime that keeps the client's actions apart it always is, and asking
// for the action costs no system call. Where an embedding program has put its own handler in
// place, nothing may fault at all, and the kernel does the reading.
template <> bool addr_is_readable<char>(volatile char* address) {
  if (!is_in_force(SIGSEGV) || (sve_faults_as_hardware && !is_in_force(SIGBUS)))
    return kernel_can_read(address);
  access_violation = false;
  host::probe_byte(address);
  return !access_violation;
}

// The datum is touched at both ends inside the region and loaded outside of it, so that a handler
// that runs in the region always has a valid sveFaultJB, and the region is as short as can be.
template <class T> T guarded_read(uint64_t address, bool* fault) {
  if (fault != nullptr) {
    if (sigsetjmp(sveFaultJB, 1) != 0) {
      *fault = true;
      return 0;
    }
    SVEFaultRegion = 1;
    touch(address);
    touch(address + sizeof(T) - 1);
    SVEFaultRegion = 0;
  }
  T value;
  memcpy(&value, reinterpret_cast<const void*>(address), sizeof value);
  return value;
}

template uint8_t guarded_read(uint64_t, bool*);
template uint16_t guarded_read(uint64_t, bool*);
template uint32_t guarded_read(uint64_t, bool*);
template uint64_t guarded_read(uint64_t, bool*);
