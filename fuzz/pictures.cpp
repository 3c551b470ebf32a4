// Picture files, and clips of which the first picture is taken: refused in one line, or a picture with even sides.
#include "base/failure.hpp"
#include "fuzz/input.hpp"
#include "fuzz/media_file.hpp"
#include "picture/read_picture.hpp"

using namespace biseam;
using namespace biseam::tool;

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  fuzz::be_quiet();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const fuzz::MemoryFile file(data, size);
  try {
    Container opened(file.path());
    if (fuzz::takes_long(opened)) return 0;
    const PictureFile picture = read_picture_file(opened);
    const Nv12& samples = picture.picture;
    fuzz::expect(samples.width >= 2 && samples.height >= 2 && samples.width % 2 == 0 && samples.height % 2 == 0, "even sides");
    const std::size_t luma = std::size_t(samples.width) * std::size_t(samples.height);
    fuzz::expect(samples.luma.size() == luma && samples.chroma.size() == luma / 2, "all samples are there");
    const int orientation = picture.metadata.orientation();
    fuzz::expect(orientation >= 1 && orientation <= 8, "one of eight orientations");
  } catch (const Failure& refusal) {
    fuzz::expect(fuzz::is_one_line(refusal.what()), "a refusal is one line");
  }
  return 0;
}
