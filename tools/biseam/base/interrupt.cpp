#include "base/interrupt.hpp"

#include <atomic>
#include <csignal>

namespace biseam::tool {
namespace {

std::atomic<bool> asked = false, given_up = false;
static_assert(std::atomic<bool>::is_always_lock_free);  // else a signal handler may not use it

constexpr int kSignals[] = {SIGINT, SIGTERM};
struct sigaction before[2];

void remember(int) { asked = true; }

}  // namespace

InterruptWatch::InterruptWatch() {
  asked = given_up = false;
  for (int k = 0; k < 2; ++k) {
    struct sigaction action = {};
    action.sa_handler = remember;
    action.sa_flags = SA_RESTART | int(SA_RESETHAND);
    sigemptyset(&action.sa_mask);
    sigaction(kSignals[k], nullptr, &before[k]);
    if (before[k].sa_handler != SIG_IGN) sigaction(kSignals[k], &action, nullptr);
  }
}

InterruptWatch::~InterruptWatch() {
  for (int k = 0; k < 2; ++k) sigaction(kSignals[k], &before[k], nullptr);
}

bool interrupted() { return asked; }
void stop_reading() { given_up = true; }
bool is_reading_stopped() { return asked || given_up; }

}  // namespace biseam::tool
