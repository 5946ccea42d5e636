// A small machine that knows the words of inserted code, and an instruction of the application by
// what its entry in a table says.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <vector>

#include "runtime/core/effects.h"
#include "runtime/ir/decode.h"
#include "runtime/ir/encode.h"
#include "runtime/ir/ir.h"

namespace small_machine {

namespace enc = ir::enc;

inline constexpr std::uint64_t context_address = 0x7f0000010000, record_address = 0x55001020;
inline constexpr std::uint64_t stolen_field = context_address + 0xe0,
                               slots = context_address + 0x200;
inline constexpr unsigned base = 27, transfer = 26;

// The record's fields as the client lays them out.
inline constexpr int nzcv_field = 264, fpsr_field = 272, fpcr_field = 276, z_field = 288;

// An instruction of the application: what it reads and writes is told here, not decoded.
struct ordinary {
  std::uint32_t word;
  bool opaque;  // it may touch memory or fault: it sees and changes everything
  std::vector<unsigned> reads;
  int target;  // -1: none; 31 is SP
  bool reads_flags, writes_flags;
};

inline const ordinary instructions[] = {
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

inline core::Effect effect_of(std::uint32_t word, ir::kind kind) {
  instr_t instr = {};
  instr.word = word, instr.kind = kind;
  return core::effect_of(instr);
}

// Whether the machine executes the word as it is.
inline bool is_inserted_form(std::uint32_t word) {
  const bool known = std::any_of(std::begin(instructions), std::end(instructions),
                                 [&](const ordinary& one) { return one.word == word; });
  return !known && effect_of(word, ir::kind::meta).action != core::Action::unknown;
}

// That of the table; or else what the passes take the word for, which is then not in question.
inline ordinary ordinary_of(std::uint32_t word) {
  for (const ordinary& known : instructions) {
    if (known.word == word)
      return known;
  }
  const core::Effect effect = effect_of(word, ir::kind::original);
  ordinary found = {word, effect.action != core::Action::compute, {}, -1, false, false};
  for (unsigned reg = 0; reg < 32; ++reg) {
    if ((effect.reads.general >> reg & 1) != 0)
      found.reads.push_back(reg);
    if ((effect.writes.general >> reg & 1) != 0)
      found.target = static_cast<int>(reg);
  }
  found.reads_flags = (effect.reads.status & core::status_nzcv) != 0;
  found.writes_flags = (effect.writes.status & core::status_nzcv) != 0;
  return found;
}

// Any function whose result shows a difference in its arguments.
inline std::uint64_t mix(std::uint64_t a, std::uint64_t b) {
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
        if (ir::control_of(instr->word) == ir::control::none)
          run(ordinary_of(instr->word));
      } else {
        run(instr->word);
      }
    }
  }
  void run(const std::vector<std::uint32_t>& words) {
    for (const std::uint32_t w : words) {
      if (is_inserted_form(w))
        run(w);
      else
        run(ordinary_of(w));
    }
  }
};

}  // namespace small_machine
