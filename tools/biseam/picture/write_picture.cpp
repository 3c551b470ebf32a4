#include "picture/write_picture.hpp"

#include "base/extension.hpp"
#include "base/failure.hpp"
#include "base/replace_file.hpp"
#include "picture/encode.hpp"
#include "picture/frame_over.hpp"
#include "picture/gpano.hpp"

namespace biseam::tool {
namespace {

enum class Kind { png, jpeg, raw };

Kind picture_kind(const std::string& path) {
  if (path == "-") return Kind::raw;
  const std::string extension = extension_of(path);
  if (extension == ".png") return Kind::png;
  if (extension == ".jpg" || extension == ".jpeg") return Kind::jpeg;
  if (extension == ".nv12") return Kind::raw;
  throw Failure(ExitCode::usage, path + ": the name must end in .png, .jpg or .nv12, or be -");
}

std::vector<std::uint8_t> encode_as(Kind kind, const AVFrame& picture) {
  switch (kind) {
    case Kind::png:
      return encode_png(picture);
    case Kind::jpeg:
      return encode_jpeg(picture);
    case Kind::raw:
      break;
  }
  return encode_raw(picture);
}

template <class Encode>
void write(const std::string& path, Encode encode) {
  std::vector<std::uint8_t> bytes;
  try {
    bytes = encode();
  } catch (const Failure&) {
    throw;
  } catch (const std::runtime_error& reason) {
    throw Failure(ExitCode::output, path + ": can't be encoded: " + reason.what());
  }
  replace_file(path, bytes);
}

}  // namespace

void write_picture(const std::string& path, const AVFrame& picture, Projection projection, const Metadata& metadata) {
  const Kind kind = picture_kind(path);
  if (kind == Kind::raw) return write(path, [&] { return encode_as(kind, picture); });
  const bool marks = projection == Projection::equirectangular;
  write(path, [&] {
    MarkedFile file = with_metadata(encode_as(kind, picture), metadata, {picture.width, picture.height}, marks);
    for (const std::string& line : file.left_out) notice(path + ": " + line);
    return marks ? with_gpano(file.bytes) : std::move(file.bytes);
  });
}

void write_picture(const std::string& path, const Nv12& picture, Projection projection, const Metadata& metadata) {
  write_picture(path, *frame_over(picture), projection, metadata);
}
void write_picture(const std::string& path, const Rgb& picture, Projection projection, const Metadata& metadata) {
  write_picture(path, *frame_over(picture), projection, metadata);
}
void check_picture_name(const std::string& path) { picture_kind(path); }

void write_layer(const std::string& path, const Rgba& picture) {
  write(path, [&] { return encode_png(picture); });
}

void check_layer_name(const std::string& path) {
  if (path == "-" || picture_kind(path) != Kind::png) {
    throw Failure(ExitCode::usage, path + ": the name must end in .png, which alone keeps transparency");
  }
}

}  // namespace biseam::tool
