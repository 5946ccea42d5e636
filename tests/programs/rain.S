// uint64_t rain_kernel(uint64_t seed): a chain through vectors, predicates, the first-fault register,
// X26, X27, X28 and SP, of which any lost bit changes the result.
// void rain_clobber(void): what a handler leaves in them.
        .arch   armv8-a+sve
        .text

        .macro  function name
        .global \name
        .type   \name, %function
        .p2align 2
\name:
        .endm

        .macro  save
        stp     x29, x30, [sp, #-160]!
        stp     x19, x20, [sp, #16]
        stp     x21, x22, [sp, #32]
        stp     x23, x24, [sp, #48]
        stp     x25, x26, [sp, #64]
        stp     x27, x28, [sp, #80]
        stp     d8, d9, [sp, #96]
        stp     d10, d11, [sp, #112]
        stp     d12, d13, [sp, #128]
        stp     d14, d15, [sp, #144]
        .endm
        .macro  restore_and_return
        ldp     x19, x20, [sp, #16]
        ldp     x21, x22, [sp, #32]
        ldp     x23, x24, [sp, #48]
        ldp     x25, x26, [sp, #64]
        ldp     x27, x28, [sp, #80]
        ldp     d8, d9, [sp, #96]
        ldp     d10, d11, [sp, #112]
        ldp     d12, d13, [sp, #128]
        ldp     d14, d15, [sp, #144]
        ldp     x29, x30, [sp], #160
        ret
        .endm

        function rain_kernel
        save
        mrs     x23, fpcr
        mov     x1, #1 << 19            // half precision without denormals
        msr     fpcr, x1
        mov     x28, x0
        mov     x26, #0
        mov     x27, #7
        .irp    n, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15
        add     x1, x28, #\n
        and     x1, x1, #15
        whilels p\n\().b, xzr, x1
        .endr
        ptrue   p15.b
        wrffr   p7.b
        .irp    n, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15
        index   z\n\().s, w28, #\n - 8
        .endr
        .irp    n, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31
        index   z\n\().s, #\n - 24, w28
        .endr
        mov     x20, #3
1:      add     x28, x28, x27, lsl #3
        .irp    n, 0, 1, 2, 3, 4, 5, 6, 7
        add     z\n\().s, p\n\()/m, z\n\().s, z31.s
        .endr
        eor     x27, x28, x26
        incp    x26, p3.b
        addvl   sp, sp, #-1
        addvl   x27, x27, #5
        cntp    x28, p7, p5.b
        madd    x28, x28, x27, x26
        not     p9.b, p7/z, p4.b
        brka    p10.b, p7/z, p9.b
        sel     p11.b, p10, p8.b, p1.b
        rdffrs  p12.b, p7/z
        cinc    x28, x28, mi
        eor     p13.b, p7/z, p12.b, p11.b
        wrffr   p12.b
        sel     z30.b, p13, z0.b, z28.b
        addvl   sp, sp, #1
        uaddv   d31, p7, z30.s
        mov     z31.s, p5/m, w28
        subs    x20, x20, #1
        b.ne    1b
        // Everything into one number.
        mov     x0, x28
        rdffr   p14.b
        .irp    n, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14
        cntp    x1, p15, p\n\().b
        eor     x0, x1, x0, ror #59
        .endr
        // Half precision: a denormal that is flushed to zero.
        ptrue   p0.b
        mov     z29.h, #1
        fadd    z29.h, p0/m, z29.h, z29.h
        umaxv   h29, p0, z29.h
        umov    w1, v29.h[0]
        add     x0, x0, x1
        .irp    n, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 30
        uaddv   d29, p0, z\n\().s
        fmov    x1, d29
        eor     x0, x1, x0, ror #57
        .endr
        add     x0, x0, x26
        msr     fpcr, x23
        restore_and_return

        function rain_clobber
        save
        mrs     x23, fpcr
        msr     fpcr, xzr
        ptrue   p0.b
        wrffr   p0.b
        .irp    n, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31
        dup     z\n\().b, #-1
        .endr
        .irp    n, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15
        pfalse  p\n\().b
        .endr
        mov     x26, #1
        mov     x27, #2
        rdvl    x28, #-3
        msr     fpcr, x23
        restore_and_return

        .section .note.GNU-stack, "", %progbits
