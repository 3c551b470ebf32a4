#include "calibrate/estimate.hpp"

#include <algorithm>
#include <cmath>

#include "calibrate/doubt.hpp"
#include "calibrate/explain.hpp"
#include "calibrate/in_lens.hpp"
#include "calibrate/match.hpp"
#include "calibrate/strip.hpp"
#include "calibrate/upright.hpp"
#include "calibrate/vectors.hpp"
#include "camera/rules.hpp"

namespace biseam::calibrate {
namespace {

constexpr double kUsualRim = 99;             // degrees
constexpr double kCircleDeviation = 0.0005;  // of radii, relative
constexpr double kCentreDeviation = 0.0001;  // of the axis from the circle's middle, in radii
constexpr double kUsualK1 = -0.005;
constexpr std::size_t kLeastMatches = 40;
constexpr double kAlikeError = 0.04;              // pixels of the pictures by which neighbouring matches may be off together
constexpr int kLeastRounds = 3, kMostRounds = 6;  // of strips by a better camera
constexpr int kScatteredRounds = 3;               // likewise, once things are taken to be at all distances
constexpr double kLeastKept = 0.4;
constexpr const char* kTooLittle = "too few things are seen by both lenses, or they don't fit together";
constexpr double kMostSeamDeviation = 1.0, kMostWorstDeviation = 3.0;

struct Circles {
  std::optional<Circle> found[2];
  Circle used[2];
};

bool is_dark(const std::vector<cv::Mat1b>& frames) {
  double brightest = 0;
  for (const cv::Mat1b& frame : frames) {
    cv::Scalar mean, deviation;
    cv::meanStdDev(frame, mean, deviation);
    brightest = std::max(brightest, deviation[0]);
  }
  return brightest < 4;
}

// One lens's picture was given for both.
bool is_one_lens_twice(const std::vector<Pair>& pairs) {
  return std::all_of(pairs.begin(), pairs.end(),
                     [](const Pair& pair) { return cv::norm(pair.lens[0], pair.lens[1], cv::NORM_INF) == 0; });
}

// Where none is found.
Circles circles_of(const Known& known) {
  Circles circles;
  const Camera camera = camera_of(known.values, known.frame);
  for (int k = 0; k < 2; ++k) {
    const Lens& lens = camera.lens[k];
    circles.used[k] = {lens.cx, lens.cy, radius(lens, lens.fov / 2 * kDegree), 0, 0};
  }
  return circles;
}

Circles find_circles(const std::vector<Pair>& pairs, const std::optional<Known>& known, const ShareWork& share_work) {
  Circles circles;
  bool dark[2] = {};
  share_work(2, [&](int k) {
    std::vector<cv::Mat1b> frames;
    for (const Pair& pair : pairs) frames.push_back(pair.lens[k]);
    dark[k] = is_dark(frames);
    circles.found[k] = find_circle(frames);
  });
  for (int k = 0; k < 2; ++k) {
    if (dark[k]) throw Refusal("the picture of lens " + std::to_string(k) + " shows nothing; is it covered?");
  }
  if (is_one_lens_twice(pairs)) throw Refusal("both lenses' pictures are one and the same");
  if (!circles.found[0] && !circles.found[1]) {
    if (known) return circles_of(*known);
    throw Refusal("no circle is found in either picture; a profile to start from is needed");
  }
  const cv::Mat1b& picture = pairs.front().lens[0];
  for (int k = 0; k < 2; ++k) {
    const Circle& used = circles.found[k] ? *circles.found[k] : *circles.found[1 - k];
    circles.used[k] = used;
    if (circles.found[k]) continue;
    circles.used[k].cx = (picture.cols - 1) / 2.0;
    circles.used[k].cy = (picture.rows - 1) / 2.0;
  }
  return circles;
}

Values guess_of(const Circles& circles, double rim, double k1) {
  Values values{};
  const double angle = rim * kDegree;
  values[kScale] = std::log(0.5 * (circles.used[0].radius + circles.used[1].radius) / (angle * (1 + k1 * angle * angle)));
  values[kScaleRatio] = std::log(circles.used[1].radius / circles.used[0].radius);
  values[kK1] = k1;
  values[kCx0] = circles.used[0].cx;
  values[kCy0] = circles.used[0].cy;
  values[kCx1] = circles.used[1].cx;
  values[kCy1] = circles.used[1].cy;
  values[kRim] = rim;
  return values;
}

// Lenses of one kind bend alike, the less they bend at all the more.
void expect_lenses_alike(const Values& values, Problem& problem) {
  constexpr double kApart = 0.06;  // of the terms
  Values& deviations = problem.prior.deviations;
  if (deviations[kK1Apart] > kHeld) deviations[kK1Apart] = std::hypot(0.0004, kApart * values[kK1]);
  if (deviations[kK2Apart] > kHeld) deviations[kK2Apart] = std::hypot(0.00008, kApart * values[kK2]);
}

Prior prior_of(const Circles& circles, const Frame& frame, const Values& middle) {
  Prior prior;
  prior.values = middle;
  prior.values[kK1] = kUsualK1;
  prior.values[kK2] = prior.values[kK3] = prior.values[kK1Apart] = prior.values[kK2Apart] = 0;
  prior.values[kYaw] = prior.values[kPitch] = prior.values[kRoll] = 0;
  prior.values[kRim] = kUsualRim;
  prior.values[kScaleRatio] = 0;
  prior.deviations[kScaleRatio] = 0.01;
  prior.deviations[kK1] = 0.02;
  prior.deviations[kK2] = 0.0035;
  prior.deviations[kK3] = 0.0015;
  prior.deviations[kK1Apart] = 0.002;
  prior.deviations[kK2Apart] = 0.0004;
  for (int k = 0; k < 2; ++k) {
    const double deviation =
        circles.found[k] ? kCentreDeviation * circles.used[k].radius + circles.used[k].deviation : 0.01 * frame.width;
    for (const int p : {k == 0 ? kCx0 : kCx1, k == 0 ? kCy0 : kCy1}) prior.deviations[std::size_t(p)] = deviation;
    if (circles.found[k]) prior.circle[k] = circles.used[k].radius;
  }
  prior.circle_deviation =
      kCircleDeviation + std::max(circles.used[0].deviation, circles.used[1].deviation) / circles.used[0].radius;
  prior.deviations[kYaw] = prior.deviations[kPitch] = prior.deviations[kRoll] = 4;
  prior.deviations[kRim] = 2.5;
  prior.deviations[kBesideX] = prior.deviations[kBesideY] = kHeld;
  return prior;
}

void hold(const Known& known, Prior& prior) {
  for (std::size_t p = 0; p < kParameters; ++p) {
    if (!known.held[p]) continue;
    prior.values[p] = known.values[p];
    prior.deviations[p] = kHeld;
  }
}

// Of all pairs, in their order.
std::vector<Match> match_pairs(const std::vector<Pair>& pairs, const Values& values, const Frame& frame, const Search& search,
                               const ShareWork& share_work) {
  const Camera camera = camera_of(values, frame);
  const double scale = std::exp(values[kScale]);
  const double reach = std::clamp(values[kRim] - 90 + 1, 3.0, 16.0) * kDegree;
  StripSize size;
  size.around = std::clamp(int(2 * kPi * scale / 64) * 64, 640, 5120);
  size.rows = int(2 * reach / size.pixel()) | 1;
  std::optional<Unroller> unroller[2];
  share_work(2, [&](int k) { unroller[k].emplace(camera, k, size); });
  const Projector projector[2] = {Projector(camera, 0), Projector(camera, 1)};
  std::vector<std::vector<Match>> found(pairs.size());
  share_work(int(pairs.size()), [&](int i) {
    const Pair& pair = pairs[std::size_t(i)];
    for (const StripMatch& match :
         find_matches(unroller[0]->unroll(pair.lens[0]), unroller[1]->unroll(pair.lens[1]), size, search)) {
      found[std::size_t(i)].push_back(recorded(match, size, projector, i));
    }
  });
  std::vector<Match> matches;
  for (const std::vector<Match>& part : found) matches.insert(matches.end(), part.begin(), part.end());
  compare_doubts(matches);
  return matches;
}

// The rim's deviation where what lenses usually are like counts a quarter.  What is held is left out, as nothing could be
// solved with it.
double loose_rim(const Solution& solution, const Prior& prior) {
  std::vector<int> free;
  for (int p = 0; p < kParameters; ++p) {
    if (prior.deviations[std::size_t(p)] != kHeld) free.push_back(p);
  }
  const int count = int(free.size());
  cv::Mat1d covariance(count, count);
  for (int i = 0; i < count; ++i) {
    for (int j = 0; j < count; ++j) covariance(i, j) = solution.covariance(free[std::size_t(i)], free[std::size_t(j)]);
  }
  cv::Mat1d information = covariance.inv(cv::DECOMP_CHOLESKY);
  for (int i = 0; i < count; ++i) {
    const int p = free[std::size_t(i)];
    const double deviation = prior.deviations[std::size_t(p)];
    if (p == kK1 || p == kK2 || p == kK3 || p == kRim) information(i, i) -= 0.75 / (deviation * deviation);
  }
  const auto rim = int(std::find(free.begin(), free.end(), int(kRim)) - free.begin());
  return std::sqrt(cv::Mat1d(information.inv(cv::DECOMP_CHOLESKY))(rim, rim));
}

// What the covariance says about where far things lie in both lenses: on so many places of the ring.
void judge_seams(Estimate& estimate) {
  constexpr int kPlaces = 64;
  std::vector<Match> places;
  const Projector projector[2] = {Projector(estimate.camera, 0), Projector(estimate.camera, 1)};
  for (int i = 0; i < kPlaces; ++i) {
    Match place{0, {}};
    for (int k = 0; k < 2; ++k) {
      const ImagePoint at = projector[k].project(ring_direction(i * 2 * kPi / kPlaces, 0));
      place.at[k] = {at.x, at.y};
    }
    places.push_back(place);
  }
  cv::Mat1d t(kPlaces, kParameters, 0.0), b(kPlaces, kParameters, 0.0);
  const std::vector<Slopes> slopes = slopes_of(estimate.solution.values, estimate.frame, places);
  const double scale = across_scale(estimate.camera);
  for (int i = 0; i < kPlaces; ++i) {
    for (int p = 0; p < kParameters; ++p) {
      t(i, p) = slopes[std::size_t(i)].t[std::size_t(p)];
      b(i, p) = slopes[std::size_t(i)].b[std::size_t(p)] / scale;
    }
  }
  const cv::Mat1d covariance = estimate.solution.covariance(cv::Rect(0, 0, kParameters, kParameters));
  double sum = 0, octant[8] = {};
  for (int i = 0; i < kPlaces; ++i) {
    double variance = 0;
    for (const cv::Mat1d& rows : {t, b}) {
      const cv::Mat1d row = rows.row(i), product = row * covariance * row.t();
      variance += product(0, 0);
    }
    sum += variance / kPlaces;
    octant[i * 8 / kPlaces] += variance / (kPlaces / 8);
  }
  estimate.seam_deviation = std::sqrt(sum);
  estimate.worst_deviation = std::sqrt(*std::max_element(octant, octant + 8));
}

// Where the ground is seen, or expected.
Vec3 below(const Problem& problem, const Solution& solution) {
  constexpr double kLeastParallax = 0.5;  // pixels
  Vec3 sum{0, 0, 0};
  for (const Ground& ground : solution.grounds) sum = sum + (1.0 / problem.pairs) * ground;
  if (dot(sum, sum) > kLeastParallax * kLeastParallax) return unit(sum);
  const Vec3& down = problem.prior.down;
  return dot(down, down) > 0 ? down : Vec3{0, 1, 0};
}

// Values move by a small share of their deviations.
bool stands_still(const Values& before, const Solution& after) {
  constexpr double kSmall = 0.3;
  for (std::size_t p = 0; p < kParameters; ++p) {
    const double deviation = std::sqrt(after.covariance(int(p), int(p)));
    if (std::abs(after.values[p] - before[p]) > kSmall * deviation) return false;
  }
  return true;
}

// A lens's axis meets its picture close to the middle of the circle.
bool contradicts_circles(const Estimate& found) {
  constexpr double kMostOff = 0.012;  // of the radius
  for (int k = 0; k < 2; ++k) {
    if (!found.circle[k]) continue;
    const Circle& circle = *found.circle[k];
    const double off = std::hypot(found.camera.lens[k].cx - circle.cx, found.camera.lens[k].cy - circle.cy);
    if (off > kMostOff * circle.radius + 3 * circle.deviation) return true;
  }
  return false;
}

void refuse_doubt(const Estimate& found) {
  if (found.kept < kLeastKept) throw Refusal("the pictures of both lenses don't fit together; are they of one place and time?");
  if (contradicts_circles(found)) throw Refusal("what both lenses see doesn't fit the image circles; more pictures help");
  if (const CameraError error = check_camera(found.camera)) {
    throw Refusal(std::string("what is found is no camera: ") + error.text);
  }
  if (!(found.seam_deviation <= kMostSeamDeviation && found.worst_deviation <= kMostWorstDeviation)) {
    throw Refusal("too little is seen by both lenses to know where they meet; more pictures, of places with more to see, help");
  }
}

}  // namespace

Estimate estimate(const std::vector<Pair>& pairs, const std::optional<Known>& known, const ShareWork& share_work) {
  const Circles circles = find_circles(pairs, known, share_work);
  const Frame frame = known ? known->frame : Frame{pairs.front().lens[0].cols, pairs.front().lens[0].rows, {0, 0}};
  std::vector<Values> guesses;
  if (known) guesses.push_back(known->values);
  for (const double rim : {96.0, kUsualRim, 103.0}) {
    for (const double k1 : {-0.035, kUsualK1, 0.025}) {
      if (!known) guesses.push_back(guess_of(circles, rim, k1));
    }
  }
  const std::optional<Alignment> aligned = align(pairs, guesses, frame, known ? 1 : 4, share_work);
  if (!aligned) throw Refusal(kTooLittle);
  Problem problem{aligned->frame, aligned->matches, int(pairs.size()),
                  prior_of(circles, frame, guess_of(circles, kUsualRim, kUsualK1))};
  problem.prior.down = lower_side(pairs, circles.used, problem.frame);
  problem.alike_error = kAlikeError * kPixelsPerRadian / std::exp(aligned->values[kScale]);
  if (known) hold(*known, problem.prior);
  const Solution solution = solve(problem, aligned->values, std::vector<Ground>(pairs.size()), {20, 0.01, 0.1});
  const int wanted = pairs.size() == 1 ? 1280 : std::max(320, int(6400 / pairs.size()));
  const auto match_again = [&](const Values& camera, int margin) {
    const Search search{margin, margin, margin + 24, 8, wanted, 0.8, true};
    problem.matches = match_pairs(pairs, camera, problem.frame, search, share_work);
  };
  constexpr int kFirstMargin = 12, kMargin = 4;  // strip pixels by which the camera may still be off
  Explanations explanations;
  Values values = solution.values;
  for (int round = 0; round < kMostRounds; ++round) {
    if (round > 0) expect_lenses_alike(values, problem);
    match_again(values, round == 0 ? kFirstMargin : kMargin);
    if (problem.matches.size() < kLeastMatches) throw Refusal(kTooLittle);
    if (round == 0) {
      explanations = explain(problem, values, share_work);
      if (!known) set_upright(problem, explanations);
    } else {
      explanations = explain_again(problem, explanations, share_work);
    }
    const bool still = round + 1 >= kLeastRounds && stands_still(values, explanations.better());
    values = explanations.better().values;
    if (still) break;
  }
  const bool holds = known && std::count(known->held.begin(), known->held.end(), true) > 0;
  std::optional<InLens> in_lens;
  if (!holds) in_lens = look_in_lenses(pairs, values, problem.frame, below(problem, explanations.better()), share_work);
  if (in_lens) {
    problem.prior.stiffness = in_lens->stiffness;
    problem.prior.others = in_lens->values;
    for (Solution* each : {&explanations.still, &explanations.ground}) take_in_lens(*in_lens, problem.frame, each->values);
    match_again(explanations.better().values, kMargin);
    explanations = explain_again(problem, explanations, share_work);
  }
  if (explain_scattered(problem, explanations)) {
    for (int round = 0; round < kScatteredRounds; ++round) {
      match_again(explanations.better().values, kMargin);
      explanations = explain_again(problem, explanations, share_work);
    }
  }
  Solution better = explanations.better();
  const double loose = loose_rim(better, problem.prior);
  better.covariance = covariance_of(explanations);
  Estimate found{camera_of(aligned->values, problem.frame),
                 camera_of(better.values, problem.frame),
                 problem.frame,
                 {circles.found[0], circles.found[1]},
                 std::move(problem.matches),
                 std::move(better)};
  for (int p = 0; p < kParameters; ++p) found.deviations[std::size_t(p)] = std::sqrt(found.solution.covariance(p, p));
  found.loose_rim = loose;
  if (in_lens) found.tracks = in_lens->tracks;
  found.kept = 1 - found.solution.scatter.wrong;
  judge_seams(found);
  refuse_doubt(found);
  return found;
}

}  // namespace biseam::calibrate
