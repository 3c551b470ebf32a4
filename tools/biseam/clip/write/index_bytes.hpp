#pragma once

#include "clip/write/boxes.hpp"
#include "media/libav.hpp"

namespace biseam::tool {

// What a muxer writes for its index alone: its bytes are kept at the beginning and at the end, those of packets only counted.
// Between two packets that it writes it finds a gap, so that its index doesn't take them together.
class IndexBytes {
 public:
  IndexBytes();
  IndexBytes(const IndexBytes&) = delete;
  IndexBytes& operator=(const IndexBytes&) = delete;

  AVIOContext* context() const { return context_.get(); }

  // What was written since the beginning, or since keep(); from then on only places are counted.
  Bytes take();
  void keep();

 private:
  static int write_bytes(void* opaque, std::uint8_t* from, int count) noexcept;
  static std::int64_t seek_bytes(void* opaque, std::int64_t offset, int whence) noexcept;

  std::int64_t at_ = 0, end_ = 0, kept_from_ = 0;
  bool keeps_ = true, is_short_ = false;  // of memory
  Bytes kept_;
  Libav<AVIOContext> context_;
};

}  // namespace biseam::tool
