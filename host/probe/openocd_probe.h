// An adapter that OpenOCD drives, by its Tcl RPC.
#ifndef ICESCRIPT_HOST_PROBE_OPENOCD_PROBE_H_
#define ICESCRIPT_HOST_PROBE_OPENOCD_PROBE_H_

#include <string>

#include "host/probe/openocd_rpc.h"
#include "host/probe/probe.h"
#include "host/system/socket.h"
#include "host/target/bits.h"

namespace icehost {

// Scans one TAP of OpenOCD's chain; the others are OpenOCD's business. Captures no IR, which its
// commands do not answer with. GPIO scripts and the 2-wire interface throw Unsupported, as does
// what OpenOCD refuses, with its words; a lost connection and an answer that is none throw IoError.
class OpenocdProbe : public Probe {
 public:
  // `tap` may be empty where the chain has one TAP only.
  OpenocdProbe(Socket socket, std::string tap);

  int Config(int code, int value) override;
  int Reset(int kind) override;
  int Insert(int ir_bits, const std::uint8_t* ir, int dr_bits, const std::uint8_t* dr) override;
  int Execute(std::uint8_t* capture) override;
  void Flush() override;
  bool CapturesIr() const override { return false; }
  int Gpio(int out_value, std::uint32_t& data, int oe_mask, int flags) override;

 private:
  void ChooseTap();
  int DeclaredIrLength();

  OpenocdRpc rpc_;
  std::string tap_;
  int ir_length_ = 0;
  Bits ir_;
  Bits dr_;
};

// The drscan command for these bits, in fields of 8 bits and a last one of 1 to 8.
std::string DrscanCommand(const std::string& tap, const Bits& bits);
// The bits of its answer, `length` of them; throws IoError where it is none.
Bits ParseDrscanAnswer(const std::string& answer, std::size_t length);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PROBE_OPENOCD_PROBE_H_
