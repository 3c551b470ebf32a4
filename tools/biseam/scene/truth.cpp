#include "scene/truth.hpp"

#include "text/json.hpp"

namespace biseam::scene {

using tool::JsonObject;

static std::vector<double> channels(Vec3 colour) { return {colour.x, colour.y, colour.z}; }

static JsonObject frame_of(const Rig& rig, int frame, double seconds) {
  const Turn turn = attitude(rig.motion, frame, seconds);
  const bool differs = frame >= rig.light.from;
  JsonObject told;
  told.add("time", seconds);
  told.add("yaw", turn.yaw);
  told.add("pitch", turn.pitch);
  told.add("roll", turn.roll);
  told.add("gain0", channels(lens_gain(rig.light, 0, frame, seconds)));
  told.add("gain1", channels(lens_gain(rig.light, 1, frame, seconds)));
  told.add("vignette0", differs ? rig.light.vignette : 0);
  told.add("flare0", differs ? rig.light.flare : 0);
  return told;
}

std::string truth_text(const Rig& rig, const std::vector<double>& seconds) {
  std::vector<JsonObject> frames;
  for (std::size_t frame = 0; frame < seconds.size(); ++frame) frames.push_back(frame_of(rig, int(frame), seconds[frame]));
  JsonObject told;
  told.add("frames", frames);
  return told.text() + "\n";
}

}  // namespace biseam::scene
