// One loop for each family of SVE instructions: x0 rounds of 8 instructions, all alike. The caller
// sets P0 to all true, P1 and P2 to mixed patterns, X1 to a buffer, Z2 and Z3 to small numbers.
        .arch   armv8-a+sve+fp16
        .equ    copies, 8

        // family_count entries: the name, the loop.
        .macro  family name, instruction:vararg
        .section .rodata.names, "aMS", %progbits, 1
8:      .asciz  "\name"
        .section .data.rel.ro.family_loops, "aw"
        .xword  8b, 9f
        .text
        .p2align 4
9:      .rept   copies
        \instruction
        .endr
        subs    x0, x0, #1
        b.ne    9b
        ret
        .endm

        .section .data.rel.ro.family_loops, "aw"
        .global family_loops
        .p2align 3
family_loops:

        family  "add, unpredicated",        add z0.s, z2.s, z3.s
        family  "add, predicated",          add z0.s, p1/m, z0.s, z3.s
        family  "multiply and add",         mla z0.s, p1/m, z2.s, z3.s
        family  "divide",                   sdiv z0.s, p1/m, z0.s, z3.s
        family  "shift by a vector",        lsl z0.b, p1/m, z0.b, z3.b
        family  "logic with an immediate",  and z0.d, z0.d, #0xff
        family  "sum across",               uaddv d0, p1, z2.b
        family  "dot product",              sdot z0.s, z2.b, z3.b
        family  "saturating add",           sqadd z0.h, z2.h, z3.h
        family  "predicate and",            and p3.b, p0/z, p1.b, p2.b
        family  "break after",              brka p3.b, p0/z, p1.b
        family  "compare",                  cmpgt p3.s, p0/z, z2.s, z3.s
        family  "while",                    whilelo p3.b, x9, x10
        family  "count of a predicate",     cntp x11, p0, p1.b
        family  "increment by a vector",    incb x11
        family  "index",                    index z0.s, #1, #2
        family  "load",                     ld1w {z0.s}, p0/z, [x1]
        family  "load, extending",          ld1b {z0.d}, p1/z, [x1]
        family  "store",                    st1b {z0.b}, p1, [x1]
        family  "load of 3 members",        ld3h {z4.h - z6.h}, p0/z, [x1]
        family  "load, first-fault",        ldff1b {z0.b}, p0/z, [x1, xzr]
        family  "load, non-fault",          ldnf1w {z0.s}, p0/z, [x1]
        family  "gather",                   ld1d {z0.d}, p0/z, [x1, z2.d]
        family  "scatter",                  st1w {z0.s}, p0, [x1, z2.s, uxtw]
        family  "fill a vector",            ldr z0, [x1]
        family  "prefetch",                 prfb pldl1keep, p0, [x1]
        family  "zip",                      zip1 z0.h, z2.h, z3.h
        family  "table look-up",            tbl z0.b, z2.b, z3.b
        family  "compact",                  compact z0.s, p1, z2.s
        family  "reverse bits",             rbit z0.b, p0/m, z2.b
        family  "add, single",              fadd z0.s, z2.s, z3.s
        family  "fused, double",            fmla z0.d, p0/m, z2.d, z3.d
        family  "divide, single",           fdiv z0.s, p0/m, z0.s, z3.s
        family  "compare, single",          fcmgt p3.s, p0/z, z2.s, z3.s
        family  "convert to integer",       fcvtzs z0.s, p0/m, z2.s
        family  "ordered sum, double",      fadda d0, p0, d0, z2.d
        family  "complex, single",          fcmla z0.s, p0/m, z2.s, z3.s, #90
        family  "add, half",                fadd z0.h, z2.h, z3.h
        family  "fused, half",              fmla z0.h, p0/m, z2.h, z3.h

        // Alone between native instructions, as in code that mixes both.
        .section .rodata.names, "aMS", %progbits, 1
8:      .asciz  "add, between native instructions"
        .section .data.rel.ro.family_loops, "aw"
        .xword  8b, 9f
        .text
9:      .rept   copies
        add     z0.s, z2.s, z3.s
        eor     x9, x9, x10
        .endr
        subs    x0, x0, #1
        b.ne    9b
        ret

        .section .data.rel.ro.family_loops, "aw"
        .global family_loops_end
family_loops_end:

        // What the loops find in the registers.
        .text
        .global set_up_families
        .type   set_up_families, %function
set_up_families:
        ptrue   p0.b
        ptrue   p1.b, vl7
        ptrue   p2.s, vl3
        index   z2.d, #0, #4
        dup     z3.s, #3
        dup     z0.s, #1
        mov     x9, #3
        mov     x10, #14
        ret

        .section .note.GNU-stack, "", %progbits
