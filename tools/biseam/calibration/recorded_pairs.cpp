#include "calibration/recorded_pairs.hpp"

#include <algorithm>
#include <new>
#include <optional>

#include "base/failure.hpp"
#include "base/interrupt.hpp"
#include "calibrate/panorama.hpp"
#include "media/frame_converter.hpp"
#include "media/pixel_format.hpp"
#include "picture/frame_over.hpp"
#include "picture/read_picture.hpp"

namespace biseam::tool {
namespace {

// 8 bits of luma are in the first plane of NV12, whatever the working format was.
Libav<AVFrame> nv12_of(const AVFrame& picture, const std::string& name) {
  if (working_format(AVPixelFormat(picture.format)) == AV_PIX_FMT_NONE) {
    throw Failure(ExitCode::input, name + ": pictures of its format can't be used");
  }
  return FrameConverter().convert(picture, AV_PIX_FMT_NV12);
}

calibrate::Luma luma_of(const BiseamPicture& picture) {
  return {static_cast<const std::uint8_t*>(picture.planes[0]), picture.width, picture.height, picture.strides[0]};
}

// The pictures of a clip at ascending times.  Where key frames lie closer together than what is wanted, they are taken;
// otherwise everything up to the time is decoded, once.
class Sampler {
 public:
  explicit Sampler(const ClipFiles& files)
      : reader_(open_clips(files, open_first(files))), scout_(open_clips(known(files), open_first(files))) {}

  // The times that the clip says it has, in microseconds; empty: it doesn't.
  struct Span {
    std::int64_t begin, duration;
  };
  std::optional<Span> span() const {
    const Container& container = reader_.clip(0).container();
    if (container->duration <= 0) return std::nullopt;
    return Span{container->start_time == AV_NOPTS_VALUE ? 0 : container->start_time, container->duration};
  }

  // The first one.
  std::optional<FramePair> first() { return next_picture(reader_); }

  // One near the time that was not given yet.
  std::optional<FramePair> near(std::int64_t time) {
    if (time - kLeastStepBack > last_) {
      scout_.start_at(time);
      std::optional<FramePair> key = next_picture(scout_);
      if (key && time_of(*key, scout_) > last_) {
        std::swap(reader_, scout_);
        last_ = time_of(*key, reader_);
        return key;
      }
    }
    while (std::optional<FramePair> pair = next_picture(reader_)) {
      last_ = time_of(*pair, reader_);
      if (last_ + in_microseconds(pair->duration, reader_) > time) return pair;
    }
    return std::nullopt;
  }

 private:
  static ClipFiles known(ClipFiles files) {
    files.are_known = true;
    return files;
  }

  static constexpr std::int64_t kLeastStepBack = AV_TIME_BASE;  // of what start_at() finds

  static std::int64_t in_microseconds(std::int64_t time, const PairReader& reader) {
    return av_rescale_q(time, reader.clip(0).stream().time_base, kMicroseconds);
  }
  static std::int64_t time_of(const FramePair& pair, const PairReader& reader) { return in_microseconds(pair.time, reader); }

  static std::optional<FramePair> next_picture(PairReader& reader) {
    while (std::optional<FramePair> pair = reader.next()) {
      if (pair->picture[0]) return pair;
    }
    if (interrupted()) throw Failure(ExitCode::interrupted, "interrupted while the camera was looked for");
    return std::nullopt;
  }

  PairReader reader_, scout_;  // everything up to what was given last; what a key frame may give next
  std::int64_t last_ = INT64_MIN;
};

}  // namespace

RecordedPair::RecordedPair(const AVFrame& first, const AVFrame* second, Layout layout, const std::string& name) {
  frames_[0] = nv12_of(first, name);
  if (second == nullptr) {
    split(*frames_[0], layout, name, pictures_);
    if (layout == Layout::automatic && first.width > first.height && calibrate::is_panorama(luma())) {
      throw Failure(ExitCode::input, name +
                                         ": is a finished panorama: its sides meet, and its first and last row show one place "
                                         "each; --layout side-by-side takes it for two fisheyes");
    }
  } else {
    frames_[1] = nv12_of(*second, name);
    for (int k = 0; k < 2; ++k) pictures_[k] = engine_picture(*frames_[k]);
  }
}

calibrate::LumaPair RecordedPair::luma() const { return {{luma_of(pictures_[0]), luma_of(pictures_[1])}}; }

Rgb RecordedPair::colours(int lens) const {
  const BiseamPicture& picture = pictures_[lens];
  Libav<AVFrame> view(av_frame_alloc());
  if (!view) throw std::bad_alloc();
  set_colour(*view, colour());
  view->format = AV_PIX_FMT_NV12;
  view->width = picture.width;
  view->height = picture.height;
  for (int plane = 0; plane < 2; ++plane) {
    view->data[plane] = static_cast<std::uint8_t*>(picture.planes[plane]);
    view->linesize[plane] = int(picture.strides[plane]);
  }
  return rgb_of(*view);
}

std::vector<RecordedPair> read_clip_pairs(const ClipFiles& files, Layout layout, int count) {
  Sampler sampler(files);
  std::vector<RecordedPair> pairs;
  const auto take = [&](const std::optional<FramePair>& pair) {
    if (pair) pairs.emplace_back(*pair->picture[0], pair->picture[1].get(), layout, files.paths.front());
  };
  if (const std::optional<Sampler::Span> span = sampler.span()) {
    for (int i = 0; i < count; ++i) take(sampler.near(span->begin + span->duration * (2 * i + 1) / (2 * count)));
  }
  if (pairs.empty()) take(sampler.first());
  return pairs;
}

std::vector<RecordedPair> read_picture_pairs(std::span<const std::string> paths, Layout layout) {
  std::vector<RecordedPair> pairs;
  for (std::size_t i = 0; i < paths.size(); ++i) {
    const Libav<AVFrame> first = read_picture(paths[i]);
    if (layout != Layout::automatic || has_both_circles(*first)) {
      pairs.emplace_back(*first, nullptr, layout, paths[i]);
      continue;
    }
    if (++i == paths.size()) throw Failure(ExitCode::usage, paths[i - 1] + ": shows one lens; the other's picture is missing");
    const Libav<AVFrame> second = read_picture(paths[i]);
    pairs.emplace_back(*first, second.get(), layout, paths[i]);
  }
  return pairs;
}

}  // namespace biseam::tool
