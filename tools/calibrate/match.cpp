#include "calibrate/match.hpp"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "calibrate/correlate.hpp"

namespace biseam::calibrate {
namespace {

constexpr int kSectors = 64;
constexpr double kMostReturn = 0.25;   // pixels between a corner and where tracking back ends
constexpr double kLeastCorner = 1e-3;  // smaller eigenvalue of the structure tensor, in the strips' light

bool holds(const cv::Mat1f& picture, cv::Point2d at, int half_window) {
  return at.x >= half_window + 1 && at.y >= half_window + 1 && at.x < picture.cols - half_window - 2 &&
         at.y < picture.rows - half_window - 2;
}

// A window around a position between the samples, row by row.
void sample_window(const cv::Mat1f& picture, cv::Point2d at, int half, std::vector<float>& window) {
  const int left = int(std::floor(at.x)), top = int(std::floor(at.y)), side = 2 * half + 1;
  const float fx = float(at.x - left), fy = float(at.y - top);
  window.resize(std::size_t(side * side));
  float* out = window.data();
  for (int y = top - half; y <= top + half; ++y) {
    const float *upper = picture[y] + left - half, *lower = picture[y + 1] + left - half;
    for (int x = 0; x < side; ++x) {
      *out++ = (1 - fy) * ((1 - fx) * upper[x] + fx * upper[x + 1]) + fy * ((1 - fx) * lower[x] + fx * lower[x + 1]);
    }
  }
}

// Mean 0 and length 1; false for what is flat.
bool normalise(std::vector<float>& window) {
  double sum = 0, square = 0;
  for (const float value : window) sum += value;
  const float mean = float(sum / double(window.size()));
  for (float& value : window) {
    value -= mean;
    square += double(value) * value;
  }
  if (square < 1e-6) return false;
  const float scale = float(1 / std::sqrt(square));
  for (float& value : window) value *= scale;
  return true;
}

double product(const std::vector<float>& a, const std::vector<float>& b) {
  double sum = 0;
  for (std::size_t i = 0; i < a.size(); ++i) sum += double(a[i]) * b[i];
  return sum;
}

struct Corner {
  float strength;
  int x, y;
};

// The strongest corners of each sector, no two of them close together.
std::vector<cv::Point> find_corners(const Strip& strip, const StripSize& size, const Search& search) {
  cv::Mat1f strength;
  cv::cornerMinEigenVal(strip.light, strength, search.half_window, 3);
  cv::Mat1b inside;
  const int side = 2 * search.half_window + 5;
  cv::erode(strip.seen, inside, cv::getStructuringElement(cv::MORPH_RECT, {side, side}), {-1, -1}, 1, cv::BORDER_CONSTANT, 0);
  const int quota = std::max(1, search.wanted / kSectors), apart = search.half_window;
  std::vector<cv::Point> corners;
  std::vector<Corner> found;
  for (int sector = 0; sector < kSectors; ++sector) {
    const int first = StripSize::kRepeated + sector * size.around / kSectors;
    const int last = StripSize::kRepeated + (sector + 1) * size.around / kSectors;
    found.clear();
    for (int y = 1; y + 1 < size.rows; ++y) {
      for (int x = first; x < last; ++x) {
        const float here = strength(y, x);
        if (!inside(y, x) || here < kLeastCorner) continue;
        if (here < strength(y, x - 1) || here < strength(y, x + 1) || here < strength(y - 1, x) || here < strength(y + 1, x)) {
          continue;
        }
        found.push_back({here, x, y});
      }
    }
    std::sort(found.begin(), found.end(), [](const Corner& a, const Corner& b) {
      return a.strength != b.strength ? a.strength > b.strength : a.y != b.y ? a.y < b.y : a.x < b.x;
    });
    const std::size_t begin = corners.size();
    for (const Corner& corner : found) {
      bool free = true;
      for (std::size_t i = begin; i < corners.size() && free; ++i) {
        free = std::abs(corners[i].x - corner.x) >= apart || std::abs(corners[i].y - corner.y) >= apart;
      }
      if (free) corners.emplace_back(corner.x, corner.y);
      if (corners.size() - begin >= std::size_t(quota)) break;
    }
  }
  return corners;
}

// The best place in the other strip, to a pixel.
bool search_window(const Strip& first, const Strip& second, const Search& search, cv::Point from, StripMatch& match) {
  const int half = search.half_window, side = 2 * half + 1;
  cv::Rect region(from.x - half - search.around, from.y - half - search.up, side + 2 * search.around,
                  side + search.up + search.down);
  region &= cv::Rect(0, 0, second.light.cols, second.light.rows);
  if (region.width < side || region.height < side) return false;
  const BestPlace best = best_place(first.light(cv::Rect(from.x - half, from.y - half, side, side)), second.light(region));
  if (best.score < search.least_score) return false;
  const cv::Point to = region.tl() + best.at + cv::Point(half, half);
  const cv::Rect window(to.x - half, to.y - half, side, side);
  if (cv::countNonZero(second.seen(window)) < side * side) return false;
  match = {{cv::Point2d(from), cv::Point2d(to)}, best.score, {1, 1}};
  return true;
}

bool refine(const Strip& first, const Strip& second, const Search& search, StripMatch& match) {
  const Tracked there = track(first.light, match.at[0], second.light, match.at[1], search.half_window);
  if (there.score < search.least_score) return false;
  match.score = there.score;
  match.deviation = there.deviation;
  const int x = int(std::lround(match.at[1].x)), y = int(std::lround(match.at[1].y)), half = search.half_window;
  if (!second.seen(y - half, x - half) || !second.seen(y - half, x + half) || !second.seen(y + half, x - half) ||
      !second.seen(y + half, x + half)) {
    return false;
  }
  cv::Point2d back = match.at[0];
  if (track(second.light, match.at[1], first.light, back, search.half_window).score < search.least_score) return false;
  const cv::Point2d off = back - match.at[0];
  if (off.dot(off) > kMostReturn * kMostReturn) return false;
  match.at[0] += 0.5 * off;  // the mean of both ways
  return true;
}

}  // namespace

Tracked track(const cv::Mat1f& first, cv::Point2d from, const cv::Mat1f& second, cv::Point2d& to, int half_window) {
  constexpr int kMostSteps = 30;
  constexpr double kRest = 0.003;  // pixels
  if (!holds(first, from, half_window + 1)) return {};
  thread_local std::vector<float> wanted, window, left, right, upper, lower;
  sample_window(first, from, half_window, wanted);
  sample_window(first, from - cv::Point2d(1, 0), half_window, left);
  sample_window(first, from + cv::Point2d(1, 0), half_window, right);
  sample_window(first, from - cv::Point2d(0, 1), half_window, upper);
  sample_window(first, from + cv::Point2d(0, 1), half_window, lower);
  double sum = 0, square = 0;
  for (const float value : wanted) {
    sum += value;
    square += double(value) * value;
  }
  const double deviation = std::sqrt(std::max(0.0, square - sum * sum / double(wanted.size())));
  if (!normalise(wanted)) return {};
  cv::Matx22d tensor(0, 0, 0, 0);
  for (std::size_t i = 0; i < wanted.size(); ++i) {
    const double gx = 0.5 * (right[i] - left[i]) / deviation, gy = 0.5 * (lower[i] - upper[i]) / deviation;
    left[i] = float(gx);
    upper[i] = float(gy);
    tensor(0, 0) += gx * gx;
    tensor(0, 1) += gx * gy;
    tensor(1, 1) += gy * gy;
  }
  tensor(1, 0) = tensor(0, 1);
  const double determinant = cv::determinant(tensor);
  if (determinant < 1e-9) return {};
  for (int step = 0; step < kMostSteps; ++step) {
    if (!holds(second, to, half_window)) return {};
    sample_window(second, to, half_window, window);
    if (!normalise(window)) return {};
    cv::Vec2d right_side(0, 0);
    for (std::size_t i = 0; i < wanted.size(); ++i) {
      const double difference = double(wanted[i]) - window[i];
      right_side[0] += left[i] * difference;
      right_side[1] += upper[i] * difference;
    }
    cv::Vec2d move((tensor(1, 1) * right_side[0] - tensor(0, 1) * right_side[1]) / determinant,
                   (tensor(0, 0) * right_side[1] - tensor(0, 1) * right_side[0]) / determinant);
    const double length = cv::norm(move);
    if (length > 1.5) move *= 1.5 / length;
    to += cv::Point2d(move[0], move[1]);
    if (length < kRest) {
      if (!holds(second, to, half_window)) return {};
      sample_window(second, to, half_window, window);
      if (!normalise(window)) return {};
      Tracked tracked{product(wanted, window), {}};
      // What differs is noise in every sample, and moves the window the less the steeper its edges are.
      const double noise = std::max(0.0, 2 - 2 * tracked.score) / double(window.size());
      tracked.deviation = {std::sqrt(noise * tensor(1, 1) / determinant), std::sqrt(noise * tensor(0, 0) / determinant)};
      return tracked;
    }
  }
  return {};
}

Match recorded(const StripMatch& match, const StripSize& size, const Projector (&lens)[2], int pair) {
  Match there{pair, {}};
  for (int k = 0; k < 2; ++k) {
    const ImagePoint at = lens[k].project(ring_direction(size.t(match.at[k].x), size.b(match.at[k].y)));
    there.at[k] = {at.x, at.y};
  }
  there.t_doubt = match.deviation.x;
  there.b_doubt = match.deviation.y;
  return there;
}

std::vector<StripMatch> find_matches(const Strip& first, const Strip& second, const StripSize& size, const Search& search) {
  std::vector<StripMatch> matches;
  for (const cv::Point& corner : find_corners(first, size, search)) {
    StripMatch match;
    if (!search_window(first, second, search, corner, match)) continue;
    if (search.fine && !refine(first, second, search, match)) continue;
    matches.push_back(match);
  }
  return matches;
}

}  // namespace biseam::calibrate
