// The pins behind icehost's probes, in one process.
#include <gtest/gtest.h>

#include <sstream>
#include <utility>

#include "host/pins/recording_port.h"
#include "host/probe/bitbang_session.h"

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

}  // namespace
