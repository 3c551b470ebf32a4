#include "stitch/stitch_picture.hpp"

#include "base/failure.hpp"
#include "calibration/find_camera.hpp"
#include "clip/write/panorama_pool.hpp"
#include "media/frame_converter.hpp"
#include "media/pixel_format.hpp"
#include "picture/frame_over.hpp"
#include "picture/read_picture.hpp"
#include "picture/write_picture.hpp"
#include "stitch/seam_overlay.hpp"

namespace biseam::tool {
namespace {

struct Recorded {
  Libav<AVFrame> pictures[2];
  BiseamPicture lens[2];  // views of them
  Metadata metadata;      // lens 0's
};

// RGB, which no host of the exact engine has, becomes what it would have made of it; other formats stay, or are refused by
// name.
void suit_engine(const EngineOptions& engine, Libav<AVFrame>& picture) {
  const BiseamFormat format = engine_format(AVPixelFormat(picture->format)).value();
  const bool is_rgb = format == BISEAM_GBR || format == BISEAM_GBRP10 || format == BISEAM_GBRP12;
  if (engine.kind == EngineKind::exact && is_rgb) picture = FrameConverter().convert(*picture, AV_PIX_FMT_NV12);
}

// Lens 1's picture in the format of lens 0's.
void take_second(const AVFrame& second, Recorded& recorded) {
  const AVFrame& first = *recorded.pictures[0];
  recorded.pictures[1] = FrameConverter().convert(second, AVPixelFormat(first.format));
  recorded.pictures[1]->chroma_location = first.chroma_location;
  for (int k = 0; k < 2; ++k) recorded.lens[k] = engine_picture(*recorded.pictures[k]);
}

// The first pictures of two streams of a clip.
void read_streams(const std::string& path, Container& opened, const LensStreams& streams, Recorded& recorded) {
  Container again(path);
  recorded.pictures[0] = read_picture_file(opened, streams[0]).picture;
  take_second(*read_picture_file(again, streams[1]).picture, recorded);
}

void read_pair(const StitchSource& source, std::unique_ptr<Container> opened, Recorded& recorded) {
  const std::string& first = source.files.front();
  if (source.files.size() == 1 && !source.raw_size) {
    refuse_raw_name(first);
    if (!opened) opened = std::make_unique<Container>(first);
    const std::optional<LensStreams> streams = choose_lens_streams(*opened, source.streams);
    if (streams) return read_streams(first, *opened, *streams, recorded);
  }
  PictureFile file = opened ? read_picture_file(*opened) : read_picture_file(first, source.raw_size);
  suit_engine(source.engine, file.picture);
  AVFrame& picture = *(recorded.pictures[0] = std::move(file.picture));
  recorded.metadata = std::move(file.metadata);
  if (source.raw_size) picture.chroma_location = AVCHROMA_LOC_LEFT;  // raw frames are those of clips
  if (source.files.size() == 1) {
    const std::string name = first == "-" ? "standard input" : first;
    return split(picture, source.layout, name, recorded.lens);
  }
  take_second(*read_picture(source.files.back(), source.raw_size), recorded);
}

Projection told_projection(const PictureJob& job) { return job.metadata_360 ? Projection::equirectangular : Projection::none; }

// The painted picture is a panorama like the result; the layer is none without something under it, and is not marked.
void write_seams(const PictureJob& job, const Metadata& metadata, const Engine& engine, const AVFrame& panorama) {
  if (job.show_seams.empty() && job.seam_layer.empty()) return;
  const SeamMap map = engine.seam_map();
  if (!job.show_seams.empty()) {
    Rgb painted = rgb_of(panorama);
    draw_seams(map, painted);
    write_picture(job.show_seams, painted, told_projection(job), metadata);
  }
  if (!job.seam_layer.empty()) {
    Rgba layer(panorama.width, panorama.height);
    draw_seams(map, layer);
    write_layer(job.seam_layer, layer);
  }
}

KnownCamera camera_of(const StitchSource& job, const Recorded& recorded) {
  if (!job.profile.empty()) return read_camera(job.profile);
  if (!job.finds_camera) return {};
  const RecordedPair pair(*recorded.pictures[0], recorded.pictures[1].get(), job.layout, job.files.front());
  return {find_camera({&pair, 1}, job.files.front(), job.save_camera), ""};
}

}  // namespace

void stitch_picture(const PictureJob& job, std::unique_ptr<Container> first) {
  Recorded recorded;
  read_pair(job.source, std::move(first), recorded);
  const auto size_of = [](const BiseamPicture& picture) { return Size{picture.width, picture.height}; };
  const Setup setup =
      make_setup(camera_of(job.source, recorded), job.source.settings, {size_of(recorded.lens[0]), size_of(recorded.lens[1])});
  const AVFrame& picture = *recorded.pictures[0];
  const BiseamRange range = is_full_range(picture) ? BISEAM_RANGE_FULL : BISEAM_RANGE_LIMITED;
  // Pictures are sRGB unless they say otherwise.
  const BiseamTransfer told = engine_transfer(picture.color_trc);
  const BiseamTransfer transfer = told == BISEAM_TRANSFER_USUAL ? BISEAM_TRANSFER_SRGB : told;
  const std::unique_ptr<Engine> engine =
      open_engine(setup, job.source.engine, {BiseamFormat(recorded.lens[0].format), range, transfer});
  const bool is_same = engine->format() == recorded.lens[0].format;
  const AVPixelFormat format = is_same ? AVPixelFormat(picture.format) : AV_PIX_FMT_NV12;
  const Libav<AVFrame> panorama = PanoramaPool({setup.width, setup.width / 2}, format, colour_of(picture)).frame();
  engine->stitch(recorded.lens, engine_picture(*panorama), Seams::fresh);
  write_picture(job.output, *panorama, told_projection(job), recorded.metadata);
  write_seams(job, recorded.metadata, *engine, *panorama);
}

}  // namespace biseam::tool
