/* Panoramas of real cameras: two fisheye pictures become one equirectangular panorama, each sample taken once from the lens
 * that sees it, joined in the ring of directions that both lenses see.
 *
 *   BiseamCamera camera = biseam_camera_of(1920, 1920, 195);
 *   BiseamPanoramaOptions options = biseam_panorama_defaults();
 *   ... fill in what is known of both ...
 *   BiseamError error;
 *   BiseamPanorama *panorama = biseam_panorama_open(&camera, &options, &error);
 *   if (panorama == NULL) return fputs(error.text, stderr);
 *   for (every frame) biseam_panorama_stitch(panorama, fisheyes, &picture, NULL, &error);
 *   biseam_panorama_close(panorama);
 *
 * Every record begins with its size, which the functions named _defaults fill in: a library that knows more fields than a
 * program was built with takes their defaults.  Nothing is printed.  There is no state outside the handle; one handle is used
 * by one thread at a time, different handles by any number. */
#ifndef BISEAM_PANORAMA_H
#define BISEAM_PANORAMA_H

#include <stddef.h>
#include <stdint.h>

#include "biseam/export.h"

#ifdef __cplusplus
extern "C" {
#endif

/* What went wrong, in one line without a newline that names field, value and rule. */
typedef enum BiseamErrorCode {
  BISEAM_OK = 0,
  BISEAM_INVALID_CAMERA,  /* a field of BiseamCamera breaks a rule, or the lenses don't overlap all round */
  BISEAM_INVALID_OPTIONS, /* a field of BiseamPanoramaOptions or BiseamFrame breaks a rule, or a handle is NULL */
  BISEAM_INVALID_PICTURE, /* a picture has not the size or format that the handle was opened for, or lacks a plane */
  BISEAM_NO_MEMORY
} BiseamErrorCode;

typedef struct BiseamError {
  int32_t code;
  char text[256];
} BiseamError;

/* Formats of pictures.  All planes are full range or limited range as they come: values are never rescaled.  Samples of more
 * than 8 bits are 16-bit words of the host's byte order. */
typedef enum BiseamFormat {
  BISEAM_NV12 = 1, /* luma; interleaved Cb, Cr pairs of half width and height */
  BISEAM_NV21,     /* the same with Cr first */
  BISEAM_NV16,     /* pairs of half width */
  BISEAM_NV24,     /* pairs of full size */
  BISEAM_I420,     /* three planes: luma, Cb and Cr of half width and height */
  BISEAM_I422,
  BISEAM_I444,
  BISEAM_GRAY8, /* luma alone */
  BISEAM_GBR,   /* three full planes of anything; the first one, green, is taken for the brightness */
  BISEAM_P010,  /* as NV12, 10 bits in the upper bits of 16 */
  BISEAM_P012,
  BISEAM_P210,    /* as NV16 */
  BISEAM_I420P10, /* as I420, 10 bits in the lower bits of 16 */
  BISEAM_I422P10,
  BISEAM_I444P10,
  BISEAM_GBRP10,
  BISEAM_I420P12,
  BISEAM_I422P12,
  BISEAM_I444P12,
  BISEAM_GBRP12
} BiseamFormat;

/* Where a chroma sample of subsampled formats lies among its luma samples. */
typedef enum BiseamSiting {
  BISEAM_SITING_LEFT = 0, /* on the left column, between the rows: H.264 and H.265 unless tagged otherwise */
  BISEAM_SITING_MIDDLE,   /* in the middle of them: JPEG */
  BISEAM_SITING_TOP_LEFT  /* on the left column and upper row */
} BiseamSiting;

/* A picture in the caller's memory; fisheye pictures are only read.  A negative stride goes upwards from the plane's pointer,
 * which is always that of the first row's first sample.  Chroma planes of odd sizes have their last row and column. */
typedef struct BiseamPicture {
  uint32_t size;
  int32_t format; /* BiseamFormat */
  int32_t width, height;
  int32_t siting; /* BiseamSiting */
  void* planes[3];
  ptrdiff_t strides[3]; /* bytes from row to row */
} BiseamPicture;

/* Degrees.  What looks forward is rolled clockwise, then pitched up, then yawed to the right. */
typedef struct BiseamTurn {
  double yaw, pitch, roll;
} BiseamTurn;

/* One lens.  A ray at the angle a from the optical axis, in radians, falls p (a + k1 a^3 + k2 a^5 + k3 a^7) pixels from the
 * centre, and light of strength 1 is recorded there as gain (1 + v1 a^2 + v2 a^4).  That is a factor of the codes above black
 * of red, green and blue as the picture holds them, after the transfer curve: g times the light is about g^(1 / 2.2) times the
 * code.  The panorama shows what lenses without falloff and with gains of 1 would have recorded; factors up to 4 are undone.
 * Where the gains of a lens differ, luma and chroma are taken for BT.709's. */
typedef struct BiseamLens {
  int32_t width, height; /* of the recorded picture, pixels */
  int32_t mount;         /* degrees by which the recorded picture is turned clockwise: 0, 90, 180, 270 */
  double cx, cy;         /* where the optical axis meets the recorded picture, pixels; an integer is a pixel's middle */
  double p;              /* pixels per radian at the axis */
  double k[3];           /* k1, k2, k3 */
  double fov;            /* degrees across the image circle: what lies beyond fov / 2 is not looked at */
  BiseamTurn turn;       /* by how much it really points away from its ideal axis, in its own frame */
  double vignette[2];    /* v1, v2 */
  double gain[3];        /* of red, green and blue; 0.25 to 4, also with the vignette, up to fov / 2 */
} BiseamLens;

/* A camera: lens 1 looks at the panorama's middle, lens 0 the other way. */
typedef struct BiseamCamera {
  uint32_t size;
  BiseamLens lens[2];
  double baseline; /* metres from lens 0 to lens 1 along the axis; what is far away doesn't depend on it */
} BiseamCamera;

typedef enum BiseamQuality {
  BISEAM_QUALITY_FAST = 0, /* bilinear */
  BISEAM_QUALITY_GOOD,     /* 4 x 4 samples */
  BISEAM_QUALITY_BEST      /* 6 x 6 samples */
} BiseamQuality;

typedef enum BiseamSeam {
  BISEAM_SEAM_SEARCH = 0, /* where the lenses differ least, in every frame */
  BISEAM_SEAM_MIDDLE,     /* half way between the lenses */
  BISEAM_SEAM_STEADY      /* where they have differed least in the last frames, since the last cut; goes to another place over
                             some frames */
} BiseamSeam;

/* Which code is black, for the light of the lenses; the panorama's range is that of the pictures. */
typedef enum BiseamRange {
  BISEAM_RANGE_USUAL = 0, /* full for BISEAM_GRAY8 and three planes of anything, limited for all others */
  BISEAM_RANGE_LIMITED,   /* 16 of 255 */
  BISEAM_RANGE_FULL       /* 0 */
} BiseamRange;

typedef enum BiseamLight {
  BISEAM_LIGHT_OFF = 0, /* each lens as it recorded */
  BISEAM_LIGHT_MATCH    /* exposure and white balance are matched where the lenses meet, half by either lens; falloff is
                         * undone as its slope shows there, that of a tenth of the light up to 90 degrees all over the
                         * lenses, the rest at their rims */
} BiseamLight;

typedef enum BiseamNear {
  BISEAM_NEAR_OFF = 0, /* each lens's view as it is: what is near is seen twice or cut off where the lenses meet */
  BISEAM_NEAR_MATCH    /* what is near and lies on the ring is brought together: either lens's view is moved by half of what the
                          lenses see it apart, within 22.5 degrees of the ring.  For lenses that lie apart */
} BiseamNear;

/* How codes stand for light, for what is matched. */
typedef enum BiseamTransfer {
  BISEAM_TRANSFER_USUAL = 0, /* sRGB for three planes of anything, BT.709 for all others */
  BISEAM_TRANSFER_BT709,     /* and BT.601, BT.2020 */
  BISEAM_TRANSFER_SRGB,
  BISEAM_TRANSFER_POWER, /* of any exponent, linear light included */
  BISEAM_TRANSFER_LOG    /* PQ and HLG, about */
} BiseamTransfer;

typedef struct BiseamPanoramaOptions {
  uint32_t size;
  int32_t width, height; /* of the panorama, pixels: even, 64 x 32 to 16384 x 8192 */
  int32_t format;        /* BiseamFormat of fisheye pictures and panorama */
  int32_t quality;       /* BiseamQuality */
  int32_t seam;          /* BiseamSeam */
  int32_t threads;       /* that share a frame, the caller's own included: 1 to 64; 0: one for each processor */
  int32_t range;         /* BiseamRange */
  int32_t light;         /* BiseamLight; what is matched is smooth in time, and starts anew at cuts */
  int32_t transfer;      /* BiseamTransfer */
  double rate;           /* frames a second, for what is smooth in time: 1 to 1000 */
  int32_t near;          /* BiseamNear; likewise smooth in time, anew at cuts */
} BiseamPanoramaOptions;

/* What is new with every frame. */
typedef struct BiseamFrame {
  uint32_t size;
  BiseamTurn turn;     /* where the panorama's middle looks */
  const double* seam;  /* the seam to take, as biseam_panorama_seam gives it; NULL: as the guide or the options say */
  uint64_t guide_size; /* of the guide, bytes */
  const void* guide;   /* a guide to follow: light, near things and seam are not looked for, past frames have no say, and none
                          of it is remembered; NULL: none */
} BiseamFrame;

typedef struct BiseamPanorama BiseamPanorama;

/* Records with every default filled in: a panorama of 3840 x 1920 in NV12, good, with a searched seam, on all processors, 30
 * frames a second, light and near things as they are; pictures without size and planes; a view that is not turned. */
BISEAM_API BiseamPanoramaOptions biseam_panorama_defaults(void);
BISEAM_API BiseamPicture biseam_picture_defaults(void);
BISEAM_API BiseamFrame biseam_frame_defaults(void);

/* A camera of which nothing is known but the size of its pictures and the angle of view of its lenses, degrees: image circles
 * that just fit into the pictures' middle, equidistant lenses exactly back to back, light that needs no correction. */
BISEAM_API BiseamCamera biseam_camera_of(int32_t width, int32_t height, double fov);

/* Opens an engine: checks the camera and the options, takes all memory that frames will need and starts the threads.  NULL:
 * error says what was wrong.  error may be NULL, here and below. */
BISEAM_API BiseamPanorama* biseam_panorama_open(const BiseamCamera* camera, const BiseamPanoramaOptions* options,
                                                BiseamError* error);

/* Stitches one frame.  fisheyes: lens 0's picture and lens 1's, of the camera's size; picture: the panorama's, of the options'
 * size, apart from both; all of the options' format; both fisheyes have one siting.  frame: NULL for the defaults.  Returns
 * error's code.  The picture is written whole or, after an error, not at all.  Asks nothing of the heap. */
BISEAM_API int32_t biseam_panorama_stitch(BiseamPanorama* panorama, const BiseamPicture fisheyes[2],
                                          const BiseamPicture* picture, const BiseamFrame* frame, BiseamError* error);

/* The ring of directions in which the lenses are joined, and the seam in it.  A seam has so many samples: sample i lies at the
 * angle 360 i / length degrees round the lenses' axis, from the world's right (longitude 90 degrees of a view that is not
 * turned) by way of what is below, and its value is the angle, in degrees, from the plane between the lenses towards lens 1.
 * NULL has neither: 0, and no sample is written. */
BISEAM_API int32_t biseam_panorama_seam_length(const BiseamPanorama* panorama);

/* Degrees by which the ring goes beyond the plane between the lenses, on either side. */
BISEAM_API double biseam_panorama_ring(const BiseamPanorama* panorama);

/* The seam of the last frame, which gives the same seam when it is handed to another frame; all 0 before the first one. */
BISEAM_API void biseam_panorama_seam(const BiseamPanorama* panorama, double* seam);

/* What the frames stitched so far have to say about the next one, in bytes that another handle can go on from: one opened with
 * the same camera and options.  The bytes begin with their size, a uint32_t, and stay within this version of the library and
 * kind of processor.  NULL has none: 0, and no byte is written. */
BISEAM_API size_t biseam_panorama_state_size(const BiseamPanorama* panorama);
BISEAM_API void biseam_panorama_save(const BiseamPanorama* panorama, void* state);

/* Goes on from a state; size: of the bytes.  After an error (BISEAM_INVALID_OPTIONS) nothing has changed. */
BISEAM_API int32_t biseam_panorama_load(BiseamPanorama* panorama, const void* state, size_t size, BiseamError* error);

/* Starts anew: the next frame is stitched as the first one is. */
BISEAM_API void biseam_panorama_reset(BiseamPanorama* panorama);

/* How many frames, at most, have an effect on the next one: when so many before a part of a clip are stitched, the part equals
 * the same frames of the whole. */
BISEAM_API int32_t biseam_panorama_history(const BiseamPanorama* panorama);

/* For whole clips: guides.  A guide says how light, near things and the seam are treated in one frame, as far as the options
 * leave them to be found.  Every frame is measured, guides are smoothed with what comes later, and frames that follow them are
 * the same however a clip is cut into parts:
 *
 *   for (every frame i) biseam_panorama_measure(panorama, fisheyes, guides[i], &error);
 *   for (every frame i) biseam_panorama_smooth(panorama, guides, count, i, smoothed[i], &error);
 *   for (any frame i) frame.guide = smoothed[i], biseam_panorama_stitch(panorama, fisheyes, &picture, &frame, &error);
 *
 * The bytes are the same on every processor and hold a sum of their own; they begin with their size, 4 bytes, the lowest first.
 * They go with the camera and the options that they were measured with; format, quality, threads, transfer and rate may be
 * others.  NULL has none: size 0. */
BISEAM_API size_t biseam_panorama_guide_size(const BiseamPanorama* panorama);

/* Looks at a frame as biseam_panorama_stitch does, past frames included, and paints nothing.  guide: room for guide_size
 * bytes, written whole or, after an error, not at all.  Asks nothing of the heap. */
BISEAM_API int32_t biseam_panorama_measure(BiseamPanorama* panorama, const BiseamPicture fisheyes[2], void* guide,
                                           BiseamError* error);

/* The guide of frame index smoothed in time, by those measured before and after it: count of them, in order.  Those that are
 * more than guide_reach frames away, or beyond a cut, have no effect and needn't be there; neither are they looked at.
 * smoothed: room for guide_size bytes apart from the guides, written whole or, after an error, not at all.  Leaves the handle
 * as it is, and asks nothing of the heap. */
BISEAM_API int32_t biseam_panorama_guide_reach(const BiseamPanorama* panorama);
BISEAM_API int32_t biseam_panorama_smooth(const BiseamPanorama* panorama, const void* const* guides, int32_t count,
                                          int32_t index, void* smoothed, BiseamError* error);

/* Bytes that the handle holds; NULL holds none. */
BISEAM_API size_t biseam_panorama_memory(const BiseamPanorama* panorama);

/* NULL is allowed. */
BISEAM_API void biseam_panorama_close(BiseamPanorama* panorama);

#ifdef __cplusplus
}
#endif

#endif
