define(`move', `ifelse($1, 0, , `move(decr($1), $2, $4, $3)$2$3 move(decr($1), $4, $3, $2)')')dnl
move(8, a, b, c)
eval(2 ** 20 - 7 % 4) patsubst(`Test of m4', `[A-Z]\(\w+\)', `<\1>') format(`%08.3f', 3.14159)
m4exit(3)
