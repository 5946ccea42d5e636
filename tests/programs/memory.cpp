// Loads and stores by intrinsics beside plain loops. Families: extending LD1 and truncating ST1 of
// every width, LD1R, LD1RQ, LDNT1, STNT1, LD2 to LD4 and ST2 to ST4 under a predicate, gathers and
// scatters with scaled and unscaled offsets, with extended 32-bit offsets and with vector bases,
// multiples of the vector length as offsets, prefetches.
#include <cstring>

#include "lanes.h"

using kernels::Numbers;
using namespace lanes;

namespace {

constexpr int field = 64;  // elements that a load or a store may reach

template <class T> struct Field { T at[field]; };

template <class T> Field<T> any_field(Numbers& some) {
  Field<T> f;
  for (T& element : f.at)
    element = some.any<T>();
  return f;
}

template <class T> using Unsigned = std::make_unsigned_t<T>;

// Offsets below the field's size, or for signed ones, the middle of it.
template <class T> Vector<T> any_offsets(Numbers& some, int scale) {
  Vector<T> offsets;
  for (T& offset : offsets.at) {
    offset = static_cast<T>(some.next() % 32);
    if (std::is_signed_v<T>)
      offset -= 16;
    offset *= scale;
  }
  return offsets;
}

#ifdef __ARM_FEATURE_SVE

template <class T> auto load_extended(svbool_t g, const int8_t* p) {
  if constexpr (sizeof(T) == 2)
    return svld1sb_s16(g, p);
  if constexpr (sizeof(T) == 4)
    return svld1sb_vnum_s32(g, p, 1);
  if constexpr (sizeof(T) == 8)
    return svld1sb_vnum_s64(g, p, 2);
}
template <class T> auto load_extended(svbool_t g, const int16_t* p) {
  if constexpr (sizeof(T) == 4)
    return svld1sh_s32(g, p);
  if constexpr (sizeof(T) == 8)
    return svld1sh_vnum_s64(g, p, 3);
}
template <class T> auto load_extended(svbool_t g, const int32_t* p) {
  return svld1sw_vnum_s64(g, p, 1);
}
template <class T> auto load_extended(svbool_t g, const uint8_t* p) {
  if constexpr (sizeof(T) == 2)
    return svld1ub_s16(g, p);
  if constexpr (sizeof(T) == 4)
    return svld1ub_vnum_s32(g, p, 1);
  if constexpr (sizeof(T) == 8)
    return svld1ub_vnum_s64(g, p, 2);
}
template <class T> auto load_extended(svbool_t g, const uint16_t* p) {
  if constexpr (sizeof(T) == 4)
    return svld1uh_s32(g, p);
  if constexpr (sizeof(T) == 8)
    return svld1uh_vnum_s64(g, p, 3);
}
template <class T> auto load_extended(svbool_t g, const uint32_t* p) {
  return svld1uw_vnum_s64(g, p, 1);
}

template <class T, class Memory> Vector<T> extend(const Predicate& g, const Field<Memory>& f) {
  return store<T>(load_extended<T>(load(g), f.at));
}

template <class Memory, class T>
void truncate(const Predicate& g, Field<Memory>& f, const Vector<T>& a) {
  if constexpr (sizeof(Memory) == 1)
    svst1b_vnum(load(g), f.at, 2, load(a));
  if constexpr (sizeof(Memory) == 2)
    svst1h(load(g), f.at, load(a));
  if constexpr (sizeof(Memory) == 4)
    svst1w_vnum(load(g), f.at, 1, load(a));
}

template <class T> Vector<T> replicate(const Predicate& g, const Field<T>& f, int place) {
  const svbool_t pg = load(g);
  const auto one = svdup_lane(svld1(svptrue_pat_b8(SV_ALL), f.at + place), 0);
  const auto four = svld1rq(pg, f.at + place);
  return store<T>(svadd_x(all<T>(), one, four));
}

template <class T> void stream(const Predicate& g, Field<T>& to, const Field<T>& from) {
  svprfb(load(g), from.at, SV_PLDL1KEEP);
  svstnt1_vnum(load(g), to.at, 1, svldnt1(load(g), from.at + 3));
}

template <class T>
void restructure(int members, const Predicate& g, Field<T>& to, const Field<T>& from) {
  const svbool_t pg = load(g);
  switch (members) {
  case 2: {
    const auto v = svld2(pg, from.at);
    svst2_vnum(pg, to.at, 2, svcreate2(svget2(v, 1), svget2(v, 0)));
    break;
  }
  case 3: {
    const auto v = svld3(pg, from.at + 1);
    svst3(pg, to.at, svcreate3(svget3(v, 2), svget3(v, 0), svget3(v, 1)));
    break;
  }
  default: {
    const auto v = svld4_vnum(pg, from.at, 0);
    svst4(pg, to.at, svcreate4(svget4(v, 3), svget4(v, 1), svget4(v, 2), svget4(v, 0)));
  }
  }
}

template <class T, class Offset>
Vector<T> gather(bool scaled, const Predicate& g, const T* base, const Vector<Offset>& offsets) {
  const auto z = load(offsets);
  return store<T>(scaled ? svld1_gather_index(load(g), base, z)
                         : svld1_gather_offset(load(g), base, z));
}

template <class T, class Offset>
void scatter(bool scaled, const Predicate& g, T* base, const Vector<Offset>& offsets,
             const Vector<T>& a) {
  const auto z = load(offsets);
  if (scaled)
    svst1_scatter_index(load(g), base, z, load(a));
  else
    svst1_scatter_offset(load(g), base, z, load(a));
}

template <class Offset>
Vector<int32_t> gather_bytes(const Predicate& g, const int8_t* base,
                             const Vector<Offset>& offsets) {
  return store<int32_t>(svld1sb_gather_offset_s32(load(g), base, load(offsets)));
}

Vector<int64_t> gather_halves(const Predicate& g, const Vector<uint64_t>& bases) {
  return store<int64_t>(svld1sh_gather_offset_s64(load(g), load(bases), 6));
}

void scatter_words(const Predicate& g, const Vector<uint64_t>& bases, const Vector<int64_t>& a) {
  svst1w_scatter_offset(load(g), load(bases), 8, load(a));
}

#else

// Which multiple of the vector length the forms above load from.
template <class T, class Memory> constexpr int extended_place() {
  constexpr int multiple = sizeof(Memory) == 1   ? (sizeof(T) == 2   ? 0
                                                    : sizeof(T) == 4 ? 1
                                                                     : 2)
                           : sizeof(Memory) == 2 ? (sizeof(T) == 4 ? 0 : 3)
                                                 : 1;
  return multiple * count<T>;
}

template <class T, class Memory> Vector<T> extend(const Predicate& g, const Field<Memory>& f) {
  Vector<T> d{};
  for (int i = 0; i < count<T>; i++)
    if (g.active<T>(i))
      d.at[i] = f.at[extended_place<T, Memory>() + i];
  return d;
}

template <class Memory, class T>
void truncate(const Predicate& g, Field<Memory>& f, const Vector<T>& a) {
  const int place = sizeof(Memory) == 1 ? 2 * count<T> : sizeof(Memory) == 2 ? 0 : count<T>;
  for (int i = 0; i < count<T>; i++)
    if (g.active<T>(i))
      f.at[place + i] = static_cast<Memory>(a.at[i]);
}

template <class T> Vector<T> replicate(const Predicate& g, const Field<T>& f, int place) {
  Vector<T> d;
  for (int i = 0; i < count<T>; i++)
    d.at[i] = f.at[place] + (g.active<T>(i) ? f.at[place + i] : 0);
  return d;
}

template <class T> void stream(const Predicate& g, Field<T>& to, const Field<T>& from) {
  for (int i = 0; i < count<T>; i++)
    if (g.active<T>(i))
      to.at[count<T> + i] = from.at[3 + i];
}

template <class T>
void restructure(int members, const Predicate& g, Field<T>& to, const Field<T>& from) {
  static const int orders[][4] = {{1, 0}, {2, 0, 1}, {3, 1, 2, 0}};
  const T* const in = from.at + (members == 3);
  T* const out = to.at + (members == 2 ? 2 * count<T> : 0);
  for (int i = 0; i < count<T>; i++)
    for (int k = 0; k < members; k++)
      if (g.active<T>(i))
        out[members * i + k] = in[members * i + orders[members - 2][k]];
}

template <class T, class Offset>
Vector<T> gather(bool scaled, const Predicate& g, const T* base, const Vector<Offset>& offsets) {
  Vector<T> d{};
  for (int i = 0; i < count<T>; i++)
    if (g.active<T>(i))
      memcpy(&d.at[i],
             reinterpret_cast<const char*>(base) +
                 static_cast<int64_t>(offsets.at[i]) * int64_t(scaled ? sizeof(T) : 1),
             sizeof(T));
  return d;
}

template <class T, class Offset>
void scatter(bool scaled, const Predicate& g, T* base, const Vector<Offset>& offsets,
             const Vector<T>& a) {
  for (int i = 0; i < count<T>; i++)
    if (g.active<T>(i))
      memcpy(reinterpret_cast<char*>(base) +
                 static_cast<int64_t>(offsets.at[i]) * int64_t(scaled ? sizeof(T) : 1),
             &a.at[i], sizeof(T));
}

template <class Offset>
Vector<int32_t> gather_bytes(const Predicate& g, const int8_t* base,
                             const Vector<Offset>& offsets) {
  Vector<int32_t> d{};
  for (int i = 0; i < 4; i++)
    if (g.active<int32_t>(i))
      d.at[i] = base[offsets.at[i]];
  return d;
}

Vector<int64_t> gather_halves(const Predicate& g, const Vector<uint64_t>& bases) {
  Vector<int64_t> d{};
  for (int i = 0; i < 2; i++) {
    int16_t half;
    memcpy(&half, reinterpret_cast<const char*>(bases.at[i]) + 6, sizeof half);
    if (g.active<int64_t>(i))
      d.at[i] = half;
  }
  return d;
}

void scatter_words(const Predicate& g, const Vector<uint64_t>& bases, const Vector<int64_t>& a) {
  for (int i = 0; i < 2; i++) {
    const auto word = static_cast<int32_t>(a.at[i]);
    if (g.active<int64_t>(i))
      memcpy(reinterpret_cast<char*>(bases.at[i]) + 8, &word, sizeof word);
  }
}

#endif

template <class T, class Memory> void extensions() {
  check<Memory>("extend", [](Numbers& some) {
    const Predicate g = any_predicate(some);
    return extend<T>(g, any_field<Memory>(some));
  });
  if constexpr (std::is_signed_v<Memory>)
    check<Memory>("truncate", [](Numbers& some) {
      const Predicate g = any_predicate(some);
      Field<Memory> f = any_field<Memory>(some);
      truncate(g, f, any_vector<T>(some));
      return f;
    });
}

template <class T> void contiguous() {
  check<T>("replicate", [](Numbers& some) {
    const Predicate g = any_predicate(some);
    return replicate(g, any_field<T>(some), 5);
  });
  check<T>("stream", [](Numbers& some) {
    const Predicate g = any_predicate(some);
    Field<T> to = any_field<T>(some);
    stream(g, to, any_field<T>(some));
    return to;
  });
  for (const int members : {2, 3, 4})
    if (members * count<T> * 2 <= field)
      check<T>("restructure", [members](Numbers& some) {
        const Predicate g = any_predicate(some);
        Field<T> to = any_field<T>(some);
        restructure(members, g, to, any_field<T>(some));
        return to;
      });
}

template <class T, class Offset> void scattered() {
  for (const bool scaled : {false, true}) {
    check<Offset>("gather", [scaled](Numbers& some) {
      const Predicate g = any_predicate(some);
      const Field<T> f = any_field<T>(some);
      return gather(scaled, g, f.at + 20, any_offsets<Offset>(some, scaled ? 1 : 3));
    });
    check<Offset>("scatter", [scaled](Numbers& some) {
      const Predicate g = any_predicate(some);
      Field<T> f = any_field<T>(some);
      const Vector<Offset> offsets = any_offsets<Offset>(some, scaled ? 1 : 4);
      scatter(scaled, g, f.at + 20, offsets, any_vector<T>(some));
      return f;
    });
  }
}

Vector<uint64_t> any_bases(Numbers& some, void* base) {
  Vector<uint64_t> bases;
  for (uint64_t& address : bases.at)
    address = reinterpret_cast<uint64_t>(base) + some.next() % 16;
  return bases;
}

}  // namespace

int main() {
  extensions<int16_t, int8_t>();
  extensions<int32_t, int8_t>();
  extensions<int64_t, int8_t>();
  extensions<int32_t, int16_t>();
  extensions<int64_t, int16_t>();
  extensions<int64_t, int32_t>();
  extensions<int16_t, uint8_t>();
  extensions<int32_t, uint8_t>();
  extensions<int64_t, uint8_t>();
  extensions<int32_t, uint16_t>();
  extensions<int64_t, uint16_t>();
  extensions<int64_t, uint32_t>();
  contiguous<uint8_t>();
  contiguous<int16_t>();
  contiguous<uint32_t>();
  contiguous<int64_t>();
  scattered<int32_t, int32_t>();
  scattered<int32_t, uint32_t>();
  scattered<int64_t, int64_t>();
  scattered<int64_t, uint64_t>();
  check<int8_t>("gather bytes", [](Numbers& some) {
    const Predicate g = any_predicate(some);
    const Field<int8_t> f = any_field<int8_t>(some);
    return gather_bytes(g, f.at + 20, any_offsets<int32_t>(some, 1));
  });
  check<int16_t>("gather halves", [](Numbers& some) {
    const Predicate g = any_predicate(some);
    Field<int8_t> f = any_field<int8_t>(some);
    return gather_halves(g, any_bases(some, f.at));
  });
  check<int32_t>("scatter words", [](Numbers& some) {
    const Predicate g = any_predicate(some);
    Field<int8_t> f = any_field<int8_t>(some);
    const Vector<uint64_t> bases = any_bases(some, f.at);
    scatter_words(g, bases, any_vector<int64_t>(some));
    return f;
  });
}
