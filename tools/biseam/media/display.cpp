#include "media/display.hpp"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>

namespace biseam::tool {
namespace {

constexpr int kLongestSide = 32766;  // of pictures

// x' = a x + c y and y' = b x + d y, y downwards.
void follow(const std::int32_t (&matrix)[9], Display& display) {
  const double a = matrix[0], b = matrix[1], c = matrix[3], d = matrix[4];
  const double straight = std::abs(a) + std::abs(d), across = std::abs(b) + std::abs(c);
  if (straight == 0 && across == 0) return;
  const bool is_across = across > straight;
  const double x = is_across ? c : a, y = is_across ? b : d, rest = std::min(straight, across);
  constexpr double kSlip = 0.01;
  display.is_askew = x == 0 || y == 0 || rest > kSlip * (std::abs(x) + std::abs(y));
  if (display.is_askew) return;
  display.turn = is_across ? (y < 0 ? 270 : 90) : (y < 0 ? 180 : 0);
  display.mirrored = is_across == ((x < 0) == (y < 0));
}

}  // namespace

Display display_of(AVFormatContext& clip, AVStream& stream, AVFrame* frame) {
  Display display;
  std::size_t bytes = 0;
  const std::uint8_t* data = av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, &bytes);
  std::int32_t matrix[9];
  if (data && bytes >= sizeof matrix) {
    std::memcpy(matrix, data, sizeof matrix);
    follow(matrix, display);
  }
  const AVRational pixel = av_guess_sample_aspect_ratio(&clip, &stream, frame);
  if (pixel.num > 0 && pixel.den > 0) av_reduce(&display.pixel.num, &display.pixel.den, pixel.num, pixel.den, INT_MAX);
  return display;
}

std::optional<Size> square_size(Size recorded, AVRational pixel) {
  const bool is_wide = pixel.num > pixel.den;
  const double factor = is_wide ? av_q2d(pixel) : av_q2d(av_inv_q(pixel));
  int& side = is_wide ? recorded.width : recorded.height;
  if (pixel.num == pixel.den) return recorded;
  const double grown = 4 * std::round(side * factor / 4);
  if (grown > kLongestSide) return std::nullopt;
  side = int(grown);
  return recorded;
}

std::string display_text(const Display& display, Size recorded) {
  std::string text;
  const auto add = [&text](const std::string& part) { text += (text.empty() ? "" : ", ") + part; };
  const std::optional<Size> square = square_size(recorded, display.pixel);
  if (square && *square != recorded) add("scaled from " + size_text(recorded) + " to " + size_text(*square) + " square pixels");
  if (display.turn != 0) add("turned clockwise by " + std::to_string(display.turn) + " degrees");
  if (display.mirrored) add("mirrored");
  return text;
}

}  // namespace biseam::tool
