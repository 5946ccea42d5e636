// told on|off: whether each place that speaks of SVE says that there is one of 128 bits, and
// whether a signal's frame holds the registers of it, or that there is none.
#define _GNU_SOURCE
#include <asm/sigcontext.h>
#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/auxv.h>
#include <sys/prctl.h>
#include <ucontext.h>
#include <unistd.h>

static int on, checks, wrong;

static void expect(const char* what, long got, long wanted) {
  checks++;
  if (got != wanted) {
    wrong++;
    printf("%s: %#lx instead of %#lx\n", what, got, wanted);
  }
}

// ---- the auxiliary vector and the identification registers --------------------------------------

static const uint64_t scalable_hwcap2 =
    0x7e | 0x1e00 | 0x7f800000 | 1ul << 33 | 0x7full << 36 | 1ul << 45 | 0x3full << 57;

#define FIELD(name, at)                                                                            \
  ({                                                                                               \
    uint64_t value;                                                                                \
    asm("mrs %0, " name : "=r"(value));                                                            \
    (long)(value >> (at)&15);                                                                      \
  })

static void identification(void) {
  expect("AT_HWCAP", getauxval(AT_HWCAP) >> 22 & 1, on);
  expect("AT_HWCAP2", getauxval(AT_HWCAP2) & scalable_hwcap2, 0);
  expect("AT_MINSIGSTKSZ", getauxval(51) >= sizeof(siginfo_t) + sizeof(ucontext_t), 1);
  expect("PFR0.SVE", FIELD("s3_0_c0_c4_0", 32), on);
  expect("PFR0.FP", FIELD("s3_0_c0_c4_0", 16), (getauxval(AT_HWCAP) >> 9 & 1) != 0);
  expect("PFR1.SME", FIELD("s3_0_c0_c4_1", 24), 0);
  for (int at = 0; at < 64; at += 4) {
    expect("ZFR0", FIELD("s3_0_c0_c4_4", at), 0);
    expect("SMFR0", FIELD("s3_0_c0_c4_5", at), 0);
  }
  register uint64_t x28 asm("x28") = 0;
  asm volatile("mrs %0, s3_0_c0_c4_0" : "+r"(x28));
  expect("PFR0 in X28", x28 >> 32 & 15, on);
}

// ---- prctl --------------------------------------------------------------------------------------

static void* status_in_thread(void* result) {
  *(long*)result = prctl(PR_SVE_GET_VL);
  return NULL;
}

static void lengths(void) {
  enum { INHERIT = PR_SVE_VL_INHERIT, ONEXEC = PR_SVE_SET_VL_ONEXEC };
  static const struct {
    unsigned long wanted;
    long set, get;  // what prctl returns
  } cases[] = {
      {16, 16, 16},
      {64, 16, 16},
      {8192, 16, 16},
      {16 | INHERIT, 16 | INHERIT, 16 | INHERIT},
      {0, -1, 16 | INHERIT},
      {8, -1, 16 | INHERIT},
      {24, -1, 16 | INHERIT},
      {8208, -1, 16 | INHERIT},
      {16 | 1 << 19, -1, 16 | INHERIT},
      {32 | ONEXEC, 16, 16},
      {32 | ONEXEC | INHERIT, 16 | INHERIT, 16 | INHERIT},
  };
  for (unsigned i = 0; i < sizeof cases / sizeof *cases; i++) {
    expect("PR_SVE_SET_VL", prctl(PR_SVE_SET_VL, cases[i].wanted), on ? cases[i].set : -1);
    expect("PR_SVE_GET_VL", prctl(PR_SVE_GET_VL), on ? cases[i].get : -1);
  }
  long in_thread;
  pthread_t thread;
  pthread_create(&thread, NULL, status_in_thread, &in_thread);
  pthread_join(thread, NULL);
  expect("PR_SVE_GET_VL of a thread", in_thread, on ? 16 | INHERIT : -1);
  expect("PR_SME_GET_VL", prctl(64), -1);
  expect("PR_SME_SET_VL", prctl(63, 16), -1);
}

// ---- /proc --------------------------------------------------------------------------------------

static size_t read_file(int folder, const char* path, char* text, size_t size) {
  const int fd = openat(folder, path, O_RDONLY);
  size_t length = 0;
  for (ssize_t got; fd >= 0 && (got = read(fd, text + length, size - 1 - length)) > 0;)
    length += (size_t)got;
  text[length] = '\0';
  close(fd);
  return length;
}

static void processor_file(int folder, const char* path) {
  static char text[1 << 20];
  read_file(folder, path, text, sizeof text);
  int lines = 0;
  for (char* line = strtok(text, "\n"); line != NULL; line = strtok(NULL, "\n")) {
    if (strncmp(line, "Features", 8) != 0)
      continue;
    lines++;
    int plain = 0, others = 0;
    for (char* at = line; (at = strstr(at, " s")) != NULL; at++) {
      plain += strncmp(at, " sve ", 5) == 0 || strcmp(at, " sve") == 0;
      others += strncmp(at, " sve", 4) == 0 || strncmp(at, " sme", 4) == 0;
    }
    expect(path, plain, on);
    expect(path, others, on);
  }
  expect("lines of features", lines > 0, 1);
}

static void vector_file(const char* path) {
  static uint64_t words[200];
  const size_t size = read_file(AT_FDCWD, path, (char*)words, sizeof words);
  int found = 0;
  for (size_t i = 0; i + 1 < size / sizeof *words; i += 2) {
    found += words[i] == AT_HWCAP || words[i] == AT_HWCAP2 || words[i] == AT_ENTRY;
    if (words[i] != AT_NULL)
      expect(path, (long)words[i + 1], (long)getauxval(words[i]));
  }
  expect("entries of auxv", found, 3);
}

static void files(void) {
  char path[64];
  const int folder = open("/proc", O_RDONLY | O_DIRECTORY);
  processor_file(AT_FDCWD, "/proc/cpuinfo");
  processor_file(AT_FDCWD, "/proc/self/../cpuinfo");
  processor_file(AT_FDCWD, "/../proc//cpuinfo");
  processor_file(folder, "cpuinfo");
  close(folder);
  vector_file("/proc/self/auxv");
  vector_file("/proc/thread-self/auxv");
  snprintf(path, sizeof path, "/proc/%d/auxv", getpid());
  vector_file(path);
  snprintf(path, sizeof path, "/proc/self/task/%d/auxv", getpid());
  vector_file(path);
}

// ---- signal frames ------------------------------------------------------------------------------

struct vectors {
  unsigned char z[16];
  uint16_t p[3], ffr;  // P0, P3, P15
};

// Loads Z5, P0, P3, P15 and FFR, has itself sent the signal, and stores what it finds then.
void over_signal(const struct vectors* before, struct vectors* after, int process, int signal);
asm(".text\n"
    ".arch armv8-a+sve\n"
    ".type over_signal, %function\n"
    "over_signal:\n"
    "  add x9, x0, #22\n ldr p0, [x9]\n wrffr p0.b\n"
    "  add x9, x0, #16\n ldr p0, [x9]\n"
    "  add x9, x0, #18\n ldr p3, [x9]\n"
    "  add x9, x0, #20\n ldr p15, [x9]\n"
    "  ldr z5, [x0]\n"
    "  mov x10, x1\n mov x0, x2\n mov x1, x3\n mov x8, #129\n svc #0\n"
    "  str z5, [x10]\n"
    "  add x9, x10, #16\n str p0, [x9]\n"
    "  add x9, x10, #18\n str p3, [x9]\n"
    "  add x9, x10, #20\n str p15, [x9]\n"
    "  rdffr p0.b\n add x9, x10, #22\n str p0, [x9]\n"
    "  ret\n"
    ".arch armv8-a\n");

static const struct vectors loaded = {"0123456789abcdef", {0x8421, 0x1234, 0xfedc}, 0x00ff};
static const struct vectors changed = {"the handler's z5", {0x0001, 0x4321, 0xabcd}, 0x0007};

static struct _aarch64_ctx* find(ucontext_t* context, uint32_t magic) {
  struct _aarch64_ctx* head = (struct _aarch64_ctx*)context->uc_mcontext.__reserved;
  while (head->magic != 0 && head->magic != magic)
    head = (struct _aarch64_ctx*)((char*)head + head->size);
  return head->magic == magic ? head : NULL;
}

// SIGUSR1 looks, SIGUSR2 changes, as well what does not count: Z is that of the FPSIMD record.
static void handle(int number, siginfo_t* info, void* context) {
  (void)info;
  struct sve_context* const record = (struct sve_context*)find(context, SVE_MAGIC);
  struct fpsimd_context* const simd = (struct fpsimd_context*)find(context, FPSIMD_MAGIC);
  expect("an SVE record", record != NULL, on);
  if (record == NULL)
    return;
  char* const bytes = (char*)record;
  expect("its length", record->vl, 16);
  expect("its size", record->head.size, (SVE_SIG_CONTEXT_SIZE(1) + 15) & ~15);
  expect("its Z5", memcmp(bytes + SVE_SIG_ZREG_OFFSET(1, 5), loaded.z, 16), 0);
  const int numbers[] = {0, 3, 15};
  for (int i = 0; i < 3; i++)
    expect("its P", memcmp(bytes + SVE_SIG_PREG_OFFSET(1, numbers[i]), &loaded.p[i], 2), 0);
  expect("its FFR", memcmp(bytes + SVE_SIG_FFR_OFFSET(1), &loaded.ffr, 2), 0);
  if (number != SIGUSR2)
    return;
  memcpy(&simd->vregs[5], changed.z, 16);
  memset(bytes + SVE_SIG_ZREG_OFFSET(1, 5), 1, 16);
  for (int i = 0; i < 3; i++)
    memcpy(bytes + SVE_SIG_PREG_OFFSET(1, numbers[i]), &changed.p[i], 2);
  memcpy(bytes + SVE_SIG_FFR_OFFSET(1), &changed.ffr, 2);
}

static void frames(void) {
  struct sigaction action = {.sa_sigaction = handle, .sa_flags = SA_SIGINFO};
  struct vectors after = {{0}, {0}, 0};
  sigaction(SIGUSR1, &action, NULL);
  sigaction(SIGUSR2, &action, NULL);
  over_signal(&loaded, &after, getpid(), SIGUSR1);
  expect("registers behind a handler", memcmp(&after, &loaded, sizeof after), 0);
  over_signal(&loaded, &after, getpid(), SIGUSR2);
  expect("registers changed by a handler", memcmp(&after, on ? &changed : &loaded, sizeof after),
         0);
}

int main(int argc, char** argv) {
  on = argc > 1 && strcmp(argv[1], "on") == 0;
  identification();
  lengths();
  files();
  frames();
  printf("%s: %d checks, %d wrong\n", on ? "on" : "off", checks, wrong);
  return wrong != 0;
}
