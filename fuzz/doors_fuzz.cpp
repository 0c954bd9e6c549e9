// Fuzzes the code that reads untrusted data. The first byte of an input selects the code, and the
// rest is the data: 's' from a remote_bitbang client, 'x' from an XVC client, 'b' from a
// remote_bitbang server, 'y' from an XVC server, 'o' from OpenOCD, 'c' a script to check, 'v' an
// SVF file to import, 'd' the bits from a chain of TAPs, 'e' OpenOCD's description of a chain.
#include <algorithm>
#include <array>
#include <asio/local/connect_pair.hpp>
#include <asio/local/stream_protocol.hpp>
#include <asio/write.hpp>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <sstream>
#include <string_view>
#include <utility>
#include <vector>

#include "entry/icescript.h"
#include "fuzz/harness.h"
#include "host/chain/chain.h"
#include "host/chain/chain_reader.h"
#include "host/check/check.h"
#include "host/check/learn.h"
#include "host/check/plan.h"
#include "host/pins/pin_writers.h"
#include "host/pins/recording_port.h"
#include "host/probe/bitbang_port.h"
#include "host/probe/bitbang_session.h"
#include "host/probe/openocd.h"
#include "host/probe/pin_probe.h"
#include "host/probe/sim_port.h"
#include "host/probe/xvc.h"
#include "host/probe/xvc_port.h"
#include "host/probe/xvc_session.h"
#include "host/svf/importer.h"
#include "host/system/errors.h"
#include "host/system/files.h"
#include "host/system/interrupt.h"
#include "host/target/tap.h"

namespace {

using icehost::PinStep;

void Check(bool kept, const char* promise) {
  if (kept) return;
  std::fprintf(stderr, "broken promise: %s\n", promise);
  std::abort();
}

using asio::local::stream_protocol;

// A server on the event loop of its client. It answers every question with the next part of
// `answers`, which may contain anything. After the last part it closes the connection.
class Peer : public std::enable_shared_from_this<Peer> {
 public:
  // Returns how many bytes of `answers` to send for these questions.
  using AnswerSize = std::size_t (*)(std::string_view questions, std::string_view answers);

  Peer(std::string_view answers, AnswerSize size) : answers_(answers), size_(size) {}

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
    const std::size_t size = size_(questions, answers_);
    asio::error_code gone;
    asio::write(socket_, asio::buffer(answers_.substr(0, size)), gone);
    answers_.remove_prefix(size);
    if (answers_.empty()) socket_.close();
    return !answers_.empty();
  }

  std::string_view answers_;
  AnswerSize size_;
  stream_protocol::socket socket_{icehost::EventLoop()};
  std::array<char, 4096> bytes_{};
};

std::size_t UpTo(char end, std::string_view bytes) {
  return std::min(bytes.find(end), bytes.size() - 1) + 1;
}

// Returns the total size of the answers: one byte for each R, or two if the first is not ASCII.
std::size_t BitbangAnswers(std::string_view questions, std::string_view answers) {
  std::size_t size = 0;
  for (auto left = std::count(questions.begin(), questions.end(), 'R'); left > 0; --left) {
    if (size < answers.size()) size += static_cast<unsigned char>(answers[size]) < 0x80 ? 1 : 2;
  }
  return std::min(size, answers.size());
}

// Returns the size of the answers to all commands. An answer is the text up to its end mark.
std::size_t OpenocdAnswers(std::string_view questions, std::string_view answers) {
  std::size_t size = 0;
  for (auto left = std::count(questions.begin(), questions.end(), '\x1a'); left > 0; --left) {
    size += UpTo('\x1a', answers.substr(size));
  }
  return size;
}

// Returns the size of the answer: a line, or the bytes of a shift. A first byte of 255 adds a byte.
std::size_t XvcAnswers(std::string_view question, std::string_view answers) {
  const std::size_t name = icehost::kXvcShift.size();
  if (question.substr(0, name) != icehost::kXvcShift) return UpTo('\n', answers);
  const std::string bits(question.substr(name, icehost::kXvcNumberBytes));
  const std::size_t bytes =
      (icehost::NumberOfBits(icehost::BitsOfBytes(bits, 8 * bits.size())) + 7) / 8;
  Check(question.size() == name + bits.size() + 2 * bytes, "a shift contains its TMS and TDI bits");
  return std::min(bytes + (answers.substr(0, 1) == "\xff" ? 1 : 0), answers.size());
}

class StepCounter : public icehost::StepRecorder {
 public:
  void Record(const PinStep& step) override {
    Check((step.wires & ~GPIO_PIN_ALL) == 0, "a step has no wires other than the pins");
    ++steps;
  }
  std::size_t steps = 0;
};

// Scans registers of several lengths, drives and reads pins, and resets, as a script does.
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

// Serves the bytes with recorders, as if one client left in the middle and another at the end.
// Returns the answers, which must be the same as without recorders.
template <class Session>
std::string ServeRecorded(std::string_view bytes) {
  std::ostringstream text;
  const auto trace = icehost::MakeServeTrace(text);
  const auto json = icehost::MakeServeJson(text);
  const auto vcd = icehost::MakeVcd(text);
  icehost::TapDecoder to_trace({dynamic_cast<icehost::ServeListener*>(trace.get())});
  icehost::TapDecoder to_json({dynamic_cast<icehost::ServeListener*>(json.get())});
  StepCounter counter;
  icehost::SimPort port{icehost::TargetOptions{}};
  icehost::RecordingPort recording(
      port, {&counter, dynamic_cast<icehost::StepRecorder*>(vcd.get()), &to_trace, &to_json});
  Session session(recording);
  std::string answers;
  const std::size_t half = bytes.size() / 2;
  const bool stays = session.Feed(bytes.substr(0, half), answers);
  to_trace.End();
  to_json.End();
  if (stays) session.Feed(bytes.substr(half), answers);
  Check(counter.steps == recording.Steps(), "every step is recorded by the end of the bytes");
  to_trace.End();
  to_json.End();
  Check(text.str().back() == '\n', "the last line is complete");
  return answers;
}

template <class Session>
std::string Serve(std::string_view bytes) {
  icehost::SimPort port{icehost::TargetOptions{}};
  Session session(port);
  std::string answers;
  session.Feed(bytes, answers);
  Check(ServeRecorded<Session>(bytes) == answers, "recording changes no answer");
  return answers;
}

void ServeBitbang(std::string_view bytes) {
  const std::string answers = Serve<icehost::BitbangSession>(bytes);
  Check(answers.size() <= bytes.size(), "at most one answer for a byte");
  Check(answers.find_first_not_of("01") == std::string::npos, "answers are levels");
}

void ServeXvc(std::string_view bytes) {
  Check(Serve<icehost::XvcSession>(bytes).size() <= 3 * bytes.size(),
        "the size of the answers is limited");
}

void BeBitbangClient(std::string_view bytes) {
  icehost::BitbangPort port(std::make_shared<Peer>(bytes, BitbangAnswers)->Client(),
                            icehost::BitbangPort::Manner::kProbe);
  StepCounter counter;
  icehost::RecordingPort recording(port, {&counter});
  icehost::PinProbe probe(recording, CDI_ANSWER_JTAG5, false);
  Scan(probe);
  probe.Flush();
  Check(counter.steps == recording.Steps(), "every step is recorded");
}

void BeOpenocdClient(std::string_view bytes) {
  const auto peer = std::make_shared<Peer>(bytes, OpenocdAnswers);
  icehost::OpenocdProbe probe(peer->Client(), "");
  Scan(probe);
  probe.Flush();
}

void BeXvcClient(std::string_view bytes) {
  icehost::XvcProbe probe(std::make_shared<Peer>(bytes, XvcAnswers)->Client());
  try {
    Scan(probe);
  } catch (const icehost::Unsupported&) {
    // an XVC server has no pins
  }
  probe.Flush();
}

// A chain that takes its answers from the input. An answer is a byte with the number of bits, and
// then the bits. If the number is 255, zeros extend the answer to 4096 bits. The bits shifted in
// from TDI come out after the answer. Each answer is used for two readings.
class AnsweringPort : public icehost::PinPort {
 public:
  explicit AnsweringPort(std::string_view bytes) : bytes_(bytes) { BeginAnswer(); }

  void Write(int levels, int enables) override {
    constexpr int kNoReset = GPIO_PIN_NRST | GPIO_PIN_TRST;
    Check((levels & enables & kNoReset) == kNoReset, "only TMS resets the chain");
    tdi_ = (levels & GPIO_PIN_TDI) != 0;
  }
  int Read() override { return 0; }
  void SampleTdo() override {
    shifted_.push_back(tdi_);
    samples_.push_back(samples_.size() < shifted_.size() && shifted_[samples_.size()]);
  }
  icehost::Bits CollectTdo() override {
    if (++readings_ % 2 == 0) BeginAnswer();
    shifted_ = answer_;
    return std::exchange(samples_, {});
  }

 private:
  void BeginAnswer() {
    answer_.clear();
    if (bytes_.empty()) return;
    const int bits = static_cast<unsigned char>(bytes_.front());
    bytes_.remove_prefix(1);
    const std::size_t held = std::min(bytes_.size(), static_cast<std::size_t>(bits + 7) / 8);
    const auto* const data = reinterpret_cast<const std::uint8_t*>(bytes_.data());
    answer_ = icehost::BitsOfBytes(data, 0, std::min(bits, static_cast<int>(8 * held)));
    if (bits == 255) answer_.resize(4096);
    bytes_.remove_prefix(held);
    shifted_ = answer_;
  }

  std::string_view bytes_;
  icehost::Bits answer_;
  icehost::Bits shifted_;  // the answer, then the bits shifted in from TDI
  icehost::Bits samples_;
  int readings_ = 0;
  bool tdi_ = false;
};

// Checks the report of a chain and, if the chain has no faults, checks its scripts.
void TellChain(const icehost::Chain& chain, std::optional<std::size_t> only) {
  Check(!chain.taps.empty() || !chain.faults.empty(), "a chain without TAPs has a fault");
  Check(chain.taps.size() <= icehost::kMostTaps || only.has_value(), "the TAP count is limited");
  Check(!icehost::ReportOf(chain, "a probe").empty(), "every chain has a report");
  if (!chain.faults.empty()) return;
  std::vector<std::string> scripts = {icehost::GpioScriptOf(chain)};
  try {
    scripts.push_back(icehost::JtagScriptOf(chain, only));
  } catch (const icehost::Unsupported&) {
    // the IR is too long for a JTAG script
  }
  for (const std::string& script : scripts) {
    const auto problems = icehost::CheckScript({"script", script}).problems;
    Check(problems.Errors() == 0 && problems.Warnings() == 0, "detect writes valid scripts");
  }
}

void DetectOnPins(std::string_view bytes) {
  AnsweringPort port(bytes);
  TellChain(icehost::ReadChain(port), std::nullopt);
}

void DetectOnOpenocd(std::string_view bytes) {
  const std::size_t half = std::min(bytes.find('\0'), bytes.size());
  TellChain(
      icehost::OpenocdChain(std::string(bytes.substr(0, half)), std::string(bytes.substr(half))),
      0);
}

// Returns captures that differ from the expectations, and captures for some lines that only read.
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

// Returns whether all lines are short enough.
bool IsWhole(const icehost::ScriptText& script) {
  return !script.CutAt().has_value();
}

void CheckScript(std::string_view bytes) {
  const icehost::ScriptText script("script", std::string(bytes));
  std::ostringstream report;
  const icehost::CheckResult checked = icehost::CheckScript(script);
  const icehost::Problems& problems = checked.problems;
  problems.Write(report, script.Name(), script.Content(), {});
  problems.WriteJson(report);
  Check(!problems.HasErrors() || report.str().find(": error: ") != std::string::npos,
        "errors are reported");
  const icehost::Captures read = Read(script, checked.plan);
  const icehost::ScriptText learned("learned", Learn(script, checked.plan, read).script);
  if (problems.HasErrors() || !IsWhole(learned)) return;
  const icehost::CheckResult again = icehost::CheckScript(learned);
  Check(!again.problems.HasErrors(), "a learned script has no errors");
  Check(again.plan.pins.size() == checked.plan.pins.size() &&
            again.plan.jtag.size() == checked.plan.jtag.size(),
        "learning changes no operation");
  for (const icehost::Expectation& learnt : again.plan.expectations) {
    const auto capture = read.find({learnt.operation, learnt.of});
    Check(capture == read.end() || IsMet(learnt, capture->second), "learned expectations are met");
  }
}

// The simulated target, which fails after kMostLines pin operations. It checks that an imported
// script reads only in a Shift state.
class ImportProbe : public icehost::PinProbe {
 public:
  explicit ImportProbe(icehost::PinPort& port) : PinProbe(port, CDI_ANSWER_JTAG5, true) {}

  int Gpio(int out_value, std::uint32_t& data, int oe_mask, int flags) override {
    const auto state = tap_.State();
    tap_.Update(out_value);
    Check((flags & GPIO_FLAG_READ_IN) == 0 || state == icehost::TapState::kShiftDr ||
              state == icehost::TapState::kShiftIr,
          "bits are read only in a Shift state");
    if (++lines_ > kMostLines) return -1;
    return PinProbe::Gpio(out_value, data, oe_mask, flags);
  }
  bool IsSpent() const { return lines_ > kMostLines; }

 private:
  static constexpr int kMostLines = 20000;
  icehost::TapTracker tap_;
  int lines_ = 0;
};

void PlayImported(const std::string& script) {
  icehost::SimPort port{icehost::TargetOptions{}};
  ImportProbe probe(port);
  const icehost::MemoryFile file(script);
  std::string path = file.Path();
  Check(ImplementScr(&probe, path.data(), nullptr) == 0 || probe.IsSpent(),
        "an imported script runs");
}

void ImportSvf(std::string_view bytes) {
  constexpr std::size_t kMost = 1U << 16U;
  for (const bool gpio : {false, true}) {
    const icehost::SvfImport import{"expect\nme", gpio, std::nullopt, kMost};
    std::size_t read = 0;
    const auto count = [&read](std::size_t now) {
      Check(read < now, "each statement has at least one byte");
      read = now;
    };
    const icehost::Problems problems = icehost::ImportSvf(import, bytes, nullptr, count);
    Check(read <= bytes.size(), "no bytes are read beyond the end");
    std::ostringstream report;
    problems.Write(report, "svf", bytes, {});
    if (problems.HasErrors()) continue;
    std::ostringstream text;
    icehost::ImportSvf(import, bytes, &text, [](std::size_t) {});
    const icehost::ScriptText script("imported", text.str());
    Check(icehost::CheckScript(script).problems.Found().empty(), "check finds nothing wrong");
    Check(IsWhole(script) && script.Content().size() < 2 * kMost,
          "an imported script is not too long");
    PlayImported(script.Content());
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::string_view bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
  try {
    if (data[0] == 's') ServeBitbang(bytes);
    if (data[0] == 'x') ServeXvc(bytes);
    if (data[0] == 'b') BeBitbangClient(bytes);
    if (data[0] == 'y') BeXvcClient(bytes);
    if (data[0] == 'o') BeOpenocdClient(bytes);
    if (data[0] == 'c') CheckScript(bytes);
    if (data[0] == 'v') ImportSvf(bytes);
    if (data[0] == 'd') DetectOnPins(bytes);
    if (data[0] == 'e') DetectOnOpenocd(bytes);
  } catch (const icehost::IoError&) {
    // the connection is lost, or the answers are not valid
  } catch (const icehost::Unsupported&) {
    // the probe does not support a call
  }
  return 0;
}
