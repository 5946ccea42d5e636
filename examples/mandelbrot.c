// The Mandelbrot set in single precision: one vector of points at a time, each element leaves the
// governing predicate when its point escapes, and the loop ends when none is left.
#include <arm_sve.h>
#include <math.h>
#include <stdint.h>
#include <stdio.h>

enum { WIDTH = 64, HEIGHT = 24, STEPS = 48 };

static void count_steps(uint32_t* steps, const float* real, float imaginary, uint64_t n) {
  for (uint64_t i = 0; i < n; i += svcntw()) {
    const svbool_t some = svwhilelt_b32(i, n);
    const svfloat32_t cx = svld1(some, real + i), cy = svdup_f32(imaginary);
    svfloat32_t x = cx, y = cy;
    svuint32_t count = svdup_u32(0);
    svbool_t inside = some;
    for (int step = 0; step < STEPS; step++) {
      const svfloat32_t xx = svmul_x(some, x, x), yy = svmul_x(some, y, y);
      inside = svcmple(inside, svadd_x(some, xx, yy), 4.0f);
      if (!svptest_any(some, inside))
        break;
      count = svadd_m(inside, count, (uint32_t)1);
      const svfloat32_t xy = svmul_x(some, x, y);
      x = svadd_x(some, svsub_x(some, xx, yy), cx);
      y = svmla_x(some, cy, xy, 2.0f);
    }
    svst1(some, steps + i, count);
  }
}

// The same for one point, without vectors.
static uint32_t steps_of(float cx, float cy) {
  float x = cx, y = cy;
  uint32_t count = 0;
  for (; count < STEPS && x * x + y * y <= 4.0f; count++) {
    const float xy = x * y, next = x * x - y * y + cx;
    y = fmaf(xy, 2.0f, cy);
    x = next;
  }
  return count;
}

int main(void) {
  static const char shade[] = " .:-=+*#%@";
  float real[WIDTH];
  for (int column = 0; column < WIDTH; column++)
    real[column] = -2.0f + column * (2.5f / WIDTH);
  uint32_t checksum = 0;
  int wrong = 0;
  for (int row = 0; row < HEIGHT; row++) {
    uint32_t steps[WIDTH];
    const float imaginary = -1.2f + row * (2.4f / HEIGHT);
    count_steps(steps, real, imaginary, WIDTH);
    char line[WIDTH + 1] = {0};
    for (int column = 0; column < WIDTH; column++) {
      line[column] = shade[steps[column] * (sizeof shade - 2) / STEPS];
      checksum = checksum * 31 + steps[column];
      wrong += steps[column] != steps_of(real[column], imaginary);
    }
    puts(line);
  }
  printf("mandelbrot: checksum %08x, %d wrong\n", checksum, wrong);
  return wrong == 0 ? 0 : 1;
}
