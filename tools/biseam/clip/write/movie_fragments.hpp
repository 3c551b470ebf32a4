#pragma once

#include <memory>
#include <span>

#include "clip/write/boxes.hpp"
#include "clip/write/mov_boxes.hpp"
#include "media/libav.hpp"

namespace biseam::tool {

struct MuxerDelete {
  void operator()(AVFormatContext* muxer) const { avformat_free_context(muxer); }
};

// An MP4 or QuickTime file in pieces, each of which says where its packets lie, behind a head that holds none.
class MovieFragments {
 public:
  // With the streams, metadata and chapters of a muxer whose head isn't written yet.
  explicit MovieFragments(const AVFormatContext& like);
  ~MovieFragments();

  // All return libav's code.  The options are the other muxer's.
  int begin(const AVDictionary* options);
  int put(const AVPacket& packet);

  // The head once, then pieces: a movie box and a box of packets each.  Nothing where there are no packets since the last time,
  // and as long as the head waits for those that it has to describe.
  int take(Bytes& boxes);
  int take_last(Bytes& boxes);

 private:
  bool head_waits() const;
  int take_written(Bytes& boxes);

  std::unique_ptr<AVFormatContext, MuxerDelete> muxer_;
  Libav<AVPacket> packet_;
  bool has_head_ = false;
};

}  // namespace biseam::tool
