// Commands to a running OpenOCD, by its Tcl RPC.
#ifndef ICESCRIPT_HOST_PROBE_OPENOCD_RPC_H_
#define ICESCRIPT_HOST_PROBE_OPENOCD_RPC_H_

#include <string>
#include <utility>
#include <vector>

#include "host/system/socket.h"

namespace icehost {

class OpenocdRpc {
 public:
  explicit OpenocdRpc(Socket socket) : socket_(std::move(socket)) {}

  // The result of one command, whose braces are balanced; up to 64 KiB. Throws Unsupported with
  // OpenOCD's words where it refuses; IoError where the connection is lost or the answer is none.
  std::string Ask(const std::string& command);

 private:
  std::string ReceiveAnswer(const std::string& command);

  Socket socket_;
  std::string received_;  // behind the last answer
  int commands_ = 0;
};

// What OpenOCD says of its chain.
constexpr char kAskScanChain[] = "capture {scan_chain}";

// A row of the answer to that.
struct OpenocdTap {
  std::string name;
  bool enabled;
  std::vector<std::string> expected;  // IDCODEs as OpenOCD writes them: 0x and 8 digits
  int ir_bits;
};

// The rows, the TAP nearest TDO first; lines that are none are passed over.
std::vector<OpenocdTap> ParseScanChain(const std::string& answer);

// Throws IoError where the TAPs of OpenOCD have no such name.
void RefuseUnknownTap(const std::vector<std::string>& taps, const std::string& tap);

// The text between blanks.
std::vector<std::string> WordsOf(const std::string& text);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PROBE_OPENOCD_RPC_H_
