#include "host/probe/bitbang_server.h"

#include <utility>

#include "host/system/errors.h"
#include "host/target/pin_names.h"

namespace icehost {
namespace {

// Bounds what is buffered: the answers to so many bytes are sent before more are read.
constexpr std::size_t kReadAtOnce = 4096;

void ServeClient(Socket client, PinPort& port) {
  BitbangSession session(port);
  for (bool open = true; open;) {
    const std::string bytes = client.Receive(kReadAtOnce);
    std::string answers;
    open = !bytes.empty() && session.Feed(bytes, answers);
    client.Send(answers);
  }
}

}  // namespace

bool BitbangSession::Feed(std::string_view bytes, std::string& answers) {
  for (const char byte : bytes) {
    if (byte == 'Q') return false;
    if (byte >= '0' && byte <= '7') SetPins(byte - '0');
    if (byte >= 'r' && byte <= 'u') SetResets(byte - 'r');
    if (byte == 'R') answers += (port_.Read() & GPIO_PIN_TDO) != 0 ? '1' : '0';
  }
  return true;
}

void BitbangSession::SetPins(int bits) {
  levels_ &= GPIO_PIN_NRST | GPIO_PIN_TRST;
  levels_ |= ((bits & 4) != 0 ? GPIO_PIN_TCK : 0) | ((bits & 2) != 0 ? GPIO_PIN_TMS : 0) |
             ((bits & 1) != 0 ? GPIO_PIN_TDI : 0);
  port_.Write(levels_, kDrivenPins);
}

// 1 asserts a reset, which drives its line low.
void BitbangSession::SetResets(int bits) {
  levels_ |= GPIO_PIN_NRST | GPIO_PIN_TRST;
  levels_ &= ~(((bits & 2) != 0 ? GPIO_PIN_TRST : 0) | ((bits & 1) != 0 ? GPIO_PIN_NRST : 0));
  port_.Write(levels_, kDrivenPins);
}

void Serve(Listener& listener, PinPort& port) {
  for (;;) {
    Socket client = listener.Accept();
    try {
      ServeClient(std::move(client), port);
    } catch (const IoError&) {
      // The client is gone; the next one may come.
    }
  }
}

}  // namespace icehost
