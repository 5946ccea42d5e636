// Twins of the fast path's element moves.
#include "sve/model/permute.h"
#include "tests/model/twin_row.h"

// clang-format off
TWIN(CondXBSV, (U8, U16, U32, U64), Rdn, Pg, OldR, Zn)
TWIN(DupI, (F16, F32, D64), Zd, FPImm8)
TWIN(DupI, (S8, S16, S32, S64), Zd, SImm8Shifted)
TWIN(DupIM, (S8, S16, S32, S64), Zd, OldZ, PgAt16M, SImm8Shifted)
TWIN(DupIZ, (S8, S16, S32, S64), Zd, PgAt16Z, SImm8Shifted)
TWIN(DupMaskI, (S64), Zd, BitmaskImm)
TWIN(DupS, (U8, U16, U32, U64), Zd, RnSP)
TWIN(DupSM, (U8, U16, U32, U64), Zd, OldZ, Pg, RnSP)
TWIN(DupSM, (B8, H16, F32, D64), Zd, OldZ, Pg, Vn)
TWIN(ExtDupVI, (U8, U16, U32, U64, U128), Zd, Zn, DupIndex)
TWIN(LastBV, (U8, U16, U32, U64), Rd, Pg, Zn)
TWIN(LastBV, (B8, H16, F32, D64), Vd, Pg, Zn)
TWIN(MovePrefix1VM, (U8, U16, U32, U64), Zd, OldZ, Pg, Zn)
TWIN(MovePrefix1VZ, (U8, U16, U32, U64), Zd, Pg, Zn)
TWIN(ReverseV, (U8, U16, U32, U64), Zd, Zn)
TWIN(SelVV, (U8, U16, U32, U64), Zd, Pg4, Zn, Zm)
TWIN(SlideVI, (U8), Zd, OldZ, Zm5, ExtPosition)
TWIN(SpecialMoveV, (U32), Zd, Zn)
TWIN(TblVV, (U8, U16, U32, U64), Zd, Zn, Zm)
TWIN(Trn1VV, (U8, U16, U32, U64), Zd, Zn, Zm)
TWIN(Trn2VV, (U8, U16, U32, U64), Zd, Zn, Zm)
TWIN(UnpackHiV, (U16, U32, U64, S64), Zd, Zn)
TWIN(UnpackLoV, (U16, U32, U64, S64), Zd, Zn)
TWIN(Uzp1VV, (U8, U16, U32, U64), Zd, Zn, Zm)
TWIN(Uzp2VV, (U8, U16, U32, U64), Zd, Zn, Zm)
TWIN(Zip1VV, (U8, U16, U32, U64), Zd, Zn, Zm)
TWIN(Zip2VV, (U8, U16, U32, U64), Zd, Zn, Zm)
// clang-format on
