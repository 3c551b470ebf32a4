// How well cameras that were drawn at random are found again.
//   bench_calibrate FOLDER [first seed] [cameras] [pairs] [size] [most k3] [step]
// FOLDER holds panoramas; the odd seeds see the meadow, the even ones the rocks.  Both lenses have the same k3, up to 0.002 to
// either side of 0.  Between two pairs the camera turns, and walks by a step of so many metres (0).
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>

#include "calibrate/estimate.hpp"
#include "camera/trigonometry.hpp"
#include "cameras/judge.hpp"

using namespace biseam;

namespace {

struct Table {
  int refused = 0;
  std::vector<double> seams, worst, straight, loss, told, seconds;
};

double part(std::vector<double> values, double share) {
  std::sort(values.begin(), values.end());
  return values.empty() ? -1 : values[std::min(values.size() - 1, std::size_t(share * double(values.size())))];
}

void print_drawn(int seed, const bench::Drawn& drawn) {
  const Lens* lens = drawn.camera.lens;
  std::printf("%3d %s fov %.0f k %.3f %.4f %.4f base %2.0f mm noise %.1f mounts %d %d cut %d stacked %d: ", seed,
              seed % 2 ? "meadow" : "rocks ", lens[0].fov, lens[0].k[0], lens[0].k[1], lens[0].k[2],
              1000 * drawn.camera.baseline, drawn.noise, lens[0].mount, lens[1].mount,
              radius(lens[0], lens[0].fov / 2 * kDegree) > lens[0].width / 2.0, drawn.stacked);
}

// One thread.
void measure(const cv::Mat1b& panorama, int seed, int pairs, int size, double most_k3, double step, Table& table) {
  const bench::Drawn drawn = bench::draw_camera(std::uint64_t(seed), size, most_k3);
  print_drawn(seed, drawn);
  std::vector<bench::Shot> shots = bench::film(panorama, drawn, pairs, step, std::uint64_t(seed));
  bench::encode(shots, drawn.stacked, 23);
  std::vector<calibrate::Pair> input;
  for (const bench::Shot& shot : shots) input.push_back({{shot.lens[0], shot.lens[1]}});
  const std::clock_t begin = std::clock();
  try {
    const calibrate::Estimate found =
        calibrate::estimate(input, std::nullopt, [](int pieces, const std::function<void(int)>& work) {
          for (int i = 0; i < pieces; ++i) work(i);
        });
    table.seconds.push_back(double(std::clock() - begin) / CLOCKS_PER_SEC);
    const bench::Seams seams = bench::seams_of(drawn.camera, found.camera);
    table.seams.push_back(seams.all);
    table.worst.push_back(seams.worst);
    table.straight.push_back(bench::straightness_of(drawn.camera, found.camera));
    table.told.push_back(seams.all / found.seam_deviation);
    const bench::Likeness likeness = bench::likeness_of(panorama, drawn, found.camera, std::uint64_t(seed));
    table.loss.push_back(likeness.by_truth - likeness.by_found);
    std::printf(
        "seams %.2f (%.2f said) worst %.2f (%.2f) field %.2f, %.1f dB (%.1f by the true camera), %zu matches, noise %.2f alike "
        "%.1f, fov "
        "%.1f, %.1f s%s\n",
        seams.all, found.seam_deviation, seams.worst, found.worst_deviation, table.straight.back(), likeness.by_found,
        likeness.by_truth, found.matches.size(), found.solution.scatter.noise, found.solution.scatter.alike,
        found.camera.lens[0].fov, table.seconds.back(),
        found.camera.lens[0].mount == drawn.camera.lens[0].mount ? "" : ", not upright");
  } catch (const calibrate::Refusal& refusal) {
    ++table.refused;
    std::printf("refused: %s\n", refusal.what());
  }
  std::fflush(stdout);
}

void print_row(const char* name, const std::vector<double>& values) {
  std::printf("%s %7.2f  %7.2f  %7.2f  %7.2f\n", name, part(values, 0.5), part(values, 0.9), part(values, 0.95),
              part(values, 1));
}

}  // namespace

int main(int count, char** words) {
  const std::string folder = count > 1 ? words[1] : "";
  const int first = count > 2 ? std::atoi(words[2]) : 1, cameras = count > 3 ? std::atoi(words[3]) : 20;
  const int pairs = count > 4 ? std::atoi(words[4]) : 20, size = count > 5 ? std::atoi(words[5]) : 1920;
  const double most_k3 = count > 6 ? std::atof(words[6]) : 0.002, step = count > 7 ? std::atof(words[7]) : 0;
  const cv::Mat1b panoramas[2] = {bench::read_gray(folder + "/truth_rocks_4096x2048.jpg", 4096, 2048),
                                  bench::read_gray(folder + "/truth_meadow_4096x2048.jpg", 4096, 2048)};
  if (panoramas[0].empty() || panoramas[1].empty()) {
    std::printf("no panoramas in '%s': nothing is measured\n", folder.c_str());
    return 0;
  }
  Table table;
  for (int seed = first; seed < first + cameras; ++seed) {
    measure(panoramas[seed % 2], seed, pairs, size, most_k3, step, table);
  }
  const double wanted = pairs == 1 ? 1 : 0.5;
  const auto within = [](const std::vector<double>& values, double most) {
    return int(std::count_if(values.begin(), values.end(), [&](double value) { return value <= most; }));
  };
  std::printf("%d cameras from seed %d, %d pairs of %dx%d, k3 up to %g, steps of %g m, %d refused\n", cameras, first, pairs,
              size, size, most_k3, step, table.refused);
  std::printf("seams within %.1f: %d, worst eighth within 1: %d, loss within 0.5 dB: %d\n", wanted, within(table.seams, wanted),
              within(table.worst, 1), within(table.loss, 0.5));
  std::printf("                 median     90 %%     95 %%    worst\n");
  print_row("seams, rms     ", table.seams);
  print_row("worst eighth   ", table.worst);
  print_row("whole field    ", table.straight);
  print_row("seams over said", table.told);
  print_row("loss, dB       ", table.loss);
  print_row("seconds        ", table.seconds);
}
