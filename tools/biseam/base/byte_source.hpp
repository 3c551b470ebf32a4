// The bytes of an input: a file, or standard input under the name "-".
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace biseam::tool {

class ByteSource {
 public:
  // Throws Failure when path can't be opened or is a folder.
  explicit ByteSource(const std::string& path);

  const std::string& name() const { return name_; }  // for messages
  std::FILE* stream() const { return stream_.get(); }
  int descriptor() const { return fileno(stream_.get()); }

  // Everything up to the end, but at most limit bytes.
  std::vector<std::uint8_t> read_all(std::size_t limit);

 private:
  struct Close {
    void operator()(std::FILE* stream) const;
  };
  std::string name_;
  std::unique_ptr<std::FILE, Close> stream_;
};

}  // namespace biseam::tool
