// Branches that authenticate their target, with every kind of register as target and as modifier.
#include <stdio.h>
#include <sys/auxv.h>

long branches(void);
__asm__(".arch armv8.3-a\n.text\n.balign 4\n"
        "branches:\n stp x29, x30, [sp, #-32]!\n str x28, [sp, #16]\n mov x4, #0\n"
        "mov x28, #77\n adr x0, 1f\n pacia x0, x28\n blraa x0, x28\n"
        "adr x1, 1f\n mov x2, #5\n pacib x1, x2\n blrab x1, x2\n"
        "adr x5, 1f\n mov x0, #8\n pacia x5, x0\n blraa x5, x0\n"
        "adr x2, 1f\n mov x1, #8\n pacia x2, x1\n blraa x2, x1\n"
        "adr x28, 1f\n paciza x28\n blraaz x28\n"
        "adr x28, 1f\n pacia x28, sp\n blraa x28, sp\n"
        "adr x0, 2f\n mov x1, #9\n pacia x0, x1\n braa x0, x1\n mov x4, #100\n"
        "2: ldr x28, [sp, #16]\n ldp x29, x30, [sp], #32\n mov x0, x4\n ret\n"
        "1: paciasp\n add x4, x4, #1\n retaa\n");

int main(void) {
  if ((getauxval(AT_HWCAP) & HWCAP_PACA) == 0) {
    printf("this processor authenticates nothing\n");
    return 77;
  }
  printf("%ld branches\n", branches());
  return 0;
}
