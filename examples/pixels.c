// Packed red-green-blue pixels to grey, by hand with the SVE intrinsics: structure loads take the
// three colours apart, WHILELO predicates make the tail part of the loop, and COMPACT keeps the
// bright pixels.
#include <arm_sve.h>
#include <stdint.h>
#include <stdio.h>

enum { PIXELS = 333, WEIGHT_RED = 77, WEIGHT_GREEN = 150, WEIGHT_BLUE = 29, BRIGHT = 200 };

static uint8_t weigh(const uint8_t* pixel) {
  return (pixel[0] * WEIGHT_RED + pixel[1] * WEIGHT_GREEN + pixel[2] * WEIGHT_BLUE) >> 8;
}

static void to_grey(uint8_t* grey, const uint8_t* colours, uint64_t n) {
  for (uint64_t i = 0; i < n; i += svcntb()) {
    const svbool_t some = svwhilelt_b8(i, n);
    const svuint8x3_t pixel = svld3(some, colours + 3 * i);
    const svuint8_t red = svget3(pixel, 0), green = svget3(pixel, 1), blue = svget3(pixel, 2);
    svuint16_t low = svmul_x(svptrue_b16(), svunpklo(red), (uint16_t)WEIGHT_RED);
    svuint16_t high = svmul_x(svptrue_b16(), svunpkhi(red), (uint16_t)WEIGHT_RED);
    low = svmla_x(svptrue_b16(), low, svunpklo(green), (uint16_t)WEIGHT_GREEN);
    high = svmla_x(svptrue_b16(), high, svunpkhi(green), (uint16_t)WEIGHT_GREEN);
    low = svmla_x(svptrue_b16(), low, svunpklo(blue), (uint16_t)WEIGHT_BLUE);
    high = svmla_x(svptrue_b16(), high, svunpkhi(blue), (uint16_t)WEIGHT_BLUE);
    // The odd bytes are the high halves of the sums.
    svst1(some, grey + i, svuzp2(svreinterpret_u8(low), svreinterpret_u8(high)));
  }
}

static uint64_t keep_bright(uint32_t* kept, const uint32_t* values, uint64_t n) {
  uint64_t count = 0;
  for (uint64_t i = 0; i < n; i += svcntw()) {
    const svbool_t some = svwhilelt_b32(i, n);
    const svuint32_t value = svld1(some, values + i);
    const svbool_t bright = svcmpge(some, value, (uint32_t)BRIGHT);
    const uint64_t found = svcntp_b32(some, bright);
    svst1(svwhilelt_b32((uint64_t)0, found), kept + count, svcompact(bright, value));
    count += found;
  }
  return count;
}

int main(void) {
  static uint8_t colours[3 * PIXELS], grey[PIXELS];
  static uint32_t wide[PIXELS], kept[PIXELS];
  for (int i = 0; i < 3 * PIXELS; i++)
    colours[i] = i * 37 + 11;
  to_grey(grey, colours, PIXELS);

  int wrong = 0;
  uint64_t bright = 0;
  for (int i = 0; i < PIXELS; i++) {
    wrong += grey[i] != weigh(colours + 3 * i);
    bright += grey[i] >= BRIGHT;
    wide[i] = grey[i];
  }
  const uint64_t count = keep_bright(kept, wide, PIXELS);
  for (uint64_t i = 0, k = 0; i < PIXELS; i++)
    if (wide[i] >= BRIGHT)
      wrong += kept[k++] != wide[i];
  printf("pixels: %d pixels, %llu bright, %d wrong\n", PIXELS, (unsigned long long)count, wrong);
  return wrong == 0 && count == bright ? 0 : 1;
}
