// OpenCV: fixed-point remap, 5-band MultiBandBlender and GraphCutSeamFinder, put together as one would for this result.
//
// Counted: remapping luma and interleaved chroma of both pictures straight into the panorama outside the overlaps, and into the
// bands inside; bands to BGR; the seam in the overlap of each pair of bands, shrunk by the same factor as ours; the blend; back
// to luma and chroma in the panorama.  Not counted: the maps, made once of the same lookup tables and turned to fixed point.
// Both overlaps are worked on at the same time, and remap divides itself, over two threads.
#include <cmath>
#include <cstdio>
#include <opencv2/core/ocl.hpp>
#include <opencv2/imgproc.hpp>
#include <opencv2/stitching/detail/blenders.hpp>
#include <opencv2/stitching/detail/seam_finders.hpp>

#include "biseam/biseam.h"
#include "driver/pictures.hpp"
#include "driver/serve.hpp"

namespace biseam::bench {

namespace {

struct FixedMap {
  cv::Mat whole, fraction;
};

FixedMap to_fixed(const cv::Mat& map) {
  FixedMap fixed;
  cv::convertMaps(map, cv::noArray(), fixed.whole, fixed.fraction, CV_16SC2);
  return fixed;
}

FixedMap columns_of(const FixedMap& map, int first, int count) {
  return {map.whole.colRange(first, first + count), map.fraction.colRange(first, first + count)};
}

void remap(const cv::Mat& source, const FixedMap& map, cv::Mat destination) {
  cv::remap(source, destination, map.whole, map.fraction, cv::INTER_LINEAR);
}

struct Image {
  cv::Mat luma, chroma;

  Image() = default;
  Image(int width, int height) : luma(height, width, CV_8UC1), chroma(height / 2, width / 2, CV_8UC2) {}
  explicit Image(Nv12& picture)
      : luma(picture.height, picture.width, CV_8UC1, picture.luma.data()),
        chroma(picture.height / 2, picture.width / 2, CV_8UC2, picture.chroma.data()) {}
  Image columns(int first, int count) const {
    Image part;
    part.luma = luma.colRange(first, first + count);
    part.chroma = chroma.colRange(first / 2, (first + count) / 2);
    return part;
  }
};

// Where the columns of one lens' strip come from, for luma and chroma.
struct StripMap {
  FixedMap luma, chroma;

  StripMap(const float* entries, int width, int height) {
    cv::Mat map = cv::Mat(height, width, CV_32FC2, const_cast<float*>(entries)).clone();
    cv::patchNaNs(map, height / 2);  // the pixel on the optical axis
    cv::Mat halved;
    cv::resize(map, halved, {width / 2, height / 2}, 0, 0, cv::INTER_NEAREST);
    luma = to_fixed(map);
    chroma = to_fixed(halved * 0.5);
  }

  void sample(const Image& source, int first, const Image& destination) const {
    remap(source.luma, columns_of(luma, first, destination.luma.cols), destination.luma);
    remap(source.chroma, columns_of(chroma, first / 2, destination.chroma.cols), destination.chroma);
  }
};

// One overlap: the bands of both lenses and where they lie.
struct Overlap {
  Image yuv[2];
  cv::Mat bgr[2], mask[2];
  cv::Mat result, result_mask;
  cv::detail::MultiBandBlender blender{false, 5, CV_32F};
  cv::detail::GraphCutSeamFinder finder{cv::detail::GraphCutSeamFinderBase::COST_COLOR};
  int pano_column = 0;
};

void search(Overlap& o, int shared_columns, double inv_scale) {
  const int width = o.bgr[0].cols, height = o.bgr[0].rows;
  const cv::Range shared[2] = {{width - shared_columns, width}, {0, shared_columns}};
  std::vector<cv::UMat> strips(2), masks(2);
  for (int i = 0; i < 2; ++i) {
    cv::Mat strip;
    cv::resize(o.bgr[i].colRange(shared[i]), strip, {}, 1 / inv_scale, 1 / inv_scale, cv::INTER_AREA);
    strip.convertTo(strips[i], CV_32F);
    masks[i] = cv::UMat(strip.size(), CV_8U, cv::Scalar(255));
  }
  o.finder.find(strips, {{0, 0}, {0, 0}}, masks);
  for (int i = 0; i < 2; ++i) {
    o.mask[i].create(height, width, CV_8U);
    o.mask[i].setTo(255);
    cv::Mat part = o.mask[i].colRange(shared[i]);
    cv::resize(masks[i], part, part.size(), 0, 0, cv::INTER_NEAREST);
  }
}

void blend(Overlap& o, int shared_columns) {
  const int width = o.bgr[0].cols, height = o.bgr[0].rows, step = width - shared_columns;
  o.blender.prepare(cv::Rect(0, 0, width + step, height));
  for (int i = 0; i < 2; ++i) {
    cv::Mat wide;
    o.bgr[i].convertTo(wide, CV_16S);
    o.blender.feed(wide, o.mask[i], {i * step, 0});
  }
  o.blender.blend(o.result, o.result_mask);
}

void compose(const Overlap& o, const Image& panorama) {
  cv::Mat bytes, planar;
  o.result.convertTo(bytes, CV_8U);
  cv::cvtColor(bytes, planar, cv::COLOR_BGR2YUV_I420);
  const int width = bytes.cols, height = bytes.rows;
  const Image place = panorama.columns(o.pano_column, width);
  planar.rowRange(0, height).copyTo(place.luma);
  const cv::Mat chroma[2] = {cv::Mat(height / 2, width / 2, CV_8U, planar.ptr(height)),
                             cv::Mat(height / 2, width / 2, CV_8U, planar.ptr(height + height / 4))};
  cv::merge(chroma, 2, place.chroma);
}

class Stitcher {
 public:
  Stitcher(const Setup& setup, const StitchEngine& e, Nv12 (&fisheye)[2], Nv12& panorama)
      : e_(e),
        shared_(2 * setup.feather),
        inv_scale_(setup.inv_scale),
        left_(e.map_left.entries, e.left_width, setup.size()),
        middle_(e.map_middle.entries, e.middle_width, setup.size()),
        right_(e.map_right.entries, e.right_width, setup.size()),
        panorama_(panorama) {
    for (int lens = 0; lens < 2; ++lens) fisheye_[lens] = Image(fisheye[lens]);
    for (Overlap& o : overlaps_) {
      for (Image& band : o.yuv) band = Image(e.band_width, setup.size());
    }
    overlaps_[0].pano_column = e.left_inner;
    overlaps_[1].pano_column = e.left_inner + e.pair_width + e.middle_inner;
  }

  void remap() {
    const int band = e_.band_width, middle_column = e_.left_inner + e_.pair_width;
    left_.sample(fisheye_[0], 0, panorama_.columns(0, e_.left_inner));
    left_.sample(fisheye_[0], e_.left_inner, overlaps_[0].yuv[0]);
    middle_.sample(fisheye_[1], 0, overlaps_[0].yuv[1]);
    middle_.sample(fisheye_[1], band, panorama_.columns(middle_column, e_.middle_inner));
    middle_.sample(fisheye_[1], band + e_.middle_inner, overlaps_[1].yuv[0]);
    right_.sample(fisheye_[0], 0, overlaps_[1].yuv[1]);
    right_.sample(fisheye_[0], band, panorama_.columns(middle_column + e_.middle_inner + e_.pair_width, e_.right_inner));
  }
  void convert() {
    for_both([](Overlap& o) {
      for (int i = 0; i < 2; ++i) cv::cvtColorTwoPlane(o.yuv[i].luma, o.yuv[i].chroma, o.bgr[i], cv::COLOR_YUV2BGR_NV12);
    });
  }
  void search() {
    for_both([this](Overlap& o) { bench::search(o, shared_, inv_scale_); });
  }
  void blend() {
    for_both([this](Overlap& o) { bench::blend(o, shared_); });
  }
  void compose() {
    for_both([this](Overlap& o) { bench::compose(o, panorama_); });
  }

 private:
  template <class Work>
  void for_both(Work work) {
    cv::parallel_for_({0, 2}, [&](const cv::Range& range) {
      for (int k = range.start; k < range.end; ++k) work(overlaps_[k]);
    });
  }

  const StitchEngine& e_;
  int shared_;  // columns of the panorama that both bands of an overlap show
  double inv_scale_;
  StripMap left_, middle_, right_;
  Image fisheye_[2];
  Image panorama_;
  Overlap overlaps_[2];
};

template <class Stage>
void measure(const char* name, Figures& figures, Stage stage) {
  const Stopwatch watch;
  stage();
  watch.stop(name, figures);
}

Figures run_stages(Stitcher& stitcher) {
  Figures figures;
  measure("frame", figures, [&] {
    measure("remap", figures, [&] { stitcher.remap(); });
    measure("conversion", figures, [&] { stitcher.convert(); });
    measure("search", figures, [&] { stitcher.search(); });
    measure("blend", figures, [&] { stitcher.blend(); });
    measure("composition", figures, [&] { stitcher.compose(); });
  });
  return figures;
}

int run(int argc, char** argv) {
  const Server server;
  cv::ocl::setUseOpenCL(false);
  const Setup setup = read_setup(argc, argv);
  cv::setNumThreads(setup.threads);
  Nv12 fisheye[2] = {read_fisheye(setup, 0), read_fisheye(setup, 1)};
  Nv12 panorama(setup.width, setup.size());
  StitchConfig config = make_config(setup);
  StitchEngine* engine = nullptr;
  if (QOR_Create_BI_Soft(&config, &engine) != 0 || QOR_SetConfig_BI_Soft(&engine) != 0) return 1;
  Stitcher stitcher(setup, *engine, fisheye, panorama);
  run_stages(stitcher);  // images are allocated
  const int status =
      server.serve({{"frame", [&](const std::string&) { return run_stages(stitcher); }}, {"save", [&](const std::string& file) {
                                                                                            save(panorama, file);
                                                                                            return Figures{};
                                                                                          }}});
  QOR_Destroy_BI_Soft(&engine);
  return status;
}

}  // namespace

}  // namespace biseam::bench

int main(int argc, char** argv) { return biseam::bench::run(argc, argv); }
