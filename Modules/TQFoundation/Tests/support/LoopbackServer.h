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
#include <sstream>
#include <string>
#include <string_view>
#include <thread>

namespace tq::test {

/// Owns a socket.
class Socket {
 public:
  explicit Socket(int descriptor) : descriptor_(descriptor) {}
  ~Socket() { ::close(descriptor_); }
  Socket(const Socket&) = delete;
  Socket& operator=(const Socket&) = delete;

  [[nodiscard]] int get() const { return descriptor_; }

  /// Returns false if the other side has closed the connection.
  bool send(std::string_view bytes) const {
    while (!bytes.empty()) {
      const ssize_t sent = ::send(descriptor_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
      if (sent <= 0) return false;
      bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
  }

  /// Returns up to `most` bytes; empty if the other side has closed the connection.
  [[nodiscard]] std::string receive(std::size_t most = 65536) const {
    std::string bytes(most, '\0');
    const ssize_t count = ::recv(descriptor_, bytes.data(), most, 0);
    bytes.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return bytes;
  }

 private:
  int descriptor_;
};

/// An HTTP server on the loopback interface, with a page for each path. Each connection serves one
/// request, on its own thread.
class LoopbackServer {
 public:
  struct Request {
    std::string method, path, head, body;

    /// Returns the value of a header, spelled as the client does; empty if there is none.
    [[nodiscard]] std::string header(std::string_view name) const {
      const std::string start = "\r\n" + std::string(name) + ": ";
      const std::size_t at = head.find(start);
      if (at == std::string::npos) return {};
      const std::size_t value = at + start.size();
      return head.substr(value, head.find('\r', value) - value);
    }
  };
  using Page = std::function<void(const Socket&, const Request&)>;

  /// @param connected  handles connections instead of the pages
  explicit LoopbackServer(std::map<std::string, Page> pages,
                          std::function<void(const Socket&)> connected = nullptr)
      : pages_(std::move(pages)), connected_(std::move(connected)) {
    ::setenv("no_proxy", "127.0.0.1", 1);  // ignore the machine's proxy
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

  /// Returns a response with a known length.
  static std::string page(std::string_view status, std::string_view body,
                          std::string_view headers = {}) {
    return "HTTP/1.1 " + std::string(status) + "\r\n" + std::string(headers) +
           "Content-Length: " + std::to_string(body.size()) + "\r\nConnection: close\r\n\r\n" +
           std::string(body);
  }

 private:
  void answer(const Socket& socket) {
    if (connected_) return connected_(socket);
    Request request;
    const auto receiveMore = [&socket](std::string& to) {
      const std::string more = socket.receive();
      to += more;
      return !more.empty();
    };
    std::size_t end;
    while ((end = request.head.find("\r\n\r\n")) == std::string::npos) {
      if (!receiveMore(request.head)) return;
    }
    request.body = request.head.substr(end + 4);
    request.head.resize(end);
    const std::size_t length = std::stoul("0" + request.header("Content-Length"));
    while (request.body.size() < length) {
      if (!receiveMore(request.body)) return;
    }
    std::istringstream(request.head) >> request.method >> request.path;
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
