// First-fault and non-fault loads beside pages that cannot be read.
#include <array>

#include "tests/fast/memory_fixture.h"

namespace {

std::vector<uint64_t> probes;

}  // namespace

// The linker sends the loads' probes through here.
extern "C" {
bool __real__Z16addr_is_readableIcEbPVT_(volatile char* address);

bool __wrap__Z16addr_is_readableIcEbPVT_(volatile char* address) {
  probes.push_back(reinterpret_cast<uint64_t>(address));
  return __real__Z16addr_is_readableIcEbPVT_(address);
}
}

namespace {

using namespace fixture;

constexpr unsigned zt = 9, pg = 5, rn = 31, rm = 17;

cpu_state prepare(Random& random, const MemoryRow& form, uint64_t address) {
  cpu_state state = random_state(random);
  state.x[rn] = address - state.x[rm] * form.memory;
  return state;
}

// An immediate of 0 or a random index register that leads to the address.
uint32_t make_word(const MemoryRow& form, cpu_state& state, uint64_t address) {
  const bool immediate = form.shape == "SI";
  if (immediate)
    state.x[rn] = address + 3 * form.elements() * form.memory;
  return encode(*form.row, {{0, zt}, {10, pg}, {5, rn}, {16, immediate ? 16 - 3 : rm}});
}

void set_active(cpu_state& state, const std::vector<unsigned>& elements, unsigned width) {
  memset(state.p[pg], 2, vector_bytes);
  for (unsigned i : elements)
    state.p[pg][i * width] = 3;
}

// Loads element i, or makes it 0 if it is inactive.
void expect_element(const MemoryRow& form, const Pages& pages, cpu_state& state, unsigned i,
                    uint64_t address) {
  set_lane(state.z[zt], form.width, i,
           active(state.p[pg], form.width, i)
               ? form.extend(pages.value(address + i * form.memory, form.memory))
               : 0);
}

void expect_non_fault(const MemoryRow& form, const Pages& pages, cpu_state& state,
                      uint64_t address) {
  for (unsigned i = 0; i < form.elements(); i++)
    if (active(state.p[pg], form.width, i) &&
        !pages.accessible(address + i * form.memory, form.memory))
      set_lane(state.ffr, form.width, i, 0);
    else
      expect_element(form, pages, state, i, address);
}

TEST(NonFault, EveryElementFailsForItself) {
  Random random(1);
  const Pages pages("x.x.");
  for (const MemoryRow& form : memory_rows(true, {"NF"}))
    for (unsigned edge = 1; edge <= 3; edge++)
      for (uint64_t back = 0; back <= 18; back++)
        for (unsigned round = 0; round < 4; round++) {
          const uint64_t address = pages.page(edge) - back;
          pages.fill(random, address, 64);
          cpu_state before = random_state(random);
          const uint32_t word = make_word(form, before, address);
          cpu_state expected = before;
          expected.instruction = word;
          expect_non_fault(form, pages, expected, address);
          cpu_state actual = before;
          execute(actual, *form.row, word);
          const testing::ScopedTrace trace(__FILE__, __LINE__,
                                           std::string(form.row->name) + " " +
                                               std::to_string(back) + " bytes before page " +
                                               std::to_string(edge));
          expect_same(expected, actual);
        }
}

// What a first-fault load does: the elements whose share of 16 bytes lies in front of an unreadable
// page are loaded, the others lose their bits of ffr. Where there is room for none, the first
// active one is read all the same. Returns false if that faults.
bool expect_first_fault(const MemoryRow& form, const Pages& pages, cpu_state& state,
                        uint64_t address) {
  const uint64_t left = pages.page_bytes() - address % pages.page_bytes();
  unsigned count = form.elements();
  if (left <= vector_bytes && !pages.accessible(address + pages.page_bytes(), 1))
    count = static_cast<unsigned>(std::min<uint64_t>(left, vector_bytes)) / form.width;
  if (count == 0) {
    count = form.elements();
    for (unsigned i = form.elements(); i-- > 0;)
      if (active(state.p[pg], form.width, i))
        count = i + 1;
  }
  for (unsigned i = 0; i < count; i++) {
    if (active(state.p[pg], form.width, i) &&
        !pages.accessible(address + i * form.memory, form.memory))
      return false;
    expect_element(form, pages, state, i, address);
  }
  for (unsigned byte = count * form.width; byte < vector_bytes; byte++)
    state.ffr[byte] = 0;
  return true;
}

TEST(FirstFault, CutsOffWhatLiesBehindThePage) {
  Random random(2);
  const Pages pages("x.x..");
  unsigned faulted = 0;
  for (const MemoryRow& form : memory_rows(true, {"FF"}))
    for (unsigned edge : {1u, 2u, 4u})
      for (uint64_t back = 0; back <= 18; back++)
        for (unsigned round = 0; round < 8; round++) {
          const uint64_t address = pages.page(edge) - back;
          pages.fill(random, address, 64);
          cpu_state before = prepare(random, form, address);
          const uint32_t word = make_word(form, before, address);
          cpu_state expected = before;
          expected.instruction = word;
          const testing::ScopedTrace trace(__FILE__, __LINE__,
                                           std::string(form.row->name) + " " +
                                               std::to_string(back) + " bytes before page " +
                                               std::to_string(edge));
          cpu_state actual = before;
          if (expect_first_fault(form, pages, expected, address)) {
            execute(actual, *form.row, word);
          } else {
            EXPECT_TRUE(faults(actual, form.row->stub, word));
            faulted++;
          }
          expect_same(expected, actual);
        }
  EXPECT_GT(faulted, 0u);  // at pages whose first byte cannot be read, and with no room at all
}

// The probes of single loads. Addresses are relative to the page that cannot be read.
TEST(Probes, AreMadeAtPageChangesOnly) {
  struct Case {
    const char* name;
    int64_t address;
    std::vector<unsigned> active;
    std::vector<int64_t> probes;
  };
  const auto next_page = static_cast<int64_t>(sysconf(_SC_PAGESIZE));
  const Case cases[] = {
      {"VecU64CLoadFF8LSSZ", -1000, {0, 1}, {}},
      {"VecU8CLoadFF1LSSZ", -17, {0, 15}, {}},
      {"VecU64CLoadFF4LSSZ", -17, {0, 1}, {}},
      {"VecU64CLoadFF8LSSZ", -16, {0, 1}, {-16 + next_page}},
      {"VecU64CLoadFF1LSSZ", -15, {0, 1}, {-15 + next_page}},
      {"VecU8CLoadFF1LSSZ", -1, {}, {-1 + next_page}},
      {"VecU8CLoadNF1SIZ", -1000, {0, 1, 2, 15}, {-1000, -1000}},
      {"VecU8CLoadNF1SIZ", -1000, {1, 2, 15}, {-1000}},
      {"VecU8CLoadNF1SIZ", -3, {0, 1, 2, 3, 4, 5}, {-3, -3, 0}},
      {"VecU8CLoadNF1SIZ", -3, {5, 6}, {-3, 2}},
      {"VecU64CLoadNF8SIZ", -8, {0, 1}, {-8, -8, 0}},
      {"VecU64CLoadNF8SIZ", -12, {0, 1}, {-12, -12, -4 + 7}},
      {"VecU64CLoadNF8SIZ", 8, {0, 1}, {8, 8}},
      {"VecU64CLoadNF8SIZ", 8, {}, {8}},
  };
  Random random(3);
  const Pages pages("..xx");
  const auto rows = memory_rows(true, {"FF", "NF"});
  for (const Case& c : cases) {
    const auto form = std::find_if(rows.begin(), rows.end(), [&](const MemoryRow& row) {
      return std::string_view(row.row->name) == c.name;
    });
    ASSERT_NE(form, rows.end()) << c.name;
    const uint64_t address = pages.page(2) + static_cast<uint64_t>(c.address);
    cpu_state state = prepare(random, *form, address);
    const uint32_t word = make_word(*form, state, address);
    set_active(state, c.active, form->width);
    probes.clear();
    execute(state, *form->row, word);
    std::vector<int64_t> relative;
    for (uint64_t probe : probes)
      relative.push_back(static_cast<int64_t>(probe - pages.page(2)));
    EXPECT_EQ(relative, c.probes) << c.name << " at " << c.address;
  }
}

// Loops as programs have them: set ffr, load, and go on behind the elements that ffr still has.

void set_first(cpu_state& state, uint64_t elements, unsigned width) {
  memset(state.p[pg], 0, vector_bytes);
  for (uint64_t i = 0; i < std::min<uint64_t>(elements, vector_bytes / width); i++)
    state.p[pg][i * width] = 1;
}

unsigned loaded_elements(const cpu_state& state, unsigned width) {
  unsigned count = 0;
  while (count < vector_bytes / width && (state.p[pg][count * width] & 1) != 0 &&
         (state.ffr[count * width] & 1) != 0)
    count++;
  return count;
}

// Adds up an array that ends so many bytes in front of an unreadable page, with a predicate for
// the rest of the array. Returns false if a load makes no progress.
bool add_up(const MemoryRow& form, const Pages& pages, uint64_t length, uint64_t distance,
            uint64_t& sum) {
  const uint64_t start = pages.page(1) - distance - length * form.memory;
  const uint32_t word = encode(*form.row, {{0, zt}, {10, pg}, {5, 2}, {16, 3}});
  cpu_state state{};
  state.x[2] = start;
  for (uint64_t i = 0; i < length;) {
    memset(state.ffr, 1, vector_bytes);
    set_first(state, length - i, form.width);
    state.x[3] = i;
    form.row->stub(&state, word);
    const unsigned count = loaded_elements(state, form.width);
    if (count == 0)
      return false;
    for (unsigned k = 0; k < count; k++)
      sum += lane(state.z[zt], form.width, k);
    i += count;
  }
  return true;
}

TEST(FirstFault, LoopsOverArraysEnd) {
  Random random(4);
  const Pages pages(".x");
  pages.fill(random, pages.page(1), 1024);
  for (const MemoryRow& form : memory_rows(true, {"FF"}))
    for (uint64_t length = 0; length <= 64; length++)
      for (uint64_t distance = 0; distance <= 32; distance++) {
        uint64_t plain = 0;
        for (uint64_t i = 0; i < length; i++)
          plain += pages.value(pages.page(1) - distance - (length - i) * form.memory, form.memory);
        uint64_t sum = 0;
        ASSERT_TRUE(add_up(form, pages, length, distance, sum))
            << form.row->name << " length " << length << " distance " << distance;
        ASSERT_EQ(sum, plain) << form.row->name << " length " << length << " distance " << distance;
      }
}

// A search for the first zero with everything active, as strlen has it.
TEST(FirstFault, SearchesForAnEndEnd) {
  const Pages pages(".x");
  for (const MemoryRow& form : memory_rows(true, {"FF"})) {
    const uint32_t word = encode(*form.row, {{0, zt}, {10, pg}, {5, 2}, {16, 3}});
    for (uint64_t length = 0; length <= 64; length++)
      for (uint64_t distance = 0; distance <= 32; distance++) {
        const uint64_t end = pages.page(1) - distance - form.memory;
        memset(pages.at(end - length * form.memory), 7, length * form.memory);
        memset(pages.at(end), 0, form.memory);
        cpu_state state{};
        memset(state.p[pg], 1, vector_bytes);
        state.x[2] = end - length * form.memory;
        bool found = false;
        while (!found) {
          memset(state.ffr, 1, vector_bytes);
          form.row->stub(&state, word);
          const unsigned count = loaded_elements(state, form.width);
          ASSERT_GT(count, 0u) << form.row->name << " " << length << " " << distance;
          unsigned k = 0;
          while (k < count && lane(state.z[zt], form.width, k) != 0)
            k++;
          found = k < count;
          state.x[3] += k;
        }
        ASSERT_EQ(state.x[3], length) << form.row->name << " distance " << distance;
      }
  }
}

}  // namespace
