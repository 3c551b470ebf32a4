#include "stitch/seams.hpp"

#include <algorithm>
#include <cmath>

namespace biseam::tool {

double seam_movement(const SeamPath& from, const SeamPath& to) {
  const std::size_t places = std::min(from.size(), to.size());
  if (places == 0) return 0;
  double sum = 0;
  for (std::size_t place = 0; place < places; ++place) sum += std::abs(from[place] - to[place]);
  return sum / double(places);
}

}  // namespace biseam::tool
