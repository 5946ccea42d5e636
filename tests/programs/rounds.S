// Loops of one block, by what decides whether they go round: flags of an SVE instruction, a
// comparison, a register. In front of each round, after k of them:
//
//   X2 = 16 k   X3 = k   X26 = 2 k   X28 = -k   both elements of Z0 = k
//
// They end when X4 is not above X3, or 0. The last one loads from X6, and X6 = start + 16 k.
        .arch   armv8-a+sve
        .text

        .macro  begin name
        .global \name, \name\()_start, \name\()_end, \name\()_behind
        .type   \name, %function
        .p2align 2
\name:
        stp     x26, x28, [sp, #-16]!
        mov     x6, x0
        mov     x2, #0
        mov     x3, #0
        mov     x4, #-1
        mov     x26, #0
        mov     x28, #0
        mov     z0.d, #0
        ptrue   p1.d
        b       \name\()_start
        .endm

        .macro  end name
\name\()_end:
        lsr     x0, x2, #4
        sub     x0, x0, x3
        add     x1, x3, x28
        orr     x0, x0, x1
        sub     x1, x26, x3, lsl #1
        orr     x0, x0, x1
        umov    x1, v0.d[1]
        sub     x1, x1, x3
        orr     x0, x0, x1
        ldp     x26, x28, [sp], #16
        ret
\name\()_behind:
        .endm

        begin   by_element
by_element_start:
        add     z0.d, z0.d, #1
        incb    x2
        add     x26, x26, #2
        sub     x3, x3, #-1
        decd    x28
        incp    x28, p1.d
        incd    x28, vl1, mul #1
        decd    x28, vl2
        whilelo p0.d, x3, x4
        b.mi    by_element_start
        end     by_element

        begin   by_comparison
by_comparison_start:
        add     x3, x3, #1
        incb    x2
        add     z0.d, z0.d, #1
        incd    x26
        decd    x28, vl1
        cmp     x3, x4
        b.lo    by_comparison_start
        end     by_comparison

        begin   by_register
by_register_start:
        incb    x2
        addvl   sp, sp, #-1
        add     x3, x3, #1
        addvl   sp, sp, #1
        add     x26, x26, #2
        decd    x28, vl1
        add     z0.d, z0.d, #1
        csel    x5, x4, xzr, ne
        cbnz    x4, by_register_start
        end     by_register

        .global faulting_load
        begin   with_fault
with_fault_start:
        incb    x2
faulting_load:
        ld1d    {z1.d}, p1/z, [x6]
        add     z0.d, z0.d, #1
        addvl   x6, x6, #1
        incd    x26
        decd    x28, vl1
        add     x3, x3, #1
        whilelo p0.d, x3, x4
        b.mi    with_fault_start
        end     with_fault

        .section .note.GNU-stack, "", %progbits
