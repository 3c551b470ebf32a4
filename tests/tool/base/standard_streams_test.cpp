#include "base/standard_streams.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "tool/support/expect_failure.hpp"
#include "tool/support/scratch_folder.hpp"

namespace biseam::tool {
namespace {

// The descriptor is taken, but what the stream is for fails as it does on a closed one.
bool is_held(int descriptor) {
  char byte = 'x';
  errno = 0;
  const ssize_t moved = descriptor == STDIN_FILENO ? ::read(descriptor, &byte, 1) : ::write(descriptor, &byte, 1);
  return moved < 0 && errno == EBADF && ::fcntl(descriptor, F_GETFD) >= 0;
}

// In a process of its own: 0 when all that was closed is held, and the next file is none of the three.
[[noreturn]] void close_and_hold(bool in, bool out, bool err) {
  if (in) ::close(STDIN_FILENO);
  if (out) ::close(STDOUT_FILENO);
  if (err) ::close(STDERR_FILENO);
  hold_standard_streams();
  const bool held = (!in || is_held(STDIN_FILENO)) && (!out || is_held(STDOUT_FILENO)) && (!err || is_held(STDERR_FILENO));
  ::_exit(held && ::open("/dev/null", O_RDONLY) > STDERR_FILENO ? 0 : 1);
}

TEST(HoldStandardStreams, NoFileTakesThePlaceOfAClosedOne) {
  for (int which = 1; which < 8; ++which) {
    EXPECT_EXIT(close_and_hold(which & 1, which & 2, which & 4), testing::ExitedWithCode(0), "") << which;
  }
}

TEST(HoldStandardStreams, OpenOnesStayWhatTheyAre) {
  const auto print_through_it = [] {
    hold_standard_streams();
    std::fprintf(stderr, "still there\n");
    ::_exit(0);
  };
  EXPECT_EXIT(print_through_it(), testing::ExitedWithCode(0), "still there");
}

// In a process of its own: what flushing says of a standard output that goes to the given file.
[[noreturn]] void print_to(const char* path, std::size_t bytes) {
  if (!std::freopen(path, "w", stdout)) ::_exit(9);
  for (std::size_t n = 0; n < bytes; ++n) std::fputc('x', stdout);
  try {
    flush_standard_output();
  } catch (const Failure& failure) {
    std::fprintf(stderr, "%s\n", failure.what());
    ::_exit(int(failure.code()));
  }
  ::_exit(0);
}

TEST(FlushStandardOutput, WritesAllThatWasPrinted) {
  const test::ScratchFolder folder;
  EXPECT_EXIT(print_to((folder / "out").c_str(), 100000), testing::ExitedWithCode(0), "");
  EXPECT_EQ(test::read_bytes(folder / "out"), std::string(100000, 'x'));
}

TEST(FlushStandardOutput, AFullDeviceIsToldHoweverMuchWasPrinted) {
  constexpr const char* kLine = "standard output: can't be written: No space left on device";
  EXPECT_EXIT(print_to("/dev/full", 1), testing::ExitedWithCode(4), kLine);
  EXPECT_EXIT(print_to("/dev/full", 1000000), testing::ExitedWithCode(4), "standard output: can't be written: ");
  EXPECT_EXIT(print_to("/dev/full", 0), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace biseam::tool
