// Every load of one register, by the list of rows: mended <rows.txt>. Elements of it lie in a page
// that cannot be read, or behind the end of its file. A load that faults must do so at its place
// and at that page, with its registers as they were, and must succeed once a handler has mended the
// page: also a gather that overwrites its own offsets. First-fault loads fault for their first
// active element alone, non-fault loads never, and both tell by FFR what they did not load. Without
// a handler the process dies of the fault.
#define _GNU_SOURCE
#include <signal.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <ucontext.h>
#include <unistd.h>

enum { page = 4096, vector = 16, most_forms = 300 };

struct form {
  uint32_t word;
  int is_signed, width, msize;
  char kind[3];   // FF, NF, NT or nothing
  char shape[5];  // the letters of the address
};

static struct form forms[most_forms];
static int form_count, faults, wrong;
static uint32_t* code;    // a form's word and a return for each
static char* memory;      // a page that can be read, and one that cannot
static char bytes[page];  // what stands in both
static int file;

// What a form is run on, and what it leaves.
struct run {
  _Alignas(vector) unsigned char z[vector];
  uint64_t base, index;
  uint16_t predicate, ffr;
};

static const struct form* form;
static struct run before;
static int faults_here, signal_here;

static void complain(const char* what) {
  if (wrong++ < 20)
    printf("word %x, signal %d: %s\n", form->word, signal_here, what);
}

static void readable(int yes) {
  if (signal_here == SIGSEGV)
    mprotect(memory + page, page, yes ? PROT_READ : PROT_NONE);
  else if ((yes ? pwrite(file, bytes, page, page) : ftruncate(file, page)) < 0)
    abort();
}

static void mend(int signal, siginfo_t* info, void* context) {
  const mcontext_t* machine = &((ucontext_t*)context)->uc_mcontext;
  const struct fpsimd_context* vectors = (const void*)machine->__reserved;
  if (signal != signal_here || faults_here++ != 0 || info->si_addr != memory + page)
    complain("not the fault that it should be");
  if (machine->pc != (uintptr_t)&code[2 * (form - forms)])
    complain("not its place");
  if (memcmp(&vectors->vregs[1], before.z, vector) != 0)
    complain("the register has changed");
  if (faults_here > 3)
    exit(1);
  readable(1);
}

static void execute(const void* function, struct run* state) {
  register struct run* run __asm__("x9") = state;
  register const void* where __asm__("x10") = function;
  register uint16_t* predicate __asm__("x11") = &state->predicate;
  register uint16_t* ffr __asm__("x12") = &state->ffr;
  __asm__ volatile(".arch_extension sve\n\t"
                   "ldr p0, [x11]\n\t"
                   "setffr\n\t"
                   "ldr q1, [x9]\n\t"
                   "ldp x1, x2, [x9, #16]\n\t"
                   "blr x10\n\t"
                   "str q1, [x9]\n\t"
                   "rdffr p0.b\n\t"
                   "str p0, [x12]"
                   :
                   : "r"(run), "r"(where), "r"(predicate), "r"(ffr)
                   : "x1", "x2", "x30", "v1", "memory");
}

static void expect_death(struct run* run) {
  const pid_t child = fork();
  if (child == 0) {
    const struct rlimit none = {0, 0};
    setrlimit(RLIMIT_CORE, &none);
    close(STDERR_FILENO);
    signal(signal_here, SIG_DFL);
    execute(&code[2 * (form - forms)], run);
    _exit(0);
  }
  int status = 0;
  if (waitpid(child, &status, 0) != child || !WIFSIGNALED(status) ||
      WTERMSIG(status) != signal_here)
    complain("does not die of it");
}

// Vec, type and bits, C or nothing, Load, kind, memory bytes, shape, Z.
static int parse(const char* name, struct form* to) {
  char type, digits[3];
  int at = 0;
  if (sscanf(name, "Vec%c%2[0-9]%n", &type, digits, &at) != 2 || (type != 'S' && type != 'U'))
    return 0;
  to->is_signed = type == 'S';
  to->width = atoi(digits) / 8;
  at += name[at] == 'C';
  if (strncmp(name + at, "Load", 4) != 0)
    return 0;
  at += 4;
  to->kind[0] = 0;
  if (name[at] == 'F' || name[at] == 'N') {
    snprintf(to->kind, sizeof to->kind, "%s", name + at);
    at += 2;
  }
  return sscanf(name + at, "%1d%4[A-Y]Z", &to->msize, to->shape) == 2;
}

static void read_forms(const char* path) {
  FILE* rows = fopen(path, "r");
  uint32_t value;
  char name[64];
  while (rows != NULL && form_count < most_forms &&
         fscanf(rows, "%x %*x %63s %*[^\n]", &value, name) == 2)
    if (parse(name, &forms[form_count])) {
      struct form* const to = &forms[form_count];
      const int index = strcmp(to->shape, "LSS") == 0 ? 2 : strchr(to->shape, 'V') != NULL;
      to->word = value | 1 | 1 << 5 | (strcmp(to->shape, "VI") == 0 ? 0 : index << 16);
      code[2 * form_count] = to->word;
      code[2 * form_count++ + 1] = 0xd65f03c0;  // RET
    }
}

static void set_element(unsigned char* z, int i, uint64_t value) {
  memcpy(z + i * form->width, &value, form->width);
}

// Element 1 is the first one of the bad page. Element 0 is in front of it, and may be inactive.
static void check(int first_active) {
  const int gather = strchr(form->shape, 'V') != NULL, n = vector / form->width;
  const int step = gather ? 8 : form->msize;
  const int scale = strstr(form->shape, "SV") != NULL ? form->msize : 1;
  const int bad_alone = form->kind[0] == 'N' && form->kind[1] == 'F';
  const int faulting = bad_alone ? 0 : strcmp(form->kind, "FF") == 0 ? first_active : 1;
  const char* const start = memory + page - step;
  struct run expected, run = {.base = (uintptr_t)start, .predicate = 0xffff, .ffr = 0};
  for (int i = 0; i < n; i++)
    set_element(run.z, i,
                strcmp(form->shape, "VI") == 0 ? (uintptr_t)start + i * step : i * step / scale);
  if (first_active)
    run.predicate ^= 1;
  expected = run;
  for (int i = 0; i < n; i++) {
    uint64_t value = 0;
    const int left_out = i < first_active || (i > 0 && !faulting);
    if (!left_out)
      memcpy(&value, &bytes[(page - step + i * step) % page], form->msize);
    const int above = 64 - 8 * form->msize;
    set_element(expected.z, i,
                form->is_signed ? (uint64_t)((int64_t)(value << above) >> above) : value);
  }
  expected.ffr = faulting ? 0xffff : (1 << form->width) - 1;
  before = run;
  faults_here = 0;
  readable(0);
  if (faulting && strcmp(form->kind, "FF") == 0 && signal_here == SIGSEGV)
    expect_death(&run);
  execute(&code[2 * (form - forms)], &run);
  faults += faults_here;
  if (faults_here != faulting)
    complain("faults, or does not");
  if (memcmp(run.z, expected.z, vector) != 0)
    complain("not loaded right");
  if (run.ffr != expected.ffr)
    complain("FFR is not right");
}

int main(int argc, char** argv) {
  void* const low = (void*)0x20000000;  // within reach of 32-bit addresses
  struct sigaction action = {.sa_sigaction = mend, .sa_flags = SA_SIGINFO};
  code = mmap(NULL, most_forms * 8, PROT_READ | PROT_WRITE | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS,
              -1, 0);
  if (argc == 2 && code != MAP_FAILED)
    read_forms(argv[1]);
  __builtin___clear_cache((char*)code, (char*)(code + 2 * form_count));
  for (int i = 0; i < page; i++)
    bytes[i] = (char)(i * 7 + 129);
  file = fileno(tmpfile());
  sigaction(SIGSEGV, &action, NULL);
  sigaction(SIGBUS, &action, NULL);
  for (int round = 0; round < 2; round++) {
    signal_here = round == 0 ? SIGSEGV : SIGBUS;
    if (pwrite(file, bytes, page, 0) != page || pwrite(file, bytes, page, page) != page)
      return 1;
    memory = mmap(low, 2 * page, PROT_READ, MAP_SHARED | (round == 0 ? 0 : MAP_FIXED), file, 0);
    if (memory != low)
      return 1;
    for (form = forms; form < forms + form_count; form++)
      for (int first_active = 0; first_active < 2; first_active++)
        check(first_active);
  }
  printf("%d forms, %d faults, %d wrong\n", form_count, faults, wrong);
  return wrong != 0;
}
