// Everything that the virtual camera takes at one instant.
#pragma once

#include <array>
#include <cstdint>

#include "picture/picture.hpp"
#include "scene/film.hpp"
#include "scene/lens_light.hpp"
#include "scene/motion.hpp"

namespace biseam::scene {

struct Rig {
  int panorama_width, fisheye_size;  // pixels
  double field_of_view;              // radians
  double baseline = 0;               // metres
  double placards = 0;               // metres to those on the seams; 0: none
  LightDifference light = {};
  Motion motion = {};
  double noise = 0;  // standard deviation, code values
  std::uint64_t seed = 1;
};

// The true panorama, both fisheyes, and these side by side.
using Pictures = std::array<tool::Rgb, 4>;
inline constexpr const char* kPictureNames[4] = {"truth", "fisheye0", "fisheye1", "side_by_side"};

class Shooting {
 public:
  explicit Shooting(const Rig& rig);

  const Fisheye& lens(int index) const { return lenses_[index]; }

  // The same for the same number and time, whatever was taken before.  Noise is another one in every frame.
  Pictures take(int frame, double seconds);

 private:
  Frame look(std::size_t camera, int frame, double seconds) const;
  tool::Rgb take_fisheye(int index, int frame, double seconds) const;

  const Rig rig_;
  const Fisheye lenses_[2];
  Place place_;
  const View views_[3];      // the truth's and the lenses'
  std::vector<Film> films_;  // theirs, where the camera stands still
};

}  // namespace biseam::scene
