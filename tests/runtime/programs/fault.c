// Ends as its argument says.
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

static char data_page[4096];

static int recurse(volatile char* above) {
  volatile char frame[512];
  frame[0] = *above;
  return recurse(frame) + frame[0];
}

static void end(const char* how) {
  if (strcmp(how, "store") == 0) {
    *(volatile int*)16 = 1;
  } else if (strcmp(how, "load") == 0) {
    (void)*(volatile int*)0x7000000000;
  } else if (strcmp(how, "nowhere") == 0) {
    ((void (*)(void))0x123454320)();
  } else if (strcmp(how, "data") == 0) {
    ((void (*)(void))(void*)data_page)();
  } else if (strcmp(how, "misaligned") == 0) {
    ((void (*)(void))((char*)&end + 2))();
  } else if (strcmp(how, "undefined") == 0) {
    __asm__ volatile("udf #7");
  } else if (strcmp(how, "breakpoint") == 0) {
    __asm__ volatile("brk #1");
  } else if (strcmp(how, "abort") == 0) {
    abort();
  } else if (strcmp(how, "kill") == 0) {
    kill(getpid(), SIGKILL);
  } else if (strcmp(how, "term") == 0) {
    raise(SIGTERM);
  } else if (strcmp(how, "sent") == 0) {
    kill(getpid(), SIGSEGV);
  } else if (strcmp(how, "past") == 0) {
    char* page =
        mmap(0, 4096, PROT_READ | PROT_WRITE | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    munmap(page, 4096);
    ((void (*)(void))(void*)page)();
  } else if (strcmp(how, "sve") == 0) {
    __asm__ volatile(".inst 0x04000000");
  } else if (strcmp(how, "recursion") == 0) {
    char first = 0;
    recurse(&first);
  } else if (strcmp(how, "_exit") == 0) {
    _exit(200);
  }
}

int main(int argc, char** argv) {
  printf("before\n");
  fflush(stdout);
  end(argc > 1 ? argv[1] : "");
  printf("after\n");
  return 78;
}
