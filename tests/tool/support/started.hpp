// A program that is still running.
#pragma once

#include <sys/ioctl.h>
#include <sys/socket.h>

#include <chrono>
#include <filesystem>
#include <thread>

#include "tool/support/process.hpp"

namespace biseam::test {

class Started {
 public:
  enum class Input { pipe, breakable };

  explicit Started(std::vector<std::string> arguments, Input input = Input::pipe) {
    std::signal(SIGPIPE, SIG_IGN);
    if (input == Input::breakable) make_breakable();
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, in_.ends[0], 0);
    posix_spawn_file_actions_adddup2(&actions, out_.ends[1], 1);
    posix_spawn_file_actions_adddup2(&actions, err_.ends[1], 2);
    std::vector<char*> words;
    for (std::string& argument : arguments) words.push_back(argument.data());
    words.push_back(nullptr);
    if (posix_spawn(&child_, words[0], &actions, nullptr, words.data(), environ) != 0) ADD_FAILURE() << "can't run";
    posix_spawn_file_actions_destroy(&actions);
    in_.close_end(0);
    out_.close_end(1);
    err_.close_end(1);
  }

  void send(const std::string& bytes) {
    for (std::size_t sent = 0; sent < bytes.size();) {
      const ssize_t count = ::write(in_.ends[1], bytes.data() + sent, bytes.size() - sent);
      if (count <= 0) return;
      sent += std::size_t(count);
    }
  }

  // Until all that was sent through a pipe is read, or a while is over.
  void wait_until_read() const {
    for (int tries = 0; tries < 3000; ++tries) {
      int unread = 1;
      if (::ioctl(in_.ends[1], FIONREAD, &unread) == 0 && unread == 0) return;
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    ADD_FAILURE() << "nothing is read";
  }

  // Until a file in the folder that was not there before holds something, or a while is over.
  void wait_for_bytes_in(const std::filesystem::path& folder) const {
    for (int tries = 0; tries < 1000; ++tries) {
      for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        const bool is_unfinished = entry.path().extension() != ".mp4";
        if (is_unfinished && entry.is_regular_file()) return;
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    ADD_FAILURE() << "nothing is written";
  }

  void signal(int number) const { ::kill(child_, number); }

  // What was sent can still be read; then reading fails where the input is breakable, and a pipe has its end.
  void break_input() { in_.close_end(1); }

  // The input stays open, or broken.
  Finished finish() {
    Finished finished;
    Pipe no_input;
    no_input.close_end(0);
    no_input.close_end(1);
    exchange(no_input, out_, err_, "", finished);
    int status = 0;
    waitpid(child_, &status, 0);
    finished.exit_code = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    return finished;
  }

 private:
  // A socket that is closed while it holds unread bytes resets its peer.
  void make_breakable() {
    in_.close_end(0);
    in_.close_end(1);
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, in_.ends.data()) != 0) ADD_FAILURE() << "no sockets";
    if (::write(in_.ends[0], "", 1) != 1) ADD_FAILURE() << "can't write";
  }

  Pipe in_, out_, err_;
  pid_t child_ = -1;
};

}  // namespace biseam::test
