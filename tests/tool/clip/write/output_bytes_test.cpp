#include "clip/write/output_bytes.hpp"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "tool/support/expect_failure.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

using test::ScratchFolder;

void put(const OutputBytes& output, const std::string& text) {
  avio_write(output.context(), reinterpret_cast<const unsigned char*>(text.data()), int(text.size()));
}

TEST(OutputBytes, TakeTheirNameWhenTheyAreWhole) {
  const ScratchFolder folder;
  test::write_bytes(folder / "a", "before");
  const std::string much(3u << 20, 'x');  // more than is kept before it is written
  {
    OutputBytes output(folder / "a");
    EXPECT_TRUE(output.is_seekable());
    EXPECT_EQ(output.name(), folder / "a");
    put(output, much + "end");
    EXPECT_EQ(test::read_bytes(folder / "a"), "before");
    output.commit();
  }
  EXPECT_TRUE(test::read_bytes(folder / "a") == much + "end");
  EXPECT_EQ(folder.names().size(), 1u);
}

TEST(OutputBytes, LeaveNothingWhenTheyAreGivenUp) {
  const ScratchFolder folder;
  {
    OutputBytes output(folder / "a");
    put(output, "half");
    output.flush();
    output.check();
  }
  EXPECT_TRUE(folder.names().empty());
}

TEST(OutputBytes, MuxersMayGoBackAndAskForTheSize) {
  const ScratchFolder folder;
  OutputBytes output(folder / "a");
  put(output, std::string(400000, '.'));
  output.flush();
  EXPECT_EQ(avio_size(output.context()), 400000);
  EXPECT_EQ(avio_seek(output.context(), 3, SEEK_SET), 3);
  put(output, "head");
  EXPECT_EQ(avio_seek(output.context(), 400000, SEEK_SET), 400000);
  put(output, "end");
  output.commit();
  const std::string bytes = test::read_bytes(folder / "a");
  EXPECT_EQ(bytes.substr(0, 8), "...head.");
  EXPECT_EQ(bytes.size(), 400003u);
  EXPECT_TRUE(bytes.ends_with(".end"));
}

TEST(OutputBytes, DevicesCantBeSoughtAndTellWhatTheyDontTake) {
  OutputBytes null("/dev/null");
  EXPECT_FALSE(null.is_seekable());
  put(null, std::string(1 << 20, 'x'));
  null.commit();

  OutputBytes full("/dev/full");
  put(full, "x");
  full.check();
  full.flush();
  for (int round = 0; round < 2; ++round) {
    const auto [code, line] = test::failure_of([&] { full.check(); });
    EXPECT_EQ(code, ExitCode::output);
    EXPECT_EQ(line, "/dev/full: can't be written: No space left on device");
  }
  EXPECT_EQ(test::failure_of([&] { full.commit(); }).first, ExitCode::output);
}

TEST(OutputBytes, APlaceThatIsNoneIsNamed) {
  const ScratchFolder folder;
  const auto [code, line] = test::failure_of([&] { OutputBytes output(folder / "none/a"); });
  EXPECT_EQ(code, ExitCode::output);
  test::expect_one_line_naming(line, folder / "none/a");
}

}  // namespace
}  // namespace biseam::tool
