// Ctrl-C and TERM as a question that long work asks now and then.
#pragma once

namespace biseam::tool {

// As long as one lives, the first signal is only remembered; the next one ends the program.  A signal that was ignored before
// stays ignored.
class InterruptWatch {
 public:
  InterruptWatch();
  InterruptWatch(const InterruptWatch&) = delete;
  InterruptWatch& operator=(const InterruptWatch&) = delete;
  ~InterruptWatch();
};

bool interrupted();

// Ends every reading, as an interrupt would: what is read is of no use any more.
void stop_reading();
bool is_reading_stopped();  // by either

}  // namespace biseam::tool
