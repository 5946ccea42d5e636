// Handlers of all kinds: what they see, what they change, when they run.
#define _GNU_SOURCE
#include <errno.h>
#include <setjmp.h>
#include <signal.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/signalfd.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <time.h>
#include <ucontext.h>
#include <unistd.h>

#ifndef SEGV_MAPERR
#define SEGV_MAPERR 1
#endif

static void install(int signal, void (*handler)(int, siginfo_t*, void*), int flags) {
  struct sigaction action = {0};
  action.sa_sigaction = handler;
  action.sa_flags = SA_SIGINFO | flags;
  if (sigaction(signal, &action, NULL) != 0) {
    printf("sigaction failed\n");
  }
}

// ---- synchronous: the exact instruction, registers that can be changed --------------------------

extern char store_word[], trap_word[], undefined_word[], load_word[];
static const char* expected_pc;
static volatile int seen;

static void skip(int signal, siginfo_t* info, void* context) {
  ucontext_t* at = context;
  const int exact = (char*)at->uc_mcontext.pc == expected_pc;
  printf("signal %d, code %d, pc %s, x28 %#llx\n", signal, info->si_code, exact ? "exact" : "wrong",
         at->uc_mcontext.regs[28]);
  if (signal == SIGSEGV) {
    printf("address %p, in the context %#llx, x0 %#llx\n", info->si_addr,
           at->uc_mcontext.fault_address, at->uc_mcontext.regs[0]);
  }
  if (signal == SIGILL) {
    printf("address %s\n", (char*)info->si_addr == expected_pc ? "exact" : "wrong");
  }
  at->uc_mcontext.pc += 4;
  at->uc_mcontext.regs[28] = 0x2828;
  at->uc_mcontext.regs[1] = 0x11;
  ++seen;
}

__attribute__((noinline)) static void faulting(void) {
  register uint64_t x0 __asm__("x0") = 0x1230;
  register uint64_t x1 __asm__("x1") = 5;
  register uint64_t x2 __asm__("x2");
  expected_pc = store_word;
  __asm__ volatile("str x28, [sp, #-16]!\n mov x28, x0\n .global store_word\n"
                   "store_word: str x1, [x28, #8]\n mov x2, x28\n ldr x28, [sp], #16"
                   : "+r"(x0), "+r"(x1), "=r"(x2)::"memory");
  printf("after: x1 %#lx, x28 %#lx\n", (unsigned long)x1, (unsigned long)x2);
  expected_pc = load_word;
  __asm__ volatile("str x28, [sp, #-16]!\n mov x28, #40\n .global load_word\n"
                   "load_word: ldp x28, x2, [x28]\n mov x2, x28\n ldr x28, [sp], #16"
                   : "+r"(x0), "+r"(x1), "=r"(x2)::"memory");
  printf("after: x28 %#lx\n", (unsigned long)x2);
  expected_pc = undefined_word;
  __asm__ volatile(".global undefined_word\nundefined_word: udf #1" ::: "x0", "x1", "x28");
  expected_pc = trap_word;
  __asm__ volatile(".global trap_word\ntrap_word: brk #7" ::: "x0", "x1", "x28");
}

static void synchronous(void) {
  install(SIGSEGV, skip, 0);
  install(SIGILL, skip, 0);
  install(SIGTRAP, skip, 0);
  faulting();
  printf("seen %d\n", seen);
}

// A trap while a signal waits for its block's end: each of these instructions becomes several.
static volatile sig_atomic_t count, steps;
static void counter(int signal, siginfo_t* info, void* context);

static void step_over(int signal, siginfo_t* info, void* context) {
  (void)signal;
  (void)info;
  ((ucontext_t*)context)->uc_mcontext.pc += 4;
  ++steps;
}

static void traps_behind_signals(void) {
  install(SIGTRAP, step_over, 0);
  install(SIGILL, step_over, 0);
  install(SIGALRM, counter, 0);
  const struct itimerval fast = {{0, 1000}, {0, 1000}}, off = {{0, 0}, {0, 0}};
  int rounds = 0, left = 0;
  count = steps = 0;
  setitimer(ITIMER_REAL, &fast, NULL);
  for (; count < 200; ++rounds) {
    uint64_t sum;
    __asm__ volatile("str x28, [sp, #-16]!\n mov x28, #7\n"
                     ".rept 120\n add x28, x28, #1\n .endr\n brk #1\n"
                     ".rept 120\n add x28, x28, #1\n .endr\n udf #1\n"
                     "mov %0, x28\n ldr x28, [sp], #16"
                     : "=r"(sum)::"memory");
    left += sum != 247;
  }
  setitimer(ITIMER_REAL, &off, NULL);
  printf("traps behind signals: %d, wrong %d\n", steps == 2 * rounds, left);
}

// ---- leaving a handler by a jump ----------------------------------------------------------------

static sigjmp_buf out;

static void jump_out(int signal, siginfo_t* info, void* context) {
  (void)info;
  (void)context;
  siglongjmp(out, signal);
}

static void jumping(void) {
  install(SIGSEGV, jump_out, 0);
  install(SIGBUS, jump_out, SA_NODEFER);
  volatile int jumps = 0;
  for (int i = 0; i < 50; ++i) {
    if (sigsetjmp(out, 1) == 0) {
      if (i % 2 == 0) {
        *(volatile char*)(uintptr_t)(i + 1) = 1;
      } else {
        ((void (*)(void))(uintptr_t)0x1000)();
      }
    } else {
      ++jumps;
    }
  }
  printf("jumps %d\n", jumps);
}

// ---- asynchronous -------------------------------------------------------------------------------

static void counter(int signal, siginfo_t* info, void* context) {
  (void)signal;
  (void)info;
  (void)context;
  ++count;
}

__attribute__((noinline)) static unsigned long work(unsigned long seed, int rounds) {
  for (int i = 0; i < rounds; ++i) {
    seed = seed * 6364136223846793005u + 1442695040888963407u;
    seed ^= seed >> 17;
  }
  return seed;
}

static void timers(void) {
  install(SIGALRM, counter, SA_RESTART);
  const struct itimerval fast = {{0, 1000}, {0, 1000}};
  const struct itimerval off = {{0, 0}, {0, 0}};
  count = 0;
  setitimer(ITIMER_REAL, &fast, NULL);
  unsigned long sum = 0;
  while (count < 200) {
    sum += work(7, 1000) == work(7, 1000);
  }
  setitimer(ITIMER_REAL, &off, NULL);
  printf("timer: %d, work %s\n", count >= 200, sum > 0 ? "right" : "wrong");
  // A loop that never makes a call must be left as well.
  count = 0;
  setitimer(ITIMER_REAL, &fast, NULL);
  while (count < 5) {
  }
  setitimer(ITIMER_REAL, &off, NULL);
  printf("loop left\n");
}

static void interrupted_calls(void) {
  int ends[2];
  char byte;
  if (pipe(ends) != 0) {
    return;
  }
  install(SIGALRM, counter, 0);
  ualarm(20000, 20000);  // again: under load the first one may come before the call
  ssize_t got = read(ends[0], &byte, 1);
  printf("read without restart: %zd, %s\n", got, got < 0 && errno == EINTR ? "EINTR" : "other");
  ualarm(0, 0);
  install(SIGALRM, counter, SA_RESTART);
  const pid_t child = fork();
  if (child == 0) {
    usleep(100000);
    _exit(write(ends[1], "x", 1) != 1);
  }
  ualarm(20000, 0);
  got = read(ends[0], &byte, 1);
  printf("read with restart: %zd\n", got);
  waitpid(child, NULL, 0);
}

// ---- masks --------------------------------------------------------------------------------------

static void show_mask(int signal, siginfo_t* info, void* context) {
  (void)info;
  sigset_t now;
  sigprocmask(SIG_BLOCK, NULL, &now);
  printf("in handler of %d: usr1 %d usr2 %d term %d; interrupted usr2 %d\n", signal,
         sigismember(&now, SIGUSR1), sigismember(&now, SIGUSR2), sigismember(&now, SIGTERM),
         sigismember(&((ucontext_t*)context)->uc_sigmask, SIGUSR2));
}

static void masks(void) {
  struct sigaction action = {0};
  action.sa_sigaction = show_mask;
  action.sa_flags = SA_SIGINFO;
  sigaddset(&action.sa_mask, SIGTERM);
  sigaction(SIGUSR1, &action, NULL);
  action.sa_flags |= SA_NODEFER | SA_RESETHAND;
  sigaction(SIGUSR2, &action, NULL);
  raise(SIGUSR1);
  raise(SIGUSR2);
  sigaction(SIGUSR2, NULL, &action);
  printf("one-shot: %d\n", action.sa_handler == SIG_DFL);

  sigset_t set, old, pending;
  sigemptyset(&set);
  sigaddset(&set, SIGUSR1);
  sigaddset(&set, SIGSEGV);
  sigprocmask(SIG_BLOCK, &set, &old);
  raise(SIGUSR1);
  sigpending(&pending);
  printf("pending: %d\n", sigismember(&pending, SIGUSR1));
  sigprocmask(SIG_BLOCK, NULL, &set);
  printf("blocked: segv %d usr1 %d\n", sigismember(&set, SIGSEGV), sigismember(&set, SIGUSR1));
  sigset_t none;
  sigemptyset(&none);
  printf("sigsuspend: %d %d\n", sigsuspend(&none), errno == EINTR);
  sigprocmask(SIG_BLOCK, NULL, &set);
  printf("still blocked: usr1 %d\n", sigismember(&set, SIGUSR1));
  raise(SIGUSR1);
  sigemptyset(&set);
  sigaddset(&set, SIGUSR1);
  int which = 0;
  printf("sigwait: %d %d\n", sigwait(&set, &which), which);
  sigprocmask(SIG_SETMASK, &old, NULL);
}

// The kernel may not block SIGSEGV for the runtime; the application must not notice.
static void blocked_segv(void) {
  install(SIGSEGV, counter, 0);
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, SIGSEGV);
  sigprocmask(SIG_BLOCK, &set, NULL);
  count = 0;
  kill(getpid(), SIGSEGV);
  printf("blocked: %d\n", count);
  sigprocmask(SIG_UNBLOCK, &set, NULL);
  printf("unblocked: %d\n", count);
}

// ---- alternate stacks, nesting, values ----------------------------------------------------------

static char alternate[65536];
static void on_stack(int signal, siginfo_t* info, void* context) {
  (void)info;
  char here;
  stack_t stack;
  sigaltstack(NULL, &stack);
  printf("handler of %d: alternate %d, flags %d, in the context %d\n", signal,
         &here > alternate && &here < alternate + sizeof alternate, stack.ss_flags,
         ((ucontext_t*)context)->uc_stack.ss_flags);
}

static void stacks(void) {
  stack_t stack = {.ss_sp = alternate, .ss_size = sizeof alternate};
  stack_t old;
  printf("sigaltstack: %d, ", sigaltstack(&stack, &old));
  printf("before %d\n", old.ss_flags);
  install(SIGUSR1, on_stack, SA_ONSTACK);
  install(SIGUSR2, on_stack, 0);
  raise(SIGUSR1);
  raise(SIGUSR2);
  stack.ss_flags = SS_DISABLE;
  sigaltstack(&stack, NULL);
  raise(SIGUSR1);
}

enum { GUARDED = 16384, SMALLEST = 5120 };

// The bytes below the smallest stack stay as they are.
static void smallest_stack(void) {
  static char room[GUARDED + SMALLEST] __attribute__((aligned(16)));
  memset(room, 0x5a, GUARDED);
  stack_t stack = {.ss_sp = room + GUARDED, .ss_size = SMALLEST};
  sigaltstack(&stack, NULL);
  install(SIGUSR1, counter, SA_ONSTACK);
  count = 0;
  raise(SIGUSR1);
  int changed = 0;
  for (int i = 0; i < GUARDED; ++i) {
    changed += room[i] != 0x5a;
  }
  printf("smallest stack: %d, changed below it %d\n", count, changed);
}

static void overflow(volatile char* above) {
  volatile char page[4096];
  page[0] = *above;
  overflow(page);
}

static void stack_overflow(void) {
  stack_t stack = {.ss_sp = alternate, .ss_size = sizeof alternate};
  sigaltstack(&stack, NULL);
  install(SIGSEGV, jump_out, SA_ONSTACK);
  if (sigsetjmp(out, 1) == 0) {
    char first = 0;
    overflow(&first);
  }
  printf("overflow survived\n");
}

// A frame that does not fit its stack is a fault, which has a handler on another stack.
static void no_room(void) {
  char* const guarded =
      mmap(NULL, 131072, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  mprotect(guarded, 65536, PROT_NONE);
  install(SIGUSR1, counter, 0);
  count = 0;
  const long self = getpid();
  if (sigsetjmp(out, 1) == 0) {
    register long number __asm__("x8") = 129;  // kill
    register long process __asm__("x0") = self;
    register long signal __asm__("x1") = SIGUSR1;
    __asm__ volatile("mov x9, sp\n mov sp, %3\n svc #0\n mov sp, x9"
                     : "+r"(process)
                     : "r"(number), "r"(signal), "r"(guarded + 65536 + 1024)
                     : "x9", "memory");
    printf("no fault\n");
  }
  printf("no room: %d\n", count);
}

static volatile double kept;
static void clobber(int signal, siginfo_t* info, void* context) {
  (void)signal;
  (void)context;
  printf("value %d\n", info->si_value.sival_int);
  __asm__ volatile("movi v0.16b, #255\n movi v8.16b, #255\n movi v31.16b, #255\n mov x28, #1\n"
                   "cmp xzr, xzr\n fmov d9, #2.0" ::
                       : "v0", "v8", "v9", "v31", "x28", "cc");
  kept = 3;
}

static void registers_survive(void) {
  install(SIGRTMIN + 3, clobber, 0);
  union sigval value = {.sival_int = 12345};
  uint64_t x28, low, high;
  register uint64_t number __asm__("x8") = 138;  // rt_sigqueueinfo
  siginfo_t info = {0};
  info.si_signo = SIGRTMIN + 3;
  info.si_code = SI_QUEUE;
  info.si_pid = getpid();
  info.si_value = value;
  register uint64_t x0 __asm__("x0") = (uint64_t)getpid();
  register uint64_t x1 __asm__("x1") = (uint64_t)info.si_signo;
  register void* x2 __asm__("x2") = &info;
  __asm__ volatile("str x28, [sp, #-16]!\n mov x28, #0x5a5a\n dup v31.2d, x28\n cmp xzr, x28\n"
                   "svc #0\n mov %0, x28\n umov %1, v31.d[0]\n cset %2, ne\n ldr x28, [sp], #16"
                   : "=&r"(x28), "=&r"(low), "=&r"(high), "+r"(x0)
                   : "r"(number), "r"(x1), "r"(x2)
                   : "v31", "cc", "memory");
  printf("survived: x28 %#lx, v31 %#lx, ne %lu\n", (unsigned long)x28, (unsigned long)low,
         (unsigned long)high);
}

// ---- signals without a handler, and those of timers and other threads ---------------------------

static void waited_for(void) {
  sigset_t set, old;
  sigemptyset(&set);
  sigaddset(&set, SIGRTMIN + 1);
  sigaddset(&set, SIGRTMIN + 2);
  sigprocmask(SIG_BLOCK, &set, &old);
  for (int i = 0; i < 6; ++i) {
    const union sigval value = {.sival_int = 100 + i};
    sigqueue(getpid(), SIGRTMIN + 2 - i % 2, value);
  }
  const int fd = signalfd(-1, &set, SFD_CLOEXEC);
  struct signalfd_siginfo read_info;
  siginfo_t info;
  for (int i = 0; i < 3; ++i) {
    const ssize_t got = read(fd, &read_info, sizeof read_info);
    const int waited = sigwaitinfo(&set, &info);
    printf("read %d: %d %d; waited for %d: %d\n", got == sizeof read_info,
           (int)read_info.ssi_signo - SIGRTMIN, read_info.ssi_int, waited - SIGRTMIN,
           info.si_value.sival_int);
  }
  const struct timespec none = {0, 1000000};
  printf("nothing more: %d %d\n", sigtimedwait(&set, &info, &none), errno == EAGAIN);
  close(fd);
  sigprocmask(SIG_SETMASK, &old, NULL);
}

static volatile int nested_depth, deepest, raises_left;
static void nest(int signal, siginfo_t* info, void* context) {
  (void)info;
  (void)context;
  ++nested_depth;
  deepest = nested_depth > deepest ? nested_depth : deepest;
  if (raises_left-- > 0) {
    raise(signal);
  }
  --nested_depth;
}

static void nested(void) {
  raises_left = 20;
  install(SIGUSR2, nest, SA_NODEFER);
  raise(SIGUSR2);
  printf("nested: %d", deepest);
  deepest = 0;
  raises_left = 20;
  install(SIGUSR2, nest, 0);
  raise(SIGUSR2);
  printf(", deferred: %d\n", deepest);
}

static void value_of_timer(int signal, siginfo_t* info, void* context) {
  (void)signal;
  (void)context;
  count = info->si_code == SI_TIMER ? info->si_value.sival_int : -1;
}

static void timer_with_value(void) {
  struct sigevent event = {.sigev_notify = SIGEV_SIGNAL, .sigev_signo = SIGRTMIN + 4};
  event.sigev_value.sival_int = 4711;
  timer_t timer;
  install(SIGRTMIN + 4, value_of_timer, 0);
  count = 0;
  const struct itimerspec soon = {{0, 0}, {0, 1000000}};
  printf("timer: %d", timer_create(CLOCK_MONOTONIC, &event, &timer));
  timer_settime(timer, 0, &soon, NULL);
  while (count == 0) {
  }
  printf(" %d\n", (int)count);
  timer_delete(timer);
}

int main(void) {
  setvbuf(stdout, NULL, _IONBF, 0);
  synchronous();
  traps_behind_signals();
  jumping();
  timers();
  interrupted_calls();
  masks();
  blocked_segv();
  stacks();
  smallest_stack();
  stack_overflow();
  no_room();
  registers_survive();
  waited_for();
  nested();
  timer_with_value();
  signal(SIGUSR1, SIG_IGN);
  printf("ignored: %d\n", raise(SIGUSR1));
  return 0;
}
