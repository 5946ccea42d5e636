// Threads in numbers, and the corners of their lives.
#define _GNU_SOURCE
#include <errno.h>
#include <pthread.h>
#include <sched.h>
#include <semaphore.h>
#include <signal.h>
#include <stdatomic.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

static __thread int own = 7;
static atomic_int sum;
static pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
static long guarded;

static void* add(void* argument) {
  own += (int)(long)argument;
  atomic_fetch_add(&sum, own);
  for (int i = 0; i < 100; ++i) {
    pthread_mutex_lock(&mutex);
    ++guarded;
    pthread_mutex_unlock(&mutex);
  }
  return (void*)(long)own;
}

static void many(void) {
  long total = 0;
  for (int round = 0; round < 5; ++round) {
    pthread_t threads[20];
    for (long i = 0; i < 20; ++i) {
      if (pthread_create(&threads[i], NULL, add, (void*)i) != 0) {
        printf("create failed\n");
      }
    }
    for (int i = 0; i < 20; ++i) {
      void* result;
      pthread_join(threads[i], &result);
      total += (long)result;
    }
  }
  printf("many: %ld %d %ld, own %d\n", total, sum, guarded, own);
}

static sem_t ready;
static void* detached(void* argument) {
  sem_post(argument);
  return NULL;
}

static void* endless(void* argument) {
  (void)argument;
  sem_post(&ready);
  for (;;) {
    usleep(1000);
  }
  return NULL;
}

static void* busy(void* argument) {
  (void)argument;
  pthread_setcanceltype(PTHREAD_CANCEL_ASYNCHRONOUS, NULL);
  sem_post(&ready);
  for (volatile long i = 0;; ++i) {
  }
  return NULL;
}

static void ends(void) {
  sem_init(&ready, 0, 0);
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
  pthread_t thread;
  for (int i = 0; i < 10; ++i) {
    pthread_create(&thread, &attributes, detached, &ready);
  }
  for (int i = 0; i < 10; ++i) {
    sem_wait(&ready);
  }
  void* (*const bodies[])(void*) = {endless, busy};
  for (int i = 0; i < 2; ++i) {
    pthread_create(&thread, NULL, bodies[i], NULL);
    sem_wait(&ready);
    pthread_cancel(thread);
    void* result;
    pthread_join(thread, &result);
    printf("cancelled: %d\n", result == PTHREAD_CANCELED);
  }
}

// ---- signals ------------------------------------------------------------------------------------

static atomic_int handled, stop;
static __thread int mine;
static void handler(int signal) {
  (void)signal;
  ++mine;
  atomic_fetch_add(&handled, 1);
}

static void* storm(void* argument) {
  unsigned long* state = argument;
  while (!stop) {
    for (int i = 0; i < 1000; ++i) {
      *state = *state * 6364136223846793005u + 1442695040888963407u;
    }
  }
  return (void*)(long)mine;
}

static void signals(void) {
  struct sigaction action = {0};
  action.sa_handler = handler;
  action.sa_flags = SA_RESTART;
  sigaction(SIGUSR1, &action, NULL);
  pthread_t threads[3];
  unsigned long states[3] = {1, 2, 3};
  for (int i = 0; i < 3; ++i) {
    pthread_create(&threads[i], NULL, storm, &states[i]);
  }
  for (int sent = 0; sent < 150; ++sent) {
    const int before = handled;
    pthread_kill(threads[sent % 3], SIGUSR1);
    while (handled == before) {
      sched_yield();
    }
  }
  stop = 1;
  long total = 0;
  for (int i = 0; i < 3; ++i) {
    void* result;
    pthread_join(threads[i], &result);
    total += (long)result;
  }
  printf("signals: %d handled, %ld in their threads\n", handled, total);
}

static void* forker(void* argument) {
  (void)argument;
  const pid_t child = fork();
  if (child == 0) {
    pthread_t thread;
    void* result = NULL;
    pthread_create(&thread, NULL, add, (void*)1000L);
    pthread_join(thread, &result);
    _exit((long)result == 1007 ? 33 : 1);
  }
  int status;
  waitpid(child, &status, 0);
  return (void*)(long)status;
}

static void fork_in_thread(void) {
  pthread_t thread;
  void* result;
  pthread_create(&thread, NULL, forker, NULL);
  pthread_join(thread, &result);
  printf("fork in a thread: %#lx\n", (long)result);
}

// Children that lend their memory from a process whose other thread begins threads all the time.
static void* begins_threads(void* argument) {
  while (!stop) {
    pthread_t thread;
    pthread_create(&thread, NULL, add, argument);
    pthread_join(thread, NULL);
  }
  return NULL;
}

static void spawn_beside_threads(void) {
  stop = 0;
  pthread_t thread;
  pthread_create(&thread, NULL, begins_threads, NULL);
  int right = 0;
  for (int i = 0; i < 15; ++i) {
    char* const arguments[] = {"none", NULL};
    const pid_t child = vfork();
    if (child == 0) {
      execv("./no-such-file", arguments);
      _exit(errno == ENOENT ? i : 99);
    }
    int status;
    waitpid(child, &status, 0);
    right += WEXITSTATUS(status) == i;
    usleep(3000);
  }
  stop = 1;
  pthread_join(thread, NULL);
  printf("children beside threads: %d\n", right);
}

// The C library changes the group in all threads, by a signal of its own.
static void* reads(void* argument) {
  char byte;
  return (void*)(long)read(*(int*)argument, &byte, 1);
}

static void change_group(void) {
  int ends[2];
  unsigned long state = 4;
  void *result, *got;
  pthread_t computes, waits;
  stop = 0;
  if (pipe(ends) != 0) {
    return;
  }
  pthread_create(&computes, NULL, storm, &state);
  pthread_create(&waits, NULL, reads, &ends[0]);
  usleep(2000);
  printf("group: %d", setgid(getgid()));
  got = (void*)write(ends[1], "x", 1);
  stop = 1;
  pthread_join(computes, &result);
  pthread_join(waits, &got);
  printf(" %ld\n", (long)got);
}

static void* last(void* argument) {
  pthread_join(*(pthread_t*)argument, NULL);
  printf("the main thread has ended\n");
  exit(21);
}

// What the process has mapped, and in how many mappings. What is resident would tell of the
// simulator, which keeps something of each thread.
static void count_memory(long* bytes, long* mappings) {
  FILE* const maps = fopen("/proc/self/maps", "r");
  char line[512];
  unsigned long begin, end;
  *bytes = *mappings = 0;
  while (fgets(line, sizeof line, maps) != NULL) {
    if (sscanf(line, "%lx-%lx", &begin, &end) == 2) {
      *bytes += (long)(end - begin);
      ++*mappings;
    }
  }
  fclose(maps);
}

static void one_by_one(void) {
  enum { WARM = 50, MOST_BYTES = 100 << 20, MOST_MAPPINGS = 50 };
  const char* const wanted = getenv("TAVOK_TEST_THREADS");
  const long count = wanted != NULL ? atol(wanted) : 500;
  long bytes[2], mappings[2];
  for (long i = 0; i < WARM + count; ++i) {
    if (i == WARM) {
      count_memory(&bytes[0], &mappings[0]);
    }
    pthread_t thread;
    void* result;
    if (pthread_create(&thread, NULL, add, (void*)i) != 0) {
      printf("create failed after %ld\n", i);
      return;
    }
    pthread_join(thread, &result);
  }
  count_memory(&bytes[1], &mappings[1]);
  printf("one by one: memory %s, mappings %s\n",
         bytes[1] - bytes[0] < MOST_BYTES ? "bounded" : "grows",
         mappings[1] - mappings[0] < MOST_MAPPINGS ? "bounded" : "grow");
}

int main(int argc, char** argv) {
  setvbuf(stdout, NULL, _IONBF, 0);
  if (argc > 1 && strcmp(argv[1], "one_by_one") == 0) {
    one_by_one();
    return 0;
  }
  many();
  ends();
  signals();
  fork_in_thread();
  spawn_beside_threads();
  change_group();
  if (argc > 1 && strcmp(argv[1], "main") == 0) {
    static pthread_t self;
    self = pthread_self();
    pthread_t thread;
    pthread_create(&thread, NULL, last, &self);
    pthread_exit(NULL);
  }
  // Others still run when the process ends.
  stop = 0;
  pthread_t thread;
  static unsigned long state = 9;
  pthread_create(&thread, NULL, storm, &state);
  return 12;
}
