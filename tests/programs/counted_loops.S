// Loops of known length: each function says in front of it how many SVE instructions it executes.
        .arch   armv8-a+sve
        .text

        .macro  function name
        .global \name
        .type   \name, %function
        .p2align 2
\name:
        .endm

// x0 = n, at least 1: n times 3, in one block that branches to itself.
        function counted_block
1:      index   z0.s, w0, #3
        add     z1.s, z1.s, z0.s
        cntb    x2
        subs    x0, x0, #1
        b.ne    1b
        ret

// x0 = n, at least 1: branches over SVE instructions. 4 in each odd round, 2 in each even one.
        function counted_branches
1:      ptrue   p0.b
        tbz     x0, #0, 2f
        dup     z2.d, x0
        uaddv   d3, p0, z2.d
        b       3f
        incb    x0
        incb    x0
2:      nop
3:      addvl   x2, x0, #-1
        sub     x0, x0, #1
        cbnz    x0, 1b
        ret

// x0 = n: a WHILELO loop over n bytes, as a compiler writes it. 1, and 4 for each vector.
        function counted_while
        mov     x1, xzr
        whilelo p0.b, x1, x0
        b.none  2f
1:      dup     z0.b, w1
        incb    x1
        whilelo p0.b, x1, x0
        eor     z0.d, z0.d, z0.d
        b.first 1b
2:      ret

// x0 = n, at least 1: calls a function of 2 with 1 of its own around, n times, by BL and BLR.
        function counted_calls
        stp     x29, x30, [sp, #-32]!
        str     x19, [sp, #16]
        mov     x19, x0
        adr     x3, 3f
1:      tbnz    x19, #0, 2f
        bl      3f
        b       4f
2:      blr     x3
4:      rdvl    x0, #1
        subs    x19, x19, #1
        b.gt    1b
        ldr     x19, [sp, #16]
        ldp     x29, x30, [sp], #32
        ret
3:      pfalse  p1.b
        ptest   p1, p1.b
        ret

// x0 = where nothing can be read: 1, and a fault between two emulated instructions.
        function counted_fault
        ptrue   p0.b
        ld1b    {z0.b}, p0/z, [x0]
        add     z0.b, z0.b, z0.b
        ret

// None: what lies behind is jumped over.
        function counted_none
        b       1f
        .rept   10
        add     z0.b, z0.b, z0.b
        .endr
1:      ret

        .section .note.GNU-stack, "", %progbits
