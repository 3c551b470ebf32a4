#include "stitch/stitch_picture.hpp"

#include <tuple>

#include "base/failure.hpp"
#include "base/thread_count.hpp"
#include "biseam/stitcher.hpp"
#include "camera/setup.hpp"
#include "picture/plane.hpp"
#include "picture/read_picture.hpp"
#include "picture/write_picture.hpp"
#include "stitch/engine_failure.hpp"
#include "stitch/seam_overlay.hpp"

namespace biseam::tool {
namespace {

struct Recorded {
  Nv12 picture[2];
  Nv12View lens[2];   // of the pictures
  Metadata metadata;  // lens 0's
};

void read_pair(const StitchSource& source, std::unique_ptr<Container> opened, Recorded& recorded) {
  const std::string& first = source.files.front();
  PictureFile file = opened ? read_picture_file(*opened) : read_picture_file(first, source.raw_size);
  recorded.picture[0] = std::move(file.picture);
  recorded.metadata = std::move(file.metadata);
  if (source.files.size() == 1) {
    const std::string name = first == "-" ? "standard input" : first;
    std::tie(recorded.lens[0], recorded.lens[1]) = split(recorded.picture[0], source.layout, name);
    return;
  }
  recorded.picture[1] = read_picture(source.files.back(), source.raw_size);
  for (int k = 0; k < 2; ++k) recorded.lens[k] = recorded.picture[k];
}

// A copy without padding where the engine's rows have none.
FisheyePicture fit(const Nv12View& view, Nv12& copy) {
  copy.resize(view.width, view.height);
  copy_plane(luma_of(view), copy.luma.data(), view.width);
  copy_plane(chroma_of(view), copy.chroma.data(), view.width);
  return {copy.luma, copy.chroma};
}

Projection told_projection(const PictureJob& job) { return job.metadata_360 ? Projection::equirectangular : Projection::none; }

// The painted picture is a panorama like the result; the layer is none without something under it, and is not marked.
void write_seams(const PictureJob& job, const Metadata& metadata, const Stitcher& stitcher, const Nv12& panorama) {
  if (!job.show_seams.empty()) {
    Rgb painted = to_rgb(panorama);
    for (int k = 0; k < 2; ++k) draw_band(stitcher.band(k), painted);
    write_picture(job.show_seams, painted, told_projection(job), metadata);
  }
  if (!job.seam_layer.empty()) {
    Rgba layer(panorama.width, panorama.height);
    for (int k = 0; k < 2; ++k) draw_band(stitcher.band(k), layer);
    write_layer(job.seam_layer, layer);
  }
}

}  // namespace

void stitch_picture(const PictureJob& job, std::unique_ptr<Container> first) {
  Recorded recorded;
  read_pair(job.source, std::move(first), recorded);
  const auto size_of = [](const Nv12View& view) { return Size{view.width, view.height}; };
  const Setup setup =
      make_setup(job.source.profile, job.source.settings, {size_of(recorded.lens[0]), size_of(recorded.lens[1])});

  Result<Stitcher> stitcher = Stitcher::create(setup.plan.config);
  if (!stitcher) throw engine_failure(stitcher.error());
  LensPath path[2] = {LensPath(setup, 0, usual_threads()), LensPath(setup, 1, usual_threads())};
  Nv12 panorama(setup.plan.config.out_w[0], setup.plan.config.out_h[0]), copy[2];
  const FisheyePicture lens[2] = {fit(path[0].apply(recorded.lens[0]), copy[0]), fit(path[1].apply(recorded.lens[1]), copy[1])};
  if (const Error error = stitcher->process(lens[0], lens[1], {panorama.luma, panorama.chroma})) throw engine_failure(error);

  write_picture(job.output, panorama, told_projection(job), recorded.metadata);
  write_seams(job, recorded.metadata, *stitcher, panorama);
}

}  // namespace biseam::tool
