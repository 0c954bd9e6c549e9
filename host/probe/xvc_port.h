#ifndef ICESCRIPT_HOST_PROBE_XVC_PORT_H_
#define ICESCRIPT_HOST_PROBE_XVC_PORT_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "entry/icescript.h"
#include "host/probe/pin_port.h"
#include "host/probe/pin_probe.h"
#include "host/system/socket.h"
#include "host/target/bits.h"

namespace icehost {

// The pins of an XVC server (see xvc.h) for a TapWalker. The server shifts whole TCK cycles. Each
// write that raises TCK becomes a cycle with the TMS and TDI of this write. SampleTdo asks for TDO
// in the next cycle. Cycles are buffered until they fill a shift, or until CollectTdo or Flush. The
// protocol has no reset pins and cannot read the pins, so Write throws Unsupported if NRST or TRST
// is low, and Read always throws it. Surplus bytes and answers of a wrong length cause an IoError.
class XvcPort : public PinPort {
 public:
  // Asks the server for its version and for the largest size of a shift. Throws IoError.
  explicit XvcPort(Socket socket);

  void Write(int levels, int enables) override;
  int Read() override;
  void SampleTdo() override { sample_next_ = true; }
  Bits CollectTdo() override;
  // Also sends getinfo, and throws IoError unless the answer is the same as in the constructor.
  void Flush() override;

 private:
  std::string AskInfo();
  std::string Receive(std::size_t count);
  void Shift();
  void CheckStep(std::size_t came) const;

  Socket socket_;
  std::string info_;       // the server's answer to getinfo
  std::size_t most_bits_;  // the largest size of a shift, in bits
  int levels_ = GPIO_PIN_ALL;
  bool sample_next_ = false;
  // The cycles that were not sent yet; `sampled_` marks the cycles that ask for TDO.
  Bits tms_;
  Bits tdi_;
  Bits sampled_;
  Bits samples_;
};

// A probe that can scan, but shows no pins.
class XvcProbe : public PinProbe {
 public:
  explicit XvcProbe(Socket socket) : XvcProbe(std::make_unique<XvcPort>(std::move(socket))) {}

  int Gpio(int out_value, std::uint32_t& data, int oe_mask, int flags) override;

 private:
  explicit XvcProbe(std::unique_ptr<XvcPort> port)
      : PinProbe(*port, CDI_ANSWER_JTAG5, false), port_(std::move(port)) {}

  std::unique_ptr<XvcPort> port_;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PROBE_XVC_PORT_H_
