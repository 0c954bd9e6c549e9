// A simple remote_bitbang server of the simulated target that writes each answer separately. usage:
// bit_server nagle|nodelay. It prints its port and serves one client after another. For each client
// it prints the number of round trips: how often the client sent something after an answer.
#include <asio.hpp>
#include <cstdio>
#include <string>

#include "host/probe/bitbang_session.h"
#include "host/probe/sim_port.h"

namespace {

using asio::ip::tcp;

int Serve(tcp::socket client, bool no_delay) {
  client.set_option(tcp::no_delay(no_delay));
  icehost::SimPort port{icehost::TargetOptions{}};
  icehost::BitbangSession session(port);
  std::string bytes(4096, '\0');
  asio::error_code gone;
  bool open = true;
  bool answered = false;
  int round_trips = 0;
  while (open && !gone) {
    const std::size_t received = client.read_some(asio::buffer(bytes), gone);
    if (answered) ++round_trips;
    answered = false;
    for (std::size_t i = 0; i < received && open; ++i) {
      std::string answer;
      open = session.Feed({&bytes[i], 1}, answer);
      if (answer.empty()) continue;
      asio::write(client, asio::buffer(answer), gone);
      answered = true;
    }
  }
  return round_trips;
}

}  // namespace

int main(int argc, char** argv) try {
  const bool no_delay = argc > 1 && std::string(argv[1]) == "nodelay";
  asio::io_context io;
  tcp::acceptor acceptor(io, {asio::ip::address_v4::loopback(), 0});
  std::printf("%d\n", acceptor.local_endpoint().port());
  std::fflush(stdout);
  for (;;) {
    std::printf("%d\n", Serve(acceptor.accept(), no_delay));
    std::fflush(stdout);
  }
} catch (const std::exception& error) {
  std::fprintf(stderr, "%s\n", error.what());
  return 1;
}
