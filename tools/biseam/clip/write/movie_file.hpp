// An MP4 or QuickTime file that can be played at any time as far as it is written, and is an ordinary one in the end.  Two
// muxers get every packet.  The first writes pieces that each say where their packets lie.  The second keeps the one index of
// an ordinary file; in the end it is written behind the pieces with the places that the packets have in them, and a header of
// 16 bytes makes all pieces the content of one box.
#pragma once

#include <span>
#include <vector>

#include "clip/write/index_bytes.hpp"
#include "clip/write/movie_fragments.hpp"
#include "clip/write/output_bytes.hpp"
#include "clip/write/sample_places.hpp"

namespace biseam::tool {

class MovieFile {
 public:
  // The muxer of the index, complete but for its head, and what has to be added to its tracks.
  MovieFile(OutputBytes& bytes, AVFormatContext& index, std::vector<TrackAddition> additions);
  MovieFile(const MovieFile&) = delete;
  MovieFile& operator=(const MovieFile&) = delete;

  // All return libav's code.
  int begin(AVDictionary** options);
  int put(AVPacket& packet);
  int end();

  // False when the tracks' boxes were not laid out as expected.
  bool has_additions() const { return has_additions_; }

 private:
  bool is_time_for_piece(const AVPacket& packet);
  int write_pieces(const Bytes& boxes);
  void write(std::span<const std::uint8_t> bytes);

  OutputBytes& bytes_;
  AVFormatContext& index_;
  const std::vector<TrackAddition> additions_;
  IndexBytes index_bytes_;
  MovieFragments fragments_;
  std::vector<PacketRun> runs_;
  int clock_ = 0;  // the stream whose times decide when a piece ends
  std::int64_t piece_begin_ = AV_NOPTS_VALUE, piece_bytes_ = 0;
  std::int64_t head_ = 0;  // where the pieces begin in the file
  bool has_additions_ = true;
};

}  // namespace biseam::tool
