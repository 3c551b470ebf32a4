#include "tag/tag_job.hpp"

#include "base/byte_source.hpp"
#include "base/failure.hpp"
#include "base/interrupt.hpp"
#include "base/replace_file.hpp"

namespace biseam::tool {
namespace {

void copy_file(const TagJob& job) {
  constexpr std::size_t kPiece = std::size_t(1) << 20;
  ByteSource source(job.from);
  ReplacementFile copy(job.to);
  for (;;) {
    const std::vector<std::uint8_t> piece = source.read_all(kPiece);
    if (interrupted()) return;
    if (piece.empty()) break;
    copy.write(piece);
  }
  copy.commit();
}

}  // namespace

void keep_marked(const TagJob& job) {
  if (!job.in_place) copy_file(job);
  notice(job.from + ": is marked as a panorama already");
}

void check_sides(const TagJob& job, Size size) {
  if (size.width == 2 * std::int64_t(size.height)) return;
  throw Failure(ExitCode::input, job.from + ": " + std::to_string(size.width) + "x" + std::to_string(size.height) +
                                     " pixels, but a panorama of the whole sphere is twice as wide as high");
}

void tell_old_projection(const TagJob& job, const std::string& projection) {
  if (projection.empty() || projection == "equirectangular") return;
  notice(job.from + ": was marked as " + projection + ", which equirectangular takes the place of");
}

}  // namespace biseam::tool
