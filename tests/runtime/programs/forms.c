// What a program finds of itself and of its surroundings: indirect functions, thread-local storage
// of all models, its stack, its files, its start.
#define _GNU_SOURCE
#include <dlfcn.h>
#include <elf.h>
#include <errno.h>
#include <execinfo.h>
#include <fcntl.h>
#include <pthread.h>
#include <setjmp.h>
#include <signal.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/auxv.h>
#include <sys/wait.h>
#include <unistd.h>

static int implementation(int x) { return x * 3 + 1; }
static int (*resolve(void))(int) { return implementation; }
int indirect(int x) __attribute__((ifunc("resolve")));

__thread long global_dynamic = 11;
static __thread long local_dynamic __attribute__((tls_model("local-dynamic"))) = 22;
__thread long initial_exec __attribute__((tls_model("initial-exec"))) = 33;
static __thread long local_exec = 44;

static void* change_all(void* unused) {
  (void)unused;
  long* const volatile all[] = {&global_dynamic, &local_dynamic, &initial_exec, &local_exec};
  long sum = 0;
  for (int i = 0; i < 4; ++i) {
    sum += (*all[i] += i + 1);
  }
  return (void*)sum;
}

static void thread_locals(void) {
  pthread_t thread;
  void* sum;
  pthread_create(&thread, NULL, change_all, NULL);
  pthread_join(thread, &sum);
  printf("thread-local: %ld in the thread, %ld here\n", (long)sum,
         global_dynamic + local_dynamic + initial_exec + local_exec);
}

#define TEN(x) x x x x x x x x x x
static void large_block(void) {
  uint64_t a = 3, b = 5;
  __asm__ volatile(TEN(TEN(TEN("add %0, %0, %1\n eor %1, %1, %0, ror #7\n"))) : "+r"(a), "+r"(b));
  printf("large block: %lx %lx\n", (long)a, (long)b);
}

__attribute__((noinline)) static int deep(int n) {
  volatile char frame[64];
  frame[n % 64] = (char)n;
  return n == 0 ? 0 : deep(n - 1) + (frame[n % 64] == (char)n);
}

__attribute__((noinline)) static int frames(int n) {
  if (n > 0) {
    return frames(n - 1) + 0 * n;
  }
  void* addresses[64];
  const int count = backtrace(addresses, 64);
  int own = 0;
  for (int i = 0; i < count; ++i) {
    own += (uintptr_t)addresses[i] - (uintptr_t)frames < 4096;
  }
  return own;
}

static volatile int frames_in_handler;
static void trace(int signal) {
  void* addresses[64];
  (void)signal;
  frames_in_handler = backtrace(addresses, 64) > 4;
}

// A line of the process's map that holds the address and gives these rights.
static int is_mapped(const void* address, const char* rights) {
  FILE* const maps = fopen("/proc/self/maps", "r");
  char line[512], found[8];
  unsigned long begin, end;
  int result = 0;
  while (maps != NULL && fgets(line, sizeof line, maps) != NULL) {
    if (sscanf(line, "%lx-%lx %7s", &begin, &end, found) == 3 && (uintptr_t)address >= begin &&
        (uintptr_t)address < end) {
      result = strncmp(found, rights, strlen(rights)) == 0;
    }
  }
  fclose(maps);
  return result;
}

static int data_word = 1;

static void maps(void) {
  char local;
  void* const block = malloc(1000);
  pthread_attr_t attributes;
  void* stack;
  size_t size;
  printf("mapped: %d %d %d %d\n", is_mapped(&local, "rw"), is_mapped(block, "rw"),
         is_mapped(&data_word, "rw"), is_mapped((void*)(uintptr_t)maps, "r-"));
  pthread_getattr_np(pthread_self(), &attributes);
  pthread_attr_getstack(&attributes, &stack, &size);
  printf("stack: %d\n", (char*)stack <= &local && &local < (char*)stack + size);
}

static void auxiliary(void) {
  const Elf64_Phdr* const headers = (void*)getauxval(AT_PHDR);
  int loads = 0;
  for (unsigned long i = 0; i < getauxval(AT_PHNUM); ++i) {
    loads += headers[i].p_type == PT_LOAD;
  }
  const unsigned char* const random = (void*)getauxval(AT_RANDOM);
  int bits = 0;
  for (int i = 0; i < 16; ++i) {
    bits |= random[i];
  }
  printf("auxv: %d segments, page %lu, uid %d, platform %s, random %d, secure %lu, name %d\n",
         loads, getauxval(AT_PAGESZ), getauxval(AT_UID) == getuid(), (char*)getauxval(AT_PLATFORM),
         bits != 0, getauxval(AT_SECURE),
         strcmp((char*)getauxval(AT_EXECFN), program_invocation_name) == 0);
}

static void files(void) {
  // Shells and simulators leave descriptors of their own open: only the lowest is the program's.
  const int first = open("/dev/null", O_RDONLY | O_CLOEXEC);
  const int copy = dup(first);
  printf("descriptors: %d, close-on-exec %d %d\n", first, fcntl(first, F_GETFD),
         fcntl(copy, F_GETFD));
  setenv("FORMS", "one two", 1);
  fflush(stdout);
  printf("system: %#x\n", system("test \"$FORMS\" = 'one two' && exit 7"));
}

int main(void) {
  setvbuf(stdout, NULL, _IONBF, 0);
  printf("indirect: %d\n", indirect(4));
  thread_locals();
  large_block();
  printf("deep: %d\n", deep(50000));
  printf("frames: %d\n", frames(10));
  signal(SIGUSR1, trace);
  raise(SIGUSR1);
  printf("frames in a handler: %d\n", frames_in_handler);
  maps();
  auxiliary();
  files();
  puts("end");
  return 9;
}
