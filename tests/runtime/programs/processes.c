// Children of all kinds and how they end.
#define _GNU_SOURCE
#include <errno.h>
#include <sched.h>
#include <signal.h>
#include <spawn.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

static int ended(pid_t child) {
  int status = -1;
  return waitpid(child, &status, 0) == child ? status : -2;
}

static void forked(void) {
  int pipe_ends[2];
  if (pipe(pipe_ends) != 0) {
    exit(1);
  }
  const pid_t child = fork();
  if (child == 0) {
    const pid_t ids[] = {getpid(), getppid(), (pid_t)syscall(SYS_gettid)};
    const ssize_t written = write(pipe_ends[1], ids, sizeof ids);
    exit(written == sizeof ids ? 5 : 6);
  }
  pid_t ids[3];
  const ssize_t got = read(pipe_ends[0], ids, sizeof ids);
  printf("ids: %d %d %d %d\n", got == sizeof ids, ids[0] == child, ids[1] == getpid(),
         ids[2] == child);
  printf("fork: %#x\n", ended(child));
}

static void killed(void) {
  const pid_t child = fork();
  if (child == 0) {
    *(volatile int*)0 = 0;
  }
  printf("killed: %#x\n", ended(child) & 0x7f);
}

static void nested(void) {
  const pid_t child = fork();
  if (child == 0) {
    const pid_t grandchild = fork();
    if (grandchild == 0) {
      _exit(3);
    }
    _exit(WEXITSTATUS(ended(grandchild)) + 1);
  }
  printf("nested: %#x\n", ended(child));
}

static void vforked(void) {
  volatile int kept = 1;
  const pid_t child = vfork();
  if (child == 0) {
    _exit(9);
  }
  printf("vfork: %#x, kept %d\n", ended(child), kept);
}

static void spawned(void) {
  char* const missing[] = {"missing", NULL};
  pid_t child;
  const int error = posix_spawn(&child, "/nonexistent/missing", NULL, NULL, missing, environ);
  // Where vfork is a fork the error shows as the child's status.
  printf("spawn of nothing: %d\n", error == ENOENT || (error == 0 && ended(child) == 127 << 8));
}

static int on_own_stack(void* argument) { return *(int*)argument + 1; }

static void cloned(void) {
  static char stack[65536] __attribute__((aligned(16)));
  int value = 20;
  const pid_t child = clone(on_own_stack, stack + sizeof stack, SIGCHLD, &value);
  printf("clone: %#x\n", ended(child));
}

// Files that cannot be executed, and of which the name alone says so to nobody.
static void odd_files(void) {
  static const unsigned char object[64] = {0x7f, 'E', 'L', 'F', 2, 1, 1, [16] = 1, [18] = 183};
  mkfifo("fifo", 0755);
  FILE* const file = fopen("object", "w");
  fwrite(object, 1, sizeof object, file);
  fclose(file);
  chmod("object", 0755);
  for (int i = 0; i < 2; ++i) {
    const pid_t child = fork();
    if (child == 0) {
      execl(i == 0 ? "./fifo" : "./object", "odd", NULL);
      _exit(errno == EACCES ? 1 : errno == ENOEXEC ? 2 : 3);
    }
    printf("odd file: %#x\n", ended(child));
  }
}

int main(void) {
  setvbuf(stdout, NULL, _IONBF, 0);
  forked();
  killed();
  nested();
  vforked();
  spawned();
  cloned();
  odd_files();
  printf("waiting: %d\n", waitpid(-1, NULL, 0) == -1 && errno == ECHILD);
  return 0;
}
