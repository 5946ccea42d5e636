#include "sve/model/predicate.h"

#include "sve/model/flags.h"
#include "sve/model/vector.h"

#ifdef MODEL_OF_BUILT_LENGTH
#include <bit>

#include "sve/lanes/predicate_bits.h"
#endif

namespace {

// Of a result under a mask. An element is true by its element bit, and set by any bit of its group.
struct Summary {
  bool active;      // there is an active element
  bool first_true;  // the first active one is true
  bool any_set;     // an active one is set
  bool last_set;    // the last active one is set
};

#ifdef MODEL_OF_BUILT_LENGTH

using SlotBits = lanes::predicate_bits;

SlotBits element_bits(const PredV& predicate, int esize) {
  constexpr SlotBits of_size[] = {lanes::first_bits<uint8_t>, lanes::first_bits<uint16_t>,
                                  lanes::first_bits<uint32_t>, lanes::first_bits<uint64_t>};
  return lanes::load_bits(&predicate) & of_size[std::countr_zero(static_cast<unsigned>(esize) / 8)];
}

// The result's element bits, set where any bit of the group is.
SlotBits group_bits(const PredV& predicate, int esize) {
  SlotBits bits = lanes::load_bits(&predicate);
  for (int width = 8; width < esize; width *= 2)
    bits |= bits >> width;
  return bits;
}

Summary summary(const PredV& mask, const PredV& result, int esize, const CpuContext*) {
  const SlotBits active = element_bits(mask, esize);
  const SlotBits set = group_bits(result, esize) & active;
  return {active != 0, (lanes::lowest_bit(active) & lanes::load_bits(&result)) != 0, set != 0,
          lanes::has_highest_bit(active, set)};
}

unsigned zeros_below(SlotBits bits) {
  const auto low = static_cast<uint64_t>(bits), high = static_cast<uint64_t>(bits >> 64);
  return static_cast<unsigned>(low != 0 ? std::countr_zero(low) : 64 + std::countr_zero(high));
}

}  // namespace

int FindFirstActive(PredV mask, int esize, CpuContext*) {
  const SlotBits active = element_bits(mask, esize);
  return active == 0 ? -1 : static_cast<int>(zeros_below(active)) / esize;
}

int FindLastActive(PredV mask, int esize, CpuContext*) {
  const SlotBits active = element_bits(mask, esize);
  const auto low = static_cast<uint64_t>(active), high = static_cast<uint64_t>(active >> 64);
  const int last = high != 0 ? 127 - std::countl_zero(high) : 63 - std::countl_zero(low);
  return active == 0 ? -1 : last / esize;
}

#else

unsigned element_count(int esize, const CpuContext* context) {
  return context->vl * 64 / static_cast<unsigned>(esize);
}

bool element_bit(const PredV& predicate, int esize, int e) {
  return model::bit(predicate, static_cast<unsigned>(e * esize / 8));
}

bool group_is_set(const PredV& predicate, int esize, int e) {
  for (int i = e * esize / 8; i < (e + 1) * esize / 8; i++)
    if (model::bit(predicate, static_cast<unsigned>(i)))
      return true;
  return false;
}

Summary summary(const PredV& mask, const PredV& result, int esize, const CpuContext* context) {
  Summary of{};
  for (int e = 0; e < static_cast<int>(element_count(esize, context)); e++)
    if (element_bit(mask, esize, e)) {
      if (!of.active)
        of.first_true = element_bit(result, esize, e);
      of.active = true;
      of.last_set = group_is_set(result, esize, e);
      of.any_set |= of.last_set;
    }
  return of;
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

#endif

void PredSetNC(PredV mask, PredV result, int esize, CpuContext* context) {
  const Summary of = summary(mask, result, esize, context);
  if (!of.active)
    return;
  model::set_flag(context, model::flag_n, of.first_true);
  model::set_flag(context, model::flag_c, !of.last_set);
}

void PredSetNCV(PredV mask, PredV result, int esize, CpuContext* context) {
  const Summary of = summary(mask, result, esize, context);
  model::set_flag(context, model::flag_n, of.first_true);
  model::set_flag(context, model::flag_c, !of.last_set);
  model::set_flag(context, model::flag_v, false);
}

void PredSetNZC(PredV mask, PredV result, int esize, CpuContext* context) {
  const Summary of = summary(mask, result, esize, context);
  model::set_flag(context, model::flag_n, of.first_true);
  model::set_flag(context, model::flag_z, !of.any_set);
  model::set_flag(context, model::flag_c, !of.last_set);
}

void PredSetNZCV(PredV mask, PredV result, int esize, CpuContext* context) {
  PredSetNZC(mask, result, esize, context);
  model::set_flag(context, model::flag_v, false);
}
