// Stitches made pictures with the ring engine and prints a hash of every panorama.  The hashes are the same on every host, for
// every compiler, thread count and instruction set: with a file name, compares with the lines of that file and fails on any
// difference.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "biseam/panorama.hpp"
#include "support/forced_isa.hpp"
#include "support/hash.hpp"
#include "support/own_picture.hpp"

namespace {

using biseam::test::OwnPicture;
using biseam::test::TestFormat;

struct Case {
  std::string name;
  int format = BISEAM_NV12;
  int width = 256, height = 128, picture = 160;
  int quality = BISEAM_QUALITY_GOOD, seam = BISEAM_SEAM_SEARCH, siting = BISEAM_SITING_LEFT;
  BiseamTurn turn = {0, 0, 0};
  bool lit = false;  // the lenses' light has to be undone
  int range = BISEAM_RANGE_USUAL;
  bool matched = false;  // the lenses' light, over three frames
  bool near = false;     // things near, in views from lenses apart, over three frames
};

std::vector<Case> all_cases() {
  std::vector<Case> cases;
  const char* const qualities[] = {"fast", "good", "best"};
  for (const TestFormat& format : biseam::test::kTestFormats) {
    for (int quality = 0; quality < 3; ++quality) {
      Case c{std::string(format.name) + "_" + qualities[quality]};
      c.format = format.code;
      c.quality = quality;
      c.turn = {20.0 * quality, -15, 5};
      cases.push_back(c);
    }
  }
  const BiseamTurn turns[] = {{0, 0, 0}, {90, 0, 0}, {-170.25, 33.5, 12}, {0, 90, 0}, {45, -90, 30}, {1e5, 777, -1e5}};
  for (int i = 0; i < 6; ++i) {
    Case c{"turn" + std::to_string(i)};
    c.turn = turns[i];
    cases.push_back(c);
  }
  // Thumbnails, large pictures shrunk, small ones enlarged, no whole blocks, odd pictures, no true shape.
  const int sizes[][3] = {{64, 32, 160}, {66, 34, 400}, {128, 64, 800}, {640, 320, 120}, {330, 162, 161}, {512, 64, 333}};
  for (const auto& size : sizes) {
    Case c{"size" + std::to_string(size[0])};
    c.width = size[0];
    c.height = size[1];
    c.picture = size[2];
    c.turn = {10, 20, 30};
    cases.push_back(c);
  }
  for (const int siting : {BISEAM_SITING_MIDDLE, BISEAM_SITING_TOP_LEFT}) {
    Case c{"siting" + std::to_string(siting)};
    c.siting = siting;
    cases.push_back(c);
  }
  Case middle{"middle_seam"};
  middle.seam = BISEAM_SEAM_MIDDLE;
  cases.push_back(middle);
  const int lit[] = {BISEAM_NV12, BISEAM_NV21, BISEAM_I422, BISEAM_GRAY8, BISEAM_GBR, BISEAM_P010, BISEAM_I444P12};
  for (const TestFormat& format : biseam::test::kTestFormats) {
    if (std::find(std::begin(lit), std::end(lit), format.code) == std::end(lit)) continue;
    Case c{std::string("lit_") + format.name};
    c.format = format.code;
    c.turn = {30, -20, 10};
    c.lit = true;
    cases.push_back(c);
  }
  Case full{"lit_full_range"};
  full.lit = true;
  full.range = BISEAM_RANGE_FULL;
  cases.push_back(full);
  for (const int format : {BISEAM_NV12, BISEAM_GRAY8, BISEAM_GBRP10, BISEAM_I422P12}) {
    Case c{std::string("matched_") + biseam::test::test_format(format).name};
    c.format = format;
    c.width = 384;
    c.height = 192;
    c.turn = {-30, 40, 5};
    c.matched = true;
    cases.push_back(c);
  }
  for (const int format : {BISEAM_NV12, BISEAM_P010}) {
    Case c{std::string("near_") + biseam::test::test_format(format).name};
    c.format = format;
    c.width = 1024;
    c.height = 512;
    c.picture = 512;
    c.turn = {15, 25, -10};
    c.near = true;
    cases.push_back(c);
  }
  return cases;
}

uint32_t mix(uint32_t x) {
  x ^= x >> 16;
  x *= 0x7feb352du;
  x ^= x >> 15;
  x *= 0x846ca68bu;
  return x ^ (x >> 16);
}

// Blocks and grain, in integers only; the pictures of both lenses share their large shapes.
int code_at(int lens, int channel, int x, int y, int highest) {
  const uint32_t shape = mix(static_cast<uint32_t>((x + channel * 7) / 12 * 131 + y / 12)) % 150;
  const uint32_t grain = mix(static_cast<uint32_t>(x * 65537 + y + lens * 77 + channel)) % 41;
  return static_cast<int>((20 + shape + grain) * static_cast<uint32_t>(highest) / 255) + lens * 3;
}

// Where the lens sees 90 degrees from its axis in an equidistant picture of 204 degrees.
double rim_of(int size) { return (size - 1) / 2.0 * 90 / 102; }

// Checks that lens 1 sees round its axis and lens 0 from the other side, on the lower half farther in by what is given: in
// doubles that are rounded one by one.
int near_code_at(int lens, int channel, int x, int y, int size, double nearer, int highest) {
  double across = x - (size - 1) / 2.0, down = y - (size - 1) / 2.0;
  if (lens == 0) {
    const double radius = std::sqrt(across * across + down * down), other = 2 * rim_of(size) - radius + (down > 0 ? nearer : 0);
    across = -across * other / (radius + 1e-9);
    down = down * other / (radius + 1e-9);
  }
  const uint32_t column = static_cast<uint32_t>(static_cast<int>(across / 6 + 1000));
  const uint32_t row = static_cast<uint32_t>(static_cast<int>(down / 6 + 1000)), c = static_cast<uint32_t>(channel);
  return static_cast<int>((40 + mix(column * 4099 + row + 77 * c) % 170) * static_cast<uint32_t>(highest) / 255);
}

// A pair with everything that its record can hold.
BiseamCamera camera_of(const Case& k) {
  if (k.near) return biseam::camera_of(k.picture, k.picture, 204);
  BiseamCamera camera = biseam::camera_of(k.picture, k.picture, 204);
  BiseamLens &a = camera.lens[0], &b = camera.lens[1];
  a.cx += 0.625;
  a.k[0] = 0.01;
  a.k[1] = -0.004;
  a.k[2] = 0.0008;
  a.mount = 90;
  a.turn = {0.25, -0.75, 0.5};
  b.cy -= 0.375;
  b.p *= 0.9921875;
  b.k[0] = -0.02;
  b.k[1] = 0.003;
  b.mount = 270;
  b.turn = {-0.125, 1.5, -0.375};
  if (k.lit) {
    const double vignettes[2][2] = {{-0.0625, 0.0078125}, {-0.03125, -0.015625}};
    const double gains[2][3] = {{1.125, 1, 0.9375}, {0.75, 0.8125, 0.875}};
    for (int i = 0; i < 2; ++i) {
      std::copy_n(vignettes[i], 2, camera.lens[i].vignette);
      std::copy_n(gains[i], 3, camera.lens[i].gain);
    }
  }
  return camera;
}

// Empty: no panorama.
std::string line_of(const Case& k, int threads) {
  BiseamPanoramaOptions options = biseam::panorama_defaults();
  options.width = k.width;
  options.height = k.height;
  options.format = k.format;
  options.quality = k.quality;
  options.seam = k.seam;
  options.range = k.range;
  options.threads = threads;
  options.near = k.near ? BISEAM_NEAR_MATCH : BISEAM_NEAR_OFF;
  options.light = k.matched ? BISEAM_LIGHT_MATCH : BISEAM_LIGHT_OFF;
  biseam::Panorama panorama = biseam::Panorama::open(camera_of(k), options);
  if (!panorama) {
    std::fprintf(stderr, "%s: %s\n", k.name.c_str(), panorama.error().text);
    return "";
  }
  OwnPicture lens[2] = {{k.format, k.picture, k.picture, {}, k.siting}, {k.format, k.picture, k.picture, {}, k.siting}};
  const auto fill_near = [&](double nearer) {
    for (int i = 0; i < 2; ++i) {
      lens[i].fill([&](int c, int x, int y) {
        const int sub = c == 0 ? 1 : 2;
        return near_code_at(i, c, x * sub, y * sub, k.picture, nearer, lens[i].format().highest());
      });
    }
  };
  for (int i = 0; i < 2; ++i) {
    const int highest = lens[i].format().highest();
    // Smooth as well as dim in one lens, so that there is something to match.
    const auto dim_code = [&](int c, int x, int y) { return (highest / 4 + x + y + 3 * c) * (i == 0 ? 7 : 8) / 8; };
    lens[i].fill([&](int c, int x, int y) { return k.matched ? dim_code(c, x, y) : code_at(i, c, x, y, highest); });
  }
  OwnPicture to(k.format, k.width, k.height, {}, k.siting);
  BiseamFrame frame = biseam::frame_defaults();
  frame.turn = k.turn;
  const BiseamPicture fisheyes[2] = {lens[0].record(), lens[1].record()};
  for (int i = 0; i < (k.matched || k.near ? 3 : 1); ++i) {
    if (k.near) fill_near(5 + 2 * i);
    if (const biseam::PanoramaError error = panorama.stitch(fisheyes, to.record(), frame)) {
      std::fprintf(stderr, "%s: %s\n", k.name.c_str(), error.text);
      return "";
    }
  }
  biseam::test::Hash hash;
  for (int c = 0; c < to.format().channels(); ++c) {
    for (const int value : to.channel(c)) hash.add(static_cast<uint16_t>(value));
  }
  char text[32];
  std::snprintf(text, sizeof text, " %016llx", static_cast<unsigned long long>(hash.value()));
  return k.name + text;
}

bool equals_file(const std::vector<std::string>& lines, const char* path) {
  std::ifstream file(path);
  std::vector<std::string> expected;
  for (std::string line; std::getline(file, line);) expected.push_back(line);
  std::size_t differences = expected.size() != lines.size();
  for (std::size_t i = 0; i < expected.size() && i < lines.size(); ++i) {
    if (expected[i] == lines[i]) continue;
    ++differences;
    std::fprintf(stderr, "expected %s\n     got %s\n", expected[i].c_str(), lines[i].c_str());
  }
  std::fprintf(stderr, "%zu hashes of %zu, %zu differences\n", lines.size(), expected.size(), differences);
  return differences == 0;
}

}  // namespace

int main(int argc, char** argv) {
  biseam::test::force_isa_by_environment();
  std::vector<std::string> lines;
  for (const Case& k : all_cases()) {
    lines.push_back(line_of(k, static_cast<int>(lines.size()) % 3 + 1));
    if (lines.back().empty()) return 2;
    std::printf("%s\n", lines.back().c_str());
  }
  return argc < 2 || equals_file(lines, argv[1]) ? 0 : 1;
}
