// The camera of what is to be stitched.
#pragma once

#include <span>
#include <string>

#include "calibration/recorded_pairs.hpp"
#include "profile/settings.hpp"

namespace biseam::tool {

inline constexpr int kUsualPairs = 20;  // of a clip

calibrate::Finding calibrate_pairs(std::span<const RecordedPair> pairs, const calibrate::Options& options);

// The profile of what was found in so many pairs.
std::string profile_of(const calibrate::Finding& finding, std::size_t pairs);

// In place of a profile: what is found, saved under a name unless that is empty; what the circles alone tell, where the
// pictures don't tell enough.  A notice tells which.  name: of the recording.  Throws Failure (input) when a camera that isn't
// found is to be saved.
profile::CameraSettings find_camera(std::span<const RecordedPair> pairs, const std::string& name, const std::string& save);

}  // namespace biseam::tool
