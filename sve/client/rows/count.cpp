// Counts, loop predicates, index vectors and arithmetic on the vector length.
#include "sve/client/stub.h"

#include "sve/fast/count.h"
#include "sve/fast/count_while.h"

// clang-format off

// Counts of elements, by pattern.
FAST(IncrVLSI, (U8),  0x0430e000, sve_incb_rii, Xdn, Pattern, Multiplier)
FAST(IncrVLSI, (U16), 0x0470e000, sve_inch_rii, Xdn, Pattern, Multiplier)
FAST(IncrVLSI, (U32), 0x04b0e000, sve_incw_rii, Xdn, Pattern, Multiplier)
FAST(IncrVLSI, (U64), 0x04f0e000, sve_incd_rii, Xdn, Pattern, Multiplier)
FAST(DecrVLSI, (U8),  0x0430e400, sve_decb_rii, Xdn, Pattern, Multiplier)
FAST(DecrVLSI, (U16), 0x0470e400, sve_dech_rii, Xdn, Pattern, Multiplier)
FAST(DecrVLSI, (U32), 0x04b0e400, sve_decw_rii, Xdn, Pattern, Multiplier)
FAST(DecrVLSI, (U64), 0x04f0e400, sve_decd_rii, Xdn, Pattern, Multiplier)
FAST(IncrVLVI, (U16), 0x0470c000, sve_inch_zii, Zdn, Pattern, Multiplier)
FAST(IncrVLVI, (U32), 0x04b0c000, sve_incw_zii, Zdn, Pattern, Multiplier)
FAST(IncrVLVI, (U64), 0x04f0c000, sve_incd_zii, Zdn, Pattern, Multiplier)
FAST(DecrVLVI, (U16), 0x0470c400, sve_dech_zii, Zdn, Pattern, Multiplier)
FAST(DecrVLVI, (U32), 0x04b0c400, sve_decw_zii, Zdn, Pattern, Multiplier)
FAST(DecrVLVI, (U64), 0x04f0c400, sve_decd_zii, Zdn, Pattern, Multiplier)
FAST(QDecrVL4SI, (U8), 0x0420fc00, sve_uqdecb_rii, Wdn, Pattern, Multiplier)
FAST(QDecrVL8SI, (U8), 0x0430fc00, sve_uqdecb_rii, Xdn, Pattern, Multiplier)

// Counts of predicate elements.
FAST_SIZED(SCountP,      (U8, U16, U32, U64), 0x25208000, sve_cntp_rpp, Xd, Pg4, Pn)
FAST_SIZED(IncrSCountPS, (U8, U16, U32, U64), 0x252c8800, sve_incp_rp,  Xdn, Pn)

// Loop predicates on W and X registers.
FAST_SIZED(While4LTSS, (S8, S16, S32, S64), 0x25200400, sve_whilelt_prr, Pd, Wn, Wm)
FAST_SIZED(While8LTSS, (S8, S16, S32, S64), 0x25201400, sve_whilelt_prr, Pd, Xn, Xm)
FAST_SIZED(While4LTSS, (U8, U16, U32, U64), 0x25200c00, sve_whilelo_prr, Pd, Wn, Wm)
FAST_SIZED(While8LTSS, (U8, U16, U32, U64), 0x25201c00, sve_whilelo_prr, Pd, Xn, Xm)
FAST_SIZED(While4LESS, (U8, U16, U32, U64), 0x25200c10, sve_whilels_prr, Pd, Wn, Wm)
FAST_SIZED(While8LESS, (U8, U16, U32, U64), 0x25201c10, sve_whilels_prr, Pd, Xn, Xm)

// Index vectors: immediates and registers.
FAST_SIZED(IndexII, (S8, S16, S32, S64), 0x04204000, sve_index_zii, Zd, SImm5At5, SImm5At16)
FAST_SIZED(IndexIS, (S8, S16, S32, S64), 0x04204800, sve_index_zir, Zd, SImm5At5, Rm)
FAST_SIZED(IndexSI, (S8, S16, S32, S64), 0x04204400, sve_index_zri, Zd, Rn, SImm5At16)
FAST_SIZED(IndexSS, (S8, S16, S32, S64), 0x04204c00, sve_index_zrr, Zd, Rn, Rm)

// The vector length.
FAST(VLX,    (S64), 0x04bf5000, sve_rdvl_ri,   Xd, SImm6At5)
FAST(AddVLX, (S64), 0x04205000, sve_addvl_rri, XdSP, XnSPAt16, SImm6At5)
FAST(AddPLX, (S64), 0x04605000, sve_addpl_rri, XdSP, XnSPAt16, SImm6At5)

// clang-format on
