// The checked interface: a configuration of any bits is refused in one line, or stitches inside its buffers, whose sizes are
// the least that it asks for.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>

#include "biseam/stitcher.hpp"
#include "frame/lifecycle.hpp"
#include "frame/memory.hpp"
#include "fuzz/expect.hpp"
#include "fuzz/input.hpp"
#include "fuzz/random_config.hpp"
#include "panorama/rules.hpp"
#include "stages/blend/module.hpp"

using namespace biseam;

namespace {

constexpr std::int64_t kMostBytes = std::int64_t{1} << 24;  // of engines that are made: larger ones only take more time
constexpr std::int64_t kMostEntries = 1 << 17;              // of a panorama

// A heap block of this size and no more.
class Plane {
 public:
  Plane(std::size_t size, unsigned seed) : size_(size), data_(static_cast<std::uint8_t*>(std::malloc(size))) {
    fuzz::expect(data_ != nullptr, "there is memory");
    for (std::size_t i = 0; i < size; ++i) data_.get()[i] = static_cast<std::uint8_t>((seed += 40503u * seed + 77) >> 11);
  }
  std::span<std::uint8_t> bytes() { return {data_.get(), size_}; }

 private:
  struct Free {
    void operator()(std::uint8_t* data) const { std::free(data); }
  };
  std::size_t size_;
  std::unique_ptr<std::uint8_t, Free> data_;
};

void check_refusal(const Error& error) {
  fuzz::expect(error.code() != ErrorCode::none, "an error has a code");
  fuzz::expect(fuzz::is_one_line(error.text()), "an error is one line");
}

bool is_small(const StitchConfig& config) {
  const std::int64_t picture = std::int64_t{config.in_h} * (config.in_luma_stride + std::int64_t{config.in_chroma_stride});
  const std::int64_t panorama =
      std::int64_t{config.in_h} * (config.out_luma_stride[0] + std::int64_t{config.out_chroma_stride[0]});
  return engine_room(config) <= kMostBytes && blend_room(blend_settings(config)) <= kMostBytes && picture <= kMostBytes &&
         panorama <= kMostBytes && std::int64_t{config.in_h} * config.out_w[0] <= kMostEntries;
}

void check_bands(const Stitcher& stitcher, const StitchConfig& config) {
  for (int k = 0; k < 2; ++k) {
    const BandView band = stitcher.band(k);
    fuzz::expect(band.first_column >= 0 && band.first_column + band.width <= config.out_w[0], "a band lies in the panorama");
    for (int y = 0; y < band.height; ++y) {
      for (int x = 0; x < band.width; ++x) {
        const std::int32_t weight = band.weights[std::ptrdiff_t{y} * band.stride + std::ptrdiff_t{x} * band.step];
        fuzz::expect(weight >= 0 && weight <= BISEAM_WEIGHT_ONE, "weights are 0 to 64");
      }
    }
  }
}

void stitch(Stitcher& stitcher, const StitchConfig& config, unsigned seed) {
  const StitcherSizes sizes = stitcher.sizes();
  Plane luma0(sizes.fisheye_luma, seed), chroma0(sizes.fisheye_chroma, seed + 1);
  Plane luma1(sizes.fisheye_luma, seed + 2), chroma1(sizes.fisheye_chroma, seed + 3);
  Plane luma(sizes.panorama_luma, seed + 4), chroma(sizes.panorama_chroma, seed + 5);
  const FisheyePicture lens0{luma0.bytes(), chroma0.bytes()}, lens1{luma1.bytes(), chroma1.bytes()};
  const PanoramaPicture panorama{luma.bytes(), chroma.bytes()};
  fuzz::expect(!stitcher.process(lens0, lens1, panorama), "a frame is stitched");
  check_bands(stitcher, config);
  Plane seams(stitcher.seams_size(), seed);
  fuzz::expect(!stitcher.save_seams({seams.bytes()}), "its seams are saved");
  fuzz::expect(!stitcher.load_seams({seams.bytes()}), "and loaded");
  fuzz::expect(!stitcher.process(lens0, lens1, panorama, Seams::kept), "and kept");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  StitchConfig config = fuzz::draw_config(input);
  const unsigned seed = input.word();
  while (input.left() >= 5) {
    const std::uint32_t field = input.byte();
    fuzz::set_word(config, field, input.word());
  }
  if (const Error error = check_rules(config)) {
    check_refusal(error);
    return 0;
  }
  if (!is_small(config)) return 0;
  Result<Stitcher> made = Stitcher::create(config);
  if (made) {
    stitch(*made, config, seed);
  } else {
    check_refusal(made.error());
    fuzz::expect(made.error().code() == ErrorCode::outside_picture, "only tables are refused after the rules");
  }
  return 0;
}
