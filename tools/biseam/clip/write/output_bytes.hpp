#pragma once

#include <string>

#include "base/replace_file.hpp"
#include "media/libav.hpp"

namespace biseam::tool {

// Where a muxer's bytes go: beside the file until it is whole.
class OutputBytes {
 public:
  explicit OutputBytes(const std::string& path);
  OutputBytes(const OutputBytes&) = delete;
  OutputBytes& operator=(const OutputBytes&) = delete;

  AVIOContext* context() const { return context_.get(); }
  const std::string& name() const { return file_.name(); }
  bool is_seekable() const { return seekable_; }

  void flush() { avio_flush(context_.get()); }
  void check() const;  // throws Failure (output) when something could not be written so far
  void sync();         // flushes and waits for the disk
  void commit();       // flushes and gives the file its name

 private:
  static int write_bytes(void* opaque, std::uint8_t* from, int count);
  static std::int64_t seek_bytes(void* opaque, std::int64_t offset, int whence);

  ReplacementFile file_;
  bool seekable_ = false;
  int error_ = 0;  // errno
  Libav<AVIOContext> context_;
};

}  // namespace biseam::tool
