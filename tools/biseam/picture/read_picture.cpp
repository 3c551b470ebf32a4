#include "picture/read_picture.hpp"

#include <algorithm>
#include <charconv>
#include <stdexcept>
#include <utility>

#include "base/byte_source.hpp"
#include "base/failure.hpp"
#include "picture/decode.hpp"
#include "picture/orientation.hpp"
#include "picture/picture.hpp"
#include "picture/plane.hpp"

namespace biseam::tool {
namespace {

constexpr int kMaxSide = 32766;  // keeps every byte count of a picture inside 32 bits

Libav<AVFrame> read_raw(ByteSource& source, Size size) {
  const std::size_t expected = nv12_bytes(size);
  const std::vector<std::uint8_t> bytes = source.read_all(expected + 1);
  if (bytes.size() != expected) {
    const std::string found = bytes.size() > expected ? "more" : "only " + std::to_string(bytes.size());
    throw Failure(ExitCode::input, source.name() + ": raw NV12 of " + std::to_string(size.width) + "x" +
                                       std::to_string(size.height) + " has " + std::to_string(expected) +
                                       " bytes, the file has " + found);
  }
  Libav<AVFrame> frame(av_frame_alloc());
  if (!frame) throw std::bad_alloc();
  frame->format = AV_PIX_FMT_NV12;
  frame->width = size.width;
  frame->height = size.height;
  frame->chroma_location = AVCHROMA_LOC_CENTER;
  frame->color_range = AVCOL_RANGE_JPEG;
  if (av_frame_get_buffer(frame.get(), 0) < 0) throw std::bad_alloc();
  const std::size_t width = std::size_t(size.width), rows = std::size_t(size.height);
  copy_plane({bytes.data(), size.width, width, rows}, frame->data[0], frame->linesize[0]);
  copy_plane({bytes.data() + width * rows, size.width, width, rows / 2}, frame->data[1], frame->linesize[1]);
  return frame;
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
  if (!decoded.loss.empty()) notice(opened.name() + ": " + decoded.loss);
  Metadata metadata = metadata_of(opened);
  return {upright(std::move(decoded.frame), metadata.orientation()), std::move(metadata)};
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

Libav<AVFrame> read_picture(const std::string& path, std::optional<Size> raw_size) {
  return read_picture_file(path, raw_size).picture;
}

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
