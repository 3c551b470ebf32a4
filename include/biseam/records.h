/* The records that cross the C interface of biseam.
 *
 * Field order is part of the contract.  On the 32-bit target every field is one 32-bit word unless it says otherwise; on
 * 64-bit hosts pointers are native and naturally aligned and nothing else changes.  Image records are views: they own
 * nothing unless a malloc_* builder filled them. */
#ifndef BISEAM_RECORDS_H
#define BISEAM_RECORDS_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Format codes of ImageHeader. */
enum {
  BISEAM_YUV420_SEMIPLANAR = 0,    /* Y, interleaved CbCr of half height */
  BISEAM_YUV420_SEMIPLANAR_VU = 1, /* laid out like 0, chroma pairs in V, U order */
  BISEAM_YUV420_PLANAR = 2,
  BISEAM_YUV422_SEMIPLANAR = 4, /* Y, interleaved CbCr of full height */
  BISEAM_YUV422_SEMIPLANAR_VU = 5,
  BISEAM_YUV422_PLANAR = 6,
  BISEAM_RGB = 7, /* packed, three bytes a pixel */
  BISEAM_GRAY = 8 /* BlendGray only: one 32-bit channel */
};

/* Weight of a blend mask that means "all of source 1". */
enum { BISEAM_WEIGHT_ONE = 64 };

/* QOR_Create_BI_Soft: memory could not be had or carved. */
#define BISEAM_MALLOC_FAIL ((int32_t)0x80000004u)

/* An 8-bit image.  Sample (x, y) of plane p is at planes[p] + y * strides[p] + x * steps[p]; chroma planes count in chroma
 * samples.  Strides and steps are bytes. */
typedef struct ImageHeader {
  int32_t width, height;
  uint8_t* planes[3];
  int32_t strides[3];
  int32_t steps[3];
  int32_t format;
} ImageHeader;

/* An image of 32-bit signed samples, three interleaved channels (type 7).  Sample (x, y, c) is
 * data[0][y * stride + x * 3 + c]; stride and steps are samples. */
typedef struct BlendImage {
  int32_t width, height, channels;
  int32_t* data[3];
  int32_t stride;
  int32_t steps[3];
  int32_t type;
} BlendImage;

/* The one-channel layout (type 8).  It is no prefix of BlendImage: functions that take both are told the type. */
typedef struct BlendGray {
  int32_t width, height, channels, stride, step;
  int32_t* data;
  int32_t type;
} BlendGray;

/* Configuration of an engine, filled by the caller, who keeps it alive and unchanged as long as the engine. */
typedef struct StitchConfig {
  int32_t in_h, in_w;         /* pixels of one fisheye picture; in_h is also the height of every working image */
  int32_t in_luma_stride;     /* bytes per row */
  int32_t in_chroma_stride;   /* bytes per row */
  int32_t in_yuv_type;        /* format code of the input and of the overlap bands */
  int32_t reserved[4];        /* not read */
  int32_t out_h[4], out_w[4]; /* panorama size in pixels; of every array only entry 0 is read */
  int32_t out_flip[4];        /* non-zero: turn the panorama upside down */
  int32_t out_mirror[4];      /* non-zero: mirror it left to right, after the flip */
  int32_t out_luma_stride[4]; /* bytes per row */
  int32_t out_chroma_stride[4];
  int32_t out_yuv_type;      /* format code of the panorama */
  float p0, cx0, cy0;        /* fisheye 0: pixels per radian and circle centre in pixels */
  float p1, cx1, cy1;        /* fisheye 1 */
  float lens_matrix[9];      /* row-major turn of fisheye 1; only the first two rows are read */
  int32_t lens_reserved[35]; /* not read */
  float change_focus;        /* factor on p0 and p1 */
  int32_t feather;           /* half width of the overlap of two strips, panorama columns */
  int32_t trans_width;       /* transition width of the blend, panorama columns */
  int32_t findpath_width;    /* width of the strip in which a seam is searched, panorama columns */
  int32_t pyr_level;         /* Laplacian levels */
  int32_t findpath_enable;   /* non-zero: search a seam by graph cut */
  float inv_scale;           /* the search runs on images shrunk by this factor */
} StitchConfig;

/* Working memory of an engine: bytes, their alignment (128), 2, 1, and the block (null until created). */
typedef struct EngineMemInfo {
  int32_t size, alignment, two, one;
  void* buffer;
} EngineMemInfo;

/* A block being carved: first byte, last byte (base + size - 1), next free byte. */
typedef struct MemoryCursor {
  uint8_t *base, *last, *current;
} MemoryCursor;
typedef MemoryCursor BlendArena;

typedef struct BlendMemory {
  uint32_t size;
  void* base;
} BlendMemory;

typedef struct BlendConfig {
  int32_t trans_width, findpath_width, band_width, in_h, pyr_level;
  float inv_scale;
  int32_t findpath_enable;
} BlendConfig;

/* Blends one overlap band.  Every image is a view into one block of BlendMemory.  After Blend_Proc each holds what its stage
 * made; after a whole frame of an engine only the masks do, and the rest is working memory. */
typedef struct BlendInstance {
  BlendImage strip[2];        /* findpath_width x height */
  BlendImage scaled_strip[2]; /* scaled_findpath_width x scaled_height */
  BlendGray gray[2];          /* same size */
  BlendGray detail[2];        /* same size */
  BlendImage band[2];         /* width x height: the sources widened to the band */
  BlendImage seam_mask;       /* scaled_width x scaled_height: weights 0 or 64, kept from frame to frame */
  BlendImage mask;            /* width x height: weights 0 or 64, kept from frame to frame */
  int32_t trans_width, findpath_width, band_width, height, width, pyr_level;
  int32_t scaled_findpath_width, scaled_band_width, scaled_trans_width, scaled_height, scaled_width;
  float inv_scale;
  BlendImage* levels[4]; /* pyr_level records each: source 1, source 2, mask, result */
  BlendImage top[4];
  const BlendConfig* config; /* what it was created from; never read after Blend_Creat */
  int32_t findpath_enable;   /* copy, so that config may end */
} BlendInstance;

typedef struct BlendThreadArgs {
  BlendInstance* instance;
  BlendImage *source1, *source2, *output;
} BlendThreadArgs;

typedef struct PyramidTaskArgs {
  BlendImage *source, *band;
  int32_t trans_width, side; /* side 1: source 1, side 0: source 2 */
  BlendImage* image;         /* the same record as band */
  BlendImage** levels;       /* address of the level array pointer */
  BlendImage* top;
  int32_t level_count;
} PyramidTaskArgs;

/* One lookup table: per panorama pixel of a strip the source coordinates u, v in pixels, row by row. */
typedef struct MAPTIHeader {
  float* entries;
} MAPTIHeader;

typedef struct LensRecord {
  float focal, cx, cy;         /* pixels per radian, centre in pixels */
  float column_step, row_step; /* radians */
  int32_t width, rows;
  float row_offset, column_offset; /* radians */
  float focus;                     /* factor on focal */
  float matrix[9];                 /* row-major; the third row is not read */
} LensRecord;

typedef struct LutBuilderArgs {
  int32_t width, rows;
  MAPTIHeader* map;
  LensRecord* lens;
  int32_t part; /* 0 all rows, 1 rows 0 .. rows/2-1, 2 the rest */
} LutBuilderArgs;

typedef struct RemapThreadArgs {
  float* table;
  ImageHeader source, band0, band1, pano;
  int32_t plain_width, plain_column, band0_column, band1_column, pano_column, first_row, end_row, format;
} RemapThreadArgs;

typedef struct ConversionArgs {
  void *source, *destination;
  int32_t code; /* destination format | source format << 4 */
} ConversionArgs;

typedef struct YuvView {
  uint8_t *luma, *chroma; /* chroma: interleaved pairs, U first */
  int32_t width, height, luma_stride, chroma_stride;
} YuvView;

/* data: int32_t samples for the plain converters, bytes for the "new" ones; stride in samples. */
typedef struct RgbView {
  void* data;
  int32_t width, height, stride;
} RgbView;

typedef struct GraphNode {
  int32_t next_active; /* 0: not in the active list; else 1 + index of the next node, its own for the last */
  int32_t parent;      /* 0 free, -1 attached to its terminal, -2 orphan, > 0 the arc to its parent */
  int32_t first_arc;   /* 0: none */
  int32_t time_stamp, distance;
  float terminal_capacity; /* > 0 towards the source, < 0 towards the sink */
  uint8_t sink;            /* 1: in the sink tree */
} GraphNode;

/* Arcs come in pairs 2k, 2k + 1 (k >= 1): the reverse of arc a is a ^ 1.  Arcs 0 and 1 are reserved. */
typedef struct GraphArc {
  int32_t head, next;
  float residual;
} GraphArc;

typedef struct SeamGraph {
  GraphNode* nodes;
  int32_t node_count;
  GraphArc* arcs;
  int32_t arc_count;
  float flow;
} SeamGraph;

/* Entry of a resize table: value offset (columns) or row (rows), and a weight slot.  Resize writes the weight as an integer
 * of 1/1024; Resize_Bilinear reads the same 32 bits as a float. */
typedef struct ResizeEntry {
  int32_t offset, weight;
} ResizeEntry;

typedef struct ClImage {
  int32_t width, height, channels;
  uint8_t* data; /* width * height * channels bytes, rows top to bottom */
} ClImage;

/* One engine.  Made by QOR_Create_BI_Soft; the fields may be looked at, not changed.  Maps, masks, band_yuv and blend_yuv hold
 * what the last frame used or made of them; band_rgb, blend_out and all else in the blend instances is working memory, which
 * whole frames, and they alone, may leave in any state. */
typedef struct StitchEngine {
  MAPTIHeader map_left, map_middle, map_right;
  ImageHeader src_image[2];
  ImageHeader reserved[3];
  ImageHeader band_yuv[4];
  BlendImage band_rgb[4];
  BlendImage blend_out[2];
  ImageHeader blend_yuv[2];
  ImageHeader pano;
  int32_t feather;
  int32_t band_width, pair_width, left_width, middle_width, right_width, left_inner, middle_inner, right_inner;
  StitchConfig* config;
  EngineMemInfo* mem_info;
  BlendMemory* blend_mem[2];
  BlendInstance* blend[2];
} StitchEngine;

#ifdef __cplusplus
}
#endif

#endif
