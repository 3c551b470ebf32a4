#include "scene/shooting.hpp"

#include <algorithm>

namespace biseam::scene {

using tool::Rgb;

static Rgb developed(const Frame& frame, const Development& how) {
  Rgb picture;
  picture.width = frame.width;
  picture.height = frame.height;
  picture.bytes = develop(frame, how);
  return picture;
}

static Rgb side_by_side(const Rgb& left, const Rgb& right) {
  Rgb both(left.width + right.width, left.height);
  const std::size_t row = std::size_t(left.width) * 3;
  for (std::size_t y = 0; y < std::size_t(left.height); ++y) {
    std::copy_n(&left.bytes[y * row], row, &both.bytes[2 * y * row]);
    std::copy_n(&right.bytes[y * row], row, &both.bytes[(2 * y + 1) * row]);
  }
  return both;
}

Shooting::Shooting(const Rig& rig)
    : rig_(rig),
      lenses_{Fisheye::fitting(0, rig.fisheye_size, rig.field_of_view),
              Fisheye::fitting(1, rig.fisheye_size, rig.field_of_view)},
      place_(rig.placards),
      views_{view_of(PanoramaView{rig.panorama_width, rig.panorama_width / 2}), view_of(lenses_[0], rig.baseline),
             view_of(lenses_[1], rig.baseline)} {
  if (rig.motion.shake != 0 || rig.motion.turn != 0) return;
  for (const View& view : views_) films_.emplace_back(view, place_);
}

Frame Shooting::look(std::size_t camera, int frame, double seconds) const {
  if (!films_.empty()) return films_[camera].picture(place_);
  return render(place_, turned(views_[camera], attitude(rig_.motion, frame, seconds)));
}

Rgb Shooting::take_fisheye(int index, int frame, double seconds) const {
  Frame light = look(std::size_t(1 + index), frame, seconds);
  if (index == 0 && frame >= rig_.light.from) shade(light, rig_.light, lenses_[0]);
  const std::uint64_t seed = 2 * rig_.seed + std::uint64_t(index) + (std::uint64_t(frame) << 40);
  return developed(light, {lens_gain(rig_.light, index, frame, seconds), rig_.noise, seed});
}

Pictures Shooting::take(int frame, double seconds) {
  place_.go_to(seconds);
  Pictures all{developed(look(0, frame, seconds), {}), take_fisheye(0, frame, seconds), take_fisheye(1, frame, seconds)};
  all[3] = side_by_side(all[1], all[2]);
  return all;
}

}  // namespace biseam::scene
