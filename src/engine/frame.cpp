#include "engine/frame.hpp"

#include "engine/blended_rows.hpp"
#include "engine/composition.hpp"
#include "engine/shared_rows.hpp"
#include "engine/stages.hpp"
#include "engine/threads.hpp"
#include "format/convert.hpp"
#include "geometry/flip.hpp"

namespace biseam {

namespace {

// The converters know pairs in U, V order only.  V, U layouts take the same ones: what is exchanged on the way in is exchanged
// back on the way out.
int converter_format(int format) {
  if (format == BISEAM_YUV420_SEMIPLANAR_VU) return BISEAM_YUV420_SEMIPLANAR;
  if (format == BISEAM_YUV422_SEMIPLANAR_VU) return BISEAM_YUV422_SEMIPLANAR;
  return format;
}

void* run_conversion(void* task) {
  const ConversionArgs& args = *static_cast<const ConversionArgs*>(task);
  convert_image(args.source, args.destination, args.code);
  return nullptr;
}

}  // namespace

void conversion_stage(StitchEngine& e) {
  ConversionArgs args[4];
  ThreadTask tasks[4];
  for (int k = 0; k < 4; ++k) {
    args[k] = {&e.band_yuv[k], &e.band_rgb[k], e.band_rgb[k].type | converter_format(e.band_yuv[k].format) << 4};
    tasks[k] = {run_conversion, &args[k]};
  }
  run_together(tasks, 4);
}

namespace {

struct BlendTask {
  BlendThreadArgs args;
  ImageHeader* strip;
  MemoryReport report;
  Weights weights;
  Status status;
};

void* run_blend(void* task) {
  BlendTask& t = *static_cast<BlendTask*>(task);
  BlendImage& band = *t.args.output;
  const int code = converter_format(t.strip->format) | band.type << 4;
  BlendedRows rows(band, *t.strip, code);
  t.status = blend_band(*t.args.instance, *t.args.source1, *t.args.source2, band, t.report, t.weights, rows.sink());
  if (!rows.have_come()) convert_image(&band, t.strip, code);
  return nullptr;
}

}  // namespace

Status blend_stage(StitchEngine& e, MemoryReport report, Weights weights) {
  BlendTask blends[2];
  ThreadTask tasks[2];
  for (int k = 0; k < 2; ++k) {
    blends[k] = {{e.blend[k], &e.band_rgb[2 * k], &e.band_rgb[2 * k + 1], &e.blend_out[k]},
                 &e.blend_yuv[k],
                 report,
                 weights,
                 Status::ok};
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
