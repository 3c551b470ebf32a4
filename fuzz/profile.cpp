// Camera profiles: a text is refused in one line, or read; what was read is written and read again without a difference.
#include "profile/read.hpp"

#include <cstdint>
#include <string>

#include "fuzz/expect.hpp"
#include "profile/write.hpp"

using namespace biseam;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  profile::CameraSettings settings;
  try {
    settings = profile::read(text, "camera.toml");
  } catch (const profile::Error& error) {
    fuzz::expect(std::string(error.what()).starts_with("camera.toml: "), "an error names the file");
    return 0;
  }
  const std::string written = profile::write(settings, "A comment.");
  fuzz::expect(profile::write(profile::read(written, "written.toml"), "A comment.") == written, "what is written is read");
  return 0;
}
