#include "host/pins/serve_trace.h"

#include <fmt/format.h>

#include "host/system/text.h"

namespace icehost {
namespace {

const char* CutText(const TapScan& scan) {
  if (scan.updated) return "";
  return scan.reset ? " (cut short by a reset)" : " (cut short by the end)";
}

}  // namespace

void ServeTrace::OnScan(const TapScan& scan) {
  std::string line = fmt::format("{} {} {} bits", scan.steps.begin, scan.ir ? "IR" : "DR",
                                 scan.in.size() + scan.left_out);
  if (!scan.in.empty()) line += fmt::format(" {} -> {}", BitText(scan.in), BitText(scan.out));
  if (scan.left_out > 0) line += fmt::format(" (the first {} bits)", scan.in.size());
  stream_ << line << CutText(scan) << '\n';
}

void ServeTrace::OnTapReset(bool by_trst, StepRange steps) {
  stream_ << fmt::format("{} TAP reset ({})\n", steps.begin, by_trst ? "TRST" : "TMS");
}

void ServeTrace::OnIdle(long cycles, StepRange steps) {
  stream_ << fmt::format("{} idle {} {}\n", steps.begin, cycles, cycles == 1 ? "cycle" : "cycles");
}

void ServeTrace::OnResetPins(int levels, StepRange steps) {
  stream_ << fmt::format("{} TRST={:d} NRST={:d}\n", steps.begin, (levels & GPIO_PIN_TRST) != 0,
                         (levels & GPIO_PIN_NRST) != 0);
}

void ServeTrace::OnClient(const ServedClient& client, std::size_t step) {
  stream_ << fmt::format("{} client {} connected{}{}\n", step, client.number,
                         client.peer.empty() ? "" : " from ", client.peer);
}

void ServeTrace::OnClientLeft(const ServedClient& client, std::size_t step) {
  stream_ << fmt::format("{} client {} left: bytes {}, scans {}\n", step, client.number,
                         client.bytes, client.scans);
}

void ServeTrace::OnEnd(const std::string& error) {
  stream_ << (error.empty() ? "# ended\n" : "# failed: " + Printable(error) + "\n");
}

}  // namespace icehost
