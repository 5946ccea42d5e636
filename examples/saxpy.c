// y = a * x + y over 32-bit integers, in plain C: the compiler makes an SVE loop of it, with a
// WHILELO predicate instead of a scalar tail.
#include <stdint.h>
#include <stdio.h>

enum { LENGTH = 1003 };  // no multiple of any vector's elements

static __attribute__((noinline)) void saxpy(int32_t* restrict y, const int32_t* restrict x,
                                            int32_t a, int n) {
  for (int i = 0; i < n; i++)
    y[i] += a * x[i];
}

int main(void) {
  static int32_t x[LENGTH], y[LENGTH];
  for (int i = 0; i < LENGTH; i++) {
    x[i] = i;
    y[i] = 7 - i;
  }
  saxpy(y, x, 3, LENGTH);
  int64_t sum = 0;
  for (int i = 0; i < LENGTH; i++)
    sum += y[i];
  // Sum of 7 + 2i below LENGTH.
  printf("saxpy: %d elements, last %d, sum %lld\n", LENGTH, y[LENGTH - 1], (long long)sum);
  return sum == 7LL * LENGTH + (int64_t)LENGTH * (LENGTH - 1) ? 0 : 1;
}
