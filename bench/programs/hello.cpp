// What a program costs before it does anything.
#include <cstdio>

int main() { puts("hello"); }
