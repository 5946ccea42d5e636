// Blocks before and behind the client's rewriting, word by word, and the call that it inserts.
#include <gtest/gtest.h>

#include <cstring>
#include <map>

#include "dr_api.h"
#include "sve/decode/dispatch.h"
#include "sve/state/cpu_state.h"
#include "sve/stats/statistics.h"
#include "tests/core/captured_stderr.h"
#include "tests/core/fake_runtime.h"

extern "C" module_data_t* exe;

namespace {

using fake::runtime;

// ---- the words, from the architecture's encodings -----------------------------------------------

constexpr uint32_t nop = 0xd503201f;
constexpr uint32_t add_z0_p0_z0 = 0x04000000;  // ADD Z0.B, P0/M, Z0.B, Z0.B
constexpr uint32_t mul_z0_z0_z0 = 0x04206000;  // SVE of a later version, without a row
constexpr unsigned sp = 31, zr = 31, stolen = 28;

constexpr uint32_t add_0(unsigned d, unsigned n) { return 0x91000000 | n << 5 | d; }
constexpr uint32_t str_x(unsigned t, unsigned n, unsigned offset) {
  return 0xf9000000 | offset / 8 << 10 | n << 5 | t;
}
constexpr uint32_t ldr_x(unsigned t, unsigned n, unsigned offset) {
  return str_x(t, n, offset) | 0x00400000;
}
constexpr uint32_t str_w(unsigned t, unsigned n, unsigned offset) {
  return 0xb9000000 | offset / 4 << 10 | n << 5 | t;
}
constexpr uint32_t ldr_w(unsigned t, unsigned n, unsigned offset) {
  return str_w(t, n, offset) | 0x00400000;
}
constexpr uint32_t str_q(unsigned t, unsigned n, unsigned offset) {
  return 0x3d800000 | offset / 16 << 10 | n << 5 | t;
}
constexpr uint32_t ldr_q(unsigned t, unsigned n, unsigned offset) {
  return str_q(t, n, offset) | 0x00400000;
}
constexpr uint32_t stp_x(unsigned t, unsigned n, unsigned offset) {  // and t + 1
  return 0xa9000000 | offset / 8 << 15 | (t + 1) << 10 | n << 5 | t;
}
constexpr uint32_t ldp_x(unsigned t, unsigned n, unsigned offset) {
  return stp_x(t, n, offset) | 0x00400000;
}
constexpr uint32_t mrs_nzcv(unsigned t) { return 0xd53b4200 | t; }
constexpr uint32_t mrs_fpcr(unsigned t) { return 0xd53b4400 | t; }
constexpr uint32_t mrs_fpsr(unsigned t) { return 0xd53b4420 | t; }
constexpr uint32_t msr_nzcv(unsigned t) { return 0xd51b4200 | t; }
constexpr uint32_t msr_fpcr(unsigned t) { return 0xd51b4400 | t; }
constexpr uint32_t msr_fpsr(unsigned t) { return 0xd51b4420 | t; }
constexpr uint32_t and_lsl_19(unsigned d, unsigned n, unsigned m) {
  return 0x8a000000 | m << 16 | 19 << 10 | n << 5 | d;
}

// The slots and the stolen register's value in the fake runtime's context.
constexpr unsigned stolen_value = 16;
constexpr unsigned slot(unsigned number) { return 24 + 8 * (number - 1); }

// ---- blocks as text -----------------------------------------------------------------------------

std::string text(const char* format, uint64_t a, uint64_t b = 0, uint64_t c = 0) {
  char buffer[100];
  snprintf(buffer, sizeof buffer, format, a, b, c);
  return buffer;
}

using Lines = std::vector<std::string>;

// The expected block: words by their origin, constant loads and calls.
struct Expected {
  Lines lines;
  void original(uint32_t word, const uint32_t* pc) {
    lines.push_back(text("original %08lx at %lx", word, reinterpret_cast<uint64_t>(pc)));
  }
  void created(uint32_t word, const uint32_t* pc) {
    lines.push_back(text("created %08lx at %lx", word, reinterpret_cast<uint64_t>(pc)));
  }
  void inserted(uint32_t word) { lines.push_back(text("inserted %08lx", word)); }
  void constant(unsigned reg, uint64_t value) {
    lines.push_back(text("constant X%lu = %lx", reg, value));
  }
  void call(uint32_t word, const uint32_t* pc) {
    lines.push_back(text("call %lx, %lx, %lx", word, reinterpret_cast<uint64_t>(pc),
                         reinterpret_cast<uint64_t>(is_sve(word))));
  }

  void exchange(uint32_t word, const uint32_t* pc, const cpu_state* record) {
    const auto c = [&](uint32_t created_word) { created(created_word, pc); };
    const auto x = [](unsigned n) { return static_cast<unsigned>(offsetof(cpu_state, x)) + 8 * n; };
    const auto z = [](unsigned n) {
      return static_cast<unsigned>(offsetof(cpu_state, z)) + 16 * n;
    };
    constexpr unsigned nzcv = offsetof(cpu_state, nzcv), fpsr = offsetof(cpu_state, fpsr),
                       fpcr = offsetof(cpu_state, fpcr);
    inserted(str_x(26, stolen, slot(1)));
    inserted(str_x(27, stolen, slot(2)));
    inserted(ldr_x(27, stolen, stolen_value));
    inserted(str_x(27, stolen, slot(3)));
    constant(27, reinterpret_cast<uint64_t>(record));
    c(add_0(26, sp));
    c(str_x(26, 27, x(31)));
    for (unsigned n = 0; n <= 24; n += 2)
      c(stp_x(n, 27, x(n)));
    c(stp_x(29, 27, x(29)));
    for (unsigned n = 0; n < 32; n++)
      c(str_q(n, 27, z(n)));
    c(mrs_nzcv(26));
    c(str_x(26, 27, nzcv));
    c(mrs_fpsr(26));
    c(str_w(26, 27, fpsr));
    c(mrs_fpcr(26));
    c(str_w(26, 27, fpcr));
    call(word, pc);
    constant(27, reinterpret_cast<uint64_t>(record));
    c(ldr_w(26, 27, fpcr));
    c(msr_fpcr(26));
    c(ldr_w(26, 27, fpsr));
    c(msr_fpsr(26));
    c(ldr_x(26, 27, nzcv));
    c(msr_nzcv(26));
    for (unsigned n = 0; n < 32; n++)
      c(ldr_q(n, 27, z(n)));
    for (unsigned n = 0; n <= 24; n += 2)
      c(ldp_x(n, 27, x(n)));
    c(ldp_x(29, 27, x(29)));
    c(ldr_x(26, 27, x(31)));
    c(add_0(sp, 26));
    inserted(ldr_x(27, stolen, slot(3)));
    inserted(str_x(27, stolen, stolen_value));
    inserted(ldr_x(27, stolen, slot(2)));
    inserted(ldr_x(26, stolen, slot(1)));
  }

  void hook(const uint32_t* pc, const cpu_state* record, unsigned source, unsigned mask,
            unsigned address) {
    inserted(str_x(mask, stolen, slot(2)));
    inserted(str_x(address, stolen, slot(3)));
    constant(mask, 1);
    created(and_lsl_19(mask, source, mask), pc);
    constant(address, reinterpret_cast<uint64_t>(record));
    created(str_w(mask, address, offsetof(cpu_state, fz16)), pc);
    inserted(ldr_x(mask, stolen, slot(2)));
    inserted(ldr_x(address, stolen, slot(3)));
  }
};

bool is_move_wide(uint32_t word) { return (word & 0x9f800000) == 0x92800000; }

// Takes in MOVN, MOVZ or MOVK.
uint64_t move_wide(uint64_t value, uint32_t word) {
  const unsigned shift = (word >> 21 & 3) * 16;
  const uint64_t immediate = static_cast<uint64_t>(word >> 5 & 0xffff) << shift;
  switch (word >> 29 & 3) {
  case 0:
    return ~immediate;
  case 2:
    return immediate;
  default:
    return (value & ~(0xffffull << shift)) | immediate;
  }
}

bool begins_constant(uint32_t word) { return is_move_wide(word) && (word >> 29 & 3) != 3; }

Lines block_lines(const instrlist_t& list) {
  Lines lines;
  const instr_t* next = nullptr;
  for (const instr_t* instr = list.first; instr != nullptr; instr = next) {
    next = instr->next;
    const auto pc = reinterpret_cast<uint64_t>(instr->pc);
    switch (instr->kind) {
    case ir::kind::original:
      lines.push_back(text("original %08lx at %lx", instr->word, pc));
      break;
    case ir::kind::created:
      lines.push_back(text("created %08lx at %lx", instr->word, pc));
      break;
    case ir::kind::call:
      lines.push_back(text("call %lx, %lx, %lx", instr->call.arguments[0], instr->call.arguments[1],
                           instr->call.arguments[2]));
      EXPECT_EQ(reinterpret_cast<uint64_t>(instr->pc), instr->call.arguments[1]);
      break;
    case ir::kind::meta:
      if (!begins_constant(instr->word)) {
        lines.push_back(text("inserted %08lx", instr->word));
        break;
      }
      uint64_t value = move_wide(0, instr->word);
      for (; next != nullptr && is_move_wide(next->word) && !begins_constant(next->word) &&
             (next->word & 31) == (instr->word & 31);
           next = next->next)
        value = move_wide(value, next->word);
      lines.push_back(text("constant X%lu = %lx", instr->word & 31, value));
      break;
    }
  }
  return lines;
}

// Names the first difference of two long blocks.
void expect_same(const Lines& lines, const Lines& expected) {
  for (size_t i = 0; i < lines.size() && i < expected.size(); i++)
    ASSERT_EQ(lines[i], expected[i]) << "at line " << i;
  EXPECT_EQ(lines.size(), expected.size());
}

// ---- tests --------------------------------------------------------------------------------------

class Rewriting : public testing::Test {
protected:
  uint32_t code[8] = {};            // the application's
  uint32_t library[8] = {};         // a shared library's
  uint32_t generated_code[8] = {};  // in no module
  instrlist_t list;

  static module_data_t module_of(uint32_t (&words)[8], const char* path) {
    const auto start = reinterpret_cast<app_pc>(words);
    return {start, start + sizeof words, start, path};
  }

  void SetUp() override {
    runtime = {};
    runtime.modules = {module_of(code, "/bin/app"), module_of(library, "/lib/library.so")};
    const char* arguments[] = {"client"};
    dr_client_main(0, 1, arguments);
    runtime.thread_init(&runtime.thread);
  }
  void TearDown() override {
    ir::clear(runtime.thread.memory, list);
    ir::dispose(runtime.thread.memory);
    runtime.thread_exit(&runtime.thread);
    captured_stderr([] { runtime.exit(); });
    EXPECT_EQ(runtime.modules_held, 0);
  }

  static cpu_state* record() { return static_cast<cpu_state*>(runtime.thread.field); }

  // Writes the words to the place, and rewrites them as one block.
  Lines rewritten(uint32_t* place, const std::vector<uint32_t>& words) {
    ir::clear(runtime.thread.memory, list);
    for (size_t i = 0; i < words.size(); i++) {
      place[i] = words[i];
      ir::append(list, ir::new_original(runtime.thread.memory, words[i],
                                        reinterpret_cast<app_pc>(place + i)));
    }
    fake::Tag tag = {reinterpret_cast<app_pc>(place)};
    EXPECT_EQ(runtime.block(&runtime.thread, &tag, &list, false, false), DR_EMIT_DEFAULT);
    return block_lines(list);
  }

  // The second line of the report ends the client, so it is started again.
  uint64_t non_sve_count() {
    const std::string report = captured_stderr([] { runtime.exit(); });
    const char* arguments[] = {"client"};
    dr_client_main(0, 1, arguments);
    unsigned long count = 0;
    EXPECT_EQ(sscanf(report.substr(report.find('\n') + 1).c_str(), "app: %lu Non-SVE", &count), 1)
        << report;
    return count;
  }
};

TEST_F(Rewriting, LeavesOtherInstructionsAlone) {
  Expected expected;
  const std::vector<uint32_t> words = {nop, mul_z0_z0_z0, mrs_fpcr(0), msr_fpsr(0), msr_nzcv(3)};
  for (size_t i = 0; i < words.size(); i++)
    expected.original(words[i], code + i);
  expect_same(rewritten(code, words), expected.lines);
  EXPECT_EQ(non_sve_count(), words.size());
  expect_same(rewritten(code, {}), Lines{});
}

TEST_F(Rewriting, ExchangesStateAroundAnSveInstruction) {
  Expected expected;
  expected.original(nop, code);
  expected.exchange(add_z0_p0_z0, code + 1, record());
  expected.original(nop, code + 2);
  expect_same(rewritten(code, {nop, add_z0_p0_z0, nop}), expected.lines);
  EXPECT_EQ(non_sve_count(), 2u);
}

TEST_F(Rewriting, GivesEachOfTwoInstructionsTheFullExchange) {
  Expected expected;
  expected.exchange(add_z0_p0_z0, code, record());
  expected.exchange(add_z0_p0_z0 | 3, code + 1, record());
  expect_same(rewritten(code, {add_z0_p0_z0, add_z0_p0_z0 | 3}), expected.lines);
  EXPECT_EQ(non_sve_count(), 0u);
}

TEST_F(Rewriting, WatchesWritesOfFpcr) {
  const struct {
    unsigned source, mask, address;
  } cases[] = {{20, 22, 21}, {21, 20, 22}, {0, 20, 21}, {22, 20, 21}, {28, 20, 21}, {zr, 20, 21}};
  for (const auto& [source, mask, address] : cases) {
    Expected expected;
    expected.hook(code, record(), source, mask, address);
    expected.original(msr_fpcr(source), code);
    expected.original(nop, code + 1);
    expect_same(rewritten(code, {msr_fpcr(source), nop}), expected.lines);
  }
  EXPECT_EQ(non_sve_count(), 2 * std::size(cases));
}

TEST_F(Rewriting, KnowsTheExecutableByItsModule) {
  const std::vector<uint32_t> words = {add_z0_p0_z0, msr_fpcr(0), nop};
  Expected untouched;
  for (size_t i = 0; i < words.size(); i++)
    untouched.original(words[i], library + i);
  expect_same(rewritten(library, words), untouched.lines);
  EXPECT_EQ(non_sve_count(), 0u);

  Expected expected;
  expected.exchange(add_z0_p0_z0, generated_code, record());
  expected.hook(generated_code + 1, record(), 0, 20, 21);
  expected.original(msr_fpcr(0), generated_code + 1);
  expected.original(nop, generated_code + 2);
  expect_same(rewritten(generated_code, words), expected.lines);
  EXPECT_EQ(non_sve_count(), 2u);
}

TEST_F(Rewriting, RequiresTheStolenRegister) {
  runtime.stolen_register = DR_REG_X27;
  rewritten(code, {nop, msr_fpcr(0)});  // not looked at
  EXPECT_EQ(runtime.errors, "");
  EXPECT_THROW(rewritten(code, {nop, add_z0_p0_z0}), fake::aborted);
  EXPECT_TRUE(fake::is_assertion(runtime.errors, "dr_get_stolen_reg() == DR_REG_X28"))
      << runtime.errors;
}

// ---- the call -----------------------------------------------------------------------------------

// Stubs of the test's own.
uint64_t seen[4];

aarch64_decode_rc change_registers(cpu_state* state, unsigned int word) {
  for (unsigned i = 0; i < 3; i++)
    seen[i] = state->x[26 + i];
  seen[3] = word;
  for (unsigned i = 0; i < 3; i++)
    state->x[26 + i] += 100 + i;
  return aarch64_decode_ok;
}

aarch64_decode_rc fail(cpu_state* state, unsigned int word) {
  change_registers(state, word);
  return aarch64_decode_unimplemented;
}

class Call : public Rewriting {
protected:
  // What the inserted call does, with a stub of the test's.
  std::string call(uint32_t word, decode_stub stub) {
    rewritten(code, {word});
    const instr_t* instr = list.first;
    while (instr->kind != ir::kind::call)
      instr = instr->next;
    const auto callee =
        reinterpret_cast<void (*)(unsigned int, unsigned char*, decode_stub)>(instr->call.callee);
    for (uint64_t i = 1; i <= 3; i++)
      runtime.thread.slots[i] = i << 40;
    record()->pc = 0;
    icounts.clear();
    sve_instr_count = 0;
    return captured_stderr([&] { callee(word, reinterpret_cast<app_pc>(code), stub); });
  }

  void expect_registers_exchanged() {
    EXPECT_EQ(record()->pc, reinterpret_cast<uint64_t>(code));
    for (uint64_t i = 0; i < 3; i++) {
      EXPECT_EQ(seen[i], (i + 1) << 40) << i;
      EXPECT_EQ(runtime.thread.slots[i + 1], ((i + 1) << 40) + 100 + i) << i;
    }
    EXPECT_EQ(seen[3], add_z0_p0_z0);
  }
};

TEST_F(Call, EmulatesAndCounts) {
  EXPECT_EQ(call(add_z0_p0_z0, change_registers), "");
  expect_registers_exchanged();
  EXPECT_EQ(sve_instr_count, 1u);
  ASSERT_TRUE(icounts.contains(code));
  EXPECT_EQ(icounts.at(code).encoding, add_z0_p0_z0);
  EXPECT_EQ(executions(*icounts.find(code)), 1u);
}

TEST_F(Call, ReportsAFailureAndGoesOn) {
  char message[120];
  snprintf(message, sizeof message, "Error: failed to emulate SVE instruction 0x%08x at PC %p\n",
           add_z0_p0_z0, static_cast<void*>(code));
  EXPECT_EQ(call(add_z0_p0_z0, fail), message);
  expect_registers_exchanged();
  EXPECT_EQ(sve_instr_count, 0u);
  EXPECT_TRUE(icounts.empty());
}

}  // namespace
