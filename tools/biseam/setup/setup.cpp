#include "setup/setup.hpp"

#include <algorithm>

#include "base/byte_source.hpp"
#include "base/failure.hpp"
#include "profile/read.hpp"
#include "setup/lens.hpp"

namespace biseam::tool {
namespace {

// Twice the height of an upright picture: neither detail nor time is wasted.
int natural_width(Size recorded, int mount) {
  const int height = mount % 180 == 0 ? recorded.height : recorded.width;
  return std::clamp(height * 2 / 8 * 8, int(profile::kWidthLimits.low), int(profile::kWidthLimits.high));
}

// What is wrong with a profile, as the tool says it.
template <class Work>
auto checked(Work work) {
  try {
    return work();
  } catch (const profile::Error& error) {
    throw Failure(ExitCode::settings, error.what());
  }
}

profile::LensSettings lens_settings(const profile::CameraSettings& camera, int index, Size recorded, const std::string& path) {
  const profile::Size size{recorded.width, recorded.height};
  return checked([&] { return profile::scale_lens(camera.lens[index], camera.picture.value_or(size), size, path); });
}

}  // namespace

KnownCamera read_camera(const std::string& path) {
  ByteSource source(path);
  const std::vector<std::uint8_t> bytes = source.read_all(profile::kMostBytes + 1);  // one more tells that it is too long
  return {checked([&] { return profile::read({bytes.begin(), bytes.end()}, source.name()); }), path};
}

Setup make_setup(const KnownCamera& known, const profile::CameraSettings& given, const Size (&recorded)[2]) {
  const profile::CameraSettings& camera = known.settings;
  Setup setup;
  setup.profile = known.profile;
  setup.camera.size = sizeof setup.camera;
  setup.camera.baseline = camera.baseline.value_or(0);
  setup.may_lie_apart = camera.baseline != 0.0;
  for (int k = 0; k < 2; ++k) {
    profile::LensSettings settings = lens_settings(camera, k, recorded[k], known.profile);
    profile::replace_settings(settings, given.lens[k]);
    setup.camera.lens[k] = settle_lens(settings, recorded[k], k);
  }
  const int natural = natural_width(recorded[0], setup.camera.lens[0].mount);
  setup.width = given.width.value_or(camera.width.value_or(natural));
  setup.blend = profile::scale_blend(camera.blend, camera.width.value_or(setup.width), setup.width);
  profile::replace_settings(setup.blend, given.blend);
  return setup;
}

}  // namespace biseam::tool
