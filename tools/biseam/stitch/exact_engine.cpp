#include "stitch/exact_engine.hpp"

#include <cstring>

#include "base/failure.hpp"
#include "picture/plane.hpp"
#include "setup/exact_config.hpp"

namespace biseam::tool {
namespace {

// What an engine refuses comes from the settings, if memory is not what is missing.
Failure failure_of(const Error& error) {
  return Failure(error.code() == ErrorCode::out_of_memory ? ExitCode::system : ExitCode::settings, error.text());
}

PlaneView plane_of(const BiseamPicture& picture, int plane, std::size_t width, std::size_t rows) {
  return {static_cast<const std::uint8_t*>(picture.planes[plane]), picture.strides[plane], width, rows};
}

void copy_picture(const BiseamPicture& from, Nv12& to) {
  to.resize(from.width, from.height);
  const std::size_t width = std::size_t(from.width), rows = std::size_t(from.height);
  copy_plane(plane_of(from, 0, width, rows), to.luma.data(), from.width);
  if (from.format == BISEAM_NV12) return copy_plane(plane_of(from, 1, width, rows / 2), to.chroma.data(), from.width);
  const auto plane = [&](int k) { return static_cast<std::uint8_t*>(from.planes[k]); };
  join_chroma({plane(1), plane(2), from.strides[1], from.strides[2]}, width, rows / 2, to.chroma.data());
}

// The left side's columns are those like the first one.
bool is_counted_side(const BandView& band, int x, int y) {
  constexpr std::int32_t kEvenWeight = 32;
  return band.weights[std::ptrdiff_t(y) * band.stride + std::ptrdiff_t(x) * band.step] >= kEvenWeight;
}

bool is_left(const BandView& band, int x, int y) { return is_counted_side(band, x, y) == is_counted_side(band, 0, y); }

}  // namespace

ExactEngine::ExactEngine(const Setup& setup, BiseamFormat format) : size_{setup.width, setup.width / 2} {
  Result<Stitcher> made = Stitcher::create(exact_config(setup, format));
  if (!made) throw failure_of(made.error());
  stitcher_ = std::move(*made);
  panorama_.resize(size_.width, size_.height);
}

void ExactEngine::stitch(const BiseamPicture (&fisheyes)[2], const BiseamPicture& panorama, Seams seams) {
  for (int k = 0; k < 2; ++k) copy_picture(fisheyes[k], fisheyes_[k]);
  const auto planes = [](const Nv12& picture) { return FisheyePicture{picture.luma, picture.chroma}; };
  if (const Error error =
          stitcher_.process(planes(fisheyes_[0]), planes(fisheyes_[1]), {panorama_.luma, panorama_.chroma}, seams)) {
    throw failure_of(error);
  }
  copy_plane(luma_of(panorama_), static_cast<std::uint8_t*>(panorama.planes[0]), panorama.strides[0]);
  copy_plane(chroma_of(panorama_), static_cast<std::uint8_t*>(panorama.planes[1]), panorama.strides[1]);
}

// For every row of both bands, band 0 first: how many columns of the band lie left of its seam.
SeamPath ExactEngine::seam_path() const {
  SeamPath path;
  for (int index = 0; index < 2; ++index) {
    const BandView band = stitcher_.band(index);
    for (int row = 0; row < band.height; ++row) {
      int left = 0;
      for (int x = 0; x < band.width; ++x) left += is_left(band, x, row) ? 1 : 0;
      path.push_back(left);
    }
  }
  return path;
}

// Lens 1 is in the panorama's middle: right of the first band, left of the second.
SeamMap ExactEngine::seam_map() const {
  SeamMap map{size_, std::vector<Zone>(std::size_t(size_.width) * std::size_t(size_.height), Zone::one_lens)};
  for (int index = 0; index < 2; ++index) {
    const BandView band = stitcher_.band(index);
    for (int y = 0; y < std::min(band.height, size_.height); ++y) {
      for (int x = 0; x < band.width; ++x) {
        const int column = band.first_column + x;
        if (column < 0 || column >= size_.width) continue;
        const bool lens0 = is_left(band, x, y) == (index == 0);
        map.zones[std::size_t(y) * std::size_t(size_.width) + std::size_t(column)] =
            lens0 ? Zone::lens0_side : Zone::lens1_side;
      }
    }
  }
  return map;
}

}  // namespace biseam::tool
