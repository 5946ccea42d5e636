// The encoder against the disassembler: what was asked for is what objdump reads.
#include <gtest/gtest.h>

#include <cinttypes>
#include <cstdarg>
#include <string>
#include <vector>

#include "runtime/ir/encode.h"
#include "runtime/ir/ir.h"
#include "tests/runtime/ir_disassembler.h"

namespace {

using namespace ir;

struct sample {
  std::uint32_t word;
  std::string text;
};

__attribute__((format(printf, 1, 2))) std::string format(const char* pattern, ...) {
  char text[128];
  va_list arguments;
  va_start(arguments, pattern);
  vsnprintf(text, sizeof text, pattern, arguments);
  va_end(arguments);
  return text;
}

std::string x(unsigned n) { return n == 31 ? "xzr" : "x" + std::to_string(n); }
std::string w(unsigned n) { return n == 31 ? "wzr" : "w" + std::to_string(n); }
std::string xsp(unsigned n) { return n == 31 ? "sp" : x(n); }
std::string q(unsigned n) { return "q" + std::to_string(n); }

std::string at(unsigned base, std::int64_t offset) {
  return offset == 0 ? "[" + xsp(base) + "]"
                     : format("[%s, #%" PRId64 "]", xsp(base).c_str(), offset);
}

constexpr unsigned registers[] = {0, 1, 2, 7, 15, 16, 27, 28, 30, 31};

void check(const std::vector<sample>& samples) {
  std::vector<std::uint32_t> words;
  words.reserve(samples.size());
  for (const sample& s : samples) {
    words.push_back(s.word);
  }
  const auto texts = ir_test::disassemble(words);
  for (size_t i = 0; i < samples.size(); ++i) {
    EXPECT_EQ(texts[i], samples[i].text) << std::hex << words[i];
  }
}

TEST(encode, immediate_arithmetic) {
  std::vector<sample> samples;
  for (const unsigned rd : registers) {
    for (const unsigned rn : registers) {
      for (const int imm : {0, 1, 16, 0x7ff, 0x800, 0xfff}) {
        const std::string tail = xsp(rd) + ", " + xsp(rn) + format(", #0x%x", imm);
        samples.push_back({enc::add_imm(rd, rn, imm), "add " + tail});
        samples.push_back({enc::sub_imm(rd, rn, imm), "sub " + tail});
        samples.push_back({enc::add_imm(rd, rn, imm, true), "add " + tail + ", lsl #12"});
        samples.push_back({enc::sub_imm(rd, rn, imm, true), "sub " + tail + ", lsl #12"});
      }
    }
  }
  check(samples);
}

TEST(encode, shifted_registers) {
  using form = std::uint32_t (*)(unsigned, unsigned, unsigned, shift, unsigned);
  struct row {
    const char* name;
    form encode;
    unsigned kinds;
  };
  constexpr row rows[] = {{"and", enc::and_reg, 4},
                          {"orr", enc::orr_reg, 4},
                          {"eor", enc::eor_reg, 4},
                          {"add", enc::add_reg, 3},
                          {"sub", enc::sub_reg, 3}};
  constexpr const char* kinds[] = {"lsl", "lsr", "asr", "ror"};
  std::vector<sample> samples;
  for (const row& r : rows) {
    for (const unsigned rd : registers) {
      for (const unsigned rm : registers) {
        for (unsigned kind = 0; kind < r.kinds; ++kind) {
          for (const unsigned amount : {0, 1, 19, 63}) {
            const unsigned rn = (rd + rm) & 31;
            const bool plain = kind == 0 && amount == 0;
            samples.push_back({r.encode(rd, rn, rm, shift{kind}, amount),
                               std::string(r.name) + " " + x(rd) + ", " + x(rn) + ", " + x(rm) +
                                   (plain ? "" : format(", %s #%u", kinds[kind], amount))});
          }
        }
      }
    }
  }
  check(samples);
}

TEST(encode, bit_fields) {
  std::vector<sample> samples;
  for (unsigned lsb = 0; lsb < 64; ++lsb) {
    for (unsigned width = 1; lsb + width <= 64 && width < 64; ++width) {
      const std::uint64_t mask = ((std::uint64_t{1} << width) - 1) << lsb;
      samples.push_back(
          {enc::and_ones(3, 28, lsb, width), format("and x3, x28, #0x%" PRIx64, mask)});
      samples.push_back(
          {enc::ubfx(1, 30, lsb, width), format("ubfm x1, x30, #%u, #%u", lsb, lsb + width - 1)});
      samples.push_back({enc::ubfiz(30, 2, lsb, width),
                         format("ubfm x30, x2, #%u, #%u", (64 - lsb) % 64, width - 1)});
      samples.push_back({enc::bfi(1, 30, lsb, width),
                         format("bfm x1, x30, #%u, #%u", (64 - lsb) % 64, width - 1)});
    }
  }
  samples.push_back({enc::lsl_imm(4, 5, 3), "ubfm x4, x5, #61, #60"});
  samples.push_back({enc::lsr_imm(4, 5, 3), "ubfm x4, x5, #3, #63"});
  check(samples);
}

TEST(encode, wide_moves) {
  std::vector<sample> samples;
  for (const unsigned rd : registers) {
    for (const unsigned imm : {0u, 1u, 0x8000u, 0xffffu}) {
      for (unsigned hw = 0; hw < 4; ++hw) {
        const std::string tail =
            format(", #0x%x", imm) + (hw == 0 ? "" : format(", lsl #%u", 16 * hw));
        samples.push_back({enc::movz(rd, imm, hw), "movz " + x(rd) + tail});
        samples.push_back({enc::movn(rd, imm, hw), "movn " + x(rd) + tail});
        samples.push_back({enc::movk(rd, imm, hw), "movk " + x(rd) + tail});
        if (hw < 2) {
          samples.push_back({enc::movn_w(rd, imm, hw), "movn " + w(rd) + tail});
        }
      }
    }
    samples.push_back({enc::mov_reg(rd, 17), "orr " + x(rd) + ", xzr, x17"});
  }
  check(samples);
}

TEST(encode, loads_and_stores_with_unsigned_offset) {
  using form = std::uint32_t (*)(unsigned, unsigned, std::int64_t);
  struct row {
    const char* name;
    form encode;
    std::string (*text)(unsigned);
    unsigned size;
  };
  const row rows[] = {{"ldrb", enc::ldr_b, w, 1}, {"strb", enc::str_b, w, 1},
                      {"ldr", enc::ldr_w, w, 4},  {"str", enc::str_w, w, 4},
                      {"ldr", enc::ldr_x, x, 8},  {"str", enc::str_x, x, 8},
                      {"ldr", enc::ldr_q, q, 16}, {"str", enc::str_q, q, 16}};
  std::vector<sample> samples;
  for (const row& r : rows) {
    for (const unsigned rt : registers) {
      for (const unsigned rn : registers) {
        for (const unsigned units : {0, 1, 18, 0x555, 0xfff}) {
          const std::int64_t offset = std::int64_t{units} * r.size;
          samples.push_back({r.encode(rt, rn, offset),
                             std::string(r.name) + " " + r.text(rt) + ", " + at(rn, offset)});
        }
      }
    }
  }
  for (const unsigned rm : registers) {
    samples.push_back({enc::ldr_x_indexed(3, 31, rm), "ldr x3, [sp, " + x(rm) + ", lsl #3]"});
  }
  check(samples);
}

TEST(encode, pairs) {
  using form = std::uint32_t (*)(unsigned, unsigned, unsigned, std::int64_t);
  struct row {
    const char* name;
    form encode;
    std::string (*text)(unsigned);
    int size;
  };
  const row rows[] = {{"ldp", enc::ldp_x, x, 8},
                      {"stp", enc::stp_x, x, 8},
                      {"ldp", enc::ldp_q, q, 16},
                      {"stp", enc::stp_q, q, 16}};
  std::vector<sample> samples;
  for (const row& r : rows) {
    for (const unsigned rt : registers) {
      for (const std::int64_t units : {-64, -1, 0, 1, 63}) {
        const unsigned rt2 = rt ^ 1;
        samples.push_back({r.encode(rt, rt2, 27, units * r.size),
                           std::string(r.name) + " " + r.text(rt) + ", " + r.text(rt2) + ", " +
                               at(27, units * r.size)});
      }
    }
    samples.push_back({r.encode(0, 1, sp, 0),
                       std::string(r.name) + " " + r.text(0) + ", " + r.text(1) + ", [sp]"});
  }
  check(samples);
}

TEST(encode, system_registers) {
  struct row {
    unsigned number;
    const char* name;
  };
  std::vector<sample> samples;
  for (const row& r : {row{sys_nzcv, "nzcv"}, row{sys_fpcr, "fpcr"}, row{sys_fpsr, "fpsr"},
                       row{sys_tpidr_el0, "tpidr_el0"}}) {
    for (const unsigned rt : registers) {
      samples.push_back({enc::mrs(rt, r.number), "mrs " + x(rt) + ", " + r.name});
      samples.push_back({enc::msr(r.number, rt), "msr " + std::string(r.name) + ", " + x(rt)});
    }
  }
  samples.push_back({enc::mrs(9, sys_ctr_el0), "mrs x9, ctr_el0"});
  check(samples);
}

// objdump prints the target, so each word is asked for at its own place.
TEST(encode, branches_and_addresses) {
  constexpr const char* conditions[] = {"eq", "ne", "cs", "cc", "mi", "pl", "vs", "vc",
                                        "hi", "ls", "ge", "lt", "gt", "le", "al"};
  std::vector<sample> samples;
  const auto add = [&](std::uint32_t word, const std::string& text, std::int64_t offset) {
    const auto target =
        static_cast<std::uint64_t>(4 * static_cast<std::int64_t>(samples.size()) + offset);
    samples.push_back({word, text + format("0x%" PRIx64, target)});
  };
  for (const std::int64_t offset : {-0x8000000, -4, 0, 4, 0x1234568, 0x7fffffc}) {
    add(enc::b(offset), "b ", offset);
    add(enc::bl(offset), "bl ", offset);
  }
  for (const std::int64_t offset : {-0x100000, -4, 0, 4, 0xffffc}) {
    for (unsigned c = 0; c < std::size(conditions); ++c) {
      add(enc::b_cond(condition{c}, offset), format("b.%s ", conditions[c]), offset);
    }
    add(enc::ldr_x_literal(5, offset), "ldr x5, ", offset);
    for (const unsigned rt : registers) {
      add(enc::cbz_x(rt, offset), "cbz " + x(rt) + ", ", offset);
      add(enc::cbnz_x(rt, offset), "cbnz " + x(rt) + ", ", offset);
      add(enc::cbz_w(rt, offset), "cbz " + w(rt) + ", ", offset);
      add(enc::cbnz_w(rt, offset), "cbnz " + w(rt) + ", ", offset);
    }
  }
  for (const std::int64_t offset : {-0x8000, -4, 0, 4, 0x7ffc}) {
    for (unsigned bit = 0; bit < 64; ++bit) {
      const std::string tail = (bit < 32 ? w(bit) : x(bit - 32)) + format(", #%u, ", bit);
      add(enc::tbz(bit & 31, bit, offset), "tbz " + tail, offset);
      add(enc::tbnz(bit & 31, bit, offset), "tbnz " + tail, offset);
    }
  }
  for (const std::int64_t offset : {-0x100000, -3, -1, 0, 1, 2, 3, 4, 0xfffff}) {
    add(enc::adr(17, offset), "adr x17, ", offset);
  }
  check(samples);
}

TEST(encode, register_branches_and_exceptions) {
  std::vector<sample> samples;
  for (const unsigned rn : registers) {
    samples.push_back({enc::br(rn), "br " + x(rn)});
    samples.push_back({enc::blr(rn), "blr " + x(rn)});
    samples.push_back({enc::ret(rn), rn == 30 ? "ret" : "ret " + x(rn)});
  }
  samples.push_back({enc::svc(0x1234), "svc #0x1234"});
  samples.push_back({enc::brk(0xffff), "brk #0xffff"});
  samples.push_back({enc::nop(), "hint #0x0"});
  check(samples);
}

// The client's operands, by opcode.
TEST(encode, created_instructions) {
  arena memory;
  const auto imm = [](int value) { return opnd_create_immed_int(value, OPSZ_1); };
  const auto shift_of = [&](int kind) { return opnd_add_flags(imm(kind), DR_OPND_IS_SHIFT); };
  const auto r = [](int id) { return opnd_create_reg(static_cast<reg_id_t>(id)); };
  const auto mem = [](int base, int offset, opnd_size_t size) {
    return opnd_create_base_disp(static_cast<reg_id_t>(base), DR_REG_NULL, 0, offset, size);
  };
  const auto one_one = [&](int opcode, opnd_t dst, opnd_t src) {
    return instr_create_1dst_1src(&memory, opcode, dst, src)->word;
  };
  const auto add = [&](int dst, int src, int value, int amount) {
    return instr_create_1dst_4src(&memory, OP_add, r(dst), r(src), imm(value),
                                  shift_of(DR_SHIFT_LSL), imm(amount))
        ->word;
  };
  const opnd_t shifted = opnd_create_reg_ex(DR_REG_X22, OPSZ_8, DR_OPND_SHIFTED);
  check({
      {add(DR_REG_X26, DR_REG_XSP, 0, 0), "add x26, sp, #0x0"},
      {add(DR_REG_XSP, DR_REG_X26, 0, 0), "add sp, x26, #0x0"},
      {add(DR_REG_X1, DR_REG_X2, 5, 12), "add x1, x2, #0x5, lsl #12"},
      {instr_create_1dst_4src(&memory, OP_and, r(DR_REG_X22), r(DR_REG_XZR), shifted,
                              shift_of(DR_SHIFT_LSL), imm(19))
           ->word,
       "and x22, xzr, x22, lsl #19"},
      {one_one(OP_str, mem(DR_REG_X27, 248, OPSZ_8), r(DR_REG_X26)), "str x26, [x27, #248]"},
      {one_one(OP_ldr, r(DR_REG_W26), mem(DR_REG_X27, 276, OPSZ_4)), "ldr w26, [x27, #276]"},
      {one_one(OP_str, mem(DR_REG_XSP, 0, OPSZ_4), r(DR_REG_WZR)), "str wzr, [sp]"},
      {one_one(OP_ldr, r(DR_REG_Q31), mem(DR_REG_X27, 784, OPSZ_16)), "ldr q31, [x27, #784]"},
      {one_one(OP_mrs, r(DR_REG_X26), r(DR_REG_NZCV)), "mrs x26, nzcv"},
      {one_one(OP_msr, r(DR_REG_FPCR), r(DR_REG_X26)), "msr fpcr, x26"},
      {one_one(OP_msr, r(DR_REG_FPSR), r(DR_REG_XZR)), "msr fpsr, xzr"},
      {instr_create_1dst_2src(&memory, OP_stp, mem(DR_REG_X27, 232, OPSZ_16), r(DR_REG_X29),
                              r(DR_REG_X30))
           ->word,
       "stp x29, x30, [x27, #232]"},
      {instr_create_2dst_1src(&memory, OP_ldp, r(DR_REG_X24), r(DR_REG_X25),
                              mem(DR_REG_X27, 192, OPSZ_16))
           ->word,
       "ldp x24, x25, [x27, #192]"},
  });
  dispose(memory);
}

TEST(encode_death, refuses_what_a_form_cannot_hold) {
  EXPECT_DEATH(enc::add_imm(0, 1, 4096), "cannot encode");
  EXPECT_DEATH(enc::ldr_x(0, 1, 4), "cannot encode");
  EXPECT_DEATH(enc::ldr_x(0, 1, -8), "cannot encode");
  EXPECT_DEATH(enc::ldp_x(0, 1, 2, 512), "cannot encode");
  EXPECT_DEATH(enc::b(0x8000000), "cannot encode");
  EXPECT_DEATH(enc::tbz(0, 1, 0x8000), "cannot encode");
  EXPECT_DEATH(enc::mov_reg(32, 0), "cannot encode");
  const opnd_t x0 = opnd_create_reg(DR_REG_X0);
  const opnd_t word_at_x1 = opnd_create_base_disp(DR_REG_X1, DR_REG_NULL, 0, 0, OPSZ_4);
  const opnd_t wrong[][2] = {{x0, word_at_x1}, {x0, x0}, {opnd_create_reg(DR_REG_XSP), word_at_x1}};
  for (const auto& operands : wrong) {
    EXPECT_DEATH(encode(OP_ldr, operands, 2), "cannot encode");
  }
}

}  // namespace
