// What a clip says about itself beside its pictures and sounds.
#pragma once

#include <cstdint>

#include "media/libav.hpp"

namespace biseam::tool {

// Global metadata; what only describes the old container is left out.
void copy_clip_metadata(const AVFormatContext& from, AVFormatContext& to);

// A part of a clip, its times less by shift, in microseconds; the whole where nothing else is said.
struct ClipSpan {
  std::int64_t begin = 0, end = INT64_MAX, shift = 0;
};

// The chapters inside the span.
void copy_chapters(const AVFormatContext& from, const ClipSpan& span, AVFormatContext& to);

// Metadata, disposition and side data of a stream that is copied.
void copy_stream_metadata(const AVStream& from, AVStream& to);

// The same for the stream of the pictures, less what describes the old encoding or how to turn the old pictures.
void copy_picture_metadata(const AVStream& from, AVStream& to);

// Tells players that the pictures are equirectangular panoramas of the whole sphere.
void mark_spherical(AVStream& stream);

// They say so.
bool is_whole_sphere(const AVStream& stream);

// True when the plain metadata of an MP4 file has no place for one of these keys.
bool needs_free_keys(const AVDictionary* metadata);

}  // namespace biseam::tool
