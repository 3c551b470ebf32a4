#include "calibration/report/matches.hpp"

#include <algorithm>
#include <cmath>

#include "calibration/report/formatted.hpp"
#include "camera/projector.hpp"

namespace biseam::tool {
namespace {

using calibrate::ExplainedMatch;

// A path's piece: from where the lens sees it towards where the other one does.
std::string line_of(const ExplainedMatch& match, const Projector& projector, int lens) {
  const double shorter = std::min(1.0, double(kLongest) / std::max(1e-9, match.pixels()));
  const double towards = (lens == 0 ? 1 : -1) * shorter;
  const calibrate::RingPoint there{match.at.t + towards * match.around / sine_cosine(match.at.b).cosine,
                                   match.at.b - towards * match.across};
  const ImagePoint from = projector.project(calibrate::ring_direction(match.at.t, match.at.b));
  const ImagePoint to = projector.project(calibrate::ring_direction(there.t, there.b));
  const cv::Point2d& at = match.match.at[lens];
  return formatted("M%.1f %.1fl%.1f %.1f", at.x, at.y, kStretch * (to.x - from.x), kStretch * (to.y - from.y));
}

std::string path_of(const std::string& name, const std::string& lines) {
  return lines.empty() ? "" : "<path class=\"" + name + "\" d=\"" + lines + "\"/>\n";
}

}  // namespace

std::size_t class_of(double pixels) {
  return std::size_t(std::upper_bound(kClassEnds.begin(), kClassEnds.end(), pixels) - kClassEnds.begin());
}

std::array<std::size_t, kClasses> count_classes(const calibrate::Finding& finding) {
  std::array<std::size_t, kClasses> counts{};
  for (const ExplainedMatch& match : finding.matches) {
    if (match.kept) ++counts[class_of(match.pixels())];
  }
  return counts;
}

std::string draw_matches(const calibrate::Finding& finding, int lens) {
  const Lens& shape = finding.camera.lens[lens];
  const Projector projector(finding.camera, lens);
  std::string wrong;
  std::array<std::string, kClasses> kept;
  for (const ExplainedMatch& match : finding.matches) {
    (match.kept ? kept[class_of(match.pixels())] : wrong) += line_of(match, projector, lens);
  }
  // The middle of the first pixel is at (0, 0).
  std::string drawing = formatted("<svg viewBox=\"-0.5 -0.5 %d %d\" aria-hidden=\"true\" stroke-width=\"%.2f\">\n", shape.width,
                                  shape.height, shape.width / 480.0);
  drawing += formatted("<circle class=\"rim\" cx=\"%.1f\" cy=\"%.1f\" r=\"%.1f\"/>\n", shape.cx, shape.cy,
                       radius(shape, shape.fov / 2 * kDegree));
  const double arm = shape.width / 40.0;
  drawing += formatted("<path class=\"rim\" d=\"M%.1f %.1fh%.1fM%.1f %.1fv%.1f\"/>\n", shape.cx - arm, shape.cy, 2 * arm,
                       shape.cx, shape.cy - arm, 2 * arm);
  drawing += path_of("wrong", wrong);
  for (std::size_t i = 0; i < kClasses; ++i) drawing += path_of(class_name(i), kept[i]);
  return drawing + "</svg>\n";
}

}  // namespace biseam::tool
