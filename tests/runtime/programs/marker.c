// HINT #100 is a NOP to a processor and a call to the test's client, which adds one to X0. All
// other registers and the flags must stay.
#include <stdint.h>
#include <stdio.h>
#include <string.h>

struct registers {
  uint64_t x[31];
  uint64_t nzcv;
  unsigned char q[32][16];
};

static struct registers before, after;

// Loads all registers from `before`, executes the marker, stores them to `after`.
void exchange(const struct registers* from, struct registers* to);
__asm__(".text\n.balign 4\nexchange:\n"
        "sub sp, sp, #192\n"
        "stp x19, x20, [sp]\n stp x21, x22, [sp, #16]\n stp x23, x24, [sp, #32]\n"
        "stp x25, x26, [sp, #48]\n stp x27, x28, [sp, #64]\n stp x29, x30, [sp, #80]\n"
        "stp d8, d9, [sp, #96]\n stp d10, d11, [sp, #112]\n stp d12, d13, [sp, #128]\n"
        "stp d14, d15, [sp, #144]\n str x1, [sp, #160]\n"
        "ldr x1, [x0, #248]\n msr nzcv, x1\n add x1, x0, #256\n"
        "ld1 {v0.16b-v3.16b}, [x1], #64\n ld1 {v4.16b-v7.16b}, [x1], #64\n"
        "ld1 {v8.16b-v11.16b}, [x1], #64\n ld1 {v12.16b-v15.16b}, [x1], #64\n"
        "ld1 {v16.16b-v19.16b}, [x1], #64\n ld1 {v20.16b-v23.16b}, [x1], #64\n"
        "ld1 {v24.16b-v27.16b}, [x1], #64\n ld1 {v28.16b-v31.16b}, [x1], #64\n"
        "ldp x2, x3, [x0, #16]\n ldp x4, x5, [x0, #32]\n ldp x6, x7, [x0, #48]\n"
        "ldp x8, x9, [x0, #64]\n ldp x10, x11, [x0, #80]\n ldp x12, x13, [x0, #96]\n"
        "ldp x14, x15, [x0, #112]\n ldp x16, x17, [x0, #128]\n ldp x18, x19, [x0, #144]\n"
        "ldp x20, x21, [x0, #160]\n ldp x22, x23, [x0, #176]\n ldp x24, x25, [x0, #192]\n"
        "ldp x26, x27, [x0, #208]\n ldp x28, x29, [x0, #224]\n ldr x30, [x0, #240]\n"
        "ldp x0, x1, [x0]\n"
        "hint #100\n"
        "str x0, [sp, #168]\n ldr x0, [sp, #160]\n str x1, [x0, #8]\n"
        "stp x2, x3, [x0, #16]\n stp x4, x5, [x0, #32]\n stp x6, x7, [x0, #48]\n"
        "stp x8, x9, [x0, #64]\n stp x10, x11, [x0, #80]\n stp x12, x13, [x0, #96]\n"
        "stp x14, x15, [x0, #112]\n stp x16, x17, [x0, #128]\n stp x18, x19, [x0, #144]\n"
        "stp x20, x21, [x0, #160]\n stp x22, x23, [x0, #176]\n stp x24, x25, [x0, #192]\n"
        "stp x26, x27, [x0, #208]\n stp x28, x29, [x0, #224]\n str x30, [x0, #240]\n"
        "ldr x1, [sp, #168]\n str x1, [x0]\n mrs x1, nzcv\n str x1, [x0, #248]\n"
        "add x1, x0, #256\n"
        "st1 {v0.16b-v3.16b}, [x1], #64\n st1 {v4.16b-v7.16b}, [x1], #64\n"
        "st1 {v8.16b-v11.16b}, [x1], #64\n st1 {v12.16b-v15.16b}, [x1], #64\n"
        "st1 {v16.16b-v19.16b}, [x1], #64\n st1 {v20.16b-v23.16b}, [x1], #64\n"
        "st1 {v24.16b-v27.16b}, [x1], #64\n st1 {v28.16b-v31.16b}, [x1], #64\n"
        "ldp x19, x20, [sp]\n ldp x21, x22, [sp, #16]\n ldp x23, x24, [sp, #32]\n"
        "ldp x25, x26, [sp, #48]\n ldp x27, x28, [sp, #64]\n ldp x29, x30, [sp, #80]\n"
        "ldp d8, d9, [sp, #96]\n ldp d10, d11, [sp, #112]\n ldp d12, d13, [sp, #128]\n"
        "ldp d14, d15, [sp, #144]\n add sp, sp, #192\n ret\n");

int main(void) {
  int calls = 0;
  for (int round = 0; round < 1000; ++round) {
    for (size_t i = 0; i < sizeof before; ++i) {
      ((unsigned char*)&before)[i] = (unsigned char)(i * 37 + (size_t)round);
    }
    before.nzcv = (uint64_t)(round & 15) << 28;
    exchange(&before, &after);
    calls += after.x[0] == before.x[0] + 1;
    after.x[0] = before.x[0];
    if (memcmp(&before, &after, sizeof before) != 0) {
      printf("round %d: registers differ\n", round);
      return 1;
    }
  }
  printf("%d calls\n", calls);
  return 0;
}
