// The pins of a remote_bitbang server.
#ifndef ICESCRIPT_HOST_PROBE_BITBANG_PORT_H_
#define ICESCRIPT_HOST_PROBE_BITBANG_PORT_H_

#include <string>

#include "entry/icescript.h"
#include "host/probe/pin_port.h"
#include "host/system/socket.h"

namespace icehost {

// One byte is one operation: '0' to '7' set TCK (4), TMS (2) and TDI (1), 'R' asks for TDO, 'r' 's'
// 't' 'u' set TRST and SRST to 00 01 10 11, where 1 asserts; 'Q' quits. Writes are buffered, and
// samples are asked for without waiting for their answers.
//
// The protocol has no output enables, cannot drive TDO and reads no other pin. It does not number
// its answers: one too many would shift all that follow, so that any byte which was not asked for
// is an IoError. A server that has a client already can only close the connection of another.
class BitbangPort : public PinPort {
 public:
  enum class Manner {
    // Drives all pins from the first write on, and clocks the TAP into reset when TRST falls, for
    // servers that ignore the reset bytes.
    kProbe,
    // Sends what the writes change and nothing else. TCK, TMS and TDI together, or NRST and TRST
    // together, may not be enabled: they stay as they are.
    kProxy,
  };

  BitbangPort(Socket socket, Manner manner);
  ~BitbangPort() override;
  BitbangPort(const BitbangPort&) = delete;
  BitbangPort& operator=(const BitbangPort&) = delete;

  void Write(int levels, int enables) override;
  // Returns the levels that are driven, and TDO.
  int Read() override;
  void SampleTdo() override;
  Bits CollectTdo() override;
  // Returns once a last sample has shown that the server has taken everything until then.
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
  std::size_t unanswered_ = 0;  // samples asked for, sent or not
  Bits samples_;
  int levels_ = GPIO_PIN_ALL;
  // The last of each kind that was sent; none before the first write.
  char pin_byte_ = '\0';
  char reset_byte_ = '\0';
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PROBE_BITBANG_PORT_H_
