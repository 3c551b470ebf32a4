#include <biseam/stitcher.hpp>
#include <cstdio>

int main() {
  const auto made = biseam::Stitcher::create(StitchConfig{});  // nothing is set: refused, with a reason
  std::puts(made.error().text());
  return made.error().code() == biseam::ErrorCode::invalid_configuration ? 0 : 1;
}
