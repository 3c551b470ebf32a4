#include "stitch/clip_stitcher.hpp"

#include "media/pixel_format.hpp"
#include "picture/to_nv12.hpp"

namespace biseam::tool {
namespace {

// A view of the frame's planes, or of memory.
Libav<AVFrame> as_nv12(const AVFrame& frame, AVChromaLocation siting, Nv12& memory) {
  const Nv12View view = nv12_of(frame, memory);
  Libav<AVFrame> out(av_frame_alloc());
  if (!out) throw std::bad_alloc();
  out->format = AV_PIX_FMT_NV12;
  out->width = view.width;
  out->height = view.height;
  out->chroma_location = siting;
  out->data[0] = const_cast<std::uint8_t*>(view.luma);
  out->data[1] = const_cast<std::uint8_t*>(view.chroma);
  out->linesize[0] = int(view.luma_stride);
  out->linesize[1] = int(view.chroma_stride);
  return out;
}

BiseamRange range_of(const Colour& colour) {
  return colour.range == AVCOL_RANGE_JPEG ? BISEAM_RANGE_FULL : BISEAM_RANGE_LIMITED;
}

Size size_of(const BiseamPicture& picture) { return {picture.width, picture.height}; }

}  // namespace

LensPictures::LensPictures(const FramePair& pair, Layout layout, const std::string& name, AVChromaLocation siting) {
  frames_[0] = as_nv12(*pair.picture[0], siting, memory_[0]);
  if (!pair.picture[1]) {
    split(*frames_[0], layout, name, pictures_);
    return;
  }
  frames_[1] = as_nv12(*pair.picture[1], siting, memory_[1]);
  for (int k = 0; k < 2; ++k) pictures_[k] = engine_picture(*frames_[k]);
}

ClipStitcher::ClipStitcher(const ClipJob& job, const FramePair& first, const std::string& name, const Colour& colour)
    : layout_(job.source.layout), name_(name), siting_(colour.siting), group_size_(job.seam_hold) {
  const LensPictures pictures(first, layout_, name_, siting_);
  const auto& [lens0, lens1] = pictures.get();
  setup_ = make_setup(job.source.profile, job.source.settings, {size_of(lens0), size_of(lens1)});
  engine_ = open_engine(setup_, job.source.engine, {BiseamFormat(lens0.format), range_of(colour)});
  panoramas_.emplace(size());
  const std::uint64_t pixels =
      std::uint64_t(size().width) * std::uint64_t(size().height) + 2 * std::uint64_t(lens0.width) * std::uint64_t(lens0.height);
  frame_bytes_ = pixels * 3 / 2;
}

// The same pictures with the same seams give the same panorama.
bool ClipStitcher::needs_stitching(const FramePair& pair, bool searches) {
  const bool repeated = pair.picture[0] == last_[0] && pair.picture[1] == last_[1];
  for (int k = 0; k < 2; ++k) last_[k] = pair.is_wanted ? pair.picture[k] : nullptr;
  return !repeated || (group_size_ > 1 && searches);
}

StitchedFrame ClipStitcher::stitch(FramePair pair) {
  StitchedFrame frame;
  if (pair.picture[0]) {
    const std::int64_t group = pair.number / group_size_;
    const bool searches = group_ != group;
    group_ = group;
    frame.is_picture = pair.is_wanted;
    if (needs_stitching(pair, searches)) {
      frame.panorama = panoramas_->frame();
      frame.panorama->chroma_location = siting_;
      const LensPictures pictures(pair, layout_, name_, siting_);
      engine_->stitch(pictures.get(), engine_picture(*frame.panorama), searches ? Seams::fresh : Seams::kept);
      frame.seams = engine_->seam_path();
    }
  }
  frame.pair = std::move(pair);
  for (auto& picture : frame.pair.picture) picture.reset();
  return frame;
}

}  // namespace biseam::tool
