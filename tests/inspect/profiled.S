// A program for the profile's reader, with known words at known labels. It never runs.
        .arch   armv8-a+sve
        .text
        .globl  _start
        .type   _start, %function
_start:
        ptrue   p0.s                    // at predicate
        add     z0.s, z1.s, z2.s        // at sum
        prfb    0, p0, [x0]             // at prefetch
        ret
        .size   _start, . - _start

        .type   estimate, %function
estimate:
        fadd    z3.d, z4.d, z5.d        // at float
        nop
        .size   estimate, . - estimate

        .section .note.GNU-stack, "", %progbits
