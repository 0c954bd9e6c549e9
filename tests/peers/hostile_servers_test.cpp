#include <gtest/gtest.h>

#include <algorithm>
#include <asio.hpp>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <regex>
#include <thread>
#include <utility>

#include "host/probe/bitbang_port.h"
#include "host/probe/bitbang_session.h"
#include "host/probe/sim_port.h"
#include "host/probe/xvc_session.h"
#include "tests/icehost/local_server.h"
#include "tests/icehost/run_icehost.h"

namespace {

using asio::ip::tcp;
using namespace std::chrono_literals;

std::atomic<bool> icehost_ended;

using Server = LocalServer::Session;

void Write(tcp::socket& client, const std::string& bytes) {
  asio::write(client, asio::buffer(bytes));
}

// A server that sends answer(bytes) for all bytes that it reads.
template <class Answer>
Server Answering(Answer answer) {
  return [answer](tcp::socket& client) mutable {
    for (;;) Write(client, answer(ReadFrom(client)));
  };
}

const Server kSilent = Answering([](const std::string&) { return ""; });

// Sends `before`, then serves the simulated target. If the bytes of a read end in a sample, adds
// `after` to their answers. Ignores the bytes in `ignored`.
Server Target(const std::string& before, const std::string& after,
              const std::string& ignored = "") {
  return [=](tcp::socket& client) {
    icehost::SimPort port{icehost::TargetOptions{}};
    icehost::BitbangSession session(port);
    std::string answers = before;
    for (;;) {
      const std::string bytes = ReadFrom(client);
      for (const char byte : bytes) {
        if (ignored.find(byte) == std::string::npos) session.Feed({&byte, 1}, answers);
      }
      Write(client, answers + (bytes.back() == 'R' ? after : ""));
      answers.clear();
    }
  };
}

// Answers every sample once, and sample number `last` twice. The second answer is a separate
// packet, which Nagle's algorithm delays until the first is acknowledged.
Server Twice(int last) {
  return [last](tcp::socket& client) mutable {
    for (;;) {
      for (const char byte : ReadFrom(client)) {
        if (byte != 'R') continue;
        Write(client, "1");
        if (--last == 0) Write(client, "1");
      }
    }
  };
}

// Answers with these levels of TDO, repeatedly, whatever happens on the other pins.
Server Tdo(const std::string& levels) {
  return Answering([=, at = std::size_t{0}](const std::string& bytes) mutable {
    std::string answers;
    for (const char byte : bytes) {
      if (byte == 'R') answers += levels[at++ % levels.size()];
    }
    return answers;
  });
}

// Sends one answer after the first bytes, and then stays connected but sends nothing.
Server Once(const std::string& answer) {
  return [answer](tcp::socket& client) {
    ReadFrom(client);
    Write(client, answer);
    kSilent(client);
  };
}

// Answers `getinfo:` with `info`. Answers other commands as a server of the simulated target does,
// and adds `after`. Closes the connection if a shift has more bytes than `info` allows.
Server Xvc(const std::string& info, const std::string& after = "") {
  return [=](tcp::socket& client) {
    const std::size_t most = std::strtoul(&info[info.find(':') + 1], nullptr, 10);
    icehost::SimPort port{icehost::TargetOptions{}};
    icehost::XvcSession session(port);
    for (;;) {
      const std::string bytes = ReadFrom(client);
      std::string answers;
      session.Feed(bytes, answers);
      if (bytes.size() > 10 + most) return;
      Write(client, bytes == "getinfo:" ? info : answers + after);
    }
  };
}

// Answers `getinfo:` correctly and the next commands with `answers`. Then closes the connection.
// Sends the answer "+" as a separate packet without waiting for a command.
Server XvcAnswers(const std::vector<std::string>& answers) {
  return [answers](tcp::socket& client) {
    ReadFrom(client);
    Write(client, "xvcServer_v1.0:64\n");
    for (const std::string& answer : answers) {
      if (answer != "+") ReadFrom(client);
      Write(client, answer);
    }
  };
}

// Answers the commands to OpenOCD with `answers`, in order, and then sends nothing more.
Server Openocd(const std::vector<std::string>& answers) {
  return [answers](tcp::socket& client) {
    for (const std::string& answer : answers) {
      std::string command;
      while (command.find('\x1a') == std::string::npos) command += ReadFrom(client);
      Write(client, answer + '\x1a');
    }
    kSilent(client);
  };
}

// Answers the two commands with which a run begins, and the next commands with `answers`.
Server OpenocdScan(std::vector<std::string> answers, const std::string& ir_length = "5") {
  answers.insert(answers.begin(), "1 0 header\n 0 a Y 0x0 0x0 " + ir_length + " 0x1 0x3");
  return Openocd(answers);
}

// Returns the status and the first message of a run on the server. Removes the place from the
// message, and replaces the name of the server with "SERVER".
Outcome RunAgainst(const Server& server, const std::string& probe, const std::string& rest,
                   const std::string& timeout) {
  const LocalServer local(server);
  const std::string name = local.Name();
  icehost_ended = false;
  Outcome outcome = RunIcehost("run --timeout " + timeout + " --probe " + probe + ":" + name + " " +
                               rest + " 2>&1 >/dev/null");
  icehost_ended = true;
  outcome.output = outcome.output.substr(0, outcome.output.find('\n'));
  const std::regex place("^(icehost|[^ ]*:[0-9]+): (link_[a-z_]+ failed: )?");
  outcome.output = std::regex_replace(outcome.output, place, "");
  const std::size_t at = outcome.output.find(name);
  if (at != std::string::npos) outcome.output.replace(at, name.size(), "SERVER");
  return outcome;
}

// A run exits with status 0 only if the server answers every question correctly.
TEST(Servers, EndARunAsTheyShould) {
  const std::string bitbang = "remote-bitbang", xvc = "xvc", openocd = "openocd";
  const std::string idcode = "tests/scripts/idcode.ini", reset = "tests/scripts/reset_only.ini";
  const std::string scratch = "examples/scratch_register.ini";
  const std::string walk = "tests/scripts/idcode.gpio", trst = "tests/scripts/trst.gpio";
  const std::string writes = "tests/scripts/endless_writes.gpio";
  const std::string dr_only = "tests/scripts/dr_only.ini";
  const std::string tap_reset = "tests/scripts/tap_reset.ini";
  const std::string loads = "tests/scripts/tap_reset_loads.ini";
  const std::string skipped = ": # reset TAP is skipped: this probe cannot reset the TAP";
  const std::string pins = "tests/scripts/reported_pins.gpio";
  const std::string nrst = " (this probe does not report NRST) (mask 0x21)";
  const std::string step = "SERVER: the server sent an unexpected answer";
  const std::string silence = "SERVER: no answer within 200 ms";
  const std::string closed = "SERVER: the server closed the connection";
  const std::string is_busy = " (is another client connected?)";
  const std::string gone = "SERVER: OpenOCD closed the connection";
  const std::string no_ir = "the captured IR does not end in 01 (";
  const std::string zeros = no_ir + "all zeros: TDO is shorted, or the target is held in reset)";
  const std::string other = no_ir + "the IR length is wrong, or the chain has other TAPs)";
  const std::string no_info = "SERVER: expected xvcServer_v1.0:N with N from 2 to 1073741824, got ";
  const std::string info = "xvcServer_v1.0:64\n", ones(7, '\xff');  // answer to a scan
  const std::string no_answer = "SERVER: expected the answer to command ";
  const std::string no_scan = "OpenOCD's answer to a DR scan is not valid: ";
  const auto close_at_once = [](tcp::socket& client) { ReadFrom(client); };
  const auto answer_and_close = [](tcp::socket& client) {
    ReadFrom(client);
    Write(client, "1");
  };
  const auto half_close = [](tcp::socket& client) {
    client.shutdown(tcp::socket::shutdown_send);
    kSilent(client);
  };
  const auto reset_connection = [](tcp::socket& client) {
    ReadFrom(client);
    client.set_option(asio::socket_base::linger(true, 0));
    client.close();
  };
  const auto flood = [](tcp::socket& client) {
    for (;;) Write(client, std::string(4096, '0'));
  };
  const auto flood_when_asked = [=](tcp::socket& client) {
    ReadFrom(client);
    flood(client);
  };
  const auto never_read = [](tcp::socket& client) {
    while (client.is_open() && !icehost_ended) std::this_thread::sleep_for(10ms);
  };
  const auto trickle = [](tcp::socket& client) {
    for (;; std::this_thread::sleep_for(5ms)) {
      for (const char byte : ReadFrom(client)) Write(client, byte == 'R' ? "1" : "");
    }
  };
  const struct {
    Server server;
    std::string probe, script;
    int status;
    std::string message;
  } kRuns[] = {
      {Target("", ""), bitbang, idcode + " " + scratch + " " + walk, 0, ""},
      {Target("", ""), bitbang, trst, 0, ""},
      {Target("", "", "rstu"), bitbang, trst, 0, ""},
      {Target("0", ""), bitbang, idcode, 3, step},
      {Target("", "1"), bitbang, idcode, 3, step},
      {Target("", "1"), bitbang, walk, 3, step},
      {Target("0", ""), bitbang, reset, 3, step},
      {Target("0", ""), bitbang, "--vcd /dev/null " + idcode, 3, step},
      {Twice(33), bitbang, walk, 3, step},
      {flood, bitbang, idcode, 3, step},
      {flood, bitbang, writes, 3, step},
      {Once("0123"), bitbang, idcode, 3, "SERVER: expected a TDO level, got the byte 50"},
      {close_at_once, bitbang, reset, 3, closed + is_busy},
      {close_at_once, bitbang, idcode, 3, closed + is_busy},
      {half_close, bitbang, reset, 3, closed + is_busy},
      {reset_connection, bitbang, reset, 3,
       "SERVER: connection lost: Connection reset by peer" + is_busy},
      {answer_and_close, bitbang, idcode, 3, closed},
      {kSilent, bitbang, reset, 3, silence},
      {kSilent, bitbang, "--vcd /dev/null " + reset, 3, silence},
      {never_read, bitbang, writes, 3, silence},
      {trickle, bitbang, reset, 0, ""},
      {Tdo("1"), bitbang, idcode, 0,
       "warning: " + no_ir + "all ones: the target is not powered or not connected)"},
      {Tdo("0"), bitbang, idcode, 0, "warning: " + zeros},
      {Tdo("01"), bitbang, idcode, 0, "warning: " + other},
      {Tdo("11011"), bitbang, idcode, 0, "warning: " + other},
      {Tdo("0"), bitbang, "--strict " + idcode, 1,
       "nothing answers: TDO is all zeros (it is shorted to ground, or the target is held in reset "
       "or not powered)"},
      {Tdo("1"), bitbang, "--tap 1 " + dr_only, 1,
       "nothing answers: TDO is all ones (it is stuck high, or the target is not powered or not "
       "connected)"},
      {Target("", ""), bitbang, "--strict " + idcode, 0, ""},
      {Tdo("1"), bitbang, pins, 1, "expected 0x20, captured 0x20" + nrst},
      {Tdo("0"), bitbang, "--vcd /dev/null " + pins, 1,
       "expected 0x20, captured 0x00" + nrst + ": TDO is 0"},
      {Tdo("1"), bitbang, "--learn /dev/null " + pins, 1,
       "nothing was learned from " + pins + ": this probe does not report every expected value"},

      // A scan is one shift, or several if the server allows only short shifts.
      {Xvc("xvcServer_v1.0:1073741824\n"), xvc, idcode + " " + scratch + " " + tap_reset, 0, ""},
      {Xvc("xvcServer_v1.0:3\n"), xvc, idcode + " " + scratch + " " + tap_reset, 0, ""},
      {Xvc(info), xvc, reset, 1, "XVC has no reset lines: NRST and TRST cannot be driven"},
      {Xvc(info), xvc, walk, 1, "XVC cannot drive individual pins: GPIO scripts do not run on it"},
      {Xvc("xvcServer_v1.0:\n"), xvc, idcode, 3, no_info + "\"xvcServer_v1.0:\""},
      {Xvc("xvcServer_v1.0:0\n"), xvc, idcode, 3, no_info + "\"xvcServer_v1.0:0\""},
      {Xvc("xvcServer_v1.0:1\n"), xvc, idcode, 3, no_info + "\"xvcServer_v1.0:1\""},
      {Xvc("xvcServer_v1.0:-2\n"), xvc, idcode, 3, no_info + "\"xvcServer_v1.0:-2\""},
      {Xvc("xvcServer_v1.0:2 \n"), xvc, idcode, 3, no_info + "\"xvcServer_v1.0:2 \""},
      {Xvc("xvcServer_v1.0:1073741825\n"), xvc, idcode, 3,
       no_info + "\"xvcServer_v1.0:1073741825\""},
      {Xvc("xvcServer_v1.1:64\n"), xvc, idcode, 3, no_info + "\"xvcServer_v1.1:64\""},
      {Xvc("xvcServer_v1.0:64"), xvc, idcode, 3, silence},
      {flood_when_asked, xvc, idcode, 3, no_info + '"' + std::string(64, '0') + '"'},
      {Xvc(info + "0"), xvc, idcode, 3, step},
      {Xvc(info, "0"), xvc, idcode, 3, step},
      {XvcAnswers({ones, info}), xvc, idcode, 0,
       "warning: " + no_ir + "all ones: the target is not powered or not connected)"},
      {XvcAnswers({"abc", "de", info}), xvc, dr_only, 0, ""},
      {XvcAnswers({"abc", "de", info}), xvc, "--repeat 2 " + dr_only, 3, closed + " (round 2)"},
      {XvcAnswers({"abcd", "e", info}), xvc, dr_only, 3, step},
      {XvcAnswers({"abc", "de" + info}), xvc, dr_only, 3, step},
      {XvcAnswers({"abc", "de", info + "0"}), xvc, dr_only, 3, step},
      {XvcAnswers({"abc", "de", info, "+"}), xvc, dr_only, 3, step},
      {XvcAnswers({"abc", "de", "xvcServer_v1.0:32\n"}), xvc, dr_only, 3, step},
      {XvcAnswers({"abc", "de"}), xvc, dr_only, 3, closed},
      {XvcAnswers({"abc", "d"}), xvc, dr_only, 3, closed},
      {Once(info), xvc, idcode, 3, silence},
      {kSilent, xvc, idcode, 3, silence},
      {half_close, xvc, idcode, 3, closed + is_busy},

      {OpenocdScan({"2 0 01 10 E5 1c", "3 0"}), openocd, idcode, 0, ""},
      {OpenocdScan({"2 0 01 10 E5 1c", "3 0", "4 0 1 10 E5 1c", "5 0"}), openocd,
       "--repeat 2 " + idcode, 0, ""},
      {OpenocdScan({"2 0 01 10 E5 1c", "3 0"}), openocd, loads, 0, loads + skipped},
      {OpenocdScan({"2 0 01 10 E5 1c", "3 0"}), openocd, "-q " + loads, 0, ""},
      {OpenocdScan({}), openocd, "--strict " + loads, 1, loads + skipped},
      {OpenocdScan({"2 0"}), openocd, "-q " + tap_reset, 1,
       "this scan relies on # reset TAP, but this probe cannot reset the TAP"},
      {close_at_once, openocd, reset, 3, gone},
      {reset_connection, openocd, reset, 3, "SERVER: connection lost: Connection reset by peer"},
      {kSilent, openocd, reset, 3, silence},
      {flood_when_asked, openocd, reset, 3,
       "SERVER: the answer to \"capture {scan_chain}\" does not end"},
      {Openocd({"what"}), openocd, reset, 3,
       no_answer + "1 \"capture {scan_chain}\", got \"what\""},
      {Openocd({"1 2 a"}), openocd, reset, 3,
       no_answer + "1 \"capture {scan_chain}\", got \"1 2 a\""},
      {Openocd({"1 0"}), openocd, reset, 3, "OpenOCD has no TAP"},
      {Openocd({"1 0  0 a N 0 0 5 1 3"}), openocd, reset, 3, "OpenOCD has no TAP"},
      {Openocd({"1 0  0 a Y 0 0 5 1 3\n 1 b N 0 0 5 1 3\n 2 c Y 0 0 5 1 3"}), openocd, reset, 3,
       "OpenOCD has several TAPs: name one in --probe (a, c)"},
      {Openocd({"1 1 unknown"}), openocd, reset, 3, "OpenOCD: capture {scan_chain}: unknown"},
      {OpenocdScan({"2 0"}, "4"), openocd, idcode, 1,
       "the script's IR has 5 bits, but in OpenOCD the IR of a has 4"},
      {OpenocdScan({"2 0"}, "65"), openocd, "tests/scripts/ir65.ini", 1,
       "OpenOCD accepts an IR of at most 64 bits"},
      {OpenocdScan({"2 1 busy", "3 0"}), openocd, idcode, 1,
       "OpenOCD: irscan a 1; drscan a 8 0 8 0 8 0 8 0: busy"},
      {OpenocdScan({"2 -4 ", "3 0"}), openocd, reset, 1,
       "OpenOCD: adapter assert srst: error -4; see OpenOCD's log (its configuration needs a "
       "reset_config with srst)"},
      {OpenocdScan({"2 - "}), openocd, reset, 3,
       no_answer + "2 \"adapter assert srst\", got \"2 - \""},
      {OpenocdScan({"2 0 1 2 3"}), openocd, idcode, 3, no_scan + "\"1 2 3\""},
      {OpenocdScan({"2 0 1 2 3 100"}), openocd, idcode, 3, no_scan + "\"1 2 3 100\""},
      {OpenocdScan({"2 0 1 2 3 4 5"}), openocd, idcode, 3, no_scan + "\"1 2 3 4 5\""},
      {OpenocdScan({"2 0 +5"}), openocd, dr_only, 3, no_scan + "\"+5\""},
      {OpenocdScan({"2 0 -0"}), openocd, dr_only, 3, no_scan + "\"-0\""},
      {OpenocdScan({std::string("2 0 5\0", 6)}), openocd, dr_only, 3, no_scan + "\"5 \""},
      // A repeated answer (\032 ends each) is noticed before the next command, or at the end.
      {OpenocdScan({"2 0 05\0322 0 05", "3 0 06"}), openocd, dr_only, 3, step},
      {OpenocdScan({"2 0 05", "3 0 06\0323 0 06", "4 0"}), openocd, dr_only, 3, step},
      // All answers arrive at once, or one answer too many arrives after the last command.
      {OpenocdScan({"2 0 05\0323 0 06\0324 0"}), openocd, dr_only, 3, step},
      {OpenocdScan({"2 0 05", "3 0 06", "4 0\0325 0"}), openocd, dr_only, 3, step},
      {OpenocdScan({"2 0 05", "3 0 06"}), openocd, dr_only, 3, silence},
  };
  for (const auto& run : kRuns) {
    const Outcome outcome =
        RunAgainst(run.server, run.probe, run.script, run.message == silence ? "0.2" : "5");
    EXPECT_EQ(outcome.status, run.status) << run.script;
    EXPECT_EQ(outcome.output, run.message) << run.script;
  }
}

// The queue of waiting connections is full, so the server does not accept the connection.
TEST(Servers, NeedNotAccept) {
  asio::io_context io;
  tcp::acceptor acceptor(io, tcp::v4());
  acceptor.bind({asio::ip::address_v4::loopback(), 0});
  acceptor.listen(0);
  tcp::socket waiting(io);
  waiting.connect(acceptor.local_endpoint());
  const std::string name = "127.0.0.1:" + std::to_string(acceptor.local_endpoint().port());
  const Outcome outcome =
      RunIcehost("run --timeout 0.2 --probe remote-bitbang:" + name + " examples/reset.ini 2>&1");
  EXPECT_EQ(outcome.status, 3);
  EXPECT_EQ(outcome.output, "icehost: " + name + ": cannot connect: Connection timed out\n");
}

// icehost must not request more answers at a time than the buffers can contain. Otherwise each side
// may wait for the other forever. A proxy sends nothing for TCK, TMS and TDI if none is enabled.
TEST(Servers, HaveFewAnswersUnderWay) {
  std::size_t most = 0;
  std::string sent;
  const LocalServer late([&](tcp::socket& client) {
    for (std::size_t asked = 0;;) {
      const std::string bytes = ReadFrom(client);
      sent += bytes;
      asked += static_cast<std::size_t>(std::count(bytes.begin(), bytes.end(), 'R'));
      most = std::max(most, asked);
      std::this_thread::sleep_for(20ms);
      if (client.available() == 0) Write(client, std::string(std::exchange(asked, 0), '1'));
    }
  });
  {
    const icehost::Endpoint endpoint = icehost::ParseEndpoint(late.Name());
    icehost::BitbangPort port(icehost::Socket::Connect(endpoint, 5s),
                              icehost::BitbangPort::Manner::kProxy);
    port.Write(0, GPIO_PIN_NRST);
    for (int i = 0; i < 10000; ++i) port.SampleTdo();
    EXPECT_EQ(port.CollectTdo(), icehost::Bits(10000, true));
  }
  EXPECT_LE(most, 2048U);
  EXPECT_EQ(sent.substr(0, 2), "uR");
}

// If the limit on open files is too low, icehost reports only this reason.
TEST(Servers, AreOutOfReachWithoutFiles) {
  if (ICESCRIPT_SANITIZED) GTEST_SKIP() << "a sanitizer opens files of its own";
  const LocalServer silent(kSilent);
  const std::string server = silent.Name();
  for (const std::string& probe : {"remote-bitbang:" + server, "openocd:" + server, {"sim"}}) {
    for (int files = 5; files < 20; ++files) {
      const Outcome outcome =
          RunShell("exec 2>&1; ulimit -n " + std::to_string(files) +
                   "; exec icehost run -q --timeout 0.1 --probe " + probe + " examples/reset.ini");
      const bool no_files = outcome.output.find("Too many open files") != std::string::npos;
      // On a busy machine even connecting may take too long.
      const bool waited = outcome.output.find("no answer") != std::string::npos ||
                          outcome.output.find("timed out") != std::string::npos;
      const bool served = probe == "sim" ? outcome.output.empty() : waited;
      EXPECT_TRUE(served || no_files) << files << ": " << outcome.output;
      EXPECT_EQ(outcome.status == 0, probe == "sim" && served) << files << ": " << outcome.output;
    }
  }
}

}  // namespace
