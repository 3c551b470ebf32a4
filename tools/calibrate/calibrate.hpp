// What a camera is like, from pictures that it took.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "profile/settings.hpp"

namespace biseam::calibrate {

// One line that says why the pictures don't tell what the camera is like.
class Refusal : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Runs work(0) to work(pieces - 1), in any order, on any threads.
using ShareWork = std::function<void(int pieces, const std::function<void(int)>& work)>;

// Luma of a picture as it was recorded, 8 bits, rows so many bytes apart.
struct Luma {
  const std::uint8_t* bytes = nullptr;
  int width = 0, height = 0;
  std::ptrdiff_t stride = 0;
};

// What both lenses recorded at the same time.
struct LumaPair {
  Luma lens[2];
};

struct Options {
  std::optional<profile::CameraSettings> start;  // a guess of the camera, which has its mounts
  bool in_lens = false;                          // a camera that doesn't turn enough to see within its lenses is refused
  bool hold_scale = false, hold_k = false, hold_centre = false, hold_turn = false;  // of the start
};

struct Finding;

// All pictures of one size, at least one pair; the bytes are read during the call only.  The same pictures give the same
// finding, however the work is shared.  Throws Refusal.
Finding calibrate(const std::vector<LumaPair>& pairs, const Options& options, const ShareWork& share_work);

// What the image circles tell alone: centres, and the scale if they end at a usual angle of view.  Nothing where they are not
// found, or don't go together.
profile::CameraSettings circles(const std::vector<LumaPair>& pairs, const ShareWork& share_work);

}  // namespace biseam::calibrate
