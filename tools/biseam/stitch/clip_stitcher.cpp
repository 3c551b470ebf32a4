#include "stitch/clip_stitcher.hpp"

extern "C" {
#include <libavutil/imgutils.h>
}

#include "base/failure.hpp"
#include "media/pixel_format.hpp"
#include "stitch/followed.hpp"

namespace biseam::tool {
namespace {

BiseamRange range_of(const Colour& colour) {
  return colour.range == AVCOL_RANGE_JPEG ? BISEAM_RANGE_FULL : BISEAM_RANGE_LIMITED;
}

Size size_of(const BiseamPicture& picture) { return {picture.width, picture.height}; }

}  // namespace

LensPictures::LensPictures(const FramePair& pair, const LensLayout& layout, FrameConverter& converter) {
  for (int k = 0; k < 2 && pair.picture[k]; ++k) {
    frames_[k] = converter.convert(*pair.picture[k], layout.format);
    frames_[k]->chroma_location = layout.siting;
  }
  if (!pair.picture[1]) {
    split(*frames_[0], layout.layout, layout.name, pictures_);
    return;
  }
  for (int k = 0; k < 2; ++k) pictures_[k] = engine_picture(*frames_[k]);
}

LensLayout lens_layout(const ClipJob& job, const FramePair& first, const std::string& name, const Colour& colour) {
  return {job.source.layout, name, working_format(AVPixelFormat(first.picture[0]->format)), colour.siting};
}

SampleKind sample_kind(const BiseamPicture& lens, const Colour& colour, AVRational rate) {
  return {BiseamFormat(lens.format), range_of(colour), engine_transfer(colour.transfer), rate.num > 0 ? av_q2d(rate) : 30};
}

ClipStitcher::ClipStitcher(const ClipJob& job, const KnownCamera& camera, const FramePair& first, const std::string& name,
                           const Colour& colour, AVRational rate, AnalysisReader* analysis)
    : layout_(lens_layout(job, first, name, colour)), group_size_(job.seam_hold), analysis_(analysis) {
  const LensPictures pictures(first, layout_, converter_);
  const auto& [lens0, lens1] = pictures.get();
  setup_ = make_setup(camera, job.source.settings, {size_of(lens0), size_of(lens1)});
  matches_near_ = tool::matches_near(setup_, job.source.engine);
  const SampleKind samples = sample_kind(lens0, colour, rate);
  if (analysis_ != nullptr) {
    auto follower = std::make_unique<RingEngine>(setup_, job.source.engine, samples);
    check_camera(*analysis_, setup_, follower->guide_size());
    follower_ = follower.get();
    engine_ = std::move(follower);
  } else {
    engine_ = open_engine(setup_, job.source.engine, samples);
  }
  format_ = engine_->format() == lens0.format ? layout_.format : AV_PIX_FMT_NV12;
  panoramas_.emplace(size(), format_, colour);
  const auto bytes = [](AVPixelFormat format, Size of) {
    return std::uint64_t(av_image_get_buffer_size(format, of.width, of.height, 1));
  };
  frame_bytes_ = bytes(format_, size()) + bytes(layout_.format, size_of(lens0)) + bytes(layout_.format, size_of(lens1));
}

// The same pictures with the same seams give the same panorama, unless past pictures have a say.
bool ClipStitcher::needs_stitching(const FramePair& pair, bool searches) {
  const bool repeated = pair.picture[0] == last_[0] && pair.picture[1] == last_[1];
  for (int k = 0; k < 2; ++k) last_[k] = pair.is_wanted ? pair.picture[k] : nullptr;
  return !repeated || engine_->history() > 0 || (group_size_ > 1 && searches);
}

void ClipStitcher::follow_analysis(const FramePair& pair, const LensPictures& pictures, const BiseamPicture& panorama) {
  const std::span<const std::uint8_t> guide = guide_of(*analysis_, pair);
  try {
    follower_->follow(pictures.get(), panorama, guide);
  } catch (const Failure& failure) {
    throw Failure(ExitCode::input, analysis_->name() + ": " + failure.what());
  }
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
      const LensPictures pictures(pair, layout_, converter_);
      const BiseamPicture panorama = engine_picture(*frame.panorama);
      if (follower_ != nullptr) {
        follow_analysis(pair, pictures, panorama);
      } else {
        engine_->stitch(pictures.get(), panorama, searches ? Seams::fresh : Seams::kept);
      }
      frame.seams = engine_->seam_path();
    }
  }
  frame.pair = std::move(pair);
  for (auto& picture : frame.pair.picture) picture.reset();
  return frame;
}

}  // namespace biseam::tool
