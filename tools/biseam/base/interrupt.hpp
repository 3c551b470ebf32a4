// Ctrl-C, TERM and the terminal that goes away: as a question that long work asks now and then, else as an end without remains.
#pragma once

namespace biseam::tool {

// From now on INT, TERM and HUP end the program as ever, but leave no unfinished file.  What is ignored stays
// ignored, as in a shell's background jobs.
void leave_nothing_on_signals();

// As long as one lives, the first of these signals is only remembered.
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
void resume_reading();
bool is_reading_stopped();  // by either

}  // namespace biseam::tool
