#include "ring/engine_parts.hpp"
#include "ring/guide/guide.hpp"

namespace biseam::ring {

void Engine::follow(const GuideReader& guide) noexcept {
  if (match_ != nullptr) {
    LightFrame light;
    for (int s = 0; s < kSectors; ++s) light.sectors[s] = guide.sector(s);
    follow_light(*match_, ring_.strip, light);
  }
  if (near_ != nullptr) {
    int16_t disparities[kMostSearchLength];
    for (int t = 0; t < near_->shape.length; ++t) disparities[t] = static_cast<int16_t>(guide.disparity(t));
    follow_near(*near_, disparities);
  }
  if (config_.seam != SeamMode::search) return;
  for (int t = 0; t < ring_.strip.length; ++t) strip_views_.path[t] = guide.row(t) * (65536 / kGuideRow);
  strips_.seam.mode = SeamMode::given;
}

void Engine::write_guide(bool starts, GuideWriter& guide) const noexcept {
  guide.starts(starts);
  if (match_ != nullptr) {
    for (int s = 0; s < kSectors; ++s) guide.sector(s, match_->frame.sectors[s]);
  }
  if (near_ != nullptr) {
    for (int t = 0; t < near_->shape.length; ++t) guide.disparity(t, near_->disparities[t]);
  }
  if (config_.seam == SeamMode::search) {
    for (int t = 0; t < ring_.strip.length; ++t) guide.row(t, strip_views_.rows[t] * kGuideRow);
  }
  guide.finish();
}

void Engine::measure(const PicturePlanes fisheyes[2], void* guide) noexcept {
  describe_fisheyes(fisheyes);
  describe_strips(fisheyes);
  run_step(StripStep::reduce);
  run_step(StripStep::unroll);
  const bool starts = watch_scene();
  find_light();
  find_near();
  run_step(StripStep::compare);
  ring::run_strip_part(strips_, StripStep::seam, 0);  // the path
  GuideWriter writer(guide_shape(), guide);
  write_guide(starts, writer);
}

GuideShape guide_shape(const Engine& engine) noexcept { return engine.guide_shape(); }

void measure(Engine& engine, const PicturePlanes fisheyes[2], void* guide) noexcept { engine.measure(fisheyes, guide); }

}  // namespace biseam::ring
