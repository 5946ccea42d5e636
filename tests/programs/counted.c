// Prints how many SVE instructions it executes, which the report must repeat exactly.
#include <pthread.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>

void counted_block(uint64_t n);
void counted_branches(uint64_t n);
void counted_while(uint64_t n);
void counted_calls(uint64_t n);
void counted_none(void);

enum { VECTOR_BYTES = 16, THREADS = 8 };

// Of six instructions on each thread.
static uint64_t rounds = 150;

static void* on_a_thread(void* unused) {
  counted_block(rounds);
  counted_calls(rounds);
  return unused;
}

int main(void) {
  const char* const wanted = getenv("TAVOK_TEST_ROUNDS");
  if (wanted != NULL)
    rounds = strtoull(wanted, NULL, 10);
  uint64_t expected = 0;
  counted_block(1000);
  expected += 1000 * 3;
  counted_branches(501);
  expected += 251 * 4 + 250 * 2;
  for (uint64_t n = 0; n < 200; n++) {
    counted_while(n);
    expected += 1 + 4 * ((n + VECTOR_BYTES - 1) / VECTOR_BYTES);
  }
  counted_calls(300);
  expected += 300 * 3;
  counted_none();
  pthread_t threads[THREADS];
  for (int i = 0; i < THREADS; i++)
    pthread_create(&threads[i], NULL, on_a_thread, NULL);
  for (int i = 0; i < THREADS; i++)
    pthread_join(threads[i], NULL);
  expected += THREADS * rounds * (3 + 3);
  printf("%llu\n", (unsigned long long)expected);
  return 0;
}
