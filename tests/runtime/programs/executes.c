// A chain of execs: by path with another name, by a script, by a descriptor, as a child.
#define _GNU_SOURCE
#include <fcntl.h>
#include <libgen.h>
#include <signal.h>
#include <spawn.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

static void write_script(const char* path, const char* program) {
  FILE* file = fopen(path, "w");
  fprintf(file, "#! %s  third \nnot read\n", program);
  fclose(file);
  chmod(path, 0755);
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

int main(int argc, char** argv) {
  char self[4096];
  const ssize_t length = readlink("/proc/self/exe", self, sizeof self - 1);
  self[length > 0 ? length : 0] = 0;
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
    write_script("script", self);
    execl("./script", "script", "argument", NULL);
  } else if (strcmp(step, "third") == 0) {
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
