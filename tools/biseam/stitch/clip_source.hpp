// The clips of a run, opened and looked at before the work starts.
#pragma once

#include <deque>
#include <memory>
#include <optional>

#include "clip/read/open_clips.hpp"
#include "clip/read/part_reader.hpp"
#include "media/container.hpp"
#include "stitch/job.hpp"

namespace biseam::tool {

// The pairs of a part, the first one looked at before the others are read.
class ClipSource {
 public:
  // Throws Failure when there is no picture, or when those of the clips can't be used together.
  ClipSource(PairReader clips, const ClipJob& job);

  // Until it is given out by next().
  const FramePair& first_picture() const { return read_.back(); }
  const PartReader& part() const { return reader_; }
  const PairReader& clips() const { return reader_.pairs(); }

  std::optional<FramePair> next();

 private:
  bool has_picture() const { return !read_.empty() && read_.back().picture[0] != nullptr; }
  [[noreturn]] void refuse_emptiness(const PartRange& range) const;

  PartReader reader_;
  std::deque<FramePair> read_;  // up to the first picture
};

ClipFiles files_of(const ClipJob& job);

// Looked for all over the clips, whatever part of them is wanted; of a pipe only the first picture of the part can be had.
KnownCamera camera_of(const StitchSource& job, const ClipFiles& files, const ClipSource& source);

// How many pictures there will be, as far as the clip says.
std::optional<std::int64_t> expected_frames(const PartReader& part, const PartRange& range);

}  // namespace biseam::tool
