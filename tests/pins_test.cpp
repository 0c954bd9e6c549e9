// The pins behind icehost's probes, in one process.
#include <gtest/gtest.h>

#include <sstream>
#include <utility>

#include "host/pins/recording_port.h"
#include "host/pins/tap_decoder.h"
#include "host/probe/bitbang_server.h"
#include "host/target/tap.h"

namespace {

// Takes down the levels that are written; TDO is what bit 0 of the number of reads says.
class NotingPort : public icehost::PinPort {
 public:
  void Write(int levels, int enables) override {
    notes << std::hex << levels << '/' << enables << ' ';
  }
  int Read() override { return (reads++ & 1) != 0 ? GPIO_PIN_TDO : 0; }
  void SampleTdo() override { samples.push_back((Read() & GPIO_PIN_TDO) != 0); }
  icehost::Bits CollectTdo() override { return std::exchange(samples, {}); }

  std::ostringstream notes;
  icehost::Bits samples;
  int reads = 0;
};

// NRST 1, TRST 2, TCK 4, TMS 8, TDI 10; TDO is never driven, and no other pin before it is set.
TEST(BitbangSession, SetsThePins) {
  const struct {
    const char* bytes;
    const char* writes;
    const char* answers;
    bool open;
  } kSessions[] = {
      {"", "", "", true},
      {"01234567", "3/1c 13/1c b/1c 1b/1c 7/1c 17/1c f/1c 1f/1c ", "", true},
      {"rstu", "3/3 2/3 1/3 0/3 ", "", true},
      {"7s5tr", "1f/1c 1e/1f 16/1f 15/1f 17/1f ", "", true},
      {"RR0R", "3/1c ", "010", true},
      {"Bb8/qvx\n", "", "", true},
      {"R0RQ1R", "3/1c ", "01", false},
  };
  for (const auto& test : kSessions) {
    NotingPort port;
    icehost::BitbangSession session(port);
    std::string answers;
    EXPECT_EQ(session.Feed(test.bytes, answers), test.open) << test.bytes;
    EXPECT_EQ(port.notes.str(), test.writes) << test.bytes;
    EXPECT_EQ(answers, test.answers) << test.bytes;
  }
}

class NotingRecorder : public icehost::StepRecorder {
 public:
  void Record(const icehost::PinStep& step) override { notes << std::hex << step.wires << ' '; }
  std::ostringstream notes;
};

TEST(RecordingPort, GivesEverySampleToItsAsker) {
  NotingPort port;
  NotingRecorder recorder;
  icehost::RecordingPort recording(port, {&recorder});
  recording.SampleTdo();             // 0, before the first write
  recording.SampleTdo();             // 1
  recording.Write(1, GPIO_PIN_ALL);  // 0
  recording.SampleTdo();
  recording.SampleTdo();
  recording.Write(2, 0x1f);  // 1
  recording.Write(4, 0);     // 0, all pins float
  recording.SampleTdo();
  EXPECT_EQ(recording.CollectTdo(), icehost::Bits({false, true, false, false, false}));
  EXPECT_EQ(recording.Read(), GPIO_PIN_TDO);
  recording.SampleTdo();  // 0, behind everything recorded
  EXPECT_EQ(recording.CollectTdo(), icehost::Bits({false}));
  EXPECT_EQ(recorder.notes.str(), "1 22 1f ");
  for (int i = 0; i < 3000; ++i) recording.Write(i, GPIO_PIN_ALL);
  recording.Flush();
  EXPECT_EQ(recording.Steps(), 3003U);
}

class NotingTap : public icehost::TapListener {
 public:
  void OnScan(const icehost::TapScan& scan) override {
    notes << (scan.ir ? "IR " : "DR ") << Text(scan.in) << '>' << Text(scan.out)
          << (scan.updated ? ""
              : scan.reset ? " cut by reset"
                           : " cut")
          << Place(scan.steps);
  }
  void OnTapReset(bool by_trst, icehost::StepRange steps) override {
    notes << (by_trst ? "TRST resets" : "TMS resets") << Place(steps);
  }
  void OnIdle(long cycles, icehost::StepRange steps) override {
    notes << "idle " << cycles << Place(steps);
  }
  void OnResetPins(int levels, icehost::StepRange steps) override {
    notes << "pins " << levels << Place(steps);
  }

  std::ostringstream notes;

 private:
  static std::string Text(const icehost::Bits& bits) {
    std::string text;
    for (const bool bit : bits) text += bit ? '1' : '0';
    return text;
  }
  static std::string Place(icehost::StepRange steps) {
    return " @" + std::to_string(steps.begin) + "-" + std::to_string(steps.end) + "; ";
  }
};

// Steps as what they set besides NRST and TRST: M TMS, I TDI, O TDO; each is followed by the same
// with TCK high and TDO low, since the edge takes what stood before it. "n" and "t" are steps with
// a reset line low, "e" one without TCK.
TEST(TapDecoder, TellsWhatTheTapDoes) {
  const std::string reset = "M M M M M ";
  const struct {
    std::string steps;
    const char* told;
  } kWalks[] = {
      {"M M M M e M - -", "TMS resets @10-11; idle 1 @12-15; "},
      {reset + "M - - -", "TMS resets @9-10; idle 2 @13-18; "},
      {reset + "- M - - O IO MI M -", "TMS resets @9-10; DR 011>110 @15-26; "},
      {reset + "- M M - - MO M -", "TMS resets @9-10; IR 0>1 @17-24; "},
      {reset + "- M - M M - M", "TMS resets @9-10; DR > @15-20; "},
      // Through Pause and back to Shift: one scan.
      {reset + "- M - - MI - - M - MO M M", "TMS resets @9-10; DR 10>01 @15-32; "},
      {reset + "- M - - I t - -",
       "TMS resets @9-10; DR 1>0 cut by reset @15-21; pins 1 @20-21; TRST resets @20-21; pins 3 "
       "@21-22; "
       "idle 1 @22-25; "},
      {reset + "- M - - I", "TMS resets @9-10; DR 1>0 cut @15-20; "},
      {"t e - - n -",
       "pins 1 @0-1; TRST resets @0-1; pins 3 @1-2; idle 1 @3-6; pins 2 @6-7; "
       "pins 3 @7-8; idle 1 @7-9; "},
  };
  for (const auto& walk : kWalks) {
    NotingTap tap;
    icehost::TapDecoder decoder({&tap});
    icehost::TapTracker tracker;
    const auto record = [&](int wires) {
      tracker.Update(wires);
      decoder.Record({wires, tracker.State(), false});
    };
    std::istringstream steps(walk.steps);
    for (std::string step; steps >> step;) {
      const auto has = [&step](char what) { return step.find(what) != std::string::npos; };
      const int wires = (has('n') ? 0 : GPIO_PIN_NRST) | (has('t') ? 0 : GPIO_PIN_TRST) |
                        (has('M') ? GPIO_PIN_TMS : 0) | (has('I') ? GPIO_PIN_TDI : 0);
      record(wires | (has('O') ? GPIO_PIN_TDO : 0));
      if (!has('n') && !has('t') && !has('e')) record(wires | GPIO_PIN_TCK);
    }
    decoder.End();
    EXPECT_EQ(tap.notes.str(), walk.told) << walk.steps;
  }
}

}  // namespace
