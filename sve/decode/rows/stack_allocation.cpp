// Stack allocation: multiples of the vector and predicate length.
#include "sve/decode/row.h"
#include "sve/fast/count.h"

// clang-format off
ROW("ADDVL XdSP, XnSPAt16, #SImm6At5", AddVLX, (S64), 0x04205000, FAST, sve_addvl_rri, XdSP, XnSPAt16, SImm6At5)
ROW("ADDPL XdSP, XnSPAt16, #SImm6At5", AddPLX, (S64), 0x04605000, FAST, sve_addpl_rri, XdSP, XnSPAt16, SImm6At5)
ROW("RDVL Xd, #SImm6At5",              VLX,    (S64), 0x04bf5000, FAST, sve_rdvl_ri, Xd, SImm6At5)
// clang-format on
