// Whole clips: analysed, then stitched in any parts.
#include "stitch/clip_analyser.hpp"

#include <gtest/gtest.h>

#include "analysis/analysis_reader.hpp"
#include "tool/support/by_library.hpp"
#include "tool/support/clip_maker.hpp"
#include "tool/support/run_analysis.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

using namespace test;

constexpr int kFrames = 40, kCut = 24;

// A walk with a cut, a black picture, a flash, and a step in lens 1's light.
std::vector<Nv12> eventful_walk() {
  std::vector<Nv12> pairs = walk(kFrames + 40);
  pairs.erase(pairs.begin() + kCut, pairs.begin() + kCut + 40);
  for (int k = 0; k < kFrames; ++k) {
    Nv12& pair = pairs[std::size_t(k)];
    for (int y = 0; y < pair.height; ++y) {
      for (int x = 0; x < pair.width; ++x) {
        std::uint8_t& code = pair.luma[std::size_t(y) * std::size_t(pair.width) + std::size_t(x)];
        const int above = std::max(0, code - 16);
        if (k == 9) code = 16;
        if (k == 15) code = std::uint8_t(16 + std::min(219, above * 3 / 2));
        if (k >= 18 && x >= pair.width / 2) code = std::uint8_t(16 + above * 7 / 10);
      }
    }
  }
  return pairs;
}

class AnalysedClip : public testing::Test {
 protected:
  AnalysedClip() {
    ClipSpec spec;
    spec.options["g"] = "4";
    write_clip(clip_, spec, pairs_);
  }
  const ScratchFolder folder_;
  const std::string clip_ = folder_ / "in.mkv", analysis_ = folder_ / "in.bsa";
  const std::vector<Nv12> pairs_ = eventful_walk();
};

// Frame by frame, as the library is meant to be used.
std::string stitch_by_guides(std::vector<Nv12> pairs) {
  BiseamCamera camera = camera_of(kWalkWidth / 2, kWalkWidth / 2, 195);
  for (BiseamLens& lens : camera.lens) lens.p = std::stod(known_lenses()[1]);
  BiseamPanoramaOptions options = panorama_defaults();
  options.width = kWalkWidth;
  options.height = kWalkWidth / 2;
  options.seam = BISEAM_SEAM_STEADY;
  options.light = BISEAM_LIGHT_MATCH;
  options.near = BISEAM_NEAR_MATCH;
  options.rate = 25;
  Panorama panorama = Panorama::open(camera, options);
  const auto lenses = [](Nv12& pair) {
    BiseamPicture left = record_of(pair, AVCHROMA_LOC_LEFT);
    left.width /= 2;
    return left;
  };
  std::vector<std::vector<std::uint8_t>> guides;
  std::vector<const void*> places;
  for (Nv12& pair : pairs) {
    guides.emplace_back(panorama.guide_size());
    EXPECT_FALSE(panorama.measure({lenses(pair), right_half(lenses(pair))}, guides.back().data()));
  }
  for (const auto& guide : guides) places.push_back(guide.data());
  std::string all;
  for (std::size_t k = 0; k < pairs.size(); ++k) {
    std::vector<std::uint8_t> smoothed(panorama.guide_size());
    EXPECT_FALSE(panorama.smooth(places.data(), int(places.size()), int(k), smoothed.data()));
    BiseamFrame frame = frame_defaults();
    frame.guide = smoothed.data();
    frame.guide_size = smoothed.size();
    Nv12 out(kWalkWidth, kWalkWidth / 2);
    EXPECT_FALSE(panorama.stitch({lenses(pairs[k]), right_half(lenses(pairs[k]))}, record_of(out, AVCHROMA_LOC_LEFT), frame));
    all += raw_bytes(out);
  }
  return all;
}

TEST_F(AnalysedClip, IsWhatTheLibraryMakesOfIt) {
  analyse(clip_, analysis_, {"--light", "match"});
  const std::string guided = stitched_by(analysis_, clip_);
  EXPECT_EQ(guided, stitch_by_guides(pairs_));
  const Finished causal = run_stitch(with({clip_, "-o", "-", "--light", "match"}, known_lenses()));
  EXPECT_EQ(causal.out.size(), guided.size());
  EXPECT_NE(causal.out, guided);
}

TEST_F(AnalysedClip, PartsEqualTheWholeWhereverItIsCut) {
  for (const std::vector<std::string>& how :
       {std::vector<std::string>{"--light", "match"}, {"--seams", "free", "--near", "off"}, {"--no-search"}}) {
    analyse(clip_, analysis_, how);
    const std::string whole = stitched_by(analysis_, clip_);
    EXPECT_EQ(whole.size(), std::size_t(kFrames) * kWalkWidth * kWalkWidth / 2 * 3 / 2);
    std::string parts;
    for (const std::vector<std::string>& part : std::vector<std::vector<std::string>>{{"--to", "0.04"},
                                                                                      {"--from", "0.04", "--frames", "9"},
                                                                                      {"--from", "0.4", "--to", "0.96"},
                                                                                      {"--from", "0.96", "--to", "1"},
                                                                                      {"--from", "1", "--to", "1.56"},
                                                                                      {"--from", "1.56", "--jobs", "3"}}) {
      parts += stitched_by(analysis_, clip_, part);
    }
    EXPECT_EQ(parts, whole) << how[0];
  }
}

TEST_F(AnalysedClip, IsAnalysedTheSameByAnyNumberOfThreads) {
  analyse(clip_, analysis_, {"--light", "match", "--jobs", "1"});
  analyse(clip_, folder_ / "again.bsa", {"--light", "match", "--jobs", "4"});
  EXPECT_EQ(read_bytes(analysis_), read_bytes(folder_ / "again.bsa"));
}

// All that came before a part is known to it, and what comes after it is not.
TEST_F(AnalysedClip, APartIsAnalysedLikeTheWholeUntilShortlyBeforeItsEnd) {
  analyse(clip_, analysis_);
  analyse(clip_, folder_ / "part.bsa", {"--from", "1.2", "--to", "1.6"});
  AnalysisReader whole(analysis_), part(folder_ / "part.bsa");
  EXPECT_EQ(whole.frames(), std::size_t(kFrames));
  ASSERT_EQ(part.frames(), 10u);
  int alike = 0;
  for (std::int64_t time = 1200; time < 1600; time += 40) {
    const auto a = whole.guide_at(time), b = part.guide_at(time);
    ASSERT_FALSE(b.empty()) << time;
    alike += std::equal(a.begin(), a.end(), b.begin(), b.end()) ? 1 : 0;
  }
  EXPECT_GE(alike, 3);
  EXPECT_EQ(stitched_by(folder_ / "part.bsa", clip_, {"--from", "1.2", "--to", "1.32"}),
            stitched_by(analysis_, clip_, {"--from", "1.2", "--to", "1.32"}));
}

TEST_F(AnalysedClip, OfTenBitsKeepsThem) {
  ClipSpec spec;
  spec.encoder = "ffv1";
  spec.options.clear();
  spec.format = AV_PIX_FMT_YUV420P10LE;
  const std::string deep = folder_ / "deep.mkv";
  write_clip(deep, spec, {kWalkWidth, kWalkWidth / 2}, 12, [](int index, AVFrame& frame) {
    for (int plane = 0; plane < 3; ++plane) {
      const int columns = plane == 0 ? frame.width : frame.width / 2, rows = plane == 0 ? frame.height : frame.height / 2;
      for (int y = 0; y < rows; ++y) {
        auto* const row = reinterpret_cast<std::uint16_t*>(frame.data[plane] + std::ptrdiff_t(y) * frame.linesize[plane]);
        for (int x = 0; x < columns; ++x) row[x] = std::uint16_t(plane == 0 ? 200 + (x * 7 + y * 5 + index * 11) % 500 : 512);
      }
    }
  });
  analyse(deep, analysis_);
  const std::vector<std::string> more = {"--format", "y4m"};
  const std::string whole = stitched_by(analysis_, deep, more);
  EXPECT_NE(whole.find("420p10"), std::string::npos);
  const std::string rest = stitched_by(analysis_, deep, with(more, {"--from", "0.2"}));
  const std::size_t head = rest.find('\n') + 1;
  EXPECT_EQ(whole.substr(whole.size() - (rest.size() - head)), rest.substr(head));
}

}  // namespace
}  // namespace biseam::tool
