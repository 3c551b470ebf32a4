// Clips for tests: painted pictures with sound, other streams and metadata, written by libav.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "clip/read/clip_facts.hpp"
#include "media/libav.hpp"
#include "picture/picture.hpp"

namespace biseam::test {

struct Chapter {
  std::int64_t start, end;  // milliseconds
  std::string title;
};

struct ClipSpec {
  std::string encoder = "libx264";
  std::map<std::string, std::string> options = {{"qp", "0"}, {"preset", "ultrafast"}};  // lossless
  AVPixelFormat format = AV_PIX_FMT_YUV420P;
  tool::Colour colour;
  AVRational base{1, 12800};
  AVRational pixel{0, 1};              // width and height of one
  std::vector<std::int32_t> display;   // matrix of nine numbers, row by row
  std::vector<tool::Nv12> second;      // pictures of a further video stream, encoded and timed as the first
  std::vector<std::int64_t> times;     // of the pictures; none: one every 512
  double sound = 0;                    // seconds of a rising tone, AAC
  std::vector<std::string> subtitles;  // one every 200 ms: mov_text or subrip, as the container likes
  int motion_packets = 0;              // of 'gpmd' data, one every 100 ms
  std::string attachment;              // contents of an attached font
  bool cover = false;                  // a small PNG
  std::vector<Chapter> chapters;
  std::map<std::string, std::string> metadata, sound_metadata, picture_metadata;
  std::map<std::string, std::string> muxer_options;
  int sound_disposition = 0, subtitle_disposition = 0;
};

// Fills frame number index; the frame has the spec's format and the wanted size.
using Painter = std::function<void(int index, AVFrame& frame)>;

// The kind of the container follows from the name.
void write_clip(const std::string& path, const ClipSpec& spec, tool::Size size, int frames, const Painter& paint);
void write_clip(const std::string& path, const ClipSpec& spec, const std::vector<tool::Nv12>& pictures);

// Puts 4:2:0 samples into a frame of any format with 8 bits and 4:2:0.
void fill_frame(const tool::Nv12& picture, AVFrame& frame);

}  // namespace biseam::test
