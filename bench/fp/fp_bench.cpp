// Operations per second of the floating-point library, by operation and width, on ordinary values
// and on a mix rich in denormals, zeros, infinities and NaNs.
#include <benchmark/benchmark.h>

#include <array>
#include <random>
#include <string>
#include <utility>

#include "sve/fp/fp.h"

namespace {

constexpr std::size_t operand_count = 1024;  // a power of two, small enough for the first cache

enum class Mix { ordinary, special };

template <typename T> using Operands = std::array<T, operand_count>;

/// Ordinary: positive and negative, within a few binades of 1. Special: half of the values are
/// denormals, zeros, infinities and NaNs, the others any pattern.
template <typename T> Operands<T> make_operands(Mix mix) {
  using F = FPFormat<T>;
  std::mt19937_64 random(1);
  Operands<T> operands;
  for (T& op : operands) {
    op = static_cast<T>(random());
    if (mix == Mix::ordinary) {
      const T field = static_cast<T>(F::bias - 3 + static_cast<int>(random() % 7));
      op = T((op & (F::sign_bit | F::fraction_mask)) | T(field << F::fraction_bits));
    } else if (const std::uint64_t kind = random() % 8; kind < 3) {
      op &= F::sign_bit | F::fraction_mask;
    } else if (kind == 3) {
      static constexpr T landmarks[] = {0, F::infinity, F::default_nan, F::sign_bit};
      op = landmarks[random() % std::size(landmarks)];
    }
  }
  return operands;
}

/// Calls `operation` with three operands that differ each time, and a fresh word, as for the
/// elements of a vector.
template <typename T, typename Operation>
void run(benchmark::State& state, Mix mix, Operation operation) {
  const Operands<T> operands = make_operands<T>(mix);
  std::size_t i = 0;
  const auto operand = [&](std::size_t n) { return operands[n % operand_count]; };
  for (auto _ : state) {
    FPSCR fpscr = 0;
    benchmark::DoNotOptimize(operation(operand(i), operand(i + 7), operand(i + 31), fpscr));
    benchmark::DoNotOptimize(fpscr);
    ++i;
  }
  state.SetItemsProcessed(state.iterations());
}

template <typename T, typename Operation> void add(const std::string& name, Operation operation) {
  for (const auto& [mix, mix_name] :
       {std::pair{Mix::ordinary, "ordinary"}, {Mix::special, "special"}}) {
    const std::string full = name + "/" + std::to_string(FPFormat<T>::width) + "/" + mix_name;
    benchmark::RegisterBenchmark(full.c_str(), [mix = mix, operation](benchmark::State& state) {
      run<T>(state, mix, operation);
    });
  }
}

template <typename T> void add_arithmetic() {
  add<T>("FPAdd", [](T a, T b, T, FPSCR& f) { return FPAdd(a, b, f); });
  add<T>("FPSub", [](T a, T b, T, FPSCR& f) { return FPSub(a, b, f); });
  add<T>("FPMul", [](T a, T b, T, FPSCR& f) { return FPMul(a, b, f); });
  add<T>("FPMulX", [](T a, T b, T, FPSCR& f) { return FPMulX(a, b, f); });
  add<T>("FPMulAdd", [](T a, T b, T c, FPSCR& f) { return FPMulAdd(a, b, c, f); });
  add<T>("FPDiv", [](T a, T b, T, FPSCR& f) { return FPDiv(a, b, f); });
  add<T>("FPSqrt", [](T a, T, T, FPSCR& f) { return FPSqrt(T(a & ~FPFormat<T>::sign_bit), f); });
}

template <typename T> void add_selection() {
  add<T>("FPCompareEQ", [](T a, T b, T, FPSCR& f) { return FPCompareEQ(a, b, f); });
  add<T>("FPCompareGE", [](T a, T b, T, FPSCR& f) { return FPCompareGE(a, b, f); });
  add<T>("FPCompareGT", [](T a, T b, T, FPSCR& f) { return FPCompareGT(a, b, f); });
  add<T>("FPCompareUN", [](T a, T b, T, FPSCR& f) { return FPCompareUN(a, b, f); });
  add<T>("FPMax", [](T a, T b, T, FPSCR& f) { return FPMax(a, b, f); });
  add<T>("FPMin", [](T a, T b, T, FPSCR& f) { return FPMin(a, b, f); });
  add<T>("FPMaxNum", [](T a, T b, T, FPSCR& f) { return FPMaxNum(a, b, f); });
  add<T>("FPMinNum", [](T a, T b, T, FPSCR& f) { return FPMinNum(a, b, f); });
}

template <typename T> void add_estimates() {
  add<T>("FPRecipEstimate", [](T a, T, T, FPSCR& f) { return FPRecipEstimate(a, f); });
  add<T>("FPRSqrtEstimate", [](T a, T, T, FPSCR& f) { return FPRSqrtEstimate(a, f); });
  add<T>("FPRecpX", [](T a, T, T, FPSCR& f) { return FPRecpX(a, f); });
  add<T>("FPRecipStepFused", [](T a, T b, T, FPSCR& f) { return FPRecipStepFused(a, b, f); });
  add<T>("FPRSqrtStepFused", [](T a, T b, T, FPSCR& f) { return FPRSqrtStepFused(a, b, f); });
  add<T>("FPTRIMADD", [](T a, T b, T, FPSCR& f) { return FPTRIMADD(3, a, b, f); });
  add<T>("FPTRISMUL", [](T a, T b, T, FPSCR& f) { return FPTRISMUL(a, b, f); });
  add<T>("FPEXPA", [](T a, T, T, FPSCR&) { return FPEXPA(a); });
}

template <typename To, typename From> void add_conversion() {
  add<From>("FPConvert/to" + std::to_string(8 * sizeof(To)),
            [](From a, From, From, FPSCR& f) { return FPConvert<To>(a, FPRounding_TIEEVEN, f); });
}

template <typename To, typename From> void add_to_fixed() {
  add<From>("fplibFPToFixed/to" + std::to_string(8 * sizeof(To)), [](From a, From, From, FPSCR& f) {
    return fplibFPToFixed<To>(a, 0, false, FPRounding_ZERO, f);
  });
}

template <typename T> void add_rounding() {
  add<T>("FPRoundInt",
         [](T a, T, T, FPSCR& f) { return FPRoundInt(a, FPRounding_TIEEVEN, true, f); });
  add<T>("fplibFixedToFP",
         [](T a, T, T, FPSCR& f) { return fplibFixedToFP<T>(a, 0, false, FPRounding_TIEEVEN, f); });
}

void add_conversions() {
  using H = std::uint16_t;
  using S = std::uint32_t;
  using D = std::uint64_t;
  add_conversion<H, S>();
  add_conversion<H, D>();
  add_conversion<S, H>();
  add_conversion<S, D>();
  add_conversion<D, H>();
  add_conversion<D, S>();
  add_to_fixed<H, H>();
  add_to_fixed<S, H>();
  add_to_fixed<S, S>();
  add_to_fixed<S, D>();
  add_to_fixed<D, H>();
  add_to_fixed<D, S>();
  add_to_fixed<D, D>();
  add<H>("FPScale",
         [](H a, H b, H, FPSCR& f) { return FPScale16(a, static_cast<std::int16_t>(b % 8), f); });
  add<S>("FPScale",
         [](S a, S b, S, FPSCR& f) { return FPScale32(a, static_cast<std::int32_t>(b % 8), f); });
  add<D>("FPScale",
         [](D a, D b, D, FPSCR& f) { return FPScale64(a, static_cast<std::int64_t>(b % 8), f); });
}

template <typename T> void add_width() {
  add_arithmetic<T>();
  add_selection<T>();
  add_estimates<T>();
  add_rounding<T>();
}

}  // namespace

int main(int argc, char** argv) {
  add_width<std::uint16_t>();
  add_width<std::uint32_t>();
  add_width<std::uint64_t>();
  add_conversions();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv))
    return 1;
  benchmark::RunSpecifiedBenchmarks();
}
