// hello [thread]: the words, or whether a thread can be made.
#include <pthread.h>
#include <stdio.h>
#include <string.h>

static void* body(void* argument) { return argument; }

int main(int argc, char** argv) {
  printf("hello, %d arguments\n", argc - 1);
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
