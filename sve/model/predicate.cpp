#include "sve/model/predicate.h"

#include "sve/model/flags.h"
#include "sve/model/vector.h"

namespace {

unsigned element_count(int esize, const CpuContext* context) {
  return context->vl * 64 / static_cast<unsigned>(esize);
}

bool element_bit(const PredV& predicate, int esize, int e) {
  return model::bit(predicate, static_cast<unsigned>(e * esize / 8));
}

bool group_is_clear(const PredV& predicate, int esize, int e) {
  for (int i = e * esize / 8; i < (e + 1) * esize / 8; i++)
    if (model::bit(predicate, static_cast<unsigned>(i)))
      return false;
  return true;
}

// No active element has a bit of its group set; so, too, if there is none.
bool all_clear(const PredV& mask, const PredV& result, int esize, const CpuContext* context) {
  for (int e = 0; e < static_cast<int>(element_count(esize, context)); e++)
    if (element_bit(mask, esize, e) && !group_is_clear(result, esize, e))
      return false;
  return true;
}

}  // namespace

int FindFirstActive(PredV mask, int esize, CpuContext* context) {
  const int n = static_cast<int>(element_count(esize, context));
  for (int e = 0; e < n; e++)
    if (element_bit(mask, esize, e))
      return e;
  return -1;
}

int FindLastActive(PredV mask, int esize, CpuContext* context) {
  for (int e = static_cast<int>(element_count(esize, context)) - 1; e >= 0; e--)
    if (element_bit(mask, esize, e))
      return e;
  return -1;
}

void PredSetNC(PredV mask, PredV result, int esize, CpuContext* context) {
  const int first = FindFirstActive(mask, esize, context);
  if (first < 0)
    return;
  const int last = FindLastActive(mask, esize, context);
  model::set_flag(context, model::flag_n, element_bit(result, esize, first));
  model::set_flag(context, model::flag_c, group_is_clear(result, esize, last));
}

void PredSetNCV(PredV mask, PredV result, int esize, CpuContext* context) {
  if (all_clear(mask, result, esize, context)) {
    model::set_flag(context, model::flag_n, false);
    model::set_flag(context, model::flag_c, true);
  } else {
    PredSetNC(mask, result, esize, context);
  }
  model::set_flag(context, model::flag_v, false);
}

void PredSetNZC(PredV mask, PredV result, int esize, CpuContext* context) {
  const bool zero = all_clear(mask, result, esize, context);
  model::set_flag(context, model::flag_z, zero);
  if (zero) {
    model::set_flag(context, model::flag_n, false);
    model::set_flag(context, model::flag_c, true);
  } else {
    PredSetNC(mask, result, esize, context);
  }
}

void PredSetNZCV(PredV mask, PredV result, int esize, CpuContext* context) {
  PredSetNZC(mask, result, esize, context);
  model::set_flag(context, model::flag_v, false);
}
