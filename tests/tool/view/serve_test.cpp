#include "view/serve.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <thread>

#include "tool/support/expect_failure.hpp"
#include "tool/support/scratch_folder.hpp"
#include "tool/view/ask.hpp"

namespace biseam::tool {
namespace {

using namespace test;

// A port of this machine that nobody else gets while it lives; closed it is free.
class TakenPort {
 public:
  TakenPort() : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t bytes = sizeof address;
    auto* const plain = reinterpret_cast<sockaddr*>(&address);
    EXPECT_TRUE(::bind(socket_, plain, bytes) == 0 && ::listen(socket_, 1) == 0 && ::getsockname(socket_, plain, &bytes) == 0);
    port_ = ntohs(address.sin_port);
  }
  TakenPort(const TakenPort&) = delete;
  TakenPort& operator=(const TakenPort&) = delete;
  ~TakenPort() { ::close(socket_); }
  int port() const { return port_; }

 private:
  int socket_, port_;
};

class Serve : public testing::Test {
 protected:
  Serve() {
    write_bytes(folder_ / "p.png", "a picture");
    files_.panorama.path = folder_ / "p.png";
    files_.panorama.media = Media::png;
  }

  ScratchFolder folder_;
  PageFiles files_;
};

TEST_F(Serve, AnswersUntilASignalComes) {
  const int port = TakenPort().port();
  sigset_t signals, before;
  sigemptyset(&signals);
  sigaddset(&signals, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &signals, &before);  // of the thread that serves, from its beginning
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  std::thread serving([&] { serve("<page>", files_, port); });
  int line = -1;
  for (int tries = 0; tries < 1000 && (line = connect_to(port)) < 0; ++tries) {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  ::close(line);
  const Answer page = ask(port, "GET /"), panorama = ask(port, "GET /panorama.png"), other = ask(port, "GET /%70anorama.png");
  pthread_kill(serving.native_handle(), SIGTERM);
  serving.join();
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "http://127.0.0.1:" + std::to_string(port) + "/\n");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "biseam: serving " + files_.panorama.path + " until Ctrl-C\n");
  EXPECT_EQ(page.body, "<page>");
  EXPECT_EQ(panorama.body, "a picture");
  EXPECT_EQ(other.status, 404);  // escapes stay what they are
  EXPECT_LT(connect_to(port), 0);
}

TEST_F(Serve, APortThatIsTakenIsNamed) {
  const TakenPort taken;
  const auto [code, line] = failure_of([&] { serve("<page>", files_, taken.port()); });
  EXPECT_EQ(code, ExitCode::output);
  expect_one_line_naming(line, "port " + std::to_string(taken.port()) + ": can't be listened on");
}

TEST_F(Serve, AFileThatCantBeOpenedIsNamed) {
  files_.panorama.path = folder_ / "none.png";
  const auto [code, line] = failure_of([&] { serve("<page>", files_, 0); });
  EXPECT_EQ(code, ExitCode::input);
  expect_one_line_naming(line, files_.panorama.path);
}

}  // namespace
}  // namespace biseam::tool
