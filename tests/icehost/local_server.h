#ifndef ICESCRIPT_TESTS_ICEHOST_LOCAL_SERVER_H_
#define ICESCRIPT_TESTS_ICEHOST_LOCAL_SERVER_H_

#include <asio.hpp>
#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <utility>

inline std::string ReadFrom(asio::ip::tcp::socket& client) {
  std::string bytes(4096, '\0');
  bytes.resize(client.read_some(asio::buffer(bytes)));
  return bytes;
}

// A server on a port of this machine. It serves one client after another until it is destroyed.
class LocalServer {
 public:
  // Serves one client, up to the end of what the server sends. It may throw an asio::system_error,
  // for example when the client has left.
  using Session = std::function<void(asio::ip::tcp::socket& client)>;

  explicit LocalServer(Session session)
      : session_(std::move(session)), thread_([this] { Serve(); }) {}
  ~LocalServer() {
    ending_ = true;
    asio::error_code refused;
    asio::ip::tcp::socket(context_).connect(acceptor_.local_endpoint(), refused);
    thread_.join();
  }
  LocalServer(const LocalServer&) = delete;
  LocalServer& operator=(const LocalServer&) = delete;

  std::string Name() const {
    return "127.0.0.1:" + std::to_string(acceptor_.local_endpoint().port());
  }

 private:
  void Serve() {
    for (;;) {
      asio::ip::tcp::socket client = acceptor_.accept();
      if (ending_) return;
      try {
        session_(client);
        // Closing with unread bytes would reset the connection, so the client must close first.
        client.shutdown(asio::ip::tcp::socket::shutdown_send);
        for (;;) ReadFrom(client);
      } catch (const asio::system_error&) {
        // The client has left.
      }
    }
  }

  asio::io_context context_;
  asio::ip::tcp::acceptor acceptor_{context_, {asio::ip::address_v4::loopback(), 0}};
  Session session_;
  std::atomic<bool> ending_{false};
  std::thread thread_;
};

#endif  // ICESCRIPT_TESTS_ICEHOST_LOCAL_SERVER_H_
