#pragma once

#include <string>

namespace biseam::tool {

// Keeps what libav's parts complain about, so that messages can say more than a code does.
class LibavLog {
 public:
  LibavLog();  // forgets what was said before
  LibavLog(const LibavLog&) = delete;
  LibavLog& operator=(const LibavLog&) = delete;
  ~LibavLog();

  // The first complaint of any thread, else the words for the code.
  std::string reason(int code) const;
};

}  // namespace biseam::tool
