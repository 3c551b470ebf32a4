#include "view/serve.hpp"

#include <arpa/inet.h>
#include <netinet/in.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <memory>

#include "base/failure.hpp"
#include "view/site.hpp"

namespace biseam::tool {
namespace {

constexpr unsigned kThreads = 4;  // a page asks for its files over several connections

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
  void wait() const {
    int which = 0;
    sigwait(&set_, &which);
  }

 private:
  sigset_t set_ = {};
};

MHD_Result on_request(void* site, MHD_Connection* connection, const char* address, const char* method, const char*, const char*,
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
  return static_cast<const Site*>(site)->answer(connection, address, method);
}

// Escapes stay in the address: those that are served have none, and an escaped 0 can't cut one short.
std::size_t keep_escapes(void*, MHD_Connection*, char* text) { return std::strlen(text); }

Daemon start(const Site& site, int port) {
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_port = htons(std::uint16_t(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  const unsigned flags = MHD_USE_AUTO | MHD_USE_INTERNAL_POLLING_THREAD;
  return Daemon(MHD_start_daemon(flags, std::uint16_t(port), nullptr, nullptr, on_request, const_cast<Site*>(&site),
                                 MHD_OPTION_SOCK_ADDR, &address, MHD_OPTION_THREAD_POOL_SIZE, kThreads,
                                 MHD_OPTION_UNESCAPE_CALLBACK, keep_escapes, nullptr, MHD_OPTION_END));
}

}  // namespace

void serve(const std::string& page, const PageFiles& files, int port) {
  const Site site(page, files);
  const EndSignals signals;
  errno = 0;
  const Daemon daemon = start(site, port);
  if (!daemon) throw system_failure(ExitCode::output, "port " + std::to_string(port), "can't be listened on");
  const MHD_DaemonInfo* bound = MHD_get_daemon_info(daemon.get(), MHD_DAEMON_INFO_BIND_PORT);
  std::printf("http://127.0.0.1:%d/\n", bound ? bound->port : port);
  std::fflush(stdout);
  notice("serving " + files.panorama.path + " until Ctrl-C");
  signals.wait();
}

}  // namespace biseam::tool
