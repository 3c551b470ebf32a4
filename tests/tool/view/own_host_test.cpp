#include "view/own_host.hpp"

#include <gtest/gtest.h>

namespace biseam::tool {
namespace {

TEST(OwnHost, LoopbackNamesWithThePortAre) {
  for (const char* host : {"127.0.0.1:8080", "localhost:8080", "LocalHost:8080", "[::1]:8080"}) {
    EXPECT_TRUE(is_own_host(host, 8080)) << host;
  }
}

TEST(OwnHost, ThePortMayBeLeftOutOnlyWhenItIs80) {
  for (const char* host : {"127.0.0.1", "localhost", "[::1]"}) {
    EXPECT_TRUE(is_own_host(host, 80)) << host;
    EXPECT_TRUE(is_own_host(std::string(host) + ":80", 80)) << host;
    EXPECT_FALSE(is_own_host(host, 8080)) << host;
  }
}

TEST(OwnHost, NothingElseIs) {
  for (const char* host : {"",
                           ":8080",
                           "example.org",
                           "example.org:8080",
                           "127.0.0.1:8081",
                           "127.0.0.1:80800",
                           "127.0.0.1:08080",
                           "127.0.0.1:",
                           "127.0.0.1.example.org:8080",
                           "localhost.example.org:8080",
                           "x.localhost:8080",
                           "localhost.:8080",
                           "127.0.0.2:8080",
                           "0.0.0.0:8080",
                           "::1:8080",
                           "[::]:8080",
                           "me@localhost:8080",
                           "localhost:8080@example.org",
                           " localhost:8080",
                           "localhost:8080 ",
                           "localhost:8080, example.org",
                           "127.1:8080",
                           "2130706433:8080"}) {
    EXPECT_FALSE(is_own_host(host, 8080)) << host;
  }
}

}  // namespace
}  // namespace biseam::tool
