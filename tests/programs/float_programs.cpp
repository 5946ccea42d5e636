// Numerical programs in single and double precision, vectorised by the compiler: the Mandelbrot
// set, bodies under gravity, matrix products, a recursive filter, a Fourier transform, sums that
// may be reordered since their terms are whole numbers, and control and status of the
// floating-point unit around vector code.
#include <cfenv>
#include <cmath>
#include <complex>
#include <cstring>
#include <vector>

#include "kernels.h"

#ifdef __ARM_FEATURE_SVE
#include <arm_sve.h>
#endif

namespace {

template <class T> void print(const char* name, const std::vector<T>& values) {
  kernels::print_line<T>(name, kernels::hash_bytes(values.data(), values.size() * sizeof(T)));
}

template <class T> void mandelbrot() {
  constexpr int width = 48, height = 16, steps = 40;
  std::vector<int32_t> counts(width * height);
  for (int row = 0; row < height; row++) {
    T cx[width], x[width], y[width];
    int32_t count[width] = {};
    const T cy = T(-1.2) + row * T(2.4 / height);
    for (int i = 0; i < width; i++) {
      cx[i] = x[i] = T(-2) + i * T(2.5 / width);
      y[i] = cy;
    }
    for (int step = 0; step < steps; step++)
      for (int i = 0; i < width; i++) {
        const T xx = x[i] * x[i], yy = y[i] * y[i], xy = x[i] * y[i];
        const bool inside = xx + yy <= T(4);
        count[i] += inside;
        x[i] = inside ? xx - yy + cx[i] : x[i];
        y[i] = inside ? 2 * xy + cy : y[i];
      }
    memcpy(&counts[row * width], count, sizeof count);
  }
  print("mandelbrot", counts);
}

template <class T> void bodies() {
  constexpr int n = 11;
  T x[n], y[n], z[n], vx[n] = {}, vy[n] = {}, vz[n] = {}, mass[n];
  for (int i = 0; i < n; i++) {
    x[i] = T(i * i % 7) + T(0.1) * i;
    y[i] = T(i * 3 % 5) - T(0.3) * i;
    z[i] = T(i % 3) + T(0.01) * i;
    mass[i] = 1 + T(i) / 4;
  }
  for (int step = 0; step < 10; step++) {
    for (int i = 0; i < n; i++)
      for (int k = 0; k < n; k++) {
        const T dx = x[k] - x[i], dy = y[k] - y[i], dz = z[k] - z[i];
        const T square = dx * dx + dy * dy + dz * dz + T(0.01);
        const T pull = mass[i] / (square * std::sqrt(square)) * T(0.001);
        vx[k] -= dx * pull;
        vy[k] -= dy * pull;
        vz[k] -= dz * pull;
      }
    for (int i = 0; i < n; i++) {
      x[i] += vx[i];
      y[i] += vy[i];
      z[i] += vz[i];
    }
  }
  std::vector<T> all(x, x + n);
  all.insert(all.end(), y, y + n);
  all.insert(all.end(), vz, vz + n);
  print("bodies", all);
}

template <class T> void matrices() {
  constexpr int n = 19;
  std::vector<T> a(n * n), b(n * n), c(n * n);
  for (int i = 0; i < n * n; i++) {
    a[i] = T(i % 13) / 7 - T(0.5);
    b[i] = T(i % 11) / 3 - 1;
  }
  for (int i = 0; i < n; i++)
    for (int k = 0; k < n; k++)
      for (int j = 0; j < n; j++)
        c[i * n + j] = std::fma(a[i * n + k], b[k * n + j], c[i * n + j]);
  print("matrix product", c);
}

template <class T> void transform() {
  constexpr int n = 32;
  std::vector<T> re(n), im(n), next_re(n), next_im(n);
  for (int i = 0; i < n; i++) {
    re[i] = T(i * 5 % 9) - 4;
    im[i] = T(i * 7 % 5) / 2;
  }
  // Stockham's order: no bit reversal, and inner loops without a stride.
  for (int half = n / 2, stride = 1; half >= 1; half /= 2, stride *= 2) {
    for (int i = 0; i < half; i++) {
      const T wr = static_cast<T>(std::cos(-M_PI * i / half));
      const T wi = static_cast<T>(std::sin(-M_PI * i / half));
      for (int k = 0; k < stride; k++) {
        const int low = k + stride * i, high = low + stride * half;
        const T dr = re[low] - re[high], di = im[low] - im[high];
        const int to = k + stride * 2 * i;
        next_re[to] = re[low] + re[high];
        next_im[to] = im[low] + im[high];
        next_re[to + stride] = dr * wr - di * wi;
        next_im[to + stride] = dr * wi + di * wr;
      }
    }
    std::swap(re, next_re);
    std::swap(im, next_im);
  }
  print("transform, real part", re);
  print("transform, imaginary part", im);
}

// Whole numbers: exact in any order.
template <class T>
[[gnu::noipa, gnu::optimize("fast-math")]] T reordered_dot(const T* a, const T* b, int n) {
  T sum = 0;
  for (int i = 0; i < n; i++)
    sum += a[i] * b[i];
  return sum;
}

template <class T> void whole_numbers() {
  std::vector<T> a(200), b(200), sums;
  for (int i = 0; i < 200; i++) {
    a[i] = T(i % 17 - 8);
    b[i] = T(i % 23 - 11);
  }
  for (int n = 0; n < 200; n += 7)
    sums.push_back(reordered_dot(a.data(), b.data(), n));
  print("reordered dot product", sums);
}

// By hand, since the compiler divides inactive elements too, zero by zero.
#ifdef __ARM_FEATURE_SVE
template <class T> [[gnu::noipa]] void divide(T* to, const T* a, const T* b, int n) {
  for (int i = 0; i < n; i += svcntb() / sizeof(T)) {
    const svbool_t some = sizeof(T) == 4 ? svwhilelt_b32(i, n) : svwhilelt_b64(i, n);
    svst1(some, to + i, svdiv_m(some, svld1(some, a + i), svld1(some, b + i)));
  }
}
#else
template <class T> [[gnu::noipa]] void divide(T* to, const T* a, const T* b, int n) {
  for (int i = 0; i < n; i++)
    to[i] = a[i] / b[i];
}
#endif

template <class T> [[gnu::noipa]] void nearby(T* to, const T* a, int n) {
  for (int i = 0; i < n; i++)
    to[i] = std::nearbyint(a[i]);
}

template <class T> void rounding_modes() {
  constexpr int n = 9;
  T a[n], b[n];
  for (int i = 0; i < n; i++) {
    a[i] = T(2 * i - 7) / 2;
    b[i] = T(3);
  }
  const std::pair<const char*, int> modes[] = {{"to nearest", FE_TONEAREST},
                                               {"upward", FE_UPWARD},
                                               {"downward", FE_DOWNWARD},
                                               {"toward zero", FE_TOWARDZERO}};
  for (const auto& [name, mode] : modes) {
    std::vector<T> results(2 * n);
    fesetround(mode);
    divide(results.data(), a, b, n);
    nearby(results.data() + n, a, n);
    fesetround(FE_TONEAREST);
    print(name, results);
  }
}

// Which exceptions a division leaves, and that elements behind the last raise none.
template <class T> void exceptions() {
  struct Case {
    const char* name;
    T a, b;
  };
  const Case cases[] = {{"exact", 6, 3},
                        {"inexact", 1, 3},
                        {"by zero", 1, 0},
                        {"invalid", 0, 0},
                        {"overflow", std::numeric_limits<T>::max(), T(0.5)},
                        {"underflow", std::numeric_limits<T>::min(), 3},
                        {"infinite", T(INFINITY), 2}};
  for (const Case& c : cases) {
    T a[5] = {c.a, c.a, c.a, 0, 0}, b[5] = {c.b, c.b, c.b, 0, 0}, to[5];
    feclearexcept(FE_ALL_EXCEPT);
    divide(to, a, b, 3);
    const int raised = fetestexcept(FE_ALL_EXCEPT);
    printf("%s:%s%s%s%s%s\n", c.name, raised & FE_INEXACT ? " inexact" : "",
           raised & FE_DIVBYZERO ? " division" : "", raised & FE_INVALID ? " invalid" : "",
           raised & FE_OVERFLOW ? " overflow" : "", raised & FE_UNDERFLOW ? " underflow" : "");
  }
}

template <class T> void all() {
  mandelbrot<T>();
  bodies<T>();
  matrices<T>();
  transform<T>();
  whole_numbers<T>();
  rounding_modes<T>();
  exceptions<T>();
}

}  // namespace

int main() {
  all<float>();
  all<double>();
}
