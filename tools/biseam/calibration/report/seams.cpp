#include "calibration/report/seams.hpp"

#include <algorithm>
#include <cstring>

#include "base/failure.hpp"
#include "biseam/panorama.hpp"
#include "clip/write/panorama_pool.hpp"
#include "media/pixel_format.hpp"
#include "picture/frame_over.hpp"

namespace biseam::tool {
namespace {

Failure failure_of(const BiseamError& error) {
  return Failure(error.code == BISEAM_NO_MEMORY ? ExitCode::system : ExitCode::settings, error.text);
}

Rgb stitched(const RecordedPair& pair, const Setup& setup) {
  BiseamPanoramaOptions options = panorama_defaults();
  options.width = setup.width;
  options.height = setup.width / 2;
  options.format = BISEAM_NV12;
  Panorama panorama = Panorama::open(setup.camera, options);
  if (!panorama) throw failure_of(panorama.error());
  const Libav<AVFrame> frame = PanoramaPool({options.width, options.height}, AV_PIX_FMT_NV12, pair.colour()).frame();
  if (const PanoramaError error = panorama.stitch(pair.pictures(), engine_picture(*frame))) throw failure_of(error);
  return rgb_of(*frame);
}

// Around a middle.
Rgb part_of(const Rgb& picture, int x, int y, Size size) {
  Rgb part(size.width, size.height);
  const std::size_t row = std::size_t(size.width) * 3;
  for (int i = 0; i < size.height; ++i) {
    const std::size_t from =
        std::size_t(y - size.height / 2 + i) * std::size_t(picture.width) + std::size_t(x - size.width / 2);
    std::memcpy(&part.bytes[std::size_t(i) * row], &picture.bytes[3 * from], row);
  }
  return part;
}

}  // namespace

std::array<Rgb, 2> seam_parts(const RecordedPair& pair, const Setup& setup) {
  const Rgb panorama = stitched(pair, setup);
  const Size size{std::min(kSeamPart.width, panorama.width / 2), std::min(kSeamPart.height, panorama.height)};
  const int middle = panorama.height / 2;
  return {part_of(panorama, panorama.width / 4, middle, size), part_of(panorama, panorama.width * 3 / 4, middle, size)};
}

}  // namespace biseam::tool
