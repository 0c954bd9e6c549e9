// An adapter that OpenOCD drives, by OpenOCD's Tcl RPC.
#ifndef ICESCRIPT_HOST_PROBE_OPENOCD_H_
#define ICESCRIPT_HOST_PROBE_OPENOCD_H_

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/probe/probe.h"
#include "host/system/socket.h"
#include "host/target/bits.h"

namespace icehost {

// Sends commands to a running OpenOCD.
class OpenocdRpc {
 public:
  explicit OpenocdRpc(Socket socket) : socket_(std::move(socket)) {}

  // Returns the result of one command, whose braces are balanced; up to 64 KiB. Throws Unsupported
  // with OpenOCD's words if it refuses; IoError if the connection is lost, the answer is invalid,
  // or something came before the command was sent.
  std::string Ask(const std::string& command);
  // Throws IoError if anything comes within a few milliseconds. To be called after the last answer.
  void ExpectNoMore();

 private:
  void ThrowIfEarly(std::chrono::milliseconds patience);
  std::string ReceiveAnswer(const std::string& command);

  Socket socket_;
  std::string received_;  // after the last answer
  int commands_ = 0;
};

// Scans one TAP of OpenOCD's chain; OpenOCD takes care of the others. Captures no IR, which
// OpenOCD's commands do not return. GPIO scripts, the 2-wire interface and commands that OpenOCD
// refuses throw Unsupported; a lost connection and an invalid answer throw IoError.
class OpenocdProbe : public Probe {
 public:
  // `tap` may be empty if the chain has one TAP only.
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

// Asks OpenOCD for a table of its chain.
constexpr char kAskScanChain[] = "capture {scan_chain}";

// A row of that table.
struct OpenocdTap {
  std::string name;
  bool enabled;
  std::vector<std::string> expected;  // IDCODEs as OpenOCD writes them: 0x and 8 digits
  int ir_bits;
};

// Returns the rows, the TAP nearest to TDO first; skips other lines.
std::vector<OpenocdTap> ParseScanChain(const std::string& answer);

// Throws IoError if OpenOCD's TAPs have no such name.
void RefuseUnknownTap(const std::vector<std::string>& taps, const std::string& tap);

// Returns the text between blanks.
std::vector<std::string> WordsOf(const std::string& text);
// Returns the whole word, in digits without a sign, as a number of 32 bits; nothing if it is not.
std::optional<std::uint32_t> NumberIn(const std::string& word, int base);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PROBE_OPENOCD_H_
