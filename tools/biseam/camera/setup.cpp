#include "camera/setup.hpp"

#include <algorithm>
#include <cmath>
#include <thread>

#include "camera/profile.hpp"
#include "camera/quarter_turn.hpp"
#include "failure.hpp"

namespace biseam::tool {
namespace {

// Twice the height of a picture, where neither detail nor time is wasted, within what the engine's memory allows.
int natural_width(Size picture) { return std::clamp(picture.height * 2 / 8 * 8, int(kWidthLimits.low), 8192); }

Size upright_size(Size recorded, int mount) { return mount % 180 == 0 ? recorded : Size{recorded.height, recorded.width}; }

void tell_missing(const Plan& plan) {
  for (int k = 0; k < 2; ++k) {
    if (plan.lens[k].missing < 1) continue;
    notice("lens " + std::to_string(k) + ": the panorama needs up to " + std::to_string(std::lround(plan.lens[k].missing)) +
           " pixels beyond the picture's edge, which is repeated there");
  }
}

}  // namespace

Setup make_setup(const std::string& profile_path, const CameraSettings& given, const Size (&recorded)[2]) {
  CameraSettings profile;
  if (!profile_path.empty()) profile = read_profile(profile_path);
  const int width = given.width.value_or(profile.width.value_or(natural_width(recorded[0])));
  Setup setup;
  Lens lenses[2];
  Size sizes[2];
  for (int k = 0; k < 2; ++k) {
    LensSettings settings = scale_lens(profile.lens[k], profile.picture.value_or(recorded[k]), recorded[k], profile_path);
    replace_settings(settings, given.lens[k]);
    lenses[k] = settle_lens(settings, recorded[k], k);
    setup.mount[k] = settings.mount.value_or(0);
    sizes[k] = upright_size(recorded[k], setup.mount[k]);
  }
  BlendSettings blend = scale_blend(profile.blend, profile.width.value_or(width), width);
  replace_settings(blend, given.blend);
  setup.plan = make_plan(lenses, sizes, blend, width);
  tell_missing(setup.plan);
  const int threads = std::clamp(int(std::thread::hardware_concurrency()), 1, 16);
  for (int k = 0; k < 2; ++k) {
    if (!setup.plan.lens[k].as_is) setup.warp[k] = std::make_shared<Warp>(lenses[k], setup.plan.lens[k].target, threads);
  }
  return setup;
}

LensPath::LensPath(const Setup& setup, int index, int threads)
    : mount_(setup.mount[index]), threads_(threads), warp_(setup.warp[index]) {}

Nv12View LensPath::apply(const Nv12View& recorded) {
  Nv12View picture = recorded;
  if (mount_ != 0) {
    undo_quarter_turn(picture, mount_, upright_);
    picture = upright_;
  }
  if (warp_) {
    warp_->apply(picture, warped_, threads_);
    picture = warped_;
  }
  return picture;
}

}  // namespace biseam::tool
