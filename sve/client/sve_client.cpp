// The client of the runtime: start, threads, exit, and the rewriting of blocks.
#include <cstdio>
#include <cstring>
#include <string>

#include "dr_api.h"
#include "drmgr.h"
#include "droption.h"
#include "drreg.h"
#include "sve/client/inserted_code.h"
#include "sve/client/thread_records.h"
#include "sve/decode/dispatch.h"
#include "sve/state/cpu_state.h"
#include "sve/state/exports.h"
#include "sve/state/switches.h"
#include "sve/stats/statistics.h"

extern "C" {
// The version of the runtime's interface that the client is built for; a runtime may refuse others.
TAVOK_EXPORT extern const int32_t _USES_DR_VERSION_;
constinit const int32_t _USES_DR_VERSION_ = 602;

// The application's executable, null if the runtime knows none. Kept until the process exits.
TAVOK_EXPORT extern module_data_t* exe;
constinit module_data_t* exe = nullptr;
}

namespace {

app_pc exe_start;  // 0 without a main module
int tls_idx;       // the field that holds the thread's cpu_state
// Counted where blocks are built, by any thread, and without a lock: a report, not a measurement.
std::atomic<uint64_t> aarch64_instr_count;

[[noreturn]] void assertion_failure(int line, const char* expression) {
  dr_fprintf(our_stderr, "ASSERT FAILURE: %s:%d: %s (%s)\n", "sve/client/sve_client", line,
             expression, "");
  dr_abort();
}

cpu_state* thread_record(void* drcontext) {
  return static_cast<cpu_state*>(drmgr_get_tls_field(drcontext, tls_idx));
}

uint32_t word_at(const byte* address) {
  uint32_t word;
  memcpy(&word, address, sizeof word);
  return word;
}

[[gnu::cold]] void report_failure(const byte* pc) {
  fprintf(stderr, "Error: failed to emulate SVE instruction 0x%08x at PC %p\n", word_at(pc),
          static_cast<const void*>(pc));
}

// Called by inserted code, which has stored the other registers and will load them again.
// Flattened, so that counting is done in its frame.
[[gnu::flatten]] void emulate_instruction(unsigned int encoding, unsigned char* pc,
                                          decode_stub stub) {
  void* const drcontext = dr_get_current_drcontext();
  cpu_state* const state = thread_record(drcontext);
  state->pc = reinterpret_cast<uint64_t>(pc);
  const ptr_uint_t x26 = dr_read_saved_reg(drcontext, slot_of_x26);
  const ptr_uint_t x27 = dr_read_saved_reg(drcontext, slot_of_x27);
  const ptr_uint_t x28 = dr_read_saved_reg(drcontext, slot_of_x28);
  state->x[26] = x26, state->x[27] = x27, state->x[28] = x28;
  if (stub(state, encoding) != aarch64_decode_ok) [[unlikely]]
    report_failure(reinterpret_cast<byte*>(state->pc));
  else  // the address out of the record, so that it needs no register over the call of the stub
    update_sve_stats(reinterpret_cast<unsigned int*>(state->pc), encoding);
  const ptr_uint_t new_x26 = state->x[26], new_x27 = state->x[27], new_x28 = state->x[28];
  dr_write_saved_reg(drcontext, slot_of_x26, new_x26);
  dr_write_saved_reg(drcontext, slot_of_x27, new_x27);
  dr_write_saved_reg(drcontext, slot_of_x28, new_x28);
}

// Apart from the walk over a block, whose registers it would take.
[[gnu::noinline]] void rewrite_instruction(const insertion_point& point, decode_stub stub) {
  if (dr_get_stolen_reg() != DR_REG_X28)
    assertion_failure(__LINE__, "dr_get_stolen_reg() == DR_REG_X28");
  insert_save_state(point);
  dr_insert_call_tavok(point.drcontext, point.block, point.where, point.pc,
                       reinterpret_cast<void*>(emulate_instruction), 3,
                       opnd_create_immed_int(word_at(point.pc), OPSZ_4),
                       opnd_create_immed_int(reinterpret_cast<ptr_int_t>(point.pc), OPSZ_8),
                       opnd_create_immed_int(reinterpret_cast<ptr_int_t>(stub), OPSZ_8));
  insert_restore_state(point);
  instrlist_remove(point.block, point.where);
  instr_destroy(point.drcontext, point.where);
}

// Without the switch shared libraries are left alone.
bool is_out_of_scope(app_pc address) {
  if (sve_in_libraries)
    return false;
  module_data_t* const module = dr_lookup_module(address);
  if (module == nullptr)
    return false;
  const app_pc start = module->start;
  dr_free_module_data(module);
  return start != exe_start;
}

dr_emit_flags_t event_instruction_change(void* drcontext, void* tag, instrlist_t* bb,
                                         bool /*for_trace*/, bool /*translating*/) {
  if (is_out_of_scope(dr_fragment_app_pc(tag)))
    return DR_EMIT_DEFAULT;
  cpu_state* const record = thread_record(drcontext);
  uint64_t others = 0;
  instr_t* next = nullptr;
  for (instr_t* instr = instrlist_first_app(bb); instr != nullptr; instr = next) {
    next = instr_get_next_app(instr);
    const uint32_t word = word_at(instr_get_raw_bits(instr));
    // What most words are is seen here, without a call.
    const decode_stub stub = in_sve_space(word) ? is_sve(word) : nullptr;
    if (stub != nullptr) {
      rewrite_instruction({drcontext, bb, instr, instr_get_app_pc(instr), record}, stub);
    } else {
      others++;
      if (instr_get_opcode(instr) == OP_msr)
        insert_fz16_hook({drcontext, bb, instr, instr_get_app_pc(instr), record});
    }
  }
  aarch64_instr_count.fetch_add(others, std::memory_order_relaxed);
  return DR_EMIT_DEFAULT;
}

void event_thread_init(void* drcontext) {
  auto* const data = static_cast<cpu_state*>(dr_thread_alloc(drcontext, sizeof(cpu_state)));
  drmgr_set_tls_field(drcontext, tls_idx, data);
  list_thread_record(data);
  begin_thread_counts();
}

void event_thread_exit(void* drcontext) {
  cpu_state* const data = thread_record(drcontext);
  if (data == nullptr)
    assertion_failure(__LINE__, "data != __null");
  end_thread_counts();
  unlist_thread_record(data);
  dr_thread_free(drcontext, data, sizeof(cpu_state));
}

void print_report() {
  const char* const name = exe == nullptr ? "tavok" : basename(exe->full_path);
  fprintf(stderr, "%s: %lu SVE instructions executed\n", name, sve_instr_count.load());
  fprintf(stderr, "%s: %lu Non-SVE AArch64 instructions executed\n", name,
          aarch64_instr_count.load());
}

void event_exit() {
  dr_log(nullptr, DR_LOG_ALL, 1, "SVE client exiting\n");
  print_report();
  if (exe != nullptr)
    dr_free_module_data(exe);
  exe = nullptr;
  if (!drmgr_unregister_bb_app2app_event(event_instruction_change) || drreg_exit() != DRREG_SUCCESS)
    assertion_failure(__LINE__, "false");
  drmgr_exit();
}

// A predicate of the record has a byte for each bit.
void pack_predicate(const uint8_t* predicate, unsigned char* to) {
  uint16_t bits = 0;
  for (unsigned i = 0; i < vector_bytes; i++)
    bits |= static_cast<uint16_t>((predicate[i] & 1) << i);
  memcpy(to, &bits, sizeof bits);
}

void unpack_predicate(const unsigned char* from, uint8_t* predicate) {
  uint16_t bits;
  memcpy(&bits, from, sizeof bits);
  for (unsigned i = 0; i < vector_bytes; i++)
    predicate[i] = bits >> i & 1;
}

void reject_arguments(int argc, const char* argv[]) {
  std::string error;
  if (droption_parser_t::parse_argv(DROPTION_SCOPE_CLIENT, argc, argv, &error, nullptr))
    return;
  dr_fprintf(our_stderr, "Usage error: %s\n", error.c_str());
  dr_abort();
}

}  // namespace

void sve_save_predicates(void* drcontext, unsigned char* to) {
  const cpu_state* const record = thread_record(drcontext);
  for (unsigned n = 0; n < p_registers; n++, to += vector_bytes / 8)
    pack_predicate(record->p[n], to);
  pack_predicate(record->ffr, to);
}

void sve_load_predicates(void* drcontext, const unsigned char* from) {
  cpu_state* const record = thread_record(drcontext);
  for (unsigned n = 0; n < p_registers; n++, from += vector_bytes / 8)
    unpack_predicate(from, record->p[n]);
  unpack_predicate(from, record->ffr);
}

void dr_client_main(client_id_t, int argc, const char* argv[]) {
  dr_set_client_name("Kestrin SVE emulation client", "tavok developers");
  reject_arguments(argc, argv);
  drreg_options_t options = {};
  options.struct_size = sizeof options;
  if (!drmgr_init() || drreg_init(&options) != DRREG_SUCCESS)
    assertion_failure(__LINE__, "false");
  exe = dr_get_main_module();
  exe_start = exe == nullptr ? nullptr : exe->start;
  drmgr_register_thread_init_event(event_thread_init);
  drmgr_register_thread_exit_event(event_thread_exit);
  dr_register_exit_event(event_exit);
  if (!drmgr_register_bb_app2app_event(event_instruction_change, nullptr))
    assertion_failure(__LINE__, "false");
  tls_idx = drmgr_register_tls_field();
  sve_instr_count = 0;
  aarch64_instr_count = 0;
  keep_thread_records_over_fork();
  dr_log(nullptr, DR_LOG_ALL, 1, "SVE client initializing\n");
}
