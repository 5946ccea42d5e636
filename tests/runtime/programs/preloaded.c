// In front of the C library: LD_PRELOAD.
#include <stdio.h>

int puts(const char* text) { return printf("preloaded: %s\n", text); }
