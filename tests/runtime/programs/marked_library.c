// A library with the marker in it.
long library_marker(long value) {
  register long x0 __asm__("x0") = value;
  __asm__ volatile("hint #100\n" : "+r"(x0));
  return x0;
}
