#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "host/pins/recording_port.h"
#include "host/probe/bitbang_session.h"
#include "host/probe/xvc_session.h"

namespace {

// Records every write. Reads return TDO low and high in turn, beginning with low.
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

struct Played {
  std::string bytes;
  std::string writes;
  std::string answers;
  bool open;
};

// Plays the bytes as a whole, and split at each byte. `writes` lists LEVELS/ENABLES of each write,
// in hexadecimal. TDO is never driven. Other pins are driven only after they have been set.
template <class Session>
void ExpectPlayed(const std::vector<Played>& sessions) {
  for (const Played& test : sessions) {
    for (std::size_t part = 0; part <= test.bytes.size(); ++part) {
      NotingPort port;
      Session session(port);
      std::string answers;
      const bool open = session.Feed(test.bytes.substr(0, part), answers) &&
                        session.Feed(test.bytes.substr(part), answers);
      EXPECT_EQ(open, test.open) << test.bytes;
      EXPECT_EQ(port.notes.str(), test.writes) << test.bytes;
      EXPECT_EQ(answers, test.answers) << test.bytes;
    }
  }
}

TEST(BitbangSession, SetsThePins) {
  ExpectPlayed<icehost::BitbangSession>({
      {"", "", "", true},
      {"01234567", "3/1c 13/1c b/1c 1b/1c 7/1c 17/1c f/1c 1f/1c ", "", true},
      {"rstu", "3/3 2/3 1/3 0/3 ", "", true},
      {"7s5tr", "1f/1c 1e/1f 16/1f 15/1f 17/1f ", "", true},
      {"RR0R", "3/1c ", "010", true},
      {"Bb8/qvx\n", "", "", true},
      {"R0RQ1R", "3/1c ", "01", false},
  });
}

// TDO is sampled before each rising edge, and TCK is low at the end.
TEST(XvcSession, SetsThePins) {
  using namespace std::string_literals;
  ExpectPlayed<icehost::XvcSession>({
      {"getinfo:getinfo:get", "", "xvcServer_v1.0:4096\nxvcServer_v1.0:4096\n", true},
      {"settck:\0abcshift:\2\0\0\0\1\2settck:1234"s, "b/1c f/1c 13/1c 17/1c 13/1c ",
       "\0abc\0021234"s, true},
      {"shift:\11\0\0\0\0\0\1\1"s,
       "13/1c 17/1c 3/1c 7/1c 3/1c 7/1c 3/1c 7/1c 3/1c 7/1c 3/1c 7/1c 3/1c 7/1c 3/1c 7/1c "
       "13/1c 17/1c 13/1c ",
       "\xaa\0"s, true},
      {"shift:\11\0\0\0\0\0\1"s, "", "", true},
      {"shift:\0\x40\0\0"s, "", "", true},
      {"shift:\1\x40\0\0"s, "", "", false},
      {"shift:\0\0\0\0"s, "", "", false},
      {"settck:1234quit", "", "1234", false},
  });
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
  recording.SampleTdo();             // reads 0, before the first write
  recording.SampleTdo();             // reads 1
  recording.Write(1, GPIO_PIN_ALL);  // reads 0
  recording.SampleTdo();
  recording.SampleTdo();
  recording.Write(2, 0x1f);  // reads 1
  recording.Write(4, 0);     // reads 0; all pins float
  recording.SampleTdo();
  EXPECT_EQ(recording.CollectTdo(), icehost::Bits({false, true, false, false, false}));
  EXPECT_EQ(recording.Read(), GPIO_PIN_TDO);
  recording.SampleTdo();  // reads 0, after everything recorded
  EXPECT_EQ(recording.CollectTdo(), icehost::Bits({false}));
  EXPECT_EQ(recorder.notes.str(), "1 22 1f ");
  for (int i = 0; i < 3000; ++i) recording.Write(i, GPIO_PIN_ALL);
  recording.Flush();
  EXPECT_EQ(recording.Steps(), 3003U);
}

}  // namespace
