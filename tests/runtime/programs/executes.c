// A chain of execs: by path with another name, by a script, by a descriptor, as a child.
#define _GNU_SOURCE
#include <errno.h>
#include <fcntl.h>
#include <libgen.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <setjmp.h>
#include <signal.h>
#include <spawn.h>
#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/auxv.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

static int write_script(const char* path, const char* program) {
  FILE* file = fopen(path, "w");
  if (file == NULL) {
    return 0;
  }
  fprintf(file, "#! %s  third \nnot read\n", program);
  return fclose(file) == 0 && chmod(path, 0755) == 0;
}

static int inherited(int signal) {
  struct sigaction action;
  sigaction(signal, NULL, &action);
  return action.sa_handler == SIG_IGN;
}

static int same_file(const char* one, const char* other) {
  struct stat first, second;
  return stat(one, &first) == 0 && stat(other, &second) == 0 && first.st_ino == second.st_ino;
}

// ---- ways by which a program is hard to find ----------------------------------------------------

static sigjmp_buf out;
static void leave(int signal) { siglongjmp(out, signal); }

// A simulator has descriptors of its own, and its own way with flags and with SIGSEGV.
static int simulated(void) { return getenv("QEMU_CPU") != NULL; }

// Whether an SVE instruction is one: 1 with the launcher alone.
static int emulated(void) {
  register long x0 __asm__("x0") = 0;
  signal(SIGILL, leave);
  if (sigsetjmp(out, 1) == 0) {
    __asm__ volatile(".inst 0x04bf5020" : "+r"(x0));  // RDVL X0, #1
  }
  return x0 == 16;
}

// The program that each way leads to: whether it is what it should be.
static int arrive(int argc, char** argv, const char* way) {
  sigset_t blocked, pending;
  sigprocmask(SIG_BLOCK, NULL, &blocked);
  sigpending(&pending);
  const int wanted = strcmp(way, "blocked") == 0;
  errno = 0;
  const int filtered = syscall(SYS_getppid) == -1 && errno == 99;
  const int right =
      argc == 1 && filtered == (strcmp(way, "filtered") == 0) &&
      strcmp(argv[0], strcmp(way, "wordless") == 0 ? "" : way) == 0 && emulated() &&
      (simulated() || sigismember(&blocked, SIGSEGV) == wanted) &&
      sigismember(&pending, SIGUSR1) == wanted &&
      (strcmp(way, "full") == 0 || simulated() || access("/proc/self/fd/3", F_OK) < 0);
  printf("%s: %s\n", way, right ? "right" : "wrong");
  fflush(stdout);
  if (strcmp(way, "root") == 0) {
    setenv("WAY", "root again", 1);
    execl("/program", "root again", NULL);
  }
  return !right;
}

static int copy(const char* from, int to) {
  static char buffer[65536];
  const int file = open(from, O_RDONLY | O_CLOEXEC);
  for (ssize_t got; (got = read(file, buffer, sizeof buffer)) > 0;) {
    if (write(to, buffer, (size_t)got) != got) {
      return -1;
    }
  }
  close(file);
  fchmod(to, 0755);
  return to;
}

static const char* self_path;

static int install(const char* path) {
  const int file = copy(self_path, open(path, O_WRONLY | O_CREAT | O_TRUNC, 0755));
  return file < 0 ? -1 : close(file);
}

static void by_memory(void) {
  fexecve(copy(self_path, (int)syscall(SYS_memfd_create, "memory", MFD_CLOEXEC)),
          (char*[]){"memory", NULL}, environ);
}
static int deleted(void) {
  install("gone");
  const int file = open("gone", O_PATH | O_CLOEXEC);
  unlink("gone");
  return file;
}
static void by_nothing(void) {
  syscall(SYS_execveat, deleted(), "", (char*[]){"deleted", NULL}, environ, AT_EMPTY_PATH);
}
static void by_link(void) {
  char link[64];
  snprintf(link, sizeof link, "/proc/self/fd/%d", deleted());
  execl(link, "link", NULL);
}
static void without_descriptors(void) {
  const struct rlimit few = {20, 30};
  setrlimit(RLIMIT_NOFILE, &few);
  int last = 0;
  for (int next; (next = dup(1)) >= 0;) {
    last = next;
  }
  fcntl(last, F_SETFD, FD_CLOEXEC);  // an ELF interpreter needs one
  execl(self_path, "full", NULL);
}
static void without_words(void) { execve(self_path, (char*[]){NULL}, environ); }
static void by_place(void) {
  install("program");
  const int place = open(".", O_PATH | O_CLOEXEC);
  errno = 0;
  symlink("program", "symbolic");
  syscall(SYS_execveat, place, "symbolic", (char*[]){"no", NULL}, environ, AT_SYMLINK_NOFOLLOW);
  const int not_followed = errno == ELOOP;
  syscall(SYS_execveat, place, "", (char*[]){"no", NULL}, environ, 0);
  const int nothing = errno == ENOENT;
  syscall(SYS_execveat, place, "program", (char*[]){"no", NULL}, environ, 1);
  if (!not_followed || !nothing || (errno != EINVAL && !simulated())) {
    _exit(2);
  }
  syscall(SYS_execveat, place, "symbolic", (char*[]){"place", NULL}, environ, 0);
}
static void with_blocked(void) {
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, SIGSEGV);
  sigaddset(&set, SIGUSR1);
  sigprocmask(SIG_BLOCK, &set, NULL);
  raise(SIGUSR1);
  execl(self_path, "blocked", NULL);
}
static void in_little_memory(void) {
  const struct rlimit little = {64 << 20, 64 << 20};
  setrlimit(RLIMIT_AS, &little);
  execl(self_path, "little", NULL);
}
static void with_filter(void) {
  struct sock_filter program[] = {
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(struct seccomp_data, nr)),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_getppid, 0, 1),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | 99),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW)};
  const struct sock_fprog given = {sizeof program / sizeof *program, program};
  prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
  prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &given);
  execl(self_path, "filtered", NULL);
}
// A simulator is not to be found there, nor the interpreter of a dynamic program.
static void in_chroot(void) {
  if (simulated() || getauxval(AT_BASE) != 0 || mkdir("root", 0755) != 0 ||
      mkdir("root/dev", 0755) != 0 || install("root/program") != 0 || chroot("root") != 0 ||
      chdir("/") != 0) {
    printf("chroot: none\n");
    fflush(stdout);
    _exit(0);
  }
  execl("/program", "root", NULL);
  printf("chroot: %d\n", errno);
}

static int all_ways(void) {
  static const struct {
    const char* name;
    void (*execute)(void);
  } ways[] = {{"memory", by_memory},       {"deleted", by_nothing},
              {"link", by_link},           {"full", without_descriptors},
              {"wordless", without_words}, {"place", by_place},
              {"blocked", with_blocked},   {"little", in_little_memory},
              {"filtered", with_filter},   {"root", in_chroot}};
  static const char* const left[] = {"program", "symbolic", "root/program"};
  char folder[] = "/tmp/executes.XXXXXX";
  closefrom(3);  // what the test's own surroundings left open
  int failures = mkdtemp(folder) == NULL || chdir(folder) != 0;
  for (size_t i = 0; i < sizeof ways / sizeof *ways; ++i) {
    setenv("WAY", ways[i].name, 1);
    const pid_t child = fork();
    if (child == 0) {
      ways[i].execute();
      _exit(1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    if (status != 0) {
      printf("%s: status %#x\n", ways[i].name, status);
      ++failures;
    }
  }
  for (size_t i = 0; i < sizeof left / sizeof *left; ++i) {
    unlink(left[i]);
  }
  rmdir("root/dev");
  rmdir("root");
  rmdir(folder);
  printf("ways: %d failures\n", failures);
  return failures;
}

int main(int argc, char** argv) {
  if (getenv("WAY") != NULL) {
    return arrive(argc, argv, getenv("WAY"));
  }
  char self[4096];
  const ssize_t length = readlink("/proc/self/exe", self, sizeof self - 1);
  self[length > 0 ? length : 0] = 0;
  if (argc > 1 && strcmp(argv[1], "ways") == 0) {
    self_path = self;
    return all_ways();
  }
  printf("%s:", basename(argv[0]));
  for (int i = 1; i < argc; ++i) {
    printf(" %s", basename(argv[i]));
  }
  printf(", exe %s, variable %s, ignored %d %d\n", basename(self), getenv("VARIABLE"),
         inherited(SIGUSR1), inherited(SIGSEGV));
  fflush(stdout);
  const char* step = argc > 1 ? argv[1] : "first";
  if (strcmp(step, "first") == 0) {
    setenv("VARIABLE", "set", 1);
    signal(SIGUSR1, SIG_IGN);
    signal(SIGSEGV, SIG_IGN);
    snprintf(self, sizeof self, "/proc/%d/exe", (int)getpid());
    execl(self, "renamed", "second", "two words", NULL);
  } else if (strcmp(step, "second") == 0) {
    char script[32];
    snprintf(script, sizeof script, "./script-%d", (int)getpid());
    if (chdir("/tmp") == 0 && write_script(script, self)) {
      execl(script, "script", "argument", NULL);
    }
  } else if (strcmp(step, "third") == 0) {
    unlink(argv[2]);
    char* const arguments[] = {argv[0], "fourth", NULL};
    fexecve(open(self, O_RDONLY | O_CLOEXEC), arguments, environ);
  } else if (strcmp(step, "fourth") == 0) {
    char* const arguments[] = {"child", "fifth", NULL};
    pid_t child;
    int status = -1;
    if (posix_spawn(&child, self, NULL, NULL, arguments, environ) == 0) {
      waitpid(child, &status, 0);
    }
    printf("child: %#x\n", status);
    return 40;
  } else if (strcmp(step, "fifth") == 0) {
    return same_file("/proc/self/exe", self) ? 41 : 42;
  }
  perror("exec");
  return 1;
}
