#include "stitch/engine.hpp"

#include "stitch/exact_engine.hpp"
#include "stitch/ring_engine.hpp"

namespace biseam::tool {

std::unique_ptr<Engine> open_engine(const Setup& setup, const EngineOptions& options, SampleKind samples) {
  if (options.kind == EngineKind::exact) return std::make_unique<ExactEngine>(setup, samples.format);
  return std::make_unique<RingEngine>(setup, options, samples);
}

}  // namespace biseam::tool
