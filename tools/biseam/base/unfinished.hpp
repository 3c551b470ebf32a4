// Files that are not whole yet, known to those ends of the program that call no destructors.
#pragma once

#include <string>

namespace biseam::tool {

// As long as one lives, remove_unfinished_files() removes its file.  The first 16 count.
class UnfinishedFile {
 public:
  UnfinishedFile() = default;
  UnfinishedFile(const UnfinishedFile&) = delete;
  UnfinishedFile& operator=(const UnfinishedFile&) = delete;
  ~UnfinishedFile() { forget(); }

  void name(const std::string& path);  // once
  void forget();

 private:
  int place_ = -1;
};

// May be called by signal handlers, and where memory is missing.
void remove_unfinished_files();

}  // namespace biseam::tool
