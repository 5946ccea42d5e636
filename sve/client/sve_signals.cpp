#include "sve/client/sve_signals.h"

#include <cstdio>
#include <ucontext.h>

int SVELibInitialized;
thread_local sigjmp_buf sveFaultJB;
thread_local volatile int SVEFaultRegion;

namespace {

constexpr int handler_flags = SA_SIGINFO | SA_RESTART | SA_NODEFER;

}  // namespace

int SVEInitialize() {
  if (SVELibInitialized != 0)
    return SVELibInitialized;
  struct sigaction action = {};
  action.sa_sigaction = SVESigHandler;
  action.sa_flags = handler_flags;
  sigaction(SIGSEGV, &action, nullptr);
  sigaction(SIGBUS, &action, nullptr);
  SVELibInitialized = 1;
  return SVELibInitialized;
}

void SVESigHandler(int signal, siginfo_t*, void*) {
  if (SVEFaultRegion != 0) {
    SVEFaultRegion = 0;
    siglongjmp(sveFaultJB, 1);
  }
  struct sigaction action = {};
  action.sa_handler = SIG_DFL;
  action.sa_flags = handler_flags;
  sigaction(SIGSEGV, &action, nullptr);
  sigaction(SIGBUS, &action, nullptr);
  fprintf(stderr,
          "tavok's SVESigHandler caught signal %s from the process being emulated, passing it to "
          "the default signal handler.\n",
          signal == SIGSEGV ? "SIGSEGV" : "SIGBUS");
  fflush(stderr);
}
