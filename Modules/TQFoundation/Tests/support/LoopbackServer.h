#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <functional>
#include <list>
#include <map>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

namespace tq::test {

/// A socket that is closed when it goes.
class Socket {
 public:
  explicit Socket(int descriptor) : descriptor_(descriptor) {}
  ~Socket() { ::close(descriptor_); }
  Socket(const Socket&) = delete;
  Socket& operator=(const Socket&) = delete;

  [[nodiscard]] int get() const { return descriptor_; }

  /// False once the other side has gone.
  bool send(std::string_view bytes) const {
    while (!bytes.empty()) {
      const ssize_t sent = ::send(descriptor_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
      if (sent <= 0) return false;
      bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
  }

  /// Up to `most` bytes; empty when the other side has gone.
  [[nodiscard]] std::string receive(std::size_t most = 65536) const {
    std::string bytes(most, '\0');
    const ssize_t count = ::recv(descriptor_, bytes.data(), most, 0);
    bytes.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return bytes;
  }

 private:
  int descriptor_;
};

/// A server on the loopback with one page a path; each connection is answered once, on a thread of
/// its own, and closed.
class LoopbackServer {
 public:
  struct Request {
    std::string method, path, head, body;
  };
  using Page = std::function<void(const Socket&, const Request&)>;

  /// @param connected  answers a connection itself instead of the pages
  explicit LoopbackServer(std::map<std::string, Page> pages,
                          std::function<void(const Socket&)> connected = nullptr)
      : pages_(std::move(pages)), connected_(std::move(connected)) {
    ::setenv("no_proxy", "127.0.0.1", 1);  // whatever the machine is told to go through
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* const plain = reinterpret_cast<sockaddr*>(&address);
    if (::bind(listener_.get(), plain, size) != 0 || ::listen(listener_.get(), 64) != 0 ||
        ::getsockname(listener_.get(), plain, &size) != 0) {
      std::abort();
    }
    port_ = ntohs(address.sin_port);
    acceptor_ = std::jthread([this] {
      for (int accepted; (accepted = ::accept(listener_.get(), nullptr, nullptr)) >= 0;) {
        connections_.emplace_back([this, accepted] { answer(Socket(accepted)); });
      }
    });
  }
  ~LoopbackServer() {
    ::shutdown(listener_.get(), SHUT_RDWR);
    acceptor_.join();
    connections_.clear();
  }

  [[nodiscard]] std::uint16_t port() const { return port_; }
  [[nodiscard]] std::string url(std::string_view path) const {
    return "http://127.0.0.1:" + std::to_string(port_) + std::string(path);
  }

  /// An answer of known length.
  static std::string page(std::string_view status, std::string_view body,
                          std::string_view headers = {}) {
    return "HTTP/1.1 " + std::string(status) + "\r\n" + std::string(headers) +
           "Content-Length: " + std::to_string(body.size()) + "\r\nConnection: close\r\n\r\n" +
           std::string(body);
  }

 private:
  void answer(const Socket& socket) {
    if (connected_) return connected_(socket);
    std::string all;
    std::size_t end;
    while ((end = all.find("\r\n\r\n")) == std::string::npos) {
      const std::string more = socket.receive();
      if (more.empty()) return;
      all += more;
    }
    Request request{{}, {}, all.substr(0, end), all.substr(end + 4)};
    const std::size_t length = request.head.find("Content-Length: ");
    const std::size_t expected =
        length == std::string::npos ? 0 : std::stoul(request.head.substr(length + 16));
    while (request.body.size() < expected) {
      const std::string more = socket.receive();
      if (more.empty()) return;
      request.body += more;
    }
    request.method = all.substr(0, all.find(' '));
    const std::size_t path = request.method.size() + 1;
    request.path = all.substr(path, all.find(' ', path) - path);
    const auto page = pages_.find(request.path);
    if (page == pages_.end()) {
      socket.send(LoopbackServer::page("404 Not Found", "nothing here"));
    } else {
      page->second(socket, request);
    }
  }

  const std::map<std::string, Page> pages_;
  const std::function<void(const Socket&)> connected_;
  const Socket listener_{::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)};
  std::uint16_t port_ = 0;
  std::list<std::jthread> connections_;
  std::jthread acceptor_;
};

}  // namespace tq::test
