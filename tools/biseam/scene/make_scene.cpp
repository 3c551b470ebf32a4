#include "scene/make_scene.hpp"

#include <array>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <vector>

#include "base/distinct_files.hpp"
#include "base/failure.hpp"
#include "base/interrupt.hpp"
#include "base/replace_file.hpp"
#include "clip/write/lossless_clip.hpp"
#include "picture/write_picture.hpp"
#include "scene/profile.hpp"
#include "scene/truth.hpp"

namespace biseam::scene {
namespace {

using tool::ExitCode, tool::Failure, tool::Size;

constexpr AVRational kFrameRate{30, 1};

std::string path_of(const SceneJob& job, const std::string& name) {
  return (std::filesystem::path(job.folder) / name).string();
}
std::string profile_path(const SceneJob& job) { return path_of(job, "camera.toml"); }
std::string truth_path(const SceneJob& job) { return path_of(job, "truth.json"); }
std::string picture_path(const SceneJob& job, std::size_t index) {
  return path_of(job, std::string(kPictureNames[index]) + (job.frames ? ".mp4" : ".png"));
}

double seconds_at(int frame) { return frame * av_q2d(av_inv_q(kFrameRate)); }

void tell(const std::string& path) { std::printf("%s\n", path.c_str()); }

// Links within the folder can make one file of two.
void check_names(const SceneJob& job) {
  std::vector<tool::NamedFile> outputs = {{"the output", profile_path(job)}, {"the output", truth_path(job)}};
  for (std::size_t k = 0; k < std::size(kPictureNames); ++k) outputs.push_back({"the output", picture_path(job, k)});
  tool::check_distinct({}, outputs);
}

void write_stills(const SceneJob& job, Shooting& shooting) {
  const Pictures pictures = shooting.take(0, 0);
  for (std::size_t k = 0; k < pictures.size(); ++k) {
    tool::write_picture(picture_path(job, k), pictures[k]);
    tell(picture_path(job, k));
  }
}

void write_clips(const SceneJob& job, Shooting& shooting) {
  const tool::InterruptWatch watch;  // unfinished files are not left behind
  const Size panorama{job.rig.panorama_width, job.rig.panorama_width / 2};
  const Size fisheye{job.rig.fisheye_size, job.rig.fisheye_size}, both{2 * fisheye.width, fisheye.height};
  const Size sizes[4] = {panorama, fisheye, fisheye, both};
  std::array<std::unique_ptr<tool::LosslessClip>, 4> clips;
  for (std::size_t k = 0; k < clips.size(); ++k) {
    clips[k] = std::make_unique<tool::LosslessClip>(picture_path(job, k), sizes[k], kFrameRate);
  }
  for (int frame = 0; frame < *job.frames; ++frame) {
    const Pictures pictures = shooting.take(frame, seconds_at(frame));
    for (std::size_t k = 0; k < clips.size(); ++k) clips[k]->add(tool::to_nv12(pictures[k]));
    if (tool::interrupted()) throw Failure(ExitCode::interrupted, "interrupted");
  }
  for (std::size_t k = 0; k < clips.size(); ++k) {
    clips[k]->finish();
    tell(picture_path(job, k));
  }
}

void write_profile(const SceneJob& job, const Shooting& shooting) {
  const std::string text = profile_text(shooting.lens(0), shooting.lens(1), job.rig.baseline, job.rig.panorama_width);
  tool::replace_file(profile_path(job), tool::text_bytes(text));
  tell(profile_path(job));
}

void write_truth(const SceneJob& job) {
  std::vector<double> times;
  for (int frame = 0; frame < job.frames.value_or(1); ++frame) times.push_back(seconds_at(frame));
  tool::replace_file(truth_path(job), tool::text_bytes(truth_text(job.rig, times)));
  tell(truth_path(job));
}

}  // namespace

void make_scene(const SceneJob& job) {
  std::error_code trouble;
  std::filesystem::create_directories(job.folder, trouble);
  if (trouble) throw Failure(ExitCode::output, job.folder + ": can't be made: " + trouble.message());
  check_names(job);
  Shooting shooting(job.rig);
  job.frames ? write_clips(job, shooting) : write_stills(job, shooting);
  write_profile(job, shooting);
  write_truth(job);
}

}  // namespace biseam::scene
