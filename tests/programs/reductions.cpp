// Integer loops with one result, vectorised by the compiler. Families: ADDV, SADDV, UADDV, SMAXV,
// SMINV, UMAXV, UMINV, ANDV, ORV, EORV, SDOT, UDOT, UABD and SABD sums, CLASTB and LASTB of the
// last match, INDEX, CNTP counts, INCW and its like.
#include "kernels.h"

using kernels::fold;

namespace {

template <class T> void plain_folds() {
  fold<T, T>("sum", [](const T* a, const T*, long n) {
    T sum = 0;
    for (long i = 0; i < n; i++)
      sum += a[i];
    return sum;
  });
  fold<T, T>("product", [](const T* a, const T*, long n) {
    T product = 1;
    for (long i = 0; i < n; i++)
      product *= a[i] | 1;
    return product;
  });
  fold<T, T>("least", [](const T* a, const T*, long n) {
    T least = std::numeric_limits<T>::max();
    for (long i = 0; i < n; i++)
      least = a[i] < least ? a[i] : least;
    return least;
  });
  fold<T, T>("greatest", [](const T* a, const T* b, long n) {
    T greatest = std::numeric_limits<T>::min();
    for (long i = 0; i < n; i++)
      greatest = T(a[i] - b[i]) > greatest ? T(a[i] - b[i]) : greatest;
    return greatest;
  });
  fold<T, T>("all bits", [](const T* a, const T* b, long n) {
    T bits = -1;
    for (long i = 0; i < n; i++)
      bits &= a[i] | b[i];
    return bits;
  });
  fold<T, T>("any bits", [](const T* a, const T* b, long n) {
    T bits = 0;
    for (long i = 0; i < n; i++)
      bits |= a[i] & b[i] & 0x24;
    return bits;
  });
  fold<T, T>("parity", [](const T* a, const T*, long n) {
    T bits = 0;
    for (long i = 0; i < n; i++)
      bits ^= a[i];
    return bits;
  });
  fold<T, T>("dot product", [](const T* a, const T* b, long n) {
    T sum = 0;
    for (long i = 0; i < n; i++)
      sum += a[i] * b[i];
    return sum;
  });
}

// Sums that are wider than the elements, as the dot products want them.
template <class T> void wide_folds() {
  using Wide = std::conditional_t<std::is_signed_v<T>, int64_t, uint64_t>;
  using Mid = std::conditional_t<std::is_signed_v<T>, int32_t, uint32_t>;
  fold<Wide, T>("wide sum", [](const T* a, const T*, long n) {
    Wide sum = 0;
    for (long i = 0; i < n; i++)
      sum += a[i];
    return sum;
  });
  fold<Wide, T>("wide dot product", [](const T* a, const T* b, long n) {
    Wide sum = 0;
    for (long i = 0; i < n; i++)
      sum += static_cast<Wide>(a[i]) * b[i];
    return sum;
  });
  if constexpr (sizeof(T) < 4) {
    fold<Mid, T>("middle dot product", [](const T* a, const T* b, long n) {
      Mid sum = 3;
      for (long i = 0; i < n; i++)
        sum += static_cast<Mid>(a[i]) * b[i];
      return sum;
    });
    fold<int32_t, T>("sum of absolute differences", [](const T* a, const T* b, long n) {
      int32_t sum = 0;
      for (long i = 0; i < n; i++)
        sum += a[i] > b[i] ? a[i] - b[i] : b[i] - a[i];
      return sum;
    });
  }
}

template <class T> void conditional_folds() {
  fold<T, T>("sum under a condition", [](const T* a, const T* b, long n) {
    T sum = 0;
    for (long i = 0; i < n; i++)
      sum += b[i] > 7 ? a[i] : T(0);
    return sum;
  });
  fold<int64_t, T>("count of matches", [](const T* a, const T* b, long n) {
    int64_t count = 0;
    for (long i = 0; i < n; i++)
      count += a[i] == b[i] || a[i] == 0;
    return count;
  });
  fold<T, T>("last match", [](const T* a, const T* b, long n) {
    T last = 55;
    for (long i = 0; i < n; i++)
      if (b[i] > a[i])
        last = a[i];
    return last;
  });
  fold<T, T>("place of the last zero", [](const T* a, const T*, long n) {
    T last = -1;
    for (T i = 0; i < static_cast<T>(n); i++)
      if (a[i] == 0)
        last = i;
    return last;
  });
  fold<int32_t, T>("any match", [](const T* a, const T* b, long n) {
    int32_t any = 0;
    for (long i = 0; i < n; i++)
      any |= a[i] > 100 && b[i] < 20;
    return any;
  });
  fold<T, T>("alternating sum", [](const T* a, const T*, long n) {
    T sum = 0;
    for (long i = 0; i < n; i++)
      sum += i & 1 ? T(-a[i]) : a[i];
    return sum;
  });
}

template <class T> void all() {
  plain_folds<T>();
  wide_folds<T>();
  conditional_folds<T>();
}

}  // namespace

int main() {
  all<int8_t>();
  all<uint8_t>();
  all<int16_t>();
  all<uint16_t>();
  all<int32_t>();
  all<uint32_t>();
  all<int64_t>();
  all<uint64_t>();
}
