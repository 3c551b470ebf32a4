// Clips: refused in one line, or pictures of one size in order of time.  The last byte chooses where reading begins, and
// whether damage is a refusal.
#include <cstdint>
#include <memory>
#include <optional>

#include "base/failure.hpp"
#include "clip/read/clip_reader.hpp"
#include "fuzz/input.hpp"
#include "fuzz/media_file.hpp"

using namespace biseam;
using namespace biseam::tool;

namespace {

constexpr int kMostPictures = 60;  // repeated ones cost a clip no bytes

void read_all(ClipReader& clip) {
  std::int64_t last = INT64_MIN;
  Size size;
  for (int k = 0; k < kMostPictures; ++k) {
    const std::optional<ClipFrame> frame = clip.next();
    for (const Libav<AVPacket>& packet : clip.take_packets()) {
      fuzz::expect(clip.gives(packet->stream_index), "packets of other streams");
    }
    if (!frame) return;
    const Size now{frame->picture->width, frame->picture->height};
    fuzz::expect(frame->time > last, "times ascend");
    fuzz::expect(now.width >= 2 && now.height >= 2 && (size == Size{} || size == now), "pictures of one size");
    last = frame->time;
    size = now;
  }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  fuzz::be_quiet();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const fuzz::MemoryFile file(data, size);
  const int choice = size == 0 ? 0 : data[size - 1];
  try {
    auto opened = std::make_unique<Container>(file.path());
    if (fuzz::takes_long(*opened)) return 0;
    ClipReader clip(std::move(opened), choice % 2 == 1);
    if (choice % 4 >= 2) clip.start_at(choice * 10000);
    read_all(clip);
  } catch (const Failure& refusal) {
    fuzz::expect(fuzz::is_one_line(refusal.what()), "a refusal is one line");
  }
  return 0;
}
