#include "ring/light/match_field.hpp"

#include <algorithm>
#include <cmath>

#include "camera/trigonometry.hpp"

namespace biseam::ring {

namespace {

constexpr double kMostShare = 0.7 * kLogOne;    // of either lens: a factor of 1.62
constexpr double kFadeAcross = 20 * kDegree;    // beyond the ring
constexpr double kWidestPitch = 3.2 * kDegree;  // of columns
static_assert(MatchField::kRows % kSectors == 0);

// 1 in the ring, 0 from kFadeAcross beyond it on.
double fade_at(double across, StripShape strip) noexcept {
  const double pitch = 2 * kPi / strip.length, beyond = std::abs(across) - 0.5 * (strip.width - 1);
  const double u = std::clamp(beyond * pitch / kFadeAcross, 0.0, 1.0);
  return 1 - u * u * (3 - 2 * u);
}

// Sectors' middles are gone through by cubics.
double rest_at(const LightModel& model, int channel, int row) noexcept {
  constexpr int kRowsOfSector = MatchField::kRows / kSectors;
  const int half = 2 * row - kRowsOfSector, sector = (half + 2 * MatchField::kRows) / (2 * kRowsOfSector) - kSectors;
  const double u = static_cast<double>(half - sector * 2 * kRowsOfSector) / (2 * kRowsOfSector);
  const auto of = [&](int s) { return model.rest[(s + kSectors) % kSectors][channel]; };
  const double a = of(sector - 1), b = of(sector), c = of(sector + 1), d = of(sector + 2);
  return b + 0.5 * u * ((c - a) + u * ((2 * a - 5 * b + 4 * c - d) + u * (3 * (b - c) + d - a)));
}

int16_t held(double factor) noexcept {
  return static_cast<int16_t>(std::clamp(std::floor(factor * kLightOne + 0.5), -1.0 * kMostLight, 1.0 * kMostLight));
}

struct Values {
  int16_t values[kMatchValues];
};

// factors: of red, green and blue.  What chroma adds to luma where they differ is left out, as for the lenses' own gains.
Values values_of(const double (&factors)[3], const Tone& tone) noexcept {
  const auto [red, green, blue] = factors;
  if (tone.rgb) return {{held(green), held(blue), held(red), 0, 0}};
  constexpr double kRed = 0.2126, kBlue = 0.0722, kGreen = 1 - kRed - kBlue;
  // Shares are of luma above black, as it is shown; exact in the middle of the range, where the pivot adds its part.
  const double range = tone.white - tone.black;
  const double scale = (tone.full_range ? 1 : 224.0 / 219) * (1 + (tone.black - tone.pivot) / (0.45 * range));
  const double luma = kRed * red + kGreen * green + kBlue * blue;
  const double cb = (1 - kBlue) * blue + kBlue * green, cr = (1 - kRed) * red + kRed * green;
  return {{held(luma), held(cb), held(cr), held(scale * (blue - luma) / (2 * (1 - kBlue) * luma)),
           held(scale * (red - luma) / (2 * (1 - kRed) * luma))}};
}

int32_t between(int32_t a, int32_t b, int32_t past) noexcept { return a * 256 + (b - a) * past; }

// Of a place in 1/256 rows and columns.
int16_t value_at(const int16_t (&plane)[MatchField::kRows][MatchField::kMostColumns], int32_t row, int32_t column) noexcept {
  const int r = row >> 8, c = column >> 8, next = (r + 1) % MatchField::kRows;
  const int32_t near = between(plane[r][c], plane[r][c + 1], column & 255);
  const int32_t far = between(plane[next][c], plane[next][c + 1], column & 255);
  return static_cast<int16_t>((near * (256 - (row & 255)) / 256 + far * (row & 255) / 256 + 128) >> 8);
}

}  // namespace

void plan_match_field(StripShape strip, MatchField& field) noexcept {
  const double pitch = 2 * kPi / strip.length;
  field.bits = 0;
  while (pitch * (2 << field.bits) <= kWidestPitch) ++field.bits;
  field.before = static_cast<int>(kFadeAcross / (pitch * (1 << field.bits))) + 1;
  const int across = ((strip.width - 1) >> field.bits) + 2;
  field.columns = std::min(across + 2 * field.before, MatchField::kMostColumns);
}

void fill_match_field(const LightModel& model, const Tone& tone, StripShape strip, MatchField& field) noexcept {
  for (int row = 0; row < MatchField::kRows; ++row) {
    for (int column = 0; column < field.columns; ++column) {
      const double across = static_cast<double>((column - field.before) * (1 << field.bits)) - 0.5 * (strip.width - 1);
      const double fade = fade_at(across, strip);
      // Where lens 0 is at its rim, lens 1 has the ring's middle behind it, and the other way round.
      const double falloff[2] = {fade * model.slope * std::max(across, 0.0), -fade * model.slope * std::min(across, 0.0)};
      double factors[2][3];
      for (int c = 0; c < 3; ++c) {
        const double half = 0.5 * (model.whole[c] + (fade == 0 ? 0 : fade * rest_at(model, c, row)));
        factors[0][c] = power_of(std::clamp(half + falloff[0], -kMostShare, kMostShare));
        factors[1][c] = power_of(std::clamp(falloff[1] - half, -kMostShare, kMostShare));
      }
      for (int lens = 0; lens < 2; ++lens) {
        const Values values = values_of(factors[lens], tone);
        for (int v = 0; v < kMatchValues; ++v) field.values[lens][v][row][column] = values.values[v];
      }
    }
  }
}

void match_strip_row(const MatchField& field, StripShape strip, int lens, int t, MatchRows& rows) noexcept {
  const int32_t row = static_cast<int32_t>(int64_t{t} * (MatchField::kRows << 8) / strip.length);
  for (int v = 0; v < kMatchValues; ++v) {
    for (int b = 0; b < strip.width; ++b) {
      rows.values[v][b] = value_at(field.values[lens][v], row, (b << 8 >> field.bits) + (field.before << 8));
    }
  }
}

size_t match_node_bytes(const MeshShape& shape) noexcept { return 2 * kMatchValues * node_count(shape) * sizeof(int16_t); }

MatchNodes carve_match_nodes(const MeshShape& shape, void* block) noexcept {
  MatchNodes nodes;
  int16_t* next = static_cast<int16_t*>(block);
  for (auto& lens : nodes.values) {
    for (int16_t*& values : lens) {
      values = next;
      next += node_count(shape);
    }
  }
  return nodes;
}

void fill_match_nodes(const MatchField& field, StripShape strip, const Mesh& mesh, int row, const MatchNodes& nodes) noexcept {
  const ptrdiff_t first = ptrdiff_t{row} * mesh.shape.columns;
  const int32_t last = ((field.columns - 1) << 8) - 1;
  for (ptrdiff_t i = first; i < first + mesh.shape.columns; ++i) {
    const int32_t turn = mesh.t.values[i] & ((1 << kTurnBits) - 1);
    // Strip samples from the middle, in 1/256.
    const int64_t across = (int64_t{mesh.b.values[i]} * strip.length >> (kTurnBits - 8)) + ((strip.width - 1) << 7);
    const int32_t column = static_cast<int32_t>(std::clamp<int64_t>((across >> field.bits) + (field.before << 8), 0, last));
    for (int lens = 0; lens < 2; ++lens) {
      for (int v = 0; v < kMatchValues; ++v) {
        nodes.values[lens][v][i] = value_at(field.values[lens][v], turn >> (kTurnBits - 14), column);
      }
    }
  }
}

}  // namespace biseam::ring
