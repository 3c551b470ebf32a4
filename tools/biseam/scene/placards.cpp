#include "scene/placards.hpp"

#include <numbers>
#include <string_view>

namespace biseam::scene {
namespace {

// All in distances.
constexpr double kWidth = 0.56, kHeight = 0.5, kThickness = 0.02, kSwing = 0.5;
constexpr double kPeriod = 4;  // seconds

using Text = std::array<std::string_view, 4>;

Board lettered(const Text& text, double distance, Vec3 ground, Vec3 ink) {
  Board board{{}, kWidth * distance, kHeight * distance, 0.056 * distance, ground, ink};
  for (const std::string_view line : text) board.lines.emplace_back(line);
  return board;
}

constexpr Text kRight = {"QUITE NEAR", "AND JUST", "WHERE LENSES", "MEET 4705"},
               kLeft = {"BOTH SEE IT", "FROM PLACES", "THAT ARE", "APART 1628"};

}  // namespace

Placards::Placards(double distance)
    : distance_(distance),
      boards_{lettered(kRight, distance, {0.62, 0.50, 0.16}, {0.06, 0.05, 0.10}),
              lettered(kLeft, distance, {0.10, 0.22, 0.26}, {0.72, 0.70, 0.62})} {}

std::array<Shape, 2> Placards::at(double seconds) const {
  const double z = kSwing * distance_ * std::sin(2 * std::numbers::pi * seconds / kPeriod);
  const auto placard = [&](int index) {
    const double near = distance_, far = distance_ * (1 + kThickness), half = kHeight / 2 * distance_;
    const double left = z - kWidth / 2 * distance_, right = z + kWidth / 2 * distance_;
    const Finish finish{Material::board, {1, 1, 1}, &boards_[index]};
    if (index == 0) return Shape{Solid::box, {near, -half, left}, {far, half, right}, finish};
    return Shape{Solid::box, {-far, -half, left}, {-near, half, right}, finish};
  };
  return {placard(0), placard(1)};
}

}  // namespace biseam::scene
