#include "view/own_host.hpp"

#include <algorithm>
#include <array>
#include <string>

namespace biseam::tool {
namespace {

constexpr int kUsualPort = 80;
constexpr std::array<std::string_view, 3> kNames = {"127.0.0.1", "localhost", "[::1]"};

std::string lower(std::string_view text) {
  std::string out(text);
  for (char& c : out) {
    if (c >= 'A' && c <= 'Z') c = char(c - 'A' + 'a');
  }
  return out;
}

}  // namespace

bool is_own_host(std::string_view host, int port) {
  const std::string given = lower(host), ending = std::string(":").append(std::to_string(port));
  return std::any_of(kNames.begin(), kNames.end(), [&](std::string_view name) {
    return given == std::string(name).append(ending) || (port == kUsualPort && given == name);
  });
}

}  // namespace biseam::tool
