// Throughput of the reference model through its bridge, by family: instructions per second.
//
// One row stands for each family. Predicates are all true, addresses lie in one small buffer, and
// the same word runs over and over, as a loop of the application would run it.
#include <benchmark/benchmark.h>

#include <cstring>
#include <stdexcept>
#include <string_view>

#include "sve/decode/dispatch.h"

namespace {

constexpr uint64_t buffer_bytes = 4096;
alignas(64) uint8_t buffer[buffer_bytes];

struct Family {
  const char* name;
  const char* row;
};

constexpr Family families[] = {
    {"arithmetic, bytes", "VecS8AbdVVM"},
    {"arithmetic, doublewords", "VecS64MulHVVM"},
    {"bits", "VecU32ClzVM"},
    {"shifts", "VecS16ShrVWM"},
    {"saturation", "VecS32QAddVVX"},
    {"dot product", "VecS32DotVVVX"},
    {"count", "VecU64CountVLSI"},
    {"saturating count", "VecS32QDecrVL8SI"},
    {"extraction", "VecU32LastAV"},
    {"permute", "VecU32CompressVV"},
    {"predicate logic with flags", "VecPAndFlgPPZ"},
    {"compare", "VecS32CmpFlgGEVIZ"},
    {"while", "VecS64While8LESS"},
    {"gather", "VecU32Load4VSZ"},
    {"first-fault gather", "VecU32LoadFF4VSZ"},
    {"first-fault load", "VecU16CLoadFF2LSSZ"},
    {"load and replicate", "VecU64LoadDup8QSIZ"},
    {"scatter", "VecU32Store4VSZ"},
    {"half arithmetic", "VecF16AddVVM"},
    {"half division", "VecF16DivVVM"},
    {"half fused", "VecF16FMAVVVM"},
    {"single ordered sum", "VecF32AddReduceAV"},
    {"single tree sum", "VecF32AddReduceFV"},
    {"double complex", "VecD64FCADDVVM"},
    {"half compare", "VecF16CmpGEVVZ"},
    {"half to integer", "VecS16_2FromHVM"},
    {"double rounding", "VecD64FRIntNVM"},
};

const Row& row_named(std::string_view name) {
  for (const Row& row : all_rows())
    if (name == row.name)
      return row;
  throw std::runtime_error("no row " + std::string(name));
}

// Registers in which every operand of every row makes sense: bases point at the buffer, offsets are
// small, floating-point elements are near one.
cpu_state sensible_state() {
  cpu_state state{};
  for (uint64_t& x : state.x)
    x = reinterpret_cast<uint64_t>(buffer) + buffer_bytes / 2;
  state.x[3] = 4;  // the index
  for (unsigned i = 0; i < z_registers; i++)
    for (unsigned b = 0; b < vector_bytes; b++)
      state.z[i][b] = static_cast<uint8_t>(b % 2 == 0 ? 16 * i + b : 0x3c);
  for (uint8_t& byte : state.z[3])  // the offsets
    byte = 0;
  for (auto& slot : state.p)
    for (uint8_t& byte : slot)
      byte = 1;
  return state;
}

// Destination 1, first source 2, second source or index 3, and the pattern ALL where it is one.
uint32_t word_of(const Row& row) {
  constexpr uint32_t d = 1, n = 2u << 5, m = 3u << 16, all = 31u << 5;
  const bool pattern = std::string_view(row.name).find("VL") != std::string_view::npos;
  return row.value | ((d | (pattern ? all : n) | m) & ~row.mask);
}

void run(benchmark::State& timing, const Row& row) {
  const cpu_state before = sensible_state();
  const uint32_t word = word_of(row);
  cpu_state state = before;
  for (auto _ : timing) {
    row.stub(&state, word);
    benchmark::DoNotOptimize(state);
    memcpy(state.z[1], before.z[1], vector_bytes);
  }
  timing.SetItemsProcessed(timing.iterations());
}

[[maybe_unused]] const bool registered = [] {
  for (const Family& family : families)
    benchmark::RegisterBenchmark(
        family.name, [&](benchmark::State& timing) { run(timing, row_named(family.row)); });
  return true;
}();

}  // namespace
