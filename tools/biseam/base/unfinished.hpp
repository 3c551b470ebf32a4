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

  // Makes the file and knows it from its first moment, once.  pattern: for mkostemp(), which puts the name into it.  Gives the
  // descriptor, or -1 with the reason in errno.
  int create(std::string& pattern);
  void forget();

 private:
  int place_ = -1;
};

// May be called by signal handlers, and where memory is missing.
void remove_unfinished_files();

}  // namespace biseam::tool
