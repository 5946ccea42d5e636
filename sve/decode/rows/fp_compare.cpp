// Floating-point compares, of vectors and with zero.
#include "sve/fast/fp_compare.h"
#include "sve/decode/row.h"
#include "sve/model/floating_point.h"

// clang-format off
ROW("FCMGE Pd.T, Pg/Z, Zn.T, Zm.T", CmpGEVVZ, (F32, D64),      sized(0x65004000), HOST_FP, sve_fcmge_ppzz, Pd, PgZ, Zn, Zm)
ROW("FCMGT Pd.T, Pg/Z, Zn.T, Zm.T", CmpGTVVZ, (F32, D64),      sized(0x65004010), HOST_FP, sve_fcmgt_ppzz, Pd, PgZ, Zn, Zm)
ROW("FCMEQ Pd.T, Pg/Z, Zn.T, Zm.T", CmpEQVVZ, (F32, D64),      sized(0x65006000), HOST_FP, sve_fcmeq_ppzz, Pd, PgZ, Zn, Zm)
ROW("FCMNE Pd.T, Pg/Z, Zn.T, Zm.T", CmpNEVVZ, (F32, D64),      sized(0x65006010), HOST_FP, sve_fcmne_ppzz, Pd, PgZ, Zn, Zm)
ROW("FCMUO Pd.T, Pg/Z, Zn.T, Zm.T", CmpUNVVZ, (F32, D64),      sized(0x6500c000), HOST_FP, sve_fcmuo_ppzz, Pd, PgZ, Zn, Zm)
ROW("FACGE Pd.T, Pg/Z, Zn.T, Zm.T", AcGEVVZ,  (F16, F32, D64), sized(0x6500c010), MODEL,   Pd, PgZ, Zn, Zm)
ROW("FACGT Pd.T, Pg/Z, Zn.T, Zm.T", AcGTVVZ,  (F16, F32, D64), sized(0x6500e010), MODEL,   Pd, PgZ, Zn, Zm)
ROW("FCMGE Pd.T, Pg/Z, Zn.T, #0.0", CmpGEV0Z, (F32, D64),      sized(0x65102000), HOST_FP, sve_fcmge_ppz, Pd, PgZ, Zn)
ROW("FCMGT Pd.T, Pg/Z, Zn.T, #0.0", CmpGTV0Z, (F32, D64),      sized(0x65102010), HOST_FP, sve_fcmgt_ppz, Pd, PgZ, Zn)
ROW("FCMLT Pd.T, Pg/Z, Zn.T, #0.0", CmpLTV0Z, (F32, D64),      sized(0x65112000), HOST_FP, sve_fcmlt_ppz, Pd, PgZ, Zn)
ROW("FCMLE Pd.T, Pg/Z, Zn.T, #0.0", CmpLEV0Z, (F32, D64),      sized(0x65112010), HOST_FP, sve_fcmle_ppz, Pd, PgZ, Zn)
ROW("FCMEQ Pd.T, Pg/Z, Zn.T, #0.0", CmpEQV0Z, (F32, D64),      sized(0x65122000), HOST_FP, sve_fcmeq_ppz, Pd, PgZ, Zn)
ROW("FCMNE Pd.T, Pg/Z, Zn.T, #0.0", CmpNEV0Z, (F16, F32, D64), sized(0x65132000), MODEL,   Pd, PgZ, Zn)
ROW("FCMGE Pd.H, Pg/Z, Zn.H, Zm.H", CmpGEVVZ, (F16),           0x65404000,        MODEL,   Pd, PgZ, Zn, Zm)
ROW("FCMGT Pd.H, Pg/Z, Zn.H, Zm.H", CmpGTVVZ, (F16),           0x65404010,        MODEL,   Pd, PgZ, Zn, Zm)
ROW("FCMEQ Pd.H, Pg/Z, Zn.H, Zm.H", CmpEQVVZ, (F16),           0x65406000,        MODEL,   Pd, PgZ, Zn, Zm)
ROW("FCMNE Pd.H, Pg/Z, Zn.H, Zm.H", CmpNEVVZ, (F16),           0x65406010,        MODEL,   Pd, PgZ, Zn, Zm)
ROW("FCMUO Pd.H, Pg/Z, Zn.H, Zm.H", CmpUNVVZ, (F16),           0x6540c000,        MODEL,   Pd, PgZ, Zn, Zm)
ROW("FCMGE Pd.H, Pg/Z, Zn.H, #0.0", CmpGEV0Z, (F16),           0x65502000,        MODEL,   Pd, PgZ, Zn)
ROW("FCMGT Pd.H, Pg/Z, Zn.H, #0.0", CmpGTV0Z, (F16),           0x65502010,        MODEL,   Pd, PgZ, Zn)
ROW("FCMLT Pd.H, Pg/Z, Zn.H, #0.0", CmpLTV0Z, (F16),           0x65512000,        MODEL,   Pd, PgZ, Zn)
ROW("FCMLE Pd.H, Pg/Z, Zn.H, #0.0", CmpLEV0Z, (F16),           0x65512010,        MODEL,   Pd, PgZ, Zn)
ROW("FCMEQ Pd.H, Pg/Z, Zn.H, #0.0", CmpEQV0Z, (F16),           0x65522000,        MODEL,   Pd, PgZ, Zn)
// clang-format on
