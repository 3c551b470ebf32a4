#include <array>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "base/angle.hpp"
#include "base/distinct_files.hpp"
#include "base/failure.hpp"
#include "base/interrupt.hpp"
#include "base/replace_file.hpp"
#include "clip/write/lossless_clip.hpp"
#include "commands/commands.hpp"
#include "commands/number_range.hpp"
#include "picture/write_picture.hpp"
#include "profile/settings.hpp"
#include "scene/profile.hpp"
#include "scene/shooting.hpp"

namespace biseam::tool {
namespace {

constexpr AVRational kFrameRate{30, 1};
constexpr const char* kProfileName = "camera.toml";

struct SceneOptions {
  std::string folder;
  double field_of_view = 195;  // degrees
  scene::Rig rig{1920, 1080, 0, 0, 0, 0, 1};
  std::optional<int> frames;

  const char* extension() const { return frames ? ".mp4" : ".png"; }
  std::string path(const std::string& name) const { return (std::filesystem::path(folder) / name).string(); }
};

void tell(const std::string& path) { std::printf("%s\n", path.c_str()); }

// Links within the folder can make one file of two.
void check_names(const SceneOptions& options) {
  std::vector<NamedFile> outputs = {{"the output", options.path(kProfileName)}};
  for (const char* name : scene::kPictureNames) {
    outputs.push_back({"the output", options.path(std::string(name) + options.extension())});
  }
  check_distinct({}, outputs);
}

void write_stills(const SceneOptions& options, scene::Shooting& shooting) {
  const scene::Pictures pictures = shooting.take(0, 0);
  for (std::size_t k = 0; k < pictures.size(); ++k) {
    const std::string path = options.path(std::string(scene::kPictureNames[k]) + options.extension());
    write_picture(path, pictures[k]);
    tell(path);
  }
}

void write_clips(const SceneOptions& options, scene::Shooting& shooting) {
  const InterruptWatch watch;  // unfinished files are not left behind
  const Size panorama{options.rig.panorama_width, options.rig.panorama_width / 2};
  const Size fisheye{options.rig.fisheye_size, options.rig.fisheye_size}, both{2 * fisheye.width, fisheye.height};
  const Size sizes[4] = {panorama, fisheye, fisheye, both};
  std::string paths[4];
  std::array<std::unique_ptr<LosslessClip>, 4> clips;
  for (std::size_t k = 0; k < clips.size(); ++k) {
    paths[k] = options.path(std::string(scene::kPictureNames[k]) + options.extension());
    clips[k] = std::make_unique<LosslessClip>(paths[k], sizes[k], kFrameRate);
  }
  for (int frame = 0; frame < *options.frames; ++frame) {
    const scene::Pictures pictures = shooting.take(frame, frame * av_q2d(av_inv_q(kFrameRate)));
    for (std::size_t k = 0; k < clips.size(); ++k) clips[k]->add(to_nv12(pictures[k]));
    if (interrupted()) throw Failure(ExitCode::interrupted, "interrupted");
  }
  for (std::size_t k = 0; k < clips.size(); ++k) {
    clips[k]->finish();
    tell(paths[k]);
  }
}

void make_scene(SceneOptions& options) {
  if (!profile::is_panorama_width(options.rig.panorama_width)) {
    throw Failure(ExitCode::usage, "--width: must be a multiple of 8, 64 to 16384");
  }
  std::error_code trouble;
  std::filesystem::create_directories(options.folder, trouble);
  if (trouble) throw Failure(ExitCode::output, options.folder + ": can't be made: " + trouble.message());
  check_names(options);
  options.rig.field_of_view = options.field_of_view * kDegree;
  scene::Shooting shooting(options.rig);
  options.frames ? write_clips(options, shooting) : write_stills(options, shooting);
  const std::string profile = scene::profile_text(shooting.lens(0), shooting.lens(1), options.rig.panorama_width);
  replace_file(options.path(kProfileName), {reinterpret_cast<const std::uint8_t*>(profile.data()), profile.size()});
  tell(options.path(kProfileName));
}

}  // namespace

void add_scene_command(CLI::App& app) {
  auto options = std::make_shared<SceneOptions>();
  CLI::App* command = app.add_subcommand(
      "scene",
      "render a virtual courtyard through a virtual camera: truth.png (the panorama seen from the middle between the\n"
      "lenses), fisheye0.png, fisheye1.png, side_by_side.png and camera.toml (for stitch --camera)");
  command->add_option("-o,--output", options->folder, "folder for the files, made when missing")->required();
  command->add_option("--width", options->rig.panorama_width, "columns of the true panorama, a multiple of 8 (1920)");
  command->add_option("--fisheye-size", options->rig.fisheye_size, "width and height of a fisheye picture, even (1080)")
      ->check(in_range(32, 8192))
      ->check([](const std::string& text) { return (text.back() - '0') % 2 == 0 ? "" : "must be even"; });
  command->add_option("--fov", options->field_of_view, "degrees across the image circle (195)")->check(in_range(182.0, 280.0));
  command->add_option("--baseline", options->rig.baseline, "metres between the two entrance pupils (0)")
      ->check(in_range(0.0, 0.5));
  command
      ->add_option("--exposure-difference", options->rig.exposure_difference, "stops by which lens 0 is the brighter one (0)")
      ->check(in_range(-4.0, 4.0));
  command->add_option("--noise", options->rig.noise, "standard deviation of the fisheyes' noise, code values (0)")
      ->check(in_range(0.0, 64.0));
  command->add_option("--seed", options->rig.seed, "of the noise (1)")->check(in_range<std::int64_t>(0, 4294967295));
  command
      ->add_option("--frames", options->frames,
                   "clips in place of pictures, .mp4 and without loss: so many frames, 30 a second, in which two balls fly\n"
                   "round the camera; the first shows what the pictures show")
      ->check(in_range(1, kMostFrames));
  command->callback([options] { make_scene(*options); });
}

}  // namespace biseam::tool
