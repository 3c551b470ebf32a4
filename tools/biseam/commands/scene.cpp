#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <numbers>
#include <string>

#include "camera/settings.hpp"
#include "commands/commands.hpp"
#include "failure.hpp"
#include "output/replace_file.hpp"
#include "output/write_picture.hpp"
#include "picture.hpp"
#include "scene/profile.hpp"
#include "scene/render.hpp"

namespace biseam::tool {
namespace {

struct SceneOptions {
  std::string folder;
  int width = 1920;
  int fisheye_size = 1080;
  double field_of_view = 195;      // degrees
  double baseline = 0;             // metres
  double exposure_difference = 0;  // stops
  double noise = 0;
  std::uint64_t seed = 1;
};

Rgb developed(const scene::Frame& frame, const scene::Development& how) {
  Rgb picture;
  picture.width = frame.width;
  picture.height = frame.height;
  picture.bytes = scene::develop(frame, how);
  return picture;
}

Rgb side_by_side(const Rgb& left, const Rgb& right) {
  Rgb both(left.width + right.width, left.height);
  const std::size_t row = std::size_t(left.width) * 3;
  for (std::size_t y = 0; y < std::size_t(left.height); ++y) {
    std::copy_n(&left.bytes[y * row], row, &both.bytes[2 * y * row]);
    std::copy_n(&right.bytes[y * row], row, &both.bytes[(2 * y + 1) * row]);
  }
  return both;
}

void make_scene(const SceneOptions& options) {
  if (!is_panorama_width(options.width)) throw Failure(ExitCode::usage, "--width: must be a multiple of 8, 64 to 16384");
  std::error_code trouble;
  std::filesystem::create_directories(options.folder, trouble);
  if (trouble) throw Failure(ExitCode::output, options.folder + ": can't be made: " + trouble.message());
  const std::filesystem::path folder(options.folder);
  const auto save = [&](const char* name, const Rgb& picture) {
    const std::string path = (folder / name).string();
    write_picture(path, picture);
    std::printf("%s\n", path.c_str());
  };
  const scene::Place place;
  save("truth.png", developed(scene::render_panorama(place, {options.width, options.width / 2}), {}));
  const double field_of_view = options.field_of_view * std::numbers::pi / 180;
  const scene::Fisheye lenses[2] = {scene::Fisheye::fitting(0, options.fisheye_size, field_of_view),
                                    scene::Fisheye::fitting(1, options.fisheye_size, field_of_view)};
  Rgb fisheyes[2];
  for (int index = 0; index < 2; ++index) {
    const double stops = (index == 0 ? 0.5 : -0.5) * options.exposure_difference;
    const scene::Development how{stops, options.noise, 2 * options.seed + std::uint64_t(index)};
    fisheyes[index] = developed(scene::render_fisheye(place, lenses[index], options.baseline), how);
  }
  save("fisheye0.png", fisheyes[0]);
  save("fisheye1.png", fisheyes[1]);
  save("side_by_side.png", side_by_side(fisheyes[0], fisheyes[1]));
  const std::string profile = scene::profile_text(lenses[0], lenses[1], options.width),
                    path = (folder / "camera.toml").string();
  replace_file(path, {reinterpret_cast<const std::uint8_t*>(profile.data()), profile.size()});
  std::printf("%s\n", path.c_str());
}

}  // namespace

void add_scene_command(CLI::App& app) {
  auto options = std::make_shared<SceneOptions>();
  CLI::App* command = app.add_subcommand(
      "scene",
      "render a virtual courtyard through a virtual camera: truth.png (the panorama seen from the middle between the\n"
      "lenses), fisheye0.png, fisheye1.png, side_by_side.png and camera.toml (for stitch --camera)");
  command->add_option("-o,--output", options->folder, "folder for the files, made when missing")->required();
  command->add_option("--width", options->width, "columns of the true panorama, a multiple of 8 (1920)");
  command->add_option("--fisheye-size", options->fisheye_size, "width and height of a fisheye picture, even (1080)")
      ->check(CLI::Range(32, 8192))
      ->check([](const std::string& text) { return (text.back() - '0') % 2 == 0 ? "" : "must be even"; });
  command->add_option("--fov", options->field_of_view, "degrees across the image circle (195)")
      ->check(CLI::Range(182.0, 280.0));
  command->add_option("--baseline", options->baseline, "metres between the two entrance pupils (0)")
      ->check(CLI::Range(0.0, 0.5));
  command->add_option("--exposure-difference", options->exposure_difference, "stops by which lens 0 is the brighter one (0)")
      ->check(CLI::Range(-4.0, 4.0));
  command->add_option("--noise", options->noise, "standard deviation of the fisheyes' noise, code values (0)")
      ->check(CLI::Range(0.0, 64.0));
  command->add_option("--seed", options->seed, "of the noise (1)");
  command->callback([options] { make_scene(*options); });
}

}  // namespace biseam::tool
