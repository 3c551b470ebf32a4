#include <memory>
#include <string>

#include "base/failure.hpp"
#include "camera/trigonometry.hpp"
#include "commands/commands.hpp"
#include "commands/most_frames.hpp"
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
    throw Failure(ExitCode::usage,
                  "--width: '" + std::to_string(options.job.rig.panorama_width) + "' must be a multiple of 8, 64 to 16384");
  }
  options.job.rig.field_of_view = options.field_of_view * kDegree;
  options.job.rig.motion.seed = options.job.rig.seed;
  scene::make_scene(options.job);
}

}  // namespace

void add_scene_command(CommandLine& line) {
  const auto options = std::make_shared<SceneOptions>();
  scene::Rig& rig = options->job.rig;
  scene::LightDifference& light = rig.light;
  Command& command = line.add(
      "scene",
      "render a virtual courtyard through a virtual camera: truth.png (the panorama seen from the middle between the\n"
      "lenses), fisheye0.png, fisheye1.png, side_by_side.png, camera.toml (for stitch --camera) and truth.json (each frame's "
      "light\n"
      "and motion)");
  command.option("-o,--output", &options->job.folder, "folder for the files, made when missing").required();
  command.option("--width", &rig.panorama_width, "columns of the true panorama, a multiple of 8 (1920)");
  command.option("--fisheye-size", &rig.fisheye_size, "width and height of a fisheye picture, even (1080)")
      .whole_number(32, 8192)
      .check([](const std::string& text) { return (text.back() - '0') % 2 == 0 ? "" : "must be even"; });
  command.option("--fov", &options->field_of_view, "degrees across the image circle (195)").number(182, 280);
  command.option("--baseline", &rig.baseline, "metres between the two entrance pupils (0)").number(0, 0.5);
  command
      .option("--placards", &rig.placards,
              "metres to two lettered placards, one at either seam, that swing over it in clips (none)")
      .number(scene::kLeastPlacardDistance, scene::kMostPlacardDistance);
  command.option("--exposure-difference", &light.exposure, "stops by which lens 0 is the brighter one (0)").number(-4, 4);
  command
      .option("--temperature-difference", &light.temperature,
              "kelvin by which lens 0's white balance is set higher, so that it shows things warmer (0)")
      .number(-4000, 4000);
  command
      .option("--vignette-difference", &light.vignette, "share of its light that lens 0 lacks at the image circle's edge (0)")
      .number(-0.9, 0.9);
  command
      .option("--flare", &light.flare, "veil over lens 0, brightest on the right; 1: as bright as white paper in the sun (0)")
      .number(0, 1);
  command.option("--differ-from", &light.from, "frame from which on these four hold, counted from 0 (0)")
      .whole_number(0, kMostFrames);
  command.option("--exposure-drift", &light.drift, "stops a second by which lens 0 becomes the brighter one (0)").number(-4, 4);
  command
      .option("--shake", &rig.motion.shake,
              "degrees by which a hand that holds the camera is unsteady: standard deviation of each angle (0)")
      .number(0, 45);
  command.option("--turn", &rig.motion.turn, "degrees that the camera turns to the right with every frame (0)")
      .number(-180, 180);
  command.option("--noise", &rig.noise, "standard deviation of the fisheyes' noise, code values (0)").number(0, 64);
  command.option("--seed", &rig.seed, "of noise and shake (1)").whole_number(0, 4294967295);
  command
      .option("--frames", &options->job.frames,
              "clips in place of pictures, .mp4 and without loss: so many frames, 30 a second, in which two balls fly\n"
              "round the camera; the first shows what the pictures show")
      .whole_number(1, kMostFrames);
  command.does([options] {
    make_scene(*options);
    return ExitCode::done;
  });
}

}  // namespace biseam::tool
