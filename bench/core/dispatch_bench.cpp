// What a block's instructions cost when the block is built: the question to is_sve.
#include <benchmark/benchmark.h>

#include <vector>

#include "sve/decode/dispatch.h"

namespace {

// Words of an ordinary function: add, load pair, compare, branch, multiply, vector add, return.
const uint32_t outside[] = {0x8b020020, 0xa9410fe2, 0xeb02003f, 0x54000061,
                            0x9b027c20, 0x4ea28420, 0xd65f03c0};

void is_sve_outside(benchmark::State& state) {
  size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(is_sve(outside[i]));
    i = i + 1 == std::size(outside) ? 0 : i + 1;
  }
}
BENCHMARK(is_sve_outside);

// One word of every row, in an order that no branch predictor learns.
void is_sve_inside(benchmark::State& state) {
  constexpr size_t stride = 787;
  std::vector<uint32_t> words;
  for (const Row& row : all_rows())
    words.push_back(row.value);
  size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(is_sve(words[i]));
    i = (i + stride) % words.size();
  }
}
BENCHMARK(is_sve_inside);

// In the SVE space, but no row's: every map is asked.
void is_sve_without_row(benchmark::State& state) {
  constexpr uint32_t bsl_of_sve2 = 0x04213c40;
  for (auto _ : state)
    benchmark::DoNotOptimize(is_sve(bsl_of_sve2));
}
BENCHMARK(is_sve_without_row);

}  // namespace

BENCHMARK_MAIN();
