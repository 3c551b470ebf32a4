// From decoded pictures to what a stitcher reads.
#pragma once

#include <string>

#include "biseam/stitcher.hpp"
#include "camera/setup.hpp"
#include "clip/read/pair_reader.hpp"
#include "picture/split.hpp"

namespace biseam::tool {

// How the pictures of a pair become the two of the lenses.
struct PairLayout {
  Layout layout = Layout::side_by_side;
  std::string name;  // of the clip, for messages
};

// The two lenses' pictures as recorded: views of the pair's frames or of memory.  Throws Failure (input) where a half is odd.
std::pair<Nv12View, Nv12View> lens_views(const FramePair& pair, const PairLayout& layout, Nv12 (&memory)[2]);

// The configuration's strides such that pictures like these need not be copied, where they go to the engine as they are.
void adopt_strides(const std::pair<Nv12View, Nv12View>& views, Setup& setup);

// Prepares pair after pair in memory of its own.
class EngineInput {
 public:
  EngineInput(const Setup& setup, const PairLayout& layout);

  // Valid until the next call and as long as the pair.
  std::pair<FisheyePicture, FisheyePicture> prepare(const FramePair& pair);

 private:
  FisheyePicture prepare_lens(int index, const Nv12View& recorded);

  const StitchConfig config_;
  const PairLayout layout_;
  LensPath path_[2];
  Nv12 converted_[2];
  std::vector<std::uint8_t> luma_[2], chroma_[2];  // copies with the configuration's strides
};

}  // namespace biseam::tool
