// What a kernel tells of faults, and the calls beside mmap that change code. Checks itself, since
// simulators tell other things.
#define _GNU_SOURCE
#include <errno.h>
#include <pthread.h>
#include <setjmp.h>
#include <signal.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <sys/auxv.h>
#include <sys/mman.h>
#include <sys/shm.h>
#include <sys/syscall.h>
#include <time.h>
#include <ucontext.h>
#include <unistd.h>

#ifndef SEGV_MAPERR
#define SEGV_MAPERR 1
#define SEGV_ACCERR 2
#define BUS_ADRALN 1
#endif
enum { EXPOSE_TAG = 0x800, UNSUPPORTED = 0x400, SSBS = 1 << 12, PAGE = 4096 };

static int failures;
static void check(const char* what, int right) {
  if (!right) {
    printf("wrong: %s\n", what);
    ++failures;
  }
}

// ---- faults -------------------------------------------------------------------------------------

static sigjmp_buf out;
static siginfo_t seen;
static unsigned long long seen_address;
static uint64_t seen_class;  // of the syndrome, 0: none

static uint64_t class_in(const mcontext_t* machine) {
  const unsigned char* at = machine->__reserved;
  uint32_t head[2];
  uint64_t syndrome;
  for (memcpy(head, at, sizeof head); head[0] != 0; memcpy(head, at, sizeof head)) {
    if (head[0] == 0x45535201) {
      memcpy(&syndrome, at + sizeof head, sizeof syndrome);
      return syndrome >> 26;
    }
    at += head[1];
  }
  return 0;
}

static void note(int signal, siginfo_t* info, void* context) {
  const mcontext_t* machine = &((ucontext_t*)context)->uc_mcontext;
  (void)signal;
  seen = *info;
  seen_address = machine->fault_address;
  seen_class = class_in(machine);
  siglongjmp(out, 1);
}

static void install(int flags) {
  struct sigaction action = {.sa_sigaction = note, .sa_flags = SA_SIGINFO | SA_ONSTACK | flags};
  sigaction(SIGSEGV, &action, NULL);
  sigaction(SIGBUS, &action, NULL);
}

static int fetch_gives(const char* at, int signal, int code, uint64_t wanted_class) {
  if (sigsetjmp(out, 1) == 0) {
    ((void (*)(void))(uintptr_t)at)();
  }
  return seen.si_signo == signal && seen.si_code == code && seen.si_addr == at &&
         seen_class == wanted_class;
}

static void fetches(void) {
  enum { FETCH = 0x20, ALIGNMENT = 0x22 };
  char* const none = mmap(NULL, PAGE, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  install(0);
  check("fetch, no access", fetch_gives(none, SIGSEGV, SEGV_ACCERR, FETCH));
  check("fetch, nothing there", fetch_gives((char*)0x123454320, SIGSEGV, SEGV_MAPERR, FETCH));
  check("fetch, unaligned", fetch_gives((char*)fetches + 2, SIGBUS, BUS_ADRALN, ALIGNMENT));
}

static int simulated(void) { return syscall(SYS_ptrace, -1, 0, 0, 0) == -1 && errno == ENOSYS; }

static void flags(void) {
  struct sigaction action;
  install(EXPOSE_TAG | UNSUPPORTED);
  sigaction(SIGSEGV, NULL, &action);
  check("flags", (action.sa_flags & EXPOSE_TAG) != 0 && (action.sa_flags & UNSUPPORTED) == 0);
  const uint64_t address = 0x12340000, tag = (uint64_t)0x5a << 56;
  for (int exposed = 0; exposed < 2; ++exposed) {
    install(exposed ? EXPOSE_TAG : 0);
    if (sigsetjmp(out, 1) == 0) {
      *(volatile char*)(address | tag) = 1;
    }
    const uint64_t got = (uint64_t)seen.si_addr;
    check("tag", got == (exposed && !simulated() ? address | tag : address));
    check("untagged", seen_address == address);
  }
}

static int recurse(volatile char* above) {
  volatile char frame[512];
  frame[0] = *above;
  return recurse(frame) + frame[0];
}

static void overflow(void) {
  static char alternate[65536];
  const stack_t stack = {.ss_sp = alternate, .ss_size = sizeof alternate};
  sigaltstack(&stack, NULL);
  install(0);
  char first = 0;
  if (sigsetjmp(out, 1) == 0) {
    recurse(&first);
  }
  check("overflow", seen.si_code == SEGV_MAPERR && (char*)seen.si_addr < &first);
}

// ---- blocked signals ----------------------------------------------------------------------------

static void* send_later(void* to) {
  usleep(50000);
  pthread_kill(*(pthread_t*)to, SIGBUS);
  return NULL;
}

static void blocked(void) {
  sigset_t set, pending;
  siginfo_t info;
  pthread_t thread, self = pthread_self();
  sigemptyset(&set);
  sigaddset(&set, SIGSEGV);
  sigaddset(&set, SIGBUS);
  sigprocmask(SIG_BLOCK, &set, NULL);
  raise(SIGSEGV);
  sigpending(&pending);
  check("pending", sigismember(&pending, SIGSEGV) && !sigismember(&pending, SIGBUS));
  check("waited for", sigwaitinfo(&set, &info) == SIGSEGV && info.si_signo == SIGSEGV);
  sigpending(&pending);
  check("taken", !sigismember(&pending, SIGSEGV));
  const struct timespec none = {0, 1000000}, long_time = {20, 0};
  check("no more", sigtimedwait(&set, NULL, &none) == -1 && errno == EAGAIN);
  pthread_create(&thread, NULL, send_later, &self);
  check("waited for another", sigtimedwait(&set, NULL, &long_time) == SIGBUS);
  pthread_join(thread, NULL);
  sigprocmask(SIG_UNBLOCK, &set, NULL);
}

// ---- the processor's modes ----------------------------------------------------------------------

static volatile unsigned long long state_in_handler;
static void change_mode(int signal, siginfo_t* info, void* context) {
  (void)signal;
  (void)info;
  state_in_handler = ((ucontext_t*)context)->uc_mcontext.pstate;
  ((ucontext_t*)context)->uc_mcontext.pstate &= ~(uint64_t)SSBS;
}

static void modes(void) {
  const struct sigaction action = {.sa_sigaction = change_mode, .sa_flags = SA_SIGINFO};
  sigaction(SIGUSR1, &action, NULL);
  if ((getauxval(AT_HWCAP) & 1U << 28) == 0 || simulated()) {
    return;
  }
  uint64_t mode = SSBS;
  __asm__ volatile("msr s3_3_c4_c2_6, %0" ::"r"(mode));
  raise(SIGUSR1);
  __asm__ volatile("mrs %0, s3_3_c4_c2_6" : "=r"(mode));
  check("mode in a frame", (state_in_handler & SSBS) != 0);
  check("mode from a frame", mode == 0);
}

// ---- code ---------------------------------------------------------------------------------------

static void put(void* at, unsigned value) {
  const uint32_t code[] = {0x52800000 | value << 5, 0xd65f03c0};  // MOV W0, #value; RET
  memcpy(at, code, sizeof code);
  __builtin___clear_cache(at, (char*)at + sizeof code);
}
static int call(void* at) { return ((int (*)(void))at)(); }

static void shared_code(void) {
  const int id = shmget(IPC_PRIVATE, PAGE, IPC_CREAT | 0700);
  char* const at = shmat(id, NULL, SHM_EXEC);
  char* const data = shmat(id, NULL, 0);
  shmctl(id, IPC_RMID, NULL);
  put(at, 17);
  check("shared code", call(at) == 17);
  install(0);
  if (sigsetjmp(out, 1) == 0) {
    call(data);
  }
  check("shared data", seen.si_signo == SIGSEGV && seen.si_addr == data);
  check("given back", shmdt(at) == 0);
  if (sigsetjmp(out, 1) == 0) {
    call(at);
  }
  check("code given back", seen.si_addr == at && seen.si_code == SEGV_MAPERR);
}

static void forgotten_code(void) {
  char page[PAGE] = {0};
  const int file = (int)syscall(SYS_memfd_create, "code", 0);
  put(page, 1);
  check("file", write(file, page, sizeof page) == sizeof page);
  char* const at = mmap(NULL, PAGE, PROT_READ | PROT_WRITE | PROT_EXEC, MAP_PRIVATE, file, 0);
  int right = call(at) == 1;
  for (unsigned i = 2; i < 10; ++i) {
    put(at, i);
    right &= call(at) == (int)i;
    madvise(at, PAGE, MADV_DONTNEED);
    right &= call(at) == 1;
  }
  check("forgotten code", right);
}

int main(void) {
  setvbuf(stdout, NULL, _IONBF, 0);
  fetches();
  flags();
  overflow();
  blocked();
  modes();
  shared_code();
  forgotten_code();
  printf("kernel: %d failures\n", failures);
  return failures != 0;
}
