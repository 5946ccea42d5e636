#include "tests/model/random_case.h"

#include <sys/mman.h>

#include <cctype>
#include <new>

#include "host/fp_unit.h"

namespace tiers {

namespace {

using fixture::Random;

constexpr uint64_t nowhere = 1ull << 50;        // no address has this bit
constexpr uint32_t fpsr_flags = 0x0800009f;     // QC and the cumulative exceptions
constexpr uint32_t fpcr_controls = 0x07c00000;  // AHP, DN, FZ and RMode

// What the tail of a memory row's name says of its addresses.
enum class Addresses { none, base_immediate, base_index, base_offsets, vector };

Addresses addresses_of(std::string_view name) {
  const auto has = [&](std::string_view part) { return name.find(part) != name.npos; };
  if (!has("Load") && !has("Store") && !has("Fill") && !has("Spill"))
    return Addresses::none;
  if (name.ends_with("VIZ"))
    return Addresses::vector;
  if (name.ends_with("LSSZ") || name.ends_with("QSSZ"))
    return Addresses::base_index;
  return name.ends_with("VSZ") || name.ends_with("SVZ") ? Addresses::base_offsets
                                                        : Addresses::base_immediate;
}

// The width in bytes that the first number in a row's name gives in bits.
unsigned width_of(std::string_view name) {
  const size_t digit = name.find_first_of("0123456789");
  if (digit == name.npos)
    return 1;
  switch (name[digit]) {
  case '8':
    return 1;
  case '3':
    return 4;
  case '6':
    return 8;
  default:
    return name.substr(digit, 3) == "128" ? 8 : 2;
  }
}

bool is_floating_point(std::string_view name) {
  return name.starts_with("VecF") || name.starts_with("VecD") || name.starts_with("VecH") ||
         name.find("From") != name.npos;
}

uint32_t bits_of(uint32_t word, unsigned low) { return word >> low & 31; }

// An address offset of a few elements in either direction.
uint64_t small_offset(Random& random) { return random() % 65 - 32; }

// Element width of the offset: what lies above a 32-bit offset in a doubleword is junk.
void fill_offsets(Random& random, uint8_t* slot, std::string_view name, unsigned width) {
  const bool words = name.find("XVS") != name.npos || name.find("YVS") != name.npos ||
                     name.find("XSV") != name.npos || name.find("YSV") != name.npos;
  const bool zero_extended =
      name.find("YVS") != name.npos || name.find("YSV") != name.npos || (width == 4 && !words);
  for (unsigned i = 0; i < vector_bytes / width; i++) {
    uint64_t offset = zero_extended ? random() % 64 : small_offset(random);
    if (words)
      offset = (offset & 0xffffffff) | random() << 32;
    fixture::set_lane(slot, width, i, offset & fixture::width_mask(width));
  }
}

void fill_addresses(Case& chosen, const Row& row, Random& random, const Memory& memory) {
  const std::string_view name = row.name;
  const Addresses kind = addresses_of(name);
  if (kind == Addresses::none)
    return;
  const unsigned n = bits_of(chosen.word, 5), m = bits_of(chosen.word, 16);
  if (kind == Addresses::vector) {
    const unsigned width = width_of(name);
    for (unsigned i = 0; i < vector_bytes / width; i++)
      fixture::set_lane(chosen.state.z[n], width, i, memory.middle() + small_offset(random) * 8);
    return;
  }
  if (kind == Addresses::base_index && n == m && n != 31)  // no such address could be valid
    chosen.word ^= 1u << 5;
  const unsigned base = bits_of(chosen.word, 5);
  if (kind == Addresses::base_index && m != 31)
    chosen.state.x[m] = small_offset(random);
  if (kind == Addresses::base_offsets)
    fill_offsets(random, chosen.state.z[m], name, width_of(name));
  chosen.state.x[base] = memory.middle() + random() % 16;
}

void fill_vector(Random& random, uint8_t* slot, std::string_view name) {
  const bool fp = is_floating_point(name) && random() % 8 != 0;
  const unsigned own = width_of(name);
  const unsigned width = random() % 4 != 0 ? own : 2u << random() % 3;
  for (unsigned i = 0; i < vector_bytes / width; i++)
    fixture::set_lane(slot, width, i,
                      fp && width > 1 ? interesting_fp(random, width)
                                      : fixture::interesting_value(random, width));
}

// Near an extreme of either width, near another register's value, or anything.
uint64_t interesting_scalar(Random& random) {
  constexpr uint64_t centres[] = {0,          0x80,       0x8000,     0x7fffffff,
                                  0x80000000, 0xffffffff, ~0ull >> 1, 1ull << 63};
  const uint64_t choice = random() % 12;
  if (choice >= std::size(centres))
    return random();
  const uint64_t high = random() % 4 == 0 ? random() << 32 : 0;
  return centres[choice] + random() % 40 - 20 + high;
}

}  // namespace

uint64_t interesting_fp(Random& random, unsigned width) {
  const unsigned fraction_bits = width == 2 ? 10 : width == 4 ? 23 : 52;
  const unsigned exponent_bits = 8 * width - 1 - fraction_bits;
  const uint64_t infinite = (1ull << exponent_bits) - 1, bias = infinite / 2;
  const uint64_t ones = (1ull << fraction_bits) - 1, top = 1ull << (fraction_bits - 1);
  const uint64_t exponents[] = {0,
                                0,
                                1,
                                infinite,
                                infinite,
                                bias,
                                bias - 1,
                                infinite - 1,
                                bias + 1,
                                bias + 2,
                                bias + fraction_bits,
                                bias + 8 * width - 1};
  const uint64_t fractions[] = {0, 0, 0, 1, top, top | 1, top - 1, ones, ones - 1};
  const uint64_t exponent_choice = random() % 16, fraction_choice = random() % 14;
  const uint64_t exponent = exponent_choice < std::size(exponents)
                                ? exponents[exponent_choice]
                                : (bias - 4 + random() % 9) & infinite;
  const uint64_t fraction =
      fraction_choice < std::size(fractions) ? fractions[fraction_choice] : random() & ones;
  return (random() % 2) << (8 * width - 1) | exponent << fraction_bits | fraction;
}

Memory& low_memory() {
  static Memory* const memory = [] {
    constexpr uintptr_t low_address = 0x20000000;
    void* const mapped =
        mmap(reinterpret_cast<void*>(low_address), sizeof(Memory), PROT_READ | PROT_WRITE,
             MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED_NOREPLACE, -1, 0);
    if (mapped == MAP_FAILED)
      throw std::runtime_error("no memory below 4 GiB");
    return new (mapped) Memory;
  }();
  return *memory;
}

bool touches_memory(const Row& row) { return addresses_of(row.name) != Addresses::none; }

Case random_case(const Row& row, Random& random, const Memory& memory) {
  const std::string_view name = row.name;
  // Predicates as data are moved as bytes in one tier and as bits in the other, so they hold what
  // instructions leave. Governing ones may hold any junk.
  const bool predicate_data = name.starts_with("VecP");
  Case chosen;
  chosen.word = row.value | (static_cast<uint32_t>(random()) & ~row.mask);
  chosen.state = fixture::random_state(
      random, 8, predicate_data ? fixture::Predicates::clean : fixture::Predicates::junk);
  chosen.state.fpsr &= fpsr_flags;
  chosen.state.fpcr = random() % 4 == 0 ? 0 : chosen.state.fpcr & fpcr_controls;
  for (auto& slot : chosen.state.z)
    fill_vector(random, slot, name);
  for (uint64_t& x : chosen.state.x)
    x = interesting_scalar(random);
  fill_addresses(chosen, row, random, memory);
  return chosen;
}

void move_to_edge(Case& chosen, const Row& row, Random& random, const Memory& memory) {
  const Addresses kind = addresses_of(row.name);
  if (kind == Addresses::none)
    return;
  const uint64_t half = Memory::size / 2;
  const uint64_t edge = memory.middle() + (random() % 2 != 0 ? half : -half);
  const uint64_t spread = random() % 2 != 0 ? 64 : 1200;
  const auto place = [&] { return edge + random() % spread - spread / 2; };
  const unsigned n = bits_of(chosen.word, 5), width = width_of(row.name);
  if (kind != Addresses::vector) {
    chosen.state.x[n] = random() % 8 == 0 ? memory.middle() ^ nowhere : place();
    return;
  }
  for (unsigned i = 0; i < vector_bytes / width; i++)
    if (random() % 2 != 0)
      fixture::set_lane(chosen.state.z[n], width, i, place());
}

void settle(cpu_state& fast, const cpu_state& before) {
  if (fast.instruction == before.instruction)
    return;
  fast.nzcv &= 0xffffffff;
  fast.fpcr |= before.fz16;
  for (uint8_t& byte : fast.ffr)
    byte &= 1;
  fast.instruction = before.instruction;
}

void run_fast(const Row& row, uint32_t word, cpu_state& state) {
  static bool others = false;
  others = !others && row.tier == Tier::model;
  constexpr uint32_t controls = 31u << 22, flags = 0x9f;
  const uint32_t control = others ? ~state.fpcr & controls : state.fpcr,
                 status = ~state.fpsr & flags;
  const uint64_t saved = host::read_fpcr();
  host::write_fpcr(control);
  host::write_fpsr(status);
  row.stub(&state, word);
  EXPECT_EQ(host::read_fpcr(), control) << row.name;
  EXPECT_EQ(host::read_fpsr(), row.tier == Tier::host_fp ? state.fpsr : status) << row.name;
  host::write_fpcr(saved);
}

}  // namespace tiers
