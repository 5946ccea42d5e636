// Floating-point instructions by intrinsics, beside scalar forms of the base architecture.
// Families: FMULX, FRECPE, FRECPS, FRSQRTE, FRSQRTS, FRECPX, FSCALE, FCMLA, FCADD, FADDV, FMAXV,
// FMINV, FMAXNMV, FADDA, FMAX, FMIN, FACGT, FMLA by an element, FDUP, FTSSEL.
#include <arm_neon.h>

#include <cmath>

#include "lanes.h"

using kernels::Numbers;
using namespace lanes;

namespace {

enum Step { Mulx, Recps, Rsqrts, Max, Min };
enum Estimate { Recpe, Rsqrte, Recpx };
enum Fold { Add, Largest, Smallest, LargestNumber, Ordered };

template <class T> T any_number(Numbers& some) {
  static const T special[] = {T(0),        -T(0),        T(1),     T(-2),
                              T(INFINITY), -T(INFINITY), T(1e-40), T(0.1)};
  const uint64_t bits = some.next();
  if (bits % 4 == 0)
    return special[bits / 4 % 8];
  return std::ldexp(T(static_cast<int32_t>(bits >> 9)) / T(1 << 20), int(bits >> 50 & 31) - 16);
}

template <class T> Vector<T> any_numbers(Numbers& some) {
  Vector<T> v;
  for (T& element : v.at)
    element = any_number<T>(some);
  return v;
}

// Which of two not-a-numbers a sum carries is not what is compared here.
template <class T> Vector<T> plain_nans(Vector<T> v) {
  for (T& element : v.at)
    element = element != element ? T(NAN) : element;
  return v;
}

#ifdef __ARM_FEATURE_SVE

template <class T>
Vector<T> step(Step how, const Predicate& g, const Vector<T>& a, const Vector<T>& b) {
  const auto za = load(a), zb = load(b);
  switch (how) {
  case Mulx:
    return store<T>(svmulx_m(load(g), za, zb));
  case Recps:
    return store<T>(svsel(load(g), svrecps(za, zb), za));
  case Rsqrts:
    return store<T>(svsel(load(g), svrsqrts(za, zb), za));
  case Max:
    return store<T>(svmax_m(load(g), za, zb));
  default:
    return store<T>(svmin_m(load(g), za, zb));
  }
}

template <class T> Vector<T> estimate(Estimate how, const Vector<T>& a) {
  const auto za = load(a);
  switch (how) {
  case Recpe:
    return store<T>(svrecpe(za));
  case Rsqrte:
    return store<T>(svrsqrte(za));
  default:
    return store<T>(svrecpx_x(all<T>(), za));
  }
}

template <class T, class Integer>
Vector<T> scale(const Predicate& g, const Vector<T>& a, const Vector<Integer>& powers) {
  return store<T>(svscale_m(load(g), load(a), load(powers)));
}

template <class T>
Vector<T> complex_product(const Predicate& g, const Vector<T>& sum, const Vector<T>& a,
                          const Vector<T>& b) {
  const auto half = svcmla_m(load(g), load(sum), load(a), load(b), 0);
  return store<T>(svcmla_m(load(g), half, load(a), load(b), 90));
}

template <class T>
Vector<T> rotated_sum(const Predicate& g, const Vector<T>& a, const Vector<T>& b) {
  return store<T>(svcadd_m(load(g), svcadd_m(load(g), load(a), load(b), 90), load(b), 270));
}

template <class T> T fold(Fold how, const Predicate& g, const Vector<T>& a) {
  switch (how) {
  case Add:
    return svaddv(load(g), load(a));
  case Largest:
    return svmaxv(load(g), load(a));
  case Smallest:
    return svminv(load(g), load(a));
  case LargestNumber:
    return svmaxnmv(load(g), load(a));
  default:
    return svadda(load(g), T(1), load(a));
  }
}

template <class T>
Vector<T> by_element(const Vector<T>& sum, const Vector<T>& a, const Vector<T>& b) {
  return store<T>(svmls_lane(svmla_lane(load(sum), load(a), load(b), 1), load(b),
                             svmul_lane(load(a), load(b), 0), 1));
}

template <class T>
Predicate magnitudes(const Predicate& g, const Vector<T>& a, const Vector<T>& b) {
  return store(svacgt(load(g), load(a), load(b)));
}

#else

// The scalar instructions of the base architecture.
float mulx(float a, float b) { return vmulxs_f32(a, b); }
double mulx(double a, double b) { return vmulxd_f64(a, b); }
float recps(float a, float b) { return vrecpss_f32(a, b); }
double recps(double a, double b) { return vrecpsd_f64(a, b); }
float rsqrts(float a, float b) { return vrsqrtss_f32(a, b); }
double rsqrts(double a, double b) { return vrsqrtsd_f64(a, b); }
float recpe(float a) { return vrecpes_f32(a); }
double recpe(double a) { return vrecped_f64(a); }
float rsqrte(float a) { return vrsqrtes_f32(a); }
double rsqrte(double a) { return vrsqrted_f64(a); }
float recpx(float a) { return vrecpxs_f32(a); }
double recpx(double a) { return vrecpxd_f64(a); }
float largest(float a, float b) { return vget_lane_f32(vmax_f32(vdup_n_f32(a), vdup_n_f32(b)), 0); }
double largest(double a, double b) {
  return vget_lane_f64(vmax_f64(vdup_n_f64(a), vdup_n_f64(b)), 0);
}
float smallest(float a, float b) { return -largest(-a, -b); }
double smallest(double a, double b) { return -largest(-a, -b); }

template <class T>
Vector<T> step(Step how, const Predicate& g, const Vector<T>& a, const Vector<T>& b) {
  Vector<T> d = a;
  for (int i = 0; i < count<T>; i++) {
    if (!g.active<T>(i))
      continue;
    const T x = a.at[i], y = b.at[i];
    d.at[i] = how == Mulx     ? mulx(x, y)
              : how == Recps  ? recps(x, y)
              : how == Rsqrts ? rsqrts(x, y)
              : how == Max    ? largest(x, y)
                              : smallest(x, y);
  }
  return d;
}

template <class T> Vector<T> estimate(Estimate how, const Vector<T>& a) {
  Vector<T> d;
  for (int i = 0; i < count<T>; i++)
    d.at[i] = how == Recpe ? recpe(a.at[i]) : how == Rsqrte ? rsqrte(a.at[i]) : recpx(a.at[i]);
  return d;
}

template <class T, class Integer>
Vector<T> scale(const Predicate& g, const Vector<T>& a, const Vector<Integer>& powers) {
  Vector<T> d = a;
  for (int i = 0; i < count<T>; i++)
    if (g.active<T>(i))
      d.at[i] = std::scalbn(a.at[i], static_cast<int>(powers.at[i]));
  return d;
}

template <class T>
Vector<T> complex_product(const Predicate& g, const Vector<T>& sum, const Vector<T>& a,
                          const Vector<T>& b) {
  Vector<T> d = sum;
  for (int i = 0; i < count<T>; i += 2) {
    if (g.active<T>(i))
      d.at[i] = std::fma(-a.at[i + 1], b.at[i + 1], std::fma(a.at[i], b.at[i], sum.at[i]));
    if (g.active<T>(i + 1))
      d.at[i + 1] = std::fma(a.at[i + 1], b.at[i], std::fma(a.at[i], b.at[i + 1], sum.at[i + 1]));
  }
  return d;
}

template <class T>
Vector<T> rotated_sum(const Predicate& g, const Vector<T>& a, const Vector<T>& b) {
  Vector<T> d = a;
  for (int i = 0; i < count<T>; i += 2) {
    if (g.active<T>(i))
      d.at[i] = (a.at[i] - b.at[i + 1]) + b.at[i + 1];
    if (g.active<T>(i + 1))
      d.at[i + 1] = (a.at[i + 1] + b.at[i]) - b.at[i];
  }
  return d;
}

template <class T> T fold(Fold how, const Predicate& g, const Vector<T>& a) {
  if (how == Ordered) {
    T sum = 1;
    for (int i = 0; i < count<T>; i++)
      if (g.active<T>(i))
        sum += a.at[i];
    return sum;
  }
  // Neighbours first, then the sums of neighbours.
  const T none = how == Add        ? T(0)
                 : how == Smallest ? T(INFINITY)
                 : how == Largest  ? -T(INFINITY)
                                   : T(NAN);
  T v[count<T>];
  for (int i = 0; i < count<T>; i++)
    v[i] = g.active<T>(i) ? a.at[i] : none;
  for (int half = count<T> / 2; half >= 1; half /= 2)
    for (int i = 0; i < half; i++) {
      const int pair = 2 * i;
      v[i] = how == Add        ? v[pair] + v[pair + 1]
             : how == Largest  ? largest(v[pair], v[pair + 1])
             : how == Smallest ? smallest(v[pair], v[pair + 1])
                               : std::fmax(v[pair], v[pair + 1]);
    }
  return v[0];
}

template <class T>
Vector<T> by_element(const Vector<T>& sum, const Vector<T>& a, const Vector<T>& b) {
  Vector<T> d;
  for (int i = 0; i < count<T>; i++)
    d.at[i] = std::fma(-b.at[i], a.at[1] * b.at[0], std::fma(a.at[i], b.at[1], sum.at[i]));
  return d;
}

template <class T>
Predicate magnitudes(const Predicate& g, const Vector<T>& a, const Vector<T>& b) {
  Predicate d{};
  for (int i = 0; i < count<T>; i++)
    d.set<T>(i, g.active<T>(i) && std::abs(a.at[i]) > std::abs(b.at[i]));
  return d;
}

#endif

template <class T, class Integer> void of_type() {
  for (const Step how : {Mulx, Recps, Rsqrts, Max, Min})
    check<T>("step", [how](Numbers& some) {
      const Predicate g = any_predicate(some);
      const Vector<T> a = any_numbers<T>(some);
      return plain_nans(step(how, g, a, any_numbers<T>(some)));
    });
  for (const Estimate how : {Recpe, Rsqrte, Recpx})
    check<T>("estimate",
             [how](Numbers& some) { return plain_nans(estimate(how, any_numbers<T>(some))); });
  check<T>("scale", [](Numbers& some) {
    const Predicate g = any_predicate(some);
    const Vector<T> a = any_numbers<T>(some);
    Vector<Integer> powers;
    for (Integer& power : powers.at)
      power = static_cast<int>(some.next() % 400) - 200;
    return scale(g, a, powers);
  });
  check<T>("complex product", [](Numbers& some) {
    const Predicate g = any_predicate(some);
    const Vector<T> sum = any_numbers<T>(some), a = any_numbers<T>(some);
    return plain_nans(complex_product(g, sum, a, any_numbers<T>(some)));
  });
  check<T>("rotated sum", [](Numbers& some) {
    const Predicate g = any_predicate(some);
    const Vector<T> a = any_numbers<T>(some);
    return plain_nans(rotated_sum(g, a, any_numbers<T>(some)));
  });
  for (const Fold how : {Add, Largest, Smallest, LargestNumber, Ordered})
    check<T>("fold", [how](Numbers& some) {
      const Predicate g = any_predicate(some);
      const T result = fold(how, g, any_numbers<T>(some));
      return result != result ? T(NAN) : result;
    });
  check<T>("by an element", [](Numbers& some) {
    const Vector<T> sum = any_numbers<T>(some), a = any_numbers<T>(some);
    return plain_nans(by_element(sum, a, any_numbers<T>(some)));
  });
  check<T>("magnitudes", [](Numbers& some) {
    const Predicate g = any_predicate(some);
    const Vector<T> a = any_numbers<T>(some);
    return magnitudes(g, a, any_numbers<T>(some));
  });
}

}  // namespace

int main() {
  of_type<float, int32_t>();
  of_type<double, int64_t>();
}
