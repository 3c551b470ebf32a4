#include "picture/read_picture.hpp"

#include <algorithm>
#include <charconv>
#include <stdexcept>
#include <utility>

#include "base/byte_source.hpp"
#include "base/failure.hpp"
#include "picture/decode.hpp"
#include "picture/orientation.hpp"

namespace biseam::tool {
namespace {

constexpr int kMaxSide = 32766;  // keeps every byte count of a picture inside 32 bits

Nv12 read_raw(ByteSource& source, Size size) {
  const std::size_t expected = nv12_bytes(size);
  const std::vector<std::uint8_t> bytes = source.read_all(expected + 1);
  if (bytes.size() != expected) {
    const std::string found = bytes.size() > expected ? "more" : "only " + std::to_string(bytes.size());
    throw Failure(ExitCode::input, source.name() + ": raw NV12 of " + std::to_string(size.width) + "x" +
                                       std::to_string(size.height) + " has " + std::to_string(expected) +
                                       " bytes, the file has " + found);
  }
  Nv12 picture(size.width, size.height);
  const auto chroma = bytes.begin() + std::ptrdiff_t(picture.luma.size());
  std::copy(bytes.begin(), chroma, picture.luma.begin());
  std::copy(chroma, bytes.end(), picture.chroma.begin());
  return picture;
}

// Clips have none.  The picture is good without them.
Metadata metadata_of(const Container& opened) {
  if (!opened.is_picture()) return {};
  try {
    return read_metadata(opened.file_bytes());
  } catch (const std::runtime_error& reason) {
    notice(opened.name() + ": its metadata can't be read and are left out: " + reason.what());
    return {};
  }
}

PictureFile finish(const Container& opened, DecodedPicture decoded) {
  if (decoded.bits > 8) {
    notice(opened.name() + ": its samples of " + std::to_string(decoded.bits) + " bits are rounded to 8");
  }
  Metadata metadata = metadata_of(opened);
  return {upright(std::move(decoded.samples), metadata.orientation()), std::move(metadata)};
}

}  // namespace

PictureFile read_picture_file(Container& opened) { return finish(opened, decode_picture(opened)); }
PictureFile read_picture_file(Container& opened, int stream) { return finish(opened, decode_picture(opened, stream)); }

PictureFile read_picture_file(const std::string& path, std::optional<Size> raw_size) {
  if (raw_size) {
    ByteSource source(path);
    return {read_raw(source, *raw_size), {}};
  }
  refuse_raw_name(path);
  Container container(path);
  return read_picture_file(container);
}

Nv12 read_picture(const std::string& path, std::optional<Size> raw_size) { return read_picture_file(path, raw_size).picture; }

void refuse_raw_name(const std::string& path) {
  if (!path.ends_with(".nv12") && !path.ends_with(".NV12")) return;
  throw Failure(ExitCode::usage, path + ": a raw picture needs its size (--size WIDTHxHEIGHT)");
}

Size parse_size(const std::string& text) {
  Size size;
  const char* const end = text.data() + text.size();
  const auto [after_width, width_error] = std::from_chars(text.data(), end, size.width);
  if (width_error == std::errc() && after_width != end && (*after_width == 'x' || *after_width == 'X')) {
    const auto [after_height, height_error] = std::from_chars(after_width + 1, end, size.height);
    const bool even = size.width % 2 == 0 && size.height % 2 == 0;
    const bool inside = std::min(size.width, size.height) >= 2 && std::max(size.width, size.height) <= kMaxSide;
    if (height_error == std::errc() && after_height == end && even && inside) return size;
  }
  throw Failure(ExitCode::usage, "size '" + text + "': WIDTHxHEIGHT is wanted, both even, 2 to " + std::to_string(kMaxSide));
}

}  // namespace biseam::tool
