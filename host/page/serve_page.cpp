// What happens at a served target as a page.
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

// Of a longer scan the page shows the bits that are shifted first: who checks a chain may shift
// thousands.
constexpr std::size_t kMostBits = 1024;

const char* Column(const TapScan& scan) {
  return scan.ir ? "IR" : "DR";
}

std::string ShownBits(const Bits& bits) {
  return BitText(Slice(bits, 0, std::min(bits.size(), kMostBits)));
}

std::string NameOf(const TapScan& scan) {
  if (scan.updated) return fmt::format("{} scan", Column(scan));
  return fmt::format("{} scan, cut short by {}", Column(scan), scan.reset ? "a reset" : "the end");
}

// A row for every scan, reset and stay in Run-Test/Idle, in the order in which they end; clients
// come and go between them.
class ServePage : public Output, public ServeListener, public StepRecorder {
 public:
  explicit ServePage(std::ostream& stream) : stream_(stream) {}
  void OnScan(const TapScan& scan) override;
  void OnTapReset(bool by_trst, StepRange steps) override;
  void OnIdle(long cycles, StepRange steps) override;
  void OnResetPins(int levels, StepRange steps) override;
  void OnClient(const ServedClient& client, std::size_t step) override;
  void OnClientLeft(const ServedClient& client, std::size_t step) override;
  void OnEnd(const std::string& error) override;
  void Record(const PinStep& step) override { writer_.Record(step); }
  void End(const PageHead& head) override { writer_.Write(stream_, head); }

 private:
  void Add(StepRange steps, std::string name, std::string sent, std::string received);

  std::ostream& stream_;
  PageWriter writer_;
  long number_ = 0;  // of the next row
};

void ServePage::OnScan(const TapScan& scan) {
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

void ServePage::OnTapReset(bool by_trst, StepRange steps) {
  Add(steps, "TAP reset", by_trst ? "by TRST" : "by TMS", "");
}

void ServePage::OnIdle(long cycles, StepRange steps) {
  Add(steps, "idle", fmt::format("{} {}", cycles, cycles == 1 ? "cycle" : "cycles"), "");
}

void ServePage::OnResetPins(int levels, StepRange steps) {
  Add(steps, "reset pins",
      fmt::format("TRST={:d} NRST={:d}", (levels & GPIO_PIN_TRST) != 0,
                  (levels & GPIO_PIN_NRST) != 0),
      "");
}

void ServePage::OnClient(const ServedClient& client, std::size_t step) {
  writer_.AddMessage(fmt::format("client {} connected{}{}, {} us\n", client.number,
                                 client.peer.empty() ? "" : " from ", client.peer, step));
}

void ServePage::OnClientLeft(const ServedClient& client, std::size_t step) {
  writer_.AddMessage(fmt::format("client {} left: bytes {}, scans {}, {} us\n", client.number,
                                 client.bytes, client.scans, step));
}

void ServePage::OnEnd(const std::string& error) {
  if (!error.empty()) writer_.AddError(error, 0);
}

void ServePage::Add(StepRange steps, std::string name, std::string sent, std::string received) {
  writer_.AddRow({number_++, 0, steps, std::move(name), std::move(sent), std::move(received), "",
                  PageRow::Verdict::kDone});
}

}  // namespace

std::unique_ptr<Output> MakeServePage(std::ostream& stream) {
  return std::make_unique<ServePage>(stream);
}

}  // namespace icehost
