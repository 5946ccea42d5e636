// Moves of elements by intrinsics, each beside its definition in plain loops. Families: REV, ZIP,
// UZP, TRN, EXT, SPLICE, TBL, DUP of an element, INSR, LASTA, LASTB, CLASTA, CLASTB to vectors and
// general registers, COMPACT, SEL, SUNPK, UUNPK, REVB, REVH, REVW, RBIT, CLZ, CLS, CNT, CNOT,
// INDEX, merging and zeroing copies.
#include "lanes.h"

using kernels::Numbers;
using namespace lanes;

namespace {

enum Order { Reverse, Zip1, Zip2, Uzp1, Uzp2, Trn1, Trn2 };
enum Last { A, B };
enum Bits { Rbit, Clz, Cls, Cnt, Cnot };

template <class T> using Unsigned = std::make_unsigned_t<T>;

#ifdef __ARM_FEATURE_SVE

template <class T> Vector<T> order(Order how, const Vector<T>& a, const Vector<T>& b) {
  const auto za = load(a), zb = load(b);
  switch (how) {
  case Reverse:
    return store<T>(svrev(za));
  case Zip1:
    return store<T>(svzip1(za, zb));
  case Zip2:
    return store<T>(svzip2(za, zb));
  case Uzp1:
    return store<T>(svuzp1(za, zb));
  case Uzp2:
    return store<T>(svuzp2(za, zb));
  case Trn1:
    return store<T>(svtrn1(za, zb));
  default:
    return store<T>(svtrn2(za, zb));
  }
}

template <class T, int Place> Vector<T> extract(const Vector<T>& a, const Vector<T>& b) {
  return store<T>(svext(load(a), load(b), Place));
}

template <class T> Vector<T> splice(const Predicate& g, const Vector<T>& a, const Vector<T>& b) {
  return store<T>(svsplice(load(g), load(a), load(b)));
}

template <class T> Vector<T> look_up(const Vector<T>& a, const Vector<Unsigned<T>>& places) {
  return store<T>(svtbl(load(a), load(places)));
}

template <class T, int Place> Vector<T> repeat(const Vector<T>& a) {
  return store<T>(svdup_lane(load(a), Place));
}

template <class T> Vector<T> insert(const Vector<T>& a, T x) {
  return store<T>(svinsr(load(a), x));
}

template <class T> T last(Last how, const Predicate& g, const Vector<T>& a) {
  return how == A ? svlasta(load(g), load(a)) : svlastb(load(g), load(a));
}

template <class T> T conditional_last(Last how, const Predicate& g, T x, const Vector<T>& a) {
  return how == A ? svclasta(load(g), x, load(a)) : svclastb(load(g), x, load(a));
}

template <class T>
Vector<T> conditional_last(Last how, const Predicate& g, const Vector<T>& x, const Vector<T>& a) {
  const auto zx = load(x), za = load(a);
  return store<T>(how == A ? svclasta(load(g), zx, za) : svclastb(load(g), zx, za));
}

template <class T> Vector<T> compact(const Predicate& g, const Vector<T>& a) {
  return store<T>(svcompact(load(g), load(a)));
}

template <class T> Vector<T> select(const Predicate& g, const Vector<T>& a, const Vector<T>& b) {
  return store<T>(svsel(load(g), load(a), load(b)));
}

template <class Wide, class T> Vector<Wide> unpack(bool high, const Vector<T>& a) {
  return store<Wide>(high ? svunpkhi(load(a)) : svunpklo(load(a)));
}

template <class T, class Chunk>
Vector<T> reverse_chunks(const Predicate& g, const Vector<T>& a, const Vector<T>& b) {
  const svbool_t pg = load(g);
  const auto za = load(a), zb = load(b);
  if constexpr (sizeof(Chunk) == 1)
    return store<T>(svrevb_m(zb, pg, za));
  if constexpr (sizeof(Chunk) == 2)
    return store<T>(svrevh_m(zb, pg, za));
  if constexpr (sizeof(Chunk) == 4)
    return store<T>(svrevw_m(zb, pg, za));
}

template <class T>
Vector<T> bits(Bits how, const Predicate& g, const Vector<T>& a, const Vector<T>& b) {
  using U = Unsigned<T>;
  const svbool_t pg = load(g);
  const auto za = load(a), zb = load(b);
  Vector<U> u;
  svst1(all<U>(), u.at, svld1(all<U>(), reinterpret_cast<const U*>(b.at)));
  const auto zu = load(u);
  switch (how) {
  case Rbit:
    return store<T>(svrbit_m(zb, pg, za));
  case Clz:
    svst1(all<U>(), u.at, svclz_m(zu, pg, za));
    break;
  case Cls:
    if constexpr (std::is_signed_v<T>)
      svst1(all<U>(), u.at, svcls_m(zu, pg, za));
    break;
  case Cnt:
    svst1(all<U>(), u.at, svcnt_m(zu, pg, za));
    break;
  case Cnot:
    return store<T>(svcnot_m(zb, pg, za));
  }
  Vector<T> d;
  for (int i = 0; i < count<T>; i++)
    d.at[i] = static_cast<T>(u.at[i]);
  return d;
}

template <class T> Vector<T> series(T base, T step) {
  if constexpr (sizeof(T) == 1)
    return store<T>(svindex_s8(base, step));
  if constexpr (sizeof(T) == 2)
    return store<T>(svindex_s16(base, step));
  if constexpr (sizeof(T) == 4)
    return store<T>(svindex_s32(base, step));
  if constexpr (sizeof(T) == 8)
    return store<T>(svindex_s64(base, step));
}

template <class T> Vector<T> copy_scalar(const Predicate& g, const Vector<T>& a, T x) {
  return store<T>(svsel(load(g), svadd_z(load(g), svsub_z(load(g), load(a), load(a)), x), load(a)));
}

#else

template <class T> Vector<T> order(Order how, const Vector<T>& a, const Vector<T>& b) {
  Vector<T> d;
  const int n = count<T>;
  for (int i = 0; i < n; i++) {
    const Vector<T>& zipped = i & 1 ? b : a;
    const Vector<T>& unzipped = i < n / 2 ? a : b;
    switch (how) {
    case Reverse:
      d.at[i] = a.at[n - 1 - i];
      break;
    case Zip1:
      d.at[i] = zipped.at[i / 2];
      break;
    case Zip2:
      d.at[i] = zipped.at[n / 2 + i / 2];
      break;
    case Uzp1:
      d.at[i] = unzipped.at[2 * i % n];
      break;
    case Uzp2:
      d.at[i] = unzipped.at[2 * i % n + 1];
      break;
    case Trn1:
      d.at[i] = zipped.at[i & ~1];
      break;
    case Trn2:
      d.at[i] = zipped.at[i | 1];
      break;
    }
  }
  return d;
}

template <class T, int Place> Vector<T> extract(const Vector<T>& a, const Vector<T>& b) {
  Vector<T> d;
  for (int i = 0; i < count<T>; i++)
    d.at[i] = i + Place < count<T> ? a.at[i + Place] : b.at[i + Place - count<T>];
  return d;
}

// The elements from the first active one to the last, or none.
template <class T> void span(const Predicate& g, int* first, int* end) {
  *first = *end = 0;
  for (int i = count<T> - 1; i >= 0; i--)
    if (g.active<T>(i))
      *first = i;
  for (int i = 0; i < count<T>; i++)
    if (g.active<T>(i))
      *end = i + 1;
}

template <class T> Vector<T> splice(const Predicate& g, const Vector<T>& a, const Vector<T>& b) {
  int first, end;
  span<T>(g, &first, &end);
  Vector<T> d;
  for (int i = 0; i < count<T>; i++)
    d.at[i] = i < end - first ? a.at[first + i] : b.at[i - (end - first)];
  return d;
}

template <class T> Vector<T> look_up(const Vector<T>& a, const Vector<Unsigned<T>>& places) {
  Vector<T> d;
  for (int i = 0; i < count<T>; i++)
    d.at[i] = places.at[i] < count<T> ? a.at[places.at[i]] : 0;
  return d;
}

template <class T, int Place> Vector<T> repeat(const Vector<T>& a) {
  Vector<T> d;
  for (T& element : d.at)
    element = a.at[Place];
  return d;
}

template <class T> Vector<T> insert(const Vector<T>& a, T x) {
  Vector<T> d{{x}};
  for (int i = 1; i < count<T>; i++)
    d.at[i] = a.at[i - 1];
  return d;
}

template <class T> T last(Last how, const Predicate& g, const Vector<T>& a) {
  int first, end;
  span<T>(g, &first, &end);
  return how == A ? a.at[end % count<T>] : a.at[(end + count<T> - 1) % count<T>];
}

template <class T> bool any(const Predicate& g) {
  int first, end;
  span<T>(g, &first, &end);
  return end != 0;
}

template <class T> T conditional_last(Last how, const Predicate& g, T x, const Vector<T>& a) {
  return any<T>(g) ? last(how, g, a) : x;
}

template <class T>
Vector<T> conditional_last(Last how, const Predicate& g, const Vector<T>& x, const Vector<T>& a) {
  if (!any<T>(g))
    return x;
  Vector<T> d;
  for (T& element : d.at)
    element = last(how, g, a);
  return d;
}

template <class T> Vector<T> compact(const Predicate& g, const Vector<T>& a) {
  Vector<T> d{};
  int k = 0;
  for (int i = 0; i < count<T>; i++)
    if (g.active<T>(i))
      d.at[k++] = a.at[i];
  return d;
}

template <class T> Vector<T> select(const Predicate& g, const Vector<T>& a, const Vector<T>& b) {
  Vector<T> d;
  for (int i = 0; i < count<T>; i++)
    d.at[i] = g.active<T>(i) ? a.at[i] : b.at[i];
  return d;
}

template <class Wide, class T> Vector<Wide> unpack(bool high, const Vector<T>& a) {
  Vector<Wide> d;
  for (int i = 0; i < count<Wide>; i++)
    d.at[i] = a.at[i + (high ? count<Wide> : 0)];
  return d;
}

template <class T, class Chunk>
Vector<T> reverse_chunks(const Predicate& g, const Vector<T>& a, const Vector<T>& b) {
  Vector<T> d = b;
  for (int i = 0; i < count<T>; i++) {
    if (!g.active<T>(i))
      continue;
    Unsigned<T> rest = a.at[i], value = 0;
    for (unsigned k = 0; k < sizeof(T) / sizeof(Chunk); k++) {
      value = static_cast<Unsigned<T>>(value << (8 * sizeof(Chunk))) | static_cast<Chunk>(rest);
      rest >>= 8 * sizeof(Chunk);
    }
    d.at[i] = value;
  }
  return d;
}

template <class T> T bits_of(Bits how, T x) {
  constexpr int width = 8 * sizeof(T);
  const auto bit = [x](int i) { return static_cast<Unsigned<T>>(x) >> i & 1; };
  T d = 0;
  switch (how) {
  case Rbit:
    for (int i = 0; i < width; i++)
      d |= static_cast<T>(bit(i)) << (width - 1 - i);
    return d;
  case Clz:
    while (d < width && !bit(width - 1 - d))
      d++;
    return d;
  case Cls:
    while (d < width - 1 && bit(width - 2 - d) == bit(width - 1))
      d++;
    return d;
  case Cnt:
    for (int i = 0; i < width; i++)
      d += bit(i);
    return d;
  default:
    return x == 0;
  }
}

template <class T>
Vector<T> bits(Bits how, const Predicate& g, const Vector<T>& a, const Vector<T>& b) {
  Vector<T> d = b;
  if (how == Cls && std::is_unsigned_v<T>)
    return d;
  for (int i = 0; i < count<T>; i++)
    if (g.active<T>(i))
      d.at[i] = bits_of(how, a.at[i]);
  return d;
}

template <class T> Vector<T> series(T base, T step) {
  Vector<T> d;
  for (int i = 0; i < count<T>; i++)
    d.at[i] = base + static_cast<T>(i) * step;
  return d;
}

template <class T> Vector<T> copy_scalar(const Predicate& g, const Vector<T>& a, T x) {
  Vector<T> d = a;
  for (int i = 0; i < count<T>; i++)
    if (g.active<T>(i))
      d.at[i] = x;
  return d;
}

#endif

template <class T> void two_vectors() {
  for (const Order how : {Reverse, Zip1, Zip2, Uzp1, Uzp2, Trn1, Trn2})
    check<T>("order", [how](Numbers& some) {
      const Vector<T> a = any_vector<T>(some);
      return order(how, a, any_vector<T>(some));
    });
  check<T>("extract", [](Numbers& some) {
    const Vector<T> a = any_vector<T>(some), b = any_vector<T>(some);
    return extract<T, count<T> - 1>(extract<T, 1>(a, b), extract<T, count<T> / 2>(b, a));
  });
  check<T>("splice", [](Numbers& some) {
    const Predicate g = any_predicate(some);
    const Vector<T> a = any_vector<T>(some);
    return splice(g, a, any_vector<T>(some));
  });
  check<T>("select", [](Numbers& some) {
    const Predicate g = any_predicate(some);
    const Vector<T> a = any_vector<T>(some);
    return select(g, a, any_vector<T>(some));
  });
  check<T>("look up", [](Numbers& some) {
    const Vector<T> a = any_vector<T>(some);
    Vector<Unsigned<T>> places = any_vector<Unsigned<T>>(some);
    for (auto& place : places.at)
      if (some.next() & 4)
        place %= count<T>;
    return look_up(a, places);
  });
}

template <class T> void one_vector() {
  check<T>("repeat", [](Numbers& some) {
    const Vector<T> a = any_vector<T>(some);
    return order(Zip1, repeat<T, 1>(a), repeat<T, count<T> - 1>(a));
  });
  check<T>("insert", [](Numbers& some) {
    const Vector<T> a = any_vector<T>(some);
    return insert(a, some.any<T>());
  });
  check<T>("series", [](Numbers& some) {
    const auto base = some.any<std::make_signed_t<T>>();
    return series(base, some.any<std::make_signed_t<T>>());
  });
  for (const Last how : {A, B}) {
    check<T>("last", [how](Numbers& some) {
      const Predicate g = any_predicate(some);
      return last(how, g, any_vector<T>(some));
    });
    check<T>("conditional last", [how](Numbers& some) {
      const Predicate g = any_predicate(some);
      const T x = some.any<T>();
      return conditional_last(how, g, x, any_vector<T>(some));
    });
    check<T>("conditional last to a vector", [how](Numbers& some) {
      const Predicate g = any_predicate(some);
      const Vector<T> x = any_vector<T>(some);
      return conditional_last(how, g, x, any_vector<T>(some));
    });
  }
  for (const Bits how : {Rbit, Clz, Cls, Cnt, Cnot})
    check<T>("bits", [how](Numbers& some) {
      const Predicate g = any_predicate(some);
      const Vector<T> a = any_vector<T>(some);
      return bits(how, g, a, any_vector<T>(some));
    });
  check<T>("copy of a scalar", [](Numbers& some) {
    const Predicate g = any_predicate(some);
    const Vector<T> a = any_vector<T>(some);
    return copy_scalar(g, a, some.any<T>());
  });
}

template <class T, class Chunk> void reversals() {
  if constexpr (sizeof(T) > sizeof(Chunk))
    check<T>("reverse in chunks", [](Numbers& some) {
      const Predicate g = any_predicate(some);
      const Vector<T> a = any_vector<T>(some);
      return reverse_chunks<T, Chunk>(g, a, any_vector<T>(some));
    });
}

template <class T, class Wide> void of_type() {
  two_vectors<T>();
  one_vector<T>();
  reversals<T, uint8_t>();
  reversals<T, uint16_t>();
  reversals<T, uint32_t>();
  if constexpr (sizeof(T) >= 4)
    check<T>("compact", [](Numbers& some) {
      const Predicate g = any_predicate(some);
      return compact(g, any_vector<T>(some));
    });
  if constexpr (sizeof(T) < 8)
    for (const bool high : {false, true})
      check<T>("unpack", [high](Numbers& some) { return unpack<Wide>(high, any_vector<T>(some)); });
}

}  // namespace

int main() {
  of_type<int8_t, int16_t>();
  of_type<uint8_t, uint16_t>();
  of_type<int16_t, int32_t>();
  of_type<uint16_t, uint32_t>();
  of_type<int32_t, int64_t>();
  of_type<uint32_t, uint64_t>();
  of_type<int64_t, int64_t>();
  of_type<uint64_t, uint64_t>();
}
