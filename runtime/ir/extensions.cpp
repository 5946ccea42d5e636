#include "runtime/ir/extensions.h"

namespace ir {
namespace {

struct extension_row {
  std::uint32_t mask, value;
  const char* name;
};

// The first match holds.
constexpr extension_row rows[] = {
    // clang-format off
    // Loads, stores and atomics.
    {0x3f208c00, 0x38200000, "FEAT_LSE"},      // LDADD and its kin
    {0x3f20fc00, 0x38208000, "FEAT_LSE"},      // SWP
    {0x3fa07c00, 0x08a07c00, "FEAT_LSE"},      // CAS
    {0xbfa07c00, 0x08207c00, "FEAT_LSE"},      // CASP
    {0x3fa08000, 0x08800000, "FEAT_LOR"},      // LDLAR, STLLR
    {0x3ffffc00, 0x38bfc000, "FEAT_LRCPC"},    // LDAPR
    {0x3f200c00, 0x19000000, "FEAT_LRCPC2"},   // LDAPUR, STLUR
    {0xff200400, 0xf8200400, "FEAT_PAuth"},    // LDRAA, LDRAB
    {0xff200000, 0xd9200000, "FEAT_MTE"},
    {0xff400000, 0x69000000, "FEAT_MTE"},      // STGP
    {0xffc00000, 0x68800000, "FEAT_MTE"},
    {0xfb200c00, 0x19000400, "FEAT_MOPS"},
    // Data processing on general registers.
    {0x7fe0f000, 0x1ac04000, "FEAT_CRC32"},
    {0x7fe0f000, 0x1ac05000, "FEAT_CRC32"},
    {0x7fe0f000, 0x1ac06000, "FEAT_CSSC"},     // SMAX, UMAX, SMIN, UMIN
    {0x7ff00000, 0x11c00000, "FEAT_CSSC"},
    {0x7ffff800, 0x5ac02000, "FEAT_CSSC"},     // ABS
    {0x7ffff800, 0x5ac01800, "FEAT_CSSC"},     // CTZ, CNT
    {0xffff0000, 0xdac10000, "FEAT_PAuth"},
    {0xffe0fc00, 0x9ac03000, "FEAT_PAuth"},    // PACGA
    {0xffe0f800, 0x9ac01000, "FEAT_MTE"},      // IRG, GMI
    {0xdfe0fc00, 0x9ac00000, "FEAT_MTE"},      // SUBP, SUBPS
    {0xbfc0c000, 0x91800000, "FEAT_MTE"},      // ADDG, SUBG
    {0xffe07c10, 0xba000400, "FEAT_FlagM"},    // RMIF
    {0xffffbc1f, 0x3a00080d, "FEAT_FlagM"},    // SETF8, SETF16
    // Branches, system instructions and registers.
    {0xfffffbff, 0xd65f0bff, "FEAT_PAuth"},    // RETAA, RETAB
    {0xffdff81f, 0xd61f081f, "FEAT_PAuth"},    // BRAAZ, BLRAAZ and their kin
    {0xffdff800, 0xd71f0800, "FEAT_PAuth"},
    {0xff000010, 0x54000010, "FEAT_HBC"},
    {0xffffffff, 0xd500401f, "FEAT_FlagM"},    // CFINV
    {0xffffffdf, 0xd500401f, "FEAT_FlagM2"},
    {0xffffffbf, 0xd500401f, "FEAT_FlagM2"},   // XAFLAG, AXFLAG
    {0xffffffff, 0xd50330ff, "FEAT_SB"},
    {0xffe0001f, 0xd4600000, "FEAT_TME"},      // TCANCEL
    {0xffffffc0, 0xd5031000, "FEAT_WFxT"},
    {0xffffffc0, 0xd53b2400, "FEAT_RNG"},
    {0xffffffe0, 0xd50b7c20, "FEAT_DPB"},
    {0xffffffe0, 0xd50b7d20, "FEAT_DPB2"},
    // Cryptography.
    {0xffffcc00, 0x4e284800, "FEAT_AES"},
    {0xffe08c00, 0x5e000000, "FEAT_SHA1 or FEAT_SHA256"},
    {0xffffcc00, 0x5e280800, "FEAT_SHA1 or FEAT_SHA256"},
    {0xffe0f000, 0xce608000, "FEAT_SHA512 or FEAT_SHA3"},
    {0xfffffc00, 0xcec08000, "FEAT_SHA512"},
    {0xffc08000, 0xce000000, "FEAT_SHA3"},
    {0xffe00000, 0xce800000, "FEAT_SHA3"},
    {0xffe08000, 0xce400000, "FEAT_SM3"},
    {0xffe0c000, 0xce408000, "FEAT_SM3"},
    {0xffe0f000, 0xce60c000, "FEAT_SM3 or FEAT_SM4"},
    {0xfffffc00, 0xcec08400, "FEAT_SM4"},
    // Vectors and floating point.
    {0x9f20fc00, 0x0e009400, "FEAT_DotProd"},
    {0x9f00f400, 0x0f00e000, "FEAT_DotProd"},
    {0xffe0fc00, 0x4e80a400, "FEAT_I8MM"},     // SMMLA
    {0xffe0f400, 0x4e80a400, "FEAT_I8MM"},     // USMMLA
    {0xffe0fc00, 0x6e80a400, "FEAT_I8MM"},     // UMMLA
    {0xbfe0fc00, 0x0e809c00, "FEAT_I8MM"},     // USDOT
    {0xbf40f400, 0x0f00f000, "FEAT_I8MM"},     // USDOT, SUDOT by element
    {0xbf40f400, 0x0f40f000, "FEAT_BF16"},
    {0xbf60fc00, 0x2e40fc00, "FEAT_BF16"},     // BFDOT, BFMLAL
    {0xffe0fc00, 0x6e40ec00, "FEAT_BF16"},     // BFMMLA
    {0xfffffc00, 0x1e634000, "FEAT_BF16"},     // BFCVT
    {0xbffffc00, 0x0ea16800, "FEAT_BF16"},     // BFCVTN
    {0xbf20f400, 0x2e008400, "FEAT_RDM"},      // SQRDMLAH, SQRDMLSH
    {0xff20f400, 0x7e008400, "FEAT_RDM"},
    {0xaf00d400, 0x2f00d000, "FEAT_RDM"},
    {0xbf20e400, 0x2e00c400, "FEAT_FCMA"},
    {0xbf20ec00, 0x2e00e400, "FEAT_FCMA"},
    {0xbf009400, 0x2f001000, "FEAT_FCMA"},
    {0xfffffc00, 0x1e7e0000, "FEAT_JSCVT"},
    {0xffbe7c00, 0x1e284000, "FEAT_FRINTTS"},
    {0x9fbfec00, 0x0e21e800, "FEAT_FRINTTS"},
    {0xbf60fc00, 0x0e20ec00, "FEAT_FHM"},
    {0xbf60fc00, 0x2e20cc00, "FEAT_FHM"},
    {0xbfc0b400, 0x0f800000, "FEAT_FHM"},
    {0xbfc0b400, 0x2f808000, "FEAT_FHM"},
    // FCVT between half and the others came with the first version.
    {0x7ffe7c00, 0x1ee24000, nullptr},
    {0x7fe00000, 0x1ee00000, "FEAT_FP16"},     // scalars
    {0x7fe00000, 0x1ec00000, "FEAT_FP16"},
    {0xffc00000, 0x1fc00000, "FEAT_FP16"},
    {0xffc0b400, 0x5f001000, "FEAT_FP16"},     // by element
    {0xdfc0f400, 0x5f009000, "FEAT_FP16"},
    {0x9f60c400, 0x0e400400, "FEAT_FP16"},     // vectors
    {0x9f7e0c00, 0x0e780800, "FEAT_FP16"},
    {0xdf60c400, 0x5e400400, "FEAT_FP16"},
    {0xdf7e0c00, 0x5e780800, "FEAT_FP16"},
    {0xbf7ecc00, 0x0e30c800, "FEAT_FP16"},     // across lanes
    {0xbffffc00, 0x0f00fc00, "FEAT_FP16"},     // FMOV
    {0x9fc0b400, 0x0f001000, "FEAT_FP16"},     // FMLA, FMLS by element
    {0x9fc0f400, 0x0f009000, "FEAT_FP16"},     // FMUL, FMULX by element
    // clang-format on
};

}  // namespace

const char* extension_of(std::uint32_t word) {
  for (const extension_row& row : rows) {
    if ((word & row.mask) == row.value) {
      return row.name;
    }
  }
  return nullptr;
}

}  // namespace ir
