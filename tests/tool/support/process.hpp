// Runs a program without a shell and collects what it says.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <string>
#include <vector>

extern "C" char** environ;

namespace biseam::test {

struct Finished {
  int exit_code = -1;  // negative: ended by a signal
  std::string out, err;
};

struct Pipe {
  std::array<int, 2> ends = {-1, -1};
  Pipe() {
    if (pipe2(ends.data(), O_CLOEXEC) != 0) ADD_FAILURE() << "no pipe";
  }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;
  ~Pipe() {
    close_end(0);
    close_end(1);
  }
  void close_end(std::size_t end) {
    if (ends[end] >= 0) ::close(ends[end]);
    ends[end] = -1;
  }
};

// Moves bytes until the child has closed both its outputs; both directions at once, so that neither side waits forever.
inline void exchange(Pipe& in, Pipe& out, Pipe& err, const std::string& input, Finished& finished) {
  std::size_t sent = 0;
  while (out.ends[0] >= 0 || err.ends[0] >= 0) {
    pollfd watched[3] = {{in.ends[1], POLLOUT, 0}, {out.ends[0], POLLIN, 0}, {err.ends[0], POLLIN, 0}};
    if (poll(watched, 3, -1) < 0) break;
    if (watched[0].revents != 0) {
      const ssize_t count = ::write(in.ends[1], input.data() + sent, input.size() - sent);
      if (count > 0) sent += std::size_t(count);
      if (count <= 0 || sent == input.size()) in.close_end(1);
    }
    const auto receive = [](Pipe& pipe, short events, std::string& text) {
      char buffer[1 << 16];
      if (events == 0) return;
      const ssize_t count = ::read(pipe.ends[0], buffer, sizeof buffer);
      if (count > 0) text.append(buffer, std::size_t(count));
      if (count <= 0) pipe.close_end(0);
    };
    receive(out, watched[1].revents, finished.out);
    receive(err, watched[2].revents, finished.err);
  }
}

// arguments[0] is the program's path.  out_path, when given, takes standard output in place of Finished::out.
inline Finished run(std::vector<std::string> arguments, const std::string& input = "", const std::string& out_path = "") {
  std::signal(SIGPIPE, SIG_IGN);
  Finished finished;
  Pipe in, out, err;
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, in.ends[0], 0);
  if (out_path.empty()) {
    posix_spawn_file_actions_adddup2(&actions, out.ends[1], 1);
  } else {
    posix_spawn_file_actions_addopen(&actions, 1, out_path.c_str(), O_WRONLY, 0);
  }
  posix_spawn_file_actions_adddup2(&actions, err.ends[1], 2);
  std::vector<char*> words;
  for (std::string& argument : arguments) words.push_back(argument.data());
  words.push_back(nullptr);
  pid_t child = -1;
  const int failed = posix_spawn(&child, words[0], &actions, nullptr, words.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  in.close_end(0);
  out.close_end(1);
  err.close_end(1);
  if (failed != 0) {
    ADD_FAILURE() << "can't run " << arguments[0];
    return finished;
  }
  exchange(in, out, err, input, finished);
  int status = 0;
  waitpid(child, &status, 0);
  finished.exit_code = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  return finished;
}

}  // namespace biseam::test
