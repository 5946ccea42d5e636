// Does one thing that a program's surroundings see: manners exit <status> | raise <signal> |
// fault | args <words> | environment <name> | name | copy | exit_of_many <status> | fork |
// close_last <status> | put_back <file> | reopen <file> | linger.
#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

static void print_words(int count, char** words) {
  printf("%d words", count);
  for (int i = 0; i < count; i++)
    printf(" [%s]", words[i]);
  printf("\n");
}

static int copy(void) {
  char buffer[1000];
  size_t total = 0, n;
  while ((n = fread(buffer, 1, sizeof buffer, stdin)) > 0) {
    fwrite(buffer, 1, n, stdout);
    total += n;
  }
  fprintf(stderr, "copied %zu bytes\n", total);
  return 0;
}

static pthread_barrier_t together;
static void* leave(void* status) {
  pthread_barrier_wait(&together);
  _exit(*(int*)status);
}

// Several threads end the process at once.
static int exit_of_many(int status) {
  enum { THREADS = 6 };
  pthread_barrier_init(&together, NULL, THREADS);
  pthread_t thread;
  for (int i = 0; i < THREADS; i++)
    pthread_create(&thread, NULL, leave, &status);
  pause();
  return 0;
}

// With another file as standard error: for a moment, or to the end.
static int write_elsewhere(const char* file, int back) {
  const int saved = dup(2);
  close(2);
  if (open(file, O_WRONLY | O_CREAT | O_TRUNC, 0666) != 2)
    return 1;
  if (write(2, "its own\n", 8) != 8)
    return 1;
  return back && dup2(saved, 2) != 2;
}

static int linger(void) {
  char byte;
  close(2);
  return (int)read(0, &byte, 1);
}

static void ignore(int signal) { (void)signal; }

// A signal comes behind it, as a profiler's may.
static int close_last(int status) {
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, SIGPROF);
  signal(SIGPROF, ignore);
  sigprocmask(SIG_BLOCK, &set, NULL);
  raise(SIGPROF);
  fclose(stdout);
  fclose(stderr);
  sigprocmask(SIG_UNBLOCK, &set, NULL);
  return status;
}

int main(int argc, char** argv) {
  const char* const what = argc > 1 ? argv[1] : "";
  const int number = argc > 2 ? atoi(argv[2]) : 0;
  if (strcmp(what, "exit") == 0)
    exit(number);
  if (strcmp(what, "exit_of_many") == 0)
    return exit_of_many(number);
  if (strcmp(what, "raise") == 0)
    return raise(number);
  if (strcmp(what, "fault") == 0)
    return *(volatile int*)(long)number;
  if (strcmp(what, "args") == 0)
    return print_words(argc - 2, argv + 2), 0;
  if (strcmp(what, "environment") == 0)
    return puts(getenv(argv[2])), 0;
  if (strcmp(what, "name") == 0) {
    char name[16];
    prctl(PR_GET_NAME, name);
    return puts(name), 0;
  }
  if (strcmp(what, "copy") == 0)
    return copy();
  if (strcmp(what, "fork") == 0)
    return fork() == 0 ? 0 : (wait(NULL), 0);
  if (strcmp(what, "close_last") == 0)
    return close_last(number);
  if (strcmp(what, "put_back") == 0 || strcmp(what, "reopen") == 0)
    return write_elsewhere(argv[2], strcmp(what, "put_back") == 0);
  if (strcmp(what, "linger") == 0)
    return linger();
  return 99;
}
