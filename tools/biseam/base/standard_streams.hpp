// The three streams a program starts with.
#pragma once

namespace biseam::tool {

// Takes the places of those that are closed, so that no file that is opened later becomes one of them.  Reading and writing
// them fails as before.
void hold_standard_streams();

// Everything printed is written out.  Throws Failure (output) when some of it could not be.
void flush_standard_output();

}  // namespace biseam::tool
