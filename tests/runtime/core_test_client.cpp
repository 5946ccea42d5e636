// A client that changes nothing but for one marker instruction, which becomes a call: HINT #100,
// executed by an application that wants to be counted, adds one to X0 on behalf of the client. In
// libraries it stays.
//
// It prints what it saw when the process ends, so that a test can tell that events ran.
#include <atomic>
#include <cstdio>
#include <cstring>

#include "runtime/include/drmgr.h"
#include "runtime/include/droption.h"
#include "runtime/include/drreg.h"

namespace {

constexpr unsigned kMarker = 0xd503201f | 100 << 5;

// What a call needs to leave the application's registers as they were.
struct Record {
  unsigned long x[32];
  unsigned char q[32][16];
  unsigned long nzcv, fpsr, fpcr;
  unsigned long marks;
};

int field;
app_pc executable;
std::atomic<unsigned long> blocks, threads, marks;

void mark(unsigned, unsigned long, unsigned long) {
  void* drcontext = dr_get_current_drcontext();
  auto* record = static_cast<Record*>(drmgr_get_tls_field(drcontext, field));
  // Clobbers what a callee may, so that a register which is not exchanged shows.
  asm volatile("mov x9, #-1\n mov x17, #-1\n movi v0.16b, #255\n movi v31.16b, #255\n"
               "cmp xzr, xzr" ::
                   : "x9", "x17", "v0", "v31", "cc");
  record->x[0] += 1;
  ++record->marks;
  ++marks;
}

#define AT(member) static_cast<int>(__builtin_offsetof(Record, member))

opnd_t memory(int offset, opnd_size_t size) {
  return opnd_create_base_disp(DR_REG_X27, DR_REG_NULL, 0, offset, size);
}

struct Inserter {
  void* drcontext;
  instrlist_t* block;
  instr_t* where;

  void put(instr_t* instr) const {
    instrlist_preinsert(block, where, instr_set_translation(instr, instr_get_app_pc(where)));
  }
  void store(reg_id_t reg, int offset, opnd_size_t size) const {
    put(instr_create_1dst_1src(drcontext, OP_str, memory(offset, size), opnd_create_reg(reg)));
  }
  void load(reg_id_t reg, int offset, opnd_size_t size) const {
    put(instr_create_1dst_1src(drcontext, OP_ldr, opnd_create_reg(reg), memory(offset, size)));
  }
  void record_to_x27() const {
    instrlist_insert_mov_immed_ptrsz(
        drcontext, reinterpret_cast<ptr_int_t>(drmgr_get_tls_field(drcontext, field)),
        opnd_create_reg(DR_REG_X27), block, where, nullptr, nullptr);
  }
  void system(int opcode, reg_id_t a, reg_id_t b) const {
    put(instr_create_1dst_1src(drcontext, opcode, opnd_create_reg(a), opnd_create_reg(b)));
  }
};

bool is_plain(int number) { return number < 26 || number > 28; }

void insert_exchange(const Inserter& to) {
  dr_save_reg(to.drcontext, to.block, to.where, DR_REG_X26, SPILL_SLOT_1);
  dr_save_reg(to.drcontext, to.block, to.where, DR_REG_X27, SPILL_SLOT_2);
  to.record_to_x27();
  for (int i = 0; i < 31; ++i) {
    if (is_plain(i)) {
      to.store(static_cast<reg_id_t>(DR_REG_X0 + i), AT(x) + 8 * i, OPSZ_8);
    }
  }
  for (int i = 0; i < 32; ++i) {
    to.store(static_cast<reg_id_t>(DR_REG_Q0 + i), AT(q) + 16 * i, OPSZ_16);
  }
  to.system(OP_mrs, DR_REG_X26, DR_REG_NZCV);
  to.store(DR_REG_X26, AT(nzcv), OPSZ_8);
  dr_insert_call_tavok(to.drcontext, to.block, to.where, instr_get_app_pc(to.where),
                       reinterpret_cast<void*>(&mark), 3, opnd_create_immed_int(7, OPSZ_4),
                       opnd_create_immed_int(8, OPSZ_8), opnd_create_immed_int(9, OPSZ_8));
  to.record_to_x27();
  to.load(DR_REG_X26, AT(nzcv), OPSZ_8);
  to.system(OP_msr, DR_REG_NZCV, DR_REG_X26);
  for (int i = 0; i < 32; ++i) {
    to.load(static_cast<reg_id_t>(DR_REG_Q0 + i), AT(q) + 16 * i, OPSZ_16);
  }
  for (int i = 0; i < 31; ++i) {
    if (is_plain(i)) {
      to.load(static_cast<reg_id_t>(DR_REG_X0 + i), AT(x) + 8 * i, OPSZ_8);
    }
  }
  dr_restore_reg(to.drcontext, to.block, to.where, DR_REG_X27, SPILL_SLOT_2);
  dr_restore_reg(to.drcontext, to.block, to.where, DR_REG_X26, SPILL_SLOT_1);
}

bool is_library(void* tag) {
  module_data_t* module = dr_lookup_module(dr_fragment_app_pc(tag));
  const bool result = module != nullptr && module->start != executable;
  dr_free_module_data(module);
  return result;
}

dr_emit_flags_t event_block(void* drcontext, void* tag, instrlist_t* block, bool, bool) {
  ++blocks;
  if (is_library(tag)) {
    return DR_EMIT_DEFAULT;
  }
  for (instr_t *next, *instr = instrlist_first_app(block); instr != nullptr; instr = next) {
    next = instr_get_next_app(instr);
    unsigned word;
    std::memcpy(&word, instr_get_raw_bits(instr), sizeof word);
    if (word == kMarker) {
      insert_exchange({drcontext, block, instr});
      instrlist_remove(block, instr);
      instr_destroy(drcontext, instr);
    }
  }
  return DR_EMIT_DEFAULT;
}

void event_thread_init(void* drcontext) {
  ++threads;
  drmgr_set_tls_field(drcontext, field, dr_thread_alloc(drcontext, sizeof(Record)));
}

void event_thread_exit(void* drcontext) {
  dr_thread_free(drcontext, drmgr_get_tls_field(drcontext, field), sizeof(Record));
}

void event_exit() {
  module_data_t* module = dr_get_main_module();
  std::fprintf(stderr, "client: %s, %lu threads, %lu marks, %s\n",
               module != nullptr ? "application" : "nothing", threads.load(), marks.load(),
               blocks.load() != 0 ? "blocks" : "no blocks");
  dr_free_module_data(module);
}

}  // namespace

void dr_client_main(client_id_t, int argc, const char* argv[]) {
  std::string error;
  if (!droption_parser_t::parse_argv(DROPTION_SCOPE_CLIENT, argc, argv, &error, nullptr)) {
    dr_fprintf(our_stderr, "Usage error: %s\n", error.c_str());
    dr_abort();
  }
  drmgr_init();
  drmgr_register_thread_init_event(event_thread_init);
  drmgr_register_thread_exit_event(event_thread_exit);
  drmgr_register_bb_app2app_event(event_block, nullptr);
  dr_register_exit_event(event_exit);
  field = drmgr_register_tls_field();
  module_data_t* module = dr_get_main_module();
  executable = module->start;
  dr_free_module_data(module);
}
