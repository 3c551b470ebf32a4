#include "camera/setup.hpp"

#include <algorithm>
#include <cmath>

#include "base/byte_source.hpp"
#include "base/failure.hpp"
#include "base/thread_count.hpp"
#include "picture/quarter_turn.hpp"
#include "profile/read.hpp"

namespace biseam::tool {
namespace {

// Twice the height of a picture, where neither detail nor time is wasted, within what the engine's memory allows.
int natural_width(Size picture) { return std::clamp(picture.height * 2 / 8 * 8, int(profile::kWidthLimits.low), 8192); }

Size upright_size(Size recorded, int mount) { return mount % 180 == 0 ? recorded : Size{recorded.height, recorded.width}; }

// What is wrong with a profile, as the tool says it.
template <class Work>
auto checked(Work work) {
  try {
    return work();
  } catch (const profile::Error& error) {
    throw Failure(ExitCode::settings, error.what());
  }
}

profile::CameraSettings read_profile(const std::string& path) {
  ByteSource source(path);
  const std::vector<std::uint8_t> bytes = source.read_all(profile::kMostBytes + 1);  // one more tells that it is too long
  return checked([&] { return profile::read({bytes.begin(), bytes.end()}, source.name()); });
}

profile::LensSettings lens_settings(const profile::CameraSettings& camera, int index, Size recorded, const std::string& path) {
  const profile::Size size{recorded.width, recorded.height};
  return checked([&] { return profile::scale_lens(camera.lens[index], camera.picture.value_or(size), size, path); });
}

void tell_missing(const Plan& plan) {
  for (int k = 0; k < 2; ++k) {
    if (plan.lens[k].missing < 1) continue;
    notice("lens " + std::to_string(k) + ": the panorama needs up to " + std::to_string(std::lround(plan.lens[k].missing)) +
           " pixels beyond the picture's edge, which is repeated there");
  }
}

}  // namespace

Setup make_setup(const std::string& profile_path, const profile::CameraSettings& given, const Size (&recorded)[2]) {
  const profile::CameraSettings camera = profile_path.empty() ? profile::CameraSettings() : read_profile(profile_path);
  const int width = given.width.value_or(camera.width.value_or(natural_width(recorded[0])));
  Setup setup;
  Lens lenses[2];
  Size sizes[2];
  for (int k = 0; k < 2; ++k) {
    profile::LensSettings settings = lens_settings(camera, k, recorded[k], profile_path);
    profile::replace_settings(settings, given.lens[k]);
    lenses[k] = settle_lens(settings, recorded[k], k);
    setup.mount[k] = settings.mount.value_or(0);
    sizes[k] = upright_size(recorded[k], setup.mount[k]);
  }
  profile::BlendSettings blend = profile::scale_blend(camera.blend, camera.width.value_or(width), width);
  profile::replace_settings(blend, given.blend);
  setup.plan = make_plan(lenses, sizes, blend, width);
  tell_missing(setup.plan);
  for (int k = 0; k < 2; ++k) {
    if (!setup.plan.lens[k].as_is)
      setup.warp[k] = std::make_shared<Warp>(lenses[k], setup.plan.lens[k].target, usual_threads());
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
