// Which streams a container can hold.
#pragma once

#include <string>

#include "media/libav.hpp"

namespace biseam::tool {

// "stream 2 (subtitle, subrip)"; clip: path, told when it is not empty.
std::string stream_text(const AVStream& stream, const std::string& clip);

// Carried otherwise and not to be copied: the track of chapter titles, and time code that stands in the metadata, of which
// libav writes a track anew where the container has them.
bool is_carried_by_metadata(const AVFormatContext& clip, const AVStream& stream);

// Why the container can't hold packets of the stream as they are; empty when it can.
std::string holding_trouble(const AVOutputFormat& format, const AVStream& stream);

// Why nobody could read an encoder's packets in the container, though its muxer takes them; empty when they can be read.
std::string encoded_trouble(const AVOutputFormat& format, const AVCodecParameters& encoded);

// For a stream to be written into the container: parameters, with a tag the container knows.
void copy_parameters(const AVOutputFormat& format, const AVStream& from, AVStream& to);

// The tag that all players of the container know, where an encoder's stream may have several: hvc1, as the head has the
// parameter sets.
void tag_for_players(const AVOutputFormat& format, AVCodecParameters& encoded);

}  // namespace biseam::tool
