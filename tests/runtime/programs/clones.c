// clone3 by hand, which a C library uses in its own way only: the words with the thread's number
// are there before the thread runs, one is cleared when it ends; and a child without its parent's
// signal handlers. Checks itself, since the simulator has no clone3.
#define _GNU_SOURCE
#include <linux/futex.h>
#include <linux/sched.h>
#include <poll.h>
#include <pthread.h>
#include <sched.h>
#include <signal.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#ifndef CLONE_CLEAR_SIGHAND
#define CLONE_CLEAR_SIGHAND 0x100000000ULL
#endif

enum { STACK = 65536, NOT_YET = 0x7fffffff };

// In the child calls `body` and ends the thread with its result.
long clone3_call(const struct clone_args* arguments, size_t size, long (*body)(void*), void* of);
__asm__(".text\n.balign 4\nclone3_call:\n mov x10, x2\n mov x11, x3\n mov x8, #435\n svc #0\n"
        "cbz x0, 1f\n ret\n1: mov x29, #0\n mov x30, #0\n mov x0, x11\n blr x10\n mov x8, #93\n"
        "svc #0\n");

static int failures;
static void check(const char* what, int right) {
  if (!right) {
    printf("wrong: %s\n", what);
    ++failures;
  }
}

static struct {
  volatile int parent_word, child_word, seen_parent, seen_child, number;
  volatile uint64_t tls;
} shared;

// Runs without a thread-local storage of the C library's: system calls by hand.
static long thread_body(void* unused) {
  register long number __asm__("x8") = SYS_gettid;
  register long result __asm__("x0");
  shared.seen_parent = shared.parent_word;
  shared.seen_child = shared.child_word;
  __asm__ volatile("svc #0" : "=r"(result) : "r"(number) : "memory");
  shared.number = (int)result;
  uint64_t tls;
  __asm__ volatile("mrs %0, tpidr_el0" : "=r"(tls));
  shared.tls = tls;
  return unused != NULL;
}

static void thread(void) {
  static char block[64];
  shared.parent_word = shared.child_word = NOT_YET;
  const struct clone_args arguments = {
      .flags = CLONE_VM | CLONE_FS | CLONE_FILES | CLONE_SIGHAND | CLONE_THREAD | CLONE_SYSVSEM |
               CLONE_SETTLS | CLONE_PARENT_SETTID | CLONE_CHILD_SETTID | CLONE_CHILD_CLEARTID,
      .child_tid = (uintptr_t)&shared.child_word,
      .parent_tid = (uintptr_t)&shared.parent_word,
      .stack =
          (uintptr_t)mmap(NULL, STACK, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0),
      .stack_size = STACK,
      .tls = (uintptr_t)block,
  };
  const long id = clone3_call(&arguments, sizeof arguments, thread_body, NULL);
  check("clone3", id > 0);
  while (id > 0 && shared.child_word != 0) {
    const struct timespec second = {1, 0};
    const int word = shared.child_word;
    if (word != 0) {
      syscall(SYS_futex, &shared.child_word, FUTEX_WAIT, word, &second, NULL, 0);
    }
  }
  check("number", shared.number == id && shared.parent_word == id);
  check("words before the thread runs", shared.seen_parent == id && shared.seen_child == id);
  check("thread pointer", shared.tls == (uintptr_t)block);
}

static void handler(int signal) { (void)signal; }

static long child_body(void* unused) {
  (void)unused;
  struct sigaction one, two, three;
  sigaction(SIGUSR1, NULL, &one);
  sigaction(SIGUSR2, NULL, &two);
  sigaction(SIGSEGV, NULL, &three);
  return one.sa_handler == SIG_DFL && two.sa_handler == SIG_IGN && three.sa_handler == SIG_DFL ? 30
                                                                                               : 31;
}

static void child_without_handlers(uint64_t flags) {
  signal(SIGUSR1, handler);
  signal(SIGUSR2, SIG_IGN);
  signal(SIGSEGV, handler);
  int descriptor = -1;
  const struct clone_args arguments = {.flags = flags | CLONE_CLEAR_SIGHAND | CLONE_PIDFD,
                                       .pidfd = (uintptr_t)&descriptor,
                                       .exit_signal = SIGCHLD};
  const long child = clone3_call(&arguments, sizeof arguments, child_body, NULL);
  int status = -1;
  struct pollfd ended = {.fd = descriptor, .events = POLLIN};
  check("descriptor", descriptor >= 0 && poll(&ended, 1, 10000) == 1);
  close(descriptor);
  check("child", waitpid((pid_t)child, &status, 0) == child && status == 30 << 8);
  struct sigaction one;
  sigaction(SIGUSR1, NULL, &one);
  check("parent's handler", one.sa_handler == handler && raise(SIGUSR1) == 0);
}

// A signal to the process that a thread takes on its way out is not lost.
static volatile int taken;
static void take(int signal) {
  (void)signal;
  __atomic_fetch_add(&taken, 1, __ATOMIC_SEQ_CST);
}

static long ends_at_once(void* unused) { return unused != NULL; }

static void signals_to_ending_threads(void) {
  enum { SENT = 300 };
  static char stack[STACK] __attribute__((aligned(16)));
  signal(SIGRTMIN, take);
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, SIGRTMIN);
  for (int sent = 0; sent < SENT; ++sent) {
    volatile int alive = 1;
    const struct clone_args arguments = {
        .flags = CLONE_VM | CLONE_FS | CLONE_FILES | CLONE_SIGHAND | CLONE_THREAD | CLONE_SYSVSEM |
                 CLONE_CHILD_CLEARTID,
        .child_tid = (uintptr_t)&alive,
        .stack = (uintptr_t)stack,
        .stack_size = STACK,
    };
    sigprocmask(SIG_UNBLOCK, &set, NULL);
    clone3_call(&arguments, sizeof arguments, ends_at_once, NULL);
    // From here on only the thread can take it, and when it is gone this one does.
    sigprocmask(SIG_BLOCK, &set, NULL);
    kill(getpid(), SIGRTMIN);
    while (alive) {
      sched_yield();
    }
    sigprocmask(SIG_UNBLOCK, &set, NULL);
  }
  for (int i = 0; i < 1000 && taken < SENT; ++i) {
    usleep(1000);
  }
  check("signals to ending threads", taken == SENT);
}

// Children that borrow the memory, and are killed while the runtime builds, forgets, and follows
// their calls: the parent goes on.
static volatile pid_t* victim;

static void* kill_victims(void* unused) {
  for (unsigned random = 1;; random = random * 1103515245 + 12345) {
    const pid_t found = *victim;
    for (unsigned i = 0; found > 0 && i < random >> 16; ++i) {
      __asm__ volatile("");
    }
    if (found > 0) {
      *victim = 0;
      kill(found, SIGKILL);
    } else if (found < 0) {
      return unused;
    }
    sched_yield();
  }
}

static int rewritten(uint32_t* code, unsigned value) {
  code[0] = 0x52800000 | (value & 0xffff) << 5;  // MOV W0, #value; RET
  code[1] = 0xd65f03c0;
  __builtin___clear_cache((char*)code, (char*)(code + 2));
  return ((int (*)(void))(uintptr_t)code)() == (int)(value & 0xffff);
}

static void killed_in_the_runtime(void) {
  enum { CHILDREN = 150 };
  uint32_t* const code =
      mmap(NULL, 65536, PROT_READ | PROT_WRITE | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  victim = mmap(NULL, 4096, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  pthread_t killer;
  pthread_create(&killer, NULL, kill_victims, NULL);
  for (int i = 0; i < CHILDREN; ++i) {
    int status = 0;
    const pid_t child = vfork();
    if (child == 0) {
      *victim = getpid();
      for (unsigned value = 0;; ++value) {
        rewritten(code + value % 1000 * 16, value);
        sbrk(0);
      }
    }
    check("killed child", waitpid(child, &status, 0) == child && WTERMSIG(status) == SIGKILL);
    check("code behind it", rewritten(code + i, (unsigned)i));
  }
  *victim = -1;
  pthread_join(killer, NULL);
}

int main(void) {
  thread();
  child_without_handlers(0);
  child_without_handlers(CLONE_VM | CLONE_VFORK);
  signals_to_ending_threads();
  killed_in_the_runtime();
  printf("clones: %d failures\n", failures);
  return failures != 0;
}
