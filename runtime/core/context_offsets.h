// Where emitted code and assembly find the fields of core::Context, in bytes. Checked against the
// structure in context.cpp. Plain macros, since assembly reads them too.
#pragma once

#define CTX_EXIT_X0 0
#define CTX_EXIT_X1 8
#define CTX_EXIT_X2 16
#define CTX_MANGLE_SAVE 24
#define CTX_LOOKUP_TABLE 32
#define CTX_RUNTIME_SP 40
#define CTX_CALL 48
#define CTX_MANGLE_SAVE2 56
#define CTX_X 64
#define CTX_SP 312
#define CTX_PC 320
#define CTX_NZCV 328
#define CTX_FPSR 336
#define CTX_FPCR 344
#define CTX_TPIDR 352
#define CTX_PENDING 360
#define CTX_IN_CACHE 368
#define CTX_CALL_SP 376
#define CTX_SPILL 384
#define CTX_Q 416

// What core_enter returns besides the number of an exit.
#define EXIT_NONE 0xfffffffe
#define EXIT_INDIRECT 0xffffffff
