// Integer arithmetic, logic and shifts.
#include "sve/client/stub.h"

#include "sve/fast/integer.h"
#include "sve/fast/integer_reduce.h"
#include "sve/fast/integer_unpredicated.h"

// clang-format off

// Two operands, predicated.
FAST_SIZED(AddVVM,  (U8, U16, U32, U64), 0x04000000, sve_add_zpz,   Zdn, PgM, Zm5)
FAST_SIZED(SubVVM,  (U8, U16, U32, U64), 0x04010000, sve_sub_zpz,   Zdn, PgM, Zm5)
FAST_SIZED(MaxVVM,  (S8, S16, S32, S64), 0x04080000, sve_smax_zpz,  Zdn, PgM, Zm5)
FAST_SIZED(MaxVVM,  (U8, U16, U32, U64), 0x04090000, sve_umax_zpz,  Zdn, PgM, Zm5)
FAST_SIZED(MinVVM,  (S8, S16, S32, S64), 0x040a0000, sve_smin_zpz,  Zdn, PgM, Zm5)
FAST_SIZED(MinVVM,  (U8, U16, U32, U64), 0x040b0000, sve_umin_zpz,  Zdn, PgM, Zm5)
FAST_SIZED(MulVVM,  (S8, S16, S32, S64), 0x04100000, sve_mul_zpz,   Zdn, PgM, Zm5)
FAST_SIZED(DivVVM,  (S32, S64),          0x04140000, sve_sdiv_zpz,  Zdn, PgM, Zm5)
FAST_SIZED(DivVVM,  (U32, U64),          0x04150000, sve_udiv_zpz,  Zdn, PgM, Zm5)
FAST_SIZED(DivRVVM, (S32, S64),          0x04160000, sve_sdivr_zpz, Zdn, PgM, Zm5)
FAST_SIZED(DivRVVM, (U32, U64),          0x04170000, sve_udivr_zpz, Zdn, PgM, Zm5)
FAST_SIZED(OrVVM,   (U8, U16, U32, U64), 0x04180000, sve_orr_zpz,   Zdn, PgM, Zm5)
FAST_SIZED(XorVVM,  (U8, U16, U32, U64), 0x04190000, sve_eor_zpz,   Zdn, PgM, Zm5)
FAST_SIZED(AndVVM,  (U8, U16, U32, U64), 0x041a0000, sve_and_zpz,   Zdn, PgM, Zm5)
FAST_SIZED(BicVVM,  (U8, U16, U32, U64), 0x041b0000, sve_bic_zpz,   Zdn, PgM, Zm5)
FAST_SIZED(ShrVVM,  (S8, S16, S32, S64), 0x04108000, sve_asr_zpz,   Zdn, PgM, Zm5)
FAST_SIZED(ShrVVM,  (U8, U16, U32, U64), 0x04118000, sve_lsr_zpz,   Zdn, PgM, Zm5)
FAST_SIZED(ShlVVM,  (U8, U16, U32, U64), 0x04138000, sve_lsl_zpz,   Zdn, PgM, Zm5)

// Multiply-accumulate, predicated: MAD and MSB have the multiplier and the addend the other way
// round in the word.
FAST_SIZED(MLAVVVM,  (S8, S16, S32, S64), 0x04004000, sve_mla_zpzz, Zda, PgM, Zn, Zm)
FAST_SIZED(MLSVVVM,  (S8, S16, S32, S64), 0x04006000, sve_mls_zpzz, Zda, PgM, Zn, Zm)
FAST_SIZED(MADDVVVM, (S8, S16, S32, S64), 0x0400c000, sve_mad_zpzz, Zdn, PgM, Zm, Za5)
FAST_SIZED(MSUBVVVM, (S8, S16, S32, S64), 0x0400e000, sve_msb_zpzz, Zdn, PgM, Zm, Za5)

// One operand, predicated.
FAST_SIZED(NegVM,     (S8, S16, S32, S64), 0x0417a000, sve_neg_zpz,  Zd, PgM, Zn)
FAST_SIZED(RBitVM,    (U8, U16, U32, U64), 0x05278000, sve_rbit_zpz, Zd, PgM, Zn)
FAST(Rev4V,     (U64), 0x05e68000, sve_revw_zpz, Zd, PgM, Zn)
FAST(Extnd12VM, (S16), 0x0450a000, sve_sxtb_zpz, Zd, PgM, Zn)
FAST(Extnd14VM, (S32), 0x0490a000, sve_sxtb_zpz, Zd, PgM, Zn)
FAST(Extnd18VM, (S64), 0x04d0a000, sve_sxtb_zpz, Zd, PgM, Zn)
FAST(Extnd24VM, (S32), 0x0492a000, sve_sxth_zpz, Zd, PgM, Zn)
FAST(Extnd28VM, (S64), 0x04d2a000, sve_sxth_zpz, Zd, PgM, Zn)
FAST(Extnd48VM, (S64), 0x04d4a000, sve_sxtw_zpz, Zd, PgM, Zn)
FAST(Extnd24VM, (U32), 0x0493a000, sve_uxth_zpz, Zd, PgM, Zn)
FAST(Extnd28VM, (U64), 0x04d3a000, sve_uxth_zpz, Zd, PgM, Zn)
FAST(Extnd48VM, (U64), 0x04d5a000, sve_uxtw_zpz, Zd, PgM, Zn)

// Shifts by an immediate: the amount's leading bit stands where other rows have the size.
FAST(ShrVIM, (S8),  0x04008100, sve_asr_zpi, Zdn, PgM, RightShiftAt5)
FAST(ShrVIM, (S16), 0x04008200, sve_asr_zpi, Zdn, PgM, RightShiftAt5)
FAST(ShrVIM, (S32), 0x04408000, sve_asr_zpi, Zdn, PgM, RightShiftAt5)
FAST(ShrVIM, (S64), 0x04808000, sve_asr_zpi, Zdn, PgM, RightShiftAt5)
FAST(ShlVIM, (U8),  0x04038100, sve_lsl_zpi, Zdn, PgM, LeftShiftAt5)
FAST(ShlVIM, (U16), 0x04038200, sve_lsl_zpi, Zdn, PgM, LeftShiftAt5)
FAST(ShlVIM, (U32), 0x04438000, sve_lsl_zpi, Zdn, PgM, LeftShiftAt5)
FAST(ShlVIM, (U64), 0x04838000, sve_lsl_zpi, Zdn, PgM, LeftShiftAt5)
FAST(ShrVIX, (S8),  0x04289000, sve_asr_zzi, Zd, Zn, RightShiftAt16)
FAST(ShrVIX, (S16), 0x04309000, sve_asr_zzi, Zd, Zn, RightShiftAt16)
FAST(ShrVIX, (S32), 0x04609000, sve_asr_zzi, Zd, Zn, RightShiftAt16)
FAST(ShrVIX, (S64), 0x04a09000, sve_asr_zzi, Zd, Zn, RightShiftAt16)
FAST(ShlVIX, (U8),  0x04289c00, sve_lsl_zzi, Zd, Zn, LeftShiftAt16)
FAST(ShlVIX, (U16), 0x04309c00, sve_lsl_zzi, Zd, Zn, LeftShiftAt16)
FAST(ShlVIX, (U32), 0x04609c00, sve_lsl_zzi, Zd, Zn, LeftShiftAt16)
FAST(ShlVIX, (U64), 0x04a09c00, sve_lsl_zzi, Zd, Zn, LeftShiftAt16)

// Unpredicated.
FAST_SIZED(AddVVX, (U8, U16, U32, U64), 0x04200000, sve_add_zzz, Zd, Zn, Zm)
FAST_SIZED(SubVVX, (U8, U16, U32, U64), 0x04200400, sve_sub_zzz, Zd, Zn, Zm)
FAST(AndVVX, (U64), 0x04203000, sve_and_zzz, Zd, Zn, Zm)
FAST(OrVVX,  (U64), 0x04603000, sve_orr_zzz, Zd, Zn, Zm)
FAST(XorVVX, (U64), 0x04a03000, sve_eor_zzz, Zd, Zn, Zm)
FAST(BicVVX, (U64), 0x04e03000, sve_bic_zzz, Zd, Zn, Zm)
FAST(LEA1VV, (U64), 0x04e0a000, sve_adr_scaled_zzz, Zd, Zn, Zm)
FAST(LEA2VV, (U64), 0x04e0a400, sve_adr_scaled_zzz, Zd, Zn, Zm)
FAST(LEA4VV, (U64), 0x04e0a800, sve_adr_scaled_zzz, Zd, Zn, Zm)
FAST(LEA8VV, (U64), 0x04e0ac00, sve_adr_scaled_zzz, Zd, Zn, Zm)

// Immediates.
FAST_SIZED(AddVIX, (U8, U16, U32, U64), 0x2520c000, sve_add_zi, Zdn, UImm8Shifted)
FAST_SIZED(SubVIX, (U8, U16, U32, U64), 0x2521c000, sve_sub_zi, Zdn, UImm8Shifted)
FAST_SIZED(MulVIX, (S8, S16, S32, S64), 0x2530c000, sve_mul_zi, Zdn, SImm8At5)
FAST(OrVIX,  (U64), 0x05000000, sve_orr_zi, Zdn, BitmaskImm)
FAST(XorVIX, (U64), 0x05400000, sve_eor_zi, Zdn, BitmaskImm)
FAST(AndVIX, (U64), 0x05800000, sve_and_zi, Zdn, BitmaskImm)

// MOVPRFX.
FAST_SIZED(MovePrefix1VZ, (U8, U16, U32, U64), 0x04102000, sve_movprfx_zpz, Zd, PgZ, Zn)
FAST_SIZED(MovePrefix1VM, (U8, U16, U32, U64), 0x04112000, sve_movprfx_zpz, Zd, PgM, Zn)
FAST(SpecialMoveV, (U32), 0x0420bc00, sve_movprfx_zz, Zd, Zn)

// Reductions.
FAST_SIZED(AddReduceV, (U8, U16, U32, U64), 0x04012000, sve_uaddv_vpz, Vd, Pg, Zn)
FAST_SIZED(MaxReduceV, (S8, S16, S32, S64), 0x04082000, sve_smaxv_vpz, Vd, Pg, Zn)
FAST_SIZED(MaxReduceV, (U8, U16, U32, U64), 0x04092000, sve_umaxv_vpz, Vd, Pg, Zn)
FAST_SIZED(MinReduceV, (S8, S16, S32, S64), 0x040a2000, sve_sminv_vpz, Vd, Pg, Zn)
FAST_SIZED(MinReduceV, (U8, U16, U32, U64), 0x040b2000, sve_uminv_vpz, Vd, Pg, Zn)
FAST_SIZED(OrReduceV,  (U8, U16, U32, U64), 0x04182000, sve_orv_vpz,   Vd, Pg, Zn)
FAST_SIZED(XorReduceV, (U8, U16, U32, U64), 0x04192000, sve_eorv_vpz,  Vd, Pg, Zn)
FAST_SIZED(AndReduceV, (U8, U16, U32, U64), 0x041a2000, sve_andv_vpz,  Vd, Pg, Zn)

// clang-format on
