#include "stitch/stitch_picture.hpp"

#include <algorithm>
#include <thread>
#include <tuple>

#include "base/failure.hpp"
#include "biseam/stitcher.hpp"
#include "camera/setup.hpp"
#include "picture/decode.hpp"
#include "picture/read_picture.hpp"
#include "picture/write_picture.hpp"
#include "stitch/seam_overlay.hpp"

namespace biseam::tool {
namespace {

struct Recorded {
  Nv12 picture[2];
  Nv12View lens[2];  // of the pictures
};

void read_pair(const StitchOptions& options, std::unique_ptr<Container> opened, Recorded& recorded) {
  std::optional<Size> raw;
  if (!options.size.empty()) raw = parse_size(options.size);
  const std::string& first = options.inputs.front();
  recorded.picture[0] = opened ? decode_picture(*opened) : read_picture(first, raw);
  if (options.inputs.size() == 1) {
    const std::string name = first == "-" ? "standard input" : first;
    std::tie(recorded.lens[0], recorded.lens[1]) = split(recorded.picture[0], options.layout, name);
    return;
  }
  recorded.picture[1] = read_picture(options.inputs.back(), raw);
  for (int k = 0; k < 2; ++k) recorded.lens[k] = recorded.picture[k];
}

int usual_threads() { return std::clamp(int(std::thread::hardware_concurrency()), 1, 16); }

// A copy without padding where the engine's rows have none.
FisheyePicture fit(const Nv12View& view, Nv12& copy) {
  copy.resize(view.width, view.height);
  const std::size_t width = std::size_t(view.width);
  for (int y = 0; y < view.height; ++y) {
    std::copy_n(view.luma + y * view.luma_stride, width, &copy.luma[std::size_t(y) * width]);
  }
  for (int y = 0; y < view.height / 2; ++y) {
    std::copy_n(view.chroma + y * view.chroma_stride, width, &copy.chroma[std::size_t(y) * width]);
  }
  return {copy.luma, copy.chroma};
}

Failure engine_failure(const Error& error) { return Failure(ExitCode::settings, error.text()); }

Projection told_projection(const StitchOptions& options) {
  return options.metadata_360 ? Projection::equirectangular : Projection::none;
}

// The painted picture is a panorama like the result; the layer is none without something under it, and is not marked.
void write_seams(const StitchOptions& options, const Stitcher& stitcher, const Nv12& panorama) {
  if (!options.show_seams.empty()) {
    Rgb painted = to_rgb(panorama);
    for (int k = 0; k < 2; ++k) draw_band(stitcher.band(k), painted);
    write_picture(options.show_seams, painted, told_projection(options));
  }
  if (!options.seam_layer.empty()) {
    Rgba layer(panorama.width, panorama.height);
    for (int k = 0; k < 2; ++k) draw_band(stitcher.band(k), layer);
    write_layer(options.seam_layer, layer);
  }
}

}  // namespace

void stitch_picture(const StitchOptions& options, std::unique_ptr<Container> first) {
  Recorded recorded;
  read_pair(options, std::move(first), recorded);
  const auto size_of = [](const Nv12View& view) { return Size{view.width, view.height}; };
  const Setup setup = make_setup(options.camera, options.settings, {size_of(recorded.lens[0]), size_of(recorded.lens[1])});

  Result<Stitcher> stitcher = Stitcher::create(setup.plan.config);
  if (!stitcher) throw engine_failure(stitcher.error());
  LensPath path[2] = {LensPath(setup, 0, usual_threads()), LensPath(setup, 1, usual_threads())};
  Nv12 panorama(setup.plan.config.out_w[0], setup.plan.config.out_h[0]), copy[2];
  const FisheyePicture lens[2] = {fit(path[0].apply(recorded.lens[0]), copy[0]), fit(path[1].apply(recorded.lens[1]), copy[1])};
  if (const Error error = stitcher->process(lens[0], lens[1], {panorama.luma, panorama.chroma})) throw engine_failure(error);

  write_picture(options.output, panorama, told_projection(options));
  write_seams(options, *stitcher, panorama);
}

}  // namespace biseam::tool
