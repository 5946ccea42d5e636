// Predicates by intrinsics, each beside its definition in plain loops. Families: predicate logic
// and its flags, BRKA, BRKB, BRKN, BRKPA, BRKPB, PNEXT, PFIRST, PTEST, PTRUE patterns, PFALSE,
// WHILELT, WHILELE, WHILELO, WHILELS, REV, ZIP, UZP, TRN and PUNPK of predicates, SEL, CNTP,
// SETFFR, WRFFR, RDFFR, compares with vectors, wide elements and immediates.
#include "lanes.h"

using kernels::Numbers;
using namespace lanes;

namespace {

enum Logic { And, Bic, Orr, Orn, Eor, Nand, Nor, Select };
enum Break { A, B, N, PA, PB };
enum Order { Reverse, Zip1, Zip2, Uzp1, Uzp2, Trn1, Trn2 };
enum While { LT, LE };
enum Compare { EQ, NE, GT, GE };

// What PTEST tells: some active bit is set, the first active is, the last active is.
struct Tested {
  bool any, first, last;
};

#ifdef __ARM_FEATURE_SVE

Predicate logic(Logic how, const Predicate& g, const Predicate& a, const Predicate& b) {
  const svbool_t pg = load(g), pa = load(a), pb = load(b);
  switch (how) {
  case And:
    return store(svand_z(pg, pa, pb));
  case Bic:
    return store(svbic_z(pg, pa, pb));
  case Orr:
    return store(svorr_z(pg, pa, pb));
  case Orn:
    return store(svorn_z(pg, pa, pb));
  case Eor:
    return store(sveor_z(pg, pa, pb));
  case Nand:
    return store(svnand_z(pg, pa, pb));
  case Nor:
    return store(svnor_z(pg, pa, pb));
  default:
    return store(svsel(pg, pa, pb));
  }
}

Predicate break_after(Break how, const Predicate& g, const Predicate& a, const Predicate& b) {
  const svbool_t pg = load(g), pa = load(a), pb = load(b);
  switch (how) {
  case A:
    return store(svbrka_z(pg, pa));
  case B:
    return store(svbrkb_m(pb, pg, pa));
  case N:
    return store(svbrkn_z(pg, pa, pb));
  case PA:
    return store(svbrkpa_z(pg, pa, pb));
  default:
    return store(svbrkpb_z(pg, pa, pb));
  }
}

Tested test(const Predicate& g, const Predicate& a) {
  const svbool_t pg = load(g), pa = load(a);
  return {svptest_any(pg, pa), svptest_first(pg, pa), svptest_last(pg, pa)};
}

template <class T> Predicate next(const Predicate& g, const Predicate& a) {
  const svbool_t pg = load(g), pa = load(a);
  if constexpr (sizeof(T) == 1)
    return store(svpnext_b8(pg, pa));
  if constexpr (sizeof(T) == 2)
    return store(svpnext_b16(pg, pa));
  if constexpr (sizeof(T) == 4)
    return store(svpnext_b32(pg, pa));
  if constexpr (sizeof(T) == 8)
    return store(svpnext_b64(pg, pa));
}

Predicate first(const Predicate& g, const Predicate& a) {
  return store(svpfirst(load(g), load(a)));
}

// In which order the elements of two predicates go into one.
#define ORDERS(width)                                                                              \
  switch (how) {                                                                                   \
  case Reverse:                                                                                    \
    return store(svrev_b##width(pa));                                                              \
  case Zip1:                                                                                       \
    return store(svzip1_b##width(pa, pb));                                                         \
  case Zip2:                                                                                       \
    return store(svzip2_b##width(pa, pb));                                                         \
  case Uzp1:                                                                                       \
    return store(svuzp1_b##width(pa, pb));                                                         \
  case Uzp2:                                                                                       \
    return store(svuzp2_b##width(pa, pb));                                                         \
  case Trn1:                                                                                       \
    return store(svtrn1_b##width(pa, pb));                                                         \
  default:                                                                                         \
    return store(svtrn2_b##width(pa, pb));                                                         \
  }

template <class T> Predicate order(Order how, const Predicate& a, const Predicate& b) {
  const svbool_t pa = load(a), pb = load(b);
  if constexpr (sizeof(T) == 1)
    ORDERS(8)
  if constexpr (sizeof(T) == 2)
    ORDERS(16)
  if constexpr (sizeof(T) == 4)
    ORDERS(32)
  if constexpr (sizeof(T) == 8)
    ORDERS(64)
}

Predicate unpack(bool high, const Predicate& a) {
  return store(high ? svunpkhi(load(a)) : svunpklo(load(a)));
}

template <class T> uint64_t active_count(const Predicate& g, const Predicate& a) {
  if constexpr (sizeof(T) == 1)
    return svcntp_b8(load(g), load(a));
  if constexpr (sizeof(T) == 2)
    return svcntp_b16(load(g), load(a));
  if constexpr (sizeof(T) == 4)
    return svcntp_b32(load(g), load(a));
  if constexpr (sizeof(T) == 8)
    return svcntp_b64(load(g), load(a));
}

template <class T, class Bound> Predicate while_less(While how, Bound from, Bound to) {
  if constexpr (sizeof(T) == 1)
    return store(how == LT ? svwhilelt_b8(from, to) : svwhilele_b8(from, to));
  if constexpr (sizeof(T) == 2)
    return store(how == LT ? svwhilelt_b16(from, to) : svwhilele_b16(from, to));
  if constexpr (sizeof(T) == 4)
    return store(how == LT ? svwhilelt_b32(from, to) : svwhilele_b32(from, to));
  if constexpr (sizeof(T) == 8)
    return store(how == LT ? svwhilelt_b64(from, to) : svwhilele_b64(from, to));
}

template <class T>
Predicate compare(Compare how, const Predicate& g, const Vector<T>& a, const Vector<T>& b) {
  const svbool_t pg = load(g);
  const auto za = load(a), zb = load(b);
  switch (how) {
  case EQ:
    return store(svcmpeq(pg, za, zb));
  case NE:
    return store(svcmpne(pg, za, zb));
  case GT:
    return store(svcmpgt(pg, za, zb));
  default:
    return store(svcmpge(pg, za, zb));
  }
}

template <class T, class Wide>
Predicate compare_wide(Compare how, const Predicate& g, const Vector<T>& a, const Vector<Wide>& b) {
  const svbool_t pg = load(g);
  const auto za = load(a);
  const auto zb = load(b);
  switch (how) {
  case EQ:
    return store(svcmplt_wide(pg, za, zb));
  case NE:
    return store(svcmple_wide(pg, za, zb));
  case GT:
    return store(svcmpgt_wide(pg, za, zb));
  default:
    return store(svcmpge_wide(pg, za, zb));
  }
}

template <class T>
Predicate compare_immediate(Compare how, const Predicate& g, const Vector<T>& a) {
  const svbool_t pg = load(g);
  const auto za = load(a);
  switch (how) {
  case EQ:
    return store(svcmpeq(pg, za, T(1)));
  case NE:
    return store(svcmpne(pg, za, T(0)));
  case GT:
    return store(svcmpgt(pg, za, T(15)));
  default:
    return store(svcmpge(pg, za, T(9)));
  }
}

// Through the first-fault register.
Predicate through_ffr(const Predicate& g, const Predicate& a) {
  svsetffr();
  const svbool_t all = svrdffr();
  svwrffr(svand_z(all, load(a), load(a)));
  return store(svrdffr_z(load(g)));
}

#else

bool one(Logic how, bool a, bool b) {
  switch (how) {
  case And:
    return a && b;
  case Bic:
    return a && !b;
  case Orr:
    return a || b;
  case Orn:
    return a || !b;
  case Eor:
    return a != b;
  case Nand:
    return !(a && b);
  default:
    return !(a || b);
  }
}

Predicate logic(Logic how, const Predicate& g, const Predicate& a, const Predicate& b) {
  Predicate d;
  for (int i = 0; i < bytes; i++)
    d.bit[i] = how == Select ? (g.bit[i] ? a : b).bit[i] : g.bit[i] && one(how, a.bit[i], b.bit[i]);
  return d;
}

bool last_active(const Predicate& g, const Predicate& a) {
  for (int i = bytes - 1; i >= 0; i--)
    if (g.bit[i])
      return a.bit[i];
  return false;
}

Predicate break_after(Break how, const Predicate& g, const Predicate& a, const Predicate& b) {
  Predicate d{};
  if (how == N)
    return last_active(g, a) ? b : d;
  // BRKPA and BRKPB break at the second source, if the first one's last active bit is set.
  const Predicate& at = how == PA || how == PB ? b : a;
  bool open = how == A || how == B || last_active(g, a);
  const bool after = how == A || how == PA;
  for (int i = 0; i < bytes; i++) {
    if (!g.bit[i]) {
      d.bit[i] = how == B ? b.bit[i] : 0;
      continue;
    }
    if (after)
      d.bit[i] = open;
    open = open && !at.bit[i];
    if (!after)
      d.bit[i] = open;
  }
  return d;
}

Tested test(const Predicate& g, const Predicate& a) {
  Tested tested{false, false, last_active(g, a)};
  bool seen = false;
  for (int i = 0; i < bytes; i++) {
    if (!g.bit[i])
      continue;
    tested.any |= a.bit[i];
    if (!seen)
      tested.first = a.bit[i];
    seen = true;
  }
  return tested;
}

template <class T> Predicate next(const Predicate& g, const Predicate& a) {
  int i = 0;
  for (int k = 0; k < count<T>; k++)
    if (a.active<T>(k))
      i = k + 1;
  Predicate d{};
  for (; i < count<T>; i++)
    if (g.active<T>(i)) {
      d.set<T>(i, true);
      break;
    }
  return d;
}

Predicate first(const Predicate& g, const Predicate& a) {
  Predicate d = a;
  for (int i = 0; i < bytes; i++)
    if (g.bit[i]) {
      d.bit[i] = 1;
      break;
    }
  return d;
}

template <class T> Predicate order(Order how, const Predicate& a, const Predicate& b) {
  Predicate d;
  const int n = count<T>;
  for (int i = 0; i < n; i++) {
    const Predicate* from = i & 1 ? &b : &a;
    int k = i;
    switch (how) {
    case Reverse:
      from = &a, k = n - 1 - i;
      break;
    case Zip1:
      k = i / 2;
      break;
    case Zip2:
      k = n / 2 + i / 2;
      break;
    case Uzp1:
      from = i < n / 2 ? &a : &b, k = 2 * i % n;
      break;
    case Uzp2:
      from = i < n / 2 ? &a : &b, k = 2 * i % n + 1;
      break;
    case Trn1:
      k = i & ~1;
      break;
    case Trn2:
      k = i | 1;
      break;
    }
    for (unsigned bit = 0; bit < sizeof(T); bit++)
      d.bit[i * sizeof(T) + bit] = from->bit[k * sizeof(T) + bit];
  }
  return d;
}

Predicate unpack(bool high, const Predicate& a) {
  Predicate d{};
  for (int i = 0; i < bytes / 2; i++)
    d.bit[2 * i] = a.bit[i + (high ? bytes / 2 : 0)];
  return d;
}

template <class T> uint64_t active_count(const Predicate& g, const Predicate& a) {
  uint64_t n = 0;
  for (int i = 0; i < count<T>; i++)
    n += g.active<T>(i) && a.active<T>(i);
  return n;
}

template <class T, class Bound> Predicate while_less(While how, Bound from, Bound to) {
  Predicate d{};
  bool going = true;
  for (int i = 0; i < count<T>; i++) {
    going = going && (how == LT ? from < to : from <= to);
    d.set<T>(i, going);
    from++;
  }
  return d;
}

template <class T, class Test> Predicate each(const Predicate& g, Test holds) {
  Predicate d{};
  for (int i = 0; i < count<T>; i++)
    d.set<T>(i, g.active<T>(i) && holds(i));
  return d;
}

template <class T>
Predicate compare(Compare how, const Predicate& g, const Vector<T>& a, const Vector<T>& b) {
  return each<T>(g, [&](int i) {
    switch (how) {
    case EQ:
      return a.at[i] == b.at[i];
    case NE:
      return a.at[i] != b.at[i];
    case GT:
      return a.at[i] > b.at[i];
    default:
      return a.at[i] >= b.at[i];
    }
  });
}

template <class T, class Wide>
Predicate compare_wide(Compare how, const Predicate& g, const Vector<T>& a, const Vector<Wide>& b) {
  return each<T>(g, [&](int i) {
    const Wide other = b.at[i * sizeof(T) / sizeof(Wide)];
    switch (how) {
    case EQ:
      return a.at[i] < other;
    case NE:
      return a.at[i] <= other;
    case GT:
      return a.at[i] > other;
    default:
      return a.at[i] >= other;
    }
  });
}

template <class T>
Predicate compare_immediate(Compare how, const Predicate& g, const Vector<T>& a) {
  return each<T>(g, [&](int i) {
    switch (how) {
    case EQ:
      return a.at[i] == 1;
    case NE:
      return a.at[i] != 0;
    case GT:
      return a.at[i] > 15;
    default:
      return a.at[i] >= 9;
    }
  });
}

Predicate through_ffr(const Predicate& g, const Predicate& a) { return logic(And, g, a, a); }

#endif

void bytewise() {
  for (const Logic how : {And, Bic, Orr, Orn, Eor, Nand, Nor, Select})
    check<uint8_t>("logic", [how](Numbers& some) {
      const Predicate g = any_predicate(some), a = any_predicate(some), b = any_predicate(some);
      return logic(how, g, a, b);
    });
  for (const Break how : {A, B, N, PA, PB})
    check<uint8_t>("break", [how](Numbers& some) {
      const Predicate g = any_predicate(some), a = any_predicate(some), b = any_predicate(some);
      return break_after(how, g, a, b);
    });
  check<uint8_t>("test", [](Numbers& some) {
    const Predicate g = any_predicate(some);
    return test(g, any_predicate(some));
  });
  check<uint8_t>("first", [](Numbers& some) {
    const Predicate g = any_predicate(some);
    return first(g, any_predicate(some));
  });
  check<uint8_t>("first-fault register", [](Numbers& some) {
    const Predicate g = any_predicate(some);
    return through_ffr(g, any_predicate(some));
  });
  for (const bool high : {false, true})
    check<uint8_t>("unpack", [high](Numbers& some) { return unpack(high, any_predicate(some)); });
}

template <class T, class Bound> void bounds() {
  for (const While how : {LT, LE})
    check<Bound>("while", [how](Numbers& some) {
      // Near each other, and near the end of the type.
      Bound from = some.any<Bound>(), to = from + static_cast<Bound>(some.next() % 21) - 3;
      if (how == LE && to == std::numeric_limits<Bound>::max())
        to--;
      return while_less<T>(how, from, to);
    });
}

template <class T> void elementwise() {
  check<T>("next", [](Numbers& some) {
    const Predicate g = any_predicate(some);
    Predicate p{};
    for (int i = 0; i < count<T>; i++)
      p = next<T>(g, p);
    return next<T>(g, first(g, p));
  });
  for (const Order how : {Reverse, Zip1, Zip2, Uzp1, Uzp2, Trn1, Trn2})
    check<T>("order", [how](Numbers& some) {
      const Predicate a = any_predicate(some);
      return order<T>(how, a, any_predicate(some));
    });
  check<T>("count", [](Numbers& some) {
    const Predicate g = any_predicate(some);
    return active_count<T>(g, any_predicate(some));
  });
  bounds<T, int32_t>();
  bounds<T, uint32_t>();
  bounds<T, int64_t>();
  bounds<T, uint64_t>();
}

template <class T> void compares() {
  for (const Compare how : {EQ, NE, GT, GE}) {
    check<T>("compare", [how](Numbers& some) {
      const Predicate g = any_predicate(some);
      const Vector<T> a = any_vector<T>(some);
      return compare(how, g, a, any_vector<T>(some));
    });
    check<T>("compare with an immediate", [how](Numbers& some) {
      const Predicate g = any_predicate(some);
      return compare_immediate(how, g, any_vector<T>(some));
    });
    if constexpr (sizeof(T) < 8)
      check<T>("compare with wide elements", [how](Numbers& some) {
        using Wide = std::conditional_t<std::is_signed_v<T>, int64_t, uint64_t>;
        const Predicate g = any_predicate(some);
        const Vector<T> a = any_vector<T>(some);
        return compare_wide(how, g, a, any_vector<Wide>(some));
      });
  }
}

}  // namespace

int main() {
  bytewise();
  elementwise<uint8_t>();
  elementwise<uint16_t>();
  elementwise<uint32_t>();
  elementwise<uint64_t>();
  compares<int8_t>();
  compares<uint8_t>();
  compares<int16_t>();
  compares<uint16_t>();
  compares<int32_t>();
  compares<uint32_t>();
  compares<int64_t>();
  compares<uint64_t>();
}
