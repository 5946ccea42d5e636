// Half precision flushes its small numbers where FPCR says so, also on processors that have none
// and whose FPCR keeps nothing of it: as the program, its library or the parent of a thread wrote
// it.
#include <pthread.h>
#include <stdint.h>
#include <stdio.h>

void set_control_in_library(uint64_t control);

static const uint64_t flush = 1u << 19;
static int sums, wrong;

static void set_control(uint64_t control) { __asm__ volatile("msr fpcr, %0" : : "r"(control)); }

// The smallest number, and nothing: 0 if it is flushed, otherwise 1.
static void expect_sum(uint64_t expected) {
  uint64_t sum;
  __asm__ volatile(".arch_extension sve\n\t"
                   "mov z0.h, #1\n\t"
                   "mov z1.h, #0\n\t"
                   "fadd z0.h, z0.h, z1.h\n\t"
                   "umov %w0, v0.h[3]"
                   : "=r"(sum)
                   :
                   : "v0", "v1");
  sums++;
  if (sum != expected) {
    wrong++;
    printf("sum %d is %d\n", sums, (int)sum);
  }
}

static void* find_flushing(void* unused) {
  expect_sum(0);
  set_control_in_library(0);
  expect_sum(1);
  return unused;
}

static void* find_not_flushing(void* unused) {
  expect_sum(1);
  set_control(flush);
  expect_sum(0);
  return unused;
}

static void run(void* (*thread)(void*)) {
  pthread_t id;
  if (pthread_create(&id, NULL, thread, NULL) != 0 || pthread_join(id, NULL) != 0)
    wrong++;
}

int main(void) {
  expect_sum(1);
  set_control_in_library(flush);
  expect_sum(0);
  run(find_flushing);
  expect_sum(0);  // what the thread does is its own
  set_control(0);
  expect_sum(1);
  run(find_not_flushing);
  expect_sum(1);
  set_control(flush);
  expect_sum(0);
  set_control_in_library(0);
  expect_sum(1);
  printf("%d sums, %d wrong\n", sums, wrong);
  return wrong != 0;
}
