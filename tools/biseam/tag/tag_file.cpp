#include "tag/tag_file.hpp"

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>

#include "base/byte_source.hpp"
#include "base/extension.hpp"
#include "base/failure.hpp"
#include "base/interrupt.hpp"
#include "media/container.hpp"
#include "tag/tag_clip.hpp"
#include "tag/tag_picture.hpp"

namespace biseam::tool {
namespace {

struct Kind {
  const char* name;
  const char* muxer;  // null for pictures
  std::initializer_list<const char*> extensions;
};

constexpr Kind kJpeg{"a JPEG picture", nullptr, {".jpg", ".jpeg"}}, kPng{"a PNG picture", nullptr, {".png"}};
constexpr Kind kMp4{"an MP4 file", "mp4", {".mp4", ".m4v"}}, kMov{"a QuickTime file", "mov", {".mov"}};
constexpr Kind kMatroska{"a Matroska file", "matroska", {".mkv"}};

// WebM is Matroska by another name, which stands in its head.
bool is_webm(const std::string& path) {
  const std::vector<std::uint8_t> head = ByteSource(path).read_all(64);
  constexpr std::string_view kName = "webm";
  return std::search(head.begin(), head.end(), kName.begin(), kName.end()) != head.end();
}

const Kind& recognise(const Container& source) {
  const std::string format = source->iformat->name;
  if (format == "jpeg_pipe") return kJpeg;
  if (format == "png_pipe") return kPng;
  if (format == "matroska,webm" && !is_webm(source.name())) return kMatroska;
  if (format.starts_with("mov,")) {
    const AVDictionaryEntry* brand = av_dict_get(source->metadata, "major_brand", nullptr, 0);
    return !brand || std::string(brand->value) == "qt  " ? kMov : kMp4;
  }
  source.refuse("is not a JPEG, PNG, MP4, MOV or MKV file, which can be marked");
}

// Nothing is converted, so a name of another kind would be a false one.
void check_name(const TagJob& job, const Kind& kind) {
  const std::string wanted = extension_of(job.to);
  const bool fits = std::find(kind.extensions.begin(), kind.extensions.end(), wanted) != kind.extensions.end();
  if (job.in_place || fits || wanted == extension_of(job.from)) return;
  throw Failure(ExitCode::usage, job.to + ": the name must end in " + *kind.extensions.begin() + ", as " + job.from + " is " +
                                     kind.name + " and stays one");
}

TagJob make_job(const std::string& from, const std::string& to) {
  for (const std::string& name : {from, to}) {
    if (name == "-") throw Failure(ExitCode::usage, "-: only files can be marked");
  }
  struct stat info = {};
  if (::stat(from.c_str(), &info) != 0) throw system_failure(ExitCode::input, from, "can't be opened");
  if (!S_ISREG(info.st_mode)) throw Failure(ExitCode::input, from + ": is not a regular file");
  std::error_code none;
  const bool in_place = to.empty() || std::filesystem::equivalent(from, to, none);
  return {from, in_place ? from : to, in_place};
}

void mark(const TagJob& job) {
  Container source(job.from);
  const Kind& kind = recognise(source);
  check_name(job, kind);
  if (kind.muxer) {
    tag_clip(job, source, *av_guess_format(kind.muxer, nullptr, nullptr));
  } else {
    tag_picture(job, source);
  }
}

}  // namespace

bool tag_file(const std::string& from, const std::string& to) {
  const TagJob job = make_job(from, to);
  const InterruptWatch watch;
  try {
    mark(job);
  } catch (const Failure&) {
    if (!interrupted()) throw;  // else it is only that reading ended
  }
  return !interrupted();
}

}  // namespace biseam::tool
