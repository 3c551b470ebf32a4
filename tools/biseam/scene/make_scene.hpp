// `biseam scene`: the files of a virtual camera's recording.
#pragma once

#include <optional>
#include <string>

#include "scene/shooting.hpp"

namespace biseam::scene {

struct SceneJob {
  std::string folder;  // made when missing
  Rig rig;
  std::optional<int> frames;  // clips of so many frames in place of pictures
};

// Writes the pictures or clips, which kPictureNames names, camera.toml and truth.json; prints each one's path.  Throws Failure.
void make_scene(const SceneJob& job);

}  // namespace biseam::scene
