#include "calibration/find_camera.hpp"

#include <cstdio>

#include "base/failure.hpp"
#include "base/replace_file.hpp"
#include "base/share_work.hpp"
#include "base/thread_count.hpp"
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

}  // namespace

calibrate::Finding calibrate_pairs(std::span<const RecordedPair> pairs, const calibrate::Options& options) {
  return calibrate::calibrate(lumas_of(pairs), options, share);
}

void save_camera(const std::string& path, const calibrate::Finding& finding, std::size_t pairs) {
  const std::string text = profile::write(finding.settings, "Found in " + pairs_text(pairs) + ".\n" + finding.summary);
  replace_file(path, {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

profile::CameraSettings find_camera(std::span<const RecordedPair> pairs, const std::string& name, const std::string& save) {
  try {
    const calibrate::Finding finding = calibrate_pairs(pairs, {});
    char line[200];
    std::snprintf(line, sizeof line,
                  "camera found in %s: %.0f %% of the matches agree, within %.2f pixels of a panorama 3840 wide in the worst "
                  "eighth of the ring",
                  pairs_text(pairs.size()).c_str(), 100 * finding.kept, finding.most_left);
    notice(line);
    if (!save.empty()) save_camera(save, finding, pairs.size());
    return finding.settings;
  } catch (const calibrate::Refusal& refusal) {
    if (!save.empty()) throw Failure(ExitCode::input, name + ": no camera to save: " + refusal.what());
    notice(name + ": the camera is not found, lenses of 195 degrees are assumed: " + refusal.what());
  }
  return calibrate::circles(lumas_of(pairs), share);
}

}  // namespace biseam::tool
