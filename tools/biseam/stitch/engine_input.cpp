#include "stitch/engine_input.hpp"

#include "picture/plane.hpp"
#include "picture/to_nv12.hpp"

namespace biseam::tool {
namespace {

constexpr int kOwnThreads = 1;  // other pictures are prepared meanwhile

// The plane itself where its stride is the wanted one, else a copy.
std::span<const std::uint8_t> with_stride(const PlaneView& plane, std::ptrdiff_t stride, std::vector<std::uint8_t>& copy) {
  const std::size_t bytes = std::size_t(stride) * (plane.rows - 1) + plane.width;
  if (plane.stride == stride) return {plane.data, bytes};
  copy.resize(bytes);
  copy_plane(plane, copy.data(), stride);
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
  return {with_stride(luma_of(view), config_.in_luma_stride, luma_[index]),
          with_stride(chroma_of(view), config_.in_chroma_stride, chroma_[index])};
}

}  // namespace biseam::tool
