// Stitches made pictures through the C interface and prints a hash of every lookup table and every output plane.
// The hashes are the same on every host and for every compiler: with a file name, compares with the lines of that file and
// fails on any difference.
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "biseam/biseam.h"
#include "support/forced_isa.hpp"

namespace {

struct Case {
  const char* name;
  int out_w;
  int format;
  int findpath_enable;
  int flip, mirror;
  int padding;  // bytes a row
  bool turned;  // lens 1 rolled by some degrees and shifted by some pixels
  int feather, trans_width, findpath_width, pyr_level;
  float inv_scale;
};

constexpr Case kCases[] = {
    {"plain_420", 480, 0, 0, 0, 0, 0, false, 16, 32, 32, 3, 2.0f},
    {"plain_422", 480, 4, 0, 0, 0, 0, false, 16, 32, 32, 3, 2.0f},
    {"seam_420", 480, 0, 1, 0, 0, 0, false, 16, 32, 32, 3, 2.0f},
    {"seam_422", 480, 4, 1, 0, 0, 0, false, 16, 32, 32, 3, 2.0f},
    {"flip", 480, 0, 1, 1, 0, 0, false, 16, 32, 32, 3, 2.0f},
    {"mirror", 480, 0, 1, 0, 1, 0, false, 16, 32, 32, 3, 2.0f},
    {"flip_mirror_422", 480, 4, 1, 1, 1, 0, false, 16, 32, 32, 3, 2.0f},
    {"padded", 480, 0, 1, 0, 0, 40, false, 16, 32, 32, 3, 2.0f},
    {"padded_422_flip", 480, 4, 0, 1, 0, 24, false, 16, 32, 32, 3, 2.0f},
    {"turned", 480, 0, 1, 0, 0, 0, true, 16, 32, 32, 3, 2.0f},
    {"odd_levels", 600, 0, 1, 0, 0, 0, false, 18, 20, 30, 5, 3.0f},
    {"unscaled", 480, 0, 1, 0, 0, 0, false, 8, 16, 16, 2, 1.0f},
    {"width_not_of_four", 488, 0, 1, 0, 0, 0, false, 16, 30, 32, 3, 2.0f},
    {"axis_on_a_pixel", 480, 0, 1, 0, 0, 0, false, 14, 30, 28, 3, 2.0f},  // a table entry that is no number
    {"middle", 960, 0, 1, 0, 0, 0, true, 24, 48, 48, 4, 2.5f},
    {"middle_422", 960, 4, 1, 0, 0, 16, true, 24, 48, 48, 4, 2.5f},
    {"large", 1920, 0, 1, 0, 0, 0, false, 32, 64, 64, 5, 4.0f},
    {"large_fixed", 1920, 0, 0, 0, 1, 64, true, 32, 64, 64, 5, 4.0f},
};

constexpr int kFrames = 3;

uint64_t hash_bytes(const void* data, size_t size) {  // FNV-1a
  uint64_t hash = 14695981039346656037u;
  for (const auto* p = static_cast<const uint8_t*>(data); size-- > 0; ++p) hash = (hash ^ *p) * 1099511628211u;
  return hash;
}

uint32_t mix(uint32_t x) {
  x ^= x >> 16;
  x *= 0x7feb352du;
  x ^= x >> 15;
  x *= 0x846ca68bu;
  return x ^ (x >> 16);
}

// Blocks, gradients, thin lines and grain, in integers only; the pictures of both lenses share their large shapes.
uint8_t luma_at(int x, int y, int lens, int frame) {
  const int shape = static_cast<int>(mix(static_cast<uint32_t>((x + frame * 5) / 24 * 131 + y / 24)) % 150);
  const int line = (x * 3 + y * 2) % 37 == 0 ? 60 : 0;
  const int grain = static_cast<int>(mix(static_cast<uint32_t>(x * 65537 + y + lens * 77 + frame)) % 21);
  return static_cast<uint8_t>(20 + shape + line + grain + lens * 4);
}

uint8_t chroma_at(int x, int y, int component, int frame) {
  const int base = component == 0 ? 110 : 140;
  return static_cast<uint8_t>(base +
                              static_cast<int>(mix(static_cast<uint32_t>((x + frame) / 9 * 977 + y / 9 + component)) % 31));
}

struct Planes {
  std::vector<uint8_t> luma, chroma;
};

Planes make_fisheye(const StitchConfig& c, int lens, int frame) {
  const int chroma_rows = c.in_yuv_type < 4 ? c.in_h / 2 : c.in_h;
  Planes p{std::vector<uint8_t>(static_cast<size_t>(c.in_luma_stride) * c.in_h),
           std::vector<uint8_t>(static_cast<size_t>(c.in_chroma_stride) * chroma_rows)};
  for (int y = 0; y < c.in_h; ++y) {
    for (int x = 0; x < c.in_w; ++x) p.luma[static_cast<size_t>(y) * c.in_luma_stride + x] = luma_at(x, y, lens, frame);
  }
  for (int y = 0; y < chroma_rows; ++y) {
    for (int x = 0; x < c.in_w; ++x) {
      p.chroma[static_cast<size_t>(y) * c.in_chroma_stride + x] = chroma_at(x / 2, y, x % 2, frame);
    }
  }
  return p;
}

StitchConfig make_config(const Case& k) {
  StitchConfig c = {};
  c.in_h = c.in_w = k.out_w / 2;
  c.in_luma_stride = c.in_chroma_stride = c.in_w + k.padding;
  c.in_yuv_type = c.out_yuv_type = k.format;
  c.out_h[0] = k.out_w / 2;
  c.out_w[0] = k.out_w;
  c.out_flip[0] = k.flip;
  c.out_mirror[0] = k.mirror;
  c.out_luma_stride[0] = c.out_chroma_stride[0] = k.out_w + k.padding;
  c.p0 = static_cast<float>(c.in_w) * 0.25f;
  c.p1 = static_cast<float>(c.in_w) * 0.2525f;
  c.cx0 = static_cast<float>(c.in_w) * 0.5f - 0.5f;
  c.cy0 = static_cast<float>(c.in_h) * 0.5f + 1.25f;
  c.cx1 = static_cast<float>(c.in_w) * 0.5f + 1.75f;
  c.cy1 = static_cast<float>(c.in_h) * 0.5f - 1.5f;
  const float straight[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
  const float turned[9] = {0.99875f, -0.05f, 2.5f, 0.05f, 0.99875f, -1.5f, 0, 0, 1};
  std::memcpy(c.lens_matrix, k.turned ? turned : straight, sizeof c.lens_matrix);
  c.change_focus = 1.0f;
  c.feather = k.feather;
  c.trans_width = k.trans_width;
  c.findpath_width = k.findpath_width;
  c.pyr_level = k.pyr_level;
  c.findpath_enable = k.findpath_enable;
  c.inv_scale = k.inv_scale;
  return c;
}

class Report {
 public:
  explicit Report(std::FILE* out) : out_(out) {}
  void add(const Case& k, const std::string& what, const void* data, size_t size) {
    char line[160];
    std::snprintf(line, sizeof line, "%s %s %016llx", k.name, what.c_str(),
                  static_cast<unsigned long long>(hash_bytes(data, size)));
    std::fprintf(out_, "%s\n", line);
    lines_.emplace_back(line);
  }
  const std::vector<std::string>& lines() const { return lines_; }

 private:
  std::FILE* out_;
  std::vector<std::string> lines_;
};

void add_tables(const Case& k, const StitchEngine& e, Report& report) {
  const size_t rows = static_cast<size_t>(e.config->in_h) * 2 * sizeof(float);
  report.add(k, "left", e.map_left.entries, rows * e.left_width);
  report.add(k, "middle", e.map_middle.entries, rows * e.middle_width);
  report.add(k, "right", e.map_right.entries, rows * e.right_width);
}

bool run_case(const Case& k, Report& report) {
  StitchConfig config = make_config(k);
  StitchEngine* engine = nullptr;
  if (QOR_Create_BI_Soft(&config, &engine) != 0) return false;
  QOR_SetConfig_BI_Soft(&engine);
  add_tables(k, *engine, report);
  const int chroma_rows = k.format < 4 ? config.out_h[0] / 2 : config.out_h[0];
  // Filled with a pattern: bytes that a frame must leave alone are part of the hash.
  std::vector<uint8_t> luma(static_cast<size_t>(config.out_luma_stride[0]) * config.out_h[0], 0x5a);
  std::vector<uint8_t> chroma(static_cast<size_t>(config.out_chroma_stride[0]) * chroma_rows, 0xa5);
  for (int frame = 0; frame < kFrames; ++frame) {
    Planes lens0 = make_fisheye(config, 0, frame);
    Planes lens1 = make_fisheye(config, 1, frame);
    void* in[16] = {};
    void* out[16] = {};
    in[2] = lens0.luma.data();
    in[3] = lens1.luma.data();
    in[6] = lens0.chroma.data();
    in[7] = lens1.chroma.data();
    out[4] = luma.data();
    out[12] = chroma.data();
    QOR_Proc_BI_Soft(&engine, in, out);
    report.add(k, "luma" + std::to_string(frame), luma.data(), luma.size());
    report.add(k, "chroma" + std::to_string(frame), chroma.data(), chroma.size());
  }
  QOR_Destroy_BI_Soft(&engine);
  return true;
}

bool equals_file(const std::vector<std::string>& lines, const char* path) {
  std::ifstream file(path);
  if (!file) {
    std::fprintf(stderr, "%s: can't be read\n", path);
    return false;
  }
  size_t differences = 0, at = 0;
  for (std::string line; std::getline(file, line); ++at) {
    if (at < lines.size() && lines[at] == line) continue;
    ++differences;
    std::fprintf(stderr, "expected %s\n     got %s\n", line.c_str(), at < lines.size() ? lines[at].c_str() : "nothing");
  }
  if (at != lines.size()) ++differences;
  std::fprintf(stderr, "%zu hashes, %zu differences\n", lines.size(), differences);
  return differences == 0;
}

}  // namespace

int main(int argc, char** argv) {
  biseam::test::force_isa_by_environment();
  // Frames print their time on standard output; the hashes go where it led before.
  std::FILE* out = fdopen(dup(STDOUT_FILENO), "w");
  if (out == nullptr || std::freopen("/dev/null", "w", stdout) == nullptr) return 2;
  Report report(out);
  for (const Case& k : kCases) {
    if (!run_case(k, report)) {
      std::fprintf(stderr, "%s: no engine\n", k.name);
      return 2;
    }
  }
  std::fclose(out);
  return argc < 2 || equals_file(report.lines(), argv[1]) ? 0 : 1;
}
