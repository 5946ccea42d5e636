// Loops over structures, strides and index arrays, vectorised by the compiler. Families: LD2, LD3,
// LD4, ST2, ST3, ST4, gathers and scatters with 32-bit and 64-bit offsets, INDEX, ZIP, UZP, REV,
// REVB, REVH, REVW, RBIT, TBL.
#include "kernels.h"

using kernels::room;
using kernels::run;

namespace {

template <class T> void members() {
  run<T, T>("take 2 apart", [](T* __restrict out, const T* __restrict a, const T*, long n) {
    for (long i = 0; i < n; i++)
      out[i] = a[2 * i] - a[2 * i + 1];
  });
  run<T, T>("take 3 apart", [](T* __restrict out, const T* __restrict a, const T*, long n) {
    for (long i = 0; i < n; i++)
      out[i] = a[3 * i] * 3 + (a[3 * i + 1] ^ a[3 * i + 2]);
  });
  run<T, T>("take 4 apart", [](T* __restrict out, const T* __restrict a, const T*, long n) {
    for (long i = 0; i < n; i++)
      out[i] = a[4 * i] + a[4 * i + 1] * 2 + (a[4 * i + 2] & a[4 * i + 3]);
  });
  run<T, T>("put 2 together",
            [](T* __restrict out, const T* __restrict a, const T* __restrict b, long n) {
              for (long i = 0; i < n; i++) {
                out[2 * i] = b[i];
                out[2 * i + 1] = a[i] + b[i];
              }
            });
  run<T, T>("put 3 together",
            [](T* __restrict out, const T* __restrict a, const T* __restrict b, long n) {
              for (long i = 0; i < n; i++) {
                out[3 * i] = a[i] - b[i];
                out[3 * i + 1] = a[i];
                out[3 * i + 2] = b[i] ^ 0x55;
              }
            });
  run<T, T>("put 4 together",
            [](T* __restrict out, const T* __restrict a, const T* __restrict b, long n) {
              for (long i = 0; i < n; i++) {
                out[4 * i] = a[i];
                out[4 * i + 1] = b[i];
                out[4 * i + 2] = a[i] + 1;
                out[4 * i + 3] = a[i] & b[i];
              }
            });
  run<T, T>("complex product",
            [](T* __restrict out, const T* __restrict a, const T* __restrict b, long n) {
              for (long i = 0; i < n; i++) {
                out[2 * i] = a[2 * i] * b[2 * i] - a[2 * i + 1] * b[2 * i + 1];
                out[2 * i + 1] = a[2 * i] * b[2 * i + 1] + a[2 * i + 1] * b[2 * i];
              }
            });
  run<T, T>("swap members", [](T* __restrict out, const T* __restrict a, const T*, long n) {
    for (long i = 0; i < n; i++) {
      out[2 * i] = a[2 * i + 1];
      out[2 * i + 1] = a[2 * i];
    }
  });
}

template <class T> void orders() {
  run<T, T>("reverse", [](T* __restrict out, const T* __restrict a, const T*, long n) {
    for (long i = 0; i < n; i++)
      out[i] = a[n - 1 - i];
  });
  run<T, T>("copy", [](T* __restrict out, const T* __restrict a, const T*, long n) {
    for (long i = 0; i < n; i++)
      out[i + 1] = a[i + 3];
  });
  run<T, T>("count up", [](T* __restrict out, const T* __restrict, const T*, long n) {
    for (long i = 0; i < n; i++)
      out[i] = static_cast<T>(i * 7 - 3);
  });
  run<T, T>("stride of 5", [](T* __restrict out, const T* __restrict a, const T*, long n) {
    for (long i = 0; i < n; i++)
      out[i] = a[5 * i] + 1;
  });
  run<T, T>("write with a stride of 5",
            [](T* __restrict out, const T* __restrict a, const T*, long n) {
              for (long i = 0; i < n; i++)
                out[5 * i] = a[i];
            });
  run<T, T>("run time stride", [](T* __restrict out, const T* __restrict a, const T* b, long n) {
    const int stride = 1 + (b[0] & 3);
    for (long i = 0; i < n; i++)
      out[i] = a[stride * i];
  });
  run<T, T>("swap bytes", [](T* __restrict out, const T* __restrict a, const T*, long n) {
    for (long i = 0; i < n; i++) {
      if constexpr (sizeof(T) == 2)
        out[i] = __builtin_bswap16(a[i]);
      if constexpr (sizeof(T) == 4)
        out[i] = __builtin_bswap32(a[i]);
      if constexpr (sizeof(T) == 8)
        out[i] = __builtin_bswap64(a[i]);
    }
  });
  run<T, T>("reverse bits", [](T* __restrict out, const T* __restrict a, const T*, long n) {
    for (long i = 0; i < n; i++) {
      std::make_unsigned_t<T> value = a[i], bits = 0;
      for (size_t k = 0; k < 8 * sizeof(T); k++)
        bits |= (value >> k & 1) << (8 * sizeof(T) - 1 - k);
      out[i] = bits;
    }
  });
  run<T, T>("transpose", [](T* __restrict out, const T* __restrict a, const T*, long) {
    for (int row = 0; row < 8; row++)
      for (int column = 0; column < 8; column++)
        out[column * 8 + row] = a[row * 8 + column];
  });
}

// Index: the type of the index array.
template <class T, class Index>
void indexed(const char* read, const char* write, const char* conditional) {
  static Index place[room];
  for (int i = 0; i < room; i++)
    place[i] = static_cast<Index>(i * 71 % room);
  run<T, T>(read, [](T* __restrict out, const T* __restrict a, const T*, long n) {
    for (long i = 0; i < n; i++)
      out[i] = a[place[i]];
  });
  run<T, T>(write, [](T* __restrict out, const T* __restrict a, const T* __restrict, long n) {
    for (long i = 0; i < n; i++)
      out[place[i]] = a[i];
  });
  run<T, T>(conditional,
            [](T* __restrict out, const T* __restrict a, const T* __restrict b, long n) {
              for (long i = 0; i < n; i++)
                if (b[i] > 3)
                  out[i] = a[place[i]] + b[i];
            });
  run<T, T>("histogram", [](T* __restrict out, const T* __restrict a, const T*, long n) {
    for (long i = 0; i < n; i++)
      out[a[i] & 15]++;
  });
}

template <class T> void all() {
  members<T>();
  orders<T>();
  indexed<T, int32_t>("gather s32", "scatter s32", "conditional gather s32");
  indexed<T, uint32_t>("gather u32", "scatter u32", "conditional gather u32");
  indexed<T, int64_t>("gather s64", "scatter s64", "conditional gather s64");
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
