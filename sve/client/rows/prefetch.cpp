// Prefetches, which do nothing: they are hints, and read no memory.
#include "sve/client/stub.h"

// clang-format off
NOP(Prefetch1SI,  (U8),  0x85c00000, Prfop, Pg, Base, UImm6At16)
NOP(Prefetch2SI,  (U16), 0x85c02000, Prfop, Pg, Base, UImm6At16)
NOP(Prefetch4SI,  (U32), 0x85c04000, Prfop, Pg, Base, UImm6At16)
NOP(Prefetch8SI,  (U64), 0x85c06000, Prfop, Pg, Base, UImm6At16)

NOP(Prefetch1LSS, (U8),  0x8400c000, Prfop, Pg, Base, Xm)
NOP(Prefetch2LSS, (U16), 0x8480c000, Prfop, Pg, Base, Xm)
NOP(Prefetch4LSS, (U32), 0x8500c000, Prfop, Pg, Base, Xm)
NOP(Prefetch8LSS, (U64), 0x8580c000, Prfop, Pg, Base, Xm)

NOP(Prefetch1VI,  (U32), 0x8400e000, Prfop, Pg, Zn, UImm5At16)
NOP(Prefetch2VI,  (U32), 0x8480e000, Prfop, Pg, Zn, UImm5At16)
NOP(Prefetch4VI,  (U32), 0x8500e000, Prfop, Pg, Zn, UImm5At16)
NOP(Prefetch8VI,  (U32), 0x8580e000, Prfop, Pg, Zn, UImm5At16)
NOP(Prefetch1VI,  (U64), 0xc400e000, Prfop, Pg, Zn, UImm5At16)
NOP(Prefetch2VI,  (U64), 0xc480e000, Prfop, Pg, Zn, UImm5At16)
NOP(Prefetch4VI,  (U64), 0xc500e000, Prfop, Pg, Zn, UImm5At16)
NOP(Prefetch8VI,  (U64), 0xc580e000, Prfop, Pg, Zn, UImm5At16)

NOP(Prefetch1SV,  (U64), 0xc4608000, Prfop, Pg, Base, Zm)
NOP(Prefetch2SV,  (U64), 0xc460a000, Prfop, Pg, Base, Zm)
NOP(Prefetch4SV,  (U64), 0xc460c000, Prfop, Pg, Base, Zm)
NOP(Prefetch8SV,  (U64), 0xc460e000, Prfop, Pg, Base, Zm)

NOP(Prefetch1XSV, (U32), 0x84600000, Prfop, Pg, Base, Zm)
NOP(Prefetch2XSV, (U32), 0x84602000, Prfop, Pg, Base, Zm)
NOP(Prefetch4XSV, (U32), 0x84604000, Prfop, Pg, Base, Zm)
NOP(Prefetch8XSV, (U32), 0x84606000, Prfop, Pg, Base, Zm)
NOP(Prefetch1XSV, (U64), 0xc4600000, Prfop, Pg, Base, Zm)
NOP(Prefetch2XSV, (U64), 0xc4602000, Prfop, Pg, Base, Zm)
NOP(Prefetch4XSV, (U64), 0xc4604000, Prfop, Pg, Base, Zm)
NOP(Prefetch8XSV, (U64), 0xc4606000, Prfop, Pg, Base, Zm)

NOP(Prefetch1YSV, (U32), 0x84200000, Prfop, Pg, Base, Zm)
NOP(Prefetch2YSV, (U32), 0x84202000, Prfop, Pg, Base, Zm)
NOP(Prefetch4YSV, (U32), 0x84204000, Prfop, Pg, Base, Zm)
NOP(Prefetch8YSV, (U32), 0x84206000, Prfop, Pg, Base, Zm)
NOP(Prefetch1YSV, (U64), 0xc4200000, Prfop, Pg, Base, Zm)
NOP(Prefetch2YSV, (U64), 0xc4202000, Prfop, Pg, Base, Zm)
NOP(Prefetch4YSV, (U64), 0xc4204000, Prfop, Pg, Base, Zm)
NOP(Prefetch8YSV, (U64), 0xc4206000, Prfop, Pg, Base, Zm)
// clang-format on
