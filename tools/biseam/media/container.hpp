// A picture file or a clip, opened by libav.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/byte_source.hpp"
#include "base/size.hpp"
#include "media/libav.hpp"

namespace biseam::tool {

// What raw frames don't say themselves.
struct RawVideo {
  Size size;
  AVRational rate;  // frames per second
};

// Reads a ByteSource by its content alone: no name is given to libav, so nothing but these bytes is ever opened.
class Container {
 public:
  // "-" is standard input; raw: the file is NV12 frames, one after the other.  Throws Failure (input) naming the file.
  explicit Container(const std::string& path, const std::optional<RawVideo>& raw = std::nullopt);
  Container(const Container&) = delete;
  Container& operator=(const Container&) = delete;

  const std::string& name() const { return source_.name(); }  // for messages
  AVFormatContext* operator->() const { return format_.get(); }
  AVFormatContext* get() const { return format_.get(); }
  bool is_picture() const;   // a still, not a clip
  bool is_seekable() const;  // a file rather than a pipe

  // All bytes of a picture's file; of a pipe those that were read so far, which the picture's end bounds.  Throws Failure
  // (input) when they can't be read.
  std::vector<std::uint8_t> file_bytes() const;

  enum class Read { packet, damage, end };
  // The next packet, or that something in its place could not be understood.  It ends after Ctrl-C or TERM, too.  Throws
  // Failure (input) when the bytes can't be read.
  Read read(AVPacket& packet);

  [[noreturn]] void refuse(const std::string& what) const;

 private:
  static int read_bytes(void* opaque, std::uint8_t* to, int count);
  static std::int64_t seek_bytes(void* opaque, std::int64_t offset, int whence);
  void open_bytes();
  void open_format(const std::optional<RawVideo>& raw);
  void check_bytes() const;

  ByteSource source_;
  bool waits_ = false;  // a pipe or a terminal: bytes may be long in coming
  bool keeps_ = false;  // what is read, as there is no second time
  std::vector<std::uint8_t> kept_;
  int read_error_ = 0;  // errno
  int refusals_ = 0;    // of the demuxer, in a row
  Libav<AVIOContext> bytes_;
  Libav<AVFormatContext> format_;
};

}  // namespace biseam::tool
