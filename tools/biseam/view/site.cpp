#include "view/site.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>
#include <utility>

#include "base/failure.hpp"
#include "view/byte_range.hpp"
#include "view/own_host.hpp"

namespace biseam::tool {
namespace {

struct Release {
  void operator()(MHD_Response* response) const { MHD_destroy_response(response); }
};
using Response = std::unique_ptr<MHD_Response, Release>;

Response text_response(const std::string& text, const char* type) {
  // The library does not write to a persistent buffer; its interface is older than const.
  char* bytes = const_cast<char*>(text.data());
  Response response(MHD_create_response_from_buffer(text.size(), bytes, MHD_RESPMEM_PERSISTENT));
  if (response) MHD_add_response_header(response.get(), MHD_HTTP_HEADER_CONTENT_TYPE, type);
  return response;
}

// The library closes the descriptor it is given, and reads at offsets of its own.
Response file_response(const OpenFile& file, std::uint64_t first, std::uint64_t count) {
  const int descriptor = ::fcntl(file.descriptor(), F_DUPFD_CLOEXEC, 0);
  if (descriptor < 0) return nullptr;
  Response response(MHD_create_response_from_fd_at_offset64(count, descriptor, first));
  if (!response) {
    ::close(descriptor);
    return nullptr;
  }
  MHD_add_response_header(response.get(), MHD_HTTP_HEADER_CONTENT_TYPE, file.type().c_str());
  MHD_add_response_header(response.get(), MHD_HTTP_HEADER_ACCEPT_RANGES, "bytes");
  MHD_add_response_header(response.get(), MHD_HTTP_HEADER_ETAG, file.tag().c_str());
  return response;
}

MHD_Result send(MHD_Connection* connection, unsigned status, const Response& response) {
  if (!response) return MHD_NO;
  MHD_add_response_header(response.get(), MHD_HTTP_HEADER_CACHE_CONTROL, "no-cache");
  MHD_add_response_header(response.get(), "X-Content-Type-Options", "nosniff");
  MHD_add_response_header(response.get(), "Cross-Origin-Resource-Policy", "same-origin");
  return MHD_queue_response(connection, status, response.get());
}

std::string header(MHD_Connection* connection, const char* name) {
  const char* value = MHD_lookup_connection_value(connection, MHD_HEADER_KIND, name);
  return value ? value : "";
}

// A range counts for GET only, and with If-Range only while the file is the one that the client has the rest of.
ByteRange wanted_range(MHD_Connection* connection, const OpenFile& file, const std::string& method) {
  const std::string known = header(connection, MHD_HTTP_HEADER_IF_RANGE);
  if (method != MHD_HTTP_METHOD_GET || (!known.empty() && known != file.tag())) return {};
  return parse_range(header(connection, MHD_HTTP_HEADER_RANGE), file.bytes());
}

MHD_Result send_file(MHD_Connection* connection, const OpenFile& file, const std::string& method) {
  const ByteRange range = wanted_range(connection, file, method);
  if (range.kind == RangeKind::whole) return send(connection, MHD_HTTP_OK, file_response(file, 0, file.bytes()));
  const bool part = range.kind == RangeKind::part;
  const Response response = part ? file_response(file, range.first, range.count) : text_response("", "text/plain");
  if (!response) return MHD_NO;
  const std::uint64_t last = range.first + range.count - 1;
  const std::string which = part ? std::to_string(range.first) + "-" + std::to_string(last) : "*";
  const std::string within = std::string("bytes ") + which + "/" + std::to_string(file.bytes());
  MHD_add_response_header(response.get(), MHD_HTTP_HEADER_CONTENT_RANGE, within.c_str());
  return send(connection, part ? MHD_HTTP_PARTIAL_CONTENT : MHD_HTTP_RANGE_NOT_SATISFIABLE, response);
}

}  // namespace

OpenFile::OpenFile(const PanoramaFile& file)
    : descriptor_(::open(file.path.c_str(), O_RDONLY | O_CLOEXEC)), type_(mime_type(file.media)) {
  struct stat info = {};
  if (descriptor_ < 0 || ::fstat(descriptor_, &info) != 0) throw system_failure(ExitCode::input, file.path, "can't be opened");
  bytes_ = std::uint64_t(info.st_size);
  const std::string quote = "\"", changed = std::to_string(info.st_mtim.tv_sec) + "." + std::to_string(info.st_mtim.tv_nsec);
  tag_ = quote + std::to_string(info.st_ino) + "-" + changed + "-" + std::to_string(bytes_) + quote;
}

OpenFile::OpenFile(OpenFile&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)),
      bytes_(other.bytes_),
      type_(std::move(other.type_)),
      tag_(std::move(other.tag_)) {}

OpenFile::~OpenFile() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

Site::Site(std::string page, const PageFiles& files, int port) : page_(std::move(page)), port_(port) {
  const std::string root = "/";
  files_.emplace(root + served_name("panorama", files.panorama), OpenFile(files.panorama));
  if (files.seams) files_.emplace(root + served_name("seams", *files.seams), OpenFile(*files.seams));
}

MHD_Result Site::answer(MHD_Connection* connection, const std::string& address, const std::string& method) const {
  static const std::string kUnknown = "There is nothing at this address.\n", kReadOnly = "Only GET and HEAD are answered.\n";
  static const std::string kElsewhere = "This is no address of the server.\n";
  if (!is_own_host(header(connection, MHD_HTTP_HEADER_HOST), port_)) {
    return send(connection, MHD_HTTP_MISDIRECTED_REQUEST, text_response(kElsewhere, "text/plain"));
  }
  if (method != MHD_HTTP_METHOD_GET && method != MHD_HTTP_METHOD_HEAD) {
    const Response response = text_response(kReadOnly, "text/plain");
    if (response) MHD_add_response_header(response.get(), MHD_HTTP_HEADER_ALLOW, "GET, HEAD");
    return send(connection, MHD_HTTP_METHOD_NOT_ALLOWED, response);
  }
  if (address == "/") return send(connection, MHD_HTTP_OK, text_response(page_, "text/html; charset=utf-8"));
  const auto file = files_.find(address);
  if (file == files_.end()) return send(connection, MHD_HTTP_NOT_FOUND, text_response(kUnknown, "text/plain"));
  return send_file(connection, file->second, method);
}

}  // namespace biseam::tool
