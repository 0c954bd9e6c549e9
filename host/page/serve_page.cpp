// Writes the events of a served target as a page.
#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <ostream>
#include <string>
#include <utility>

#include "host/page/page_writer.h"
#include "host/pins/pin_writers.h"

namespace icehost {
namespace {

// The maximum number of bits shown of a scan. A client that checks a chain may shift thousands.
constexpr std::size_t kMostBits = 1024;

const char* Column(const TapScan& scan) {
  return scan.ir ? "IR" : "DR";
}

std::string ShownBits(const Bits& bits) {
  return BitText(Slice(bits, 0, std::min(bits.size(), kMostBits)));
}

std::string NameOf(const TapScan& scan) {
  std::string name = fmt::format("{} scan{}", Column(scan), scan.continued ? ", continued" : "");
  if (!scan.updated) {
    name += fmt::format(", cut short {}", scan.reset ? "by a reset" : "when the client left");
  }
  return name;
}

// Writes a row for each scan, reset and idle period, and messages when clients connect and leave.
class ServePage : public Output, public ServeListener, public StepRecorder {
 public:
  explicit ServePage(std::ostream& stream) : stream_(stream) {}
  void OnScan(const TapScan& scan) override {
    const std::size_t bits = scan.in.size() + scan.left_out;
    std::string sent = fmt::format("{} {}", Column(scan), bits);
    std::string received;
    if (bits > 0) {
      sent += ": " + ShownBits(scan.in);
      received = fmt::format("{} {}", Column(scan), ShownBits(scan.out));
    }
    if (bits > kMostBits) received += fmt::format(" (the first {} bits)", kMostBits);
    Add(scan.steps, NameOf(scan), std::move(sent), std::move(received));
  }
  void OnTapReset(bool by_trst, StepRange steps) override {
    Add(steps, "TAP reset", by_trst ? "by TRST" : "by TMS", "");
  }
  void OnIdle(long cycles, StepRange steps) override {
    Add(steps, "idle", fmt::format("{} {}", cycles, cycles == 1 ? "cycle" : "cycles"), "");
  }
  void OnResetPins(int levels, StepRange steps) override {
    Add(steps, "reset pins",
        fmt::format("TRST={:d} NRST={:d}", (levels & GPIO_PIN_TRST) != 0,
                    (levels & GPIO_PIN_NRST) != 0),
        "");
  }
  void OnClient(const ServedClient& client, std::size_t step) override {
    writer_.AddMessage(fmt::format("client {} connected{}{} at {} us\n", client.number,
                                   client.peer.empty() ? "" : " from ", client.peer, step));
  }
  void OnClientLeft(const ServedClient& client, std::size_t step) override {
    writer_.AddMessage(fmt::format("client {0} left at {3} us (bytes: {1}, scans: {2})\n",
                                   client.number, client.bytes, client.scans, step));
  }
  void OnEnd(const std::string& error) override {
    if (!error.empty()) writer_.AddError(error, 0);
  }
  void Record(const PinStep& step) override { writer_.Record(step); }
  void End(const PageHead& head) override { writer_.Write(stream_, head); }

 private:
  void Add(StepRange steps, std::string name, std::string sent, std::string received) {
    writer_.AddRow({number_++, 0, steps, std::move(name), std::move(sent), std::move(received), "",
                    "", PageRow::Verdict::kDone});
  }

  std::ostream& stream_;
  PageWriter writer_;
  long number_ = 0;  // the number of the next row
};

}  // namespace

std::unique_ptr<Output> MakeServePage(std::ostream& stream) {
  return std::make_unique<ServePage>(stream);
}

}  // namespace icehost
