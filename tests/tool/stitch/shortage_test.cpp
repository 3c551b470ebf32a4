// No memory and no threads: whichever request fails, the run ends at once with one line, or does all it should.
#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <tuple>
#include <utility>

#include "base/sanitized.hpp"
#include "picture/encode.hpp"
#include "tool/support/clip_maker.hpp"
#include "tool/support/places.hpp"
#include "tool/support/run_clip.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

using namespace test;

constexpr int kSystem = 6;  // exit code

// A stitch in which the number-th call of a kind fails; negative: none.
class FailingRun {
 public:
  FailingRun(const std::string& input, const std::string& output) : input_(folder_ / input), output_(folder_ / output) {
    if (input.ends_with(".mp4")) {
      ClipSpec spec;
      spec.sound = 0.2;
      write_clip(input_, spec, walk(3));
    } else {
      const std::vector<std::uint8_t> png = encode_png(to_rgb(walk(1)[0]));
      write_bytes(input_, {png.begin(), png.end()});
    }
    EXPECT_EQ(run("FAILING_THREAD", -1).exit_code, 0);
    expected_ = read_bytes(output_);
    std::tie(allocations_, threads_) = calls();
    std::filesystem::remove(output_);
  }

  int allocations() const { return allocations_; }
  int threads() const { return threads_; }

  Finished run(const std::string& kind, int number) {
    return test::run(with(
        {"/usr/bin/timeout", "60", "/usr/bin/env", "LD_PRELOAD=" BISEAM_FAILING_CALLS, "COUNTED_CALLS=" + (folder_ / "calls"),
         kind + "=" + std::to_string(number), kTool, "stitch", input_, "-o", output_, "--no-search"},
        known_lenses()));
  }

  // What a run that ended in a failure has left would be counted as the next one's.
  void expect_orderly_end(const std::string& kind, int number) {
    SCOPED_TRACE(kind + " " + std::to_string(number));
    const Finished finished = run(kind, number);
    const auto [allocations, threads] = calls();
    std::filesystem::remove(folder_ / "calls");
    if (finished.exit_code == 0) {
      // Threads that wait for each other ask more or less often: the last requests of one run are not met in another.
      if (number < (kind == "FAILING_THREAD" ? threads : allocations)) ++dispensable_;
      EXPECT_EQ(read_bytes(output_), expected_);
      std::filesystem::remove(output_);
    } else {
      ++refused_;
      EXPECT_EQ(finished.exit_code, kSystem) << finished.err;
      // What fails while the finished run is told leaves the whole result.
      const bool is_finished = std::filesystem::exists(output_);
      EXPECT_LE(std::count(finished.err.begin(), finished.err.end(), '\n'), is_finished ? 2 : 1) << finished.err;
      if (is_finished) {
        EXPECT_EQ(read_bytes(output_), expected_);
        std::filesystem::remove(output_);
      }
      EXPECT_EQ(finished.err.rfind("biseam: ", 0), 0u) << finished.err;
      EXPECT_TRUE(finished.err.find("memory") != std::string::npos || finished.err.find("no thread for ") != std::string::npos)
          << finished.err;
    }
    // A run that left something has to answer for it alone.
    for (const std::string& name : folder_.names()) {
      if (folder_ / name == input_) continue;
      ADD_FAILURE() << name << " is left by a run that ended with " << finished.exit_code << " and said: " << finished.err;
      std::filesystem::remove(folder_ / name);
    }
  }

  // Number of requests for memory and for threads in the last run.
  std::pair<int, int> calls() const {
    std::pair<int, int> counts{};
    std::istringstream(read_bytes(folder_ / "calls")) >> counts.first >> counts.second;
    return counts;
  }

  int refused() const { return refused_; }
  int dispensable() const { return dispensable_; }

 private:
  ScratchFolder folder_;
  std::string input_, output_, expected_;
  int allocations_ = 0, threads_ = 0, refused_ = 0, dispensable_ = 0;
};

using Files = std::pair<const char*, const char*>;
constexpr Files kPicture{"in.png", "out.jpg"}, kClip{"in.mp4", "out.mp4"};

std::string kind_of(const Files& files) { return std::string(files.first).substr(3); }

class ShortRuns : public testing::Test {
 protected:
  void open([[maybe_unused]] const Files& files) {
#if defined(BISEAM_SANITIZED)
    GTEST_SKIP() << "sanitizers take all requests themselves";
#else
    run_ = std::make_unique<FailingRun>(files.first, files.second);
    ASSERT_GT(run_->allocations(), 1000);
#endif
  }

  void expect_orderly_ends(int first, int stride) {
    for (int number = first; number < run_->allocations(); number += stride) {
      run_->expect_orderly_end("FAILING_ALLOCATION", number);
    }
    EXPECT_GT(run_->refused(), 0);
    EXPECT_EQ(run_->dispensable(), 0);
  }

  std::unique_ptr<FailingRun> run_;
};

class Shortage : public ShortRuns, public testing::WithParamInterface<Files> {
  void SetUp() override { open(GetParam()); }
};
INSTANTIATE_TEST_SUITE_P(Stitch, Shortage, testing::Values(kPicture, kClip),
                         [](const auto& parameter) { return kind_of(parameter.param); });

// About 40 of all the requests for memory, evenly.
TEST_P(Shortage, OfMemoryEndsInOneLine) { expect_orderly_ends(0, run_->allocations() / 40); }

// In parts, which may run beside one another.
constexpr int kParts = 8;

class EveryRequest : public ShortRuns, public testing::WithParamInterface<std::tuple<Files, int>> {
  void SetUp() override { open(std::get<Files>(GetParam())); }
};
INSTANTIATE_TEST_SUITE_P(Stitch, EveryRequest, testing::Combine(testing::Values(kPicture, kClip), testing::Range(0, kParts)),
                         [](const auto& parameter) {
                           return kind_of(std::get<Files>(parameter.param)) + "_" +
                                  std::to_string(std::get<int>(parameter.param));
                         });

TEST_P(EveryRequest, DISABLED_ForMemoryMayFail) { expect_orderly_ends(std::get<int>(GetParam()), kParts); }

// Those of the pool, of the decoder and of the encoder are needed; all others have calls in their place.
TEST_P(Shortage, OfThreadsIsNamedOrDoesNoHarm) {
  for (int number = 0; number < std::min(run_->threads(), 40); ++number) run_->expect_orderly_end("FAILING_THREAD", number);
  EXPECT_GT(run_->dispensable(), 0);
  if (std::string(GetParam().first) == "in.mp4") {
    EXPECT_GT(run_->refused(), 2);
  }
}

}  // namespace
}  // namespace biseam::tool
