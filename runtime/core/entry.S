// Into the code cache and out of it again.
//
//   core_enter(context, code)             cache                         back in core_enter's caller
//   -------------------------             ----------------------        ---------------------------
//   save callee-saved registers
//   context->runtime_sp = SP
//   pending? ----------------------------------------------------------> return EXIT_NONE
//   load Q, NZCV, FPCR, FPSR, SP, X   ->  fragment's head: load X0, X1
//                                         fragment, fragment, ...
//                                         exit stub: save X0, X1
//                                         X0 = number of the exit
//                      core_leave     <-  branch
//   store X, SP, NZCV, FPSR, FPCR, Q
//   SP = context->runtime_sp
//   restore callee-saved registers ------------------------------------> return the number
//
// A signal between core_enter_check and core_enter_end is sent to core_enter_bail by the handler:
// nothing in that range changes the context but in_cache, so leaving from anywhere in it is exact.
// The handler of a synchronous fault in the cache stores the application's registers in the context
// and sends the thread to core_enter_bail as well.

#include "runtime/core/context_offsets.h"

#define FRAME_SIZE 160

        .text
        .macro function name
        .global \name
        .hidden \name
        .type \name, %function
        .balign 16
\name:
        .endm

        .altmacro
        .macro load_q_pair n
        load_q \n, %(\n + 1)
        .endm
        .macro load_q first, second
        ldp q\first, q\second, [x9, #16 * \first]
        .endm
        .macro load_x_pair n
        load_x \n, %(\n + 1)
        .endm
        .macro load_x first, second
        ldp x\first, x\second, [x28, #CTX_X + 8 * \first]
        .endm
        .macro store_q_pair n
        store_q \n, %(\n + 1)
        .endm
        .macro store_q first, second
        stp q\first, q\second, [x9, #16 * \first]
        .endm

// uint64_t core_enter(core::Context* context, uint64_t code)
        function core_enter
        stp x29, x30, [sp, #-FRAME_SIZE]!
        mov x29, sp
        stp x19, x20, [sp, #16]
        stp x21, x22, [sp, #32]
        stp x23, x24, [sp, #48]
        stp x25, x26, [sp, #64]
        stp x27, x28, [sp, #80]
        stp d8, d9, [sp, #96]
        stp d10, d11, [sp, #112]
        stp d12, d13, [sp, #128]
        stp d14, d15, [sp, #144]
        mov x28, x0
        mov x9, sp
        str x9, [x28, #CTX_RUNTIME_SP]
        // The fragment's head takes X0 and X1 from their slots, since X1 carries the target.
        ldp x9, x10, [x28, #CTX_X]
        stp x9, x10, [x28, #CTX_EXIT_X0]

        .global core_enter_check
        .hidden core_enter_check
core_enter_check:
        // In this order: whoever adds to PENDING then looks whether the thread is in the cache.
        mov x9, #1
        str x9, [x28, #CTX_IN_CACHE]
        dmb ish
        ldr x9, [x28, #CTX_PENDING]
        cbnz x9, core_enter_bail
        ldr x9, [x28, #CTX_NZCV]
        msr nzcv, x9
        ldr x9, [x28, #CTX_FPSR]
        msr fpsr, x9
        // Writing FPCR is slow on many processors, and it rarely differs.
        ldr x9, [x28, #CTX_FPCR]
        mrs x10, fpcr
        sub x10, x10, x9
        cbz x10, 1f
        msr fpcr, x9
1:      add x9, x28, #CTX_Q
        .irp n, 0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30
        load_q_pair \n
        .endr
        ldr x9, [x28, #CTX_SP]
        mov sp, x9
        .irp n, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26
        load_x_pair \n
        .endr
        ldp x29, x30, [x28, #CTX_X + 232]
        br x1
        .global core_enter_end
        .hidden core_enter_end
core_enter_end:

        .global core_enter_bail
        .hidden core_enter_bail
core_enter_bail:
        mov x0, #EXIT_NONE & 0xffff
        movk x0, #EXIT_NONE >> 16, lsl #16
        b leave_to_caller

// From a missed look-up: X0 is the target, X0 and X1 of the application are in their slots.
        function core_leave_indirect
        str x0, [x28, #CTX_PC]
        mov x0, #EXIT_INDIRECT & 0xffff
        movk x0, #EXIT_INDIRECT >> 16, lsl #16
        // falls through

// From an exit stub: X0 is the exit's number, X0 and X1 of the application are in their slots.
        function core_leave
        stp x2, x3, [x28, #CTX_X + 16]
        stp x4, x5, [x28, #CTX_X + 32]
        stp x6, x7, [x28, #CTX_X + 48]
        stp x8, x9, [x28, #CTX_X + 64]
        stp x10, x11, [x28, #CTX_X + 80]
        stp x12, x13, [x28, #CTX_X + 96]
        stp x14, x15, [x28, #CTX_X + 112]
        stp x16, x17, [x28, #CTX_X + 128]
        stp x18, x19, [x28, #CTX_X + 144]
        stp x20, x21, [x28, #CTX_X + 160]
        stp x22, x23, [x28, #CTX_X + 176]
        stp x24, x25, [x28, #CTX_X + 192]
        stp x26, x27, [x28, #CTX_X + 208]
        stp x29, x30, [x28, #CTX_X + 232]
        ldp x2, x3, [x28, #CTX_EXIT_X0]
        stp x2, x3, [x28, #CTX_X]
        mov x9, sp
        str x9, [x28, #CTX_SP]
        mrs x9, nzcv
        str x9, [x28, #CTX_NZCV]
        mrs x9, fpsr
        str x9, [x28, #CTX_FPSR]
        mrs x9, fpcr
        str x9, [x28, #CTX_FPCR]
        add x9, x28, #CTX_Q
        .irp n, 0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30
        store_q_pair \n
        .endr

leave_to_caller:
        str xzr, [x28, #CTX_IN_CACHE]
        ldr x9, [x28, #CTX_RUNTIME_SP]
        mov sp, x9
        ldp x19, x20, [sp, #16]
        ldp x21, x22, [sp, #32]
        ldp x23, x24, [sp, #48]
        ldp x25, x26, [sp, #64]
        ldp x27, x28, [sp, #80]
        ldp d8, d9, [sp, #96]
        ldp d10, d11, [sp, #112]
        ldp d12, d13, [sp, #128]
        ldp d14, d15, [sp, #144]
        ldp x29, x30, [sp], #FRAME_SIZE
        ret

        .section .note.GNU-stack, "", %progbits
