#include "scene/truth.hpp"

#include <gtest/gtest.h>

#include <cstdio>

namespace biseam::scene {
namespace {

TEST(Truth, TellsHowEachFrameWasTaken) {
  Rig rig{.panorama_width = 128, .fisheye_size = 64, .field_of_view = 3.4};
  rig.light = {.exposure = 1, .flare = 0.125, .from = 1};
  rig.motion.turn = 2.5;
  const std::string before = R"("gain0": [1, 1, 1], "gain1": [1, 1, 1], "vignette0": 0, "flare0": 0})";
  const std::string after = R"("gain0": [1.41421, 1.41421, 1.41421], "gain1": [0.707107, 0.707107, 0.707107], )"
                            R"("vignette0": 0, "flare0": 0.125})";
  EXPECT_EQ(truth_text(rig, {0, 0.25, 0.5}), R"({"frames": [{"time": 0, "yaw": 0, "pitch": 0, "roll": 0, )" + before +
                                                 R"(, {"time": 0.25, "yaw": 2.5, "pitch": 0, "roll": 0, )" + after +
                                                 R"(, {"time": 0.5, "yaw": 5, "pitch": 0, "roll": 0, )" + after + "]}\n");
}

TEST(Truth, HasTheShakeThatIsFilmed) {
  Rig rig{.panorama_width = 128, .fisheye_size = 64, .field_of_view = 3.4};
  rig.motion = {.shake = 1, .seed = 4};
  const Turn turn = attitude(rig.motion, 1, 0.5);
  char told[64];
  std::snprintf(told, sizeof told, "\"pitch\": %.6g, \"roll\": %.6g,", turn.pitch, turn.roll);
  EXPECT_NE(truth_text(rig, {0, 0.5}).find(told), std::string::npos) << told;
}

}  // namespace
}  // namespace biseam::scene
