// Contiguous loads and stores of one register and of structures, load and replicate, and whole
// registers.
#include <atomic>
#include <thread>

#include "sve/fast/contiguous_access.h"
#include "tests/fast/memory_fixture.h"

namespace {

using namespace fixture;

const auto* const coverage = testing::AddGlobalTestEnvironment(new Coverage([](const Row& row) {
  const std::string_view name = row.name;
  for (const char* word : {"Load", "Store", "Fill", "Spill"})
    if (name.find(word) != name.npos)
      return true;
  return false;
}));

constexpr unsigned rounds = 48;

// Another thread writes the elements, each as a whole: no mixture of two of its values is read.
TEST(Contiguous, TakesEachElementFromOneAccess) {
  constexpr uint16_t one = 0x5555, other = 0xaaaa;
  alignas(16) uint16_t memory[8] = {one, one, one, one, one, one, one, one};
  std::atomic<bool> stop = false;
  std::thread writer([&] {
    for (uint16_t value = other; !stop; value ^= one ^ other)
      for (uint16_t& element : memory)
        std::atomic_ref(element).store(value, std::memory_order_relaxed);
  });
  unsigned mixtures = 0;
  for (unsigned round = 0; round < 60000; round++) {
    const unsigned count = 1 + round % 7;
    const fast::ImageBytes image =
        fast::read_bytes(reinterpret_cast<uint64_t>(memory), count * sizeof one);
    for (unsigned i = 0; i < count; i++) {
      const auto element = static_cast<uint16_t>((i < 4 ? image.low : image.high) >> i % 4 * 16);
      mixtures += element != one && element != other;
    }
  }
  stop = true;
  writer.join();
  EXPECT_EQ(mixtures, 0u);
}

// One load or store with all its operands.
struct Access {
  MemoryRow form;
  unsigned zt, pg;
  uint64_t address;  // of element 0

  uint64_t element(unsigned i, unsigned k) const {
    return form.kind == "Dup" ? address : address + uint64_t{i * form.registers + k} * form.memory;
  }
};

// Makes up an access to this address: registers, offset, and a base that leads there.
uint32_t make_access(Random& random, const MemoryRow& form, uint64_t address, cpu_state& state,
                     Access& access) {
  const unsigned rn = random() % 4 == 0 ? 31 : random() % 32;
  access = {form, static_cast<unsigned>(random() % 32), static_cast<unsigned>(random() % 8),
            address};
  uint64_t third = 0;
  if (form.kind == "Dup") {
    third = random() % 64;
    state.x[rn] = address - third * form.memory;
  } else if (form.shape == "SI") {
    const int64_t imm = static_cast<int64_t>(random() % 16) - 8;
    third = imm & 15;
    state.x[rn] =
        address - static_cast<uint64_t>(imm * form.registers * form.elements() * form.memory);
  } else {
    third = random() % 4 == 0 ? 31 : random() % 32;
    if (third == rn)
      third = 31;
    const uint64_t index = third == 31 ? 0 : state.x[third];  // wraps when it is scaled
    if (third != 31 || rn != 31)
      state.x[rn] = address - index * form.memory;
    else
      state.x[31] = address;
  }
  return encode(*form.row, {{0, access.zt}, {10, access.pg}, {5, rn}, {16, third}});
}

// Carries the access out on the record and on an image of the memory around it, up to the first
// element that cannot be accessed. Returns that element's address, or 0.
uint64_t expect_access(const Access& access, const Pages& pages, cpu_state& state,
                       std::vector<uint8_t>& image, uint64_t image_start) {
  const MemoryRow& form = access.form;
  for (unsigned i = 0; i < form.elements(); i++)
    for (unsigned k = 0; k < form.registers; k++) {
      uint8_t* const z = state.z[(access.zt + k) % 32];
      const uint64_t address = access.element(i, k);
      if (!active(state.p[access.pg], form.width, i)) {
        if (!form.store)
          set_lane(z, form.width, i, 0);
        continue;
      }
      if (!pages.accessible(address, form.memory))
        return address;
      if (form.store) {
        const uint64_t value = lane(z, form.width, i);
        memcpy(image.data() + (address - image_start), &value, form.memory);
      } else {
        set_lane(z, form.width, i, form.extend(pages.value(address, form.memory)));
      }
    }
  return 0;
}

void check_access(Random& random, const MemoryRow& form, const Pages& pages, uint64_t address) {
  constexpr uint64_t around = 256;
  cpu_state before = random_state(random);
  Access access;
  const uint32_t word = make_access(random, form, address, before, access);
  pages.fill(random, address);
  const uint64_t start = std::max(address - around, pages.page(1));
  const uint64_t end = std::min(address + around, pages.page(3));
  std::vector<uint8_t> image(pages.at(start), pages.at(end));
  cpu_state expected = before;
  expected.instruction = word;
  const uint64_t fault = expect_access(access, pages, expected, image, start);

  const testing::ScopedTrace trace(
      __FILE__, __LINE__, std::string(form.row->name) + " " + hex(word) + " at " + hex(address));
  cpu_state actual = before;
  if (fault == 0) {
    execute(actual, *form.row, word);
  } else {
    EXPECT_TRUE(faults(actual, form.row->stub, word));
    EXPECT_FALSE(pages.accessible(fault_address, 1));
    EXPECT_LT(fault_address - fault, form.memory);
    if (sve_faults_as_hardware && !form.store)
      memcpy(expected.z, before.z, sizeof expected.z);
    // What a store that faults has done to its own element's accessible bytes is the host's affair.
    for (unsigned i = 0; i < form.memory; i++)
      if (form.store && pages.accessible(fault + i, 1))
        image[fault + i - start] = *pages.at(fault + i);
  }
  expect_same(expected, actual);
  EXPECT_EQ(memcmp(image.data(), pages.at(start), image.size()), 0);
}

const std::vector<MemoryRow> rows = memory_rows(true, {"", "NT", "Dup"});

TEST(Contiguous, MovesActiveElements) {
  Random random(1);
  const Pages pages("x..x");
  for (const MemoryRow& form : rows)
    for (unsigned round = 0; round < rounds; round++) {
      const Faults mode(round % 4 < 2);
      const uint64_t anywhere = pages.page(1) + 64 + random() % (2 * pages.page_bytes() - 192);
      const uint64_t at_page_end = pages.page(2) - random() % 64;
      check_access(random, form, pages, round % 2 == 0 ? anywhere : at_page_end);
    }
}

TEST(Contiguous, FaultLeavesLowerElementsDoneOrLoadsUndone) {
  Random random(2);
  const Pages pages("x..x");
  for (const MemoryRow& form : rows)
    for (unsigned round = 0; round < rounds; round++) {
      const Faults mode(round % 2 != 0);
      const uint64_t reach = form.registers * form.elements() * form.memory;
      check_access(random, form, pages, pages.page(3) - random() % (reach + 2));
    }
}

TEST(Contiguous, NothingActiveTouchesNoMemory) {
  Random random(3);
  for (const MemoryRow& form : rows) {
    cpu_state state = random_state(random);
    for (uint8_t& byte : state.p[3])
      byte = 2;
    state.x[5] = 0;
    const uint64_t offset = form.shape == "LSS" ? 31 : 0;
    check(state, *form.row, {{0, 30}, {10, 3}, {5, 5}, {16, offset}}, [&](cpu_state& expected) {
      for (unsigned k = 0; k < form.registers && !form.store; k++)
        memset(expected.z[(30 + k) % 32], 0, vector_bytes);
    });
  }
}

// Whole vectors and predicates.

struct WholeRegister {
  const char* load;
  const char* store;
  unsigned step;
};

constexpr WholeRegister whole_registers[] = {{"VecU64FillSI", "VecU64SpillSI", 16},
                                             {"VecPFillSI", "VecPSpillSI", 2}};

// The nine bits of the offset stand in two places.
uint32_t whole_word(const Row& row, unsigned reg, unsigned rn, int imm) {
  return encode(row, {{0, reg},
                      {5, rn},
                      {16, static_cast<uint64_t>(imm >> 3 & 0x3f)},
                      {10, static_cast<uint64_t>(imm & 7)}});
}

// A register's image in memory: of a predicate, one bit for each of its bytes.
std::vector<uint8_t> image_of(const cpu_state& state, const WholeRegister& form, unsigned reg) {
  if (form.step == vector_bytes)
    return {state.z[reg], state.z[reg] + vector_bytes};
  std::vector<uint8_t> bytes(2);
  for (unsigned i = 0; i < vector_bytes; i++)
    bytes[i / 8] |= static_cast<uint8_t>((state.p[reg][i] & 1) << i % 8);
  return bytes;
}

void set_from_image(cpu_state& state, const WholeRegister& form, unsigned reg,
                    const uint8_t* bytes) {
  if (form.step == vector_bytes)
    memcpy(state.z[reg], bytes, vector_bytes);
  else
    for (unsigned i = 0; i < vector_bytes; i++)
      state.p[reg][i] = bytes[i / 8] >> i % 8 & 1;
}

TEST(WholeRegisters, MoveAsTheirImages) {
  Random random(4);
  const Pages pages("x.x");
  for (const WholeRegister& form : whole_registers)
    for (int imm = -256; imm < 256; imm++) {
      cpu_state before = random_state(random);
      const unsigned reg = random() % (form.step == vector_bytes ? 32 : 16);
      const unsigned rn = random() % 2 == 0 ? 31 : random() % 31;
      // The register at the very end of the page, and anywhere in it.
      const uint64_t last = pages.page(2) - form.step;
      const uint64_t address = random() % 2 == 0 ? last : last - random() % 256;
      before.x[rn] = address - static_cast<uint64_t>(int64_t{imm} * form.step);
      pages.fill(random, address);

      const Row& load = row_named(form.load);
      cpu_state expected = before;
      expected.instruction = whole_word(load, reg, rn, imm);
      set_from_image(expected, form, reg, pages.at(address));
      cpu_state loaded = before;
      execute(loaded, load, whole_word(load, reg, rn, imm));
      expect_same(expected, loaded);

      const Row& store = row_named(form.store);
      std::vector<uint8_t> image(pages.at(pages.page(1)), pages.at(pages.page(2)));
      const std::vector<uint8_t> written = image_of(before, form, reg);
      std::copy(written.begin(), written.end(), image.begin() + (address - pages.page(1)));
      cpu_state stored = before;
      execute(stored, store, whole_word(store, reg, rn, imm));
      EXPECT_EQ(memcmp(image.data(), pages.at(pages.page(1)), image.size()), 0) << form.store;
      expected = before;
      expected.instruction = whole_word(store, reg, rn, imm);
      expect_same(expected, stored);
    }
}

TEST(WholeRegisters, VectorsMoveInTwoHalves) {
  Random random(5);
  const Pages pages(".x");
  cpu_state state = random_state(random);
  state.x[3] = pages.page(1) - 8;
  pages.fill(random, state.x[3]);
  cpu_state expected = state;
  const Row& load = row_named("VecU64FillSI");
  expected.instruction = whole_word(load, 7, 3, 0);
  for (const bool as_hardware : {true, false}) {
    const Faults mode(as_hardware);
    if (!as_hardware)
      set_lane(expected.z[7], 8, 0, pages.value(state.x[3], 8));
    EXPECT_TRUE(faults(state, load.stub, whole_word(load, 7, 3, 0)));
    expect_same(expected, state);
  }

  const Row& store = row_named("VecU64SpillSI");
  EXPECT_TRUE(faults(state, store.stub, whole_word(store, 8, 3, 0)));
  EXPECT_EQ(pages.value(state.x[3], 8), lane(state.z[8], 8, 0));
}

}  // namespace
