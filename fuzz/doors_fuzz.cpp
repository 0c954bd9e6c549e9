// Fuzzes icehost's own doors. The first byte of an input says which: 's' what a client sends to the
// server, 'b' what a remote_bitbang server answers, 'o' what an OpenOCD answers, 'c' a script to
// check. Behind it comes what enters there.
#include <sys/socket.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string_view>

#include "entry/icescript.h"
#include "fuzz/harness.h"
#include "host/check/check.h"
#include "host/probe/bitbang_port.h"
#include "host/probe/bitbang_server.h"
#include "host/probe/openocd_probe.h"
#include "host/probe/pin_probe.h"
#include "host/probe/sim_port.h"
#include "host/record/recording_port.h"
#include "host/system/errors.h"

namespace {

using icehost::PinStep;

void Check(bool kept, const char* promise) {
  if (kept) return;
  std::fprintf(stderr, "broken promise: %s\n", promise);
  std::abort();
}

// The client's end of a connection whose other end has sent this and will send no more.
class Peer {
 public:
  explicit Peer(std::string_view bytes) {
    const bool sent =
        socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0, fds_) == 0 &&
        write(fds_[1], bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()) &&
        shutdown(fds_[1], SHUT_WR) == 0;
    Check(sent, "the test's own socket");
  }
  ~Peer() { close(fds_[1]); }
  Peer(const Peer&) = delete;
  Peer& operator=(const Peer&) = delete;

  icehost::Socket Client() const { return {fds_[0], "peer", std::chrono::milliseconds(100)}; }

 private:
  int fds_[2] = {-1, -1};
};

class StepCounter : public icehost::StepRecorder {
 public:
  void Record(const PinStep& step) override {
    Check((step.wires & ~GPIO_PIN_ALL) == 0, "wires are pins");
    ++steps;
  }
  std::size_t steps = 0;
};

// A read and a write over every register of the simulated target's kind, as a script does it.
void Scan(icehost::Probe& probe) {
  std::uint8_t ir[JTAG_IR_MAX_BYTES] = {2};
  std::uint8_t dr[JTAG_DR_MAX_BYTES] = {1, 2, 3, 4, 5};
  for (const int dr_bits : {32, 8, 33, 288, 0, -1}) {
    std::uint8_t capture[3 + JTAG_DR_MAX_BYTES] = {};
    if (probe.Insert(5, ir, dr_bits, dr) != 0 || probe.Execute(capture) != 0) return;
  }
  std::uint32_t data = 0;
  probe.Gpio(0, data, GPIO_PIN_ALL, GPIO_FLAG_START);
  probe.Gpio(GPIO_PIN_TRST, data, GPIO_PIN_ALL, GPIO_FLAG_WRITE_OUT | GPIO_FLAG_READ_IN);
  probe.Reset(LINK_RESET_TARGET);
}

void Serve(std::string_view bytes) {
  icehost::SimPort port{icehost::TargetOptions{}};
  icehost::BitbangSession session(port);
  std::string answers;
  session.Feed(bytes, answers);
  Check(answers.size() <= bytes.size(), "at most one answer for a byte");
  Check(answers.find_first_not_of("01") == std::string::npos, "answers are levels");
}

void BeBitbangClient(std::string_view bytes) {
  const Peer peer(bytes);
  icehost::BitbangPort port(peer.Client());
  StepCounter counter;
  icehost::RecordingPort recording(port, {&counter});
  icehost::PinProbe probe(recording, CDI_ANSWER_JTAG5, false);
  Scan(probe);
  recording.Flush();
  Check(counter.steps == recording.Steps(), "every step is recorded");
}

void BeOpenocdClient(std::string_view bytes) {
  const Peer peer(bytes);
  icehost::OpenocdProbe probe(peer.Client(), "");
  Scan(probe);
}

void CheckScript(std::string_view bytes) {
  const icehost::ScriptText script("script", std::string(bytes));
  std::ostringstream report;
  icehost::Problems problems = icehost::Check(script);
  problems.Write(report, script, {});
  Check(!problems.HasErrors() || report.str().find(": error: ") != std::string::npos,
        "errors are reported");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::string_view bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
  try {
    if (data[0] == 's') Serve(bytes);
    if (data[0] == 'b') BeBitbangClient(bytes);
    if (data[0] == 'o') BeOpenocdClient(bytes);
    if (data[0] == 'c') CheckScript(bytes);
  } catch (const icehost::IoError&) {
    // the connection is lost or talks nonsense
  } catch (const icehost::Unsupported&) {
    // the probe cannot do that
  }
  return 0;
}
