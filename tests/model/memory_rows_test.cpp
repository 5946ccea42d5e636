// Every load and store of the reference model, by plain loops over elements that follow the rows'
// names.
//
// Where an address cannot be read the tiers differ by design. The model's first-fault and non-fault
// loads try each active element, give 0 from the first failure on, and clear ffr from there; that
// is what is checked here, of rows and twins. The fast path's, which look at pages and keep the old
// elements, have their own test beside the other instruction functions. With faults as the hardware
// has them all go the model's way, but for the first active element of a first-fault load. A plain
// load of the model that faults leaves the record as it was.
#include <sys/mman.h>
#include <unistd.h>

#include <memory>
#include <new>
#include <optional>

#include "sve/state/guarded_reads.h"
#include "tests/fast/memory_fixture.h"
#include "tests/model/lanes.h"
#include "tests/model/random_case.h"
#include "tests/model/twin_row.h"

namespace {

using fixture::Random;

// Memory below 4 GiB.
template <class T> T* map_low(size_t bytes) {
  constexpr uintptr_t low_address = 0x20000000;
  void* const memory = mmap(reinterpret_cast<void*>(low_address), bytes, PROT_READ | PROT_WRITE,
                            MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED_NOREPLACE, -1, 0);
  if (memory == MAP_FAILED)
    throw std::runtime_error("no memory below 4 GiB");
  return static_cast<T*>(memory);
}

// What a row's name says: VecS64Load4XSVZ loads 4 bytes into signed doublewords, and so on.
struct Shape {
  bool store, first_fault, non_fault, quad, is_signed;
  unsigned width, msize;
  std::string address;  // the letters behind the digit, without Z

  bool is_plain() const { return !first_fault && !non_fault; }
};

std::optional<Shape> shape_of(std::string_view name) {
  const size_t load = name.find("Load"), store = name.find("Store");
  if (load == name.npos && store == name.npos)
    return {};
  Shape shape{};
  shape.store = store != name.npos;
  shape.is_signed = name[3] == 'S';
  shape.width = static_cast<unsigned>(std::stoul(std::string(name.substr(4, 2)))) / 8;
  size_t at = shape.store ? store + 5 : load + 4;
  for (const std::string_view infix : {"FF", "NF", "NT", "Dup"})
    if (name.substr(at).starts_with(infix)) {
      shape.first_fault = infix == "FF";
      shape.non_fault = infix == "NF";
      at += infix.size();
    }
  shape.msize = static_cast<unsigned>(name[at] - '0');
  shape.address = name.substr(at + 1, name.size() - at - 2);
  shape.quad = shape.address.front() == 'Q';
  return shape;
}

uint64_t address_of(const Shape& shape, const cpu_state& state, uint32_t word, unsigned e) {
  const unsigned n = word >> 5 & 31, m = word >> 16 & 31;
  const uint64_t index = m == 31 ? 0 : state.x[m], base = state.x[n];
  const std::string& form = shape.address;
  if (form == "QSI")
    return base + static_cast<uint64_t>(static_cast<int32_t>(word << 12) >> 28) * 16 +
           e * shape.msize;
  if (form == "SI")
    return base + (static_cast<uint64_t>(static_cast<int32_t>(word << 12) >> 28) *
                       (vector_bytes / shape.width) +
                   e) *
                      shape.msize;
  if (form == "QSS" || form == "LSS")
    return base + index * shape.msize + e * shape.msize;
  if (form == "VI")
    return fixture::lane(state.z[n], shape.width, e) + m * shape.msize;
  uint64_t offset = fixture::lane(state.z[m], shape.width, e);
  if (form.front() == 'X')
    offset = static_cast<uint64_t>(static_cast<int32_t>(offset));
  if (form.front() == 'Y')
    offset = static_cast<uint32_t>(offset);
  const bool scaled = form.ends_with("SV");
  return base + offset * (scaled ? shape.msize : 1);
}

uint64_t read_extended(const Shape& shape, uint64_t address) {
  uint64_t value = 0;
  memcpy(&value, reinterpret_cast<const void*>(address), shape.msize);
  return shape.is_signed ? static_cast<uint64_t>(fixture::as_signed(value, shape.msize)) : value;
}

using Readable = std::function<bool(uint64_t address, unsigned bytes)>;

// Carries a load out on the record as its name says. Returns false if it faults.
bool expect_load(const Shape& shape, cpu_state& state, const cpu_state& before, uint32_t word,
                 const Readable& readable) {
  const unsigned g = word >> 10 & 7, t = word & 31;
  bool fault = false, first = shape.first_fault;
  for (unsigned e = 0; e < vector_bytes / shape.width; e++) {
    uint64_t value = 0;
    const uint64_t address = address_of(shape, before, word, e);
    if (fixture::active(before.p[g], shape.width, e) && !fault) {
      fault = !readable(address, shape.msize);
      if (fault && (shape.is_plain() || (first && sve_faults_as_hardware)))
        return false;
      first = false;
      if (!fault)
        value = read_extended(shape, address);
    }
    if (fault)
      fixture::set_lane(state.ffr, shape.width, e, 0);
    fixture::set_lane(state.z[t], shape.width, e, value);
  }
  return true;
}

void expect_store(const Shape& shape, const cpu_state& before, uint32_t word) {
  const unsigned g = word >> 10 & 7, t = word & 31;
  for (unsigned e = 0; e < vector_bytes / shape.width; e++)
    if (fixture::active(before.p[g], shape.width, e)) {
      const uint64_t value = fixture::lane(before.z[t], shape.width, e);
      memcpy(reinterpret_cast<void*>(address_of(shape, before, word, e)), &value, shape.msize);
    }
}

// What the bridge does beside the instruction.
cpu_state bridged(cpu_state state) {
  state.nzcv &= 0xffffffff;
  state.fpcr |= state.fz16;
  for (uint8_t& byte : state.ffr)
    byte &= 1;
  return state;
}

TEST(MemoryRows, LoadAndStoreWhatTheirNamesSay) {
  auto* const memory = new (map_low<char>(sizeof(tiers::Memory))) tiers::Memory;
  const auto result = std::make_unique<tiers::Memory>();
  Random random(11);
  for (const Row& row : all_rows()) {
    const std::optional<Shape> shape = shape_of(row.name);
    if (row.tier != Tier::model || !shape)
      continue;
    for (uint8_t& byte : memory->bytes)
      byte = static_cast<uint8_t>(random());
    for (int i = 0; i < 40 && !HasFailure(); i++) {
      const tiers::Case chosen = tiers::random_case(row, random, *memory);
      cpu_state actual = chosen.state, expected = bridged(chosen.state);
      const tiers::Memory before = *memory;
      fixture::execute(actual, row, chosen.word);
      *result = *memory;
      *memory = before;
      if (shape->store)
        expect_store(*shape, chosen.state, chosen.word);
      else
        expect_load(*shape, expected, chosen.state, chosen.word,
                    [](uint64_t, unsigned) { return true; });
      EXPECT_TRUE(memory->bytes == result->bytes) << row.name << ": memory differs";
      if (memcmp(&expected, &actual, sizeof actual) != 0) {
        const testing::ScopedTrace trace(__FILE__, __LINE__,
                                         std::string(row.name) + " " + fixture::hex(chosen.word));
        fixture::expect_same(expected, actual);
      }
    }
  }
  munmap(memory, sizeof *memory);
}

// Two pages of which the second cannot be read. Elements lie before, across and behind the
// boundary.
struct Boundary {
  size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
  char* const memory = map_low<char>(2 * page);
  uint64_t end = reinterpret_cast<uint64_t>(memory) + page;

  explicit Boundary(Random& random) {
    for (size_t i = 0; i < page; i++)
      memory[i] = static_cast<char>(random());
    mprotect(memory + page, page, PROT_NONE);
  }
  ~Boundary() { munmap(memory, 2 * page); }

  uint64_t address_near(Random& random) const { return end - 48 + random() % 64; }
};

// Registers for addresses near the boundary: mostly in front of it.
void aim(cpu_state& state, const Shape& shape, uint32_t& word, const Boundary& boundary,
         Random& random) {
  const unsigned n = word >> 5 & 31;
  if (shape.address == "VI") {
    for (unsigned e = 0; e < vector_bytes / shape.width; e++)
      fixture::set_lane(state.z[n], shape.width, e,
                        boundary.address_near(random) - (word >> 16 & 31) * shape.msize);
    return;
  }
  state.x[n] = boundary.end - 8 - random() % 24;
  if (shape.address == "SI")
    word &= ~(15u << 16);
}

// Returns how often the load faulted. A stub of the fast path notes the word, and has no bridge.
unsigned check_boundary(const Row& row, decode_stub stub, const Boundary& boundary,
                        Random& random) {
  const bool fast = row.tier == Tier::fast && stub == row.stub;
  unsigned faulted = 0;
  const Shape shape = *shape_of(row.name);
  const auto memory = std::make_unique<tiers::Memory>();  // the addresses in it are replaced
  const Readable readable = [&](uint64_t address, unsigned bytes) {
    return address + bytes <= boundary.end && address >= boundary.end - boundary.page;
  };
  for (int i = 0; i < 60 && !testing::Test::HasFailure(); i++) {
    tiers::Case chosen = tiers::random_case(row, random, *memory);
    aim(chosen.state, shape, chosen.word, boundary, random);
    cpu_state before = chosen.state, actual = before;
    if (fast)
      before.instruction = chosen.word;
    cpu_state expected = fast ? before : bridged(before);
    if (expect_load(shape, expected, before, chosen.word, readable)) {
      stub(&actual, chosen.word);
    } else {
      expected = before;
      faulted++;
      EXPECT_TRUE(fixture::faults(actual, stub, chosen.word));
      EXPECT_FALSE(readable(fixture::fault_address, 1));
    }
    if (memcmp(&expected, &actual, sizeof actual) != 0) {
      const testing::ScopedTrace trace(__FILE__, __LINE__,
                                       std::string(row.name) + " " + fixture::hex(chosen.word));
      fixture::expect_same(expected, actual);
    }
    EXPECT_EQ(SVEFaultRegion, 0);
  }
  return faulted;
}

TEST(MemoryRows, StopOrFaultAtTheFirstUnreadableElement) {
  Random random(12);
  const Boundary boundary(random);
  for (const bool as_hardware : {false, true}) {
    const fixture::Faults mode(as_hardware);
    unsigned rows = 0, twins = 0;
    for (const Row& row : all_rows()) {
      const std::optional<Shape> shape = shape_of(row.name);
      if (!shape || shape->store || (row.tier == Tier::fast && shape->is_plain()))
        continue;
      const bool may_fault = shape->is_plain() || (as_hardware && shape->first_fault);
      if (as_hardware || row.tier == Tier::model) {
        rows++;
        EXPECT_EQ(check_boundary(row, row.stub, boundary, random) != 0, may_fault) << row.name;
      }
      if (const TwinRow* const twin = twin_named(row.name)) {
        twins++;
        EXPECT_EQ(check_boundary(row, twin->stub, boundary, random) != 0, may_fault) << row.name;
      }
    }
    EXPECT_EQ(rows, as_hardware ? 131u : 108u);
    EXPECT_EQ(twins, 23u);
  }
}

}  // namespace
