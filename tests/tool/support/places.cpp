#include "tool/support/places.hpp"

namespace biseam::test {

const char* const kTool = BISEAM_TOOL;
const char* const kSourceFolder = BISEAM_SOURCE_FOLDER;

}  // namespace biseam::test
