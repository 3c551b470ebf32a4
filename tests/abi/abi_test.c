/* Record layouts and calling conventions as a C program sees them through biseam.h alone. */
#include "biseam/biseam.h"
#include "biseam/panorama.h"

#include <stddef.h>

static int failures = 0;

static void expect(long long value, long long expected, const char* what, int line) {
  if (value == expected) return;
  printf("abi_test.c:%d: %s is %lld, not %lld\n", line, what, value, expected);
  ++failures;
}
#define EXPECT(value, expected) expect((long long)(value), (long long)(expected), #value, __LINE__)

/* Bytes where pointers have 4 bytes and where they have 8. */
#define BYTES(with4, with8) (sizeof(void*) == 4 ? (with4) : (with8))
#define SIZE(record, with4, with8) EXPECT(sizeof(record), BYTES(with4, with8))
#define AT(record, field, with4, with8) EXPECT(offsetof(record, field), BYTES(with4, with8))

static void image_records(void) {
  AT(ImageHeader, width, 0, 0);
  AT(ImageHeader, height, 4, 4);
  AT(ImageHeader, planes, 8, 8);
  AT(ImageHeader, strides, 20, 32);
  AT(ImageHeader, steps, 32, 44);
  AT(ImageHeader, format, 44, 56);
  SIZE(ImageHeader, 48, 64);

  AT(BlendImage, width, 0, 0);
  AT(BlendImage, height, 4, 4);
  AT(BlendImage, channels, 8, 8);
  AT(BlendImage, data, 12, 16);
  AT(BlendImage, stride, 24, 40);
  AT(BlendImage, steps, 28, 44);
  AT(BlendImage, type, 40, 56);
  SIZE(BlendImage, 44, 64);

  AT(BlendGray, width, 0, 0);
  AT(BlendGray, height, 4, 4);
  AT(BlendGray, channels, 8, 8);
  AT(BlendGray, stride, 12, 12);
  AT(BlendGray, step, 16, 16);
  AT(BlendGray, data, 20, 24);
  AT(BlendGray, type, 24, 32);
  SIZE(BlendGray, 28, 40);

  AT(ClImage, width, 0, 0);
  AT(ClImage, height, 4, 4);
  AT(ClImage, channels, 8, 8);
  AT(ClImage, data, 12, 16);
  SIZE(ClImage, 16, 24);

  AT(YuvView, luma, 0, 0);
  AT(YuvView, chroma, 4, 8);
  AT(YuvView, width, 8, 16);
  AT(YuvView, height, 12, 20);
  AT(YuvView, luma_stride, 16, 24);
  AT(YuvView, chroma_stride, 20, 28);
  SIZE(YuvView, 24, 32);

  AT(RgbView, data, 0, 0);
  AT(RgbView, width, 4, 8);
  AT(RgbView, height, 8, 12);
  AT(RgbView, stride, 12, 16);
  SIZE(RgbView, 16, 24);
}

/* 91 words on every host; WORD counts from 1. */
#define WORD(field, word) AT(StitchConfig, field, 4 * ((word)-1), 4 * ((word)-1))
static void configuration(void) {
  WORD(in_h, 1);
  WORD(in_w, 2);
  WORD(in_luma_stride, 3);
  WORD(in_chroma_stride, 4);
  WORD(in_yuv_type, 5);
  WORD(reserved, 6);
  WORD(out_h, 10);
  WORD(out_w, 14);
  WORD(out_flip, 18);
  WORD(out_mirror, 22);
  WORD(out_luma_stride, 26);
  WORD(out_chroma_stride, 30);
  WORD(out_yuv_type, 34);
  WORD(p0, 35);
  WORD(cx0, 36);
  WORD(cy0, 37);
  WORD(p1, 38);
  WORD(cx1, 39);
  WORD(cy1, 40);
  WORD(lens_matrix, 41);
  WORD(lens_reserved, 50);
  WORD(change_focus, 85);
  WORD(feather, 86);
  WORD(trans_width, 87);
  WORD(findpath_width, 88);
  WORD(pyr_level, 89);
  WORD(findpath_enable, 90);
  WORD(inv_scale, 91);
  SIZE(StitchConfig, 4 * 91, 4 * 91);
}

static void engine_records(void) {
  AT(EngineMemInfo, size, 0, 0);
  AT(EngineMemInfo, alignment, 4, 4);
  AT(EngineMemInfo, two, 8, 8);
  AT(EngineMemInfo, one, 12, 12);
  AT(EngineMemInfo, buffer, 16, 16);
  SIZE(EngineMemInfo, 20, 24);

  AT(MemoryCursor, base, 0, 0);
  AT(MemoryCursor, last, 4, 8);
  AT(MemoryCursor, current, 8, 16);
  SIZE(MemoryCursor, 12, 24);
  SIZE(BlendArena, 12, 24);

  AT(StitchEngine, map_left, 0, 0);
  AT(StitchEngine, map_middle, 4, 8);
  AT(StitchEngine, map_right, 8, 16);
  AT(StitchEngine, src_image, 12, 24);
  AT(StitchEngine, reserved, 108, 152);
  AT(StitchEngine, band_yuv, 252, 344);
  AT(StitchEngine, band_rgb, 444, 600);
  AT(StitchEngine, blend_out, 620, 856);
  AT(StitchEngine, blend_yuv, 708, 984);
  AT(StitchEngine, pano, 804, 1112);
  AT(StitchEngine, feather, 852, 1176);
  AT(StitchEngine, band_width, 856, 1180);
  AT(StitchEngine, pair_width, 860, 1184);
  AT(StitchEngine, left_width, 864, 1188);
  AT(StitchEngine, middle_width, 868, 1192);
  AT(StitchEngine, right_width, 872, 1196);
  AT(StitchEngine, left_inner, 876, 1200);
  AT(StitchEngine, middle_inner, 880, 1204);
  AT(StitchEngine, right_inner, 884, 1208);
  AT(StitchEngine, config, 888, 1216);
  AT(StitchEngine, mem_info, 892, 1224);
  AT(StitchEngine, blend_mem, 896, 1232);
  AT(StitchEngine, blend, 904, 1248);
  SIZE(StitchEngine, 912, 1264);
}

static void geometry_records(void) {
  AT(MAPTIHeader, entries, 0, 0);
  SIZE(MAPTIHeader, 4, 8);

  AT(LensRecord, focal, 0, 0);
  AT(LensRecord, cx, 4, 4);
  AT(LensRecord, cy, 8, 8);
  AT(LensRecord, column_step, 12, 12);
  AT(LensRecord, row_step, 16, 16);
  AT(LensRecord, width, 20, 20);
  AT(LensRecord, rows, 24, 24);
  AT(LensRecord, row_offset, 28, 28);
  AT(LensRecord, column_offset, 32, 32);
  AT(LensRecord, focus, 36, 36);
  AT(LensRecord, matrix, 40, 40);
  SIZE(LensRecord, 76, 76);

  AT(LutBuilderArgs, width, 0, 0);
  AT(LutBuilderArgs, rows, 4, 4);
  AT(LutBuilderArgs, map, 8, 8);
  AT(LutBuilderArgs, lens, 12, 16);
  AT(LutBuilderArgs, part, 16, 24);
  SIZE(LutBuilderArgs, 20, 32);

  AT(RemapThreadArgs, table, 0, 0);
  AT(RemapThreadArgs, source, 4, 8);
  AT(RemapThreadArgs, band0, 52, 72);
  AT(RemapThreadArgs, band1, 100, 136);
  AT(RemapThreadArgs, pano, 148, 200);
  AT(RemapThreadArgs, plain_width, 196, 264);
  AT(RemapThreadArgs, plain_column, 200, 268);
  AT(RemapThreadArgs, band0_column, 204, 272);
  AT(RemapThreadArgs, band1_column, 208, 276);
  AT(RemapThreadArgs, pano_column, 212, 280);
  AT(RemapThreadArgs, first_row, 216, 284);
  AT(RemapThreadArgs, end_row, 220, 288);
  AT(RemapThreadArgs, format, 224, 292);
  SIZE(RemapThreadArgs, 228, 296);

  AT(ConversionArgs, source, 0, 0);
  AT(ConversionArgs, destination, 4, 8);
  AT(ConversionArgs, code, 8, 16);
  SIZE(ConversionArgs, 12, 24);
}

static void blend_records(void) {
  AT(BlendMemory, size, 0, 0);
  AT(BlendMemory, base, 4, 8);
  SIZE(BlendMemory, 8, 16);

  AT(BlendConfig, trans_width, 0, 0);
  AT(BlendConfig, findpath_width, 4, 4);
  AT(BlendConfig, band_width, 8, 8);
  AT(BlendConfig, in_h, 12, 12);
  AT(BlendConfig, pyr_level, 16, 16);
  AT(BlendConfig, inv_scale, 20, 20);
  AT(BlendConfig, findpath_enable, 24, 24);
  SIZE(BlendConfig, 28, 28);

  AT(BlendThreadArgs, instance, 0, 0);
  AT(BlendThreadArgs, source1, 4, 8);
  AT(BlendThreadArgs, source2, 8, 16);
  AT(BlendThreadArgs, output, 12, 24);
  SIZE(BlendThreadArgs, 16, 32);

  AT(PyramidTaskArgs, source, 0, 0);
  AT(PyramidTaskArgs, band, 4, 8);
  AT(PyramidTaskArgs, trans_width, 8, 16);
  AT(PyramidTaskArgs, side, 12, 20);
  AT(PyramidTaskArgs, image, 16, 24);
  AT(PyramidTaskArgs, levels, 20, 32);
  AT(PyramidTaskArgs, top, 24, 40);
  AT(PyramidTaskArgs, level_count, 28, 48);
  SIZE(PyramidTaskArgs, 32, 56);

  AT(BlendInstance, strip, 0, 0);
  AT(BlendInstance, scaled_strip, 88, 128);
  AT(BlendInstance, gray, 176, 256);
  AT(BlendInstance, detail, 232, 336);
  AT(BlendInstance, band, 288, 416);
  AT(BlendInstance, seam_mask, 376, 544);
  AT(BlendInstance, mask, 420, 608);
  AT(BlendInstance, trans_width, 464, 672);
  AT(BlendInstance, findpath_width, 468, 676);
  AT(BlendInstance, band_width, 472, 680);
  AT(BlendInstance, height, 476, 684);
  AT(BlendInstance, width, 480, 688);
  AT(BlendInstance, pyr_level, 484, 692);
  AT(BlendInstance, scaled_findpath_width, 488, 696);
  AT(BlendInstance, scaled_band_width, 492, 700);
  AT(BlendInstance, scaled_trans_width, 496, 704);
  AT(BlendInstance, scaled_height, 500, 708);
  AT(BlendInstance, scaled_width, 504, 712);
  AT(BlendInstance, inv_scale, 508, 716);
  AT(BlendInstance, levels, 512, 720);
  AT(BlendInstance, top, 528, 752);
  AT(BlendInstance, config, 704, 1008);
}

static void seam_records(void) {
  AT(GraphNode, next_active, 0, 0);
  AT(GraphNode, parent, 4, 4);
  AT(GraphNode, first_arc, 8, 8);
  AT(GraphNode, time_stamp, 12, 12);
  AT(GraphNode, distance, 16, 16);
  AT(GraphNode, terminal_capacity, 20, 20);
  AT(GraphNode, sink, 24, 24);
  SIZE(GraphNode, 28, 28);

  AT(GraphArc, head, 0, 0);
  AT(GraphArc, next, 4, 4);
  AT(GraphArc, residual, 8, 8);
  SIZE(GraphArc, 12, 12);

  AT(SeamGraph, nodes, 0, 0);
  AT(SeamGraph, node_count, 4, 8);
  AT(SeamGraph, arcs, 8, 16);
  AT(SeamGraph, arc_count, 12, 24);
  AT(SeamGraph, flow, 16, 28);
  SIZE(SeamGraph, 20, 32);

  AT(ResizeEntry, offset, 0, 0);
  AT(ResizeEntry, weight, 4, 4);
  SIZE(ResizeEntry, 8, 8);
}

/* Integer, float and double arguments and results; an out argument; a thread entry's result. */
static void calls(void) {
  int32_t index = 0, node_bytes = 0, arc_bytes = 0, orphan_bytes = 0;
  LensRecord lens = {0};
  LutBuilderArgs no_rows = {0};
  no_rows.lens = &lens;

  EXPECT(AlignSize(13, 8), 16);
  EXPECT(my_pow(3.0f), 9);
  EXPECT(my_sin(0.0), 0);
  EXPECT(1e6f * my_atan(1.0f, 0.0f), 1e6f * fast_atan2(0.0f, 1.0f));
  EXPECT(BorderInterpolate(&index, -2, 10, 4), 0);
  EXPECT(index, 2);
  CalcMem(6, 14, &node_bytes, &arc_bytes, &orphan_bytes);
  EXPECT(node_bytes, 168);
  EXPECT(arc_bytes, 192);
  EXPECT(orphan_bytes, 56);
  EXPECT((intptr_t)CreateLUTTablePht(&no_rows), 1);
}

/* Every converter takes (YUV view, RGB view), whatever the direction. */
static void converter_arguments(void) {
  uint8_t luma[8], chroma[8], bytes[24];
  int32_t samples[24];
  YuvView yuv = {luma, chroma, 4, 2, 4, 4};
  RgbView rgb = {samples, 4, 2, 12};
  RgbView packed = {bytes, 4, 2, 12};
  void (*const to_samples[])(YuvView*, RgbView*) = {yuv420_2rgb, yuv422_2rgb};
  void (*const to_bytes[])(YuvView*, RgbView*) = {yuv420_2rgbnew, yuv422_2rgbnew};
  void (*const to_yuv[])(YuvView*, RgbView*) = {rgb2yuv420, rgb2yuv422};

  for (int c = 0; c < 2; ++c) {
    for (int i = 0; i < 8; ++i) {
      luma[i] = 100;
      chroma[i] = 128;
    }
    for (int i = 0; i < 24; ++i) {
      samples[i] = -1;
      bytes[i] = 0;
    }
    to_samples[c](&yuv, &rgb);
    to_bytes[c](&yuv, &packed);
    for (int i = 0; i < 24; ++i) {
      EXPECT(samples[i], 100);
      EXPECT(bytes[i], 100);
      samples[i] = 50 * 64;
    }
    to_yuv[c](&yuv, &rgb);
    for (int i = 0; i < 8; ++i) EXPECT(luma[i], 50);
  }
}

/* The conversion code is destination | source << 4, and the record pointers come source first. */
static void conversion_codes(void) {
  uint8_t luma[8], chroma[4];
  int32_t samples[24];
  ImageHeader yuv = {0};
  BlendImage rgb = {0};
  ConversionArgs args = {&yuv, &rgb, BISEAM_RGB | BISEAM_YUV420_SEMIPLANAR << 4};

  EXPECT(init_image_header(&yuv, 4, 2, 4, 4, BISEAM_YUV420_SEMIPLANAR), 0);
  yuv.planes[0] = luma;
  yuv.planes[1] = chroma;
  yuv.planes[2] = chroma + 1;
  rgb.data[0] = samples;
  EXPECT(init_blendimage_header(&rgb, 4, 2, BISEAM_RGB), 0);
  for (int i = 0; i < 8; ++i) luma[i] = 77;
  for (int i = 0; i < 4; ++i) chroma[i] = 128;
  EXPECT((intptr_t)cvt_image_format_pth(&args), 0);
  for (int i = 0; i < 24; ++i) {
    EXPECT(samples[i], 77);
    samples[i] = 33 * 64;
  }
  EXPECT(cvt_image_format(&rgb, &yuv, BISEAM_YUV420_SEMIPLANAR | BISEAM_RGB << 4), 0);
  for (int i = 0; i < 8; ++i) EXPECT(luma[i], 33);
  for (int i = 0; i < 4; ++i) EXPECT(chroma[i], 128);
}

int main(void) {
  image_records();
  configuration();
  engine_records();
  geometry_records();
  blend_records();
  seam_records();
  calls();
  converter_arguments();
  conversion_codes();
  printf("%d mismatches\n", failures);
  return failures != 0;
}
