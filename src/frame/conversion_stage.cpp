#include "frame/stages.hpp"

#include "base/threads.hpp"
#include "frame/bands/band_bytes.hpp"
#include "frame/bands/whole_band.hpp"

namespace biseam {

namespace {

struct ConversionTask {
  StitchEngine* engine;
  const FramePlan* plan;
  int band;
};

void* run_conversion(void* task) {
  const auto [engine, plan, band] = *static_cast<const ConversionTask*>(task);
  if (plan->by_bytes[band / 2]) {
    convert_to_bytes(*engine, band, plan->format);
  } else {
    convert_to_integers(*engine, band, plan->format);
  }
  return nullptr;
}

}  // namespace

void conversion_stage(StitchEngine& engine, const FramePlan& plan) {
  ConversionTask conversions[4];
  ThreadTask tasks[4];
  for (int k = 0; k < 4; ++k) {
    conversions[k] = {&engine, &plan, k};
    tasks[k] = {run_conversion, &conversions[k]};
  }
  run_together(tasks, 4);
}

}  // namespace biseam
