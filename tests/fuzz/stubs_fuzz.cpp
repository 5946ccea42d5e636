// Words, and the stubs of rows on any state, in memory that ends: a row and its twin do the same,
// or both fault. The input is a word, a row, and what the state is made from.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <ucontext.h>

#include <csetjmp>
#include <csignal>
#include <memory>

#include "host/fp_unit.h"
#include "host/signal_context.h"
#include "sve/decode/dispatch.h"
#include "sve/state/guarded_reads.h"
#include "sve/state/switches.h"
#include "tests/fuzz/target.h"
#include "tests/model/random_case.h"
#include "tests/model/twin_row.h"

namespace {

uint64_t memory_cases = 0, faults_met = 0;

sigjmp_buf fault_return;

// As a runtime has it: what the client has to answer for is the client's.
void on_fault(int signal, siginfo_t* info, void* context) {
  ucontext_t copy = *static_cast<ucontext_t*>(context);
  if (SVEFaultRegion != 0 || host::step_over_probe(&copy))
    return SVESigHandler(signal, info, context);
  siglongjmp(fault_return, 1);
}

// Memory with nothing beside it.
tiers::Memory& guarded_memory() {
  tiers::Memory& memory = tiers::low_memory();
  constexpr size_t guard = 1 << 20;
  for (const uint64_t at : {memory.middle() - tiers::Memory::size / 2 - guard,
                            memory.middle() + tiers::Memory::size / 2})
    REQUIRE(mmap(reinterpret_cast<void*>(at), guard, PROT_NONE,
                 MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | MAP_FIXED_NOREPLACE, -1,
                 0) == reinterpret_cast<void*>(at));
  return memory;
}

// Whether it faulted. The host's floating-point control stays.
template <class Function> bool faults(Function function) {
  const uint64_t control = host::read_fpcr();
  volatile bool faulted = true;
  if (sigsetjmp(fault_return, 0) == 0) {
    function();
    faulted = false;
  }
  host::write_fpcr(control);
  return faulted;
}

bool same_record(const cpu_state& a, const cpu_state& b) {
  if (memcmp(&a, &b, sizeof a) == 0)
    return true;
  fixture::expect_same(a, b);
  return false;
}

// A store that faults may have done any of its bytes, but no other.
void check_torn(const tiers::Memory& before, const tiers::Memory& one, const tiers::Memory& other) {
  for (size_t i = 0; i < tiers::Memory::size; i++) {
    const uint8_t was = before.bytes[i], is = one.bytes[i], would_be = other.bytes[i];
    REQUIRE(is == was || would_be == was || is == would_be);
  }
}

// The destination is what the word's lowest bits name: one register, or some in a row for a load of
// structures.
void check_destination(const Row& row, uint32_t word, const cpu_state& was, const cpu_state& is) {
  const unsigned number = word & 31;
  const unsigned most = std::string_view(row.name).find("Load") != std::string_view::npos ? 4 : 1;
  for (unsigned i = 0; i < 32; i++) {
    REQUIRE((i - number) % 32 < most || memcmp(was.z[i], is.z[i], sizeof is.z[i]) == 0);
    REQUIRE(i == number || was.x[i] == is.x[i]);
  }
  for (unsigned i = 0; i < 16; i++)
    REQUIRE(i == (word & 15) || memcmp(was.p[i], is.p[i], sizeof is.p[i]) == 0);
}

void check_case(const Row& row, const tiers::Case& chosen, tiers::Memory& memory) {
  static const auto before = std::make_unique<tiers::Memory>(),
                    after = std::make_unique<tiers::Memory>();
  const TwinRow* const twin = twin_named(row.name);
  *before = memory;
  cpu_state fast = chosen.state, model = chosen.state;
  const bool faulted = faults([&] { tiers::run_fast(row, chosen.word, fast); });
  *after = memory;
  if (twin == nullptr) {  // a prefetch
    REQUIRE(!faulted && row.tier == Tier::no_operation && same_record(chosen.state, fast));
    REQUIRE(before->bytes == after->bytes);
    return;
  }
  memory = *before;
  REQUIRE(faults([&] { twin->stub(&model, chosen.word); }) == faulted);
  faults_met += faulted ? 1 : 0;
  if (faulted) {
    fast.instruction = chosen.state.instruction;
    REQUIRE(same_record(chosen.state, fast));
    REQUIRE(same_record(chosen.state, model));
    check_torn(*before, *after, memory);
  } else {
    check_destination(row, chosen.word, chosen.state, fast);
    tiers::settle(fast, chosen.state);
    REQUIRE(same_record(model, fast));
    REQUIRE(memory.bytes == after->bytes);
  }
}

void check_word(uint32_t word) {
  const decode_stub stub = is_sve(word);
  REQUIRE(stub == stub_to_execute(word));
  REQUIRE(stub == nullptr || in_sve_space(word));
  const char* const text = sve_describe_word(word);
  REQUIRE((stub != nullptr) == (text != nullptr && strcmp(text, "SVE") == 0));
  const Row* const row = row_of_stub(stub);
  REQUIRE((stub == nullptr) == (row == nullptr));
  REQUIRE(row == nullptr || (word & row->mask) == row->value);
}

}  // namespace

int LLVMFuzzerInitialize(int* argc, char*** argv) {
  testing::InitGoogleTest(argc, *argv);
  GTEST_FLAG_SET(throw_on_failure, true);  // which nobody catches
  return 0;
}

// What the client asks for is that its own handler is in force, as under a runtime.
extern "C" int __real_sigaction(int, const struct sigaction*, struct sigaction*);
extern "C" int __wrap_sigaction(int signal, const struct sigaction* action, struct sigaction* old) {
  if (old != nullptr && action == nullptr) {
    *old = {};
    old->sa_sigaction = SVESigHandler;
    old->sa_flags = SA_SIGINFO;
    return 0;
  }
  struct sigaction own = *action;
  own.sa_sigaction = on_fault;
  return __real_sigaction(signal, &own, old);
}

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static tiers::Memory& memory = guarded_memory();
  Input input(data, size);
  check_word(input.take<uint32_t>());
  const auto row_number = input.take<uint16_t>();
  const auto kind = input.take<uint8_t>();
  uint64_t seed = input.take<uint64_t>();
  while (!input.empty())
    seed = seed * 31 + input.take<uint8_t>();
  fixture::Random random(seed);
  // Mutations seldom hit the number.
  const Row& row = all_rows()[(kind >= 128 ? row_number : random()) % all_rows().size()];
  tiers::Case chosen = tiers::random_case(row, random, memory);
  check_word(chosen.word);
  for (uint8_t& byte : memory.bytes)
    byte = static_cast<uint8_t>(random());
  if (kind % 4 != 0)
    tiers::move_to_edge(chosen, row, random, memory);
  sve_faults_as_hardware = kind % 8 != 0;
  check_case(row, chosen, memory);
  memory_cases += tiers::touches_memory(row) ? 1 : 0;
  return 0;
}

const char* fuzz_missed() {
  return faults_met < memory_cases / 10 || memory_cases < 100 ? "faulted often enough" : "";
}
