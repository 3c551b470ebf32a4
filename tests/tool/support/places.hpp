// Where what tests run and read lies.  One file alone knows the folders of a build, so that compiler caches serve all of them.
#pragma once

namespace biseam::test {

extern const char* const kTool;          // the program
extern const char* const kSourceFolder;  // the project's, without a slash at its end

}  // namespace biseam::test
