// Element-wise integer loops over all element types, vectorised by the compiler. Families:
// predicated and unpredicated add, subtract, multiply, logic, MLA, MLS, MAD, MSB, minimum,
// maximum, absolute difference, negate, absolute, CNOT, shifts by vectors and immediates, ASRD,
// divisions, high halves of products, compares, SEL, WHILELO, contiguous loads and stores.
#include "kernels.h"

using kernels::map;

namespace {

template <class T> constexpr int bits = 8 * sizeof(T);

template <class T> using Unsigned = std::make_unsigned_t<T>;

template <class T> void sums_and_products() {
  map<T>("add", [](T x, T y, T) -> T { return x + y; });
  map<T>("subtract", [](T x, T y, T) -> T { return x - y; });
  map<T>("add immediate", [](T x, T, T) -> T { return x + 77; });
  map<T>("subtract from immediate", [](T x, T, T) -> T { return 100 - x; });
  map<T>("multiply", [](T x, T y, T) -> T { return x * y; });
  map<T>("multiply immediate", [](T x, T, T) -> T { return x * 93; });
  map<T>("multiply and add", [](T x, T y, T z) -> T { return z + x * y; });
  map<T>("multiply and subtract", [](T x, T y, T z) -> T { return z - x * y; });
  map<T>("multiply and add to operand", [](T x, T y, T z) -> T { return x + z * y; });
  map<T>("saxpy", [](T x, T, T z) -> T { return z + x * 5; });
  map<T>("square distance", [](T x, T y, T) -> T { return (x - y) * (x - y); });
  map<T>("polynomial", [](T x, T y, T) -> T { return ((x * 3 + y) * x - 7) * x + y; });
}

template <class T> void choices() {
  map<T>("minimum", [](T x, T y, T) -> T { return x < y ? x : y; });
  map<T>("maximum", [](T x, T y, T) -> T { return x < y ? y : x; });
  map<T>("clamp", [](T x, T, T) -> T { return x < 3 ? T(3) : x > 90 ? T(90) : x; });
  map<T>("absolute difference", [](T x, T y, T) -> T { return x < y ? y - x : x - y; });
  map<T>("absolute", [](T x, T, T) -> T { return std::is_signed_v<T> && x < 0 ? -x : x; });
  map<T>("select", [](T x, T y, T z) -> T { return x == y || z > x ? x : y; });
  map<T>("equal", [](T x, T y, T) -> T { return x == y; });
  map<T>("is zero", [](T x, T, T) -> T { return x == 0; });
  map<T>("not equal", [](T x, T y, T z) -> T { return x != y ? z : T(9); });
  map<T>("in range", [](T x, T y, T z) -> T { return x >= y && x <= z; });
  map<T>("either", [](T x, T y, T z) -> T { return (x > y) != (y > z) ? x : z; });
  map<T>("add under a condition", [](T x, T y, T z) -> T { return y > 5 ? z + x : z; });
  map<T>("multiply under a condition", [](T x, T y, T z) -> T { return y != 0 ? x * y : z; });
  map<T>("shift under a condition", [](T x, T y, T z) -> T { return y < z ? x >> 3 : x; });
  map<T>("saturating add", [](T x, T y, T) -> T {
    const T sum = x + y;
    if constexpr (std::is_unsigned_v<T>)
      return sum < x ? T(-1) : sum;
    const T limit = x < 0 ? std::numeric_limits<T>::min() : std::numeric_limits<T>::max();
    return ((x ^ sum) & (y ^ sum)) < 0 ? limit : sum;
  });
}

template <class T> void bit_operations() {
  map<T>("and", [](T x, T y, T) -> T { return x & y; });
  map<T>("or", [](T x, T y, T) -> T { return x | y; });
  map<T>("exclusive or", [](T x, T y, T) -> T { return x ^ y; });
  map<T>("and not", [](T x, T y, T) -> T { return x & ~y; });
  map<T>("or not", [](T x, T y, T) -> T { return x | ~y; });
  map<T>("not", [](T x, T, T) -> T { return ~x; });
  map<T>("negate", [](T x, T, T) -> T { return -x; });
  map<T>("and immediate", [](T x, T, T) -> T { return x & 0x3c; });
  map<T>("or immediate", [](T x, T, T) -> T { return x | 0x41; });
  map<T>("exclusive or immediate", [](T x, T, T) -> T { return x ^ 0x7e; });
  map<T>("choose bits", [](T x, T y, T z) -> T { return (x & z) | (y & ~z); });
  map<T>("population count", [](T x, T, T) -> T {
    return static_cast<T>(__builtin_popcountll(static_cast<Unsigned<T>>(x)));
  });
  map<T>("population count by hand", [](T x, T, T) -> T {
    Unsigned<T> v = x;
    v = v - (v >> 1 & static_cast<Unsigned<T>>(0x5555555555555555));
    v = (v & static_cast<Unsigned<T>>(0x3333333333333333)) +
        (v >> 2 & static_cast<Unsigned<T>>(0x3333333333333333));
    return (v + (v >> 4)) & static_cast<Unsigned<T>>(0x0f0f0f0f0f0f0f0f);
  });
}

template <class T> void shifts() {
  map<T>("shift left", [](T x, T y, T) -> T { return x << (y & (bits<T> - 1)); });
  map<T>("shift right", [](T x, T y, T) -> T { return x >> (y & (bits<T> - 1)); });
  map<T>("logical shift right",
         [](T x, T y, T) -> T { return Unsigned<T>(x) >> (y & (bits<T> - 1)); });
  map<T>("shift left by 1", [](T x, T, T) -> T { return x << 1; });
  map<T>("shift left to the top", [](T x, T, T) -> T { return x << (bits<T> - 1); });
  map<T>("shift right by 1", [](T x, T, T) -> T { return x >> 1; });
  map<T>("shift right to the sign", [](T x, T, T) -> T { return x >> (bits<T> - 1); });
  map<T>("rotate", [](T x, T, T) -> T { return x << 3 | Unsigned<T>(x) >> (bits<T> - 3); });
  map<T>("average", [](T x, T y, T) -> T { return (x & y) + ((x ^ y) >> 1); });
}

template <class T> void divisions() {
  map<T>("divide by 2", [](T x, T, T) -> T { return x / 2; });
  map<T>("divide by a power of two", [](T x, T, T) -> T { return x / 32; });
  map<T>("remainder of a power of two", [](T x, T, T) -> T { return x % 16; });
  map<T>("divide by 10", [](T x, T, T) -> T { return x / 10; });
  map<T>("remainder of 7", [](T x, T, T) -> T { return x % 7; });
  map<T>("divide", [](T x, T y, T) -> T { return x / (y == 0 || y == T(-1) ? T(3) : y); });
  map<T>("remainder", [](T x, T y, T) -> T { return x % (y == 0 || y == T(-1) ? T(3) : y); });
  map<T>("divide a constant", [](T x, T, T) -> T { return T(120) / (x == 0 ? T(1) : x); });
}

template <class T> void all() {
  sums_and_products<T>();
  choices<T>();
  bit_operations<T>();
  shifts<T>();
  divisions<T>();
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
