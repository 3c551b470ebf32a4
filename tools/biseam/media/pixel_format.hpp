// Pixel formats of libav as the panorama engine knows them.
#pragma once

#include <optional>
#include <string>

#include "biseam/panorama.h"
#include "media/libav.hpp"

namespace biseam::tool {

// What the engine calls a format; none where it doesn't take it.  Formats that only say the range as well (yuvj420p) are the
// plain ones.
std::optional<BiseamFormat> engine_format(AVPixelFormat format);

// A working format is one that the engine takes, and not one that says the range as well.  This is the nearest: itself, or the
// one that loses least.  Depth stays up to 12 bits, chroma stays; coarser chroma gets the next finer size, RGB of any layout is
// three full planes, opacity is left out.  AV_PIX_FMT_NONE for what can't be read, as in a device's memory.
AVPixelFormat working_format(AVPixelFormat format);

// The working format with a plane for each component: what holds the samples of NV12, too.
AVPixelFormat planar_format(AVPixelFormat format);

// What is lost from one format to another, for a notice: "samples of 16 bits are rounded to 12, chroma is resampled to 4:2:0".
// Empty when nothing is.
std::string loss_text(AVPixelFormat from, AVPixelFormat to);

// What is lost on the way to the working format: "its samples of 16 bits are rounded to 12", or nothing.
std::string working_loss(AVPixelFormat format);

// The format says that luma and chroma have the full range.
bool says_full_range(AVPixelFormat format);

// Where chroma samples lie; the engine knows no lower row, and takes what is not told for the left column.
BiseamSiting engine_siting(AVChromaLocation location);

// How codes stand for light; what is not told, or not known to the engine, is as usual.
BiseamTransfer engine_transfer(AVColorTransferCharacteristic transfer);

// The planes of a picture in a working format, for the engine to read or to fill.  Valid as long as the frame's memory.
BiseamPicture engine_picture(const AVFrame& frame);

}  // namespace biseam::tool
