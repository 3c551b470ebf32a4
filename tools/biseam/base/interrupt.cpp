#include "base/interrupt.hpp"

#include <atomic>
#include <csignal>

#include "base/unfinished.hpp"

namespace biseam::tool {
namespace {

std::atomic<bool> watched = false, asked = false, given_up = false;
static_assert(std::atomic<bool>::is_always_lock_free);  // else a signal handler may not use it

void on_signal(int number) {
  if (watched && !asked.exchange(true)) return;
  remove_unfinished_files();
  std::signal(number, SIG_DFL);
  std::raise(number);  // waits until this handler returns
}

}  // namespace

void leave_nothing_on_signals() {
  for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction action = {}, before = {};
    action.sa_handler = on_signal;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    sigaction(number, nullptr, &before);
    if (before.sa_handler != SIG_IGN) sigaction(number, &action, nullptr);
  }
}

InterruptWatch::InterruptWatch() {
  leave_nothing_on_signals();
  asked = given_up = false;
  watched = true;
}

InterruptWatch::~InterruptWatch() { watched = false; }

bool interrupted() { return asked; }
void stop_reading() { given_up = true; }
void resume_reading() { given_up = false; }
bool is_reading_stopped() { return asked || given_up; }

}  // namespace biseam::tool
