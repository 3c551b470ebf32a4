#include "picture/split.hpp"

#include "base/failure.hpp"

namespace biseam::tool {

std::pair<Nv12View, Nv12View> split(const Nv12View& picture, Layout layout, const std::string& name) {
  const bool across = layout == Layout::side_by_side;
  const int side = across ? picture.width : picture.height;
  if (side % 4 != 0) {
    throw Failure(ExitCode::input, name + ": two circles " +
                                       (across ? "side by side need a width" : "one above the other need a height") +
                                       " divisible by 4, it is " + std::to_string(side));
  }
  std::pair<Nv12View, Nv12View> halves{picture, picture};
  Nv12View& second = halves.second;
  if (across) {
    halves.first.width = second.width = side / 2;
    second.luma += side / 2;
    second.chroma += side / 2;
  } else {
    halves.first.height = second.height = side / 2;
    second.luma += side / 2 * picture.luma_stride;
    second.chroma += side / 4 * picture.chroma_stride;
  }
  return halves;
}

}  // namespace biseam::tool
