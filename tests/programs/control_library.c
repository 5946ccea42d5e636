#include <stdint.h>

void set_control_in_library(uint64_t control) { __asm__ volatile("msr fpcr, %0" : : "r"(control)); }
