// Does one thing that a program's surroundings see: manners exit <status> | raise <signal> |
// fault | args <words> | environment <name> | name | copy | exit_of_many <status>.
#include <pthread.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/prctl.h>
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
  return 99;
}
