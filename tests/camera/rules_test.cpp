#include "camera/rules.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <string>

#include "support/cameras.hpp"

namespace biseam::test {
namespace {

std::string text_of(const Camera& camera) { return check_camera(camera).text; }

void expect_error(const Camera& camera, const std::string& expected) {
  const std::string text = text_of(camera);
  EXPECT_EQ(expected, text.substr(0, expected.size()));
  EXPECT_NE(std::string::npos, text.find("must")) << text;
  EXPECT_EQ(std::string::npos, text.find('\n'));
}

TEST(CheckCamera, RealOnesPass) {
  EXPECT_EQ("", text_of(city_square()));
  EXPECT_EQ("", text_of(bent_pair()));
  Camera usual;
  usual.lens[0] = usual.lens[1] = usual_lens(1920, 1920);
  EXPECT_EQ("", text_of(usual));
}

struct NamedField {
  const char* name;
  double& (*of)(Lens&);
  double low, high;  // just refused
};

TEST(CheckCamera, EachFieldOfEachLensAlone) {
  const NamedField fields[] = {
      {"cx", [](Lens& l) -> double& { return l.cx; }, -100001, 100001},
      {"cy", [](Lens& l) -> double& { return l.cy; }, -100001, 100001},
      {"p", [](Lens& l) -> double& { return l.p; }, 0.5, 16385},
      {"k[0]", [](Lens& l) -> double& { return l.k[0]; }, -10.1, 10.1},
      {"k[1]", [](Lens& l) -> double& { return l.k[1]; }, -10.1, 10.1},
      {"k[2]", [](Lens& l) -> double& { return l.k[2]; }, -10.1, 10.1},
      {"fov", [](Lens& l) -> double& { return l.fov; }, 119, 301},
      {"turn.yaw", [](Lens& l) -> double& { return l.turn.yaw; }, -45.5, 45.5},
      {"turn.pitch", [](Lens& l) -> double& { return l.turn.pitch; }, -45.5, 45.5},
      {"turn.roll", [](Lens& l) -> double& { return l.turn.roll; }, -45.5, 45.5},
      {"vignette[0]", [](Lens& l) -> double& { return l.vignette[0]; }, -10.1, 10.1},
      {"vignette[1]", [](Lens& l) -> double& { return l.vignette[1]; }, -10.1, 10.1},
      {"gain[0]", [](Lens& l) -> double& { return l.gain[0]; }, 0.24, 4.1},
      {"gain[1]", [](Lens& l) -> double& { return l.gain[1]; }, 0.24, 4.1},
      {"gain[2]", [](Lens& l) -> double& { return l.gain[2]; }, 0.24, 4.1},
  };
  for (const NamedField& field : fields) {
    for (int k = 0; k < 2; ++k) {
      for (const double value : {field.low, field.high, std::nan(""), std::numeric_limits<double>::infinity()}) {
        Camera camera = city_square();
        field.of(camera.lens[k]) = value;
        expect_error(camera, std::string(k == 0 ? "lens[0]." : "lens[1].").append(field.name).append(" is "));
      }
    }
  }
}

TEST(CheckCamera, SizesAndMounts) {
  for (const int side : {-1, 0, 1, 16385}) {
    Camera camera = city_square();
    camera.lens[1].width = side;
    expect_error(camera, std::string("lens[1].width is ").append(std::to_string(side)));
    camera = city_square();
    camera.lens[0].height = side;
    expect_error(camera, std::string("lens[0].height is ").append(std::to_string(side)));
  }
  for (const int mount : {-90, 45, 360}) {
    Camera camera = city_square();
    camera.lens[0].mount = mount;
    expect_error(camera, std::string("lens[0].mount is ").append(std::to_string(mount)).append(": must be 0, 90, 180 or 270"));
  }
}

TEST(CheckCamera, TheRadiusMustIncrease) {
  Camera camera = city_square();
  camera.lens[0].k[0] = -0.11;  // at its largest at 99.7 degrees, of 103
  expect_error(camera, "lens[0].k is (-0.11, 0, 0): the radius must increase up to fov / 2 = 103 degrees");
  camera.lens[0].k[0] = -0.1;
  EXPECT_EQ(std::string::npos, text_of(camera).find("radius"));
}

TEST(CheckCamera, TheRadiusMustFitTheIntegers) {
  Camera camera = city_square();
  camera.lens[1].p = 10000;
  expect_error(camera, "lens[1].p is 10000: the radius at fov / 2 must be 16384 or less");
}

TEST(CheckCamera, TheLightMustNotGoOut) {
  Camera camera = city_square();
  camera.lens[1].vignette[0] = -0.3;
  expect_error(camera,
               "lens[1].vignette is (-0.3, 0): the light must stay between 0.25 and 4 up to fov / 2, with gain[0] it is");
  camera.lens[1].vignette[0] = -0.1;
  EXPECT_EQ("", text_of(camera));
  camera.lens[1].gain[2] = 0.3;  // 0.68 of it is left at the rim
  expect_error(camera,
               "lens[1].vignette is (-0.1, 0): the light must stay between 0.25 and 4 up to fov / 2, with gain[2] it is");
}

TEST(CheckCamera, TheBaselineIsALength) {
  for (const double value : {-0.1, 11.0, std::nan("")}) {
    Camera camera = city_square();
    camera.baseline = value;
    expect_error(camera, "baseline is ");
  }
}

TEST(CheckCamera, TheLensesMustOverlap) {
  Camera camera = city_square();
  camera.lens[0].fov = 181;
  expect_error(camera, "overlap is 0.49 degrees: each lens must see 1 or more");
  camera = city_square();
  camera.lens[1].turn.pitch = 10;
  expect_error(camera, "overlap is -");
}

}  // namespace
}  // namespace biseam::test
