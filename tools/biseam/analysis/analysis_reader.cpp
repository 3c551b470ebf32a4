#include "analysis/analysis_reader.hpp"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "base/failure.hpp"
#include "base/little_endian.hpp"

namespace biseam::tool {

AnalysisReader::AnalysisReader(const std::string& path) : source_(path) {
  struct stat info = {};
  if (::fstat(source_.descriptor(), &info) != 0 || !S_ISREG(info.st_mode)) refuse("is no file, which an analysis has to be");
  const auto size = std::uint64_t(info.st_size);
  const std::vector<std::uint8_t> head = read(0, kAnalysisHeadBytes);
  if (head.size() < kAnalysisHeadBytes) refuse("is no analysis of a clip");
  head_ = read_head(head, name());
  read_times(size);
}

void AnalysisReader::read_times(std::uint64_t size) {
  if (size < kAnalysisHeadBytes + kAnalysisEndBytes) refuse("is cut short");
  const std::vector<std::uint8_t> end = read(size - kAnalysisEndBytes, kAnalysisEndBytes);
  if (end.size() < kAnalysisEndBytes || number_at(&end[12], 4) != kAnalysisEnd) refuse("is cut short");
  const std::uint64_t frames = number_at(end.data(), 8), frame_bytes = std::uint64_t(head_.guide_bytes) + 8;
  const std::uint64_t room = size - kAnalysisHeadBytes - kAnalysisEndBytes;
  if (frames > room / frame_bytes || frames * frame_bytes != room) refuse("is damaged");
  std::vector<std::uint8_t> index = read(size - kAnalysisEndBytes - frames * 8, std::size_t(frames * 8 + 8));
  if (index.size() != frames * 8 + 8 || sum_of(index) != number_at(&end[8], 4)) refuse("is damaged");
  times_.resize(std::size_t(frames));
  for (std::size_t i = 0; i < times_.size(); ++i) times_[i] = std::int64_t(number_at(&index[8 * i], 8));
  if (!std::is_sorted(times_.begin(), times_.end())) refuse("is damaged");
}

std::span<const std::uint8_t> AnalysisReader::guide_at(std::int64_t time) {
  const auto found = std::lower_bound(times_.begin(), times_.end(), time);
  if (found == times_.end() || *found != time) return {};
  const auto index = std::uint64_t(found - times_.begin());
  guide_ = read(kAnalysisHeadBytes + index * head_.guide_bytes, head_.guide_bytes);
  if (guide_.size() != head_.guide_bytes) refuse("is cut short");
  return guide_;
}

std::vector<std::uint8_t> AnalysisReader::read(std::uint64_t from, std::size_t count) const {
  std::vector<std::uint8_t> bytes(count);
  std::size_t got = 0;
  while (got < count) {
    const ssize_t more = ::pread(source_.descriptor(), &bytes[got], count - got, off_t(from + got));
    if (more < 0 && errno == EINTR) continue;
    if (more < 0) throw system_failure(ExitCode::input, name(), "can't be read");
    if (more == 0) break;
    got += std::size_t(more);
  }
  bytes.resize(got);
  return bytes;
}

void AnalysisReader::refuse(const char* what) const { throw Failure(ExitCode::input, name() + ": " + what); }

}  // namespace biseam::tool
