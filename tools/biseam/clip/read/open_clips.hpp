// From the files of a recording to its pairs of pictures.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "clip/read/pair_reader.hpp"
#include "media/lens_streams.hpp"

namespace biseam::tool {

struct ClipFiles {
  std::vector<std::string> paths;  // one with both circles or a stream for each lens, or one for each lens; "-": standard input
  StreamChoice streams;            // of one file
  std::optional<RawVideo> raw;     // given: NV12 without a head
  std::int64_t offset = 0;         // microseconds, added to the times of the second clip
  bool strict = false;             // damage is a Failure
  bool are_known = false;          // what there is to say of their pictures was said
};

// Throws Failure (input, usage).
std::unique_ptr<Container> open_first(const ClipFiles& files);

// The streams that hold a lens each are chosen, and told if they were found: whoever opens the files again does so in silence.
void settle_streams(const Container& first, ClipFiles& files);

// first: the first file, opened.  The streams must be settled.  Throws Failure (input, usage).
PairReader open_clips(const ClipFiles& files, std::unique_ptr<Container> first);

}  // namespace biseam::tool
