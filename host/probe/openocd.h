// A probe that uses an adapter of OpenOCD through OpenOCD's Tcl RPC.
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

  // Runs one command, whose braces must be balanced, and returns its result of up to 64 KiB. Throws
  // Unsupported with OpenOCD's message if OpenOCD refuses the command. Throws IoError if the
  // connection is lost, the answer is invalid, or bytes arrived before the command was sent.
  std::string Ask(const std::string& command);
  // Throws IoError if more bytes arrive within a few milliseconds. For use after the last answer.
  void ExpectNoMore();

 private:
  void ThrowIfEarly(std::chrono::milliseconds patience);
  std::string ReceiveAnswer(const std::string& command);

  Socket socket_;
  std::string received_;  // the bytes received after the last answer
  int commands_ = 0;
};

// Scans one TAP of OpenOCD's chain; OpenOCD keeps the other TAPs in BYPASS. Does not capture the
// IR, because OpenOCD's commands do not return it. Throws Unsupported for GPIO scripts, the 2-wire
// interface and commands that OpenOCD refuses, and IoError as OpenocdRpc::Ask does.
class OpenocdProbe : public Probe {
 public:
  // `tap` may be empty if OpenOCD has only one enabled TAP. Throws IoError if OpenOCD has no such
  // TAP, or the TAP is disabled.
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

  OpenocdRpc rpc_;
  std::string tap_;
  int ir_length_ = 0;
  Bits ir_;
  Bits dr_;
};

// The command that asks OpenOCD for the table of its chain.
constexpr char kAskScanChain[] = "capture {scan_chain}";

// A row of that table.
struct OpenocdTap {
  std::string name;
  bool enabled;
  std::vector<std::string> expected;  // IDCODEs as OpenOCD writes them: 0x and 8 digits
  int ir_bits;
};

// Returns the rows of the table, the TAP nearest to TDO first. Skips lines that do not begin with a
// number. Throws IoError if another line is not a row.
std::vector<OpenocdTap> ParseScanChain(const std::string& answer);

// Throws IoError if `tap` is not one of OpenOCD's `taps`.
void RefuseUnknownTap(const std::vector<std::string>& taps, const std::string& tap);

// Splits a text at whitespace, and returns its words.
std::vector<std::string> WordsOf(const std::string& text);
// Returns the unsigned 32-bit number in `word`; nothing if `word` is anything else.
std::optional<std::uint32_t> NumberIn(const std::string& word, int base);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PROBE_OPENOCD_H_
