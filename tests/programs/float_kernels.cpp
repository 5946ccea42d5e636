// Element-wise and folding loops in single and double precision, vectorised by the compiler, with
// every length and special operands. Families: FADD, FSUB, FMUL, FDIV, FSQRT, FABS, FNEG, FABD,
// FMLA, FMLS, FNMLA, FNMLS, FMAXNM, FMINNM, compares, FCVT, SCVTF, UCVTF, FCVTZS, FCVTZU, FRINT,
// FADDA, indexed and immediate forms.
#include <cmath>
#include <cstring>

#include "kernels.h"

using kernels::run;

namespace {

template <class T> using Bits = std::conditional_t<sizeof(T) == 4, uint32_t, uint64_t>;

// Turns random bits into numbers: most of them ordinary, some special.
template <class T> T number(Bits<T> bits) {
  static const T special[] = {T(0),     -T(0),    T(1),    T(-1),    T(INFINITY),     -T(INFINITY),
                              T(0.5),   T(1e-38), T(3e38), T(1e-44), T(2147483648.0), T(-1e10),
                              T(65536), T(0.1),   T(2.5),  T(-3.5)};
  if (bits % 5 == 0)
    return special[bits / 5 % 16];
  const T value = static_cast<T>(static_cast<int32_t>(bits)) / T(bits % 7 == 0 ? 65537 : 1000003);
  return value;
}

// One pattern for all not-a-numbers: which operand's payload a result carries depends on the order
// in which the compiler writes a commutative operation.
template <class T> T plain_nan(T x) { return x != x ? T(NAN) : x; }

// out[i] = f(x, y, z) on numbers made of the arrays' bits.
template <class T, class Function> void map(const char* name, Function f) {
  run<Bits<T>, Bits<T>>(name, [f](Bits<T>* __restrict out, const Bits<T>* __restrict a,
                                  const Bits<T>* __restrict b, long n) {
    static T x[kernels::room], y[kernels::room], z[kernels::room];
    for (int i = 0; i < kernels::room; i++) {
      x[i] = number<T>(a[i]);
      y[i] = number<T>(b[i]);
      z[i] = number<T>(out[i]);
    }
    kernels::call<T, T>(
        [f](T* __restrict to, const T* __restrict p, const T* __restrict q, long count) {
          for (long i = 0; i < count; i++)
            to[i] = f(p[i], q[i], to[i]);
        },
        z, x, y, n);
    for (int i = 0; i < kernels::room; i++)
      z[i] = plain_nan(z[i]);
    memcpy(out, z, sizeof z);
  });
}

template <class T, class Function> void fold(const char* name, Function f) {
  run<Bits<T>, Bits<T>>(name, [f](Bits<T>* __restrict out, const Bits<T>* __restrict a,
                                  const Bits<T>* __restrict b, long n) {
    static T x[kernels::room], y[kernels::room];
    for (int i = 0; i < kernels::room; i++) {
      x[i] = number<T>(a[i]);
      y[i] = number<T>(b[i]);
    }
    const T result = plain_nan(static_cast<T>(f(x, y, n)));
    memcpy(out, &result, sizeof result);
  });
}

template <class T> void arithmetic() {
  map<T>("add", [](T x, T y, T) { return x + y; });
  map<T>("subtract", [](T x, T y, T) { return x - y; });
  map<T>("multiply", [](T x, T y, T) { return x * y; });
  map<T>("divide", [](T x, T y, T) { return x / y; });
  map<T>("square root", [](T x, T, T) { return std::sqrt(std::abs(x)); });
  map<T>("add a half", [](T x, T, T) { return x + T(0.5); });
  map<T>("add one", [](T x, T, T) { return x + T(1); });
  map<T>("from one", [](T x, T, T) { return T(1) - x; });
  map<T>("twice", [](T x, T, T) { return x * T(2); });
  map<T>("reciprocal", [](T x, T, T) { return T(1) / x; });
  map<T>("negate", [](T x, T, T) { return -x; });
  map<T>("absolute", [](T x, T, T) { return std::abs(x); });
  map<T>("absolute difference", [](T x, T y, T) { return std::abs(x - y); });
  map<T>("fused", [](T x, T y, T z) { return std::fma(x, y, z); });
  map<T>("fused, subtracted", [](T x, T y, T z) { return std::fma(-x, y, z); });
  map<T>("fused, negated", [](T x, T y, T z) { return -std::fma(x, y, z); });
  map<T>("fused, both", [](T x, T y, T z) { return std::fma(x, y, -z); });
  map<T>("greater number", [](T x, T y, T) { return std::fmax(x, y); });
  map<T>("lesser number", [](T x, T y, T) { return std::fmin(x, y); });
  map<T>("copy sign", [](T x, T y, T) { return std::copysign(x, y); });
}

template <class T> void choices() {
  map<T>("select", [](T x, T y, T z) { return x < y ? z : x; });
  map<T>("equal", [](T x, T y, T z) { return x == y ? z : T(3); });
  map<T>("not less", [](T x, T y, T z) { return !(x < y) ? z : T(3); });
  map<T>("above zero", [](T x, T y, T) { return x > 0 ? x : y; });
  map<T>("unordered", [](T x, T y, T z) { return __builtin_isunordered(x, y) ? z : x; });
  map<T>("magnitude", [](T x, T y, T) { return std::abs(x) >= std::abs(y) ? x : y; });
  map<T>("divide under a condition", [](T x, T y, T z) { return y != 0 ? x / y : z; });
  map<T>("add under a condition", [](T x, T y, T z) { return y > 1 ? x + z : z; });
}

template <class T> void roundings() {
  map<T>("floor", [](T x, T, T) { return std::floor(x); });
  map<T>("ceiling", [](T x, T, T) { return std::ceil(x); });
  map<T>("truncate", [](T x, T, T) { return std::trunc(x); });
  map<T>("round", [](T x, T, T) { return std::round(x); });
  map<T>("nearby", [](T x, T, T) { return std::nearbyint(x); });
  map<T>("rint", [](T x, T, T) { return std::rint(x); });
}

// In the range of every integer type of the size, so that no conversion is undefined.
template <class T, class Integer> void conversions(const char* to, const char* from) {
  map<T>(to, [](T x, T, T z) {
    const T small = x > 1000 ? T(1000) : x > 0 ? x : T(0);
    return static_cast<T>(static_cast<Integer>(small)) + (z > 0 ? T(1) : T(0));
  });
  run<T, Integer>(from, [](T* __restrict out, const Integer* __restrict a, const Integer*, long n) {
    for (long i = 0; i < kernels::room; i++)
      out[i] = 0;
    for (long i = 0; i < n; i++)
      out[i] = static_cast<T>(a[i]);
  });
}

template <class T> void folds() {
  fold<T>("ordered sum", [](const T* a, const T*, long n) {
    T sum = 0;
    for (long i = 0; i < n; i++)
      sum += a[i];
    return sum;
  });
  fold<T>("ordered dot product", [](const T* a, const T* b, long n) {
    T sum = 1;
    for (long i = 0; i < n; i++)
      sum += a[i] * b[i];
    return sum;
  });
  fold<T>("greatest", [](const T* a, const T*, long n) {
    T greatest = -1e30f;
    for (long i = 0; i < n; i++)
      greatest = std::fmax(greatest, a[i]);
    return greatest;
  });
  fold<T>("sum under a condition", [](const T* a, const T* b, long n) {
    T sum = 0;
    for (long i = 0; i < n; i++)
      sum += b[i] > 0 ? a[i] : T(0);
    return sum;
  });
}

template <class T> void all() {
  arithmetic<T>();
  choices<T>();
  roundings<T>();
  folds<T>();
  conversions<T, int32_t>("through s32", "from s32");
  conversions<T, uint32_t>("through u32", "from u32");
  conversions<T, int64_t>("through s64", "from s64");
  conversions<T, uint64_t>("through u64", "from u64");
  conversions<T, int16_t>("through s16", "from s16");
}

void between() {
  map<double>("through single",
              [](double x, double, double) { return static_cast<double>(static_cast<float>(x)); });
  map<float>("through double", [](float x, float y, float z) {
    return static_cast<float>(static_cast<double>(x) * y + z);
  });
}

}  // namespace

int main() {
  all<float>();
  all<double>();
  between();
}
