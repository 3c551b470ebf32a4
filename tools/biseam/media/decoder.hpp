#pragma once

#include <string>

#include "media/container.hpp"

namespace biseam::tool {

struct DecoderSettings {
  std::string subject;        // that can't be decoded, for messages; empty: the picture that the file is
  int error_recognition = 0;  // AV_EF_*
  int threads = 1;            // 0: as many as the decoder likes
};

// For the packets of a stream of the source.  Throws Failure: input when there is no decoder or it can't be opened,
// system when its threads can't be started.
Libav<AVCodecContext> open_decoder(const Container& source, const AVStream& stream, const DecoderSettings& settings);

}  // namespace biseam::tool
