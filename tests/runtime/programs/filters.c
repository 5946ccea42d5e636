// Seccomp: strict mode, and filters that allow what this program calls and nothing else. Checks
// itself, since not every simulator knows them.
#define _GNU_SOURCE
#include <errno.h>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <pthread.h>
#include <signal.h>
#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

static int failures;
static void check(const char* what, int right) {
  if (!right) {
    printf("wrong: %s\n", what);
    ++failures;
  }
}

#define LOAD(field) BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(struct seccomp_data, field))
#define ANSWER(number, answer)                                                                     \
  BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, number, 0, 1), BPF_STMT(BPF_RET | BPF_K, answer)
#define LENGTH(program) (sizeof(program) / sizeof *(program))

static long set_filter(struct sock_filter* program, size_t length, unsigned flags) {
  const struct sock_fprog given = {(unsigned short)length, program};
  prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
  return syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, flags, &given);
}

static int status_of(void (*body)(void)) {
  const pid_t child = fork();
  if (child == 0) {
    body();
    syscall(SYS_exit, 0);
  }
  int status = -1;
  waitpid(child, &status, 0);
  return status;
}

// Code that the runtime has not seen yet, and that it must forget and see again.
static int fresh_code(unsigned value) {
  static unsigned* code;
  if (code == NULL) {
    code = mmap(NULL, 4096, PROT_READ | PROT_WRITE | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  }
  code[0] = 0x52800000 | value << 5;  // MOV W0, #value; RET
  code[1] = 0xd65f03c0;
  __builtin___clear_cache((char*)code, (char*)(code + 2));
  return ((int (*)(void))(void*)code)() == (int)value;
}

static void strict(void) {
  fresh_code(1);
  prctl(PR_SET_SECCOMP, SECCOMP_MODE_STRICT);
  syscall(SYS_exit, fresh_code(2) && write(1, "", 0) == 0 ? 0 : 1);
}
static void strict_other(void) {
  prctl(PR_SET_SECCOMP, SECCOMP_MODE_STRICT);
  syscall(SYS_getppid);
}

// Whatever the runtime needs for these, the program does not call it.
static void few_calls(void) {
  struct sock_filter program[] = {LOAD(arch),
                                  BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, AUDIT_ARCH_AARCH64, 1, 0),
                                  BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_KILL_PROCESS),
                                  LOAD(nr),
                                  ANSWER(SYS_write, SECCOMP_RET_ALLOW),
                                  ANSWER(SYS_exit, SECCOMP_RET_ALLOW),
                                  ANSWER(SYS_getppid, SECCOMP_RET_ERRNO | 77),
                                  BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_KILL_PROCESS)};
  fresh_code(1);
  long result = set_filter(program, LENGTH(program), 0);
  for (unsigned i = 0; i < 50; ++i) {
    result += !fresh_code(i);
  }
  syscall(SYS_exit, result == 0 && syscall(SYS_getppid) == -1 && errno == 77 ? 0 : 1);
}
static void killed(void) {
  struct sock_filter program[] = {LOAD(nr), ANSWER(SYS_getppid, SECCOMP_RET_KILL_PROCESS),
                                  BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW)};
  set_filter(program, LENGTH(program), 0);
  syscall(SYS_getppid);
}

static siginfo_t trapped;
static void trap(int signal, siginfo_t* info, void* context) {
  (void)signal;
  (void)context;
  trapped = *info;
}

static int exits_with(int status) {
  const pid_t child = fork();
  if (child == 0) {
    _exit(status);
  }
  int ended = -1;
  return child > 0 && waitpid(child, &ended, 0) == child ? WEXITSTATUS(ended) : -errno;
}

// By arguments, with two filters, over a fork; and calls that the runtime does not pass on.
static void answers(void) {
  struct sock_filter refuse[] = {LOAD(nr),
                                 ANSWER(SYS_getppid, SECCOMP_RET_TRAP | 5),
                                 BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_getpriority, 0, 6),
                                 LOAD(args[1]),
                                 BPF_STMT(BPF_MISC | BPF_TAX, 0),
                                 BPF_STMT(BPF_LD | BPF_IMM, 40),
                                 BPF_STMT(BPF_ALU | BPF_ADD | BPF_X, 0),
                                 BPF_STMT(BPF_ALU | BPF_OR | BPF_K, SECCOMP_RET_ERRNO),
                                 BPF_STMT(BPF_RET | BPF_A, 0),
                                 BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW)};
  struct sock_filter no_children[] = {LOAD(nr),
                                      ANSWER(SYS_getppid, SECCOMP_RET_ERRNO | 1),
                                      ANSWER(SYS_clone, SECCOMP_RET_ERRNO | EPERM),
                                      ANSWER(SYS_clone3, SECCOMP_RET_ERRNO | EPERM),
                                      ANSWER(SYS_brk, SECCOMP_RET_ERRNO | ENOMEM),
                                      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW)};
  struct sigaction action = {.sa_sigaction = trap, .sa_flags = SA_SIGINFO};
  sigaction(SIGSYS, &action, NULL);
  check("a filter", set_filter(refuse, LENGTH(refuse), 0) == 0);
  check("its mode", prctl(PR_GET_SECCOMP) == SECCOMP_MODE_FILTER);
  check("argument", syscall(SYS_getpriority, 0, 2) == -1 && errno == 42);
  check("child", exits_with(7) == 7);
  check("another filter", set_filter(no_children, LENGTH(no_children), 0) == 0);
  syscall(SYS_getppid);
  check("trap", trapped.si_signo == SIGSYS && trapped.si_code == 1 && trapped.si_errno == 5 &&
                    trapped.si_syscall == SYS_getppid && trapped.si_arch == AUDIT_ARCH_AARCH64 &&
                    trapped.si_call_addr != NULL);
  check("no child", exits_with(7) == -EPERM);
  check("no break", syscall(SYS_brk, 0) == -1 && errno == ENOMEM);
  syscall(SYS_exit, failures);
}

static void refusals(void) {
  struct sock_filter backwards[] = {BPF_STMT(BPF_JMP | BPF_JA, 5), BPF_STMT(BPF_RET | BPF_K, 0)};
  struct sock_filter endless[] = {LOAD(nr)};
  struct sock_filter odd[] = {BPF_STMT(BPF_LD | BPF_W | BPF_ABS, 2), BPF_STMT(BPF_RET | BPF_K, 0)};
  struct sock_filter bytes[] = {BPF_STMT(BPF_LD | BPF_B | BPF_ABS, 0),
                                BPF_STMT(BPF_RET | BPF_K, 0)};
  check("jump", set_filter(backwards, 2, 0) == -1 && errno == EINVAL);
  check("end", set_filter(endless, 1, 0) == -1 && errno == EINVAL);
  check("none", set_filter(endless, 0, 0) == -1 && errno == EINVAL);
  check("place", set_filter(odd, 2, 0) == -1 && errno == EINVAL);
  check("size", set_filter(bytes, 2, 0) == -1 && errno == EINVAL);
  check("address", set_filter((struct sock_filter*)8, 2, 0) == -1 && errno == EFAULT);
  const unsigned action = SECCOMP_RET_ERRNO, unknown = 0x12340000;
  check("known", syscall(SYS_seccomp, SECCOMP_GET_ACTION_AVAIL, 0, &action) == 0);
  check("unknown",
        syscall(SYS_seccomp, SECCOMP_GET_ACTION_AVAIL, 0, &unknown) == -1 && errno == EOPNOTSUPP);
}

static volatile int stage;
static void* other_thread(void* unused) {
  while (stage == 0) {
  }
  stage = syscall(SYS_getppid) == -1 && errno == 55 ? 2 : 3;
  return unused;
}

static void all_threads(void) {
  struct sock_filter program[] = {LOAD(nr), ANSWER(SYS_getppid, SECCOMP_RET_ERRNO | 55),
                                  BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW)};
  pthread_t thread;
  pthread_create(&thread, NULL, other_thread, NULL);
  check("all threads", set_filter(program, LENGTH(program), SECCOMP_FILTER_FLAG_TSYNC) == 0);
  stage = 1;
  pthread_join(thread, NULL);
  check("another thread", stage == 2);
  syscall(SYS_exit_group, failures);
}

int main(void) {
  check("strict", status_of(strict) == 0);
  check("strict and another call", WTERMSIG(status_of(strict_other)) == SIGKILL);
  check("few calls", status_of(few_calls) == 0);
  check("killed", WTERMSIG(status_of(killed)) == SIGSYS);
  check("answers", status_of(answers) == 0);
  check("threads", status_of(all_threads) == 0);
  refusals();
  printf("filters: %d failures\n", failures);
  return failures != 0;
}
