// A plugin of the simulator qemu-user: counts the instructions that a program executes.
//
//   qemu-aarch64 -plugin libcount_instructions.so,out=<file>[,scalable=on] <program>
//
// With scalable=on only those of SVE and SME are counted, and only outside the program's own code:
// what tavok executes for its application on a processor that has them. At the program's end the
// number stands in the file, or on standard error if none is given. A translated block counts in
// full when it is entered, so a fault in its middle counts it whole. Threads share the counter
// without a lock: counts are exact for programs of one thread.
#include <fcntl.h>
#include <inttypes.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

#define EXPORTED __attribute__((visibility("default")))

// What this file uses of the simulator's plugin interface, version 1, in our own declarations.
enum { PLUGIN_INTERFACE_VERSION = 1, INLINE_ADD_U64 = 0 };
typedef uint64_t plugin_id;
struct qemu_plugin_tb;
struct qemu_plugin_insn;
struct simulator_info;
typedef void (*translated_event)(plugin_id id, struct qemu_plugin_tb* block);
typedef void (*exit_event)(plugin_id id, void* data);
void qemu_plugin_register_vcpu_tb_trans_cb(plugin_id id, translated_event event);
void qemu_plugin_register_vcpu_tb_exec_inline(struct qemu_plugin_tb* block, int operation,
                                              void* counter, uint64_t value);
size_t qemu_plugin_tb_n_insns(const struct qemu_plugin_tb* block);
struct qemu_plugin_insn* qemu_plugin_tb_get_insn(const struct qemu_plugin_tb* block, size_t index);
const void* qemu_plugin_insn_data(const struct qemu_plugin_insn* instruction);
uint64_t qemu_plugin_insn_vaddr(const struct qemu_plugin_insn* instruction);
uint64_t qemu_plugin_start_code(void);
uint64_t qemu_plugin_end_code(void);
void qemu_plugin_register_atexit_cb(plugin_id id, exit_event event, void* data);

EXPORTED int qemu_plugin_version = PLUGIN_INTERFACE_VERSION;
EXPORTED int qemu_plugin_install(plugin_id id, const struct simulator_info* info, int argc,
                                 char** argv);

static uint64_t executed;
static char path[4096];
static int scalable_only;

static int is_scalable(const struct qemu_plugin_insn* instruction) {
  const uint64_t address = qemu_plugin_insn_vaddr(instruction);
  uint32_t word;
  memcpy(&word, qemu_plugin_insn_data(instruction), sizeof word);
  return ((word & 0x1e000000) == 0x04000000 || (word & 0x9e000000) == 0x80000000) &&
         (address < qemu_plugin_start_code() || address >= qemu_plugin_end_code());
}

static uint64_t counted(const struct qemu_plugin_tb* block) {
  const size_t size = qemu_plugin_tb_n_insns(block);
  uint64_t scalable = 0;
  for (size_t i = 0; scalable_only && i < size; i++)
    scalable += is_scalable(qemu_plugin_tb_get_insn(block, i));
  return scalable_only ? scalable : size;
}

static void count_block(plugin_id id, struct qemu_plugin_tb* block) {
  (void)id;
  const uint64_t count = counted(block);
  if (count != 0)
    qemu_plugin_register_vcpu_tb_exec_inline(block, INLINE_ADD_U64, &executed, count);
}

static void print_count(plugin_id id, void* data) {
  (void)id;
  (void)data;
  char line[32];
  const int length = snprintf(line, sizeof line, "%" PRIu64 "\n", executed);
  int out = STDERR_FILENO;
  if (path[0] != '\0')
    out = open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  if (out < 0 || write(out, line, length) != length)
    perror("count_instructions");
}

EXPORTED int qemu_plugin_install(plugin_id id, const struct simulator_info* info, int argc,
                                 char** argv) {
  (void)info;
  static const char option[] = "out=";
  for (int i = 0; i < argc; i++) {
    scalable_only |= strcmp(argv[i], "scalable=on") == 0;
    if (strncmp(argv[i], option, strlen(option)) == 0)
      snprintf(path, sizeof path, "%s", argv[i] + strlen(option));
  }
  qemu_plugin_register_vcpu_tb_trans_cb(id, count_block);
  qemu_plugin_register_atexit_cb(id, print_count, NULL);
  return 0;
}
