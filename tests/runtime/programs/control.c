// Every way that control moves: recursion, tables, pointers, tail calls, longjmp, deep stacks.
#include <setjmp.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static unsigned long fibonacci(unsigned n) {
  return n < 2 ? n : fibonacci(n - 1) + fibonacci(n - 2);
}

static int ackermann(int m, int n) {
  if (m == 0) {
    return n + 1;
  }
  return n == 0 ? ackermann(m - 1, 1) : ackermann(m - 1, ackermann(m, n - 1));
}

__attribute__((noinline)) static int choose(int key) {
  switch (key) {
  case 0:
    return 17;
  case 1:
    return -4;
  case 2:
    return 99;
  case 3:
    return key * 1000;
  case 4:
    return 31337;
  case 5:
    return 5;
  case 6:
    return -1;
  case 7:
    return 70000;
  default:
    return 0;
  }
}

static int add(int a, int b) { return a + b; }
static int subtract(int a, int b) { return a - b; }
static int multiply(int a, int b) { return a * b; }
static int (*const volatile operations[])(int, int) = {add, subtract, multiply};

static int compare(const void* a, const void* b) {
  return *(const int*)a < *(const int*)b ? -1 : *(const int*)a > *(const int*)b;
}

static jmp_buf back;
__attribute__((noinline)) static void jump_from(int depth) {
  char pad[100];
  memset(pad, depth, sizeof pad);
  if (depth == 0) {
    longjmp(back, 42);
  }
  jump_from(depth - 1);
  __asm__ volatile("" ::"r"(pad));
}

// Far more targets of one indirect call than a look-up table holds at one place.
static void many_targets(void) {
  unsigned sum = 0;
  for (int i = 0; i < 300000; ++i) {
    sum += (unsigned)operations[i % 3](i, 7);
  }
  printf("many targets: %u\n", sum);
}

int main(void) {
  printf("fibonacci %lu, ackermann %d\n", fibonacci(24), ackermann(2, 9));
  for (int i = -1; i < 10; ++i) {
    printf("choose %d: %d\n", i, choose(i));
  }
  int values[1000];
  unsigned seed = 1;
  for (int i = 0; i < 1000; ++i) {
    seed = seed * 1103515245 + 12345;
    values[i] = (int)(seed >> 8);
  }
  qsort(values, 1000, sizeof *values, compare);
  printf("sorted: %d %d %d\n", values[0], values[500], values[999]);
  for (int i = 0; i < 3; ++i) {
    const int value = setjmp(back);
    if (value == 0) {
      jump_from(i * 20);
    }
    printf("longjmp: %d\n", value);
  }
  many_targets();
  return 3;
}
