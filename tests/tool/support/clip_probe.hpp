// What is in a clip, read back through libav.
#pragma once

#include <cstdint>
#include <map>
#include <ostream>
#include <string>
#include <vector>

#include "media/libav.hpp"
#include "picture/picture.hpp"

namespace biseam::test {

struct PacketFacts {
  std::int64_t pts, dts, duration;  // microseconds
  std::string bytes;
  bool operator==(const PacketFacts&) const = default;
  friend std::ostream& operator<<(std::ostream& out, const PacketFacts& packet) {
    return out << "pts " << packet.pts << " dts " << packet.dts << " for " << packet.duration << " bytes "
               << packet.bytes.size();
  }
};

struct StreamFacts {
  AVMediaType type;
  std::string codec;
  AVRational base;
  int disposition;
  std::map<std::string, std::string> metadata;
  std::vector<PacketFacts> packets;
  std::string extradata;

  std::string bytes() const;                // of all packets, one after the other
  std::vector<std::int64_t> times() const;  // presentation, microseconds, ascending
};

struct ChapterFacts {
  std::int64_t start, end;  // milliseconds
  std::string title;
  bool operator==(const ChapterFacts&) const = default;
};

struct ClipProbe {
  explicit ClipProbe(const std::string& path);

  const StreamFacts& only(AVMediaType type) const;  // throws unless there is one of the kind that is no cover

  std::map<std::string, std::string> metadata;
  std::vector<StreamFacts> streams;
  std::vector<ChapterFacts> chapters;
  std::int64_t duration = 0;  // microseconds
  // Of the video:
  std::vector<std::int64_t> picture_times;  // in its time base
  std::vector<tool::Libav<AVFrame>> frames;
  std::vector<tool::Nv12> pictures;  // the frames, where they have 8 bits and 4:2:0
  AVRational base{0, 1};
  AVColorRange range = AVCOL_RANGE_UNSPECIFIED;
  AVColorSpace matrix = AVCOL_SPC_UNSPECIFIED;
  AVColorPrimaries primaries = AVCOL_PRI_UNSPECIFIED;
  AVColorTransferCharacteristic transfer = AVCOL_TRC_UNSPECIFIED;
  AVChromaLocation siting = AVCHROMA_LOC_UNSPECIFIED;
  bool spherical = false;  // and equirectangular
  AVRational pixel{0, 1};  // width and height of one
  bool has_display_matrix = false;

 private:
  void read_streams(AVFormatContext& format);
  void read_packets(AVFormatContext& format, int video);
  void take_pictures(AVCodecContext& decoder);
};

// The container's own name for what wrote it.
inline std::map<std::string, std::string> without_writer(std::map<std::string, std::string> metadata) {
  metadata.erase("encoder");
  metadata.erase("ENCODER");
  return metadata;
}

}  // namespace biseam::test
