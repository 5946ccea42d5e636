// Floating-point compares in single and double precision.
#include "sve/fast/fp_compare.h"
#include "sve/client/stub.h"

// clang-format off
HOST_FP_SIZED(CmpEQVVZ, (F32, D64), 0x65006000, sve_fcmeq_ppzz, Pd, PgZ, Zn, Zm)
HOST_FP_SIZED(CmpNEVVZ, (F32, D64), 0x65006010, sve_fcmne_ppzz, Pd, PgZ, Zn, Zm)
HOST_FP_SIZED(CmpGEVVZ, (F32, D64), 0x65004000, sve_fcmge_ppzz, Pd, PgZ, Zn, Zm)
HOST_FP_SIZED(CmpGTVVZ, (F32, D64), 0x65004010, sve_fcmgt_ppzz, Pd, PgZ, Zn, Zm)
HOST_FP_SIZED(CmpUNVVZ, (F32, D64), 0x6500c000, sve_fcmuo_ppzz, Pd, PgZ, Zn, Zm)

// Against zero.
HOST_FP_SIZED(CmpEQV0Z, (F32, D64), 0x65122000, sve_fcmeq_ppz, Pd, PgZ, Zn)
HOST_FP_SIZED(CmpGEV0Z, (F32, D64), 0x65102000, sve_fcmge_ppz, Pd, PgZ, Zn)
HOST_FP_SIZED(CmpGTV0Z, (F32, D64), 0x65102010, sve_fcmgt_ppz, Pd, PgZ, Zn)
HOST_FP_SIZED(CmpLEV0Z, (F32, D64), 0x65112010, sve_fcmle_ppz, Pd, PgZ, Zn)
HOST_FP_SIZED(CmpLTV0Z, (F32, D64), 0x65112000, sve_fcmlt_ppz, Pd, PgZ, Zn)
// clang-format on
