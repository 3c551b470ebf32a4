#include <memory>
#include <string>

#include "base/failure.hpp"
#include "camera/trigonometry.hpp"
#include "commands/commands.hpp"
#include "commands/number_range.hpp"
#include "profile/settings.hpp"
#include "scene/make_scene.hpp"
#include "scene/placards.hpp"

namespace biseam::tool {
namespace {

struct SceneOptions {
  scene::SceneJob job{.folder = "", .rig = {.panorama_width = 1920, .fisheye_size = 1080, .field_of_view = 0}, .frames = {}};
  double field_of_view = 195;  // degrees
};

void make_scene(SceneOptions& options) {
  if (!profile::is_panorama_width(options.job.rig.panorama_width)) {
    throw Failure(ExitCode::usage, "--width: must be a multiple of 8, 64 to 16384");
  }
  options.job.rig.field_of_view = options.field_of_view * kDegree;
  options.job.rig.motion.seed = options.job.rig.seed;
  scene::make_scene(options.job);
}

}  // namespace

void add_scene_command(CLI::App& app) {
  auto options = std::make_shared<SceneOptions>();
  scene::LightDifference& light = options->job.rig.light;
  CLI::App* command = app.add_subcommand(
      "scene",
      "render a virtual courtyard through a virtual camera: truth.png (the panorama seen from the middle between the\n"
      "lenses), fisheye0.png, fisheye1.png, side_by_side.png, camera.toml (for stitch --camera) and truth.json (each frame's "
      "light\n"
      "and motion)");
  command->add_option("-o,--output", options->job.folder, "folder for the files, made when missing")->required();
  command->add_option("--width", options->job.rig.panorama_width, "columns of the true panorama, a multiple of 8 (1920)");
  command->add_option("--fisheye-size", options->job.rig.fisheye_size, "width and height of a fisheye picture, even (1080)")
      ->check(in_range(32, 8192))
      ->check([](const std::string& text) { return (text.back() - '0') % 2 == 0 ? "" : "must be even"; });
  command->add_option("--fov", options->field_of_view, "degrees across the image circle (195)")->check(in_range(182.0, 280.0));
  command->add_option("--baseline", options->job.rig.baseline, "metres between the two entrance pupils (0)")
      ->check(in_range(0.0, 0.5));
  command
      ->add_option("--placards", options->job.rig.placards,
                   "metres to two lettered placards, one at either seam, that swing over it in clips (none)")
      ->check(in_range(scene::kLeastPlacardDistance, scene::kMostPlacardDistance));
  command->add_option("--exposure-difference", light.exposure, "stops by which lens 0 is the brighter one (0)")
      ->check(in_range(-4.0, 4.0));
  command
      ->add_option("--temperature-difference", light.temperature,
                   "kelvin by which lens 0's white balance is set higher, so that it shows things warmer (0)")
      ->check(in_range(-4000.0, 4000.0));
  command
      ->add_option("--vignette-difference", light.vignette,
                   "share of its light that lens 0 lacks at the image circle's edge (0)")
      ->check(in_range(-0.9, 0.9));
  command
      ->add_option("--flare", light.flare,
                   "veil over lens 0, brightest on the right; 1: as bright as white paper in the sun (0)")
      ->check(in_range(0.0, 1.0));
  command->add_option("--differ-from", light.from, "frame from which on these four hold, counted from 0 (0)")
      ->check(in_range(0, kMostFrames));
  command->add_option("--exposure-drift", light.drift, "stops a second by which lens 0 becomes the brighter one (0)")
      ->check(in_range(-4.0, 4.0));
  command
      ->add_option("--shake", options->job.rig.motion.shake,
                   "degrees by which a hand that holds the camera is unsteady: standard deviation of each angle (0)")
      ->check(in_range(0.0, 45.0));
  command->add_option("--turn", options->job.rig.motion.turn, "degrees that the camera turns to the right with every frame (0)")
      ->check(in_range(-180.0, 180.0));
  command->add_option("--noise", options->job.rig.noise, "standard deviation of the fisheyes' noise, code values (0)")
      ->check(in_range(0.0, 64.0));
  command->add_option("--seed", options->job.rig.seed, "of noise and shake (1)")->check(in_range<std::int64_t>(0, 4294967295));
  command
      ->add_option("--frames", options->job.frames,
                   "clips in place of pictures, .mp4 and without loss: so many frames, 30 a second, in which two balls fly\n"
                   "round the camera; the first shows what the pictures show")
      ->check(in_range(1, kMostFrames));
  command->callback([options] { make_scene(*options); });
}

}  // namespace biseam::tool
