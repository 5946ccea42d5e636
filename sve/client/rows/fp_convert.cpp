// Conversions between single and double precision and integers.
#include "sve/fast/fp_convert.h"
#include "sve/client/stub.h"

// clang-format off
HOST_FP(ExtndFVM,   (D64), 0x65cba000, sve_fcvt_s2d_zpz, Zd, PgM, Zn)
HOST_FP(TruncDVM,   (F64), 0x65caa000, sve_fcvt_d2s_zpz, Zd, PgM, Zn)

HOST_FP(FromS4VM,   (F32), 0x6594a000, sve_scvtf_s2s_zpz, Zd, PgM, Zn)
HOST_FP(FromS4VM,   (D64), 0x65d0a000, sve_scvtf_s2d_zpz, Zd, PgM, Zn)
HOST_FP(FromS8VM,   (F64), 0x65d4a000, sve_scvtf_d2s_zpz, Zd, PgM, Zn)
HOST_FP(FromS8VM,   (D64), 0x65d6a000, sve_scvtf_d2d_zpz, Zd, PgM, Zn)
HOST_FP(FromU4VM,   (F32), 0x6595a000, sve_ucvtf_s2s_zpz, Zd, PgM, Zn)
HOST_FP(FromU4VM,   (D64), 0x65d1a000, sve_ucvtf_s2d_zpz, Zd, PgM, Zn)
HOST_FP(FromU8VM,   (D64), 0x65d7a000, sve_ucvtf_d2d_zpz, Zd, PgM, Zn)

HOST_FP(_4FromFVM,  (S32), 0x659ca000, sve_fcvtzs_s2s_zpz, Zd, PgM, Zn)
HOST_FP(_8FromFVM,  (S64), 0x65dca000, sve_fcvtzs_s2d_zpz, Zd, PgM, Zn)
HOST_FP(_4FromDVM,  (S64), 0x65d8a000, sve_fcvtzs_d2s_zpz, Zd, PgM, Zn)
HOST_FP(_4FromDVM,  (U64), 0x65d9a000, sve_fcvtzu_d2s_zpz, Zd, PgM, Zn)
HOST_FP(_8FromDVM,  (S64), 0x65dea000, sve_fcvtzs_d2d_zpz, Zd, PgM, Zn)
HOST_FP(_8FromDVM,  (U64), 0x65dfa000, sve_fcvtzu_d2d_zpz, Zd, PgM, Zn)
// clang-format on
