#include "host/pins/serve_json.h"

#include <fmt/format.h>

#include "host/system/text.h"

namespace icehost {
namespace {

std::string Place(StepRange steps) {
  return fmt::format(R"("step":{},"end_step":{}}})"
                     "\n",
                     steps.begin, steps.end);
}

}  // namespace

void ServeJson::Begin() {
  stream_ << "{\"schema\":\"icehost-serve\",\"version\":1}\n";
}

void ServeJson::OnScan(const TapScan& scan) {
  std::string line = fmt::format(R"({{"scan":"{}","bits":{},)", scan.ir ? "IR" : "DR",
                                 scan.in.size() + scan.left_out);
  if (scan.left_out > 0) line += fmt::format(R"("kept_bits":{},)", scan.in.size());
  if (!scan.in.empty()) {
    line += fmt::format(R"("in":"{}","out":"{}",)", BitText(scan.in), BitText(scan.out));
  }
  stream_ << line << fmt::format(R"("updated":{},)", scan.updated) << Place(scan.steps);
}

void ServeJson::OnTapReset(bool by_trst, StepRange steps) {
  stream_ << fmt::format(R"({{"reset":"{}",)", by_trst ? "TRST" : "TMS") << Place(steps);
}

void ServeJson::OnIdle(long cycles, StepRange steps) {
  stream_ << fmt::format(R"({{"idle":{},)", cycles) << Place(steps);
}

void ServeJson::OnResetPins(int levels, StepRange steps) {
  stream_ << fmt::format(R"({{"pins":{{"TRST":{:d},"NRST":{:d}}},)", (levels & GPIO_PIN_TRST) != 0,
                         (levels & GPIO_PIN_NRST) != 0)
          << Place(steps);
}

void ServeJson::OnClient(const ServedClient& client, std::size_t step) {
  stream_ << fmt::format(R"({{"client":"connected","number":{},)", client.number);
  if (!client.peer.empty()) stream_ << fmt::format(R"("peer":{},)", JsonText(client.peer));
  stream_ << fmt::format("\"step\":{}}}\n", step);
}

void ServeJson::OnClientLeft(const ServedClient& client, std::size_t step) {
  stream_ << fmt::format(R"({{"client":"left","number":{},"bytes":{},"scans":{},"step":{}}})",
                         client.number, client.bytes, client.scans, step)
          << '\n';
}

void ServeJson::OnEnd(const std::string& error) {
  if (!error.empty()) stream_ << fmt::format("{{\"error\":{}}}\n", JsonText(error));
  stream_ << fmt::format("{{\"end\":{}}}\n", error.empty());
}

}  // namespace icehost
