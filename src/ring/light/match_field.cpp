#include "ring/light/match_field.hpp"

#include <algorithm>
#include <cmath>

#include "base/loop_versions.hpp"
#include "camera/trigonometry.hpp"
#include "ring/light/spread_places.hpp"

namespace biseam::ring {

namespace {

constexpr double kMostLog = 0.7 * kLogOne;      // of either lens: a factor of 1.62
constexpr double kFadeAcross = 20 * kDegree;    // beyond the ring
constexpr double kWidestPitch = 3.2 * kDegree;  // of columns
static_assert(MatchField::kRows % kSectors == 0);
// Log of what falloff from the axis on leaves at right angles to it: of codes; about a tenth of the light.
constexpr double kMostFalloff = 0.07 * kLogOne;

// 1 in the ring, 0 from kFadeAcross beyond it on.
double fade_at(double across, StripShape strip) noexcept {
  const double pitch = 2 * kPi / strip.length, beyond = std::abs(across) - 0.5 * (strip.width - 1);
  const double u = std::clamp(beyond * pitch / kFadeAcross, 0.0, 1.0);
  return 1 - u * u * (3 - 2 * u);
}

// Logs of what undoes a lens's falloff.
class Falloff {
 public:
  Falloff(double slope, StripShape strip) noexcept
      : quarter_(0.25 * strip.length),
        // The lenses' squares differ by 4 quarter_ for each sample across.
        square_(std::clamp(slope / (4 * quarter_), 0.0, kMostFalloff / (quarter_ * quarter_))),
        rim_(slope - square_ * 4 * quarter_) {}

  // out: strip samples from the ring's middle, towards the lens's rim; fade: see fade_at().
  double undone(double out, double fade) const noexcept {
    const double angle = std::max(quarter_ + out, 0.0);
    return square_ * angle * angle + fade * rim_ * std::max(out, 0.0);
  }

 private:
  double quarter_, square_, rim_;  // quarter: of a turn
};

// Sectors' middles are gone through by cubics.
double rest_at(const LightModel& model, int channel, int row) noexcept {
  constexpr int kRowsOfSector = MatchField::kRows / kSectors;
  const int half = 2 * row - kRowsOfSector, sector = (half + 2 * MatchField::kRows) / (2 * kRowsOfSector) - kSectors;
  const double u = static_cast<double>(half - sector * 2 * kRowsOfSector) / (2 * kRowsOfSector);
  const auto of = [&](int s) { return model.rest[(s + kSectors) % kSectors][channel]; };
  const double a = of(sector - 1), b = of(sector), c = of(sector + 1), d = of(sector + 2);
  return b + 0.5 * u * ((c - a) + u * ((2 * a - 5 * b + 4 * c - d) + u * (3 * (b - c) + d - a)));
}

int16_t held(double value, int least, int most) noexcept {
  return static_cast<int16_t>(std::clamp(std::floor(value * kMatchOne + 0.5), 1.0 * least, 1.0 * most));
}
int16_t gain(double factor) noexcept { return held(factor - 1, kLeastGain, kMostGain); }
int16_t share(double value) noexcept { return held(value, -kMostShare, kMostShare); }

double held_log(double log) noexcept { return std::clamp(log, -2 * kMostLog, 2 * kMostLog); }

// factors: of red, green and blue.  What chroma adds to luma where they differ is left out, as for the lenses' own gains.
MatchPlace place_of(const double (&factors)[3], const Tone& tone) noexcept {
  const auto [red, green, blue] = factors;
  if (tone.rgb) return {{gain(green), gain(blue), gain(red), 0, 0}};
  constexpr double kRed = 0.2126, kBlue = 0.0722, kGreen = 1 - kRed - kBlue;
  // Shares are of luma above black, as it is shown; exact in the middle of the range, where the pivot adds its part.
  const double range = tone.white - tone.black;
  const double scale = (tone.full_range ? 1 : 224.0 / 219) * (1 + (tone.black - tone.pivot) / (0.45 * range));
  const double luma = kRed * red + kGreen * green + kBlue * blue;
  const double cb = (1 - kBlue) * blue + kBlue * green, cr = (1 - kRed) * red + kRed * green;
  return {{gain(luma), gain(cb), gain(cr), share(scale * (blue - luma) / (2 * (1 - kBlue) * luma)),
           share(scale * (red - luma) / (2 * (1 - kRed) * luma))}};
}

BISEAM_LOOP void find_places(const MatchField& field, int lens, const int32_t* rows, const int32_t* columns, MatchPlace* out,
                             int count) noexcept {
  const auto& places = field.places[lens];
  for (ptrdiff_t i = 0; i < count; ++i) {
    const int32_t row = rows[i] >> 8, column = columns[i] >> 8, next = (row + 1) % MatchField::kRows;
    const int32_t down = rows[i] & 255, across = columns[i] & 255;
    const int32_t far = down * (256 - across), both = down * across, near = 256 * (256 - across) - far,
                  right = 256 * across - both;
    const MatchPlace *const upper = places[row] + column, *const lower = places[next] + column;
    for (int v = 0; v < MatchPlace::kLanes; ++v) {
      out[i].values[v] = static_cast<int16_t>((upper[0].values[v] * near + upper[1].values[v] * right +
                                               lower[0].values[v] * far + lower[1].values[v] * both + 32768) >>
                                              16);
    }
  }
}

}  // namespace

void plan_match_field(StripShape strip, MatchField& field) noexcept {
  const double pitch = 2 * kPi / strip.length, axis = 0.25 * strip.length - 0.5 * (strip.width - 1);
  field.bits = 0;
  while (pitch * (2 << field.bits) <= kWidestPitch) ++field.bits;
  field.before = static_cast<int>(std::ceil(axis / (1 << field.bits)));
  const int across = ((strip.width - 1) >> field.bits) + 2;
  field.columns = std::min(across + 2 * field.before, MatchField::kMostColumns);
}

void fill_match_field(const LightModel& model, const Tone& tone, StripShape strip, MatchField& field) noexcept {
  const double most = power_of(kMostLog), least = 1 / most;
  const Falloff falloff(model.slope, strip);
  double rest[MatchField::kRows][3], halves[MatchField::kRows][3], faded = -1;
  for (int row = 0; row < MatchField::kRows; ++row) {
    for (int c = 0; c < 3; ++c) rest[row][c] = rest_at(model, c, row);
  }
  for (int column = 0; column < field.columns; ++column) {
    const double across = static_cast<double>((column - field.before) * (1 << field.bits)) - 0.5 * (strip.width - 1);
    const double fade = fade_at(across, strip);
    // Lens 0's rim is on lens 1's side.
    const double undone[2] = {power_of(held_log(falloff.undone(across, fade))),
                              power_of(held_log(falloff.undone(-across, fade)))};
    // Beyond what fades all rows are the same.
    const int rows = fade == 0 ? 1 : MatchField::kRows;
    for (int row = 0; row < rows; ++row) {
      double factors[2][3];
      for (int c = 0; c < 3; ++c) {
        double& half = halves[row][c];
        if (fade != faded) half = power_of(held_log(0.5 * (model.whole[c] + fade * rest[row][c])));
        factors[0][c] = std::clamp(half * undone[0], least, most);
        factors[1][c] = std::clamp(undone[1] / half, least, most);
      }
      for (int lens = 0; lens < 2; ++lens) field.places[lens][row][column] = place_of(factors[lens], tone);
    }
    for (int row = rows; row < MatchField::kRows; ++row) {
      for (auto& lens : field.places) lens[row][column] = lens[0][column];
    }
    faded = fade;
  }
}

constinit const Variants<FindMatchPlaces> kFindMatchPlaces = loop_versions<find_places, FindMatchPlaces>;

void match_strip_row(const MatchField& field, StripShape strip, int lens, int t, MatchStripRow& row) noexcept {
  int32_t rows[MatchField::kMostColumns], columns[MatchField::kMostColumns];
  const int count = ((strip.width - 1) >> field.bits) + 2;
  std::fill_n(rows, count, static_cast<int32_t>(int64_t{t} * (MatchField::kRows << 8) / strip.length));
  for (int i = 0; i < count; ++i) columns[i] = (field.before + i) << 8;
  kFindMatchPlaces.best()(field, lens, rows, columns, row.places, count);
}

void match_strip_values(const MatchField& field, StripShape strip, const MatchStripRow& row, int value, int16_t* out) noexcept {
  kSpreadPlaces.best()({&row.places[0].values[value], nullptr, field.bits, 0, 0}, out, strip.width);
}

size_t match_node_bytes(const MeshShape& shape) noexcept { return 2 * node_count(shape) * sizeof(MatchPlace); }

MatchNodes carve_match_nodes(const MeshShape& shape, void* block) noexcept {
  MatchPlace* const first = static_cast<MatchPlace*>(block);
  return {{first, first + node_count(shape)}};
}

void fill_match_nodes(const MatchField& field, StripShape strip, const Mesh& mesh, int row, const MatchNodes& nodes) noexcept {
  constexpr int kAtOnce = 64;
  const ptrdiff_t first = ptrdiff_t{row} * mesh.shape.columns;
  const int32_t last = ((field.columns - 1) << 8) - 1;
  for (int done = 0; done < mesh.shape.columns; done += kAtOnce) {
    const int count = std::min(kAtOnce, mesh.shape.columns - done);
    int32_t rows[kAtOnce], columns[kAtOnce];
    for (int i = 0; i < count; ++i) {
      const ptrdiff_t node = first + done + i;
      rows[i] = (mesh.t.values[node] & ((1 << kTurnBits) - 1)) >> (kTurnBits - 14);
      // Strip samples from the middle, in 1/256.
      const int64_t across = (int64_t{mesh.b.values[node]} * strip.length >> (kTurnBits - 8)) + ((strip.width - 1) << 7);
      columns[i] = static_cast<int32_t>(std::clamp<int64_t>((across >> field.bits) + (field.before << 8), 0, last));
    }
    for (int lens = 0; lens < 2; ++lens) {
      kFindMatchPlaces.best()(field, lens, rows, columns, nodes.places[lens] + first + done, count);
    }
  }
}

}  // namespace biseam::ring
