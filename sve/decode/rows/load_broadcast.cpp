// Loads that broadcast an element or 128 bits.
#include "sve/decode/row.h"
#include "sve/fast/replicate.h"
#include "sve/model/load_store.h"

// clang-format off
ROW("LD1RB {Zt.B}, Pg/Z, [Base{, #UImm6At16}]",     LoadDup1SIZ,  (U8),  0x84408000, FAST,  sve_ld1rb_zpri, Zt, PgZ, Base, UImm6At16)
ROW("LD1RB {Zt.H}, Pg/Z, [Base{, #UImm6At16}]",     LoadDup1SIZ,  (U16), 0x8440a000, FAST,  sve_ld1rb_h_zpri, Zt, PgZ, Base, UImm6At16)
ROW("LD1RB {Zt.S}, Pg/Z, [Base{, #UImm6At16}]",     LoadDup1SIZ,  (U32), 0x8440c000, FAST,  sve_ld1rb_s_zpri, Zt, PgZ, Base, UImm6At16)
ROW("LD1RB {Zt.D}, Pg/Z, [Base{, #UImm6At16}]",     LoadDup1SIZ,  (U64), 0x8440e000, FAST,  sve_ld1rb_d_zpri, Zt, PgZ, Base, UImm6At16)
ROW("LD1RSW {Zt.D}, Pg/Z, [Base{, #UImm6At16*4}]",  LoadDup4SIZ,  (S64), 0x84c08000, FAST,  sve_ld1rsw_d_zpri, Zt, PgZ, Base, UImm6At16)
ROW("LD1RH {Zt.H}, Pg/Z, [Base{, #UImm6At16*2}]",   LoadDup2SIZ,  (U16), 0x84c0a000, FAST,  sve_ld1rh_zpri, Zt, PgZ, Base, UImm6At16)
ROW("LD1RH {Zt.S}, Pg/Z, [Base{, #UImm6At16*2}]",   LoadDup2SIZ,  (U32), 0x84c0c000, FAST,  sve_ld1rh_s_zpri, Zt, PgZ, Base, UImm6At16)
ROW("LD1RH {Zt.D}, Pg/Z, [Base{, #UImm6At16*2}]",   LoadDup2SIZ,  (U64), 0x84c0e000, FAST,  sve_ld1rh_d_zpri, Zt, PgZ, Base, UImm6At16)
ROW("LD1RSH {Zt.D}, Pg/Z, [Base{, #UImm6At16*2}]",  LoadDup2SIZ,  (S64), 0x85408000, FAST,  sve_ld1rsh_d_zpri, Zt, PgZ, Base, UImm6At16)
ROW("LD1RSH {Zt.S}, Pg/Z, [Base{, #UImm6At16*2}]",  LoadDup2SIZ,  (S32), 0x8540a000, FAST,  sve_ld1rsh_s_zpri, Zt, PgZ, Base, UImm6At16)
ROW("LD1RW {Zt.S}, Pg/Z, [Base{, #UImm6At16*4}]",   LoadDup4SIZ,  (U32), 0x8540c000, FAST,  sve_ld1rw_zpri, Zt, PgZ, Base, UImm6At16)
ROW("LD1RW {Zt.D}, Pg/Z, [Base{, #UImm6At16*4}]",   LoadDup4SIZ,  (U64), 0x8540e000, FAST,  sve_ld1rw_d_zpri, Zt, PgZ, Base, UImm6At16)
ROW("LD1RSB {Zt.D}, Pg/Z, [Base{, #UImm6At16}]",    LoadDup1SIZ,  (S64), 0x85c08000, FAST,  sve_ld1rsb_d_zpri, Zt, PgZ, Base, UImm6At16)
ROW("LD1RSB {Zt.S}, Pg/Z, [Base{, #UImm6At16}]",    LoadDup1SIZ,  (S32), 0x85c0a000, FAST,  sve_ld1rsb_s_zpri, Zt, PgZ, Base, UImm6At16)
ROW("LD1RSB {Zt.H}, Pg/Z, [Base{, #UImm6At16}]",    LoadDup1SIZ,  (S16), 0x85c0c000, FAST,  sve_ld1rsb_h_zpri, Zt, PgZ, Base, UImm6At16)
ROW("LD1RD {Zt.D}, Pg/Z, [Base{, #UImm6At16*8}]",   LoadDup8SIZ,  (U64), 0x85c0e000, FAST,  sve_ld1rd_zpri, Zt, PgZ, Base, UImm6At16)
ROW("LD1RQB {Zt.B}, Pg/Z, [Base, Xm]",              LoadDup1QSSZ, (U8),  0xa4000000, MODEL, Zt, PgZ, Base, Xm)
ROW("LD1RQB {Zt.B}, Pg/Z, [Base{, #SImm4At16*16}]", LoadDup1QSIZ, (U8),  0xa4002000, MODEL, Zt, PgZ, Base, SImm4At16)
ROW("LD1RQH {Zt.H}, Pg/Z, [Base, Xm, LSL #1]",      LoadDup2QSSZ, (U16), 0xa4800000, MODEL, Zt, PgZ, Base, Xm)
ROW("LD1RQH {Zt.H}, Pg/Z, [Base{, #SImm4At16*16}]", LoadDup2QSIZ, (U16), 0xa4802000, MODEL, Zt, PgZ, Base, SImm4At16)
ROW("LD1RQW {Zt.S}, Pg/Z, [Base, Xm, LSL #2]",      LoadDup4QSSZ, (U32), 0xa5000000, MODEL, Zt, PgZ, Base, Xm)
ROW("LD1RQW {Zt.S}, Pg/Z, [Base{, #SImm4At16*16}]", LoadDup4QSIZ, (U32), 0xa5002000, MODEL, Zt, PgZ, Base, SImm4At16)
ROW("LD1RQD {Zt.D}, Pg/Z, [Base, Xm, LSL #3]",      LoadDup8QSSZ, (U64), 0xa5800000, MODEL, Zt, PgZ, Base, Xm)
ROW("LD1RQD {Zt.D}, Pg/Z, [Base{, #SImm4At16*16}]", LoadDup8QSIZ, (U64), 0xa5802000, MODEL, Zt, PgZ, Base, SImm4At16)
// clang-format on
