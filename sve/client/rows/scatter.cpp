// Scatter stores.
#include "sve/client/stub.h"
#include "sve/fast/gather.h"

// clang-format off
FAST(Store1VIZ,  (U64), 0xe440a000, sve_st1b_d_zpzi,             Zt, Pg, Zn, UImm5At16)

FAST(Store1VSZ,  (U64), 0xe400a000, sve_st1b_d_zpzr,             Zt, Pg, Zm, Base)

FAST(Store1XVSZ, (U64), 0xe400c000, sve_st1b_d_sxtw_zpzr,        Zt, Pg, Zm, Base)
FAST(Store1XVSZ, (U32), 0xe440c000, sve_st1b_s_sxtw_zpzr,        Zt, Pg, Zm, Base)

FAST(Store2SVZ,  (U64), 0xe4a0a000, sve_st1h_d_scaled_zprz,      Zt, Pg, Base, Zm)

FAST(Store2VIZ,  (U64), 0xe4c0a000, sve_st1h_d_zpzi,             Zt, Pg, Zn, UImm5At16)

FAST(Store2VSZ,  (U64), 0xe480a000, sve_st1h_d_zpzr,             Zt, Pg, Zm, Base)

FAST(Store2XSVZ, (U64), 0xe4a0c000, sve_st1h_d_sxtw_scaled_zprz, Zt, Pg, Base, Zm)
FAST(Store2XSVZ, (U32), 0xe4e0c000, sve_st1h_s_sxtw_scaled_zprz, Zt, Pg, Base, Zm)

FAST(Store2XVSZ, (U32), 0xe4c0c000, sve_st1h_s_sxtw_zpzr,        Zt, Pg, Zm, Base)

FAST(Store4SVZ,  (U64), 0xe520a000, sve_st1w_d_scaled_zprz,      Zt, Pg, Base, Zm)

FAST(Store4VIZ,  (U64), 0xe540a000, sve_st1w_d_zpzi,             Zt, Pg, Zn, UImm5At16)

FAST(Store4VSZ,  (U64), 0xe500a000, sve_st1w_d_zpzr,             Zt, Pg, Zm, Base)

FAST(Store4XSVZ, (U64), 0xe520c000, sve_st1w_d_sxtw_scaled_zprz, Zt, Pg, Base, Zm)
FAST(Store4XSVZ, (U32), 0xe560c000, sve_st1w_sxtw_scaled_zprz,   Zt, Pg, Base, Zm)

FAST(Store4XVSZ, (U32), 0xe540c000, sve_st1w_sxtw_zpzr,          Zt, Pg, Zm, Base)

FAST(Store4YSVZ, (U64), 0xe5208000, sve_st1w_d_uxtw_scaled_zprz, Zt, Pg, Base, Zm)

FAST(Store8SVZ,  (U64), 0xe5a0a000, sve_st1d_scaled_zprz,        Zt, Pg, Base, Zm)

FAST(Store8VIZ,  (U64), 0xe5c0a000, sve_st1d_zpzi,               Zt, Pg, Zn, UImm5At16)

FAST(Store8VSZ,  (U64), 0xe580a000, sve_st1d_zpzr,               Zt, Pg, Zm, Base)

FAST(Store8XSVZ, (U64), 0xe5a0c000, sve_st1d_sxtw_scaled_zprz,   Zt, Pg, Base, Zm)

FAST(Store8YSVZ, (U64), 0xe5a08000, sve_st1d_uxtw_scaled_zprz,   Zt, Pg, Base, Zm)
// clang-format on
