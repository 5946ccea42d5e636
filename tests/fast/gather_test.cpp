// Gather loads, scatter stores, and prefetches, which take the same addresses and do nothing.
#include "tests/fast/memory_fixture.h"

namespace {

using namespace fixture;

constexpr unsigned rounds = 96;

// A gather or scatter with all its operands and the addresses to which they lead.
struct Access {
  MemoryRow form;
  unsigned zt, pg;
  uint64_t address[4];
};

bool letter(const MemoryRow& form, char c) { return form.shape.find(c) != std::string::npos; }

// The scale that the shape's name tells: SV has the vector behind the scaled base.
unsigned scale_of(const MemoryRow& form) { return form.shape.ends_with("SV") ? form.memory : 1; }

// Puts an element of the vector operand together from the offset that it has to stand for, in
// units of the scale, with anything in the bits that do not count.
uint64_t vector_element(Random& random, const MemoryRow& form, uint64_t offset) {
  if (form.shape == "VI")
    return offset;
  if (letter(form, 'X') || letter(form, 'Y'))
    return (offset & 0xffffffff) | random() << 32;
  const unsigned unused = static_cast<unsigned>(__builtin_ctz(scale_of(form)));
  return unused == 0 ? offset : (offset & ~0ull >> unused) | random() << (64 - unused);
}

// Elements at addresses near the middle of the pages; inactive ones anywhere at all.
uint32_t make_access(Random& random, const MemoryRow& form, uint64_t middle, cpu_state& state,
                     Access& access) {
  access = {form, static_cast<unsigned>(random() % 32), static_cast<unsigned>(random() % 8), {}};
  const unsigned zm = random() % 4 == 0 ? access.zt : random() % 32;
  const unsigned rn = random() % 4 == 0 ? 31 : random() % 32;
  const unsigned imm = random() % 32;
  uint64_t far = random();  // how far the base lies off, in units of the scale
  if (letter(form, 'X'))
    far = static_cast<uint64_t>(as_signed(far & 0x7fffffff, 4) - 0x40000000);
  else if (letter(form, 'Y'))
    far &= 0xf0000000;
  else if (form.shape == "VI")
    far = 0;
  for (unsigned i = 0; i < form.elements(); i++) {
    // Few places, so that some are the same; often not aligned.
    const uint64_t place = random() % 8 * scale_of(form);
    const uint64_t jitter = scale_of(form) == 1 ? random() % 8 : 0;
    access.address[i] = middle + place + jitter;
    const uint64_t offset = (place + jitter) / scale_of(form) + far;
    const bool on = active(state.p[access.pg], form.width, i);
    set_lane(state.z[zm], form.width, i,
             !on                  ? random()
             : form.shape == "VI" ? access.address[i] - imm * form.memory
                                  : vector_element(random, form, offset));
  }
  if (form.shape == "VI")
    return encode(*form.row, {{0, access.zt}, {10, access.pg}, {5, zm}, {16, imm}});
  state.x[rn] = middle - far * scale_of(form);
  return encode(*form.row, {{0, access.zt}, {10, access.pg}, {5, rn}, {16, zm}});
}

void check_access(Random& random, const MemoryRow& form, const Pages& pages, uint64_t middle) {
  cpu_state before = random_state(random);
  Access access;
  const uint32_t word = make_access(random, form, middle, before, access);
  pages.fill(random, middle);
  const uint64_t start = pages.page(1);
  std::vector<uint8_t> image(pages.at(start), pages.at(pages.page(2)));
  cpu_state expected = before;
  expected.instruction = word;
  const cpu_state sources = before;
  uint64_t fault = 0;
  for (unsigned i = 0; i < form.elements() && fault == 0; i++) {
    const uint64_t address = access.address[i];
    if (!active(sources.p[access.pg], form.width, i)) {
      if (!form.store)
        set_lane(expected.z[access.zt], form.width, i, 0);
    } else if (!pages.accessible(address, form.memory)) {
      fault = address;
    } else if (form.store) {
      const uint64_t value = lane(sources.z[access.zt], form.width, i);
      memcpy(image.data() + (address - start), &value, form.memory);
    } else {
      set_lane(expected.z[access.zt], form.width, i,
               form.extend(pages.value(address, form.memory)));
    }
  }
  const testing::ScopedTrace trace(
      __FILE__, __LINE__, std::string(form.row->name) + " " + hex(word) + " at " + hex(middle));
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

TEST(Gather, MovesActiveElements) {
  Random random(1);
  const Pages pages("x.x");
  for (const MemoryRow& form : memory_rows(false, {""}))
    for (unsigned round = 0; round < rounds; round++) {
      const Faults mode(round % 2 != 0);
      check_access(random, form, pages, pages.page(1) + 512 + random() % 1024);
    }
}

TEST(Gather, FaultLeavesLowerElementsDoneOrLoadsUndone) {
  Random random(2);
  const Pages pages("x.x");
  for (const MemoryRow& form : memory_rows(false, {""}))
    for (unsigned round = 0; round < rounds; round++) {
      const Faults mode(round % 2 != 0);
      check_access(random, form, pages, pages.page(2) - random() % (8 * scale_of(form) + 10));
    }
}

// Where the extension of an offset shows, against addresses written down by hand.
TEST(Gather, ExtendsOffsets) {
  const Pages pages("...");
  Random random(3);
  pages.fill(random, pages.page(1));
  struct Case {
    const char* name;
    uint64_t offset;
    uint64_t base;
    uint64_t address;
  };
  const uint64_t middle = pages.page(1);
  const Case cases[] = {
      {"VecU32Load4XVSZ", 0xffffffff, middle, middle - 1},
      {"VecS64Load1YVSZ", 0x1ffffffff, middle - 0xffffffff, middle},
      {"VecU64Load8VSZ", 1ull << 63, middle - (1ull << 63), middle},
      {"VecU64Load8XSVZ", 0xffffffff, middle, middle - 8},
      {"VecU64Load8YSVZ", 0xffffffff, middle - 0x7fffffff8, middle},
      {"VecU64Load8SVZ", 1ull << 61 | 1, middle, middle + 8},
  };
  for (const Case& c : cases) {
    const auto rows = memory_rows(false, {""});
    const auto form = std::find_if(rows.begin(), rows.end(), [&](const MemoryRow& row) {
      return std::string_view(row.row->name) == c.name;
    });
    ASSERT_NE(form, rows.end()) << c.name;
    cpu_state state = random_state(random);
    memset(state.p[2], 0, vector_bytes);
    state.p[2][0] = 1;
    state.x[4] = c.base;
    set_lane(state.z[6], form->width, 0, c.offset);
    check(state, *form->row, {{0, 6}, {10, 2}, {5, 4}, {16, 6}}, [&](cpu_state& expected) {
      memset(expected.z[6], 0, vector_bytes);
      set_lane(expected.z[6], form->width, 0, form->extend(pages.value(c.address, form->memory)));
    });
  }
}

TEST(Prefetch, DoesNothing) {
  Random random(4);
  unsigned rows = 0;
  for (const Row& row : all_rows()) {
    if (std::string_view(row.name).find("Prefetch") == std::string_view::npos)
      continue;
    rows++;
    EXPECT_EQ(row.tier, Tier::no_operation) << row.name;
    for (unsigned round = 0; round < rounds; round++) {
      const cpu_state before = random_state(random);
      cpu_state state = before;
      const uint32_t word = row.value | (static_cast<uint32_t>(random()) & ~row.mask);
      execute(state, row, word);
      expect_same(before, state);
    }
  }
  EXPECT_EQ(rows, 36u);
}

}  // namespace
