#include "calibration/find_camera.hpp"

#include <cstdio>

#include "base/failure.hpp"
#include "base/replace_file.hpp"
#include "base/share_work.hpp"
#include "base/size.hpp"
#include "base/thread_count.hpp"
#include "calibrate/finding.hpp"
#include "profile/write.hpp"

namespace biseam::tool {
namespace {

void share(int pieces, const std::function<void(int)>& work) { share_work(pieces, usual_threads(), work); }

std::vector<calibrate::LumaPair> lumas_of(std::span<const RecordedPair> pairs) {
  std::vector<calibrate::LumaPair> lumas;
  for (const RecordedPair& pair : pairs) lumas.push_back(pair.luma());
  return lumas;
}

std::string pairs_text(std::size_t pairs) {
  return pairs == 1 ? "one pair of pictures" : std::to_string(pairs) + " pairs of pictures";
}

Size size_of(const BiseamPicture& picture) { return {picture.width, picture.height}; }

// Whatever is wrong with such pictures, a guess of the camera makes it no better.
void refuse_two_sizes(const RecordedPair& pair, const std::string& name) {
  const Size first = size_of(pair.pictures()[0]), second = size_of(pair.pictures()[1]);
  if (first == second) return;
  throw Failure(ExitCode::input, name + ": lens 0's picture has " + size_text(first) + " pixels, lens 1's " +
                                     size_text(second) + ", and they don't both show their circle: are they of one camera?");
}

}  // namespace

calibrate::Finding calibrate_pairs(std::span<const RecordedPair> pairs, const calibrate::Options& options) {
  return calibrate::calibrate(lumas_of(pairs), options, share);
}

std::string profile_of(const calibrate::Finding& finding, std::size_t pairs) {
  return profile::write(finding.settings, "Found in " + pairs_text(pairs) + ".\n" + finding.summary);
}

profile::CameraSettings find_camera(std::span<const RecordedPair> pairs, const std::string& name, const std::string& save) {
  try {
    const calibrate::Finding finding = calibrate_pairs(pairs, {});
    char line[200];
    std::snprintf(line, sizeof line,
                  "camera found in %s: %.0f %% of the matches agree; far things meet at the seams within %.2f pixels of a "
                  "panorama 3840 wide",
                  pairs_text(pairs.size()).c_str(), 100 * finding.kept, 2 * finding.seam_deviation);
    notice(line);
    if (!save.empty()) replace_file(save, text_bytes(profile_of(finding, pairs.size())));
    return finding.settings;
  } catch (const calibrate::Refusal& refusal) {
    if (!save.empty()) throw Failure(ExitCode::input, name + ": no camera to save: " + refusal.what());
    const profile::CameraSettings settings = calibrate::circles(lumas_of(pairs), share);
    if (!settings.lens[0].p) refuse_two_sizes(pairs.front(), name);
    const std::string assumed = settings.lens[0].p ? "its image circles are, and taken for 195 degrees: "
                                                   : "lenses of 195 degrees are assumed, with circles that fit the pictures: ";
    notice(name + ": the camera is not found, " + assumed + refusal.what());
    return settings;
  }
}

}  // namespace biseam::tool
