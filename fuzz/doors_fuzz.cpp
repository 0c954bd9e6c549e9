// Fuzzes icehost's own doors. The first byte of an input says which: 's' what a client sends to the
// server, 'b' what a remote_bitbang server answers, 'o' what an OpenOCD answers, 'c' a script to
// check, 'v' an SVF file to import. Behind it comes what enters there.
#include <algorithm>
#include <array>
#include <asio/local/connect_pair.hpp>
#include <asio/local/stream_protocol.hpp>
#include <asio/write.hpp>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <sstream>
#include <string_view>

#include "entry/icescript.h"
#include "fuzz/harness.h"
#include "host/check/check.h"
#include "host/check/check_stream.h"
#include "host/check/learn.h"
#include "host/probe/bitbang_port.h"
#include "host/probe/bitbang_server.h"
#include "host/probe/openocd_probe.h"
#include "host/probe/pin_probe.h"
#include "host/probe/sim_port.h"
#include "host/record/recording_port.h"
#include "host/svf/importer.h"
#include "host/system/errors.h"
#include "host/system/interrupt.h"

namespace {

using icehost::PinStep;

void Check(bool kept, const char* promise) {
  if (kept) return;
  std::fprintf(stderr, "broken promise: %s\n", promise);
  std::abort();
}

using asio::local::stream_protocol;

// A server on the event loop that the client waits on. For every question that it is asked, it
// sends the next of its answers, whatever they are, and it closes with the last.
class Peer : public std::enable_shared_from_this<Peer> {
 public:
  // How many of these bytes are one answer.
  using AnswerSize = std::size_t (*)(std::string_view bytes);

  Peer(std::string_view answers, char question, AnswerSize size)
      : answers_(answers), question_(question), size_(size) {}

  icehost::Socket Client() {
    stream_protocol::socket client(icehost::EventLoop());
    asio::local::connect_pair(client, socket_);
    Listen();
    return {client.release(), "peer", std::chrono::milliseconds(100)};
  }

 private:
  void Listen() {
    socket_.async_receive(asio::buffer(bytes_), [self = shared_from_this()](
                                                    const asio::error_code& error, std::size_t n) {
      if (!error && self->Answer({self->bytes_.data(), n})) self->Listen();
    });
  }

  bool Answer(std::string_view questions) {
    std::size_t size = 0;
    for (const char byte : questions) {
      if (byte == question_ && size < answers_.size()) size += size_(answers_.substr(size));
    }
    asio::error_code gone;
    asio::write(socket_, asio::buffer(answers_.substr(0, size)), gone);
    answers_.remove_prefix(size);
    if (answers_.empty()) socket_.close();
    return !answers_.empty();
  }

  std::string_view answers_;
  char question_;
  AnswerSize size_;
  stream_protocol::socket socket_{icehost::EventLoop()};
  std::array<char, 4096> bytes_{};
};

// A byte, or two where it is none of ASCII's.
std::size_t BitbangAnswer(std::string_view bytes) {
  return static_cast<unsigned char>(bytes.front()) < 0x80 ? 1
                                                          : std::min<std::size_t>(2, bytes.size());
}

// Up to the end of the text.
std::size_t OpenocdAnswer(std::string_view bytes) {
  return std::min(bytes.find('\x1a'), bytes.size() - 1) + 1;
}

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
  icehost::BitbangPort port(std::make_shared<Peer>(bytes, 'R', BitbangAnswer)->Client());
  StepCounter counter;
  icehost::RecordingPort recording(port, {&counter});
  icehost::PinProbe probe(recording, CDI_ANSWER_JTAG5, false, [](const std::string& why) {
    Check(!why.empty(), "a doubt has a reason");
  });
  Scan(probe);
  probe.Flush();
  Check(counter.steps == recording.Steps(), "every step is recorded");
}

void BeOpenocdClient(std::string_view bytes) {
  const auto peer = std::make_shared<Peer>(bytes, '\x1a', OpenocdAnswer);
  icehost::OpenocdProbe probe(peer->Client(), "");
  Scan(probe);
  probe.Flush();
}

// Other values than those that are expected, and some for lines that do nothing but read.
icehost::Captures Read(const icehost::ScriptText& script, const icehost::Plan& plan) {
  using Of = icehost::Expectation::Of;
  icehost::Captures captures;
  for (std::size_t i = 0; i < plan.pins.size(); ++i) {
    const auto line = static_cast<int>(plan.pins[i].line);
    if (plan.Expected(i, Of::kPins) == nullptr && script.Line(line).text != "PRINT=GPIO_IN")
      continue;
    captures[{i, Of::kPins}] = {{static_cast<char>(i % 64)}, {i % 5 == 0 ? '\0' : '\xFF'}};
  }
  for (const icehost::Expectation& one : plan.expectations) {
    if (one.of == Of::kPins) continue;
    std::string other = one.value;
    for (std::size_t i = 0; i < other.size(); ++i)
      other[i] = static_cast<char>(~other[i] & one.mask[i]);
    captures[{one.operation, one.of}] = {other, std::string(other.size(), '\xFF')};
  }
  return captures;
}

// A line may have become too long.
bool IsWhole(const icehost::ScriptText& script) {
  return !script.TooLong().has_value();
}

void CheckScript(std::string_view bytes) {
  const icehost::ScriptText script("script", std::string(bytes));
  std::ostringstream report;
  const icehost::Checked checked = icehost::Check(script);
  const icehost::Problems& problems = checked.problems;
  problems.Write(report, script, {});
  icehost::CheckStream(report).Write(problems);
  Check(!problems.HasErrors() || report.str().find(": error: ") != std::string::npos,
        "errors are reported");
  const icehost::ScriptText learned("learned",
                                    Learn(script, checked.plan, Read(script, checked.plan)));
  if (problems.HasErrors() || !IsWhole(learned)) return;
  const icehost::Checked again = icehost::Check(learned);
  Check(!again.problems.HasErrors(), "what is learned is right");
  Check(again.plan.pins.size() == checked.plan.pins.size() &&
            again.plan.jtag.size() == checked.plan.jtag.size(),
        "what is learned changes no operation");
}

void ImportSvf(std::string_view bytes) {
  constexpr std::size_t kMost = 1U << 20U;
  const icehost::ImportedSvf imported = icehost::ImportSvf("expect\nme", bytes, kMost);
  Check(imported.script.empty() == imported.problems.HasErrors(), "a script, or errors");
  if (imported.problems.HasErrors()) return;
  const icehost::ScriptText script("imported", imported.script);
  const icehost::Problems problems = icehost::Check(script).problems;
  Check(problems.Found().empty(), "nothing is wrong with what is imported");
  Check(IsWhole(script) && imported.script.size() < 2 * kMost, "it is not too long");
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
    if (data[0] == 'v') ImportSvf(bytes);
  } catch (const icehost::IoError&) {
    // the connection is lost or talks nonsense
  } catch (const icehost::Unsupported&) {
    // the probe cannot do that
  }
  return 0;
}
