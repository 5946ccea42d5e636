// Vectors whose elements take turns in memory, as LD2 to LD4 and ST2 to ST4 move them: element 0 of
// each, element 1 of each, and so on. An access may fault, as a plain one of the first element.
#pragma once

#include "host/fp_vector.h"

#if defined(__aarch64__)

namespace host {

#define HOST_STRUCTURES(T, arrangement)                                                            \
  inline void load_structures(uint64_t address, fp_vector<T>(&to)[2]) {                            \
    register fp_vector<T> a asm("v0"), b asm("v1");                                                \
    asm volatile("ld2 {v0." arrangement ", v1." arrangement "}, [%2]"                              \
                 : "=w"(a), "=w"(b)                                                                \
                 : "r"(address)                                                                    \
                 : "memory");                                                                      \
    to[0] = a;                                                                                     \
    to[1] = b;                                                                                     \
  }                                                                                                \
  inline void load_structures(uint64_t address, fp_vector<T>(&to)[3]) {                            \
    register fp_vector<T> a asm("v0"), b asm("v1"), c asm("v2");                                   \
    asm volatile("ld3 {v0." arrangement ", v1." arrangement ", v2." arrangement "}, [%3]"          \
                 : "=w"(a), "=w"(b), "=w"(c)                                                       \
                 : "r"(address)                                                                    \
                 : "memory");                                                                      \
    to[0] = a;                                                                                     \
    to[1] = b;                                                                                     \
    to[2] = c;                                                                                     \
  }                                                                                                \
  inline void load_structures(uint64_t address, fp_vector<T>(&to)[4]) {                            \
    register fp_vector<T> a asm("v0"), b asm("v1"), c asm("v2"), d asm("v3");                      \
    asm volatile("ld4 {v0." arrangement ", v1." arrangement ", v2." arrangement                    \
                 ", v3." arrangement "}, [%4]"                                                     \
                 : "=w"(a), "=w"(b), "=w"(c), "=w"(d)                                              \
                 : "r"(address)                                                                    \
                 : "memory");                                                                      \
    to[0] = a;                                                                                     \
    to[1] = b;                                                                                     \
    to[2] = c;                                                                                     \
    to[3] = d;                                                                                     \
  }                                                                                                \
  inline void store_structures(uint64_t address, const fp_vector<T>(&from)[2]) {                   \
    register fp_vector<T> a asm("v0") = from[0], b asm("v1") = from[1];                            \
    asm volatile("st2 {v0." arrangement ", v1." arrangement "}, [%2]"                              \
                 :                                                                                 \
                 : "w"(a), "w"(b), "r"(address)                                                    \
                 : "memory");                                                                      \
  }                                                                                                \
  inline void store_structures(uint64_t address, const fp_vector<T>(&from)[3]) {                   \
    register fp_vector<T> a asm("v0") = from[0], b asm("v1") = from[1], c asm("v2") = from[2];     \
    asm volatile("st3 {v0." arrangement ", v1." arrangement ", v2." arrangement "}, [%3]"          \
                 :                                                                                 \
                 : "w"(a), "w"(b), "w"(c), "r"(address)                                            \
                 : "memory");                                                                      \
  }                                                                                                \
  inline void store_structures(uint64_t address, const fp_vector<T>(&from)[4]) {                   \
    register fp_vector<T> a asm("v0") = from[0], b asm("v1") = from[1], c asm("v2") = from[2],     \
                            d asm("v3") = from[3];                                                 \
    asm volatile("st4 {v0." arrangement ", v1." arrangement ", v2." arrangement                    \
                 ", v3." arrangement "}, [%4]"                                                     \
                 :                                                                                 \
                 : "w"(a), "w"(b), "w"(c), "w"(d), "r"(address)                                    \
                 : "memory");                                                                      \
  }

HOST_STRUCTURES(uint8_t, "16b")
HOST_STRUCTURES(uint16_t, "8h")
HOST_STRUCTURES(uint32_t, "4s")
HOST_STRUCTURES(uint64_t, "2d")

#undef HOST_STRUCTURES

}  // namespace host

#else

#include <cstddef>
#include <cstring>

namespace host {

template <class Vector, size_t N> void load_structures(uint64_t address, Vector (&to)[N]) {
  constexpr size_t bytes = sizeof(to[0][0]);
  for (size_t i = 0; i < N * (sizeof(Vector) / bytes); i++)
    memcpy(reinterpret_cast<char*>(&to[i % N]) + i / N * bytes,
           reinterpret_cast<const char*>(address) + i * bytes, bytes);
}

template <class Vector, size_t N> void store_structures(uint64_t address, const Vector (&from)[N]) {
  constexpr size_t bytes = sizeof(from[0][0]);
  for (size_t i = 0; i < N * (sizeof(Vector) / bytes); i++)
    memcpy(reinterpret_cast<char*>(address) + i * bytes,
           reinterpret_cast<const char*>(&from[i % N]) + i / N * bytes, bytes);
}

}  // namespace host

#endif
