#include "clip/write/index_bytes.hpp"

#include <algorithm>
#include <new>
#include <utility>

namespace biseam::tool {
namespace {

constexpr int kBufferBytes = 1 << 16;

}  // namespace

IndexBytes::IndexBytes() {
  auto* buffer = static_cast<unsigned char*>(av_malloc(kBufferBytes));
  if (!buffer) throw std::bad_alloc();
  context_.reset(avio_alloc_context(buffer, kBufferBytes, 1, this, nullptr, write_bytes, seek_bytes));
  if (context_) return;
  av_free(buffer);
  throw std::bad_alloc();
}

int IndexBytes::write_bytes(void* opaque, std::uint8_t* from, int count) noexcept {
  auto* self = static_cast<IndexBytes*>(opaque);
  const std::int64_t begin = self->at_;
  const int gap = self->keeps_ ? 0 : 1;
  self->at_ += count + gap;
  self->context_->pos += gap;
  self->end_ = std::max(self->end_, self->at_);
  if (!self->keeps_ || begin < self->kept_from_) return count;
  try {
    const std::size_t place = std::size_t(begin - self->kept_from_);
    self->kept_.resize(std::max(self->kept_.size(), place + std::size_t(count)));
    std::copy(from, from + count, self->kept_.begin() + std::ptrdiff_t(place));
  } catch (const std::bad_alloc&) {
    self->is_short_ = true;
    return AVERROR(ENOMEM);
  }
  return count;
}

std::int64_t IndexBytes::seek_bytes(void* opaque, std::int64_t offset, int whence) noexcept {
  auto* self = static_cast<IndexBytes*>(opaque);
  if (whence & AVSEEK_SIZE) return self->end_;
  const int from = whence & ~AVSEEK_FORCE;
  self->at_ = offset + (from == SEEK_CUR ? self->at_ : from == SEEK_END ? self->end_ : 0);
  return self->at_;
}

Bytes IndexBytes::take() {
  avio_flush(context_.get());
  if (is_short_) throw std::bad_alloc();
  keeps_ = false;
  return std::exchange(kept_, {});
}

void IndexBytes::keep() {
  avio_flush(context_.get());
  kept_from_ = at_;
  keeps_ = true;
}

}  // namespace biseam::tool
