// Single samples of frames in any pixel format, the slow way.
#pragma once

#include <gtest/gtest.h>

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "media/libav.hpp"

namespace biseam::test {

inline const AVPixFmtDescriptor& described(const AVFrame& frame) { return *av_pix_fmt_desc_get(AVPixelFormat(frame.format)); }

// All samples 0.
inline tool::Libav<AVFrame> make_frame(AVPixelFormat format, int width, int height) {
  tool::Libav<AVFrame> frame(av_frame_alloc());
  frame->format = format;
  frame->width = width;
  frame->height = height;
  EXPECT_EQ(av_frame_get_buffer(frame.get(), 0), 0);
  for (const AVBufferRef* buffer : frame->buf) {
    if (buffer) std::memset(buffer->data, 0, buffer->size);
  }
  return frame;
}

// Of the component's plane; opacity, the fourth one, has the full size.
inline int columns_of(const AVFrame& frame, int component) {
  return component == 1 || component == 2 ? AV_CEIL_RSHIFT(frame.width, described(frame).log2_chroma_w) : frame.width;
}
inline int rows_of(const AVFrame& frame, int component) {
  return component == 1 || component == 2 ? AV_CEIL_RSHIFT(frame.height, described(frame).log2_chroma_h) : frame.height;
}

// Where nothing has been set before: libav sets bits.
inline void set_sample(AVFrame& frame, int component, int x, int y, unsigned value) {
  const std::uint16_t sample = std::uint16_t(value);
  av_write_image_line(&sample, frame.data, frame.linesize, &described(frame), x, y, component, 1);
}

inline unsigned get_sample(const AVFrame& frame, int component, int x, int y) {
  const std::uint8_t* planes[4] = {frame.data[0], frame.data[1], frame.data[2], frame.data[3]};
  std::uint16_t sample = 0;
  av_read_image_line(&sample, planes, frame.linesize, &described(frame), x, y, component, 1, 0);
  return sample;
}

// value(component, x, y) for every sample, where nothing has been set before.
template <class Value>
void fill(AVFrame& frame, Value value) {
  for (int component = 0; component < described(frame).nb_components; ++component) {
    for (int y = 0; y < rows_of(frame, component); ++y) {
      for (int x = 0; x < columns_of(frame, component); ++x) set_sample(frame, component, x, y, value(component, x, y));
    }
  }
}

}  // namespace biseam::test
