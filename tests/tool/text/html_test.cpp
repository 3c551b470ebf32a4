#include "text/html.hpp"

#include <gtest/gtest.h>

namespace biseam::tool {
namespace {

TEST(Html, NothingOfATextIsMarkup) {
  EXPECT_EQ(escape_html("<a href=\"b&c\">'é'</a>"), "&lt;a href=&quot;b&amp;c&quot;&gt;'é'&lt;/a&gt;");
  EXPECT_EQ(escape_html(""), "");
}

}  // namespace
}  // namespace biseam::tool
