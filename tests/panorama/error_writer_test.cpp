#include "panorama/error_writer.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace biseam::test {
namespace {

TEST(ErrorWriter, FormatsCodeAndText) {
  const Error error = ErrorWriter::write(ErrorCode::invalid_configuration, "%s is %d, must be %.1f", "out_w", 7, 8.5);
  EXPECT_EQ(ErrorCode::invalid_configuration, error.code());
  EXPECT_STREQ("out_w is 7, must be 8.5", error.text());
}

TEST(ErrorWriter, CutsTextsThatAreTooLong) {
  for (const int length : {Error::kTextSize - 1, Error::kTextSize, 10 * Error::kTextSize}) {
    const std::string text(static_cast<std::size_t>(length), 'x');
    const Error error = ErrorWriter::write(ErrorCode::invalid_configuration, "%s", text.c_str());
    EXPECT_EQ(static_cast<std::size_t>(Error::kTextSize) - 1, std::strlen(error.text())) << length;
  }
}

}  // namespace
}  // namespace biseam::test
