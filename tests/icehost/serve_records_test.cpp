// The lines that icehost serve writes to a trace and to JSON for the bytes of its clients.
#include <gtest/gtest.h>

#include <sstream>

#include "host/pins/pin_writers.h"
#include "host/probe/bitbang_session.h"
#include "host/probe/sim_port.h"

namespace {

// Returns remote_bitbang bytes for TCK cycles: TCK low with this TMS and TDI, then TCK high.
std::string Edges(const std::string& tms, const std::string& tdi) {
  std::string bytes;
  for (std::size_t i = 0; i < tms.size(); ++i) {
    const int pins = (tms[i] == '1' ? 2 : 0) + (tdi[i] == '1' ? 1 : 0);
    bytes += static_cast<char>('0' + pins);
    bytes += static_cast<char>('4' + pins);
  }
  return bytes;
}

std::string Walk(const std::string& tms) {
  return Edges(tms, std::string(tms.size(), '0'));
}

// Returns the bytes of a scan of `tdi`, first bit first, that begins and ends in Run-Test/Idle.
std::string Scan(const std::string& way, const std::string& tdi) {
  const std::string last_leaves = std::string(tdi.size() - 1, '0') + '1';
  return Walk(way) + Edges(last_leaves, tdi) + Walk("10");
}

const std::string kReset = Walk("111110");
const std::string kIr = "1100", kDr = "100";

// Plays the bytes on the simulated target, and reports the decoded scans to the listener. '|'
// separates the bytes of different clients.
void Play(const std::string& bytes, icehost::TapListener& listener) {
  icehost::SimPort port{icehost::TargetOptions{}};
  icehost::TapDecoder decoder({&listener});
  icehost::RecordingPort recording(port, {&decoder});
  icehost::BitbangSession session(recording);
  std::string answers;
  std::istringstream clients(bytes);
  for (std::string client; std::getline(clients, client, '|'); decoder.End()) {
    session.Feed(client, answers);
  }
}

// Returns the text that an output writes for these bytes.
std::string Recorded(decltype(icehost::MakeServeTrace) make, const std::string& bytes) {
  std::ostringstream text;
  const auto output = make(text);
  Play(bytes, dynamic_cast<icehost::ServeListener&>(*output));
  return text.str();
}

TEST(Serve, IsToldInLines) {
  const struct {
    std::string bytes;
    std::string trace;
    std::string json;
  } kClients[] = {
      {Walk("1111") + "R" + Walk("011110100"), "", ""},  // the TAP state is unknown
      {kReset + Scan(kIr, "01000"), "9 TAP reset (TMS)\n17 IR 5 bits 0x02 -> 0x01\n",
       R"({"reset":"TMS","step":9,"end_step":10}
{"scan":"IR","bits":5,"in":"0x02","out":"0x01","updated":true,"step":17,"end_step":32}
)"},
      {kReset + Scan(kDr, std::string(31, '0') + "1") + Walk("00"),
       "9 TAP reset (TMS)\n15 DR 32 bits 0x80000000 -> 0x1ce51001\n85 idle 2 cycles\n",
       R"({"reset":"TMS","step":9,"end_step":10}
{"scan":"DR","bits":32,"in":"0x80000000","out":"0x1ce51001","updated":true,"step":15,"end_step":84}
{"idle":2,"step":85,"end_step":90}
)"},
      // The fifth TCK edge with TMS high resets the TAP, even if other writes come in between.
      {Walk("1111") + "2" + Walk("1") + Walk("1000"), "10 TAP reset (TMS)\n14 idle 2 cycles\n",
       R"({"reset":"TMS","step":10,"end_step":11}
{"idle":2,"step":14,"end_step":19}
)"},
      // The path through Pause-DR and back to Shift-DR is part of one scan.
      {kReset + Walk(kDr) + Edges("01", "01") + Walk("0010") + Edges("01", "01") + Walk("10"),
       "9 TAP reset (TMS)\n15 DR 4 bits 0x0a -> 0x01\n", R"({"reset":"TMS","step":9,"end_step":10}
{"scan":"DR","bits":4,"in":"0x0a","out":"0x01","updated":true,"step":15,"end_step":36}
)"},
      // A change of a reset pin separates idle cycles.
      {"tr" + Walk("00") + "sr" + Walk("0"),
       "0 TRST=0 NRST=1\n0 TAP reset (TRST)\n1 TRST=1 NRST=1\n3 idle 1 cycle\n6 TRST=1 NRST=0\n7 "
       "TRST=1 NRST=1\n7 idle 1 cycle\n",
       R"({"pins":{"TRST":0,"NRST":1},"step":0,"end_step":1}
{"reset":"TRST","step":0,"end_step":1}
{"pins":{"TRST":1,"NRST":1},"step":1,"end_step":2}
{"idle":1,"step":3,"end_step":6}
{"pins":{"TRST":1,"NRST":0},"step":6,"end_step":7}
{"pins":{"TRST":1,"NRST":1},"step":7,"end_step":8}
{"idle":1,"step":7,"end_step":10}
)"},
      // After the bits of the register, the bits that were shifted in come out.
      {"u" + ("r" + Walk("0") + Scan(kDr, std::string(36, '1'))),
       "0 TRST=0 NRST=0\n0 TAP reset (TRST)\n1 TRST=1 NRST=1\n"
       "7 DR 36 bits 0x0fffffffff -> 0x0f1ce51001\n",
       R"({"pins":{"TRST":0,"NRST":0},"step":0,"end_step":1}
{"reset":"TRST","step":0,"end_step":1}
{"pins":{"TRST":1,"NRST":1},"step":1,"end_step":2}
{"scan":"DR","bits":36,"in":"0x0fffffffff","out":"0x0f1ce51001","updated":true,"step":7,"end_step":84}
)"},
      // This scan goes from Capture-DR to Update-DR without Shift-DR.
      {"tr" + Walk("010110"), "0 TRST=0 NRST=1\n0 TAP reset (TRST)\n1 TRST=1 NRST=1\n7 DR 0 bits\n",
       R"({"pins":{"TRST":0,"NRST":1},"step":0,"end_step":1}
{"reset":"TRST","step":0,"end_step":1}
{"pins":{"TRST":1,"NRST":1},"step":1,"end_step":2}
{"scan":"DR","bits":0,"updated":true,"step":7,"end_step":12}
)"},
      {kReset + Walk("00" + kDr) + Edges("00", "10") + "s" + "trR",
       "9 TAP reset (TMS)\n11 idle 2 cycles\n26 TRST=1 NRST=0\n19 DR 2 bits 0x01 -> 0x01 (cut "
       "short by a reset)\n27 TRST=0 NRST=1\n27 TAP reset (TRST)\n"
       "28 TRST=1 NRST=1\n",
       R"({"reset":"TMS","step":9,"end_step":10}
{"idle":2,"step":11,"end_step":18}
{"pins":{"TRST":1,"NRST":0},"step":26,"end_step":27}
{"scan":"DR","bits":2,"in":"0x01","out":"0x01","updated":false,"step":19,"end_step":28}
{"pins":{"TRST":0,"NRST":1},"step":27,"end_step":28}
{"reset":"TRST","step":27,"end_step":28}
{"pins":{"TRST":1,"NRST":1},"step":28,"end_step":29}
)"},
      // TRST goes low in Shift-DR while TCK is low. The next scan then reads the IDCODE.
      {kReset + Scan(kIr, "01000") + Walk(kDr) + Edges("00", "11") + "0tr" + Walk("0") +
           Scan(kDr, "00000000"),
       "9 TAP reset (TMS)\n17 IR 5 bits 0x02 -> 0x01\n37 DR 2 bits 0x03 -> 0x00 (cut short by a "
       "reset)\n45 TRST=0 NRST=1\n45 TAP reset (TRST)\n46 TRST=1 NRST=1\n52 DR 8 bits 0x00 -> "
       "0x01\n",
       R"({"reset":"TMS","step":9,"end_step":10}
{"scan":"IR","bits":5,"in":"0x02","out":"0x01","updated":true,"step":17,"end_step":32}
{"scan":"DR","bits":2,"in":"0x03","out":"0x00","updated":false,"step":37,"end_step":46}
{"pins":{"TRST":0,"NRST":1},"step":45,"end_step":46}
{"reset":"TRST","step":45,"end_step":46}
{"pins":{"TRST":1,"NRST":1},"step":46,"end_step":47}
{"scan":"DR","bits":8,"in":"0x00","out":"0x01","updated":true,"step":52,"end_step":73}
)"},
      {kReset + Walk("0" + kDr) + Edges("0", "1"),
       "9 TAP reset (TMS)\n11 idle 1 cycle\n17 DR 1 bits 0x01 -> 0x01 (cut short when the client "
       "left)\n",
       R"({"reset":"TMS","step":9,"end_step":10}
{"idle":1,"step":11,"end_step":16}
{"scan":"DR","bits":1,"in":"0x01","out":"0x01","updated":false,"step":17,"end_step":22}
)"},
      // Each client gets its own line for its part of a scan.
      {kReset + Walk("00") + "|" + Walk("0") + "|" + Walk(kDr) + Edges("00", "10") + "|" +
           Edges("01", "11") + Walk("1") + "|" + Walk("0") + "|" + Walk("1100") + "|" + "tr",
       R"(9 TAP reset (TMS)
11 idle 2 cycles
16 idle 1 cycle
21 DR 2 bits 0x01 -> 0x01 (cut short when the client left)
29 DR 2 bits 0x03 -> 0x00 (continued)
41 IR 0 bits (cut short when the client left)
44 TRST=0 NRST=1
44 TAP reset (TRST)
45 TRST=1 NRST=1
)",
       R"({"reset":"TMS","step":9,"end_step":10}
{"idle":2,"step":11,"end_step":16}
{"idle":1,"step":16,"end_step":18}
{"scan":"DR","bits":2,"in":"0x01","out":"0x01","updated":false,"step":21,"end_step":28}
{"scan":"DR","bits":2,"in":"0x03","out":"0x00","updated":true,"continued":true,"step":29,"end_step":34}
{"scan":"IR","bits":0,"updated":false,"step":41,"end_step":44}
{"pins":{"TRST":0,"NRST":1},"step":44,"end_step":45}
{"reset":"TRST","step":44,"end_step":45}
{"pins":{"TRST":1,"NRST":1},"step":45,"end_step":46}
)"},
      // Clients continue the scan of the client before them, in different TAP states.
      {kReset + Walk("10") + "|" + Walk("101") + "|" + Walk("10") + "|" + Walk("1100") + "|" +
           Walk("101") + "|" + Walk("10"),
       R"(9 TAP reset (TMS)
15 DR 0 bits (cut short when the client left)
17 DR 0 bits (continued) (cut short when the client left)
23 DR 0 bits (continued)
31 IR 0 bits (cut short when the client left)
35 IR 1 bits 0x00 -> 0x01 (continued) (cut short when the client left)
41 IR 0 bits (continued)
)",
       R"({"reset":"TMS","step":9,"end_step":10}
{"scan":"DR","bits":0,"updated":false,"step":15,"end_step":16}
{"scan":"DR","bits":0,"updated":false,"continued":true,"step":17,"end_step":22}
{"scan":"DR","bits":0,"updated":true,"continued":true,"step":23,"end_step":24}
{"scan":"IR","bits":0,"updated":false,"step":31,"end_step":34}
{"scan":"IR","bits":1,"in":"0x00","out":"0x01","updated":false,"continued":true,"step":35,"end_step":40}
{"scan":"IR","bits":0,"updated":true,"continued":true,"step":41,"end_step":42}
)"},
  };
  for (const auto& client : kClients) {
    EXPECT_EQ(Recorded(icehost::MakeServeTrace, client.bytes), client.trace) << client.bytes;
    EXPECT_EQ(Recorded(icehost::MakeServeJson, client.bytes), client.json) << client.bytes;
  }
}

// Only the beginning of a very long scan is kept in memory, and the lines say so.
TEST(Serve, KeepsTheBeginningOfALongScan) {
  const std::string kept(icehost::kMostScanBits / 4 - 1, '0');
  for (const std::size_t more : {std::size_t{0}, std::size_t{1}, std::size_t{1000}}) {
    const std::size_t bits = icehost::kMostScanBits + more;
    const std::string bytes = kReset + Scan(kDr, "1" + std::string(bits - 1, '0'));
    const std::string trace = Recorded(icehost::MakeServeTrace, bytes);
    const std::string head = "9 TAP reset (TMS)\n15 DR " + std::to_string(bits) + " bits 0x";
    const std::string tail = more > 0 ? " (the first 1048576 bits)\n" : "\n";
    EXPECT_EQ(trace.compare(0, head.size() + kept.size() + 1, head + kept + "1"), 0);
    EXPECT_EQ(trace.substr(trace.find("1ce51001") + 8), tail);
    EXPECT_LT(trace.size(), icehost::kMostScanBits);
    const std::string json = Recorded(icehost::MakeServeJson, bytes);
    EXPECT_EQ(json.find(R"(,"kept_bits":1048576,)") != std::string::npos, more > 0);
  }
}

}  // namespace
