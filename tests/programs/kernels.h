// What the kernel programs share: data with many extreme values, every length of a loop from
// nothing to two vectors of bytes and a tail, and one printed line for each kernel. The same
// source is built with and without SVE, and the lines are compared.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <type_traits>

namespace kernels {

inline constexpr int longest = 33;
// Elements of every array: structures of four members, and what a loop must not touch behind.
inline constexpr int room = 4 * longest + 60;

// The same numbers in every build.
class Numbers {
public:
  explicit Numbers(uint64_t seed) : state_(seed * 2 + 1) {}

  uint64_t next() {
    state_ ^= state_ << 13;
    state_ ^= state_ >> 7;
    state_ ^= state_ << 17;
    return state_ * 0x2545f4914f6cdd1dull;
  }

  // One in four is an extreme value of the type, one in four is small.
  template <class T> T any() {
    const uint64_t bits = next() >> 8;
    const T extremes[] = {0, 1, static_cast<T>(-1), std::numeric_limits<T>::min(),
                          std::numeric_limits<T>::max()};
    switch (next() >> 62) {
    case 0:
      return extremes[bits % 5];
    case 1:
      return static_cast<T>(bits % 41 - (std::is_signed_v<T> ? 20 : 0));
    default:
      return static_cast<T>(next() >> (64 - 8 * sizeof(T)));
    }
  }

private:
  uint64_t state_;
};

// FNV-1a, so that one wrong byte changes the line.
inline uint64_t hash_bytes(const void* data, size_t size, uint64_t hash = 0xcbf29ce484222325ull) {
  for (size_t i = 0; i < size; i++)
    hash = (hash ^ static_cast<const unsigned char*>(data)[i]) * 0x100000001b3ull;
  return hash;
}

template <class T> void print_line(const char* name, uint64_t hash) {
  const char kind = std::is_floating_point_v<T> ? 'f' : std::is_signed_v<T> ? 's' : 'u';
  printf("%s %c%zu %016llx\n", name, kind, 8 * sizeof(T), static_cast<unsigned long long>(hash));
}

template <class Out, class In, class Kernel>
[[gnu::noipa]] void call(Kernel kernel, Out* __restrict out, const In* __restrict a,
                         const In* __restrict b, long n) {
  kernel(out, a, b, n);
}

// Runs kernel(out, a, b, n) for every length and prints one line, all of `out` hashed, the part
// behind the written one too.
template <class Out, class In, class Kernel> void run(const char* name, Kernel kernel) {
  static Out out[room];
  static In a[room], b[room];
  uint64_t hash = 0;
  for (long n = 0; n <= longest; n++) {
    Numbers numbers(n + 100 * sizeof(In));
    for (int i = 0; i < room; i++) {
      out[i] = numbers.any<Out>();
      a[i] = numbers.any<In>();
      b[i] = numbers.any<In>();
    }
    call<Out, In>(kernel, out, a, b, n);
    hash = hash_bytes(out, sizeof out, hash);
  }
  print_line<In>(name, hash);
}

// An element-wise kernel: out[i] = f(a[i], b[i], out[i]).
template <class T, class Function> void map(const char* name, Function f) {
  run<T, T>(name, [f](T* __restrict out, const T* __restrict a, const T* __restrict b, long n) {
    for (int i = 0; i < n; i++)
      out[i] = f(a[i], b[i], out[i]);
  });
}

// A kernel with one result.
template <class Result, class T, class Function> void fold(const char* name, Function f) {
  run<Result, T>(name, [f](Result* __restrict out, const T* __restrict a, const T* __restrict b,
                           long n) { out[0] = f(a, b, n); });
}

}  // namespace kernels
