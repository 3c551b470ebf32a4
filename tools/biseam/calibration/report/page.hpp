// One page that shows how a camera was found, and how well.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "calibrate/finding.hpp"
#include "calibration/recorded_pairs.hpp"

namespace biseam::tool {

// HTML with everything in it: nothing is loaded from anywhere, and no script runs.  files: what was looked at, by name.
// profile: what was written.  At least one pair.  Throws Failure when the camera can't be stitched.
std::string report_page(const calibrate::Finding& finding, std::span<const RecordedPair> pairs,
                        const std::vector<std::string>& files, const std::string& profile);

}  // namespace biseam::tool
