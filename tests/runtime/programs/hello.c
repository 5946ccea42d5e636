// hello [thread]: the words, or whether a thread can be made.
#include <pthread.h>
#include <stdio.h>
#include <string.h>

static void* body(void* argument) { return argument; }

// Programs that change their name write over all of them, as one piece of memory.
static int in_a_row(char** list, const char* behind) {
  int gaps = 0;
  for (; *list != NULL; ++list) {
    const char* next = list[1] != NULL ? list[1] : behind;
    gaps += next != NULL && *list + strlen(*list) + 1 != next;
  }
  return gaps == 0;
}

int main(int argc, char** argv, char** environment) {
  printf("hello, %d arguments\n", argc - 1);
  printf("in a row: %d %d\n", in_a_row(argv, environment[0]), in_a_row(environment, NULL));
  for (int i = 1; i < argc; ++i) {
    printf("%s\n", argv[i]);
  }
  if (argc > 1 && strcmp(argv[1], "thread") == 0) {
    pthread_t thread;
    const int error = pthread_create(&thread, NULL, body, NULL);
    printf("thread: %d\n", error == 0 ? pthread_join(thread, NULL) : error);
  }
  return 0;
}
