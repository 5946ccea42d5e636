// vector_math glibc|sleef <library>: every mathematical function of a library of vector functions,
// for AdvSIMD, or for SVE with VECTORS=sve. glibc's are compared with libm in twice the precision,
// and may be 4 units in the last place away; the bits of SLEEF's are printed, which are the same in
// both.
#include <arm_neon.h>
#include <arm_sve.h>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <limits>
#include <sstream>
#include <string>

namespace {

constexpr int count = 41, room = 44;  // of numbers, with what a last vector reaches behind them
bool sve, sleef;
void* library;

template <class T> struct Type;
template <> struct Type<float> {
  using Sve = svfloat32_t;
  using Neon = float32x4_t;
  using Wide = double;
  using Bits = uint32_t;
  static constexpr char letter = 'f', lanes = '4';
  static svbool_t active(int i) { return svwhilelt_b32(i, count); }
};
template <> struct Type<double> {
  using Sve = svfloat64_t;
  using Neon = float64x2_t;
  using Wide = long double;
  using Bits = uint64_t;
  static constexpr char letter = 'd', lanes = '2';
  static svbool_t active(int i) { return svwhilelt_b64(i, count); }
};

void* find(const std::string& name, void* where) {
  void* const function = dlsym(where, name.c_str());
  if (!function) {
    printf("no %s\n", name.c_str());
    exit(2);
  }
  return function;
}

// SLEEF's functions take no predicate, and P0 is nothing to them.
template <class T>
[[gnu::noipa]] void call_sve(void* function, bool two, const T* a, const T* b, T* to) {
  using V = typename Type<T>::Sve;
  for (int i = 0; i < count; i += svcntb() / sizeof(T)) {
    const svbool_t g = Type<T>::active(i);
    const V x = svld1(g, a + i), y = svld1(g, b + i);
    svst1(g, to + i,
          two ? reinterpret_cast<V (*)(V, V, svbool_t)>(function)(x, y, g)
              : reinterpret_cast<V (*)(V, svbool_t)>(function)(x, g));
  }
}

template <class T> void call_neon(void* function, bool two, const T* a, const T* b, T* to) {
  using V = typename Type<T>::Neon;
  using One = V (*)(V);
  using Two = V (*)(V, V);
  for (int i = 0; i < count; i += sizeof(V) / sizeof(T)) {
    V x, y;
    memcpy(&x, a + i, sizeof x);
    memcpy(&y, b + i, sizeof y);
    x = two ? reinterpret_cast<Two>(function)(x, y) : reinterpret_cast<One>(function)(x);
    memcpy(to + i, &x, sizeof x);
  }
}

template <class T> std::string name_of(const std::string& name, bool two) {
  using Its = Type<T>;
  if (sleef) {
    const size_t end = name.find('_');
    return "Sleef_finz_" + name.substr(0, end) + Its::letter + (sve ? 'x' : Its::lanes) +
           name.substr(end) + (sve ? "sve" : "advsimd");
  }
  return "_ZGV" + (sve ? std::string("sMx") : std::string("nN") + Its::lanes) +
         (two ? "vv_" : "v_") + name + (Its::letter == 'f' ? "f" : "");
}

template <class T>
T most_units_apart(const std::string& name, bool two, const T* a, const T* b, const T* results) {
  using Wide = typename Type<T>::Wide;
  static void* const libm = dlopen("libm.so.6", RTLD_NOW);
  void* const exact = find(name + (Type<T>::letter == 'd' ? "l" : ""), libm);
  T most = 0;
  for (int i = 0; i < count; i++) {
    const Wide r = two ? reinterpret_cast<Wide (*)(Wide, Wide)>(exact)(a[i], b[i])
                       : reinterpret_cast<Wide (*)(Wide)>(exact)(a[i]);
    const T rounded = r, size = std::fabs(rounded);
    if (rounded == results[i] || (std::isnan(rounded) && std::isnan(results[i])))
      continue;
    const T unit = std::nextafter(size, std::numeric_limits<T>::infinity()) - size;
    const T apart = std::fabs(r - results[i]) / unit;
    most = apart <= most ? most : apart;
  }
  return most;
}

template <class T> void check(const std::string& name, bool two, double low, double high) {
  T a[room] = {}, b[room] = {}, results[room];
  for (int i = 0; i < count; i++) {
    a[i] = low + (high - low) * (i * 0.618034 - std::floor(i * 0.618034));
    b[i] = low + (high - low) * ((i + 0.37) / count);
  }
  const T limits[] = {0,    -0.0, INFINITY, -INFINITY, NAN,
                      -0.5, 1,    -2,       1e9,       std::numeric_limits<T>::denorm_min()};
  // glibc's tanf for SVE takes the inverse of the neighbours of what it leaves to libm.
  if (sleef || name != "tan") {
    memcpy(a + 3, limits, sizeof limits);
    memcpy(b + 9, limits, sizeof limits);
  }
  void* const function = find(name_of<T>(name, two), library);
  (sve ? call_sve<T> : call_neon<T>)(function, two, a, b, results);
  printf("%s%c:", name.c_str(), Type<T>::letter);
  if (!sleef) {
    const T most = most_units_apart(name, two, a, b, results);
    most <= 4 ? printf(" within 4 units\n") : printf(" %g units\n", static_cast<double>(most));
    return;
  }
  uint64_t sum = 0;
  for (int i = 0; i < count; i++) {
    typename Type<T>::Bits bits;
    memcpy(&bits, &results[i], sizeof bits);
    sum = sum * 0x9e3779b97f4a7c15 + (results[i] == results[i] ? bits : 1);
  }
  printf(" %016llx\n", static_cast<unsigned long long>(sum));
}

// Functions by their arguments' interval.
struct Names {
  double low, high;
  bool two;
  const char* names;
};
const Names glibc_names[] = {
    {-20, 20, false, "sin cos tan sinh cosh tanh asinh atan exp exp2 exp10 expm1 erf cbrt"},
    {-3, 3, false, "sinpi cospi tanpi erfc"},
    {-1, 1, false, "asin acos atanh"},
    {1e-3, 50, false, "log log2 log10 log1p logp1"},
    {1, 90, false, "acosh"},
    {0.1, 12, true, "pow atan2 hypot"},
};
const Names sleef_names[] = {
    {-20, 20, false,
     "sin_u10 sin_u35 cos_u10 cos_u35 tan_u10 tan_u35 sinh_u10 sinh_u35 cosh_u10 cosh_u35 tanh_u10 "
     "tanh_u35 sinpi_u05 cospi_u05 asinh_u10 atan_u10 atan_u35 exp_u10 exp2_u10 exp2_u35 exp10_u10 "
     "exp10_u35 expm1_u10 erf_u10 erfc_u15 cbrt_u10 cbrt_u35 lgamma_u10 tgamma_u10 trunc_ floor_ "
     "ceil_ round_ rint_ fabs_ frfrexp_"},
    {-1, 1, false, "asin_u10 asin_u35 acos_u10 acos_u35 atanh_u10"},
    {1e-3, 50, false,
     "log_u10 log_u35 log2_u10 log2_u35 log10_u10 log1p_u10 acosh_u10 sqrt_u05 sqrt_u35"},
    {-9, 12, true,
     "pow_u10 atan2_u10 atan2_u35 hypot_u05 hypot_u35 fmod_ remainder_ fdim_ fmax_ fmin_ copysign_ "
     "nextafter_"},
};

template <size_t n> void check_all(const Names (&all)[n]) {
  for (const Names& some : all) {
    std::istringstream names(some.names);
    for (std::string name; names >> name;) {
      check<float>(name, some.two, some.low, some.high);
      check<double>(name, some.two, some.low, some.high);
    }
  }
}

}  // namespace

int main(int, char** arguments) {
  const char* const vectors = getenv("VECTORS");
  sve = vectors && strcmp(vectors, "sve") == 0;
  sleef = strcmp(arguments[1], "sleef") == 0;
  library = dlopen(arguments[2], RTLD_NOW);
  if (!library) {
    puts(dlerror());
    return 2;
  }
  sleef ? check_all(sleef_names) : check_all(glibc_names);
}
