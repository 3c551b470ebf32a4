#include "scene/camera.hpp"

#include "camera/view.hpp"

namespace biseam::scene {
namespace {

// Half a turn about the vertical, which undoes itself.
biseam::Vec3 to_world(Vec3 v) { return {-v.x, v.y, -v.z}; }
Vec3 from_world(const biseam::Vec3& v) { return {-v.x, v.y, -v.z}; }

// The other lens has no say in what one draws.
Projector projector_of(int index, const Lens& lens) { return {Camera{.lens = {lens, lens}}, index}; }

}  // namespace

Vec3 direction_of(double longitude, double latitude) {
  const double level = std::cos(latitude);
  return {std::sin(longitude) * level, std::sin(latitude), std::cos(longitude) * level};
}

Vec3 PanoramaView::direction(Position at) const {
  return from_world(direction_at(biseam::View{width, height, {}}, at.u, at.v));
}

Position PanoramaView::project(Vec3 direction) const {
  const ViewPoint at = shown_at(biseam::View{width, height, {}}, to_world(direction));
  return {at.x, at.y};
}

Fisheye::Fisheye(int index, const Lens& lens) : index_(index), lens_(lens), projector_(projector_of(index, lens)) {}

Fisheye Fisheye::fitting(int index, int size, double field_of_view) {
  return {index, usual_lens(size, size, field_of_view / kDegree)};
}

bool Fisheye::sees(Position at) const {
  return std::hypot(at.u - lens_.cx, at.v - lens_.cy) <= radius(lens_, lens_.fov / 2 * kDegree);
}

Vec3 Fisheye::direction(Position at) const { return from_world(projector_.unproject(at.u, at.v)); }

Position Fisheye::project(Vec3 direction) const {
  const ImagePoint at = projector_.project(to_world(direction));
  return {at.x, at.y};
}

Vec3 Fisheye::pupil(double baseline) const { return {0, 0, (index_ == 0 ? 0.5 : -0.5) * baseline}; }

}  // namespace biseam::scene
