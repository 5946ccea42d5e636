// Loops that the compiler in OpenJDK turns into SVE where it is told that there is SVE: it has no
// other instruction for most of them.
public class Loops {
  static final int COUNT = 500;
  static int[] a = new int[COUNT], b = new int[COUNT];
  static long[] l = new long[COUNT], m = new long[COUNT], n = new long[COUNT];
  static float[] f = new float[COUNT];
  static double[] d = new double[COUNT];

  static void product() {
    for (int i = 0; i < COUNT; i++) n[i] = l[i] * m[i] + n[i];
  }
  static void bits() {
    for (int i = 0; i < COUNT; i++) n[i] ^= Long.bitCount(l[i]);
  }
  static void zeros() {
    for (int i = 0; i < COUNT; i++) n[i] += Long.numberOfLeadingZeros(m[i]);
  }
  static void convert() {
    for (int i = 0; i < COUNT; i++) d[i] = (double) n[i] * 0x1p-60;
  }
  static void back() {
    for (int i = 0; i < COUNT; i++) m[i] ^= (long) (d[i] * 1e6);
  }
  static float floats() {
    float s = 0;
    for (int i = 0; i < COUNT; i++) s += f[i] * f[i];
    return s;
  }
  static double doubles() {
    double s = 1;
    for (int i = 0; i < COUNT; i++) s += d[i] * d[i];
    return s;
  }
  static int dot() {
    int s = 0;
    for (int i = 0; i < COUNT; i++) s += a[i] * b[i];
    return s;
  }
  static int most() {
    int s = Integer.MIN_VALUE;
    for (int i = 0; i < COUNT; i++) s = Math.max(s, a[i] ^ b[i]);
    return s;
  }
  static long sum() {
    long s = 0;
    for (int i = 0; i < COUNT; i++) s += n[i] & m[i];
    return s;
  }
  static void choose() {
    for (int i = 0; i < COUNT; i++) d[i] = d[i] > 0.25 ? d[i] - 1 : d[i];
  }

  public static void main(String[] arguments) {
    for (int i = 0; i < COUNT; i++) {
      a[i] = i * 77773 ^ i << 7;
      b[i] = i * i - 5000;
      l[i] = a[i] * 1234567891011L;
      m[i] = b[i] * 987654321L;
      f[i] = a[i] * 1e-3f;
    }
    long hash = 0;
    for (int round = 0; round < Integer.parseInt(arguments[0]); round++) {
      a[round % COUNT] += round;
      product();
      bits();
      zeros();
      convert();
      back();
      choose();
      hash = hash * 31 + dot() + most() + sum();
      hash = hash * 31 + Float.floatToIntBits(floats());
      hash = hash * 31 + Double.doubleToLongBits(doubles());
    }
    System.out.println(hash);
  }
}
