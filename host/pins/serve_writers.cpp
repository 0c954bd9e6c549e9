#include <fmt/format.h>

#include "entry/icescript.h"
#include "host/pins/pin_writers.h"
#include "host/system/text.h"

namespace icehost {
namespace {

std::string PartText(const TapScan& scan) {
  std::string text = scan.continued ? " (continued)" : "";
  if (scan.updated) return text;
  return text + (scan.reset ? " (cut short by a reset)" : " (cut short when the client left)");
}

// Writes a line for each event, beginning with the number of its first step. In "1042 DR 32 bits
// 0x00000000 -> 0x1ce51001", the first value was shifted in and the second value was shifted out.
class ServeTrace : public Output, public ServeListener {
 public:
  explicit ServeTrace(std::ostream& stream) : stream_(stream) {}
  void OnScan(const TapScan& scan) override {
    std::string line = fmt::format("{} {} {} bits", scan.steps.begin, scan.ir ? "IR" : "DR",
                                   scan.in.size() + scan.left_out);
    if (!scan.in.empty()) line += fmt::format(" {} -> {}", BitText(scan.in), BitText(scan.out));
    if (scan.left_out > 0) line += fmt::format(" (the first {} bits)", scan.in.size());
    stream_ << line << PartText(scan) << '\n';
  }
  void OnTapReset(bool by_trst, StepRange steps) override {
    stream_ << fmt::format("{} TAP reset ({})\n", steps.begin, by_trst ? "TRST" : "TMS");
  }
  void OnIdle(long cycles, StepRange steps) override {
    stream_ << fmt::format("{} idle {} {}\n", steps.begin, cycles,
                           cycles == 1 ? "cycle" : "cycles");
  }
  void OnResetPins(int levels, StepRange steps) override {
    stream_ << fmt::format("{} TRST={:d} NRST={:d}\n", steps.begin, (levels & GPIO_PIN_TRST) != 0,
                           (levels & GPIO_PIN_NRST) != 0);
  }
  void OnClient(const ServedClient& client, std::size_t step) override {
    stream_ << fmt::format("{} client {} connected{}{}\n", step, client.number,
                           client.peer.empty() ? "" : " from ", client.peer);
  }
  void OnClientLeft(const ServedClient& client, std::size_t step) override {
    stream_ << fmt::format("{} client {} left (bytes: {}, scans: {})\n", step, client.number,
                           client.bytes, client.scans);
  }
  void OnEnd(const std::string& error) override {
    stream_ << (error.empty() ? "# ended\n" : "# failed: " + Printable(error) + "\n");
  }

 private:
  std::ostream& stream_;
};

std::string Place(StepRange steps) {
  return fmt::format(R"("step":{},"end_step":{}}})"
                     "\n",
                     steps.begin, steps.end);
}

// Writes one JSON object per line, in ASCII. docs/json.md describes the objects.
class ServeJson : public Output, public ServeListener {
 public:
  explicit ServeJson(std::ostream& stream) : stream_(stream) {}
  void Begin() override { stream_ << "{\"schema\":\"icehost-serve\",\"version\":1}\n"; }
  void OnScan(const TapScan& scan) override {
    std::string line = fmt::format(R"({{"scan":"{}","bits":{},)", scan.ir ? "IR" : "DR",
                                   scan.in.size() + scan.left_out);
    if (scan.left_out > 0) line += fmt::format(R"("kept_bits":{},)", scan.in.size());
    if (!scan.in.empty()) {
      line += fmt::format(R"("in":"{}","out":"{}",)", BitText(scan.in), BitText(scan.out));
    }
    line += fmt::format(R"("updated":{},)", scan.updated);
    if (scan.continued) line += R"("continued":true,)";
    stream_ << line << Place(scan.steps);
  }
  void OnTapReset(bool by_trst, StepRange steps) override {
    stream_ << fmt::format(R"({{"reset":"{}",)", by_trst ? "TRST" : "TMS") << Place(steps);
  }
  void OnIdle(long cycles, StepRange steps) override {
    stream_ << fmt::format(R"({{"idle":{},)", cycles) << Place(steps);
  }
  void OnResetPins(int levels, StepRange steps) override {
    stream_ << fmt::format(R"({{"pins":{{"TRST":{:d},"NRST":{:d}}},)",
                           (levels & GPIO_PIN_TRST) != 0, (levels & GPIO_PIN_NRST) != 0)
            << Place(steps);
  }
  void OnClient(const ServedClient& client, std::size_t step) override {
    stream_ << fmt::format(R"({{"client":"connected","number":{},)", client.number);
    if (!client.peer.empty()) stream_ << fmt::format(R"("peer":{},)", JsonText(client.peer));
    stream_ << fmt::format("\"step\":{}}}\n", step);
  }
  void OnClientLeft(const ServedClient& client, std::size_t step) override {
    stream_ << fmt::format(R"({{"client":"left","number":{},"bytes":{},"scans":{},"step":{}}})",
                           client.number, client.bytes, client.scans, step)
            << '\n';
  }
  void OnEnd(const std::string& error) override {
    if (!error.empty()) stream_ << fmt::format("{{\"error\":{}}}\n", JsonText(error));
    stream_ << fmt::format("{{\"end\":{}}}\n", error.empty());
  }

 private:
  std::ostream& stream_;
};

}  // namespace

std::unique_ptr<Output> MakeServeTrace(std::ostream& stream) {
  return std::make_unique<ServeTrace>(stream);
}

std::unique_ptr<Output> MakeServeJson(std::ostream& stream) {
  return std::make_unique<ServeJson>(stream);
}

}  // namespace icehost
