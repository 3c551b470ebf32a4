#include "calibrate/align.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <opencv2/imgproc.hpp>

#include "calibrate/match.hpp"

namespace biseam::calibrate {
namespace {

constexpr int kAround = 960;             // columns of the reduced strip
constexpr double kReach = 14 * kDegree;  // half its height
constexpr int kWanted = 256;             // corners of a pair
constexpr double kTolerance = 1.6;       // pixels by which matches may disagree
constexpr std::size_t kMostPairs = 3;
constexpr std::size_t kLeastMatches = 24;
constexpr int kLeastOctants = 4;

struct Shift {  // of a match in the strip
  double t;     // angle round the axis
  cv::Point2d off;
};

// Lens 1 turned and moved against lens 0, to first order: both lenses' strips differ by constants and by one wave round the
// ring.
struct Wave {
  double around[3] = {0, 0, 0}, across[3] = {0, 0, 0};  // constant, of the cosine, of the sine

  double distance(const Shift& shift) const {
    const SineCosine t = sine_cosine(shift.t);
    const double x = around[0] + around[1] * t.cosine + around[2] * t.sine - shift.off.x;
    const double y = across[0] + across[1] * t.cosine + across[2] * t.sine - shift.off.y;
    return std::sqrt(x * x + y * y);
  }
};

std::optional<Wave> wave_through(const Shift& a, const Shift& b, const Shift& c) {
  cv::Matx33d rows;
  const Shift* shifts[3] = {&a, &b, &c};
  cv::Matx31d x, y;
  for (int i = 0; i < 3; ++i) {
    const SineCosine t = sine_cosine(shifts[i]->t);
    rows(i, 0) = 1;
    rows(i, 1) = t.cosine;
    rows(i, 2) = t.sine;
    x(i) = shifts[i]->off.x;
    y(i) = shifts[i]->off.y;
  }
  if (std::abs(cv::determinant(rows)) < 0.3) return std::nullopt;
  const cv::Matx31d u = rows.solve(x), v = rows.solve(y);
  Wave wave;
  for (int i = 0; i < 3; ++i) {
    wave.around[i] = u(i);
    wave.across[i] = v(i);
  }
  // Centres differ by a few pixels only; larger waves along the ring come from wrong matches.
  if (std::abs(wave.around[1]) > 6 || std::abs(wave.around[2]) > 6) return std::nullopt;
  if (std::abs(wave.across[1]) > 16 || std::abs(wave.across[2]) > 16) return std::nullopt;
  return wave;
}

std::vector<std::size_t> agreeing(const std::vector<Shift>& shifts) {
  std::vector<std::size_t> best, near;
  if (shifts.size() < 3) return best;
  std::uint32_t state = 7;
  const auto draw = [&]() -> const Shift& {
    state = state * 1664525u + 1013904223u;
    return shifts[(state >> 8) % shifts.size()];
  };
  for (int attempt = 0; attempt < 1500; ++attempt) {
    const std::optional<Wave> wave = wave_through(draw(), draw(), draw());
    if (!wave) continue;
    near.clear();
    for (std::size_t i = 0; i < shifts.size(); ++i) {
      if (wave->distance(shifts[i]) < kTolerance) near.push_back(i);
    }
    if (near.size() > best.size()) best = near;
  }
  return best;
}

int octants_of(const std::vector<Shift>& shifts, const std::vector<std::size_t>& chosen) {
  int count[8] = {};
  for (const std::size_t i : chosen) ++count[int((shifts[i].t / (2 * kPi) + 1) * 8) % 8];
  return int(std::count_if(std::begin(count), std::end(count), [](int n) { return n >= 2; }));
}

Camera reduced(const Camera& camera, const cv::Mat1b picture[2]) {
  Camera small = camera;
  for (int k = 0; k < 2; ++k) {
    Lens& lens = small.lens[k];
    const double x = double(picture[k].cols) / lens.width, y = double(picture[k].rows) / lens.height;
    lens.cx = (lens.cx + 0.5) * x - 0.5;
    lens.cy = (lens.cy + 0.5) * y - 0.5;
    lens.p *= x;
    lens.width = picture[k].cols;
    lens.height = picture[k].rows;
  }
  return small;
}

cv::Mat rolled(const cv::Mat& picture, const StripSize& size, int columns) {
  const int from = StripSize::kRepeated, rest = size.around - columns;
  const cv::Mat once = picture.colRange(from, from + size.around);
  cv::Mat turned, repeated;
  if (columns == 0) return picture;
  cv::hconcat(once.colRange(rest, size.around), once.colRange(0, rest), turned);
  cv::copyMakeBorder(turned, repeated, 0, 0, StripSize::kRepeated, StripSize::kRepeated, cv::BORDER_WRAP);
  return repeated;
}

// The strip of lens 1 with its mount so many quarter turns further: clockwise in the picture is backwards round the axis.
Strip turned_strip(const Strip& strip, const StripSize& size, int turns) {
  const int columns = (4 - turns) % 4 * size.around / 4;
  return {rolled(strip.light, size, columns), rolled(strip.seen, size, columns)};
}

struct Reduced {
  Pair pictures;
  int pair;  // that they are of
};

std::vector<Reduced> reduce(const std::vector<Pair>& pairs, double scale) {
  std::vector<Reduced> reduced_pairs;
  const std::size_t step = (pairs.size() + kMostPairs - 1) / kMostPairs;
  for (std::size_t i = 0; i < pairs.size(); i += step) {
    Reduced small{{}, int(i)};
    for (int k = 0; k < 2; ++k) cv::resize(pairs[i].lens[k], small.pictures.lens[k], {}, scale, scale, cv::INTER_AREA);
    reduced_pairs.push_back(small);
  }
  return reduced_pairs;
}

// The best of the quarter turns.  Fewer than kLeastMatches matches: none is good.
Alignment align_guess(const std::vector<Reduced>& pairs, const StripSize& size, const Values& guess, const Frame& frame,
                      int quarters) {
  constexpr Search kSearch{16, 18, 18, 7, kWanted, 0.7, false};
  const Camera small = reduced(camera_of(guess, frame), pairs.front().pictures.lens);
  const Unroller unroller[2] = {Unroller(small, 0, size), Unroller(small, 1, size)};
  std::vector<std::array<Strip, 2>> strips;
  for (const Reduced& pair : pairs) {
    strips.push_back({unroller[0].unroll(pair.pictures.lens[0]), unroller[1].unroll(pair.pictures.lens[1])});
  }
  Alignment best;
  for (int turns = 0; turns < quarters; ++turns) {
    Frame turned = frame;
    turned.mount[1] = (frame.mount[1] + 90 * turns) % 360;
    const Camera camera = camera_of(guess, turned);
    const Projector picture[2] = {Projector(camera, 0), Projector(camera, 1)};
    std::vector<Shift> shifts;
    std::vector<Match> matches;
    for (std::size_t i = 0; i < pairs.size(); ++i) {
      const Strip second = turned_strip(strips[i][1], size, turns);
      for (const StripMatch& match : find_matches(strips[i][0], second, size, kSearch)) {
        shifts.push_back({size.t(match.at[0].x), match.at[1] - match.at[0]});
        matches.push_back(recorded(match, size, picture, pairs[i].pair));
      }
    }
    const std::vector<std::size_t> chosen = agreeing(shifts);
    if (chosen.size() <= best.matches.size() || octants_of(shifts, chosen) < kLeastOctants) continue;
    best = {guess, turned, {}};
    for (const std::size_t i : chosen) best.matches.push_back(matches[i]);
  }
  return best;
}

}  // namespace

std::optional<Alignment> align(const std::vector<Pair>& pairs, const std::vector<Values>& guesses, const Frame& frame,
                               int quarters, const ShareWork& share_work) {
  const StripSize size{kAround, int(2 * kReach * kAround / (2 * kPi)) | 1};
  const std::vector<Reduced> small = reduce(pairs, size.around / (2 * kPi) / std::exp(guesses.front()[kScale]));
  std::vector<Alignment> found(guesses.size());
  share_work(int(guesses.size()),
             [&](int i) { found[std::size_t(i)] = align_guess(small, size, guesses[std::size_t(i)], frame, quarters); });
  const auto best = std::max_element(
      found.begin(), found.end(), [](const Alignment& a, const Alignment& b) { return a.matches.size() < b.matches.size(); });
  if (best->matches.size() < kLeastMatches) return std::nullopt;
  return *best;
}

}  // namespace biseam::calibrate
