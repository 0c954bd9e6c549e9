#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <optional>
#include <regex>
#include <sstream>
#include <utility>

#include "host/chain/chain.h"
#include "host/chain/chain_reader.h"
#include "host/probe/bitbang_session.h"
#include "host/probe/pin_port.h"
#include "host/system/errors.h"
#include "host/target/tap.h"
#include "host/target/wires.h"
#include "tests/icehost/local_server.h"
#include "tests/icehost/run_icehost.h"

namespace {

using icehost::Bits;
using icehost::Chain;
using icehost::TapState;

struct TapKind {
  int ir_bits;
  std::optional<std::uint32_t> idcode;
  std::uint64_t captured_ir = 1;
  std::size_t bypass_bits = 1;  // a broken TAP has a different number
};

// A TAP of IEEE 1149.1 with BYPASS and, if it has an IDCODE, with instruction 1 for the IDCODE. It
// starts in Shift-DR, where an earlier user may have left it.
class ChainedTap {
 public:
  explicit ChainedTap(const TapKind& kind) : kind_(kind) {}

  TapState State() const { return state_; }
  bool Tdo() const { return tdo_; }

  void RaiseTck(bool tms, bool tdi) {
    if (state_ == TapState::kCaptureIr)
      shift_ = icehost::BitsOfNumber(kind_.captured_ir, kind_.ir_bits);
    if (state_ == TapState::kCaptureDr) {
      shift_ = instruction_ == 1 && kind_.idcode.has_value()
                   ? icehost::BitsOfNumber(*kind_.idcode, 32)
                   : Bits(kind_.bypass_bits);
    }
    if (state_ == TapState::kShiftDr || state_ == TapState::kShiftIr) {
      shift_.push_back(tdi);
      shift_.erase(shift_.begin());
    }
    state_ = icehost::NextTapState(state_, tms);
  }

  // Returns 1 if this edge loads an instruction other than BYPASS, else 0.
  int LowerTck() {
    const bool updates = state_ == TapState::kUpdateIr && was_ != state_;
    was_ = state_;
    if (updates) instruction_ = icehost::NumberOfBits(shift_);
    if (state_ == TapState::kTestLogicReset) instruction_ = 1;
    tdo_ = state_ == TapState::kShiftDr || state_ == TapState::kShiftIr ? shift_.front() : true;
    return updates && shift_ != Bits(shift_.size(), true) ? 1 : 0;
  }

 private:
  TapKind kind_;
  TapState state_ = TapState::kShiftDr;
  TapState was_ = state_;  // the state at the last falling edge
  std::uint64_t instruction_ = 0;
  Bits shift_ = {false};
  bool tdo_ = true;
};

class ChainPort : public icehost::PinPort {
 public:
  // Returns the level to read instead of `tdo`. Samples are numbered from 0.
  using Fault = std::function<bool(bool tdo, int sample)>;

  // The first TAP is nearest to TDO. If `tdi` has a value, TDI is stuck at this level.
  explicit ChainPort(const std::vector<TapKind>& taps, Fault fault = nullptr,
                     std::optional<bool> tdi = std::nullopt)
      : taps_(taps.begin(), taps.end()), fault_(std::move(fault)), tdi_(tdi) {}

  void Write(int levels, int enables) override {
    const int wires = levels | ~enables;
    constexpr int kNoReset = GPIO_PIN_NRST | GPIO_PIN_TRST;
    if ((wires & kNoReset) != kNoReset) ++resets;
    const int changed = wires_ ^ wires;
    wires_ = wires;
    if ((changed & GPIO_PIN_TCK) == 0) return;
    if ((wires & GPIO_PIN_TCK) != 0) {
      Raise((wires & GPIO_PIN_TMS) != 0, tdi_.value_or((wires & GPIO_PIN_TDI) != 0));
    } else {
      for (ChainedTap& tap : taps_) instructions += tap.LowerTck();
    }
  }
  int Read() override {
    bool tdo = taps_.empty() ? (wires_ & GPIO_PIN_TDI) != 0 : taps_.front().Tdo();
    if (fault_) tdo = fault_(tdo, samples_read_++);
    return (wires_ & icehost::kDrivenPins) | (tdo ? GPIO_PIN_TDO : 0);
  }
  void SampleTdo() override { samples_.push_back((Read() & GPIO_PIN_TDO) != 0); }
  Bits CollectTdo() override { return std::exchange(samples_, {}); }

  const std::vector<ChainedTap>& Taps() const { return taps_; }
  int resets = 0;        // number of writes with NRST or TRST low
  int instructions = 0;  // number of loaded instructions other than BYPASS

 private:
  void Raise(bool tms, bool tdi) {
    // Each TAP shifts in the level that its neighbour had on TDO before this edge.
    for (std::size_t i = 0; i < taps_.size(); ++i) {
      taps_[i].RaiseTck(tms, i + 1 < taps_.size() ? taps_[i + 1].Tdo() : tdi);
    }
  }

  std::vector<ChainedTap> taps_;
  Fault fault_;
  std::optional<bool> tdi_;
  int wires_ = GPIO_PIN_ALL;
  Bits samples_;
  int samples_read_ = 0;
};

void Serve(ChainPort& port, asio::ip::tcp::socket& client) {
  icehost::BitbangSession session(port);
  for (;;) {
    std::string answers;
    session.Feed(ReadFrom(client), answers);
    asio::write(client, asio::buffer(answers));
  }
}

using Taps = std::vector<TapKind>;

constexpr std::nullopt_t kNone = std::nullopt;

constexpr std::uint32_t kOne = 0x1CE51001;
constexpr std::uint32_t kArm = 0x4BA00477;

// Returns the fault without the advice to the user, which is in parentheses at the end.
std::string WithoutAdvice(const std::string& fault) {
  return fault.substr(0, fault.back() == ')' ? fault.rfind(" (") : fault.size());
}

// Returns the chain in one line, such as "1ce51001/5 -/?; 12 bits; note; !fault".
std::string Told(const Chain& chain) {
  std::ostringstream text;
  for (const icehost::ChainTap& tap : chain.taps) {
    text << (&tap == chain.taps.data() ? "" : " ") << tap.name << std::hex;
    if (tap.idcode.has_value()) text << *tap.idcode;
    text << (tap.idcode.has_value() ? "/" : "-/") << std::dec;
    text << (tap.ir_bits.has_value() ? std::to_string(*tap.ir_bits) : "?");
  }
  if (chain.ir_bits.has_value()) text << "; " << *chain.ir_bits << " bits";
  for (const std::string& note : chain.notes) text << "; " << note;
  for (const std::string& fault : chain.faults) text << "; !" << WithoutAdvice(fault);
  return text.str();
}

const ChainPort::Fault kStuckLow = [](bool, int) { return false; };
const ChainPort::Fault kStuckHigh = [](bool, int) { return true; };
const ChainPort::Fault kInverted = [](bool tdo, int) { return !tdo; };
// TDO is high from sample number `samples` on.
ChainPort::Fault LostAfter(int samples) {
  return [=](bool tdo, int sample) { return tdo || sample >= samples; };
}
ChainPort::Fault FlippedAt(int sample) {
  return [=](bool tdo, int at) { return tdo != (at == sample); };
}
bool Floats(bool /*tdo*/, int sample) {
  return (static_cast<unsigned>(sample) * 2654435761U >> 13 & 1) != 0;
}

// Samples in one reading of up to four TAPs. The IDCODEs are read twice, then the IRs twice.
constexpr int kOfIdcodes = 4 * 32 + 64;
constexpr int kOfIrs = 256 + 64;
constexpr int kOfBypass = 2 * (kOfIdcodes + kOfIrs);  // the first sample in BYPASS

TEST(Detect, ReadsChains) {
  const struct {
    Taps taps;
    const char* told;
    ChainPort::Fault fault = nullptr;
    std::optional<bool> tdi = kNone;
  } kChains[] = {
      {{{5, kOne}}, "1ce51001/5; 5 bits"},
      {{{2, 0x00000003}}, "3/2; 2 bits"},
      {{{256, kOne}}, "1ce51001/256; 256 bits"},
      {{{4, kNone}}, "-/4; 4 bits"},
      {{{5, kOne}, {4, kNone}, {8, kArm}}, "1ce51001/5 -/4 4ba00477/8; 17 bits"},
      {{{8, kNone}, {4, kArm, 0x5}, {38, kArm}},
       "-/? 4ba00477/? 4ba00477/?; 50 bits; the IR lengths of the TAPs are uncertain: 8+2+40 or "
       "8+4+38 "
       "or 10+2+38"},
      {{{8, kOne, 0x55}, {8, kOne, 0x55}},
       "1ce51001/? 1ce51001/?; 16 bits; the IR lengths of the TAPs are uncertain: 2+14 or 4+12 or "
       "6+10 "
       "or 8+8 or ..."},
      {{{4, kOne}, {4, kOne}, {4, kOne}, {4, kOne}, {4, kOne}},
       "1ce51001/4 1ce51001/4 1ce51001/4 1ce51001/4 1ce51001/4; 20 bits"},
      // Chains with faults.
      {{{5, kOne}}, "; !nothing answers: TDO is all zeros", kStuckLow},
      {{{5, kOne}}, "; !nothing answers: TDO is all ones", kStuckHigh},
      {{{5, kOne}},
       "; !the signals are not stable: two readings of the IDCODEs first differ in bit 21",
       Floats},
      {{{5, kOne}},
       "; !the signals are not stable: two readings of the IDCODEs first differ in bit 12",
       FlippedAt(kOfIdcodes + 12)},
      {{{5, kOne}},
       "1ce51001/?; !the signals are not stable: two readings of the IRs first differ in bit 3",
       FlippedAt(2 * kOfIdcodes + kOfIrs + 3)},
      {{{5, kOne}},
       "1ce51001/5; 5 bits; !the signals are not stable: two readings of BYPASS first differ in "
       "bit 1",
       FlippedAt(kOfBypass + 1)},
      {{}, "; !no TAP: TDO repeats TDI without delay"},
      {{{5, kOne}},
       "1ce51001/5; 5 bits; !a TAP in BYPASS answered with 1, not 0",
       [](bool tdo, int at) { return tdo || at == kOfBypass || at == kOfBypass + 128; }},
      {{{5, kOne}, {4, kNone}},
       "1ce51001/9; 9 bits; !the last IDCODE of the chain has only 1 of 32 bits; !1 TAP answered "
       "after the reset, but in BYPASS the chain has 2 bits",
       [](bool tdo, int at) { return tdo || at == 32 || at == kOfIdcodes + 32; }},
      {{{5, kOne}, {4, kArm}},
       "1ce51001/? 4ba00477/?; !the chain is broken: after the bits of the TAPs that answer, TDO "
       "is all zeros",
       nullptr,
       false},
      {{{5, 0xF1234567}},
       "f1234567/?; !the chain is broken: after the bits of the TAPs that answer, TDO is all ones",
       nullptr,
       true},
      {{{5, kOne}, {5, kNone, 1}},
       "; !the chain has no end: the pattern on TDI does not appear on TDO within 2048 bits",
       kInverted},
      {Taps(65, {2, kOne}),
       "; !the chain has no end: the pattern on TDI does not appear on TDO within 2048 bits"},
      {{{5, 0x2BADC0FF}, {5, 1}},
       "2badc0ff/5 1/5; 10 bits; !TAP 1: 0x2badc0ff is not a valid IDCODE; !TAP 2: 0x00000001 is "
       "not a valid IDCODE"},
      {{{5, kOne, 0x3}},
       "1ce51001/5; 5 bits; !the captured IR of 5 bits does not fit 1 TAP: the lowest bits of "
       "each IR must be 01"},
      {{{5, kOne}, {5, kOne, 0}},
       "1ce51001/? 1ce51001/?; 10 bits; !the captured IR of 10 bits does not fit 2 TAPs: the "
       "lowest "
       "bits of each IR must be 01"},
      {{{257, kOne}},
       "1ce51001/?; !the IR has no end: the pattern on TDI does not appear on TDO within 256 bits"},
      {{{5, kOne, 1, 3}},
       "1ce51001/5; 5 bits; !1 TAP answered after the reset, but in BYPASS the chain has 3 bits"},
      {{{5, kOne}},
       "1ce51001/5; 5 bits; !1 TAP answered after the reset, but in BYPASS the chain has more than "
       "64 "
       "bits",
       LostAfter(kOfBypass)},
  };
  for (const auto& [taps, told, fault, tdi] : kChains) {
    ChainPort port(taps, fault, tdi);
    const Chain chain = icehost::ReadChain(port);
    EXPECT_EQ(Told(chain), told);
    EXPECT_EQ(port.resets, 0) << told;
    EXPECT_EQ(port.instructions, 0) << told;
    for (const ChainedTap& tap : port.Taps()) {
      EXPECT_EQ(tap.State(), TapState::kTestLogicReset) << told;
    }
  }
}

TEST(Detect, ReadsAsManyTapsAsItSays) {
  ChainPort port(Taps(64, {64, kOne}));
  const Chain chain = icehost::ReadChain(port);
  EXPECT_EQ(chain.taps.size(), 64U);
  EXPECT_EQ(chain.ir_bits, 64 * 64);
  EXPECT_EQ(chain.taps[63].ir_bits, 64);
  EXPECT_TRUE(chain.faults.empty());
  ChainPort longer(Taps(65, {2, kNone}));
  EXPECT_EQ(
      icehost::ReadChain(longer).faults,
      std::vector<std::string>{"64 TAPs answered after the reset, but in BYPASS the chain has more "
                               "than 64 bits"});
}

TEST(Detect, WritesNoJtagScriptOfALongChain) {
  const struct {
    std::size_t taps;
    int ir_bits;
    std::string refused;
  } kChains[] = {
      {64, 288, ""},
      {65, 130, "cannot write a JTAG script: the chain has more than 64 TAPs"},
      {64, 289, "cannot write a JTAG script: the IR has 289 bits, but a script allows at most 288"},
  };
  for (const auto& test : kChains) {
    Chain chain;
    chain.taps.resize(test.taps);
    chain.ir_bits = test.ir_bits;
    std::string refused;
    try {
      icehost::JtagScriptOf(chain, kNone);
    } catch (const icehost::Unsupported& error) {
      refused = error.what();
    }
    EXPECT_EQ(refused, test.refused);
  }
}

// Tests combinations of the messages and the table that OpenOCD 0.12 prints.
TEST(Detect, TakesOpenocdsWord) {
  const std::string head =
      "   TapName             Enabled  IdCode     Expected   IrLen IrCap IrMask\n"
      "-- ------------------- -------- ---------- ---------- ----- ----- ------\n";
  const std::string one = " 0 a.tap    Y     0x1ce51001 0x1ce51001     5 0x01  0x03\n";
  const std::string found =
      "JTAG tap: a.tap tap/device found: 0x1ce51001 (mfg: 0x000 (<invalid>), part: 0xce51, ver: "
      "0x1)\n";
  const struct {
    std::string said;
    std::string table;
    const char* told;
  } kAnswers[] = {
      {found, head + one, "a.tap1ce51001/5"},
      {found + "TAP b.tap does not have valid IDCODE (idcode=0x575b8002)\n",
       head + one +
           "      0x1ce51003\n 1 b.tap  Y  0x00000000 0x00000000  4 0x01  0x03\n"
           " 2 c.tap   n  0x00000000 0x00000000  7 0x01  0x03\n",
       "a.tap1ce51001/5 b.tap-/4; c.tap is declared but disabled, so it is not in the chain"},
      {"TAP a.tap does not have valid IDCODE (idcode=0x0)\n", head + one,
       "a.tap-/5; !TAP 1 (a.tap): no IDCODE, expected 0x1ce51001"},
      // Here the IDCODE in the table is out of date.
      {"JTAG scan chain interrogation failed: all ones\n", head + one,
       "a.tap-/5; !OpenOCD: JTAG scan chain interrogation failed: all ones; !TAP 1 (a.tap): "
       "OpenOCD read nothing"},
      {found + "JTAG tap: a.tap       UNEXPECTED: 0x1ce51001\n", head + one,
       "a.tap1ce51001/5; !OpenOCD: JTAG tap: a.tap UNEXPECTED: 0x1ce51001"},
      {"JTAG tap: a.tap tap/device found: 0xffffffff (mfg", head + " 0 a.tap Y 0 0x00000000 5 1 3",
       "a.tapffffffff/5; !TAP 1 (a.tap): 0xffffffff is not a valid IDCODE"},
      {"JTAG tap: a.tap tap/device found: 0x1ce510011 (", head + one,
       "a.tap-/5; !OpenOCD: JTAG tap: a.tap tap/device found: 0x1ce510011 (; !TAP 1 (a.tap): "
       "OpenOCD read nothing"},
      {found, head + " 0 a.tap Y 0 0x1ce51001 5 1 3", "a.tap1ce51001/5"},
      {found, head + " 0 a.tap Y 0 0x*ce51001 5 1 3", "a.tap1ce51001/5"},
      {found, head + " 0 a.tap Y 0 0x*ce51003 5 1 3",
       "a.tap1ce51001/5; !TAP 1 (a.tap): read 0x1ce51001, expected 0x*ce51003"},
      {"JTAG tap: a.tap tap/device found: 0x1ce51000 (", head + " 0 a.tap Y 0 0x00000000 5 1 3",
       "a.tap1ce51000/5; !TAP 1 (a.tap): 0x1ce51000 is not a valid IDCODE"},
      {found, head + " 0 a.tap Y 0 0x00000000 1 1 3",
       "a.tap1ce51001/1; !TAP 1 (a.tap): an IR must have at least 2 bits"},
      {"", "", "; !OpenOCD has no TAP"},
      {found, head + " 0 b.tap Y 0 0x00000000 5 1 3\n 1 a.tap N 0 0x00000000 5 1 3",
       "b.tap-/5; a.tap is declared but disabled, so it is not in the chain; !TAP 1 (b.tap): "
       "OpenOCD read nothing; !a.tap: OpenOCD found this TAP, but does not list it"},
  };
  for (const auto& answer : kAnswers) {
    EXPECT_EQ(Told(icehost::OpenocdChain(answer.said, answer.table)), answer.told) << answer.said;
  }
  for (const std::string row : {" 0 a.tap Y 0 0 9999999999 1 3", "0 a.tap Y 0 0 x 1 3", "0 a 5"}) {
    std::string refused;
    try {
      icehost::OpenocdChain("", head + row + "\n");
    } catch (const icehost::IoError& error) {
      refused = error.what();
    }
    EXPECT_EQ(refused, "OpenOCD's list of TAPs is not valid: \"" + row + "\"");
  }
}

TEST(Detect, NamesManufacturers) {
  const struct {
    std::uint32_t idcode;
    const char* described;
    const char* known = "";  // the name that OpenOCD knows
  } kIdcodes[] = {
      {kArm, "version 4, part 0xba00, manufacturer 0x23b (bank 5, code 0x3b: ARM)"},
      {kArm, "version 4, part 0xba00, manufacturer 0x23b (bank 5, code 0x3b: A)", "A"},
      {0x13631093, "version 1, part 0x3631, manufacturer 0x049 (bank 1, code 0x49: Xilinx)"},
      {0x3, "version 0, part 0x0000, manufacturer 0x001 (bank 1, code 0x01: AMD)"},
      {0x5, "version 0, part 0x0000, manufacturer 0x002 (bank 1, code 0x02)"},
      {0x479, "version 0, part 0x0000, manufacturer 0x23c (bank 5, code 0x3c)"},
      {kOne, "version 1, part 0xce51, manufacturer 0x000 (bank 1, code 0x00: unassigned)", "A"},
      {0xFF, "version 0, part 0x0000, manufacturer 0x07f (bank 1, code 0x7f: unassigned)", "A"},
  };
  for (const auto& test : kIdcodes) {
    Chain chain;
    chain.taps = {{"", test.idcode, kNone, true, test.known, ""}};
    char idcode[11];
    std::snprintf(idcode, sizeof idcode, "0x%08x", test.idcode);
    EXPECT_EQ(icehost::ReportOf(chain, "it"),
              std::string("1 TAP on it\nTAP 1: IDCODE ") + idcode + ": " + test.described + "\n");
  }
}

// Compares the names of manufacturers with the names that OpenOCD prints.
TEST(Detect, NamesManufacturersAsOpenocdDoes) {
  std::map<std::string, std::string> names;  // by IDCODE
  std::vector<Taps> chains;
  for (std::uint32_t number = 0; number < 16 * 128; ++number) {
    const std::uint32_t idcode = kArm - 0x476 + (number << 1);
    const std::string name = icehost::ManufacturerName(icehost::ManufacturerOf(idcode));
    if (name.empty()) continue;
    // OpenOCD finds at most 20 TAPs.
    if (names.size() % 20 == 0) chains.emplace_back();
    chains.back().push_back({5, idcode});
    char text[9];
    std::snprintf(text, sizeof text, "%08x", idcode);
    names[text] = name.substr(0, name.find(' '));
  }
  EXPECT_EQ(names.size(), 44U);
  auto chain = chains.begin();
  const LocalServer server([&](asio::ip::tcp::socket& client) {
    ChainPort port(*chain++);
    Serve(port, client);
  });
  const std::string port = server.Name().substr(server.Name().find(':') + 1);
  const std::regex found("found: 0x([0-9a-f]*) \\(mfg: 0x[0-9a-f]* \\(([^)]*)\\)");
  for (std::size_t i = 0; i < chains.size(); ++i) {
    const std::string log =
        RunShell("openocd 2>&1 -c 'adapter driver remote_bitbang; remote_bitbang port " + port +
                 "; gdb_port disabled; tcl_port disabled; telnet_port disabled; init; shutdown'")
            .output;
    for (std::sregex_iterator tap(log.begin(), log.end(), found), end; tap != end; ++tap) {
      const std::string name = names[(*tap)[1]];
      EXPECT_NE((*tap)[2].str().find(name), std::string::npos)
          << name << ", but OpenOCD: " << (*tap)[2];
      names.erase((*tap)[1]);
    }
  }
  EXPECT_TRUE(names.empty()) << names.begin()->second;
}

// The scripts pass on the chain that they were made for, even with the instructions filled in, and
// fail on other chains.
TEST(Detect, WritesScriptsThatPass) {
  const Taps chain = {{5, kOne}, {4, kNone}, {8, kArm}};
  const Taps older = {{5, kOne}, {4, kNone}, {8, kArm & 0x0FFFFFFF}};  // another version
  const Taps other = {{5, kOne}, {4, kNone}, {8, kArm + 0x1000}};
  const Taps shorter = {{5, kOne}, {12, kArm}};
  // Fills in the 17 bits of the IRs: instruction 1 (IDCODE) for one TAP, and BYPASS for the others.
  const std::string fill =
      "sed -e 's/^#\\([A-Z[]\\)/\\1/' "
      "-e '/^.READ_IDCODE_1/,/^DR/s/IR=17,.*/IR=17,0xe1,0xff,0x01/' "
      "-e '/^.READ_IDCODE_3/,/^DR/s/IR=17,.*/IR=17,0xff,0x03,0x00/'";
  // Runs a command after replacing % with the option for a probe with this chain.
  const auto run_on = [](const Taps& taps, std::string command) {
    ChainPort port(taps);
    const LocalServer server([&port](asio::ip::tcp::socket& client) { Serve(port, client); });
    return RunShell(
        command.replace(command.find('%'), 1, "--probe remote-bitbang:" + server.Name()));
  };
  EXPECT_EQ(
      run_on({{8, kOne, 0x55}, {8, kOne, 0x55}},
             "icehost run -q --tap 1 % examples/read_idcode.ini 2>&1")
          .output,
      "examples/read_idcode.ini:11: link_jtag_execute failed: the IR lengths of the chain are "
      "not certain: set them with --chain\nicehost: examples/read_idcode.ini failed\n");
  for (const std::string kind : {"jtag", "gpio"}) {
    const TempFile script("");
    const Outcome made =
        run_on(chain, "icehost detect --script " + kind + " % 2>&1 >" + script.Name() +
                          "; icehost check --strict " + script.Name());
    EXPECT_EQ(made.output.substr(0, 9), "3 TAPs on") << kind;
    EXPECT_EQ(made.output.find(": error"), std::string::npos) << made.output;
    EXPECT_EQ(made.status, 0) << kind;
    const std::string edit = kind == "jtag" ? fill + " " : "cat ";
    const auto run = [&](const Taps& taps) {
      return run_on(taps, edit + script.Name() + " | icehost run -q --strict % - 2>&1");
    };
    EXPECT_EQ(run(chain).output, "") << kind;
    EXPECT_EQ(run(older).output, "") << kind;
    EXPECT_EQ(run(other).status, 1) << kind;
    EXPECT_EQ(run(shorter).status, 1) << kind;
  }
}

}  // namespace
