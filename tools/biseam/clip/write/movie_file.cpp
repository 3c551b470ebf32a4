#include "clip/write/movie_file.hpp"

#include <algorithm>
#include <cerrno>

namespace biseam::tool {
namespace {

constexpr std::int64_t kPieceTicks = AV_TIME_BASE;  // a second
constexpr std::int64_t kPieceBytes = 32 << 20;

// The movie box with which the bytes end, behind texts and the like; empty when there is none.
Bytes movie_at_end(const Bytes& bytes) {
  for (std::size_t at = 0; at + kBoxHeader <= bytes.size(); ++at) {
    const std::optional<Box> box = box_at(bytes, at, bytes.size());
    if (box && box->end() == bytes.size() && is_named(bytes, *box, "moov")) {
      return Bytes(bytes.begin() + std::ptrdiff_t(at), bytes.end());
    }
  }
  return {};
}

std::span<const std::uint8_t> part(const Bytes& bytes, const Box& box) { return {bytes.data() + box.at, box.size}; }

}  // namespace

MovieFile::MovieFile(OutputBytes& bytes, AVFormatContext& index, std::vector<TrackAddition> additions)
    : bytes_(bytes), index_(index), additions_(std::move(additions)), fragments_(index) {
  index_.pb = index_bytes_.context();
  index_.flush_packets = 1;  // so that places are told packet by packet
  for (unsigned k = index_.nb_streams; k-- > 0;) {
    const AVStream& stream = *index_.streams[k];
    const bool is_cover = (stream.disposition & AV_DISPOSITION_ATTACHED_PIC) != 0;
    if (stream.codecpar->codec_type == AVMEDIA_TYPE_VIDEO && !is_cover) clock_ = int(k);
  }
}

void MovieFile::write(std::span<const std::uint8_t> bytes) { avio_write(bytes_.context(), bytes.data(), int(bytes.size())); }

int MovieFile::begin(AVDictionary** options) {
  AVDictionary* others = nullptr;
  av_dict_copy(&others, *options, 0);
  int status = avformat_write_header(&index_, options);
  if (status >= 0) status = fragments_.begin(others);
  av_dict_free(&others);
  if (status < 0) return status;
  const Bytes head = index_bytes_.take();
  const std::optional<Box> type = box_at(head, 0, head.size());
  if (!type) return AVERROR_MUXER_NOT_FOUND;
  write(part(head, *type));
  head_ = std::int64_t(type->size);
  return 0;
}

bool MovieFile::is_time_for_piece(const AVPacket& packet) {
  piece_bytes_ += packet.size;
  const AVRational base = index_.streams[packet.stream_index]->time_base;
  const std::int64_t time = packet.dts == AV_NOPTS_VALUE ? packet.dts : av_rescale_q(packet.dts, base, kMicroseconds);
  const bool is_told = packet.stream_index == clock_ && time != AV_NOPTS_VALUE;
  if (is_told && piece_begin_ == AV_NOPTS_VALUE) piece_begin_ = time;
  const bool is_long = is_told && time - piece_begin_ >= kPieceTicks;
  if (!is_long && piece_bytes_ < kPieceBytes) return false;
  piece_begin_ = is_told ? time : AV_NOPTS_VALUE;
  piece_bytes_ = 0;
  return true;
}

int MovieFile::put(AVPacket& packet) {
  const bool is_time = is_time_for_piece(packet);
  int status = fragments_.put(packet);
  if (status >= 0) status = av_interleaved_write_frame(&index_, &packet);
  if (status < 0 || !is_time) return status;
  Bytes boxes;
  status = fragments_.take(boxes);
  return status < 0 ? status : write_pieces(boxes);
}

// The file's own head is there already.
int MovieFile::write_pieces(const Bytes& boxes) {
  std::size_t at = 0;
  while (const std::optional<Box> box = box_at(boxes, at, boxes.size())) {
    at = box->end();
    if (is_named(boxes, *box, "ftyp")) continue;
    if (is_named(boxes, *box, "mdat")) {
      write(part(boxes, *box));
      continue;
    }
    const std::span<const std::uint8_t> given = part(boxes, *box);
    Bytes movie(given.begin(), given.end());
    if (is_named(boxes, *box, "moov")) has_additions_ = add_to_tracks(movie, additions_);
    const bool is_piece = is_named(boxes, *box, "moof");
    if (is_piece && !read_runs(movie, std::uint64_t(avio_tell(bytes_.context())), runs_)) return AVERROR_BUG;
    write(movie);
  }
  bytes_.flush();  // or a kill would lose what is complete
  return 0;
}

int MovieFile::end() {
  Bytes boxes;
  int status = fragments_.take_last(boxes);
  if (status >= 0) status = write_pieces(boxes);
  if (status >= 0) status = av_interleaved_write_frame(&index_, nullptr);
  if (status < 0) return status;
  index_bytes_.keep();
  status = av_write_trailer(&index_);
  if (status < 0) return status;
  Bytes movie = movie_at_end(index_bytes_.take());
  has_additions_ = add_to_tracks(movie, additions_) && has_additions_;
  if (!place_samples(movie, runs_)) return AVERROR_BUG;

  const std::int64_t pieces_end = avio_tell(bytes_.context());
  write(movie);
  bytes_.sync();  // only then is the head of the pieces dispensable
  Bytes header;
  append_32(header, 1);  // the size is a long one, behind the name
  for (const char letter : {'m', 'd', 'a', 't'}) header.push_back(std::uint8_t(letter));
  append_64(header, std::uint64_t(pieces_end - head_));
  avio_seek(bytes_.context(), head_, SEEK_SET);
  write(header);
  return 0;
}

}  // namespace biseam::tool
