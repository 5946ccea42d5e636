// The floating-point unit of an AArch64 host: one instruction for each operation. The statements
// are volatile, so that none is folded, dropped or moved across an access to FPSR.
#pragma once

#include "host/fp_vector.h"

namespace host::aarch64 {

inline constexpr bool control_is_in_force = true;

inline uint64_t read_fpcr() {
  uint64_t value;
  asm volatile("mrs %0, fpcr" : "=r"(value));
  return value;
}
inline void write_fpcr(uint64_t value) { asm volatile("msr fpcr, %0" : : "r"(value)); }

inline uint64_t read_fpsr() {
  uint64_t value;
  asm volatile("mrs %0, fpsr" : "=r"(value));
  return value;
}
inline void write_fpsr(uint64_t value) { asm volatile("msr fpsr, %0" : : "r"(value)); }

#define HOST_FP_UNARY(name)                                                                        \
  template <class T> inline fp_vector<T> name(fp_vector<T> a) {                                    \
    fp_vector<T> result;                                                                           \
    if constexpr (sizeof(T) == 4)                                                                  \
      asm volatile(#name " %0.4s, %1.4s" : "=w"(result) : "w"(a));                                 \
    else                                                                                           \
      asm volatile(#name " %0.2d, %1.2d" : "=w"(result) : "w"(a));                                 \
    return result;                                                                                 \
  }
#define HOST_FP_BINARY(name)                                                                       \
  template <class T> inline fp_vector<T> name(fp_vector<T> a, fp_vector<T> b) {                    \
    fp_vector<T> result;                                                                           \
    if constexpr (sizeof(T) == 4)                                                                  \
      asm volatile(#name " %0.4s, %1.4s, %2.4s" : "=w"(result) : "w"(a), "w"(b));                  \
    else                                                                                           \
      asm volatile(#name " %0.2d, %1.2d, %2.2d" : "=w"(result) : "w"(a), "w"(b));                  \
    return result;                                                                                 \
  }

HOST_FP_BINARY(fadd)
HOST_FP_BINARY(fsub)
HOST_FP_BINARY(fmul)
HOST_FP_BINARY(fdiv)
HOST_FP_BINARY(fmulx)
HOST_FP_BINARY(fmax)
HOST_FP_BINARY(fmin)
HOST_FP_BINARY(fmaxnm)
HOST_FP_BINARY(fminnm)
HOST_FP_BINARY(fmaxnmp)
HOST_FP_BINARY(fminnmp)
HOST_FP_BINARY(frecps)
HOST_FP_BINARY(frsqrts)
HOST_FP_BINARY(fcmeq)
HOST_FP_BINARY(fcmge)
HOST_FP_BINARY(fcmgt)
HOST_FP_UNARY(frecpe)
HOST_FP_UNARY(frsqrte)
HOST_FP_UNARY(frinta)
HOST_FP_UNARY(frintm)
HOST_FP_UNARY(frintn)
HOST_FP_UNARY(frintp)
HOST_FP_UNARY(frintx)
HOST_FP_UNARY(frintz)
HOST_FP_UNARY(fsqrt)
HOST_FP_UNARY(fcvtzs)
HOST_FP_UNARY(fcvtzu)
HOST_FP_UNARY(scvtf)
HOST_FP_UNARY(ucvtf)

#undef HOST_FP_UNARY
#undef HOST_FP_BINARY

// addend + a * b, with one rounding.
template <class T> inline fp_vector<T> fmla(fp_vector<T> addend, fp_vector<T> a, fp_vector<T> b) {
  if constexpr (sizeof(T) == 4)
    asm volatile("fmla %0.4s, %1.4s, %2.4s" : "+w"(addend) : "w"(a), "w"(b));
  else
    asm volatile("fmla %0.2d, %1.2d, %2.2d" : "+w"(addend) : "w"(a), "w"(b));
  return addend;
}

// Conversions between the formats, of the low or the high half of the elements.
#define HOST_FP_WIDEN(From, To, name, instruction)                                                 \
  inline fp_vector<To> name(fp_vector<From> a) {                                                   \
    fp_vector<To> result;                                                                          \
    asm volatile(instruction : "=w"(result) : "w"(a));                                             \
    return result;                                                                                 \
  }
#define HOST_FP_NARROW(From, To, name, low_instruction, high_instruction)                          \
  inline fp_vector<To> name(fp_vector<From> low, fp_vector<From> high) {                           \
    fp_vector<To> result;                                                                          \
    asm volatile(low_instruction "\n\t" high_instruction : "=&w"(result) : "w"(low), "w"(high));   \
    return result;                                                                                 \
  }

HOST_FP_WIDEN(uint16_t, uint32_t, fcvtl, "fcvtl %0.4s, %1.4h")
HOST_FP_WIDEN(uint16_t, uint32_t, fcvtl2, "fcvtl2 %0.4s, %1.8h")
HOST_FP_WIDEN(uint32_t, uint64_t, fcvtl, "fcvtl %0.2d, %1.2s")
HOST_FP_WIDEN(uint32_t, uint64_t, fcvtl2, "fcvtl2 %0.2d, %1.4s")
HOST_FP_NARROW(uint32_t, uint16_t, fcvtn, "fcvtn %0.4h, %1.4s", "fcvtn2 %0.8h, %2.4s")
HOST_FP_NARROW(uint64_t, uint32_t, fcvtxn, "fcvtxn %0.2s, %1.2d", "fcvtxn2 %0.4s, %2.2d")

#undef HOST_FP_WIDEN
#undef HOST_FP_NARROW

// Conversions between sizes, on one element. Values of less than 64 bits lie in the low bits of the
// pattern; so do such results, with the high bits 0.
#define HOST_FP_TO_FP(name, instruction)                                                           \
  inline uint64_t name(uint64_t a) {                                                               \
    uint64_t result;                                                                               \
    asm volatile(instruction : "=w"(result) : "w"(a));                                             \
    return result;                                                                                 \
  }
#define HOST_FP_TO_INTEGER(name, instruction)                                                      \
  inline uint64_t name(uint64_t a) {                                                               \
    uint64_t result;                                                                               \
    asm volatile(instruction : "=r"(result) : "w"(a));                                             \
    return result;                                                                                 \
  }
#define HOST_INTEGER_TO_FP(name, instruction)                                                      \
  inline uint64_t name(uint64_t a) {                                                               \
    uint64_t result;                                                                               \
    asm volatile(instruction : "=w"(result) : "r"(a));                                             \
    return result;                                                                                 \
  }

HOST_FP_TO_FP(fcvt_h2s, "fcvt %s0, %h1")
HOST_FP_TO_FP(fcvt_h2d, "fcvt %d0, %h1")
HOST_FP_TO_FP(fcvt_s2h, "fcvt %h0, %s1")
HOST_FP_TO_FP(fcvt_d2h, "fcvt %h0, %d1")
HOST_FP_TO_FP(fcvt_s2d, "fcvt %d0, %s1")
HOST_FP_TO_FP(fcvt_d2s, "fcvt %s0, %d1")
HOST_FP_TO_INTEGER(fcvtzs_s2d, "fcvtzs %x0, %s1")
HOST_FP_TO_INTEGER(fcvtzs_s2s, "fcvtzs %w0, %s1")
HOST_FP_TO_INTEGER(fcvtzu_s2d, "fcvtzu %x0, %s1")
HOST_FP_TO_INTEGER(fcvtzu_s2s, "fcvtzu %w0, %s1")
HOST_FP_TO_INTEGER(fcvtzs_d2d, "fcvtzs %x0, %d1")
HOST_FP_TO_INTEGER(fcvtzu_d2d, "fcvtzu %x0, %d1")
HOST_FP_TO_INTEGER(fcvtzs_d2s, "fcvtzs %w0, %d1")
HOST_FP_TO_INTEGER(fcvtzu_d2s, "fcvtzu %w0, %d1")
HOST_INTEGER_TO_FP(scvtf_d2s, "scvtf %s0, %x1")
HOST_INTEGER_TO_FP(scvtf_s2d, "scvtf %d0, %w1")
HOST_INTEGER_TO_FP(scvtf_d2d, "scvtf %d0, %x1")
HOST_INTEGER_TO_FP(ucvtf_s2d, "ucvtf %d0, %w1")
HOST_INTEGER_TO_FP(ucvtf_d2d, "ucvtf %d0, %x1")
HOST_INTEGER_TO_FP(ucvtf_d2s, "ucvtf %s0, %x1")

#undef HOST_FP_TO_FP
#undef HOST_FP_TO_INTEGER
#undef HOST_INTEGER_TO_FP

}  // namespace host::aarch64
