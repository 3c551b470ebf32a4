#include "ring/guide/smooth.hpp"

#include <algorithm>
#include <cstdlib>

#include "ring/strip/seam_memory.hpp"

namespace biseam::ring {

namespace {

// Logs farther from their median are of another light: 4.4 % of the codes above black.
constexpr int32_t kSameLight = kLogOne / 16;
constexpr int kMostWindow = 2 * LightMemory::kMostFrames + 1;
static_assert(NearMemory::kMostFrames <= LightMemory::kMostFrames);

// Frames [begin, end) of one scene, and the one that is looked at.
struct Scene {
  const GuideShape& shape;
  const void* const* guides;
  int begin, end, index;

  GuideReader at(int frame) const noexcept { return {shape, guides[frame]}; }
  int first(int reach) const noexcept { return std::max(begin, index - reach); }
  int last(int reach) const noexcept { return std::min(end - 1, index + reach); }
};

Scene scene_of(const GuideShape& shape, const void* const* guides, int count, int index) noexcept {
  const int reach = guide_reach(shape), least = std::max(0, index - reach), most = std::min(count, index + reach + 1);
  Scene scene{shape, guides, index, index + 1, index};
  while (scene.begin > least && !scene.at(scene.begin).starts()) --scene.begin;
  while (scene.end < most && !scene.at(scene.end).starts()) ++scene.end;
  return scene;
}

// A sector in a window of frames.
struct SectorWindow {
  int frames, known;  // known: of them first ones that know something
  SectorLight lights[kMostWindow];
};

int32_t mean_log(const SectorWindow& window, int channel) noexcept {
  int32_t sorted[kMostWindow] = {};
  for (int i = 0; i < window.known; ++i) sorted[i] = window.lights[i].logs[channel];
  std::nth_element(sorted, sorted + window.known / 2, sorted + window.known);
  const int32_t middle = sorted[window.known / 2];
  int64_t sum = 0, count = 0;
  for (int i = 0; i < window.known; ++i) {
    const SectorLight& light = window.lights[i];
    if (std::abs(light.logs[channel] - middle) > kSameLight) continue;
    sum += int64_t{light.count} * (light.logs[channel] - middle);
    count += light.count;
  }
  return middle + static_cast<int32_t>((2 * sum + (sum < 0 ? -count : count)) / (2 * count));
}

SectorLight mean_light(const SectorWindow& window) noexcept {
  SectorLight mean{};
  int64_t count = window.frames / 2;
  for (int i = 0; i < window.known; ++i) {
    count += window.lights[i].count;
    mean.slope_xy += window.lights[i].slope_xy;
    mean.slope_xx += window.lights[i].slope_xx;
  }
  mean.slope_xy /= window.frames;
  mean.slope_xx /= window.frames;
  mean.count = static_cast<int32_t>(count / window.frames);
  if (mean.count == 0) return {};
  for (int c = 0; c < 3; ++c) mean.logs[c] = mean_log(window, c);
  return mean;
}

void smooth_light(const Scene& scene, GuideWriter& smoothed) noexcept {
  const int first = scene.first(scene.shape.light_span), last = scene.last(scene.shape.light_span);
  for (int s = 0; s < kSectors; ++s) {
    SectorWindow window{last - first + 1, 0, {}};
    for (int i = first; i <= last; ++i) {
      const SectorLight light = scene.at(i).sector(s);
      if (light.count > 0) window.lights[window.known++] = light;
    }
    smoothed.sector(s, mean_light(window));
  }
}

void smooth_disparities(const Scene& scene, GuideWriter& smoothed) noexcept {
  const int first = scene.first(scene.shape.near_span), last = scene.last(scene.shape.near_span);
  const int frames = last - first + 1, left_out = frames / 4, middle = frames - 2 * left_out;
  for (int t = 0; t < scene.shape.near_length; ++t) {
    int sorted[kMostWindow], sum = middle / 2;
    for (int i = first; i <= last; ++i) sorted[i - first] = scene.at(i).disparity(t);
    std::sort(sorted, sorted + frames);
    for (int i = left_out; i < left_out + middle; ++i) sum += sorted[i];
    smoothed.disparity(t, sum / middle);
  }
}

void smooth_seam(const Scene& scene, GuideWriter& smoothed) noexcept {
  // Towards a scene's end the last frames that there are.
  constexpr int kAhead = SeamMemory::kFrames - 1;
  const int last = scene.shape.steady_seam ? scene.last(kAhead) : scene.index;
  const int first = scene.shape.steady_seam ? std::max(scene.begin, last - kAhead) : scene.index;
  for (int t = 0; t < scene.shape.strip.length; ++t) {
    int sum = 0;
    for (int i = first; i <= last; ++i) sum += scene.at(i).row(t);
    smoothed.row(t, sum / (last - first + 1));
  }
}

}  // namespace

int guide_reach(const GuideShape& shape) noexcept {
  const int seam = shape.seams && shape.steady_seam ? SeamMemory::kFrames - 1 : 0;
  return std::max({shape.light_span, shape.near_length > 0 ? shape.near_span : 0, seam});
}

void smooth_guide(const GuideShape& shape, const void* const* guides, int count, int index, void* smoothed) noexcept {
  const Scene scene = scene_of(shape, guides, count, index);
  GuideWriter writer(shape, smoothed);
  writer.starts(scene.at(index).starts());
  if (shape.light_span > 0) smooth_light(scene, writer);
  if (shape.near_length > 0) smooth_disparities(scene, writer);
  if (shape.seams) smooth_seam(scene, writer);
  writer.finish();
}

}  // namespace biseam::ring
