// Runs an SVE word that nobody emulates: it must end the program by SIGILL, or, with the argument
// "handle", reach a handler with the word's own address. With "child" a child does so first, and
// the program dies of the same signal.
#include <signal.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <sys/wait.h>
#include <ucontext.h>
#include <unistd.h>

extern const char unknown_word[];
int run_unknown_word(void);

static void handle(int number, siginfo_t* info, void* context) {
  const ucontext_t* const interrupted = context;
  printf("signal %d, address %s, pc %s, x0 %llu\n", number,
         info->si_addr == unknown_word ? "right" : "wrong",
         interrupted->uc_mcontext.pc == (uintptr_t)unknown_word ? "right" : "wrong",
         (unsigned long long)interrupted->uc_mcontext.regs[0]);
  fflush(stdout);
  _exit(7);
}

int main(int argc, char** argv) {
  if (argc > 1 && strcmp(argv[1], "child") == 0) {
    int status;
    const pid_t child = fork();
    if (child == 0)
      run_unknown_word();
    waitpid(child, &status, 0);
    if (!WIFSIGNALED(status))
      return 1;
    raise(WTERMSIG(status));
  }
  if (argc > 1 && strcmp(argv[1], "handle") == 0) {
    struct sigaction action;
    memset(&action, 0, sizeof action);
    action.sa_sigaction = handle;
    action.sa_flags = SA_SIGINFO;
    sigaction(SIGILL, &action, NULL);
  }
  printf("not reached: %d\n", run_unknown_word());
  return 0;
}
