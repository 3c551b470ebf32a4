// How well cameras that were drawn at random are found again.
//   bench_calibrate FOLDER [first seed] [cameras] [pairs] [size]
// FOLDER holds panoramas; the odd seeds see the meadow, the even ones the rocks.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <map>
#include <string>
#include <thread>

#include "calibrate/estimate.hpp"
#include "camera/projector.hpp"
#include "cameras/draw.hpp"
#include "cameras/film.hpp"

using namespace biseam;

namespace {

struct Seams {
  double all, worst;  // rms in pixels of a 3840 panorama, worst eighth
};

// Where both lenses put far things on the ring, by the camera that was found.
Seams seams_of(const Camera& truth, const Camera& found, double overlap) {
  const Projector true_lens[2] = {Projector(truth, 0), Projector(truth, 1)};
  const Projector found_lens[2] = {Projector(found, 0), Projector(found, 1)};
  constexpr int kPlaces = 256;
  double sum = 0, octant[8] = {};
  for (int i = 0; i < kPlaces; ++i) {
    for (const double part : {-0.5, 0.0, 0.5}) {
      const double t = i * 2 * kPi / kPlaces, b = part * overlap;
      const Vec3 d{std::cos(b) * std::cos(t), std::cos(b) * std::sin(t), std::sin(b)};
      Vec3 u[2];
      for (int k = 0; k < 2; ++k) {
        const ImagePoint at = true_lens[k].project(d);
        u[k] = found_lens[k].unproject(at.x, at.y);
      }
      const Vec3 off{u[0].x - u[1].x, u[0].y - u[1].y, u[0].z - u[1].z};
      const double square = (off.x * off.x + off.y * off.y + off.z * off.z) * std::pow(3840 / (2 * kPi), 2);
      sum += square / (3 * kPlaces);
      octant[i * 8 / kPlaces] += square / (3 * kPlaces / 8);
    }
  }
  return {std::sqrt(sum), std::sqrt(*std::max_element(octant, octant + 8))};
}

double part(std::vector<double> values, double share) {
  std::sort(values.begin(), values.end());
  return values.empty() ? -1 : values[std::min(values.size() - 1, std::size_t(share * double(values.size())))];
}

}  // namespace

int main(int count, char** words) {
  const std::string folder = count > 1 ? words[1] : "";
  const int first = count > 2 ? std::atoi(words[2]) : 1, cameras = count > 3 ? std::atoi(words[3]) : 20;
  const int pairs = count > 4 ? std::atoi(words[4]) : 20, size = count > 5 ? std::atoi(words[5]) : 1920;
  const cv::Mat1b panoramas[2] = {bench::read_gray(folder + "/truth_rocks_4096x2048.jpg", 4096, 2048),
                                  bench::read_gray(folder + "/truth_meadow_4096x2048.jpg", 4096, 2048)};
  if (panoramas[0].empty() || panoramas[1].empty()) {
    std::printf("no panoramas in '%s': nothing is measured\n", folder.c_str());
    return 0;
  }
  std::vector<double> rms, worst, seconds;
  int refused = 0;
  for (int seed = first; seed < first + cameras; ++seed) {
    const bench::Drawn drawn = bench::draw_camera(std::uint64_t(seed), size, true);
    auto frames = bench::film(panoramas[seed % 2], drawn, pairs, std::uint64_t(seed));
    bench::encode(frames, 23);
    std::vector<calibrate::Pair> input;
    for (const auto& frame : frames) input.push_back({{frame.first, frame.second}});
    const Camera& camera = drawn.camera;
    std::printf("%3d %s fov %.0f k %.3f %.4f base %2.0f mm noise %.1f mounts %d %d cut %d: ", seed,
                seed % 2 ? "meadow" : "rocks ", camera.lens[0].fov, camera.lens[0].k[0], camera.lens[0].k[1],
                1000 * camera.baseline, drawn.noise, camera.lens[0].mount, camera.lens[1].mount,
                radius(camera.lens[0], camera.lens[0].fov / 2 * kDegree) > size / 2.0);
    const std::clock_t begin = std::clock();  // of one thread
    try {
      const calibrate::Estimate found =
          calibrate::estimate(input, std::nullopt, [](int pieces, const std::function<void(int)>& work) {
            for (int i = 0; i < pieces; ++i) work(i);
          });
      const Seams seams = seams_of(camera, found.camera, overlap(camera));
      rms.push_back(seams.all);
      worst.push_back(seams.worst);
      std::printf("seams %.2f worst %.2f (said %.2f %.2f), %zu matches kept %.2f noise %.2f near %.2f", seams.all, seams.worst,
                  found.seam_deviation, found.worst_deviation, found.matches.size(), found.kept, found.solution.scatter.noise,
                  found.solution.scatter.near);
      if (found.camera.lens[0].mount != camera.lens[0].mount) std::printf(" not upright");
      for (int k = 0; k < 2; ++k) {
        if (!found.circle[k])
          std::printf(" no circle %d", k);
        else
          std::printf(" circle %d off %.1f %.1f %.1f share %.2f", k, found.circle[k]->cx - camera.lens[k].cx,
                      found.circle[k]->cy - camera.lens[k].cy,
                      found.circle[k]->radius - radius(camera.lens[k], camera.lens[k].fov / 2 * kDegree),
                      found.circle[k]->share);
      }
    } catch (const calibrate::Refusal& refusal) {
      ++refused;
      std::printf("refused: %s", refusal.what());
    }
    seconds.push_back(double(std::clock() - begin) / CLOCKS_PER_SEC);
    std::printf(" %.1f s\n", seconds.back());
    std::fflush(stdout);
  }
  std::printf("%d cameras from seed %d, %d pairs of %dx%d, %d refused\n", cameras, first, pairs, size, size, refused);
  std::printf("                 median     90 %%     95 %%    worst\n");
  for (const auto& [name, values] :
       {std::pair{"seams, rms     ", &rms}, {"worst octant   ", &worst}, {"seconds        ", &seconds}}) {
    std::printf("%s %7.2f  %7.2f  %7.2f  %7.2f\n", name, part(*values, 0.5), part(*values, 0.9), part(*values, 0.95),
                part(*values, 1));
  }
}
