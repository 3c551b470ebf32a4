#include "stitch/stitch_picture.hpp"

#include "base/failure.hpp"
#include "media/pixel_format.hpp"
#include "picture/read_picture.hpp"
#include "picture/write_picture.hpp"
#include "stitch/seam_overlay.hpp"

namespace biseam::tool {
namespace {

// A frame over a picture's planes.
Libav<AVFrame> frame_over(Nv12& picture, AVChromaLocation siting) {
  Libav<AVFrame> frame(av_frame_alloc());
  if (!frame) throw std::bad_alloc();
  frame->format = AV_PIX_FMT_NV12;
  frame->width = frame->linesize[0] = frame->linesize[1] = picture.width;
  frame->height = picture.height;
  frame->chroma_location = siting;
  frame->data[0] = picture.luma.data();
  frame->data[1] = picture.chroma.data();
  return frame;
}

struct Recorded {
  AVChromaLocation siting;
  Nv12 pictures[2];
  BiseamPicture lens[2];  // views of them
  Metadata metadata;      // lens 0's
};

// The first pictures of two streams of a clip.
void read_streams(const std::string& path, Container& opened, const LensStreams& streams, Recorded& recorded) {
  Container again(path);
  recorded.pictures[0] = read_picture_file(opened, streams[0]).picture;
  recorded.pictures[1] = read_picture_file(again, streams[1]).picture;
  for (int k = 0; k < 2; ++k) recorded.lens[k] = engine_picture(*frame_over(recorded.pictures[k], recorded.siting));
}

void read_pair(const StitchSource& source, std::unique_ptr<Container> opened, Recorded& recorded) {
  const std::string& first = source.files.front();
  recorded.siting = source.raw_size ? AVCHROMA_LOC_LEFT : AVCHROMA_LOC_CENTER;  // raw frames are those of clips
  if (source.files.size() == 1 && !source.raw_size) {
    refuse_raw_name(first);
    if (!opened) opened = std::make_unique<Container>(first);
    const std::optional<LensStreams> streams = choose_lens_streams(*opened, source.streams);
    if (streams) return read_streams(first, *opened, *streams, recorded);
  }
  PictureFile file = opened ? read_picture_file(*opened) : read_picture_file(first, source.raw_size);
  recorded.pictures[0] = std::move(file.picture);
  recorded.metadata = std::move(file.metadata);
  if (source.files.size() == 1) {
    const std::string name = first == "-" ? "standard input" : first;
    return split(*frame_over(recorded.pictures[0], recorded.siting), source.layout, name, recorded.lens);
  }
  recorded.pictures[1] = read_picture(source.files.back(), source.raw_size);
  for (int k = 0; k < 2; ++k) recorded.lens[k] = engine_picture(*frame_over(recorded.pictures[k], recorded.siting));
}

Projection told_projection(const PictureJob& job) { return job.metadata_360 ? Projection::equirectangular : Projection::none; }

// The painted picture is a panorama like the result; the layer is none without something under it, and is not marked.
void write_seams(const PictureJob& job, const Metadata& metadata, const Engine& engine, const Nv12& panorama) {
  if (job.show_seams.empty() && job.seam_layer.empty()) return;
  const SeamMap map = engine.seam_map();
  if (!job.show_seams.empty()) {
    Rgb painted = to_rgb(panorama);
    draw_seams(map, painted);
    write_picture(job.show_seams, painted, told_projection(job), metadata);
  }
  if (!job.seam_layer.empty()) {
    Rgba layer(panorama.width, panorama.height);
    draw_seams(map, layer);
    write_layer(job.seam_layer, layer);
  }
}

}  // namespace

void stitch_picture(const PictureJob& job, std::unique_ptr<Container> first) {
  Recorded recorded;
  read_pair(job.source, std::move(first), recorded);
  const auto size_of = [](const BiseamPicture& picture) { return Size{picture.width, picture.height}; };
  const Setup setup =
      make_setup(job.source.profile, job.source.settings, {size_of(recorded.lens[0]), size_of(recorded.lens[1])});
  const std::unique_ptr<Engine> engine =
      open_engine(setup, job.source.engine, {BiseamFormat(recorded.lens[0].format), BISEAM_RANGE_FULL});
  Nv12 panorama(setup.width, setup.width / 2);
  engine->stitch(recorded.lens, engine_picture(*frame_over(panorama, recorded.siting)), Seams::fresh);
  write_picture(job.output, panorama, told_projection(job), recorded.metadata);
  write_seams(job, recorded.metadata, *engine, panorama);
}

}  // namespace biseam::tool
