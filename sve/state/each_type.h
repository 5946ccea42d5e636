// One macro call for each type of a family.
#pragma once

#define SVE_UNWRAP(...) __VA_ARGS__

// Expands to row(type, operation, ...) for each type of the parenthesised list, up to eight.
#define SVE_EACH(row, operation, types, ...)                                                       \
  SVE_EACH_COUNTED(SVE_COUNT types, row, operation, (__VA_ARGS__), SVE_UNWRAP types)
#define SVE_COUNT(...) SVE_NINTH(__VA_ARGS__, 8, 7, 6, 5, 4, 3, 2, 1)
#define SVE_NINTH(a, b, c, d, e, f, g, h, ninth, ...) ninth
#define SVE_EACH_COUNTED(count, ...) SVE_EACH_PASTED(count, __VA_ARGS__)
#define SVE_EACH_PASTED(count, ...) SVE_EACH_##count(__VA_ARGS__)
#define SVE_CALL(row, ...) row(__VA_ARGS__)
#define SVE_EACH_1(row, operation, rest, a) SVE_CALL(row, a, operation, SVE_UNWRAP rest)
#define SVE_EACH_2(row, operation, rest, a, ...)                                                   \
  SVE_CALL(row, a, operation, SVE_UNWRAP rest) SVE_EACH_1(row, operation, rest, __VA_ARGS__)
#define SVE_EACH_3(row, operation, rest, a, ...)                                                   \
  SVE_CALL(row, a, operation, SVE_UNWRAP rest) SVE_EACH_2(row, operation, rest, __VA_ARGS__)
#define SVE_EACH_4(row, operation, rest, a, ...)                                                   \
  SVE_CALL(row, a, operation, SVE_UNWRAP rest) SVE_EACH_3(row, operation, rest, __VA_ARGS__)
#define SVE_EACH_5(row, operation, rest, a, ...)                                                   \
  SVE_CALL(row, a, operation, SVE_UNWRAP rest) SVE_EACH_4(row, operation, rest, __VA_ARGS__)
#define SVE_EACH_6(row, operation, rest, a, ...)                                                   \
  SVE_CALL(row, a, operation, SVE_UNWRAP rest) SVE_EACH_5(row, operation, rest, __VA_ARGS__)
#define SVE_EACH_7(row, operation, rest, a, ...)                                                   \
  SVE_CALL(row, a, operation, SVE_UNWRAP rest) SVE_EACH_6(row, operation, rest, __VA_ARGS__)
#define SVE_EACH_8(row, operation, rest, a, ...)                                                   \
  SVE_CALL(row, a, operation, SVE_UNWRAP rest) SVE_EACH_7(row, operation, rest, __VA_ARGS__)
