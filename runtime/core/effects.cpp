#include "runtime/core/effects.h"

#include "runtime/ir/decode.h"
#include "runtime/ir/encode.h"

namespace core {
namespace {

constexpr unsigned kThirtyOne = 31;  // SP as a base and in ADD immediate, else the zero register

constexpr uint32_t bit(unsigned number) { return uint32_t{1} << number; }
// A register field in which 31 is the zero register.
constexpr uint32_t register_bit(unsigned number) { return number == kThirtyOne ? 0 : bit(number); }

struct Pattern {
  uint32_t mask, value;
};

// Computations without any reserved encoding in reach: they cannot fault. Their one destination is
// the field T.
constexpr Pattern kComputations[] = {
    {0x1f000000, 0x10000000},  // ADR, ADRP
    {0x1f800000, 0x11000000},  // ADD, SUB immediate
    {0xff800000, 0x92800000},  // MOVN, MOVZ, MOVK, 64 bits
    {0xff800000, 0xd2800000}, {0xff800000, 0xf2800000},
    {0xffc00000, 0x93400000},                            // SBFM, UBFM, 64 bits
    {0xffc00000, 0xd3400000}, {0x9f000000, 0x8a000000},  // AND, ORR, EOR, shifted register, 64 bits
    {0x1f008000, 0x0a000000},                            //   and 32
    {0x9fe00000, 0x8b000000},  // ADD, SUB shifted register, 64 bits, by LSL
    {0x9fe00000, 0x8b400000},  //   by LSR
    {0x9fe00000, 0x8b800000},  //   by ASR
    {0x1fe08000, 0x0b000000},  //   and 32 bits
    {0x3fe00800, 0x1a800000},  // CSEL, CSINC, CSINV, CSNEG
    {0x7fe00000, 0x1b000000},  // MADD, MSUB
};

bool is_computation(uint32_t word) {
  for (const Pattern& pattern : kComputations) {
    if ((word & pattern.mask) == pattern.value) {
      return !ir::uses_reg(word, ir::stolen_register);
    }
  }
  return false;
}

struct MemoryForm {
  uint32_t value;
  uint8_t bytes;
  bool vector, load;
};

// One register at a scaled unsigned offset of 12 bits; a pair at a scaled signed one of 7.
constexpr MemoryForm kSingles[] = {
    {0xb9400000, 4, false, true},  {0xb9000000, 4, false, false}, {0xf9400000, 8, false, true},
    {0xf9000000, 8, false, false}, {0x3dc00000, 16, true, true},  {0x3d800000, 16, true, false},
};
constexpr MemoryForm kPairs[] = {
    {0xa9400000, 8, false, true},
    {0xa9000000, 8, false, false},
    {0xad400000, 16, true, true},
    {0xad000000, 16, true, false},
};
constexpr uint32_t kMemoryMask = 0xffc00000;

Effect access(const MemoryForm& form, uint32_t word, unsigned count) {
  Effect effect;
  effect.action = form.load ? Action::load : Action::store;
  effect.vector = form.vector;
  effect.bytes = form.bytes;
  effect.count = static_cast<uint8_t>(count);
  effect.base = static_cast<uint8_t>(ir::field_n(word));
  if (count == 1) {
    effect.offset = static_cast<int32_t>(word >> 10 & 0xfff) * form.bytes;
  } else {
    constexpr int32_t kSign = 64;
    effect.offset = (static_cast<int32_t>((word >> 15 & 0x7f) ^ kSign) - kSign) * form.bytes;
  }
  effect.registers[0] = static_cast<uint8_t>(ir::field_t(word));
  effect.registers[1] = static_cast<uint8_t>(ir::field_a(word));
  effect.reads = {bit(effect.base)};
  StateSet& moved = form.load ? effect.writes : effect.reads;
  for (unsigned i = 0; i < count; ++i) {
    const unsigned number = effect.registers[i];
    if (form.vector) {
      moved.vector |= bit(number);
    } else {
      moved.general |= register_bit(number);
    }
  }
  return effect;
}

// MOVZ, MOVN and MOVK of 64 bits, MOVN of 32.
Effect wide_move(uint32_t word) {
  constexpr uint64_t kHalfword = 0xffff;
  const unsigned at = (word >> 21 & 3) * 16;
  const uint64_t part = (word >> 5 & kHalfword) << at;
  const bool wide = word >> 31 != 0;
  const unsigned kind = word >> 29 & 3;
  Effect effect;
  effect.target = static_cast<uint8_t>(ir::field_t(word));
  if (effect.target == kThirtyOne) {
    return effect;
  }
  effect.action = kind == 3 ? Action::insert : Action::constant;
  effect.value = kind != 0 ? part : wide ? ~part : static_cast<uint32_t>(~part);
  effect.mask = kHalfword << at;
  effect.writes = {register_bit(effect.target)};
  effect.reads = kind == 3 ? effect.writes : StateSet{};
  return effect;
}

uint8_t status_bit(unsigned system) {
  switch (system) {
  case ir::sys_nzcv:
    return status_nzcv;
  case ir::sys_fpcr:
    return status_fpcr;
  case ir::sys_fpsr:
    return status_fpsr;
  default:
    return 0;
  }
}

Effect status_move(uint32_t word) {
  Effect effect;
  const uint8_t status = status_bit(ir::system_register_of(word));
  if (status == 0) {
    return effect;
  }
  effect.action = Action::status;
  effect.target = static_cast<uint8_t>(ir::field_t(word));
  const StateSet general = {register_bit(effect.target)};
  const StateSet system = {0, 0, status};
  effect.reads = ir::is_mrs(word) ? system : general;
  effect.writes = ir::is_mrs(word) ? general : system;
  return effect;
}

// What the callee's convention keeps passes by, and so do SP and X28; X26 is lost in the switch of
// stacks. FPCR and FPSR are in force in the callee.
Effect call() {
  constexpr uint32_t kKept =
      0x7f << 19 | bit(27) | bit(29) | bit(ir::stolen_register) | bit(kThirtyOne);
  constexpr uint32_t kKeptVectors = 0xff << 8;  // their lower halves
  Effect effect;
  effect.action = Action::call;
  effect.reads = {bit(ir::stolen_register), 0, status_fpcr | status_fpsr};
  effect.writes = {~kKept, ~kKeptVectors, status_nzcv};
  return effect;
}

// In ADD and SUB immediate 31 is SP, but for the target of CMP and CMN; elsewhere the zero
// register.
bool is_add_immediate(uint32_t word) { return (word & 0x1f000000) == 0x11000000; }

bool sets_flags(uint32_t word) {
  const unsigned op = word >> 29 & 3;
  const bool arithmetic = is_add_immediate(word) || (word & 0x1f200000) == 0x0b000000;
  const bool logic = (word & 0x1f000000) == 0x0a000000;
  return (arithmetic && (op & 1) != 0) || (logic && op == 3);
}

bool reads_flags(uint32_t word) { return (word & 0x1fe00000) == 0x1a800000; }

// All that the word names counts as read.
Effect compute(uint32_t word) {
  const bool immediate = is_add_immediate(word);
  const uint8_t set = sets_flags(word) ? status_nzcv : 0,
                read = reads_flags(word) ? status_nzcv : 0;
  const uint32_t sp_read = immediate && ir::field_n(word) == kThirtyOne ? bit(kThirtyOne) : 0;
  Effect effect;
  effect.action = Action::compute;
  effect.target = static_cast<uint8_t>(ir::field_t(word));
  effect.reads = {(ir::named_registers(word) & ~bit(kThirtyOne)) | sp_read, 0, read};
  effect.writes = {immediate && set == 0 ? bit(effect.target) : register_bit(effect.target), 0,
                   set};
  return effect;
}

bool is_copy(uint32_t word) { return (word & 0xfffffc00) == 0x91000000; }
// AND immediate of 64 bits, but not into SP.
bool is_mask(uint32_t word) {
  return (word & 0xffc00000) == 0x92400000 && ir::field_t(word) != kThirtyOne;
}
bool is_wide_move(uint32_t word) {
  constexpr uint32_t kMask = 0xff800000;
  const uint32_t form = word & kMask;
  return form == 0x92800000 || form == 0xd2800000 || form == 0xf2800000 ||
         (word & 0xffc00000) == 0x12800000;
}

Effect copy(uint32_t word) {
  Effect effect;
  effect.action = Action::copy;
  effect.source = static_cast<uint8_t>(ir::field_n(word));
  effect.target = static_cast<uint8_t>(ir::field_t(word));
  effect.reads = {bit(effect.source)};
  effect.writes = {bit(effect.target)};
  return effect;
}

}  // namespace

Effect effect_of(const instr_t& instr) {
  const uint32_t word = instr.word;
  if (instr.kind == ir::kind::call) {
    return call();
  }
  if (instr.kind != ir::kind::meta && ir::uses_reg(word, ir::stolen_register)) {
    return {};
  }
  if (instr.kind == ir::kind::original) {
    return is_computation(word) ? compute(word) : Effect{};
  }
  for (const MemoryForm& form : kSingles) {
    if ((word & kMemoryMask) == form.value) {
      return access(form, word, 1);
    }
  }
  for (const MemoryForm& form : kPairs) {
    if ((word & kMemoryMask) == form.value) {
      return access(form, word, 2);
    }
  }
  if (is_copy(word)) {
    return copy(word);
  }
  if (is_wide_move(word)) {
    return wide_move(word);
  }
  if (is_mask(word)) {
    return compute(word);
  }
  return ir::is_mrs(word) || ir::is_msr_register(word) ? status_move(word) : Effect{};
}

}  // namespace core
