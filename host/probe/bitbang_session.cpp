#include "host/probe/bitbang_session.h"

#include <cstddef>

#include "entry/icescript.h"

namespace icehost {

bool BitbangSession::Feed(std::string_view bytes, std::string& answers) {
  const std::size_t quit = bytes.find('Q');
  for (const char byte : bytes.substr(0, quit)) {
    if (byte >= '0' && byte <= '7') SetPins(byte - '0');
    if (byte >= 'r' && byte <= 'u') SetResets(byte - 'r');
    if (byte == 'R') port_.SampleTdo();
  }
  for (const bool tdo : port_.CollectTdo()) answers += tdo ? '1' : '0';
  return quit == std::string_view::npos;
}

void BitbangSession::SetPins(int bits) {
  levels_ &= kResetPins;
  levels_ |= ((bits & 4) != 0 ? GPIO_PIN_TCK : 0) | ((bits & 2) != 0 ? GPIO_PIN_TMS : 0) |
             ((bits & 1) != 0 ? GPIO_PIN_TDI : 0);
  enables_ |= GPIO_PIN_TCK | GPIO_PIN_TMS | GPIO_PIN_TDI;
  port_.Write(levels_, enables_);
}

// A bit that is 1 asserts a reset line by driving it low.
void BitbangSession::SetResets(int bits) {
  levels_ |= kResetPins;
  levels_ &= ~(((bits & 2) != 0 ? GPIO_PIN_TRST : 0) | ((bits & 1) != 0 ? GPIO_PIN_NRST : 0));
  enables_ |= kResetPins;
  port_.Write(levels_, enables_);
}

}  // namespace icehost
