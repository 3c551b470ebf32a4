// What is looked at to find a camera: the luma of pictures, or of pictures spread over a clip.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "calibrate/calibrate.hpp"
#include "clip/read/open_clips.hpp"
#include "media/colour.hpp"
#include "picture/picture.hpp"
#include "picture/split.hpp"

namespace biseam::tool {

// What both lenses recorded at the same time.
class RecordedPair {
 public:
  // second: none where the first has both circles, laid out so; name: of the file, for messages.  Throws Failure (input).
  RecordedPair(const AVFrame& first, const AVFrame* second, Layout layout, const std::string& name);

  calibrate::LumaPair luma() const;

  // In NV12, as long as this lives.
  const BiseamPicture (&pictures() const)[2] { return pictures_; }
  Colour colour() const { return colour_of(*frames_[0]); }
  Rgb colours(int lens) const;

 private:
  Libav<AVFrame> frames_[2];
  BiseamPicture pictures_[2];
};

// So many pictures at even distances, or as many as there are, of clips that can be sought and whose streams are settled; the
// same ones whatever part of the clips is stitched.  Throws Failure.
std::vector<RecordedPair> read_clip_pairs(const ClipFiles& files, Layout layout, int count);

// Pictures with both circles, or one for each lens, lens 0's before lens 1's, any number of pairs.  Throws Failure.
std::vector<RecordedPair> read_picture_pairs(std::span<const std::string> paths, Layout layout);

}  // namespace biseam::tool
