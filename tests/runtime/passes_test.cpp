// The passes over a finished block: run before and after on a small machine that knows the words
// of inserted code, the block must do the same.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <vector>

#include "runtime/core/loop.h"
#include "runtime/core/optimise.h"
#include "runtime/ir/encode.h"
#include "runtime/ir/ir.h"

namespace {

namespace enc = ir::enc;

constexpr std::uint64_t context_address = 0x7f0000010000, record_address = 0x55001020;
constexpr std::uint64_t stolen_field = context_address + 0xe0, slots = context_address + 0x200;
constexpr unsigned base = 27, transfer = 26;

// The record's fields as the client lays them out.
constexpr int nzcv_field = 264, fpsr_field = 272, fpcr_field = 276, z_field = 288;

// An instruction of the application: what it reads and writes is told here, not decoded.
struct ordinary {
  std::uint32_t word;
  bool opaque;  // it may touch memory or fault: it sees and changes everything
  std::vector<unsigned> reads;
  int target;  // -1: none; 31 is SP
  bool reads_flags, writes_flags;
};

const ordinary instructions[] = {
    {0xd503201f, true, {}, -1, false, false},         // NOP stands for all that is not known
    {0xf9400020, true, {}, -1, false, false},         // LDR X0, [X1]
    {0x3dc00020, true, {}, -1, false, false},         // LDR Q0, [X1]
    {0x4e228420, true, {}, -1, false, false},         // ADD V0.16B, V1.16B, V2.16B
    {0x91000780, true, {}, -1, false, false},         // ADD X0, X28, #1
    {0xd51b4400, true, {}, -1, false, false},         // MSR FPCR, X0
    {0x7100043f, false, {1}, -1, false, true},        // CMP W1, #1
    {0x91000420, false, {1}, 0, false, false},        // ADD X0, X1, #1
    {0xd10043ff, false, {31}, 31, false, false},      // SUB SP, SP, #16
    {0x8b1a0f7d, false, {27, 26}, 29, false, false},  // ADD X29, X27, X26, LSL #3
    {0x9a82002b, false, {1, 2}, 11, true, false},     // CSEL X11, X1, X2, EQ
    {0xf2a00025, false, {5}, 5, false, false},        // MOVK X5, #1, LSL #16
    {0x1000001b, false, {}, 27, false, false},        // ADR X27, 0
    {0x9b020c24, false, {1, 2, 3}, 4, false, false},  // MADD X4, X1, X2, X3
    {0xd340fc1a, false, {0}, 26, false, false},       // UBFM X26, X0, #0, #63
    {0xaa090107, false, {8, 9}, 7, false, false},     // ORR X7, X8, X9
    {0xea090106, false, {8, 9}, 6, false, true},      // ANDS X6, X8, X9
    {0xeb09010a, false, {8, 9}, 10, false, true},     // SUBS X10, X8, X9
    {0xf10043ff, false, {31}, -1, false, true},       // CMP SP, #16
    {0xeb0103ff, false, {1}, -1, false, true},        // CMP XZR, X1
    {0x6a2900df, false, {6, 9}, -1, false, true},     // BICS WZR, W6, W9
    {0xfa400820, true, {}, -1, false, false},         // CCMP X1, #0, #0, EQ
};

// Any function whose result shows a difference in its arguments.
std::uint64_t mix(std::uint64_t a, std::uint64_t b) {
  std::uint64_t z = (a ^ (b + 0x9e3779b97f4a7c15)) * 0xbf58476d1ce4e5b9;
  z = (z ^ (z >> 27)) * 0x94d049bb133111eb;
  return z ^ (z >> 31);
}

struct machine {
  std::uint64_t x[32];  // x[31] is SP
  std::uint64_t q[32][2];
  std::uint64_t nzcv, fpcr, fpsr;
  std::map<std::uint64_t, std::uint32_t> memory;  // by words of 4 bytes
  std::vector<std::uint64_t> seen;                // by callees and by ordinary instructions
  unsigned executed = 0;

  explicit machine(unsigned seed) {
    for (unsigned i = 0; i < 32; ++i) {
      x[i] = mix(seed, i), q[i][0] = mix(seed, 100 + i), q[i][1] = mix(seed, 200 + i);
    }
    x[28] = context_address;
    nzcv = mix(seed, 300) & 0xf0000000, fpcr = mix(seed, 301) & 0x07c00000;
    fpsr = mix(seed, 302) & 0x0800009f;
  }

  std::uint32_t& word(std::uint64_t address) {
    EXPECT_EQ(address % 4, 0u);
    return memory.try_emplace(address, static_cast<std::uint32_t>(mix(7, address))).first->second;
  }
  std::uint64_t read(std::uint64_t address) {
    return word(address) | std::uint64_t{word(address + 4)} << 32;
  }
  void write(std::uint64_t address, std::uint64_t value) {
    word(address) = static_cast<std::uint32_t>(value);
    word(address + 4) = static_cast<std::uint32_t>(value >> 32);
  }

  // All memory that the block may touch, with or without the application's X28.
  std::uint64_t digest_of_memory(bool with_stolen) {
    std::uint64_t digest = 0;
    for (std::uint64_t at = 0; at < 1100; at += 4) {
      digest = mix(digest, word(record_address + at));
    }
    for (std::uint64_t at = 0; at < 24; at += 4) {
      digest = mix(digest, word(slots + at));
    }
    return with_stolen ? mix(digest, read(stolen_field)) : digest;
  }
  std::uint64_t digest_of_all() {
    std::uint64_t digest = digest_of_memory(true);
    for (unsigned i = 0; i < 32; ++i) {
      digest = mix(mix(mix(digest, x[i]), q[i][0]), q[i][1]);
    }
    return mix(mix(mix(digest, nzcv), fpcr), fpsr);
  }

  // A callee changes what it likes: here some fields of the record and the slots, with bits that
  // the system registers do not keep; and of the registers all that a call does not keep.
  void call(std::uint64_t number) {
    seen.push_back(mix(mix(digest_of_memory(false), fpcr), fpsr));
    for (unsigned i = 0; i < 6; ++i) {
      const std::uint64_t at = mix(number, i) % 136 * 8;
      write(record_address + at, mix(seen.back(), at));
    }
    write(slots + number % 3 * 8, mix(seen.back(), 9));
    for (unsigned i = 0; i < 32; ++i) {
      const bool kept = (i >= 19 && i != 26 && i != 30);
      x[i] = kept ? x[i] : mix(number, 400 + i);
      q[i][0] = i >= 8 && i <= 15 ? q[i][0] : mix(number, 500 + i);
      q[i][1] = mix(number, 600 + i);
    }
    nzcv = mix(number, 700) & 0xf0000000;
  }

  void run(const ordinary& instruction) {
    if (instruction.opaque) {
      seen.push_back(digest_of_all());
      const std::uint64_t at = mix(seen.back(), 1) % 136 * 8;
      write(record_address + at, seen.back());
      write(stolen_field, mix(seen.back(), 2));
      x[seen.back() % 28] = seen.back();
      q[seen.back() % 32][1] = seen.back();
      nzcv = seen.back() & 0xf0000000;
      return;
    }
    std::uint64_t value = mix(instruction.word, instruction.reads_flags ? nzcv : 0);
    for (const unsigned reg : instruction.reads) {
      value = mix(value, x[reg]);
    }
    if (instruction.target >= 0) {
      x[instruction.target] = value;
    }
    nzcv = instruction.writes_flags ? value & 0xf0000000 : nzcv;
  }

  void load_or_store(std::uint32_t word_, bool load, bool vector, unsigned size, unsigned count) {
    const unsigned registers[] = {word_ & 31, word_ >> 10 & 31};
    const int scaled = count == 1 ? static_cast<int>(word_ >> 10 & 0xfff)
                                  : static_cast<int>((word_ >> 15 & 0x7f) ^ 64) - 64;
    std::uint64_t at = x[word_ >> 5 & 31] + static_cast<std::uint64_t>(scaled * int(size));
    for (unsigned i = 0; i < count; ++i, at += size) {
      const unsigned reg = registers[i];
      if (vector) {
        for (unsigned half = 0; half < 2; ++half) {
          if (load)
            q[reg][half] = read(at + half * 8);
          else
            write(at + half * 8, q[reg][half]);
        }
      } else if (size == 4) {
        if (load)
          x[reg] = word(at);
        else
          word(at) = static_cast<std::uint32_t>(x[reg]);
      } else {
        if (load)
          x[reg] = read(at);
        else
          write(at, x[reg]);
      }
    }
  }

  void run(std::uint32_t w) {
    const unsigned t = w & 31, n = w >> 5 & 31, hw = (w >> 21 & 3) * 16;
    const std::uint64_t imm = std::uint64_t{w >> 5 & 0xffff} << hw;
    switch (w & 0xffc00000) {
    case 0x92400000:
      ASSERT_EQ(w & 0xfffffc00, 0x92640c00) << "AND with anything but the flags";
      x[t] = x[n] & 0xf0000000;
      return;
    case 0xb9400000:
      return load_or_store(w, true, false, 4, 1);
    case 0xb9000000:
      return load_or_store(w, false, false, 4, 1);
    case 0xf9400000:
      return load_or_store(w, true, false, 8, 1);
    case 0xf9000000:
      return load_or_store(w, false, false, 8, 1);
    case 0x3dc00000:
      return load_or_store(w, true, true, 16, 1);
    case 0x3d800000:
      return load_or_store(w, false, true, 16, 1);
    case 0xa9400000:
      return load_or_store(w, true, false, 8, 2);
    case 0xa9000000:
      return load_or_store(w, false, false, 8, 2);
    case 0xad400000:
      return load_or_store(w, true, true, 16, 2);
    case 0xad000000:
      return load_or_store(w, false, true, 16, 2);
    case 0x91000000:
      x[t] = x[n] + (w >> 10 & 0xfff);
      return;
    default:
      break;
    }
    switch (w & 0xff800000) {
    case 0xd2800000:
      x[t] = imm;
      return;
    case 0x92800000:
      x[t] = ~imm;
      return;
    case 0x12800000:
      x[t] = static_cast<std::uint32_t>(~imm);
      return;
    case 0xf2800000:
      x[t] = (x[t] & ~(std::uint64_t{0xffff} << hw)) | imm;
      return;
    default:
      break;
    }
    switch (w & ~31U) {
    case 0xd53b4200:
      x[t] = nzcv;
      return;
    case 0xd51b4200:
      nzcv = x[t] & 0xf0000000;
      return;
    case 0xd53b4400:
      x[t] = fpcr;
      return;
    case 0xd51b4400:
      fpcr = x[t] & 0x07c00000;
      return;
    case 0xd53b4420:
      x[t] = fpsr;
      return;
    case 0xd51b4420:
      fpsr = x[t] & 0x0800009f;
      return;
    default:
      FAIL() << "a word that inserted code does not have: " << std::hex << w;
    }
  }

  void run(const instr_t* instr, const instr_t* end) {
    for (; instr != end; instr = instr->next) {
      ++executed;
      if (instr->kind == ir::kind::call) {
        call(instr->call.arguments[0]);
      } else if (instr->kind == ir::kind::original) {
        for (const ordinary& instruction : instructions) {
          if (instruction.word == instr->word)
            run(instruction);
        }
      } else {
        run(instr->word);
      }
    }
  }
  void run(const std::vector<std::uint32_t>& words) {
    for (const std::uint32_t w : words) {
      const auto* const known = std::find_if(std::begin(instructions), std::end(instructions),
                                             [&](const ordinary& o) { return o.word == w; });
      if (known != std::end(instructions))
        run(*known);
      else
        run(w);
    }
  }
};

struct passes_test : testing::Test {
  ir::arena memory;
  instrlist_t list;
  std::uint64_t pc = 0x400000;

  ~passes_test() override { ir::dispose(memory); }

  app_pc here() const { return reinterpret_cast<app_pc>(pc); }
  void created(std::uint32_t word) {
    instr_t* const instr = ir::new_meta(memory, word, here());
    instr->kind = ir::kind::created;
    ir::append(list, instr);
  }
  void save(unsigned reg, unsigned slot) {
    dr_save_reg(&memory, &list, nullptr, DR_REG_X0 + reg, static_cast<dr_spill_slot_t>(slot));
  }
  void restore(unsigned reg, unsigned slot) {
    dr_restore_reg(&memory, &list, nullptr, DR_REG_X0 + reg, static_cast<dr_spill_slot_t>(slot));
  }
  void record_address_to_base() {
    instrlist_insert_mov_immed_ptrsz(&memory, record_address, opnd_create_reg(DR_REG_X27), &list,
                                     nullptr, nullptr, nullptr);
  }
  void ordinary_instruction(std::uint32_t word) {
    ir::append(list, ir::new_original(memory, word, here()));
    pc += 4;
  }
  void call(unsigned number) {
    dr_insert_call_tavok(&memory, &list, nullptr, here(), &memory, 1,
                         opnd_create_immed_int(number, OPSZ_4));
  }

  void saving_half() {
    save(26, 1), save(27, 2);
    dr_insert_get_stolen_reg_value(&memory, &list, nullptr, DR_REG_X27);
    save(27, 3);
    record_address_to_base();
    created(enc::add_imm(transfer, ir::sp, 0)), created(enc::str_x(transfer, base, 31 * 8));
    for (unsigned n = 0; n < 26; n += 2)
      created(enc::stp_x(n, n + 1, base, n * 8));
    created(enc::stp_x(29, 30, base, 29 * 8));
    for (unsigned n = 0; n < 32; ++n)
      created(enc::str_q(n, base, z_field + n * 16));
    created(enc::mrs(transfer, ir::sys_nzcv)), created(enc::str_x(transfer, base, nzcv_field));
    created(enc::mrs(transfer, ir::sys_fpsr)), created(enc::str_w(transfer, base, fpsr_field));
    created(enc::mrs(transfer, ir::sys_fpcr)), created(enc::str_w(transfer, base, fpcr_field));
  }
  void restoring_half() {
    record_address_to_base();
    created(enc::ldr_w(transfer, base, fpcr_field)), created(enc::msr(ir::sys_fpcr, transfer));
    created(enc::ldr_w(transfer, base, fpsr_field)), created(enc::msr(ir::sys_fpsr, transfer));
    created(enc::ldr_x(transfer, base, nzcv_field)), created(enc::msr(ir::sys_nzcv, transfer));
    for (unsigned n = 0; n < 32; ++n)
      created(enc::ldr_q(n, base, z_field + n * 16));
    for (unsigned n = 0; n < 26; n += 2)
      created(enc::ldp_x(n, n + 1, base, n * 8));
    created(enc::ldp_x(29, 30, base, 29 * 8));
    created(enc::ldr_x(transfer, base, 31 * 8)), created(enc::add_imm(ir::sp, transfer, 0));
    restore(27, 3);
    dr_insert_set_stolen_reg_value(&memory, &list, nullptr, DR_REG_X27);
    restore(27, 2), restore(26, 1);
  }
  void emulated_instruction(unsigned number) {
    saving_half();
    call(number);
    restoring_half();
    pc += 4;
  }

  // One thing of those that inserted code consists of: 0 and 1 are a call and an instruction of the
  // application, the others stay within the inserted code.
  void anything_inserted(std::mt19937& random, unsigned kind) {
    const auto any = [&] { return random() % 5 == 0 ? transfer : 20 + random() % 4; };
    const unsigned a = any(), b = any(), at = random() % 4;
    switch (kind) {
    case 0:
      call(random() % 100), record_address_to_base();
      break;
    case 1:
      ordinary_instruction(instructions[random() % std::size(instructions)].word);
      record_address_to_base();
      break;
    case 2:
      created(enc::str_x(a, base, at * 8));
      break;
    case 3:
      created(enc::ldr_x(a, base, at * 8));
      break;
    case 4:
      created(enc::str_w(a, base, at * 4));
      break;
    case 5:
      created(enc::ldr_w(a, base, at * 4));
      break;
    case 6:
      created(enc::stp_x(a, b, base, at * 8));
      break;
    case 7:
      if (a != b)
        created(enc::ldp_x(a, b, base, at * 8));
      break;
    case 8:
      created(enc::str_q(a, base, at * 16));
      break;
    case 9:
      created(enc::ldr_q(a, base, at * 16));
      break;
    case 10:
      created(enc::add_imm(random() % 3 == 0 ? ir::sp : a, b, 0));
      break;
    case 11:
      created(enc::add_imm(a, ir::sp, 0));
      break;
    case 12:
      created(enc::mrs(a, random() % 2 != 0 ? ir::sys_fpsr : ir::sys_nzcv));
      break;
    case 13:
      created(enc::msr(random() % 2 != 0 ? ir::sys_fpsr : ir::sys_nzcv, a));
      break;
    case 14:
      save(a, 1 + at % 3);
      break;
    case 15:
      restore(a, 1 + at % 3);
      break;
    case 16:
      dr_insert_get_stolen_reg_value(&memory, &list, nullptr, DR_REG_X0 + a);
      break;
    case 17:
      dr_insert_set_stolen_reg_value(&memory, &list, nullptr, DR_REG_X0 + a);
      break;
    }
  }

  // The list before and after the passes, from the same state. Returns how many instructions run.
  unsigned expect_the_same(unsigned seed) {
    machine before(seed), after(seed);
    before.run(list.first, nullptr);
    core::optimise_block(memory, list, context_address);
    after.run(list.first, nullptr);
    EXPECT_EQ(before.seen, after.seen);
    EXPECT_EQ(before.digest_of_all(), after.digest_of_all());
    for (unsigned i = 0; i < 32; ++i) {
      EXPECT_EQ(before.x[i], after.x[i]) << i;
    }
    ir::clear(memory, list);
    return after.executed;
  }
};

struct loop_test : passes_test {
  static constexpr unsigned most_rounds = 4;

  // Ends the block with a branch to `start`: B.NE, or CBNZ of a register.
  void branch(std::uint64_t start, bool flags, unsigned reg) {
    const auto offset = static_cast<std::uint32_t>((start - pc) >> 2 & 0x7ffff) << 5;
    ordinary_instruction(flags ? 0x54000001 | offset : 0xb5000000 | offset | reg);
  }

  // The block, as often as it is, before the passes; and after them with the short way between the
  // rounds. After each round, what decides is the same, and all is if the loop ends there. Returns
  // whether there is a short way.
  bool expect_the_same_rounds(unsigned seed, std::uint64_t start, bool flags, unsigned reg) {
    std::vector<machine> whole(1, machine(seed));
    for (unsigned round = 0; round < most_rounds; ++round) {
      whole.push_back(whole.back());
      whole.back().run(list.first, nullptr);
    }
    core::optimise_block(memory, list, context_address);
    const core::Loop loop = core::find_loop(list, start, context_address);
    if (loop.body != nullptr) {
      machine going(seed);
      going.run(list.first, loop.body);
      for (unsigned round = 1; round <= most_rounds; ++round) {
        going.run(loop.body, loop.out);
        going.run(loop.decide);
        EXPECT_EQ(flags ? whole[round].nzcv : whole[round].x[reg],
                  flags ? going.nzcv : going.x[reg]);
        going.x[core::kPendingRegister] = seed;
        machine ending = going;
        ending.run(loop.out, nullptr);
        EXPECT_EQ(whole[round].seen, ending.seen) << "seed " << seed << " round " << round;
        EXPECT_EQ(whole[round].digest_of_all(), ending.digest_of_all()) << "seed " << seed;
        going.run(loop.again);
      }
    }
    ir::clear(memory, list);
    return loop.body != nullptr;
  }
};

TEST_F(loop_test, random_loops_do_the_same) {
  std::mt19937 random(7);
  const auto ordinary_ones = [&](bool opaque, unsigned most) {
    for (unsigned count = random() % (most + 1); count > 0; --count) {
      const ordinary& chosen = instructions[random() % std::size(instructions)];
      if (!chosen.opaque || opaque)
        ordinary_instruction(chosen.word);
    }
  };
  unsigned found = 0;
  for (unsigned seed = 0; seed < 400 && !HasFailure(); ++seed) {
    const std::uint64_t start = pc;
    const bool flags = random() % 3 != 0;
    const auto reg = static_cast<unsigned>(random() % 12);
    ordinary_ones(seed % 8 == 0, 2);
    for (unsigned length = 1 + random() % 4; length > 0; --length) {
      emulated_instruction(random() % 1000);
      ordinary_ones(length > 1 || seed % 8 == 1, 2);
    }
    branch(start, flags, reg);
    found += expect_the_same_rounds(seed, start, flags, reg) ? 1 : 0;
  }
  EXPECT_GT(found, 150u);
}

TEST_F(loop_test, random_inserted_loops_do_the_same) {
  std::mt19937 random(8);
  constexpr unsigned kinds = 18;
  const auto inserted = [&](unsigned most, unsigned first) {
    for (unsigned count = random() % (most + 1); count > 0; --count)
      anything_inserted(random, first + random() % (kinds - first));
  };
  unsigned found = 0;
  for (unsigned seed = 0; seed < 8000 && !HasFailure(); ++seed) {
    const std::uint64_t start = pc;
    const bool flags = random() % 2 != 0;
    const auto reg = static_cast<unsigned>(20 + random() % 4);
    record_address_to_base();
    inserted(8, 2);
    call(seed);
    record_address_to_base();
    inserted(6, 0);
    call(seed + 1);
    inserted(1, 2);
    record_address_to_base();
    inserted(8, 2);
    created(enc::ldr_x(transfer, base, 24));
    branch(start, flags, reg);
    found += expect_the_same_rounds(seed, start, flags, reg) ? 1 : 0;
  }
  EXPECT_GT(found, 4000u);
}

// What a round costs beside its calls: exact, so that a loss is noticed.
TEST_F(loop_test, what_remains_between_two_rounds) {
  constexpr std::uint32_t compare = 0x7100043f, add = 0x91000420;
  const auto words_between = [&](bool flags, std::vector<std::uint32_t> in_front,
                                 std::vector<std::uint32_t> behind) {
    const std::uint64_t start = pc;
    for (const std::uint32_t word : in_front)
      ordinary_instruction(word);
    emulated_instruction(1);
    for (const std::uint32_t word : behind)
      ordinary_instruction(word);
    branch(start, flags, 3);
    core::optimise_block(memory, list, context_address);
    const core::Loop loop = core::find_loop(list, start, context_address);
    ir::clear(memory, list);
    return loop.body != nullptr ? loop.decide.size() + loop.again.size() : 0;
  };
  constexpr unsigned status = 11, flags = 2, pair = 1;
  EXPECT_EQ(words_between(true, {}, {}), flags + status);
  EXPECT_EQ(words_between(false, {}, {}), pair + status);
  // The flags that the memory gets are the comparison's.
  EXPECT_EQ(words_between(true, {}, {compare}), pair + 1 + status - 1 + pair + 1);
  // They go through the register for once.
  EXPECT_EQ(words_between(true, {add}, {}), flags + status + 1 + pair + 1 + pair);
  // What may fault, or stands for its place, ends the short way.
  EXPECT_EQ(words_between(true, {0xf9400020}, {}), 0u);
  EXPECT_EQ(words_between(true, {0x1000001b}, {}), 0u);
  EXPECT_EQ(words_between(true, {}, {0xf9400020}), 0u);
}

TEST_F(passes_test, random_blocks_do_the_same) {
  std::mt19937 random(5);
  for (unsigned round = 0; round < 400 && !HasFailure(); ++round) {
    for (unsigned length = 1 + random() % 7; length > 0; --length) {
      if (random() % 5 < 3) {
        emulated_instruction(random() % 1000);
      } else {
        ordinary_instruction(instructions[random() % std::size(instructions)].word);
      }
    }
    expect_the_same(round);
  }
}

// Any order of the words that inserted code consists of: not only the client's exchange.
TEST_F(passes_test, random_inserted_code_does_the_same) {
  std::mt19937 random(6);
  for (unsigned round = 0; round < 3000 && !HasFailure(); ++round) {
    record_address_to_base();
    for (unsigned length = 2 + random() % 30; length > 0; --length)
      anything_inserted(random, random() % 20);
    expect_the_same(round);
  }
}

// What is gained, in instructions without those of the call: exact, so that a loss is noticed.
TEST_F(passes_test, what_remains_of_an_exchange) {
  constexpr std::uint32_t nothing = 0, add = 0x91000420, nop = 0xd503201f;
  const auto length = [&](unsigned count, std::uint32_t between) {
    for (unsigned i = 0; i < count; ++i) {
      if (i != 0 && between != nothing)
        ordinary_instruction(between);
      emulated_instruction(i);
    }
    return expect_the_same(count);
  };
  constexpr unsigned address = 2;                 // instructions that load the record's address
  constexpr unsigned status = 12;                 // both ways
  constexpr unsigned general = 14, vectors = 16;  // pairs
  constexpr unsigned stack = 4, slots_and_stolen = 8;  // beyond a pair's reach
  constexpr unsigned alone =
      1 + address + status + 2 * (general + vectors) + stack + slots_and_stolen;
  EXPECT_EQ(length(1, nothing), alone);
  // The flags are masked, and not set.
  EXPECT_EQ(length(5, nothing), alone + 4 * (1 + status - 1));
  // X0 and X1 cross, since the instruction between names them.
  EXPECT_EQ(length(2, add), alone + 1 + status + 3);
  EXPECT_EQ(length(2, nop), 2 * alone + 1);
}

}  // namespace
