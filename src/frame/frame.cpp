#include "frame/frame.hpp"

#include "base/threads.hpp"
#include "frame/bands/band_bytes.hpp"
#include "frame/bands/blended_rows.hpp"
#include "frame/shared_rows.hpp"
#include "frame/stages.hpp"
#include "stages/compose/composition.hpp"
#include "stages/format/convert.hpp"
#include "stages/lens/flip.hpp"

namespace biseam {

namespace {

// The converters know pairs in U, V order only.  V, U layouts take the same ones: what is exchanged on the way in is exchanged
// back on the way out.
int converter_format(int format) {
  if (format == BISEAM_YUV420_SEMIPLANAR_VU) return BISEAM_YUV420_SEMIPLANAR;
  if (format == BISEAM_YUV422_SEMIPLANAR_VU) return BISEAM_YUV422_SEMIPLANAR;
  return format;
}

int band_format(const StitchEngine& e, int band) { return converter_format(e.band_yuv[band].format); }

// Overlaps as bands 0 and 1, 2 and 3 have them.
bool goes_by_bytes(const StitchEngine& e, int overlap) {
  const int format = band_format(e, 2 * overlap);
  return format == band_format(e, 2 * overlap + 1) && takes_bytes(e, overlap, format);
}

void convert_to_rgb(StitchEngine& e, int band) {
  convert_image(&e.band_yuv[band], &e.band_rgb[band], e.band_rgb[band].type | band_format(e, band) << 4);
}

struct ConversionTask {
  StitchEngine* engine;
  int band;
};

void* run_conversion(void* task) {
  const auto [engine, band] = *static_cast<const ConversionTask*>(task);
  if (goes_by_bytes(*engine, band / 2)) {
    convert_to_bytes(*engine, band, band_format(*engine, band));
  } else {
    convert_to_rgb(*engine, band);
  }
  return nullptr;
}

}  // namespace

void conversion_stage(StitchEngine& e) {
  ConversionTask conversions[4];
  ThreadTask tasks[4];
  for (int k = 0; k < 4; ++k) {
    conversions[k] = {&e, k};
    tasks[k] = {run_conversion, &conversions[k]};
  }
  run_together(tasks, 4);
}

namespace {

struct BlendTask {
  StitchEngine* engine;
  int overlap;
  MemoryReport report;
  Weights weights;
  Status status;
};

Status blend_overlap(const BlendTask& t, const RowSink* sink) {
  StitchEngine& e = *t.engine;
  BlendInstance& instance = *e.blend[t.overlap];
  BlendImage& band = e.blend_out[t.overlap];
  const int first = 2 * t.overlap;
  Weights weights = t.weights;
  if (goes_by_bytes(e, t.overlap)) {
    const Status status = blend_bytes(instance, band, t.report, weights, sink);
    if (status != Status::mismatch) return status;
    // Weights of a host's own: they are made by now.
    weights = Weights::kept;
    for (int k = 0; k < 2; ++k) convert_to_rgb(e, first + k);
  }
  return blend_band(instance, e.band_rgb[first], e.band_rgb[first + 1], band, t.report, weights, sink);
}

void* run_blend(void* task) {
  BlendTask& t = *static_cast<BlendTask*>(task);
  BlendImage& band = t.engine->blend_out[t.overlap];
  ImageHeader& strip = t.engine->blend_yuv[t.overlap];
  const int code = converter_format(strip.format) | band.type << 4;
  BlendedRows rows(band, strip, code);
  t.status = blend_overlap(t, rows.sink());
  if (!rows.have_come()) convert_image(&band, &strip, code);
  return nullptr;
}

}  // namespace

Status blend_stage(StitchEngine& e, MemoryReport report, Weights weights) {
  BlendTask blends[2];
  ThreadTask tasks[2];
  for (int k = 0; k < 2; ++k) {
    blends[k] = {&e, k, report, weights, Status::ok};
    tasks[k] = {run_blend, &blends[k]};
  }
  run_together(tasks, 2);
  return blends[0].status != Status::ok ? blends[0].status : blends[1].status;
}

void compose_stage(StitchEngine& e) {
  const StitchConfig& config = *e.config;
  ImageHeader strips[2] = {e.blend_yuv[0], e.blend_yuv[1]};
  for (ImageHeader& strip : strips) strip.height = shared_rows(e);
  compose_panorama(strips[0], strips[1], e.pano, e.left_inner, e.middle_inner, config.trans_width + e.band_width,
                   config.in_yuv_type);
  if (config.out_flip[0] != 0) flip_rows(e.pano);
  if (config.out_mirror[0] != 0) mirror_columns(e.pano);
}

namespace {

bool is_semi_planar(int format) {
  return format == BISEAM_YUV420_SEMIPLANAR || format == BISEAM_YUV420_SEMIPLANAR_VU || format == BISEAM_YUV422_SEMIPLANAR ||
         format == BISEAM_YUV422_SEMIPLANAR_VU;
}

// Two planes a picture are all a frame record carries: nothing can be read or written safely as planar or packed.  A panorama
// code without a layout of its own leaves the input's in force.
bool holds_two_planes(const StitchConfig& config) {
  const int out = config.out_yuv_type;
  return is_semi_planar(config.in_yuv_type) && out != BISEAM_YUV420_PLANAR && out != BISEAM_YUV422_PLANAR;
}

void point_to(ImageHeader& image, const FisheyePlanes& planes) {
  image.planes[0] = planes.luma;
  image.planes[1] = planes.chroma;
}

}  // namespace

Status attach_frame(StitchEngine& engine, const FisheyePlanes fisheye[2], const FisheyePlanes& panorama) {
  for (int k = 0; k < 2; ++k) {
    point_to(engine.src_image[k], fisheye[k]);
    engine.src_image[k].planes[2] = fisheye[k].chroma == nullptr ? nullptr : fisheye[k].chroma + 1;
  }
  point_to(engine.pano, panorama);
  return holds_two_planes(*engine.config) ? Status::ok : Status::mismatch;
}

Status process_frame(StitchEngine& engine, const FisheyePlanes fisheye[2], const FisheyePlanes& panorama, SampleRegion sample,
                     MemoryReport report, Weights weights) {
  if (attach_frame(engine, fisheye, panorama) != Status::ok) return Status::mismatch;
  remap_stage(engine, sample);
  conversion_stage(engine);
  const Status status = blend_stage(engine, report, weights);
  compose_stage(engine);
  return status;
}

}  // namespace biseam
