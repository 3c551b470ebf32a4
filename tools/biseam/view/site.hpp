// What is served, and the answers to requests for it.
#pragma once

#include <microhttpd.h>

#include <map>
#include <string>

#include "view/page.hpp"

namespace biseam::tool {

class OpenFile {
 public:
  // Throws Failure (input) when the file can't be opened.
  explicit OpenFile(const PanoramaFile& file);
  OpenFile(OpenFile&& other) noexcept;
  OpenFile& operator=(OpenFile&&) = delete;
  ~OpenFile();

  int descriptor() const { return descriptor_; }
  std::uint64_t bytes() const { return bytes_; }
  const std::string& type() const { return type_; }
  const std::string& tag() const { return tag_; }  // changes with the content, quoted as in headers

 private:
  int descriptor_;
  std::uint64_t bytes_ = 0;
  std::string type_, tag_;
};

// The page under "/", the files under their served names: addresses are looked up among these, never on disk.
class Site {
 public:
  // port: of the server, which requests have to name.
  Site(std::string page, const PageFiles& files, int port);

  // Several threads may answer at once.
  MHD_Result answer(MHD_Connection* connection, const std::string& address, const std::string& method) const;

 private:
  std::string page_;
  std::map<std::string, OpenFile> files_;
  int port_;
};

}  // namespace biseam::tool
