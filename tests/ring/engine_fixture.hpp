#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <memory>
#include <vector>

#include "camera/projector.hpp"
#include "ring/engine.hpp"
#include "ring/reference.hpp"
#include "ring/ring_shape.hpp"
#include "support/cameras.hpp"
#include "support/own_picture.hpp"

namespace biseam::test {

// Poles of the panorama in the middle of a lens and on the ring, and turns that mix everything.
inline constexpr Turn kTurns[] = {{0, 0, 0}, {33, 21, 12}, {0, 90, 0}, {-170, -62, 45}, {90, 0, 90}, {180, -90, 7}};

// A real pair, small, with turned lenses whose radius bends.
inline Camera small_camera() { return scaled_camera(bent_pair(), 160); }

inline ring::EngineConfig small_config(int format = BISEAM_NV12) {
  return {.camera = small_camera(),
          .width = 256,
          .height = 128,
          .format = format,
          .full_range = false,
          .quality = ring::Quality::good,
          .seam = ring::SeamMode::search,
          .threads = 1};
}

struct Fisheyes {
  OwnPicture lens[2];

  // value(lens, channel, x, y): code values.
  template <class Value>
  Fisheyes(const ring::EngineConfig& config, const Value& value, RowLayout layout = {}, int siting = BISEAM_SITING_LEFT)
      : lens{{config.format, config.camera.lens[0].width, config.camera.lens[0].height, layout, siting},
             {config.format, config.camera.lens[1].width, config.camera.lens[1].height, layout, siting}} {
    for (int k = 0; k < 2; ++k) lens[k].fill([&](int c, int x, int y) { return value(k, c, x, y); });
  }
};

// Waves of up to 0.12 cycles a sample, other ones for every lens and channel: codes from 53 to 203 of 8 bits.
inline double waves(int lens, int channel, double x, double y) {
  const double a = 1 + 0.7 * lens + 1.9 * channel;
  return 128 + 30 * std::sin(0.7 * x + 0.1 * y + a) + 25 * std::sin(0.5 * y - 0.2 * x + 2 * a) +
         20 * std::sin(0.31 * (x + y) - a);
}
inline auto waves_of(int bits) {
  return [bits](int lens, int channel, int x, int y) {
    return static_cast<int>(std::lround(std::ldexp(waves(lens, channel, x, y), bits - 8)));
  };
}

// Sharp noise.
inline auto noise_of(int bits, std::uint32_t seed = 1) {
  return [bits, seed](int lens, int channel, int x, int y) {
    std::uint32_t v = std::uint32_t(x) * 7919u + std::uint32_t(y) * 104729u + std::uint32_t(lens * 31 + channel) * 1299709u;
    v = (v ^ seed) * 2654435761u;
    v = (v ^ (v >> 15)) * 2246822519u;
    return static_cast<int>((v ^ (v >> 13)) & ((1u << bits) - 1));
  };
}

class OwnEngine {
 public:
  explicit OwnEngine(const ring::EngineConfig& config) : config_(config), engine_(ring::open_engine(config)) {}

  OwnPicture stitch(Fisheyes& fisheyes, const Turn& turn = {}, RowLayout layout = {}, int siting = BISEAM_SITING_LEFT) {
    return stitch(fisheyes, {turn, nullptr, nullptr}, layout, siting);
  }
  OwnPicture follow(Fisheyes& fisheyes, const std::vector<uint8_t>& guide) {
    return stitch(fisheyes, {{}, nullptr, guide.data()}, {}, BISEAM_SITING_LEFT);
  }
  std::vector<uint8_t> measure(Fisheyes& fisheyes) {
    std::vector<uint8_t> guide(guide_bytes(ring::guide_shape(*engine_)));
    const ring::PicturePlanes from[2] = {planes_of(fisheyes.lens[0]), planes_of(fisheyes.lens[1])};
    ring::measure(*engine_, from, guide.data());
    return guide;
  }
  ring::Engine& engine() { return *engine_; }

 private:
  OwnPicture stitch(Fisheyes& fisheyes, const ring::FrameChoice& choice, RowLayout layout, int siting) {
    OwnPicture panorama(config_.format, config_.width, config_.height, layout, siting);
    const ring::PicturePlanes from[2] = {planes_of(fisheyes.lens[0]), planes_of(fisheyes.lens[1])};
    ring::stitch(*engine_, from, planes_of(panorama), choice);
    EXPECT_TRUE(panorama.surroundings_untouched());
    return panorama;
  }

  struct Close {
    void operator()(ring::Engine* engine) const { ring::close_engine(engine); }
  };
  static ring::PicturePlanes planes_of(OwnPicture& picture) {
    const BiseamPicture record = picture.record();
    ring::PicturePlanes planes{};
    for (int k = 0; k < 3; ++k) {
      planes.first[k] = static_cast<uint8_t*>(record.planes[k]);
      planes.strides[k] = record.strides[k];
    }
    planes.siting = record.siting;
    return planes;
  }

  ring::EngineConfig config_;
  std::unique_ptr<ring::Engine, Close> engine_;
};

inline OwnPicture stitch_once(const ring::EngineConfig& config, Fisheyes& fisheyes, const Turn& turn = {}) {
  return OwnEngine(config).stitch(fisheyes, turn);
}

// Where the samples of a channel of a format stand.
inline ReferencePlane grid_of(const TestFormat& format, int channel, int siting) {
  ReferencePlane grid;
  if (channel == 0) return grid;
  grid.sub_x = format.sub_x;
  grid.sub_y = format.sub_y;
  grid.offset_x = format.sub_x == 2 && siting == BISEAM_SITING_MIDDLE ? 0.5 : 0;
  grid.offset_y = format.sub_y == 2 && siting != BISEAM_SITING_TOP_LEFT ? 0.5 : 0;
  return grid;
}

// Where the ring reaches in a panorama.
class RingOfView {
 public:
  RingOfView(const ring::EngineConfig& config, const Turn& turn, const ReferencePlane& grid)
      : view_{config.width, config.height, turn}, grid_(grid) {
    constexpr double kMeshError = 2e-4;  // radians, and the rounding of angles
    half_width_ = ring::ring_shape(config.camera, config.width).half_width * 2 * kPi / (1 << ring::kTurnBits) + kMeshError;
  }

  Vec3 direction(double x, double y) const {
    return reference_direction(view_, grid_.sub_x * x + grid_.offset_x, grid_.sub_y * y + grid_.offset_y);
  }
  double across(double x, double y) const { return reference_ring(direction(x, y)).b; }
  bool touches(int x, int y) const { return std::abs(across(x, y)) <= half_width_; }

 private:
  View view_;
  ReferencePlane grid_;
  double half_width_;
};

}  // namespace biseam::test
