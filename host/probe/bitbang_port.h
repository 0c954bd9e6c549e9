#ifndef ICESCRIPT_HOST_PROBE_BITBANG_PORT_H_
#define ICESCRIPT_HOST_PROBE_BITBANG_PORT_H_

#include <string>

#include "entry/icescript.h"
#include "host/probe/pin_port.h"
#include "host/system/socket.h"

namespace icehost {

// The pins of a remote_bitbang server. The client sends one byte for each operation: '0' to '7' set
// TCK (4), TMS (2) and TDI (1); 'R' asks for TDO; 'r', 's', 't' and 'u' set TRST and NRST to 00,
// 01, 10 and 11, where 1 asserts the reset; 'Q' quits. The port buffers writes and requests.
//
// The protocol has no output enables, and can read only TDO. Write throws Unsupported if it would
// drive TDO high. A surplus answer causes an IoError, because it would be taken for the answer to a
// later request.
class BitbangPort : public PinPort {
 public:
  enum class Manner {
    // Write throws Unsupported unless all pins except TDO are enabled. When TRST falls, Write also
    // resets the TAP by TMS, because some servers ignore the reset bytes.
    kProbe,
    // Any pins may be enabled. Write sends nothing for TCK, TMS and TDI while none of them is
    // enabled, and nothing for NRST and TRST while neither is enabled.
    kProxy,
  };

  BitbangPort(Socket socket, Manner manner);
  ~BitbangPort() override;
  BitbangPort(const BitbangPort&) = delete;
  BitbangPort& operator=(const BitbangPort&) = delete;

  void Write(int levels, int enables) override;
  int Read() override;
  void SampleTdo() override;
  Bits CollectTdo() override;
  // Asks for one more sample. Its answer shows that the server has processed all earlier bytes.
  void Flush() override;
  int ReportedPins() const override { return GPIO_PIN_TDO; }
  void CheckAlive() override;

 private:
  void Put(char byte);
  void PutChanged(char byte, char& last);
  void ClockTapReset();
  void SendBuffered();
  void TakeAnswers();
  void CheckStep(std::size_t came) const;

  Socket socket_;
  Manner manner_;
  std::string unsent_;
  std::size_t unanswered_ = 0;  // samples without an answer; their requests may be in unsent_
  Bits samples_;
  int levels_ = GPIO_PIN_ALL;
  char pin_byte_ = '\0';    // the last byte for TCK, TMS and TDI, or NUL
  char reset_byte_ = '\0';  // the last byte for TRST and NRST, or NUL
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PROBE_BITBANG_PORT_H_
