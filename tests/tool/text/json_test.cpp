#include "text/json.hpp"

#include <gtest/gtest.h>

namespace biseam::tool {
namespace {

TEST(Json, TextsAreQuotedAndNumbersFinite) {
  JsonObject inner;
  inner.add("on", true);
  JsonObject object;
  object.add("name", "a \"b\"\\\n");
  object.add("count", 3);
  object.add("rate", 0.5);
  object.add("endless", 1.0 / 0.0);
  object.add("inner", inner);
  EXPECT_EQ(
      object.text(),
      "{\"name\": \"a \\\"b\\\"\\\\\\u000a\", \"count\": 3, \"rate\": 0.5, \"endless\": null, \"inner\": {\"on\": true}}");
}

TEST(Json, ArraysHoldNumbersAndObjects) {
  JsonObject one, two, object;
  one.add("n", 1);
  object.add("none", std::vector<double>{});
  object.add("numbers", std::vector<double>{0.5, -2, 1.0 / 0.0});
  object.add("objects", std::vector<JsonObject>{one, two});
  EXPECT_EQ(object.text(), "{\"none\": [], \"numbers\": [0.5, -2, null], \"objects\": [{\"n\": 1}, {}]}");
}

TEST(Json, FixedNumbersHaveSixDecimals) {
  JsonObject object;
  object.add_fixed("psnr", 31.25);
  object.add_fixed("large", 1e300);
  object.add_fixed("none", 0.0 / 0.0);
  const std::string text = object.text();
  EXPECT_EQ(text.rfind("{\"psnr\": 31.250000, \"large\": 1", 0), 0u) << text;
  EXPECT_TRUE(text.ends_with(".000000, \"none\": null}")) << text;
}

}  // namespace
}  // namespace biseam::tool
