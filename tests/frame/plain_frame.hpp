#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "biseam/records.h"
#include "support/random_source.hpp"

namespace biseam::test {

using Bytes = std::vector<uint8_t>;

// Luma and chroma of a picture or panorama.
struct FramePlanes {
  Bytes luma, chroma;
  bool operator==(const FramePlanes&) const = default;
};

// Two fisheye pictures of the configuration's sizes: a smooth scene with noise, padding included.
using FisheyePair = std::array<FramePlanes, 2>;
FisheyePair random_fisheyes(RandomSource& random, const StitchConfig& config);

// Poisoned planes of the panorama; chroma of full height.
FramePlanes blank_panorama(const StitchConfig& config);

// One frame once more: the exported stages called one after the other on one thread, over buffers and arithmetic of its own.
class PlainFrame {
 public:
  explicit PlainFrame(const StitchConfig& config);
  PlainFrame(const PlainFrame&) = delete;
  PlainFrame& operator=(const PlainFrame&) = delete;

  void process(FisheyePair& fisheyes, FramePlanes& panorama);

  const std::vector<float>& table(int strip) const { return tables_[strip]; }

 private:
  struct Band {
    Bytes luma, chroma;
    std::vector<int32_t> rgb;
    ImageHeader header;
    BlendImage image;
  };

  void build_tables();
  void make_blend_instances();
  Band make_band(int width) const;
  void remap(FisheyePair& fisheyes, ImageHeader& panorama);
  void remap_part(int strip, ImageHeader& source, ImageHeader& destination, int table_column, int destination_column, int count,
                  int first_row, int end_row);
  void blend();
  void compose(FramePlanes& panorama) const;
  void exchange_rows(FramePlanes& panorama) const;
  void exchange_columns(FramePlanes& panorama) const;

  StitchConfig config_;
  int rows_, seams_[2], band_width_, pair_width_;
  int first_[3], width_[3];  // panorama column and width of the strips
  std::vector<float> tables_[3];
  Band bands_[4], results_[2];
  std::vector<uint64_t> blend_blocks_[2];
  BlendInstance blends_[2];
};

}  // namespace biseam::test
