// Lists, inserted sequences, what a client can ask of an instruction, and the registrations.
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "runtime/include/drmgr.h"
#include "runtime/include/droption.h"
#include "runtime/include/drreg.h"
#include "runtime/ir/events.h"
#include "runtime/ir/ir.h"
#include "runtime/ir/mov_immediate.h"
#include "tests/runtime/ir_disassembler.h"

namespace {

constexpr std::uint32_t nop = 0xd503201f;

struct list_test : testing::Test {
  ir::arena memory;
  instrlist_t list;
  byte code[64] = {};

  ~list_test() override { ir::dispose(memory); }

  instr_t* original(std::uint32_t word, unsigned index) {
    instr_t* const instr = ir::new_original(memory, word, code + std::size_t{4} * index);
    ir::append(list, instr);
    return instr;
  }

  std::vector<instr_t*> forwards() const {
    std::vector<instr_t*> all;
    for (instr_t* instr = list.first; instr != nullptr; instr = instr->next) {
      all.push_back(instr);
    }
    return all;
  }

  std::vector<instr_t*> backwards() const {
    std::vector<instr_t*> all;
    for (instr_t* instr = list.last; instr != nullptr; instr = instr->previous) {
      all.insert(all.begin(), instr);
    }
    return all;
  }

  std::vector<std::string> texts() const {
    std::vector<std::uint32_t> words;
    for (const instr_t* instr : forwards()) {
      words.push_back(instr->word);
    }
    return ir_test::disassemble(words);
  }
};

TEST_F(list_test, random_insertions_and_removals_match_a_vector) {
  std::mt19937 random(11);
  std::vector<instr_t*> model;
  for (unsigned step = 0; step < 2000; ++step) {
    const size_t place = random() % (model.size() + 1);
    if (random() % 3 != 0) {
      instr_t* const instr = ir::new_meta(memory, step, nullptr);
      instrlist_preinsert(&list, place < model.size() ? model[place] : nullptr, instr);
      model.insert(model.begin() + static_cast<std::ptrdiff_t>(place), instr);
    } else if (place < model.size()) {
      instrlist_remove(&list, model[place]);
      instr_destroy(&memory, model[place]);
      model.erase(model.begin() + static_cast<std::ptrdiff_t>(place));
    }
    ASSERT_EQ(forwards(), model);
    ASSERT_EQ(backwards(), model);
  }
}

TEST_F(list_test, a_walk_sees_the_application_s_instructions_while_others_are_inserted) {
  EXPECT_EQ(instrlist_first_app(&list), nullptr);
  for (unsigned i = 0; i < 4; ++i) {
    original(nop, i);
  }
  std::vector<app_pc> seen;
  for (instr_t* instr = instrlist_first_app(&list); instr != nullptr;) {
    instr_t* const next = instr_get_next_app(instr);
    seen.push_back(instr_get_app_pc(instr));
    dr_save_reg(&memory, &list, instr, DR_REG_X0, SPILL_SLOT_1);
    instr_t* const created = instr_create_1dst_1src(&memory, OP_mrs, opnd_create_reg(DR_REG_X0),
                                                    opnd_create_reg(DR_REG_NZCV));
    instrlist_preinsert(&list, instr, instr_set_translation(created, instr_get_app_pc(instr)));
    instrlist_remove(&list, instr);
    instr_destroy(&memory, instr);
    instr = next;
  }
  EXPECT_EQ(seen, (std::vector<app_pc>{code, code + 4, code + 8, code + 12}));
  for (const instr_t* instr : forwards()) {
    EXPECT_EQ(instr->kind, instr->opcode == OP_mrs ? ir::kind::created : ir::kind::meta);
    EXPECT_EQ(ir::is_app(*instr), instr->opcode == OP_mrs);
  }
  EXPECT_EQ(forwards().size(), 8u);
}

TEST_F(list_test, memory_is_used_again) {
  const ir::arena::chunk* first_chunk = nullptr;
  for (unsigned round = 0; round < 100; ++round) {
    for (unsigned i = 0; i < 200; ++i) {
      original(nop, 0);
    }
    ir::clear(memory, list);
    EXPECT_EQ(list.first, nullptr);
    EXPECT_EQ(list.last, nullptr);
    first_chunk = first_chunk == nullptr ? memory.chunks : first_chunk;
    ASSERT_EQ(memory.chunks, first_chunk);
  }
}

TEST_F(list_test, inserted_sequences) {
  instr_t* const where = original(nop, 3);
  dr_save_reg(&memory, &list, where, DR_REG_X26, SPILL_SLOT_1);
  dr_save_reg(&memory, &list, where, DR_REG_X27, SPILL_SLOT_3);
  dr_restore_reg(&memory, &list, where, DR_REG_X0, SPILL_SLOT_2);
  EXPECT_TRUE(dr_insert_get_stolen_reg_value(&memory, &list, where, DR_REG_X27));
  EXPECT_TRUE(dr_insert_set_stolen_reg_value(&memory, &list, where, DR_REG_X30));
  EXPECT_FALSE(dr_insert_get_stolen_reg_value(&memory, &list, where, DR_REG_X28));
  EXPECT_FALSE(dr_insert_set_stolen_reg_value(&memory, &list, where, DR_REG_XSP));
  instr_t* first = nullptr;
  instr_t* last = nullptr;
  instrlist_insert_mov_immed_ptrsz(&memory, 0x5500001234, opnd_create_reg(DR_REG_X27), &list, where,
                                   &first, &last);
  EXPECT_EQ(texts(), (std::vector<std::string>{"str x26, [x28, #512]", "str x27, [x28, #528]",
                                               "ldr x0, [x28, #520]", "ldr x27, [x28, #224]",
                                               "str x30, [x28, #224]", "movz x27, #0x1234",
                                               "movk x27, #0x55, lsl #32", "hint #0x0"}));
  EXPECT_EQ(first, where->previous->previous);
  EXPECT_EQ(last, where->previous);
  for (const instr_t* instr : forwards()) {
    EXPECT_EQ(instr->kind, instr == where ? ir::kind::original : ir::kind::meta);
    EXPECT_EQ(instr->pc, code + 12);
  }
}

TEST_F(list_test, inserted_call) {
  instr_t* const where = original(nop, 0);
  const auto imm = [](ptr_int_t value, opnd_size_t size) {
    return opnd_create_immed_int(value, size);
  };
  dr_insert_call_tavok(&memory, &list, where, code + 8, code, 3,
                       imm(static_cast<std::int32_t>(0x85808000), OPSZ_4), imm(-2, OPSZ_8),
                       imm(0x123456789abc, OPSZ_8));
  instr_t* const call = list.first;
  ASSERT_EQ(call->kind, ir::kind::call);
  EXPECT_EQ(call->next, where);
  EXPECT_EQ(call->pc, code + 8);
  EXPECT_EQ(call->call.callee, code);
  EXPECT_EQ(call->call.arguments[0], 0x85808000u);
  EXPECT_EQ(call->call.arguments[1], ~std::uint64_t{1});
  EXPECT_EQ(call->call.arguments[2], 0x123456789abcu);
  EXPECT_EQ(instrlist_first_app(&list), where);
  EXPECT_EQ(instr_get_raw_bits(call), nullptr);
}

TEST_F(list_test, what_a_client_can_ask) {
  struct row {
    std::uint32_t word;
    int opcode;
    reg_id_t dst;
    reg_id_t src;
  };
  constexpr row rows[] = {
      {0xd51b4414, OP_msr, DR_REG_FPCR, DR_REG_X20},     // msr fpcr, x20
      {0xd51b441f, OP_msr, DR_REG_FPCR, DR_REG_XZR},     // msr fpcr, xzr
      {0xd51b4420, OP_msr, DR_REG_FPSR, DR_REG_X0},      // msr fpsr, x0
      {0xd51b421c, OP_msr, DR_REG_NZCV, DR_REG_X28},     // msr nzcv, x28
      {0xd51bd041, OP_msr, DR_REG_NULL, DR_REG_X1},      // msr tpidr_el0, x1
      {0xd53b4400, OP_other, DR_REG_NULL, DR_REG_NULL},  // mrs x0, fpcr
      {0xd50342df, OP_other, DR_REG_NULL, DR_REG_NULL},  // msr daifset, #2
      {0x8b020020, OP_other, DR_REG_NULL, DR_REG_NULL},  // add x0, x1, x2
      {0x04a00000, OP_other, DR_REG_NULL, DR_REG_NULL},  // an SVE instruction
  };
  for (const row& r : rows) {
    instr_t* const instr = original(r.word, 1);
    const bool msr = r.opcode == OP_msr;
    EXPECT_EQ(*reinterpret_cast<std::uint32_t*>(instr_get_raw_bits(instr)), r.word);
    EXPECT_EQ(instr_get_opcode(instr), r.opcode) << std::hex << r.word;
    EXPECT_EQ(instr_num_dsts(instr), msr ? 1 : 0);
    EXPECT_EQ(opnd_is_reg(instr_get_dst(instr, 0)), msr);
    EXPECT_EQ(opnd_get_reg(instr_get_dst(instr, 0)), r.dst);
    EXPECT_EQ(opnd_get_reg(instr_get_src(instr, 0)), r.src);
  }
}

// What MOVZ, MOVN and MOVK do, from their definition.
std::uint64_t run_moves(const std::uint32_t* words, unsigned count, unsigned rd) {
  std::uint64_t value = 0xdeadbeefdeadbeef;
  for (unsigned i = 0; i < count; ++i) {
    const std::uint32_t word = words[i];
    const unsigned at = (word >> 21 & 3) * 16;
    const std::uint64_t imm = std::uint64_t{word >> 5 & 0xffff} << at;
    EXPECT_EQ(word & 31, rd);
    EXPECT_EQ(word >> 23 & 0x3f, 0x25u);
    switch (word >> 29 & 3) {
    case 0:
      value = ~imm;
      break;
    case 2:
      value = imm;
      break;
    case 3:
      value = (value & ~(std::uint64_t{0xffff} << at)) | imm;
      break;
    default:
      ADD_FAILURE() << std::hex << word;
    }
    value = word >> 31 != 0 ? value : static_cast<std::uint32_t>(value);
  }
  return value;
}

TEST(mov_immediate, value_and_length) {
  struct row {
    std::uint64_t value;
    unsigned length;
  };
  constexpr row rows[] = {
      {0, 1},
      {1, 1},
      {0xffff, 1},
      {0x10000, 1},
      {0xffff0000, 1},
      {0xffffffff, 1},
      {0xffff1234, 1},
      {0x1234ffff, 1},
      {0x12345678, 2},
      {0x7fff0001, 2},
      {0xffff00000000, 1},
      {0x5500001234, 2},
      {0xffffffffffffffff, 1},
      {0xffffffffffff0000, 1},
      {0xffffffff0000ffff, 1},
      {0xffffffff00001234, 2},
      {0x1234ffffffff5678, 2},
      {0x00ffffffffffffff, 1},
      {0xffff0000ffff0000, 2},
      {0xffff123456789abc, 3},
      {0x0000123456789abc, 3},
      {0x1234ffff5678, 2},
      {0x1234567800001234, 3},
      {0x1234567800000000, 2},
      {0x12345678ffffffff, 2},
      {0x123456789abcdef0, 4},
  };
  std::uint32_t words[ir::mov_immediate_max];
  for (const row& r : rows) {
    const unsigned length = ir::mov_immediate(7, r.value, words);
    EXPECT_EQ(length, r.length) << std::hex << r.value;
    EXPECT_EQ(run_moves(words, length, 7), r.value) << std::hex << r.value;
  }
}

TEST(mov_immediate, random_values_made_of_special_halfwords) {
  std::mt19937_64 random(5);
  std::uint32_t words[ir::mov_immediate_max];
  for (unsigned i = 0; i < 20000; ++i) {
    std::uint64_t value = random();
    for (unsigned at = 0; at < 64; at += 16) {
      const unsigned choice = random() % 3;
      const std::uint64_t mask = std::uint64_t{0xffff} << at;
      value = choice == 0 ? value & ~mask : choice == 1 ? value | mask : value;
    }
    const unsigned rd = random() % 31;
    const unsigned length = ir::mov_immediate(rd, value, words);
    ASSERT_EQ(run_moves(words, length, rd), value) << std::hex << value;
  }
}

TEST(droption, arguments) {
  struct row {
    std::vector<const char*> arguments;
    bool passes;
    const char* error;
    int last;
  };
  const row rows[] = {
      {{"client"}, true, "", 1},
      {{"client", "--"}, true, "", 2},
      {{"client", "--", "foo"}, true, "", 2},
      {{"client", "-foo"}, false, "Unknown option: -foo", 1},
      {{"client", "foo", "--"}, false, "Unknown option: foo", 1},
      {{"client", ""}, false, "Unknown option: ", 1},
      {{"client", "---"}, false, "Unknown option: ---", 1},
  };
  for (const row& r : rows) {
    std::vector<const char*> argv = r.arguments;
    const int argc = static_cast<int>(argv.size());
    std::string error;
    int last = -1;
    EXPECT_EQ(
        droption_parser_t::parse_argv(DROPTION_SCOPE_CLIENT, argc, argv.data(), &error, &last),
        r.passes);
    EXPECT_EQ(error, r.error);
    EXPECT_EQ(last, r.last);
    EXPECT_EQ(
        droption_parser_t::parse_argv(DROPTION_SCOPE_CLIENT, argc, argv.data(), nullptr, nullptr),
        r.passes);
  }
}

void on_thread_1(void*) {}
void on_thread_2(void*) {}
void on_exit() {}
dr_emit_flags_t on_block(void*, void*, instrlist_t*, bool, bool) { return DR_EMIT_DEFAULT; }

TEST(events, registrations_last_until_drmgr_exit) {
  ASSERT_TRUE(drmgr_init());
  EXPECT_TRUE(drmgr_register_thread_init_event(on_thread_1));
  EXPECT_TRUE(drmgr_register_thread_init_event(on_thread_2));
  EXPECT_FALSE(drmgr_register_thread_init_event(on_thread_1));
  EXPECT_EQ(std::vector(ir::events.thread_init.begin(), ir::events.thread_init.end()),
            (std::vector<drmgr_thread_cb_t>{on_thread_1, on_thread_2}));
  drmgr_priority_t priority = {};
  EXPECT_FALSE(drmgr_register_bb_app2app_event(on_block, &priority));
  EXPECT_TRUE(drmgr_register_bb_app2app_event(on_block, nullptr));
  EXPECT_TRUE(drmgr_unregister_bb_app2app_event(on_block));
  EXPECT_FALSE(drmgr_unregister_bb_app2app_event(on_block));
  EXPECT_EQ(ir::events.block.count, 0u);
  dr_register_exit_event(on_exit);
  EXPECT_EQ(ir::events.exit.count, 1u);
  for (int field = 0; field < ir::max_tls_fields; ++field) {
    EXPECT_EQ(drmgr_register_tls_field(), field);
  }
  EXPECT_EQ(drmgr_register_tls_field(), -1);
  drmgr_exit();
  EXPECT_EQ(ir::events.thread_init.count, 0u);
  EXPECT_EQ(ir::events.exit.count, 1u);
  EXPECT_EQ(ir::events.tls_fields, 0);
}

TEST(events, register_reservation) {
  EXPECT_EQ(drreg_exit(), DRREG_ERROR);
  drreg_options_t options = {};
  EXPECT_EQ(drreg_init(&options), DRREG_ERROR_INVALID_PARAMETER);
  options.struct_size = sizeof options;
  EXPECT_EQ(drreg_init(&options), DRREG_SUCCESS);
  EXPECT_EQ(drreg_exit(), DRREG_SUCCESS);
  EXPECT_EQ(drreg_exit(), DRREG_ERROR);
}

}  // namespace
