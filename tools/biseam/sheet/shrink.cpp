#include "sheet/shrink.hpp"

#include <algorithm>
#include <cmath>

namespace biseam::tool {
namespace {

// Source samples first .. first + weights.size() - 1 and their shares of one target sample.
struct Cover {
  std::size_t first;
  std::vector<double> shares;
};

std::vector<Cover> covers(int from, int to) {
  std::vector<Cover> all;
  const double scale = double(from) / to;
  for (int i = 0; i < to; ++i) {
    const double low = i * scale, high = std::min(double(from), (i + 1) * scale);
    Cover cover{std::size_t(low), {}};
    for (int k = int(low); k < high; ++k)
      cover.shares.push_back((std::min(high, k + 1.0) - std::max(low, double(k))) / (high - low));
    all.push_back(std::move(cover));
  }
  return all;
}

}  // namespace

Rgb shrunk(const Rgb& picture, Size to) {
  const std::vector<Cover> columns = covers(picture.width, to.width), rows = covers(picture.height, to.height);
  Rgb out(to.width, to.height);
  std::uint8_t* target = out.bytes.data();
  for (const Cover& row : rows) {
    for (const Cover& column : columns) {
      double sum[3] = {};
      for (std::size_t j = 0; j < row.shares.size(); ++j) {
        const std::uint8_t* source = &picture.bytes[((row.first + j) * std::size_t(picture.width) + column.first) * 3];
        for (const double share : column.shares) {
          for (int c = 0; c < 3; ++c) sum[c] += row.shares[j] * share * *source++;
        }
      }
      for (const double value : sum) *target++ = std::uint8_t(std::floor(std::min(255.0, value) + 0.5));
    }
  }
  return out;
}

}  // namespace biseam::tool
