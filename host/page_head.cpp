#include "host/page_head.h"

#include <fmt/format.h>

#include <chrono>
#include <cstdint>
#include <ctime>

namespace icehost {
namespace {

std::string ProbeText(const ProbeOptions& probe) {
  const std::string endpoint = probe.choice.endpoint.Name();
  switch (probe.choice.kind) {
    case ProbeChoice::Kind::kBitbang:
      return "remote_bitbang at " + endpoint;
    case ProbeChoice::Kind::kOpenocd:
      return "OpenOCD at " + endpoint + (probe.choice.tap.empty() ? "" : ", " + probe.choice.tap);
    case ProbeChoice::Kind::kSim:
      break;
  }
  return fmt::format("simulated, its target with an IR of {} bits and IDCODE 0x{:08x}",
                     probe.target.ir_length, probe.target.idcode);
}

const char* ResultText(ExitStatus status) {
  switch (status) {
    case kAllWell:
      return "passed";
    case kInterrupted:
      return "interrupted";
    case kNotOpened:
      return "broken off";
    default:
      return "failed";
  }
}

// When it was so many seconds ago.
std::string TimeText(double ago) {
  const auto time = std::chrono::system_clock::now() -
                    std::chrono::milliseconds(static_cast<std::int64_t>(ago * 1000));
  const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
  std::tm utc = {};
  gmtime_r(&seconds, &utc);
  char text[sizeof "2000-01-01 00:00:00 UTC"] = "";
  std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S UTC", &utc);
  return text;
}

}  // namespace

PageHead RunHead(const RunCommand& command, const RunEnd& end) {
  const auto& scripts = command.scripts;
  const auto rest = scripts.begin() + static_cast<std::ptrdiff_t>(end.begun);
  PageHead head = {fmt::format("{}", fmt::join(scripts, ", ")),
                   ResultText(end.status),
                   end.status == kAllWell,
                   {{"Probe", ProbeText(command.probe)},
                    {"Done", end.counts},
                    {"Started", TimeText(end.seconds)},
                    {"icehost", ICEHOST_VERSION},
                    {"Plug-in", command.plugin}}};
  if (rest != scripts.end()) {
    head.entries.emplace_back("Not played",
                              fmt::format("{}", fmt::join(rest, scripts.end(), ", ")));
  }
  return head;
}

PageHead ServeHead(const ServeCommand& command, const ServeEnd& end) {
  return {"serve " + end.served,
          end.error.empty() ? "ended" : "broken off",
          end.error.empty(),
          {{"Probe", ProbeText(command.probe)},
           {"Done", end.counts},
           {"Started", TimeText(end.seconds)},
           {"icehost", ICEHOST_VERSION}}};
}

}  // namespace icehost
