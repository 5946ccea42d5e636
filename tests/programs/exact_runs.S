// Runs of SVE instructions, the same in each function but for the place of a load that may fault:
// run_0 has it in front of all others, run_10 behind them. Each loads all registers from `before`,
// runs, and stores them to `after`.
        .arch   armv8-a+sve
        .text

        // Offsets in an image.
        .equ    image_sp, 248
        .equ    image_nzcv, 256
        .equ    image_fpsr, 264
        .equ    image_q, 272

        .altmacro
        .macro  for_pairs operation, last
        .set    n, 0
        .rept   (\last + 1) / 2
        \operation %n, %(n + 1)
        .set    n, n + 2
        .endr
        .endm
        .macro  load_q a, b
        ldp     q\a, q\b, [x0, #image_q - 256 + 16 * \a]
        .endm
        .macro  store_q a, b
        stp     q\a, q\b, [x0, #image_q - 256 + 16 * \a]
        .endm
        .macro  load_x a, b
        .if     \a > 0
        ldp     x\a, x\b, [x0, #8 * \a]
        .endif
        .endm
        .macro  store_x a, b
        .if     \a > 0
        stp     x\a, x\b, [x0, #8 * \a]
        .endif
        .endm

        .macro  may_fault here, place
        .if     \here == \place
        ld1d    {z30.d}, p0/z, [x20]
        .endif
        .endm

        .macro  run place
        .global run_\place
        .type   run_\place, %function
        .p2align 2
run_\place:
        stp     x29, x30, [sp, #-16]!
        .irp    n, 19, 21, 23, 25, 27
        stp     x\n, x30, [sp, #-16]!
        .endr
        .irp    n, 20, 22, 24, 26, 28
        stp     x\n, x30, [sp, #-16]!
        .endr
        .irp    n, 8, 10, 12, 14
        str     q\n, [sp, #-16]!
        .endr
        .irp    n, 9, 11, 13, 15
        str     q\n, [sp, #-16]!
        .endr
        adrp    x0, caller_sp
        mov     x1, sp
        str     x1, [x0, #:lo12:caller_sp]
        adrp    x0, before
        add     x0, x0, #:lo12:before
        str     x1, [x0, #image_sp]
        ldr     x1, [x0, #image_nzcv]
        msr     nzcv, x1
        ldr     x1, [x0, #image_fpsr]
        msr     fpsr, x1
        add     x0, x0, #256
        for_pairs load_q, 31
        sub     x0, x0, #256
        for_pairs load_x, 29
        ldr     x30, [x0, #240]
        ldp     x0, x1, [x0]
        // From here on one block, up to the branch.
        ptrue   p0.d
        may_fault 0, \place
        add     z0.d, z1.d, z2.d
        may_fault 1, \place
        rdvl    x26, #1
        may_fault 2, \place
        rdvl    x27, #2
        may_fault 3, \place
        rdvl    x28, #3
        may_fault 4, \place
        addvl   sp, sp, #-1
        may_fault 5, \place
        ptest   p0, p0.b
        may_fault 6, \place
        fdiv    z3.d, p0/m, z3.d, z31.d
        may_fault 7, \place
        add     x9, x10, #1
        may_fault 8, \place
        mov     z4.d, x9
        add     x27, x28, x26, lsl #2
        may_fault 9, \place
        addvl   x28, x27, #1
        may_fault 10, \place
        b       store_and_return
        .endm

        .irp    place, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10
        run     \place
        .endr

store_and_return:
        stp     x0, x1, [sp, #-16]!
        adrp    x0, after
        add     x0, x0, #:lo12:after
        for_pairs store_x, 29
        str     x30, [x0, #240]
        ldp     x2, x3, [sp], #16
        stp     x2, x3, [x0]
        mov     x1, sp
        str     x1, [x0, #image_sp]
        mrs     x1, nzcv
        str     x1, [x0, #image_nzcv]
        mrs     x1, fpsr
        str     x1, [x0, #image_fpsr]
        add     x0, x0, #256
        for_pairs store_q, 31
        adrp    x0, caller_sp
        ldr     x0, [x0, #:lo12:caller_sp]
        mov     sp, x0
        .irp    n, 15, 13, 11, 9
        ldr     q\n, [sp], #16
        .endr
        .irp    n, 14, 12, 10, 8
        ldr     q\n, [sp], #16
        .endr
        .irp    n, 28, 26, 24, 22, 20
        ldp     x\n, x30, [sp], #16
        .endr
        .irp    n, 27, 25, 23, 21, 19
        ldp     x\n, x30, [sp], #16
        .endr
        ldp     x29, x30, [sp], #16
        ret

        .bss
        .p2align 4
caller_sp:
        .skip   8

        .section .note.GNU-stack, "", %progbits
