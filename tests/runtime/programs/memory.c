// The calls that the runtime follows or answers itself: break, mappings, protections.
#define _GNU_SOURCE
#include <errno.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

static void break_grows_and_shrinks(void) {
  char* start = sbrk(0);
  printf("grow: %d\n", sbrk(100000) == start);
  memset(start, 0xa5, 100000);
  printf("shrink: %d\n", sbrk(-90000) == start + 100000);
  printf("now: %ld\n", (long)((char*)sbrk(0) - start));
  sbrk(90000);
  int zero = 1;
  for (int i = 20000; i < 100000; ++i) {
    zero &= start[i] == 0;
  }
  printf("zero again: %d\n", zero);
  printf("too much: %d %d\n", sbrk(1L << 46) == (void*)-1, errno == ENOMEM);
}

// What lies behind the break belongs to nobody, and may stop it.
static void behind_the_break(void) {
  enum { BEHIND = 1 << 20 };
  const size_t page = (size_t)sysconf(_SC_PAGESIZE);
  char* at = (char*)(((uintptr_t)sbrk(0) + BEHIND) & ~(page - 1));
  unsigned char resident;
  printf("behind: %d %d\n", mincore(at, page, &resident), errno == ENOMEM);
  printf("taken: %d\n", mmap(at, page, PROT_READ | PROT_WRITE,
                             MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0) == at);
  strcpy(at, "kept");
  printf("in the way: %d, %s\n", sbrk(2 * BEHIND) == (void*)-1, at);
  munmap(at, page);
  printf("free again: %d\n", sbrk(2 * BEHIND) != (void*)-1 && sbrk(-2 * BEHIND) != (void*)-1);
}

static void mappings(void) {
  const size_t page = (size_t)sysconf(_SC_PAGESIZE);
  char* at = mmap(NULL, 4 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  strcpy(at + page, "moved");
  char* moved = mremap(at, 4 * page, 64 * page, MREMAP_MAYMOVE);
  printf("mremap: %s\n", moved + page);
  printf("mprotect: %d\n", mprotect(moved, page, PROT_READ));
  printf("munmap: %d %d\n", munmap(moved, 64 * page), munmap((void*)1, page) == -1);
  void* bad = mmap(NULL, 0, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  printf("bad mmap: %d %d\n", bad == MAP_FAILED, errno == EINVAL);
}

static void big_blocks(void) {
  unsigned long sum = 0;
  for (int i = 1; i < 200; ++i) {
    unsigned char* block = calloc((size_t)i, 1000);
    block[i * 999] = (unsigned char)i;
    for (int j = 0; j < i * 1000; ++j) {
      sum += block[j];
    }
    free(block);
  }
  printf("blocks: %lu\n", sum);
}

int main(void) {
  char path[4096];
  const ssize_t length = readlink("/proc/self/exe", path, sizeof path - 1);
  path[length > 0 ? length : 0] = 0;
  printf("exe: %s\n", strrchr(path, '/'));
  break_grows_and_shrinks();
  behind_the_break();
  mappings();
  big_blocks();
  return 0;
}
