// Loops that mix element widths, vectorised by the compiler. Families: extending loads, truncating
// stores, SUNPKLO, UUNPKLO and their high halves, UZP1, SXTB to UXTW, high halves of products,
// narrowing and widening arithmetic.
#include "kernels.h"

using kernels::run;

namespace {

template <class To, class From> void convert() {
  char name[40];
  snprintf(name, sizeof name, "to %c%zu", std::is_signed_v<To> ? 's' : 'u', 8 * sizeof(To));
  run<To, From>(name,
                [](To* __restrict out, const From* __restrict a, const From* __restrict b, long n) {
                  for (long i = 0; i < n; i++)
                    out[i] = static_cast<To>(a[i] ^ b[i]);
                });
  run<To, From>("sum",
                [](To* __restrict out, const From* __restrict a, const From* __restrict b, long n) {
                  for (long i = 0; i < n; i++)
                    out[i] += static_cast<To>(a[i]) * static_cast<To>(b[i]);
                });
  // Under a condition in the narrower or the wider type.
  run<To, From>("under a condition",
                [](To* __restrict out, const From* __restrict a, const From* __restrict b, long n) {
                  for (long i = 0; i < n; i++)
                    if (a[i] > b[i])
                      out[i] = static_cast<To>(a[i] + 1);
                });
}

template <class From> void from() {
  convert<int8_t, From>();
  convert<uint8_t, From>();
  convert<int16_t, From>();
  convert<uint16_t, From>();
  convert<int32_t, From>();
  convert<uint32_t, From>();
  convert<int64_t, From>();
  convert<uint64_t, From>();
}

// T through a type of twice its width.
template <class T, class Wide> void through_wide() {
  run<T, T>("average rounded up",
            [](T* __restrict out, const T* __restrict a, const T* __restrict b, long n) {
              for (long i = 0; i < n; i++)
                out[i] = static_cast<T>((static_cast<Wide>(a[i]) + b[i] + 1) >> 1);
            });
  run<T, T>("high half of the product",
            [](T* __restrict out, const T* __restrict a, const T* __restrict b, long n) {
              for (long i = 0; i < n; i++)
                out[i] = static_cast<T>(static_cast<Wide>(a[i]) * b[i] >> (8 * sizeof(T)));
            });
  run<T, T>("blend", [](T* __restrict out, const T* __restrict a, const T* __restrict b, long n) {
    for (long i = 0; i < n; i++)
      out[i] = static_cast<T>((static_cast<Wide>(a[i]) * 11 + b[i] * Wide(5)) >> 4);
  });
  run<T, T>(
      "neighbours", [](T* __restrict out, const T* __restrict a, const T* __restrict, long n) {
        for (long i = 0; i < n; i++)
          out[i] = static_cast<T>((static_cast<Wide>(a[i]) + 2 * Wide(a[i + 1]) + a[i + 2]) >> 2);
      });
}

}  // namespace

int main() {
  from<int8_t>();
  from<uint8_t>();
  from<int16_t>();
  from<uint16_t>();
  from<int32_t>();
  from<uint32_t>();
  from<int64_t>();
  from<uint64_t>();
  through_wide<int8_t, int16_t>();
  through_wide<uint8_t, uint16_t>();
  through_wide<int16_t, int32_t>();
  through_wide<uint16_t, uint32_t>();
  through_wide<int32_t, int64_t>();
  through_wide<uint32_t, uint64_t>();
  through_wide<int64_t, __int128>();
  through_wide<uint64_t, unsigned __int128>();
}
