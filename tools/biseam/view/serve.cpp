#include "view/serve.hpp"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <memory>

#include "base/failure.hpp"
#include "view/site.hpp"
#include "view/visitors.hpp"

namespace biseam::tool {
namespace {

constexpr unsigned kThreads = 4;                       // a page asks for its files over several connections
constexpr std::chrono::milliseconds kLookAround{500};  // between looks for requests that take too long

struct Stop {
  void operator()(MHD_Daemon* daemon) const { MHD_stop_daemon(daemon); }
};
using Daemon = std::unique_ptr<MHD_Daemon, Stop>;

// Waits for them here, so that the server's threads, which inherit this, never see them.
class EndSignals {
 public:
  EndSignals() {
    sigemptyset(&set_);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) sigaddset(&set_, signal);
    pthread_sigmask(SIG_BLOCK, &set_, nullptr);
  }
  // Whether one has come, waiting so long for it.
  bool wait(std::chrono::milliseconds time) const {
    const timespec span = {time.count() / 1000, long(time.count() % 1000) * 1000000};
    return sigtimedwait(&set_, nullptr, &span) > 0;
  }

 private:
  sigset_t set_ = {};
};

// A socket that listens on the loopback address; its port is known before the first request comes.
class Listener {
 public:
  explicit Listener(int port) : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(std::uint16_t(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    auto* plain = reinterpret_cast<sockaddr*>(&address);
    socklen_t bytes = sizeof address;
    const int on = 1;
    const bool listens = socket_ >= 0 && ::setsockopt(socket_, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) == 0 &&
                         ::bind(socket_, plain, bytes) == 0 && ::listen(socket_, SOMAXCONN) == 0 &&
                         ::getsockname(socket_, plain, &bytes) == 0;
    port_ = ntohs(address.sin_port);
    if (listens) return;
    const Failure failure = system_failure(ExitCode::output, "port " + std::to_string(port), "can't be listened on");
    if (socket_ >= 0) ::close(socket_);
    throw failure;
  }
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;
  ~Listener() {
    if (socket_ >= 0) ::close(socket_);
  }

  int port() const { return port_; }
  int socket() const { return socket_; }
  void give_away() { socket_ = -1; }

 private:
  int socket_, port_ = 0;
};

struct Server {
  const Site& site;
  Visitors visitors;
};

void on_connection(void* to, MHD_Connection* connection, void**, MHD_ConnectionNotificationCode code) {
  Visitors& visitors = static_cast<Server*>(to)->visitors;
  if (code == MHD_CONNECTION_NOTIFY_CLOSED) return visitors.leave(connection);
  const MHD_ConnectionInfo* info = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD);
  if (info) visitors.arrive(connection, info->connect_fd, Visitors::Clock::now());
}

void on_answered(void* to, MHD_Connection* connection, void**, MHD_RequestTerminationCode) {
  static_cast<Server*>(to)->visitors.finish(connection, Visitors::Clock::now());
}

MHD_Result on_request(void* to, MHD_Connection* connection, const char* address, const char* method, const char*, const char*,
                      std::size_t* body_bytes, void** seen) {
  static char mark;
  if (*seen == nullptr) {  // the headers are there; a body, which nothing here wants, may follow
    *seen = &mark;
    return MHD_YES;
  }
  if (*body_bytes != 0) {
    *body_bytes = 0;
    return MHD_YES;
  }
  auto& server = *static_cast<Server*>(to);
  server.visitors.ask(connection, Visitors::Clock::now());
  return server.site.answer(connection, address, method);
}

// Escapes stay in the address: those that are served have none, and an escaped 0 can't cut one short.
std::size_t keep_escapes(void*, MHD_Connection*, char* text) { return std::strlen(text); }

Daemon start(Server& server, Listener& listener) {
  // The library stops accepting at its own limit, so that one stays out of reach.
  constexpr unsigned kLimit = 2 * Visitors::kMost, kTimeout = unsigned(Visitors::kStandstill.count());
  const unsigned flags = MHD_USE_AUTO | MHD_USE_INTERNAL_POLLING_THREAD;
  Daemon daemon(MHD_start_daemon(flags, 0, nullptr, nullptr, on_request, &server, MHD_OPTION_LISTEN_SOCKET, listener.socket(),
                                 MHD_OPTION_THREAD_POOL_SIZE, kThreads, MHD_OPTION_CONNECTION_LIMIT, kLimit,
                                 MHD_OPTION_CONNECTION_TIMEOUT, kTimeout, MHD_OPTION_NOTIFY_CONNECTION, on_connection, &server,
                                 MHD_OPTION_NOTIFY_COMPLETED, on_answered, &server, MHD_OPTION_UNESCAPE_CALLBACK, keep_escapes,
                                 nullptr, MHD_OPTION_END));
  if (!daemon) throw system_failure(ExitCode::output, "port " + std::to_string(listener.port()), "can't be served on");
  listener.give_away();  // the daemon closes it
  return daemon;
}

}  // namespace

void serve(const std::string& page, const PageFiles& files, int port) {
  Listener listener(port);
  const Site site(page, files, listener.port());
  Server server{site, {}};
  const EndSignals signals;
  const Daemon daemon = start(server, listener);
  std::printf("http://127.0.0.1:%d/\n", listener.port());
  std::fflush(stdout);
  notice("serving " + files.panorama.path + " until Ctrl-C");
  while (!signals.wait(kLookAround)) server.visitors.end_overdue(Visitors::Clock::now());
}

}  // namespace biseam::tool
