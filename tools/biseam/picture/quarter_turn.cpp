#include "picture/quarter_turn.hpp"

#include <cstring>
#include <tuple>
#include <utility>

#include "picture/plane.hpp"

namespace biseam::tool {
namespace {

// The upright plane of a turned one, samples of Bytes bytes.
template <std::size_t Bytes>
void turn_plane(const PlaneView& from, int degrees, std::uint8_t* to) {
  const std::size_t width = from.width / Bytes, height = from.rows;
  const std::size_t out_width = degrees % 180 == 0 ? width : height, out_height = degrees % 180 == 0 ? height : width;
  for (std::size_t y = 0; y < out_height; ++y) {
    for (std::size_t x = 0; x < out_width; ++x) {
      std::size_t u = x, v = y;
      if (degrees == 90) std::tie(u, v) = std::pair(width - 1 - y, x);
      if (degrees == 180) std::tie(u, v) = std::pair(width - 1 - x, height - 1 - y);
      if (degrees == 270) std::tie(u, v) = std::pair(y, height - 1 - x);
      std::memcpy(to + (y * out_width + x) * Bytes, from.data + std::ptrdiff_t(v) * from.stride + std::ptrdiff_t(u * Bytes),
                  Bytes);
    }
  }
}

}  // namespace

void undo_quarter_turn(const Nv12View& picture, int degrees, Nv12& upright) {
  const bool swapped = degrees % 180 != 0;
  upright.resize(swapped ? picture.height : picture.width, swapped ? picture.width : picture.height);
  turn_plane<1>(luma_of(picture), degrees, upright.luma.data());
  turn_plane<2>(chroma_of(picture), degrees, upright.chroma.data());
}

Nv12 undo_quarter_turn(const Nv12View& picture, int degrees) {
  Nv12 upright;
  undo_quarter_turn(picture, degrees, upright);
  return upright;
}

Point undo_quarter_turn(Point point, Size turned, int degrees) {
  switch (degrees) {
    case 90:
      return {point.y, turned.width - 1 - point.x};
    case 180:
      return {turned.width - 1 - point.x, turned.height - 1 - point.y};
    case 270:
      return {turned.height - 1 - point.y, point.x};
    default:
      return point;
  }
}

}  // namespace biseam::tool
