// A client of the page's server that says exactly what it is told to.
#pragma once

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <string>

namespace biseam::test {

// A connection to this machine's port, or -1.
inline int connect_to(int port) {
  const int line = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_port = htons(std::uint16_t(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  if (::connect(line, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0) return line;
  ::close(line);
  return -1;
}

struct Answer {
  int status = 0;
  std::string head, body;

  bool says(const std::string& line) const { return head.find("\r\n" + line + "\r\n") != std::string::npos; }
};

// fields: further lines, each with its end.
inline Answer ask(int port, const std::string& request, const std::string& fields = "") {
  const int line = connect_to(port);
  EXPECT_GE(line, 0);
  std::string host = fields.find("Host:") == std::string::npos ? "Host: localhost:" + std::to_string(port) + "\r\n" : "";
  const std::string all = request + " HTTP/1.1\r\n" + host + "Connection: close\r\n" + fields + "\r\n";
  EXPECT_EQ(::send(line, all.data(), all.size(), MSG_NOSIGNAL), ssize_t(all.size()));
  std::string got;
  char buffer[4096];
  for (ssize_t count; (count = ::read(line, buffer, sizeof buffer)) > 0;) got.append(buffer, std::size_t(count));
  ::close(line);
  const std::size_t end = got.find("\r\n\r\n");
  EXPECT_NE(end, got.npos) << got;
  Answer answer;
  if (end == got.npos) return answer;
  answer.status = std::atoi(got.c_str() + got.find(' '));
  answer.head = got.substr(0, end + 2);
  answer.body = got.substr(end + 4);
  return answer;
}

}  // namespace biseam::test
