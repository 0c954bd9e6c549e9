// An XVC server as the probe.
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

// The pins of an XVC server (see xvc.h), for a TapWalker: it takes whole cycles of TCK. A cycle is
// a rising edge, with TMS and TDI as that write sets them. SampleTdo asks for TDO in the cycle that
// the next rising edge begins. Cycles are buffered until they fill a shift, or until CollectTdo or
// Flush. Write throws Unsupported for NRST and TRST low, and Read does so always: the protocol has
// neither.
//
// An answer that does not have the expected length, and bytes that were not asked for, are an
// IoError.
class XvcPort : public PinPort {
 public:
  // Asks the server for its version, and how much it shifts at once.
  explicit XvcPort(Socket socket);

  void Write(int levels, int enables) override;
  int Read() override;
  void SampleTdo() override { sample_next_ = true; }
  Bits CollectTdo() override;
  // Returns after the server has answered to getinfo as at the beginning.
  void Flush() override;

 private:
  std::string AskInfo();
  std::string Receive(std::size_t count);
  void Shift();
  void CheckStep(std::size_t came) const;

  Socket socket_;
  std::string info_;       // what the server has answered to getinfo
  std::size_t most_bits_;  // in a shift
  int levels_ = GPIO_PIN_ALL;
  bool sample_next_ = false;
  // The cycles that were not sent yet.
  Bits tms_;
  Bits tdi_;
  Bits sampled_;
  Bits samples_;
};

// A probe that shows no pins: scans only.
class XvcProbe : public PinProbe {
 public:
  explicit XvcProbe(Socket socket) : XvcProbe(std::make_unique<XvcPort>(std::move(socket))) {}

  int Gpio(int out_value, std::uint32_t& data, int oe_mask, int flags) override;
  std::size_t Steps() const override { return 0; }

 private:
  explicit XvcProbe(std::unique_ptr<XvcPort> port)
      : PinProbe(*port, CDI_ANSWER_JTAG5, false), port_(std::move(port)) {}

  std::unique_ptr<XvcPort> port_;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PROBE_XVC_PORT_H_
