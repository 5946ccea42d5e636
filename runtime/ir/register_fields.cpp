// Which fields of a word are general registers, by the encoding groups of bits 28:25.
#include <bit>

#include "runtime/ir/decode.h"

namespace ir {
namespace {

using namespace fields;

constexpr std::uint8_t tn = t | n;
constexpr std::uint8_t tnm = t | n | m;
constexpr std::uint8_t tnam = t | n | a | m;

constexpr bool bit(std::uint32_t word, unsigned at) { return (word >> at & 1) != 0; }

std::uint8_t immediate_fields(std::uint32_t word) {
  switch (word >> 23 & 7) {
  case 0:
  case 1:  // ADR, ADRP
  case 5:  // MOVZ, MOVN, MOVK
    return t;
  case 7:  // EXTR; others without a second source
    return (word >> 29 & 3) == 0 ? tnm : tn;
  default:
    return tn;
  }
}

std::uint8_t branch_fields(std::uint32_t word) {
  switch (word >> 24) {
  case 0xd5:
    return t;  // 31 in hints, barriers and MSR (immediate)
  case 0xd6:
    return n;
  case 0xd7:
    return n | t;  // the modifier of an authenticated branch
  default:         // CBZ, CBNZ, TBZ, TBNZ; the others name none
    return (word & 0x7c000000) == 0x34000000 ? t : none;
  }
}

// T where it is data of a load or store: a vector register if V is set, a number in a prefetch.
std::uint8_t data_field(std::uint32_t word) {
  const bool vector = bit(word, 26);
  const bool prefetch = word >> 30 == 3 && (word >> 22 & 3) == 2;
  return vector || prefetch ? none : t;
}

// Bits 29:27 = 111: one register of any size.
std::uint8_t single_fields(std::uint32_t word) {
  const bool offset12 = bit(word, 24);
  const bool offset9 = !bit(word, 21);
  if (offset12 || offset9) {
    return n | data_field(word);
  }
  switch (word >> 10 & 3) {
  case 0:  // atomics
    return bit(word, 26) ? n : tnm;
  case 2:  // register offset
    return n | m | data_field(word);
  default:  // authenticated loads
    return tn;
  }
}

// Bits 29:28 = 01 with bit 24 set: literals, memory copies, tags, ordered and 128-bit atomic forms.
std::uint8_t literal_and_ordered_fields(std::uint32_t word) {
  if ((word & 0x3b000000) == 0x18000000) {
    return pc_relative_of(word) == pc_relative::prefetch || bit(word, 26) ? none : t;
  }
  if ((word & 0x3b200c00) == 0x19000000) {
    return bit(word, 26) ? n : tn;  // LDAPUR, STLUR
  }
  if ((word & 0xff200000) == 0xd9200000) {
    return tn;  // tags
  }
  return tnm;  // CPY, SET, 128-bit atomics, LDIAPP, STILP
}

std::uint8_t memory_fields(std::uint32_t word) {
  if ((word & 0xbe000000) == 0x0c000000) {
    return bit(word, 23) ? n | m : n;  // LD1 to LD4, ST1 to ST4; M with write-back
  }
  if ((word & 0x3f000000) == 0x08000000) {
    return tnam;  // exclusives, ordered, compare and swap
  }
  switch (word >> 27 & 7) {
  case 5:  // pairs
    return bit(word, 26) ? n : t | n | a;
  case 7:
    return single_fields(word);
  case 3:
    return literal_and_ordered_fields(word);
  default:
    return none;
  }
}

std::uint8_t data_processing_fields(std::uint32_t word) {
  if (!bit(word, 28)) {
    return tnm;  // logical, add and subtract of registers
  }
  if (bit(word, 24)) {
    return tnam;  // three sources
  }
  switch (word >> 21 & 7) {
  case 0:  // ADC, SBC; the flag manipulations have N only
    return (word >> 10 & 63) == 0 ? tnm : n;
  case 2:  // conditional compare: bit 11 selects the immediate
    return bit(word, 11) ? n : n | m;
  case 6:  // one source; two sources
    return bit(word, 30) ? tn : tnm;
  default:  // conditional select
    return tnm;
  }
}

// Conversions and moves between a general and a vector register; all others have vectors only.
std::uint8_t vector_fields(std::uint32_t word) {
  const bool fixed_point = (word & 0x5f200000) == 0x1e000000;
  const bool integer = (word & 0x5f20fc00) == 0x1e200000;
  if (fixed_point || integer) {
    const unsigned opcode = word >> 16 & 7;
    const bool from_general = opcode == 2 || opcode == 3 || (integer && opcode == 7);
    return from_general ? n : t;
  }
  const bool dup = (word & 0xbfe0fc00) == 0x0e000c00;
  const bool ins = (word & 0xffe0fc00) == 0x4e001c00;
  if (dup || ins) {
    return n;
  }
  const bool smov = (word & 0xbfe0fc00) == 0x0e002c00;
  const bool umov = (word & 0xbfe0fc00) == 0x0e003c00;
  return smov || umov ? t : none;
}

}  // namespace

std::uint8_t general_fields(std::uint32_t word) {
  switch (word >> 25 & 15) {
  case 8:
  case 9:
    return immediate_fields(word);
  case 10:
  case 11:
    return branch_fields(word);
  case 4:
  case 6:
  case 12:
  case 14:
    return memory_fields(word);
  case 5:
  case 13:
    return data_processing_fields(word);
  case 7:
  case 15:
    return vector_fields(word);
  default:  // unallocated, and SVE, which the host does not know
    return none;
  }
}

std::uint32_t named_registers(std::uint32_t word) {
  const std::uint8_t fields = general_fields(word);
  const std::uint32_t pair = is_casp(word) ? 3 : 1;
  std::uint32_t named = 0;
  named |= (fields & t) != 0 ? pair << field_t(word) : 0;
  named |= (fields & n) != 0 ? 1u << field_n(word) : 0;
  named |= (fields & a) != 0 ? 1u << field_a(word) : 0;
  named |= (fields & m) != 0 ? pair << field_m(word) : 0;
  return named;
}

bool uses_reg(std::uint32_t word, unsigned number) {
  return (in_a_field(word, number) || is_casp(word)) && (named_registers(word) >> number & 1) != 0;
}

std::uint32_t replace_reg(std::uint32_t word, unsigned from, unsigned to) {
  struct place {
    std::uint8_t field;
    unsigned at;
  };
  constexpr place places[] = {{t, 0}, {n, 5}, {a, 10}, {m, 16}};
  const std::uint8_t fields = general_fields(word);
  std::uint32_t replaced = word;
  for (const place& p : places) {
    if ((fields & p.field) != 0 && (word >> p.at & 31) == from) {
      replaced = (replaced & ~(31u << p.at)) | to << p.at;
    }
  }
  return replaced;
}

unsigned lowest_unused_reg(std::uint32_t word) {
  const std::uint32_t named = named_registers(word);
  if (!is_casp(word)) {
    return static_cast<unsigned>(std::countr_one(named));
  }
  unsigned even = 0;
  while ((named >> even & 3) != 0) {
    even += 2;
  }
  return even;
}

}  // namespace ir
