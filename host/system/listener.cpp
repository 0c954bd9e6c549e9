#include "host/system/listener.h"

#include <fmt/format.h>

#include <algorithm>
#include <asio/ip/tcp.hpp>
#include <asio/local/stream_protocol.hpp>
#include <filesystem>

#include "host/system/errors.h"
#include "host/system/interrupt.h"

namespace icehost {
namespace {

namespace fs = std::filesystem;
using asio::ip::tcp;

// A socket file that nobody listens at any more is in the way of the next server. Any other file
// stays: connecting to one is refused as well.
void RemoveStaleSocket(const std::string& path) {
  std::error_code ignored;
  if (!fs::is_socket(fs::symlink_status(path, ignored))) return;
  asio::error_code error;
  asio::local::stream_protocol::socket(EventLoop()).connect(path, error);
  if (error == asio::error::connection_refused) fs::remove(path, ignored);
}

StreamProtocol::endpoint Address(const Endpoint& endpoint) {
  if (endpoint.IsUnix()) return asio::local::stream_protocol::endpoint(endpoint.path);
  return tcp::resolver(EventLoop())
      .resolve(endpoint.host, endpoint.port, tcp::resolver::passive)
      .begin()
      ->endpoint();
}

tcp::endpoint TcpAddress(const StreamProtocol::endpoint& generic) {
  tcp::endpoint address;
  std::copy_n(reinterpret_cast<const char*>(generic.data()), generic.size(),
              reinterpret_cast<char*>(address.data()));
  return address;
}

}  // namespace

Listener::Listener(const Endpoint& endpoint) try : endpoint_(endpoint), acceptor_(EventLoop()) {
  if (endpoint.IsUnix()) RemoveStaleSocket(endpoint.path);
  const StreamProtocol::endpoint address = Address(endpoint);
  acceptor_.open(address.protocol());
  acceptor_.set_option(asio::socket_base::reuse_address(true));
  acceptor_.bind(address);
  acceptor_.listen();
} catch (const asio::system_error& error) {
  throw IoError(fmt::format("{}: cannot listen: {}", endpoint.Name(), error.code().message()));
}

Listener::~Listener() {
  std::error_code ignored;
  if (endpoint_.IsUnix()) fs::remove(endpoint_.path, ignored);
}

std::string Listener::Name() const {
  if (endpoint_.IsUnix()) return endpoint_.Name();
  const unsigned short port = TcpAddress(acceptor_.local_endpoint()).port();
  return Endpoint{endpoint_.host, std::to_string(port), ""}.Name();
}

std::string PeerName(const StreamProtocol::socket& socket) {
  asio::error_code error;
  const StreamProtocol::endpoint peer = socket.remote_endpoint(error);
  if (error || peer.protocol().family() == AF_UNIX) return "";
  const tcp::endpoint address = TcpAddress(peer);
  return Endpoint{address.address().to_string(), std::to_string(address.port()), ""}.Name();
}

}  // namespace icehost
