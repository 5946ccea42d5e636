// blas <OpenBLAS's library>: products of small whole numbers by the library's kernels, which must
// be exact. With OPENBLAS_CORETYPE the library must have taken the kernels of that name.
#include <complex>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <string>
#include <type_traits>
#include <vector>

namespace {

void* library;
int calls, wrong;

template <class T> using Matrix = std::vector<T>;  // by columns
template <class T> constexpr bool is_complex = !std::is_floating_point_v<T>;
template <class T>
constexpr char letter = std::is_same_v<T, float>    ? 's'
                        : std::is_same_v<T, double> ? 'd'
                        : sizeof(T) == 8            ? 'c'
                                                    : 'z';

// The library's function of this name for this type.
template <class Function> Function* find(const std::string& name) {
  void* const function = dlsym(library, name.c_str());
  if (!function) {
    printf("no %s\n", name.c_str());
    exit(2);
  }
  return reinterpret_cast<Function*>(function);
}

template <class T> Matrix<T> some(int count, int range = 9) {
  static uint32_t state = 1;
  const auto next = [&] {
    return static_cast<int>((state = state * 69069 + 1) >> 16) % range - range / 2;
  };
  Matrix<T> values(count);
  for (T& value : values)
    if constexpr (is_complex<T>)
      value = T(next(), next());
    else
      value = next();
  return values;
}

template <class T>
void expect(const Matrix<T>& is, const Matrix<T>& should, const char* what, int size) {
  calls++;
  if (is == should)
    return;
  wrong++;
  printf("%c%s %d: wrong\n", letter<T>, what, size);
}

// Element (i, j) of the matrix as it is, transposed, or transposed and conjugated.
enum Form { plain = 'N', transposed = 'T', conjugated = 'C' };
template <class T> T at(const Matrix<T>& a, int rows, Form form, int i, int j) {
  const T value = form == plain ? a[i + j * rows] : a[j + i * rows];
  if constexpr (is_complex<T>)
    return form == conjugated ? std::conj(value) : value;
  else
    return value;
}

template <class T> void products(int m, int n, int k) {
  auto* const gemm =
      find<void(const char*, const char*, const int*, const int*, const int*, const T*, const T*,
                const int*, const T*, const int*, const T*, T*, const int*)>(
          std::string(1, letter<T>) + "gemm_");
  const T alpha = 2, beta = -1;
  for (const Form left : {plain, transposed, conjugated})
    for (const Form right : {plain, transposed, conjugated}) {
      const Matrix<T> a = some<T>(m * k), b = some<T>(k * n);
      Matrix<T> c = some<T>(m * n), should = c;
      const int a_rows = left == plain ? m : k, b_rows = right == plain ? k : n;
      const char forms[] = {static_cast<char>(left), static_cast<char>(right)};
      gemm(&forms[0], &forms[1], &m, &n, &k, &alpha, a.data(), &a_rows, b.data(), &b_rows, &beta,
           c.data(), &m);
      for (int i = 0; i < m; i++)
        for (int j = 0; j < n; j++) {
          T sum = 0;
          for (int l = 0; l < k; l++)
            sum += at(a, a_rows, left, i, l) * at(b, b_rows, right, l, j);
          T& element = should[i + j * m];
          element = alpha * sum + beta * element;
        }
      expect(c, should, "gemm", m);
    }
}

// A product with a triangular matrix of units on the diagonal, and its inverse again.
template <class T> void triangles(int m, int n) {
  using Function = void(const char*, const char*, const char*, const char*, const int*, const int*,
                        const T*, const T*, const int*, T*, const int*);
  auto* const trmm = find<Function>(std::string(1, letter<T>) + "trmm_");
  auto* const trsm = find<Function>(std::string(1, letter<T>) + "trsm_");
  const T one = 1;
  for (const bool on_left : {true, false})
    for (const bool upper : {true, false})
      for (const Form form : {plain, transposed}) {
        const int size = on_left ? m : n;
        const Matrix<T> a = some<T>(size * size, 3), b = some<T>(m * n);
        Matrix<T> c = b, should(m * n);
        const char words[] = {on_left ? 'L' : 'R', upper ? 'U' : 'L', static_cast<char>(form), 'U'};
        trmm(&words[0], &words[1], &words[2], &words[3], &m, &n, &one, a.data(), &size, c.data(),
             &m);
        const auto triangle = [&](int i, int j) {
          const bool inside = (form == plain) == upper ? i < j : i > j;
          return i == j ? one : inside ? at(a, size, form, i, j) : T(0);
        };
        for (int i = 0; i < m; i++)
          for (int j = 0; j < n; j++)
            for (int l = 0; l < size; l++)
              should[i + j * m] +=
                  on_left ? triangle(i, l) * b[l + j * m] : b[i + l * m] * triangle(l, j);
        expect(c, should, "trmm", m);
        trsm(&words[0], &words[1], &words[2], &words[3], &m, &n, &one, a.data(), &size, c.data(),
             &m);
        expect(c, b, "trsm", m);
      }
}

// Matrix and vector, and vectors.
template <class T> void vectors(int m, int n) {
  const std::string name(1, letter<T>);
  auto* const gemv = find<void(const char*, const int*, const int*, const T*, const T*, const int*,
                               const T*, const int*, const T*, T*, const int*)>(name + "gemv_");
  auto* const axpy =
      find<void(const int*, const T*, const T*, const int*, T*, const int*)>(name + "axpy_");
  auto* const swap = find<void(const int*, T*, const int*, T*, const int*)>(name + "swap_");
  auto* const scal = find<void(const int*, const T*, T*, const int*)>(name + "scal_");
  const T two = 2, minus = -1;
  const int one = 1, step = 2;
  for (const Form form : {plain, transposed, conjugated}) {
    const Matrix<T> a = some<T>(m * n), x = some<T>(form == plain ? n : m);
    Matrix<T> y = some<T>(form == plain ? m : n), should = y;
    const char word = form;
    gemv(&word, &m, &n, &two, a.data(), &m, x.data(), &one, &minus, y.data(), &one);
    for (size_t i = 0; i < y.size(); i++) {
      T sum = 0;
      for (size_t l = 0; l < x.size(); l++)
        sum += at(a, m, form, i, l) * x[l];
      should[i] = two * sum - should[i];
    }
    expect(y, should, "gemv", m);
  }
  const Matrix<T> x = some<T>(2 * m);
  Matrix<T> y = some<T>(2 * m), z = y, again = x;
  axpy(&m, &minus, x.data(), &step, z.data(), &one);
  for (int i = 0; i < m; i++)
    y[i] -= x[2 * i];
  expect(z, y, "axpy", m);
  swap(&m, again.data(), &one, z.data(), &one);
  scal(&m, &two, again.data(), &one);
  Matrix<T> should = x;
  for (int i = 0; i < m; i++)
    should[i] = two * y[i];
  expect(again, should, "swap, scal", m);
  if constexpr (!is_complex<T>) {
    auto* const dot =
        find<T(const int*, const T*, const int*, const T*, const int*)>(name + "dot_");
    auto* const asum = find<T(const int*, const T*, const int*)>(name + "asum_");
    T products = 0, sum = 0;
    for (int i = 0; i < m; i++) {
      products += x[i] * y[i];
      sum += std::abs(x[i]);
    }
    const Matrix<T> is = {dot(&m, x.data(), &one, y.data(), &one), asum(&m, x.data(), &one)};
    expect(is, {products, sum}, "dot, asum", m);
  }
}

template <class T> void all() {
  products<T>(1, 1, 1);
  products<T>(7, 5, 9);
  products<T>(18, 13, 21);
  triangles<T>(3, 5);
  triangles<T>(13, 11);
  for (const int size : {1, 6, 35})
    vectors<T>(size, size + 2);
}

}  // namespace

int main(int, char** arguments) {
  library = dlopen(arguments[1], RTLD_NOW);
  if (!library) {
    puts(dlerror());
    return 2;
  }
  const char* const asked = getenv("OPENBLAS_CORETYPE");
  const char* const taken = find<const char*()>("openblas_get_corename")();
  if (asked && strcasecmp(asked, taken) != 0)
    printf("kernels: %s\n", taken);
  all<float>();
  all<double>();
  all<std::complex<float>>();
  all<std::complex<double>>();
  products<double>(70, 60, 50);
  printf("%d calls, %d wrong\n", calls, wrong);
  return wrong != 0;
}
