#include <charconv>
#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "biseam/stitcher.hpp"
#include "camera/plan.hpp"
#include "camera/profile.hpp"
#include "camera/quarter_turn.hpp"
#include "commands/commands.hpp"
#include "failure.hpp"
#include "input/read_picture.hpp"
#include "input/split.hpp"
#include "output/seam_overlay.hpp"
#include "output/write_picture.hpp"

namespace biseam::tool {
namespace {

struct StitchOptions {
  std::vector<std::string> inputs;
  std::string output, size, camera, show_seams, seam_layer;
  std::string centre[2], turn;
  CameraSettings settings;
};

struct Pair {
  Nv12 lens[2];
};

[[noreturn]] void refuse_value(const std::string& option, const std::string& rule) {
  throw Failure(ExitCode::usage, option + ": " + rule);
}

std::string range_text(Limits limits) { return std::to_string(int(limits.low)) + " to " + std::to_string(int(limits.high)); }

// "1.5,-2" into the given places.
void parse_numbers(const std::string& option, const std::string& text, std::vector<std::optional<double>*> places,
                   Limits limits) {
  const char *at = text.data(), *const end = at + text.size();
  for (std::size_t k = 0; k < places.size(); ++k) {
    double value = 0;
    const auto [after, error] = std::from_chars(at, end, value);
    const bool last = k + 1 == places.size();
    if (error != std::errc() || !limits.hold(value) || (last ? after != end : after == end || *after != ',')) {
      refuse_value(option, "'" + text + "': " + std::to_string(places.size()) + " numbers of " + range_text(limits) +
                               " with commas between are wanted");
    }
    *places[k] = value;
    at = after + 1;
  }
}

template <class T>
void check_limits(const char* option, const std::optional<T>& value, Limits limits) {
  if (value && !limits.hold(double(*value))) {
    refuse_value(option, "must be " + range_text(limits));
  }
}

void check_lens(LensSettings& lens, const std::string& centre, char digit) {
  const std::string index(1, digit);
  if (!centre.empty()) parse_numbers("--centre" + index, centre, {&lens.cx, &lens.cy}, kCentreLimits);
  check_limits(("--p" + index).c_str(), lens.p, kScaleLimits);
  check_limits("--fov", lens.fov, kFovLimits);
  if (lens.mount && !is_quarter_turn(*lens.mount)) refuse_value("--mount" + index, "must be 0, 90, 180 or 270");
}

// What the options can't check one by one.
void check_options(StitchOptions& options) {
  CameraSettings& settings = options.settings;
  settings.lens[1].fov = settings.lens[0].fov;
  for (int k = 0; k < 2; ++k) check_lens(settings.lens[k], options.centre[k], char('0' + k));
  LensSettings& lens1 = settings.lens[1];
  if (!options.turn.empty()) parse_numbers("--turn1", options.turn, {&lens1.yaw, &lens1.pitch, &lens1.roll}, kTurnLimits);
  if (settings.width && !is_panorama_width(*settings.width)) refuse_value("--width", "must be a multiple of 8, 64 to 16384");
  check_limits("--feather", settings.blend.feather, kColumnLimits);
  check_limits("--trans-width", settings.blend.trans_width, kColumnLimits);
  check_limits("--pyr-level", settings.blend.pyr_level, kLevelLimits);
  check_limits("--findpath-width", settings.blend.findpath_width, kColumnLimits);
  check_limits("--inv-scale", settings.blend.inv_scale, kShrinkLimits);
  check_picture_name(options.output);
  if (options.show_seams == "-") refuse_value("--show-seams", "only the panorama can go to standard output");
  if (!options.show_seams.empty()) check_picture_name(options.show_seams);
  if (!options.seam_layer.empty()) check_layer_name(options.seam_layer);
}

Pair read_pair(const StitchOptions& options) {
  std::optional<Size> raw;
  if (!options.size.empty()) raw = parse_size(options.size);
  const std::string& first = options.inputs.front();
  if (options.inputs.size() == 1) {
    auto [left, right] = split_side_by_side(read_picture(first, raw), first == "-" ? "standard input" : first);
    return {{std::move(left), std::move(right)}};
  }
  const std::string& second = options.inputs.back();
  if (first == "-" && second == "-") throw Failure(ExitCode::usage, "only one picture can come from standard input");
  return {{read_picture(first, raw), read_picture(second, raw)}};
}

Size size_of(const Nv12& picture) { return {picture.width, picture.height}; }

// Twice the height of a picture, where neither detail nor time is wasted, within what the engine's memory allows.
int natural_width(const Nv12& picture) { return std::clamp(picture.height * 2 / 8 * 8, int(kWidthLimits.low), 8192); }

void tell_missing(const Plan& plan) {
  for (int k = 0; k < 2; ++k) {
    if (plan.lens[k].missing < 1) continue;
    notice("lens " + std::to_string(k) + ": the panorama needs up to " + std::to_string(std::lround(plan.lens[k].missing)) +
           " pixels beyond the picture's edge, which is repeated there");
  }
}

FisheyePicture view(const Nv12& picture) { return {picture.luma, picture.chroma}; }

Failure engine_failure(const Error& error) { return Failure(ExitCode::settings, error.text()); }

// Brings both pictures to what the engine wants.
Plan prepare(const StitchOptions& options, Pair& pair) {
  CameraSettings profile;
  if (!options.camera.empty()) profile = read_profile(options.camera);
  const CameraSettings& given = options.settings;
  const int width = given.width.value_or(profile.width.value_or(natural_width(pair.lens[0])));
  Lens lenses[2];
  Size sizes[2];
  for (int k = 0; k < 2; ++k) {
    const Size recorded = size_of(pair.lens[k]);
    LensSettings settings = scale_lens(profile.lens[k], profile.picture.value_or(recorded), recorded, options.camera);
    replace_settings(settings, given.lens[k]);
    lenses[k] = settle_lens(settings, recorded, k);
    pair.lens[k] = undo_quarter_turn(pair.lens[k], settings.mount.value_or(0));
    sizes[k] = size_of(pair.lens[k]);
  }
  BlendSettings blend = scale_blend(profile.blend, profile.width.value_or(width), width);
  replace_settings(blend, given.blend);
  const Plan plan = make_plan(lenses, sizes, blend, width);
  for (int k = 0; k < 2; ++k) {
    if (!plan.lens[k].as_is) pair.lens[k] = warp_fisheye(pair.lens[k], lenses[k], plan.lens[k].target);
  }
  return plan;
}

void write_seams(const StitchOptions& options, const Stitcher& stitcher, const Nv12& panorama) {
  if (!options.show_seams.empty()) {
    Rgb painted = to_rgb(panorama);
    for (int k = 0; k < 2; ++k) draw_band(stitcher.band(k), painted);
    write_picture(options.show_seams, painted);
  }
  if (!options.seam_layer.empty()) {
    Rgba layer(panorama.width, panorama.height);
    for (int k = 0; k < 2; ++k) draw_band(stitcher.band(k), layer);
    write_layer(options.seam_layer, layer);
  }
}

void stitch(StitchOptions& options) {
  check_options(options);
  Pair pair = read_pair(options);
  const Plan plan = prepare(options, pair);
  tell_missing(plan);

  Result<Stitcher> stitcher = Stitcher::create(plan.config);
  if (!stitcher) throw engine_failure(stitcher.error());
  Nv12 panorama(plan.config.out_w[0], plan.config.out_h[0]);
  const Error error = stitcher->process(view(pair.lens[0]), view(pair.lens[1]), {panorama.luma, panorama.chroma});
  if (error) throw engine_failure(error);

  write_picture(options.output, panorama);
  write_seams(options, *stitcher, panorama);
}

void add_camera_options(CLI::App& command, StitchOptions& options) {
  CameraSettings& settings = options.settings;
  const auto add = [&](const char* name, auto& value, const char* type, const char* text) {
    command.add_option(name, value, text)->type_name(type)->group("Camera (in place of the profile's values)");
  };
  add("--centre0", options.centre[0], "X,Y", "lens 0's axis in its picture, pixels");
  add("--centre1", options.centre[1], "X,Y", "lens 1's axis in its picture");
  add("--p0", settings.lens[0].p, "PIXELS", "pixels per radian of lens 0");
  add("--p1", settings.lens[1].p, "PIXELS", "pixels per radian of lens 1");
  add("--fov", settings.lens[0].fov, "DEGREES", "across the image circle of both lenses (195)");
  add("--mount0", settings.lens[0].mount, "DEGREES", "turn of picture 0, clockwise: 0, 90, 180, 270");
  add("--mount1", settings.lens[1].mount, "DEGREES", "turn of picture 1");
  add("--turn1", options.turn, "YAW,PITCH,ROLL", "of lens 1 against lens 0, degrees: right, up, clockwise");
}

void add_blend_options(CLI::App& command, BlendSettings& blend) {
  const char* const group = "Seams and blend (in columns of the panorama)";
  const auto add = [&](const char* name, auto& value, const char* type, const char* text) {
    command.add_option(name, value, text)->type_name(type)->group(group);
  };
  const auto add_switch = [&](const char* name, bool value, const char* text) {
    command
        .add_flag_callback(
            name, [&blend, value] { blend.search = value; }, text)
        ->group(group);
  };
  add("--feather", blend.feather, "COLUMNS", "overlap on each side of a seam (by the overlap there is)");
  add("--trans-width", blend.trans_width, "COLUMNS", "transition of the blend (2 x feather)");
  add("--pyr-level", blend.pyr_level, "LEVELS", "levels of the blend (by its width)");
  add_switch("--search", true, "search a seam through each overlap (default)");
  add_switch("--no-search", false, "cut straight instead");
  add("--findpath-width", blend.findpath_width, "COLUMNS", "strip that is searched (2 x feather)");
  add("--inv-scale", blend.inv_scale, "FACTOR", "by which the search shrinks its pictures (by the width)");
}

}  // namespace

void add_stitch_command(CLI::App& app, int&) {
  CLI::App* command = app.add_subcommand("stitch", "stitch one pair of fisheye pictures");
  const auto options = std::make_shared<StitchOptions>();
  command
      ->add_option("IN", options->inputs,
                   "two circles side by side, lens 0 left, or one file for each lens; - is standard input")
      ->option_text("FILE [FILE]")
      ->required()
      ->expected(1, 2);
  const auto add = [&](const char* name, auto& value, const char* type, const char* text) {
    return command->add_option(name, value, text)->type_name(type);
  };
  add("-o,--output", options->output, "FILE", "panorama: .png, .jpg, .nv12, or - for raw NV12 on standard output")->required();
  add("--size", options->size, "WIDTHxHEIGHT", "of raw NV12 input");
  add("--camera", options->camera, "FILE", "profile of the camera (TOML)");
  add("--width", options->settings.width, "COLUMNS",
      "of the panorama, a multiple of 8 (the profile's, or twice a picture's height)");
  add("--show-seams", options->show_seams, "FILE", "also write the panorama with bands and seams painted over it");
  add("--seam-layer", options->seam_layer, "FILE", "also write bands and seams alone, on transparent ground (.png)");
  add_camera_options(*command, *options);
  add_blend_options(*command, options->settings.blend);
  command->callback([options] { stitch(*options); });
}

}  // namespace biseam::tool
