#include "calibration/report/page.hpp"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <opencv2/imgproc.hpp>

#include "base/printable.hpp"
#include "calibration/report/formatted.hpp"
#include "calibration/report/matches.hpp"
#include "calibration/report/numbers.hpp"
#include "calibration/report/seams.hpp"
#include "calibration/report/strips.hpp"
#include "calibration/report/style.hpp"
#include "picture/encode.hpp"
#include "text/base64.hpp"
#include "text/html.hpp"

namespace biseam::tool {
namespace {

using calibrate::Finding;

std::string picture(const Rgb& samples, const std::string& shown, bool lossless) {
  const std::vector<std::uint8_t> bytes = lossless ? encode_png(samples) : encode_jpeg(samples);
  return formatted("<img width=\"%d\" height=\"%d\" alt=\"", samples.width, samples.height) + escape_html(shown) +
         "\" src=\"data:image/" + (lossless ? "png" : "jpeg") + ";base64," + base64(bytes) + "\">";
}

std::string figure(const std::string& content, const std::string& caption) {
  return "<figure>" + content + "<figcaption>" + caption + "</figcaption></figure>\n";
}

std::string section(const std::string& name, const std::string& words, const std::string& content) {
  return "<section>\n<h2>" + name + "</h2>\n<p>" + words + "</p>\n" + content + "</section>\n";
}

std::string name_of(const std::string& path) {
  const std::string name = std::filesystem::path(path).filename().string();
  return escape_html(printable(name));
}

// The pair of which most matches are kept.
std::size_t best_pair(const Finding& finding, std::size_t pairs) {
  std::vector<int> kept(pairs);
  for (const calibrate::ExplainedMatch& match : finding.matches) kept[std::size_t(match.match.pair)] += match.kept ? 1 : 0;
  return std::size_t(std::max_element(kept.begin(), kept.end()) - kept.begin());
}

std::string fact(const std::string& name, const std::string& value, const std::string& more) {
  return "<div><dt>" + name + "</dt><dd>" + value + "<small>" + more + "</small></dd></div>\n";
}

std::string facts(const Finding& finding, std::size_t pairs) {
  double sum = 0, count = 0;
  for (const double left : finding.left) {
    if (left < 0) continue;
    sum += left * left;
    ++count;
  }
  std::string out = "<dl class=\"facts\">\n";
  out += fact("Far things meet within", formatted("%.2f px", 2 * finding.seam_deviation),
              formatted("%.2f px in the worst eighth of the ring: two standard deviations, of a panorama 3840 wide",
                        2 * finding.worst_deviation));
  out += fact("Left of the matches", formatted("%.2f px", std::sqrt(sum / std::max(1.0, count))),
              formatted("%.2f px in the worst eighth of the ring; of a panorama 3840 wide", finding.worst()));
  out += fact("Matches kept", formatted("%.0f %%", 100 * finding.kept),
              formatted("of %zu, in %zu pair%s of pictures", finding.matches.size(), pairs, pairs == 1 ? "" : "s"));
  if (finding.tracks > 0) {
    out += fact("Tracks within the lenses", formatted("%zu", finding.tracks),
                "as the camera turns: scale and distortion are known away from the seams as well");
  }
  if (finding.baseline) {
    constexpr double kUsualHeight = 1500;  // millimetres
    out += fact(
        "Distance of the lenses", formatted("%.2f %%", 100 * finding.baseline->share),
        formatted("&plusmn;&#8239;%.2f %% of the distance of the ground or wall that shows it: %.0f mm if that is 1.5 m away",
                  100 * finding.baseline->deviation, kUsualHeight * finding.baseline->share));
  } else {
    out += fact("Distance of the lenses", "none shows", "nothing near enough is displaced");
  }
  return out + "</dl>\n";
}

std::string seams(const RecordedPair& pair, const Setup& setup) {
  const std::array<Rgb, 2> parts = seam_parts(pair, setup);
  std::string out = "<div class=\"two\">\n";
  for (std::size_t i = 0; i < 2; ++i) {
    const std::string side = i == 0 ? "Left" : "Right";
    const std::string name = side + " seam of the panorama";
    out += figure("<div class=\"full\" tabindex=\"0\" role=\"region\" aria-label=\"" + name + "\">" +
                      picture(parts[i], name, true) + "</div>",
                  side + " of lens 1; the lenses meet about the middle column.");
  }
  return section(
      "The seams at 100&#8239;%",
      formatted("Parts of the panorama of one pair, %d pixels wide as a whole, stitched with the camera that was found. What "
                "is far runs on without a step; what is near may be displaced, as the lenses see it from two places.",
                setup.width),
      out + "</div>\n");
}

std::string strips(const Finding& finding, const RecordedPair& pair, const Setup& setup) {
  constexpr double kLeastReach = 2 * kDegree, kMostReach = 6 * kDegree;
  constexpr int kLeastColumns = 1920, kMostColumns = 3840;
  constexpr const char* kPlaces[kQuarters] = {"Left to top", "Top to right", "Right to bottom", "Bottom to left"};
  const double reach = std::clamp(overlap(finding.camera), kLeastReach, kMostReach);
  const int columns = std::clamp(setup.width, kLeastColumns, kMostColumns);
  std::string out = "<div class=\"two\">\n";
  for (const bool found : {false, true}) {
    const std::string when = found ? "after" : "before";
    out += "<div class=\"strips panel\"><h3>" +
           std::string(found ? "After: the camera that was found" : "Before: the first guess") + "</h3>\n";
    const std::array<Rgb, kQuarters> quarters = ring_strips(pair, found ? finding.camera : finding.start, columns, reach);
    for (std::size_t i = 0; i < kQuarters; ++i) {
      const std::string shown = std::string(kPlaces[i]) + ", " + when + ": lens 0, lens 1, their difference";
      out += figure(picture(quarters[i], shown, false), kPlaces[i]);
    }
    out += "</div>\n";
  }
  return section(
      "The ring that both lenses see",
      "Unrolled, in four parts, as one looks along lens 1&rsquo;s axis: above what lens 0 sees, in the middle what lens 1 "
      "sees, below where they differ. Where the camera is right, far things stand at the same place in both, and the "
      "lowest row is dark.",
      out + "</div>\n");
}

// Small enough for a page.
Rgb reduced(Rgb samples) {
  constexpr int kMost = 800;
  if (samples.width <= kMost) return samples;
  Rgb small(kMost, std::max(1, samples.height * kMost / samples.width));
  const cv::Mat from(samples.height, samples.width, CV_8UC3, samples.bytes.data());
  cv::Mat to(small.height, small.width, CV_8UC3, small.bytes.data());
  cv::resize(from, to, to.size(), 0, 0, cv::INTER_AREA);
  return small;
}

std::string key(const Finding& finding) {
  const std::array<std::size_t, kClasses> counts = count_classes(finding);
  const auto item = [](const std::string& name, const std::string& words, std::size_t count) {
    return "<li><svg viewBox=\"0 0 32 10\" aria-hidden=\"true\"><rect class=\"" + name +
           "\" width=\"32\" height=\"10\" rx=\"5\"/></svg>" + words + formatted(": %zu", count) + "</li>\n";
  };
  std::string out = "<ul class=\"key\">\n";
  std::size_t kept = 0;
  for (std::size_t i = 0; i < kClasses; ++i) {
    const bool last = i == kClassEnds.size();
    out += item(class_name(i),
                last ? formatted("%g px and more", kClassEnds[i - 1]) : formatted("less than %g px", kClassEnds[i]), counts[i]);
    kept += counts[i];
  }
  return out + item("wrong", "taken for wrong", finding.matches.size() - kept) + "</ul>\n";
}

std::string matches(const Finding& finding, const RecordedPair& pair) {
  std::string out = key(finding) + "<div class=\"two\">\n";
  for (int k = 0; k < 2; ++k) {
    const std::string lens = "Lens " + std::to_string(k);
    out += figure("<div class=\"over\">" +
                      picture(reduced(pair.colours(k)), lens + ", as it was recorded, under the matches", false) +
                      draw_matches(finding, k) + "</div>",
                  lens + ", as it was recorded, with its image circle and its centre");
  }
  return section(
      "Matches on both circles",
      formatted(
          "Things that both lenses show, of all pairs. Each line leads from where a lens sees one towards where the other "
          "lens says it is, drawn %d times as long, up to %d pixels of it; what nearness explains is taken out. Pixels are "
          "those of a panorama 3840 wide.",
          kStretch, kLongest),
      out + "</div>\n");
}

std::string numbers(const Finding& finding, const std::string& profile) {
  std::string out = "<div class=\"two\">\n<div class=\"panel\">" + parameter_table(finding) +
                    "<details><summary>The profile</summary><pre>" + escape_html(profile) + "</pre></details></div>\n";
  out += "<div class=\"panel\">" + octant_ring(finding.left) + octant_table(finding.left) + "</div>\n</div>\n";
  return section("Numbers", "The ring is seen along the axis of lens 1; an eighth without matches has no number.", out);
}

std::string file_list(const std::vector<std::string>& files) {
  std::string out = formatted("<details><summary>%zu file%s looked at</summary><ul class=\"files\">\n", files.size(),
                              files.size() == 1 ? "" : "s");
  for (const std::string& path : files) out += "<li>" + name_of(path) + "</li>\n";
  return out + "</ul></details>\n";
}

}  // namespace

std::string report_page(const Finding& finding, std::span<const RecordedPair> pairs, const std::vector<std::string>& files,
                        const std::string& profile) {
  const std::string title = "Calibration of " + name_of(files.front());
  const RecordedPair& best = pairs[best_pair(finding, pairs.size())];
  const Size size{best.pictures()[0].width, best.pictures()[0].height};
  const Setup setup = make_setup({finding.settings, ""}, {}, {size, size});
  std::string page = "<!doctype html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n";
  page +=
      "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; style-src 'unsafe-inline'; img-src data:; "
      "base-uri 'none'; form-action 'none'\">\n";
  page +=
      "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<meta name=\"color-scheme\" content=\"light "
      "dark\">\n";
  page += "<meta name=\"generator\" content=\"biseam\">\n<title>" + title +
          "</title>\n<link rel=\"icon\" href=\"data:,\">\n<style>" + kReportStyle +
          "</style>\n</head>\n<body>\n<header>\n<h1>" + title + "</h1>\n";
  page += formatted("<p>Two lenses, pictures of %d &times; %d pixels each.</p>\n", size.width, size.height) + file_list(files) +
          "</header>\n<main>\n";
  page += facts(finding, pairs.size()) + seams(best, setup) + strips(finding, best, setup) + matches(finding, best) +
          numbers(finding, profile);
  return page + "</main>\n</body>\n</html>\n";
}

}  // namespace biseam::tool
