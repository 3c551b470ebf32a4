#pragma once

#include <cstdint>
#include <vector>

#include "ring/guide/guide.hpp"

namespace biseam::test {

inline constexpr ring::GuideShape kGuideShape{{48, 9}, 2, 5, 24, 3200, 3, true, true};

// What a guide is made of, the same all round.
struct GuideValues {
  bool starts = false;
  ring::SectorLight light{500, {100, -200, 300}, -70000, 900000};
  int disparity = 300, row = 4 * ring::kGuideRow;
};

inline std::vector<uint8_t> guide_of(const GuideValues& values, const ring::GuideShape& shape = kGuideShape) {
  std::vector<uint8_t> guide(guide_bytes(shape));
  ring::GuideWriter writer(shape, guide.data());
  writer.starts(values.starts);
  for (int s = 0; s < ring::kSectors && shape.light_span > 0; ++s) writer.sector(s, values.light);
  for (int t = 0; t < shape.near_length; ++t) writer.disparity(t, values.disparity);
  for (int t = 0; t < shape.strip.length && shape.seams; ++t) writer.row(t, values.row);
  writer.finish();
  return guide;
}

}  // namespace biseam::test
