#include "stitch/engine_input.hpp"

#include <cstring>

#include "picture/to_nv12.hpp"

namespace biseam::tool {
namespace {

constexpr int kOwnThreads = 1;  // other pictures are prepared meanwhile

std::size_t plane_bytes(std::ptrdiff_t stride, int rows, int width) {
  return std::size_t(stride) * std::size_t(rows - 1) + std::size_t(width);
}

std::span<const std::uint8_t> plane(const std::uint8_t* from, std::ptrdiff_t from_stride, int width, int rows,
                                    std::ptrdiff_t stride, std::vector<std::uint8_t>& copy) {
  const std::size_t bytes = plane_bytes(stride, rows, width);
  if (from_stride == stride) return {from, bytes};
  copy.resize(bytes);
  for (int y = 0; y < rows; ++y) std::memcpy(&copy[std::size_t(y * stride)], from + y * from_stride, std::size_t(width));
  return copy;
}

}  // namespace

std::pair<Nv12View, Nv12View> lens_views(const FramePair& pair, const PairLayout& layout, Nv12 (&memory)[2]) {
  const Nv12View first = nv12_of(*pair.picture[0], memory[0]);
  if (!pair.picture[1]) return split(first, layout.layout, layout.name);
  return {first, nv12_of(*pair.picture[1], memory[1])};
}

void adopt_strides(const std::pair<Nv12View, Nv12View>& views, Setup& setup) {
  const auto& [a, b] = views;
  const bool as_is = setup.mount[0] == 0 && setup.mount[1] == 0 && !setup.warp[0] && !setup.warp[1];
  if (!as_is || a.luma_stride != b.luma_stride || a.chroma_stride != b.chroma_stride || a.luma_stride <= 0) return;
  setup.plan.config.in_luma_stride = int(a.luma_stride);
  setup.plan.config.in_chroma_stride = int(a.chroma_stride);
}

EngineInput::EngineInput(const Setup& setup, const PairLayout& layout)
    : config_(setup.plan.config), layout_(layout), path_{LensPath(setup, 0, kOwnThreads), LensPath(setup, 1, kOwnThreads)} {}

std::pair<FisheyePicture, FisheyePicture> EngineInput::prepare(const FramePair& pair) {
  const auto [first, second] = lens_views(pair, layout_, converted_);
  return {prepare_lens(0, first), prepare_lens(1, second)};
}

FisheyePicture EngineInput::prepare_lens(int index, const Nv12View& recorded) {
  const Nv12View view = path_[index].apply(recorded);
  const int width = config_.in_w, rows = config_.in_h;
  return {plane(view.luma, view.luma_stride, width, rows, config_.in_luma_stride, luma_[index]),
          plane(view.chroma, view.chroma_stride, width, rows / 2, config_.in_chroma_stride, chroma_[index])};
}

}  // namespace biseam::tool
