#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "base/unfinished.hpp"

namespace biseam::tool {

// A file that takes its name only when it is whole: written beside the name, renamed by commit(), removed without it.  It
// takes over owner, mode, attributes and access lists from the file that it replaces.  A link is followed, even when it leads
// to nothing yet; a file with further names keeps them, as it is overwritten from the whole one; what is no regular file (a
// device, a pipe) is written to directly.  "-" is standard output.
class ReplacementFile {
 public:
  // Throws Failure (output) when nothing can be written under the name.
  explicit ReplacementFile(const std::string& path);
  ReplacementFile(const ReplacementFile&) = delete;
  ReplacementFile& operator=(const ReplacementFile&) = delete;
  ~ReplacementFile();

  const std::string& name() const { return name_; }  // for messages
  int descriptor() const { return descriptor_; }

  // Everything; throws Failure (output).
  void write(std::span<const std::uint8_t> bytes);

  // Puts everything on disk and under the name.  Throws Failure (output).
  void commit();

 private:
  [[noreturn]] void refuse(const std::string& what) const;
  void finish_bytes();  // on disk, closed
  void overwrite();     // the target, which has several names
  void rename();

  std::string name_, target_, unfinished_;  // unfinished_ is empty where nothing has to be renamed
  UnfinishedFile remains_;
  int descriptor_ = -1;
  bool is_standard_output_ = false;
};

inline std::span<const std::uint8_t> text_bytes(std::string_view text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

// Writes path whole or not at all.  Throws Failure (output).
void replace_file(const std::string& path, std::span<const std::uint8_t> bytes);

}  // namespace biseam::tool
