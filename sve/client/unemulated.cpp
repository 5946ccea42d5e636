// What a word of the SVE encoding space is that has no row: for the message in front of a death.
#include "sve/decode/dispatch.h"
#include "sve/state/switches.h"

namespace {

struct Class {
  uint32_t mask, value;
  const char* name;
};

// The first match holds. The last rows are what is left of an area that came with SVE2 as a whole.
constexpr Class classes[] = {
    // clang-format off
    {0xffe0fc00, 0x45009800, "SVE I8MM, matrix multiply"},
    {0xff80fc00, 0x45809800, "SVE I8MM, matrix multiply"},
    {0xffe0fc00, 0x44807800, "SVE I8MM, mixed-sign dot product"},
    {0xffe0f800, 0x44a01800, "SVE I8MM, mixed-sign dot product"},
    {0xffe03c00, 0x64600000, "SVE BF16, dot product"},
    {0xffe0fc00, 0x6460e400, "SVE BF16, matrix multiply"},
    {0xffe03000, 0x64e00000, "SVE BF16, widening multiply-add"},
    {0xfffee000, 0x648aa000, "SVE BF16, convert"},
    {0xffffe000, 0x658aa000, "SVE BF16, convert"},
    {0xffe0fc00, 0x64a0e400, "SVE F32MM, matrix multiply"},
    {0xffe0fc00, 0x64e0e400, "SVE F64MM, matrix multiply"},
    {0xfe60c000, 0xa4200000, "SVE F64MM, load and replicate 256 bits"},
    {0xffe0e000, 0x05a00000, "SVE F64MM, permute 128-bit elements"},
    {0xfffcf800, 0x4520e000, "SVE2 AES or SM4"},
    {0xffe0fc00, 0x4520f000, "SVE2 SM4"},
    {0xffe0fc00, 0x4520f400, "SVE2 SHA3"},
    {0xff20f000, 0x4500b000, "SVE2 BitPerm, bit permute"},
    {0xfffff800, 0x04bf5800, "SME, read the streaming vector length"},
    {0xffa0f800, 0x04205800, "SME, add the streaming vector length"},
    {0xff20c000, 0x25204000, "SVE2.1 or SME, select a predicate"},
    {0xff20f800, 0x4400c000, "SVE2.1 or SME, clamp"},
    {0xffffe000, 0x052e8000, "SVE2.1 or SME, reverse doublewords"},
    {0xff3ee000, 0x04068000, "SVE2, saturating shift by immediate"},
    {0xff3ee000, 0x040c8000, "SVE2, rounding shift by immediate"},
    {0xff3fe000, 0x040f8000, "SVE2, saturating shift by immediate"},
    {0xff20fc00, 0x04203400, "SVE2, bitwise ternary"},
    {0xff20f800, 0x04203800, "SVE2, bitwise ternary"},
    {0xff20e000, 0x04206000, "SVE2, multiply unpredicated"},
    {0xff20f800, 0x05202800, "SVE2, table look-up"},
    {0xff3fe000, 0x052d8000, "SVE2, splice"},
    {0xffe0e000, 0x05600000, "SVE2, extract"},
    {0xff20e400, 0x25200000, "SVE2, while greater"},
    {0xff20fc00, 0x25203000, "SVE2, pointer conflict"},
    {0xffa0e000, 0x45208000, "SVE2, match characters"},
    {0xffa0e000, 0x45a0c000, "SVE2, histogram"},
    {0xffe0fc00, 0x4520a000, "SVE2, histogram"},
    {0xff20c000, 0x44200000, "SVE2, multiply by element"},
    {0xfe000000, 0x44000000, "SVE2, integer arithmetic"},
    {0xff38e000, 0x64108000, "SVE2, floating-point pairwise"},
    {0xff3ce000, 0x6408a000, "SVE2, floating-point convert"},
    {0xffffe000, 0x650aa000, "SVE2, floating-point convert"},
    {0xfff9e000, 0x6518a000, "SVE2, floating-point logarithm"},
    {0xffe03000, 0x64a00000, "SVE2, floating-point widening multiply-add"},
    {0xffe03000, 0x64a02000, "SVE2, floating-point widening multiply-add"},
    {0xbe60c000, 0x84008000, "SVE2, non-temporal gather"},
    {0xfe60e000, 0xc400c000, "SVE2, non-temporal gather"},
    {0xfe00e000, 0xe4002000, "SVE2, non-temporal scatter"},
    // clang-format on
};

}  // namespace

const char* sve_describe_word(uint32_t word) {
  if (is_sve(word) != nullptr)
    return "SVE";
  for (const Class& candidate : classes)
    if ((word & candidate.mask) == candidate.value)
      return candidate.name;
  return nullptr;
}
