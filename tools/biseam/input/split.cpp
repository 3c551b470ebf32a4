#include "input/split.hpp"

#include <algorithm>

#include "failure.hpp"

namespace biseam::tool {
namespace {

void copy_columns(const std::vector<std::uint8_t>& from, std::size_t from_width, std::size_t first,
                  std::vector<std::uint8_t>& to, std::size_t width) {
  for (std::size_t row = 0; row * width < to.size(); ++row) {
    std::copy_n(from.begin() + std::ptrdiff_t(row * from_width + first), width, to.begin() + std::ptrdiff_t(row * width));
  }
}

}  // namespace

std::pair<Nv12, Nv12> split_side_by_side(const Nv12& picture, const std::string& name) {
  if (picture.width % 4 != 0) {
    throw Failure(ExitCode::input,
                  name + ": two circles side by side need a width divisible by 4, it is " + std::to_string(picture.width));
  }
  const int half = picture.width / 2;
  std::pair<Nv12, Nv12> halves{Nv12(half, picture.height), Nv12(half, picture.height)};
  for (Nv12* to : {&halves.first, &halves.second}) {
    const std::size_t first = to == &halves.first ? 0 : std::size_t(half);
    copy_columns(picture.luma, std::size_t(picture.width), first, to->luma, std::size_t(half));
    copy_columns(picture.chroma, std::size_t(picture.width), first, to->chroma, std::size_t(half));
  }
  return halves;
}

}  // namespace biseam::tool
