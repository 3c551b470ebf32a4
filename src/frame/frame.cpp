#include "frame/frame.hpp"

#include "frame/compose/exchange.hpp"
#include "frame/remap/sample_region.hpp"
#include "frame/stages.hpp"
#include "stages/compose/composition.hpp"

namespace biseam {

Status process_frame(StitchEngine& engine, const FisheyePlanes fisheye[2], const FisheyePlanes& panorama,
                     const FrameOptions& options) {
  const FramePlan plan = plan_frame(engine);
  attach_frame(engine, fisheye, panorama);
  if (!plan.can_be_stitched) return Status::mismatch;
  remap_stage(engine, plan, sample_region);
  conversion_stage(engine, plan);
  const Status status = blend_stage(engine, plan, options);
  compose_stage(engine, plan);
  return status;
}

namespace {

void point_to(ImageHeader& image, const FisheyePlanes& planes) {
  image.planes[0] = planes.luma;
  image.planes[1] = planes.chroma;
}

}  // namespace

void attach_frame(StitchEngine& engine, const FisheyePlanes fisheye[2], const FisheyePlanes& panorama) {
  for (int k = 0; k < 2; ++k) {
    point_to(engine.src_image[k], fisheye[k]);
    engine.src_image[k].planes[2] = fisheye[k].chroma == nullptr ? nullptr : fisheye[k].chroma + 1;
  }
  point_to(engine.pano, panorama);
}

void compose_stage(StitchEngine& e, const FramePlan& plan) {
  ImageHeader strips[2] = {e.blend_yuv[0], e.blend_yuv[1]};
  for (ImageHeader& strip : strips) strip.height = plan.rows;
  compose_panorama({.strips = {&strips[0], &strips[1]},
                    .panorama = &e.pano,
                    .offsets = {e.left_inner, e.middle_inner},
                    .gap = e.pair_width,
                    .format = e.config->in_yuv_type});
  if (e.config->out_flip[0] != 0) flip_panorama(e.pano);
  if (e.config->out_mirror[0] != 0) mirror_panorama(e.pano);
}

}  // namespace biseam
