#include "stitch/clip_analyser.hpp"

extern "C" {
#include <libavutil/imgutils.h>
}

namespace biseam::tool {
namespace {

AnalysisHead head_of(const Setup& setup, const EngineOptions& options, const Size (&lens)[2], const ClipMark& mark) {
  AnalysisHead head;
  head.panorama = {setup.width, setup.width / 2};
  head.lens[0] = lens[0];
  head.lens[1] = lens[1];
  const BiseamSeam searched = options.steady_seams ? BISEAM_SEAM_STEADY : BISEAM_SEAM_SEARCH;
  head.seam = setup.blend.search.value_or(true) ? searched : BISEAM_SEAM_MIDDLE;
  head.light = options.light == BISEAM_LIGHT_MATCH;
  head.near = matches_near(setup, options);
  head.camera = camera_mark(setup.camera);
  head.clip = mark;
  return head;
}

}  // namespace

ClipAnalyser::ClipAnalyser(const ClipJob& job, const KnownCamera& camera, const FramePair& first, const std::string& name,
                           const Colour& colour, AVRational rate, const ClipMark& mark, AnalysisWriter& writer)
    : layout_(lens_layout(job, first, name, colour)), writer_(writer) {
  const LensPictures pictures(first, layout_, converter_);
  const auto& [lens0, lens1] = pictures.get();
  const Size sizes[2] = {{lens0.width, lens0.height}, {lens1.width, lens1.height}};
  const Setup setup = make_setup(camera, job.source.settings, sizes);
  engine_.emplace(setup, job.source.engine, sample_kind(lens0, colour, rate));
  for (const Size& size : sizes) {
    frame_bytes_ += std::uint64_t(av_image_get_buffer_size(layout_.format, size.width, size.height, 1));
  }
  reach_ = std::size_t(engine_->guide_reach());
  smoothed_.resize(engine_->guide_size());
  AnalysisHead head = head_of(setup, job.source.engine, sizes, mark);
  head.guide_bytes = std::uint32_t(engine_->guide_size());
  writer_.begin(head);
}

void ClipAnalyser::measure(const FramePair& pair) {
  if (!pair.picture[0]) return;
  const LensPictures pictures(pair, layout_, converter_);
  Measured measured{pair.clip_time, pair.is_wanted, std::vector<std::uint8_t>(engine_->guide_size())};
  engine_->measure(pictures.get(), measured.guide);
  measured_.push_back(std::move(measured));
  if (measured_.size() - next_ > reach_) smooth_next();
}

void ClipAnalyser::finish() {
  while (next_ < measured_.size()) smooth_next();
  writer_.finish();
}

void ClipAnalyser::smooth_next() {
  const Measured& measured = measured_[next_];
  if (measured.is_wanted) {
    std::vector<const void*> guides;
    for (const Measured& one : measured_) guides.push_back(one.guide.data());
    engine_->smooth(guides, int(next_), smoothed_);
    writer_.add(measured.time, smoothed_);
  }
  ++next_;
  if (next_ > reach_) {
    measured_.pop_front();
    --next_;
  }
}

}  // namespace biseam::tool
