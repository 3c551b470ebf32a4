/* The C interface of biseam: two fisheye pictures in, one equirectangular panorama out.
 *
 * Order of calls: QOR_Create_BI_Soft, QOR_SetConfig_BI_Soft, QOR_Proc_BI_Soft for every frame, QOR_Destroy_BI_Soft.  The
 * configuration is not validated here; biseam/stitcher.hpp is the checked interface.  Everything below the engine is
 * exported for hosts that use single stages.  Functions keep no state outside the records they are given; different records
 * may be used on different threads.  Results are 0 or -1 unless something else is said.
 *
 * Some names are common words.  A host that has its own Config, Resize, ... defines BISEAM_ENGINE_ONLY before including this
 * header; the library itself never calls a host's function of the same name.
 *
 * Floats are rounded as the calling thread rounds: bytes are as they should be in the mode that every thread begins with, to
 * the nearest.  (The checked interface sees to it by itself.) */
#ifndef BISEAM_BISEAM_H
#define BISEAM_BISEAM_H

#include <stdint.h>
#include <stdio.h>

#include "biseam/export.h"
#include "biseam/records.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Engine ---------------------------------------------------------------------------------------------------------- */

/* Bytes of working memory an engine of this configuration carves; mem_info->buffer is set to null.  Returns 0. */
BISEAM_API int32_t QOR_GetMemSize_BI(StitchConfig* config, EngineMemInfo* mem_info);

/* Makes an engine.  config must outlive it.  Returns 0, or BISEAM_MALLOC_FAIL after printing "malloc fail!": memory could not
 * be had or carved, nothing is left allocated and *engine is not written. */
BISEAM_API int32_t QOR_Create_BI_Soft(StitchConfig* config, StitchEngine** engine);

/* Builds the lookup tables on four threads and lays out every image record.  Returns the status of the second blend
 * instance, 0; -1, and nothing is done, when the configuration's sizes changed since the engine was made. */
BISEAM_API int32_t QOR_SetConfig_BI_Soft(StitchEngine** engine);

/* Stitches one frame and prints its time.  Frame records are arrays of pointer-sized words, counted from 1.
 * in_frame: word 3 and 4 luma of fisheye 0 and 1, word 7 and 8 their chroma (in_h rows of in_luma_stride bytes; chroma in_h / 2
 * rows of in_chroma_stride bytes for format 0, in_h for format 4).  out_frame: word 5 luma, word 13 chroma of the panorama.
 * Other words are not read.  Returns 0. */
BISEAM_API int32_t QOR_Proc_BI_Soft(StitchEngine** engine, void* const in_frame[], void* const out_frame[]);

/* Releases the engine and all it owns; *engine is not cleared.  Returns 0. */
BISEAM_API int32_t QOR_Destroy_BI_Soft(StitchEngine** engine);

/* Prints the configuration, a field a line.  Returns what the last printf returned. */
BISEAM_API int32_t print_cfg(StitchConfig* config);

#ifndef BISEAM_ENGINE_ONLY

/* Next piece of a block: its address, or null when last - current < bytes.  Later pieces start on 128-byte addresses. */
BISEAM_API void* QOR_AllocBuffer_bi(MemoryCursor* cursor, int32_t bytes);

/* Carves the working buffer of an engine whose geometry, config and mem_info are set. */
BISEAM_API void qor_mem_alloc(StitchEngine* engine);

/* ---- Image records --------------------------------------------------------------------------------------------------- */

/* Sizes, strides (bytes) and steps for formats 0, 1, 2, 4, 5, 6; the planes stay as they are.  Other formats, 7 included:
 * width, height and format are stored, -1 is returned. */
BISEAM_API int32_t init_image_header(ImageHeader* header, int32_t width, int32_t height, int32_t luma_stride,
                                     int32_t chroma_stride, int32_t format);

/* Describes existing planes.  Formats 2 and 6 leave plane 2 and its stride to the caller; unknown formats zero planes,
 * strides and steps. */
BISEAM_API void create_image_header(ImageHeader* header, uint8_t* const planes[], const int32_t strides[], int32_t width,
                                    int32_t height, int32_t format);

/* Describes and allocates zero-filled planes, released by free_image_data.  Always returns 1. */
BISEAM_API int32_t malloc_image_data(ImageHeader* header, int32_t width, int32_t height, int32_t luma_stride,
                                     int32_t chroma_stride, int32_t format);
BISEAM_API void free_image_data(ImageHeader* header);

/* image: BlendImage for type 7 (data[0] set before the call), BlendGray for type 8.  -1 for other types. */
BISEAM_API int32_t init_blendimage_header(void* image, int32_t width, int32_t height, int32_t type);

/* The same with zero-filled samples of its own, released by FreeImageHeader. */
BISEAM_API int32_t malloc_blendimage_header(void* image, int32_t width, int32_t height, int32_t type);

/* Releases the samples; every type but 7 counts as 8. */
BISEAM_API void FreeImageHeader(void* image, int32_t type);

/* ---- Panorama composition -------------------------------------------------------------------------------------------- */

/* Copies rows of columns * unit bytes; strides in bytes, src_x and dst_x in units.  No overlap. */
BISEAM_API void ImageCopy(const uint8_t* src, int32_t columns, int32_t rows, int32_t src_stride, uint32_t src_x, uint8_t* dst,
                          int32_t dst_stride, int32_t unit, int32_t dst_x);

/* Places two strips in one plane, at offsets[0] and at offsets[0] + gap + offsets[1] (units). */
BISEAM_API void BlendPanoWithBiFisheye(uint8_t* const sources[2], const int32_t widths[2], int32_t rows,
                                       const int32_t src_strides[2], uint8_t* dst, const int32_t offsets[2], int32_t dst_width,
                                       int32_t dst_height, int32_t dst_stride, int32_t unit, int32_t gap);

/* Places both blended strips in the panorama.  Only format 0 halves the chroma rows: with any other, the panorama's chroma
 * plane needs as many rows as the strips. */
BISEAM_API void StitchingBiFisheyePano(ImageHeader* strip0, ImageHeader* strip1, ImageHeader* pano, int32_t left_inner,
                                       int32_t middle_inner, int32_t right_inner, int32_t gap, int32_t trans_width,
                                       int32_t band_width, int32_t format);

/* ---- Fast trigonometry ----------------------------------------------------------------------------------------------- */

BISEAM_API float fast_atan2(float y, float x); /* radians in (-pi, pi], from a table */
BISEAM_API float my_atan(float x, float y);    /* fast_atan2(y, x) */
BISEAM_API float my_pow(float x);              /* x * x */
BISEAM_API float my_sqrt(float x);             /* two Newton steps from a bit-level estimate */
BISEAM_API double mx_sin(double x);            /* parabolic sine, x in [-pi, pi] */
BISEAM_API double my_sin(double x);            /* x in [-pi, 2 pi) */
BISEAM_API double my_cos(double x);            /* my_sin(x + pi/2), wrapped */

/* ---- Lookup tables and remapping ------------------------------------------------------------------------------------- */

/* Fills the engine's three tables on four threads; the entries must be carved.  Returns 0. */
BISEAM_API int32_t Init_lut(StitchConfig* config, StitchEngine* engine);

/* Thread entry; builder: LutBuilderArgs.  Fills the selected rows of one strip.  Returns (void *)1. */
BISEAM_API void* CreateLUTTablePht(void* builder);

/* Frees entries that the caller allocated with malloc, and clears the pointer. */
BISEAM_API void FreeMAPTIHeader(MAPTIHeader* map);

/* The mapping of one panorama position (column x, row y) to source pixels (*u, *v) by the maths library. */
BISEAM_API void equidist2equirectangle(float x, float y, float* u, float* v, LensRecord* lens);

/* Resamples count columns of table rows [first_row, end_row) in steps of two rows.  table: u, v pairs, table_width entries a
 * row.  Entries must lie inside the source with room for the next row, and the next chroma pair; negative coordinates and NaN
 * read position 0.  Rows past the destination's height are not written. */
BISEAM_API void remap_ypoint(const float* table, int32_t table_width, int32_t table_column, ImageHeader* source,
                             ImageHeader* destination, int32_t destination_column, int32_t count, int32_t first_row,
                             int32_t end_row, int32_t chroma_x_factor, int32_t chroma_y_factor);

/* Thread entries; args: RemapThreadArgs.  An edge strip (one band) and the middle strip (two).  Return null. */
BISEAM_API void* remap_src0_main_pht(void* args);
BISEAM_API void* remap_src1_main_pht(void* args);

/* In-place exchange of rows or columns.  Width and stride in elements: bytes, or 16-bit units for the _un forms. */
BISEAM_API void flip_mtrx(uint8_t* data, int32_t width, int32_t stride, int32_t height);
BISEAM_API void flip_mtrx_un(uint16_t* data, int32_t width, int32_t stride, int32_t height);
BISEAM_API void mirror_mtrx(uint8_t* data, int32_t width, int32_t stride, int32_t height);
BISEAM_API void mirror_mtrx_un(uint16_t* data, int32_t width, int32_t stride, int32_t height);

/* Luma and chroma of formats 0, 1, 4 and 5; other formats are left as they are. */
BISEAM_API void flip_image(ImageHeader* image);
BISEAM_API void mirror_image(ImageHeader* image);

/* ---- Seam search ----------------------------------------------------------------------------------------------------- */

/* dst = (76 R + 150 G + 30 B) >> 8.  dst has room for src's pixels, which are written without gaps. */
BISEAM_API void CvtColorToGray(BlendImage* src, BlendGray* dst);

/* Fills (*kernel)[0 .. *taps) with a normalised flat kernel. */
BISEAM_API void CreatGaussKernal(float sigma, float** kernel, int32_t* taps);

/* Separable mean over taps x taps, clipped to the image, truncated toward zero.  When memory is short dst is left alone and
 * standard output told so. */
BISEAM_API void GaussianSmooth(BlendGray* src, BlendGray* dst, float sigma, int32_t taps);

/* out = |a - b|.  -1 when a channel count is not 1 or the sizes differ. */
BISEAM_API int32_t SubGrayImage(BlendGray* a, BlendGray* b, BlendGray* out);

/* Detail: |src - mean over 11 x 11|. */
BISEAM_API void GaussFilter(BlendGray* src, BlendGray* dst);

/* Block sizes in bytes for a graph of so many nodes and arcs (two arcs per edge): nodes, arcs, orphan stack. */
BISEAM_API void CalcMem(int32_t nodes, int32_t arcs, int32_t* node_bytes, int32_t* arc_bytes, int32_t* orphan_bytes);

/* An empty graph over two zero-filled blocks. */
BISEAM_API void Config(void* node_block, void* arc_block, SeamGraph* graph);

/* An edge between two nodes with a capacity each way; the capacities from the source to a node and from it to the sink.  Nodes
 * count from 0 and need their place in the blocks. */
BISEAM_API void AddEdge(int32_t i, int32_t j, float capacity, float reverse_capacity, SeamGraph* graph);
BISEAM_API void AddTermWeights(int32_t node, float source_capacity, float sink_capacity, SeamGraph* graph);

/* Grid graph of height x width detail samples; the border columns are tied to the terminals.  The samples that the cost
 * formula names past the end of an image count as zero and are not read. */
BISEAM_API void GCSetGraphWeightsColor2(const int32_t* a, const int32_t* b, int32_t height, int32_t width, int32_t border,
                                        SeamGraph* graph);

/* Maximum flow; the stack holds arc_count 32-bit words. */
BISEAM_API float MaxFlow(int32_t arc_count, void* orphan_stack, SeamGraph* graph);

/* Non-zero when the node is on the source's side. */
BISEAM_API int32_t InSourceSegment(int32_t node, SeamGraph* graph);

/* Cuts between two detail images and writes weight 64 into the mask on source 1's side; offset: mask column of the strip's
 * first column.  -1, the mask untouched, when the detail images differ in size or memory is short. */
BISEAM_API int32_t GraphCut(int32_t offset, BlendImage* mask, BlendGray* detail1, BlendGray* detail2);

/* Copies the seam-search strip out of a source; side 1 for source 1, 0 for source 2. */
BISEAM_API void CreatFindPath(BlendImage* source, BlendImage* strip, int32_t findpath_width, int32_t trans_width, int32_t side);

/* Writes weight 64 into the left half, nothing into the right. */
BISEAM_API void CreatMask(BlendImage* mask);

/* ---- Blending -------------------------------------------------------------------------------------------------------- */

/* Images are of type 7: height rows of stride samples, three samples a pixel. */

BISEAM_API void CreatImage(BlendImage* image, int32_t value); /* sets every sample of every pixel */

/* out = a - b, a + b, a * b, wrapping.  b and out must be laid out like a; out may be a or b, its record is not looked at.
 * -1, and nothing is written, when a and b differ in size or one has not 1 or 3 channels. */
BISEAM_API int32_t SubImage(BlendImage* a, BlendImage* b, BlendImage* out);
BISEAM_API int32_t AddImage(BlendImage* a, BlendImage* b, BlendImage* out);
BISEAM_API int32_t MulImage(BlendImage* a, BlendImage* b, BlendImage* out);

/* Copies dst->height * dst->stride samples, which src must hold, when the strides are equal, or dst->stride equals src->height,
 * or the types are equal.  Returns dst's sample pointer, or -1. */
BISEAM_API intptr_t MemCopyImage(BlendImage* src, BlendImage* dst);

/* Widens a source to the band, trans_width columns wider and as high, by mirroring its inner edge; side 1 for source 1 (left),
 * 0 for source 2. */
BISEAM_API void CreatBlend(BlendImage* source, BlendImage* band, int32_t trans_width, int32_t side);

/* Pyramids of level_count records at *levels and a top.  Level 0 has the image's size, level k + 1 and the top half that of the
 * one before, rounded up; all have their samples.  Fewer than one level: nothing is written, but that BuildGuassPyramid copies
 * the image to level 0, which has to be there unless *levels is null. */
BISEAM_API void BuildLaplacianPyramid(BlendImage* image, BlendImage** levels, BlendImage* top, int32_t level_count);
BISEAM_API void BuildGuassPyramid(BlendImage* image, BlendImage** levels, BlendImage* top, int32_t level_count);

/* Out = A * M + B * (64 - M) at every level and the top.  A and B are overwritten. */
BISEAM_API void BlendLapPyrs(BlendImage** levels_a, BlendImage* top_a, BlendImage** levels_b, BlendImage* top_b,
                             BlendImage** levels_m, BlendImage* top_m, BlendImage** levels_out, BlendImage* top_out,
                             int32_t level_count);

/* Collapses a Laplacian pyramid, which stays as it is, into out of level 0's size. */
BISEAM_API void ReconstructImage(BlendImage* top, BlendImage** levels, BlendImage* out, int32_t level_count);

/* Thread entry; args: PyramidTaskArgs.  CreatBlend, then BuildLaplacianPyramid.  Returns null. */
BISEAM_API void* CreatBlend_BuildLaplacianPyramid(void* args);

/* Bytes of one blend instance; memory->base is set to null.  Returns 0. */
BISEAM_API int32_t GetMemSize(BlendConfig* config, BlendMemory* memory);

/* As QOR_AllocBuffer_bi. */
BISEAM_API void* BLEND_AllocBuffer(BlendArena* arena, int32_t bytes);

/* Carves an instance out of a zero-filled block of GetMemSize bytes, which stays the caller's.  Returns 0, also when a piece
 * does not fit: the instance is empty then, without samples, and blends nothing. */
BISEAM_API int32_t Blend_Creat(BlendConfig* config, BlendMemory* memory, BlendInstance* instance);

/* Writes every image record of the instance.  Returns the status of the last one. */
BISEAM_API int32_t SetConfig_Blend(BlendInstance* instance);

/* Blends two sources of band_width x height into output (width x height, scaled by 64).  Every image of the instance that has
 * to do with it holds its stage's result then; without findpath_enable the search's images are left alone.  Returns 0. */
BISEAM_API int32_t Blend_Proc(BlendInstance* instance, BlendImage* source1, BlendImage* source2, BlendImage* output);

/* Thread entry; args: BlendThreadArgs.  Returns null. */
BISEAM_API void* Blend_main_pht(void* args);

/* ---- Image primitives ------------------------------------------------------------------------------------------------ */

/* Reduction by the 5-tap binomial kernel, reflect-101 borders: exact halves, or within one pixel of a half.  Three channels.
 * -1, and nothing is written, when the sizes or channels do not fit: PyrDownBorder then keeps two heap blocks.  Exact halves of
 * sources below 4 pixels are left unwritten. */
BISEAM_API int32_t PyrDown(BlendImage* src, BlendImage* dst);
BISEAM_API int32_t PyrDownNormal(BlendImage* src, BlendImage* dst);
BISEAM_API int32_t PyrDownBorder(BlendImage* src, BlendImage* dst);

/* Expansion by the same kernel: exact doubles of three channels (sources below 2 pixels leave dst unwritten), or one pixel off
 * a double of any channel count.  -1, and nothing is written, when the sizes or channels do not fit: PyrUpBorder then keeps two
 * heap blocks. */
BISEAM_API int32_t PyrUp(BlendImage* src, BlendImage* dst);
BISEAM_API int32_t PyrUpNormal(BlendImage* src, BlendImage* dst);
BISEAM_API int32_t PyrUpBorder(BlendImage* src, BlendImage* dst);

/* Index inside [0, len) for coordinate p; borderType 4 reflects without repeating the edge, others return p.  len 1 leaves *out
 * alone.  Returns 0. */
BISEAM_API int32_t BorderInterpolate(int32_t* out, int32_t p, int32_t len, int32_t borderType);

/* Rounds up to a power-of-two multiple; all bits set (a null pointer) when align is no power of two. */
BISEAM_API uint32_t AlignSize(uint32_t size, int32_t align);
BISEAM_API float* AlignPtr_float(float* address, int32_t align);

/* Scales src to dst's size; type 7 for BlendImage, 8 for BlendGray.  Samples are picked, never mixed.  Returns 0. */
BISEAM_API int32_t Resize(void* src, void* dst, int32_t type);

/* The row walk of Resize.  Strides in samples; xmax: first column clamped at the right edge; buffers of dst_width * channels
 * floats.  Returns 0. */
BISEAM_API int32_t Resize_Bilinear(const int32_t* src, int32_t src_stride, int32_t src_width, int32_t src_height, int32_t* dst,
                                   int32_t dst_stride, int32_t dst_width, int32_t dst_height, int32_t channels, int32_t xmax,
                                   const ResizeEntry* columns, const ResizeEntry* rows, float* row_a, float* row_b);

/* ---- Colour conversion and files ------------------------------------------------------------------------------------- */

/* Converts between an ImageHeader (YUV, byte RGB) and a BlendImage; code is destination format | source format << 4: 0x70 and
 * 0x74 to YUV, 0x07 and 0x47 to integer RGB, 1 4:2:0 to byte RGB, any other 4:2:2 to byte RGB.  Returns 0. */
BISEAM_API int32_t cvt_image_format(void* source, void* destination, int32_t code);
BISEAM_API void* cvt_image_format_pth(void* args); /* thread entry; args: ConversionArgs; returns null */

/* JPEG-range BT.601, even sizes.  Integer RGB read here carries 6 fractional bits, integer RGB written is 0..255.
 * To RGB: rows and columns are the RGB view's, which then takes the YUV view's size and 3 * its width as stride, and is written
 * with that stride.  To YUV: the YUV view takes the RGB view's size, its width as both strides, and is written with them. */
BISEAM_API void rgb2yuv420(YuvView* yuv, RgbView* rgb);
BISEAM_API void rgb2yuv422(YuvView* yuv, RgbView* rgb);
BISEAM_API void yuv420_2rgb(YuvView* yuv, RgbView* rgb);
BISEAM_API void yuv422_2rgb(YuvView* yuv, RgbView* rgb);
BISEAM_API void yuv420_2rgbnew(YuvView* yuv, RgbView* rgb);
BISEAM_API void yuv422_2rgbnew(YuvView* yuv, RgbView* rgb);

/* Bitmap files of 8 or 24 bits.  Null when the file can't be opened; a file that is no such bitmap gives a record with
 * zero fields.  The caller frees data and record; the stream stays open. */
BISEAM_API ClImage* clLoadImage(const char* path);

/* Channels 1 or 3; of other images only the magic is written.  Rows are padded by their length modulo 4, which readers expect
 * where that is 0 or 2 only.  1, or -1 when the file can't be created. */
BISEAM_API int32_t clSaveImage(const char* path, const ClImage* image);

/* Allocates (free_image_data releases) and reads one raw frame at the stream's position, formats 0 and 4: height rows of
 * stride0 bytes, then half as many or as many of stride1.  1; 0, and no planes, for another format or when memory is short. */
BISEAM_API int32_t read_yuv_image(FILE* stream, ImageHeader* image, int32_t width, int32_t height, int32_t stride0,
                                  int32_t stride1, int32_t format);

/* Writes the planes back to back as the given format has them, both chroma planes of formats 2 and 6 with strides[1], format 7
 * with 3 * strides[0] bytes a row; nothing for format 3 and others. */
BISEAM_API void save_yuv_image(FILE* stream, const ImageHeader* image, int32_t format);

#endif /* BISEAM_ENGINE_ONLY */

#ifdef __cplusplus
}
#endif

#endif
