#include "frame/blend/workspace.hpp"

namespace biseam {

ByteImage Workspace::level(Pyramids pyramid, int k) const {
  const BlendImage& image = level_of(instance_, pyramid, k);
  return {reinterpret_cast<uint8_t*>(image.data[0]), image.width, image.height};
}

// From a whole sample on.
uint16_t* Workspace::sums(Pyramids pyramid) const {
  const BlendImage& image = instance_.levels[pyramid][0];
  const ptrdiff_t samples = ptrdiff_t{image.height} * image.stride;
  return reinterpret_cast<uint16_t*>(image.data[0] + (samples + 3) / 4);
}

SearchMemory search_memory(const BlendInstance& instance) {
  constexpr int64_t kAlignment = 64;
  uint8_t* const first = reinterpret_cast<uint8_t*>(instance.strip[0].data[0]);
  const int64_t bytes = reinterpret_cast<uint8_t*>(instance.gray[0].data) - first;
  const int64_t lost = -reinterpret_cast<intptr_t>(first) & (kAlignment - 1);
  return {first + lost, bytes - lost};
}

}  // namespace biseam
