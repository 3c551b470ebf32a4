// Picture files, and clips of which the first picture is taken: refused in one line, or a picture that the engine takes.
extern "C" {
#include <libavutil/imgutils.h>
}

#include "base/failure.hpp"
#include "fuzz/expect.hpp"
#include "fuzz/input.hpp"
#include "fuzz/media_file.hpp"
#include "media/pixel_format.hpp"
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
    const BiseamPicture samples = engine_picture(*picture.picture);  // throws where the engine doesn't take the format
    fuzz::expect(samples.width >= 1 && samples.height >= 1, "a picture has sides");
    fuzz::expect(av_image_check_size2(unsigned(samples.width), unsigned(samples.height), INT64_MAX,
                                      AVPixelFormat(picture.picture->format), 0, nullptr) >= 0,
                 "its planes can be addressed");
    const int orientation = picture.metadata.orientation();
    fuzz::expect(orientation >= 1 && orientation <= 8, "one of eight orientations");
  } catch (const Failure& refusal) {
    fuzz::expect(fuzz::is_one_line(refusal.what()), "a refusal is one line");
  }
  return 0;
}
