// The picture of a run: what stands in which band, and that it can be read.
#include <gtest/gtest.h>

#include <algorithm>
#include <regex>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "tests/icehost/run_icehost.h"

namespace {

struct Text {
  int y;
  double left;
  double right;
  std::string words;
};

// What the writer puts on a line: `<text x="66" y="20">Sh</text>`, in a group or with a mark.
std::vector<Text> Texts(const std::string& line, bool centred) {
  static const std::regex escape("&gt;");
  static const std::regex text(R"re(<text [^>]*?x="(\d+)" y="(\d+)"[^>]*>([^<]*)</text>)re");
  std::vector<Text> texts;
  if (line.find("<text ") == std::string::npos) return texts;
  for (std::sregex_iterator found(line.begin(), line.end(), text), end; found != end; ++found) {
    const std::string words = std::regex_replace((*found)[3].str(), escape, ">");
    const double width = 6.02 * static_cast<double>(words.size());
    const double left = std::stoi((*found)[1]) - (centred ? width / 2 : 0);
    texts.push_back({std::stoi((*found)[2]), left, left + width, words});
  }
  return texts;
}

struct Picture {
  int width = 0;
  std::vector<Text> texts;
  // The width; a line for each band, with what stands in its segments, then o for each mark or x
  // for one that is not as expected, and its label; the note.
  std::string summary;
};

Picture Read(const std::string& svg) {
  Picture picture;
  std::istringstream lines(svg);
  bool centred = false;
  for (std::string line; std::getline(lines, line);) {
    const auto begins = [&line](const char* with) { return line.rfind(with, 0) == 0; };
    std::smatch match;
    if (begins("<svg ") &&
        std::regex_search(line, match, std::regex(R"re(^<svg .* width="(\d+)" h)re"))) {
      picture.width = std::stoi(picture.summary = match[1]);
    }
    if (begins("<path class=\"grid\"")) picture.summary += '\n';
    if (begins("<g ")) centred = line.find("text-anchor=\"middle\"") != std::string::npos;
    if (begins("<circle class=\"read\"")) picture.summary += "o ";
    if (begins("<path class=\"unmet\"")) picture.summary += "x ";
    if (line.find("italic") != std::string::npos) picture.summary += '\n';
    // Names of rows and the ruler are the same in every picture.
    const bool same = begins("<text x=\"6\"") || begins("<g ");
    for (const Text& text : Texts(line, centred && begins("<text x"))) {
      picture.texts.push_back(text);
      if (!same) picture.summary += text.words + '|';
    }
  }
  return picture;
}

Picture Draw(const std::string& arguments) {
  return Read(RunIcehost("run -q --svg /dev/stdout 2>/dev/null " + arguments).output);
}

std::string Ini(const std::string& script) {
  return "- <<'EOF'\n" + script + "EOF\n";
}

std::string Gpio(const std::string& lines) {
  return Ini("[ZEVA_ICE_GPIO]\nSTART\n" + lines + "END\n");
}

// As the first lines of a GPIO script: the loop's begin at line 4.
std::string Loop(int count, const std::string& lines = "TDI=1\n") {
  return "REPT=" + std::to_string(count) + '\n' + lines + "ENDR\n";
}

std::string Scan(const std::string& section, int dr_bits) {
  return '[' + section + "]\nIR=2,3\nDR=R," + std::to_string(dr_bits) + ",0\n";
}

std::string Repeated(const std::string& text, int times) {
  std::string repeated;
  for (int i = 0; i < times; ++i) repeated += text;
  return repeated;
}

TEST(Svg, FillsBandsOfAPage) {
  const std::string unknown_to_shift = "unknown|TLR|RTI|Sel|Sel|Cap|Sh|Ex1|Upd|RTI|Sel|Cap|";
  const std::string far = Repeated("\n", 1000);
  const std::string to_end = "Ex1|Upd|RTI|";
  const struct {
    std::string arguments;
    std::string summary;
  } kRuns[] = {
      // The steps are as wide as they may be, the bands even: none, one, a full band, one more.
      {Ini("[CONTROL]\nCDI=5\n"), "115\n\nNo pin was driven|"},
      {Gpio(""), "128\n2|TLR|"},
      {Gpio(Loop(19)), "964\n2|" + Repeated("4|", 19) + "Test-Logic-Reset|"},
      {Gpio(Loop(20)), "546\n2|" + Repeated("4|", 20) + "Test-Logic-Reset|"},
      {Gpio(Loop(39)), "964\n2|" + Repeated("4|", 39) + "Test-Logic-Reset|"},
      {Gpio(Loop(40)), "634\n2|" + Repeated("4|", 24) + "Test-Logic-Reset|\n" + Repeated("4|", 16) +
                           "Test-Logic-Reset|"},
      {"--ir-length 2 " + Ini(Scan("A", 2) + Scan("B", 3)),
       "964\n[A] IR 2 bits 0x03 -> 0x01, DR 2 bits 0x00 -> 0x00|"
       "[B] IR 2 bits 0x03 -> 0x01, DR 3 bits 0x00 -> 0x00|" +
           unknown_to_shift + "Sh|Ex1|Upd|RTI|Sel|Sel|Cap|Sh|Ex1|Upd|RTI|Sel|Cap|Shift-DR|" +
           to_end},
      // A scan that is cut has its values where most of it is, a state its name wherever one fits.
      {"--ir-length 2 " + Ini(Scan("A", 2) + Scan("LONGER_THAN_WHAT_IS_LEFT_OF_IT", 4)),
       "634\n[A] IR 2 bits 0x03 -> 0x01, DR 2 bits 0x00 -> 0x00|" + unknown_to_shift +
           "Sh|Ex1|Upd|RTI|Sel|\n"
           "[LONGER_THAN_WHAT_IS_LEFT_OF_IT] IR 0x03, DR -> 0x00|Cap|Sh|Ex1|Upd|RTI|Sel|Cap|"
           "Shift-DR|" +
           to_end},
      {"tests/scripts/walk.gpio",
       "634\n3|4|5|6|7|8|9|10|11|12|13|14|15|16|17|18|19|20|21|23|24|25|26|27|28|"
       "TLR|RTI|Sel|Cap|Sh|Ex1|Pau|Ex2|Sh|Ex1|Upd|Sel|o 0x27|\n"
       "29|30|31|32|33|34|35|36|37|38|39|40|41|42|43|44|"
       "Sel|Sel|Cap|Sh|Ex1|Pau|Ex2|Upd|TLR|"},
      {"--ir-length 2 " + Ini(Scan(std::string(99, 'A'), 2)),
       "579\nIR 2 bits 0x03 -> 0x01, DR 2 bits 0x00 -> 0x00|" + unknown_to_shift + "Sh|" + to_end},
      // Where a step has no room for a number there are several lines, or a loop.
      {Gpio(far + Repeated("TDI=1\n", 20)),
       "546\n2|1003-1005|1006-1008|1009-1011|1012-1014|1015-1017|1018-1022|Test-Logic-Reset|"},
      {Gpio(far + Loop(30)), "766\n2|1004, 30 times|Test-Logic-Reset|"},
      {Gpio(far + Loop(15, "TDI=1\nTDI=0\n")), "766\n2|1004-1005, 15 times|Test-Logic-Reset|"},
      {Gpio(far + Loop(10, "TDI=1\n" + Loop(3) + "TDI=0\n") + "TDI=1\n"),
       "744\n2-1004|" + Repeated("1006|", 6) + "Test-Logic-Reset|\n" + Repeated("1006|", 4) +
           "Test-Logic-Reset|"},
      {Gpio(far + Loop(3, Repeated("TDI=1\n", 7)) + "TDI=1\n"),
       "590\n2|" + Repeated("1004-1006|1007-1010|", 3) + "Test-Logic-Reset|"},
      // What was read, and what was not as expected.
      {"examples/reset_pulse.gpio", "304\n4|5|6|8|12|Test-Logic-Reset|o 0x3f|o 0x3e|o 0x3f|"},
      {"--keep-going " + Gpio("NRST=1\nPRINT=GPIO_IN  # expect NRST=0\nTMS=1\nTMS=0\n" +
                              Loop(3, "PRINT=GPIO_IN  # expect NRST=0\n")),
       "260\n2|3|5|6|Test-Logic-Reset|x 0x01|x 0x01|"},
      {Gpio(Loop(12, "TCK=1\nPRINT=GPIO_IN\nTCK=0\nPRINT=GPIO_IN\n")),
       "634\n2|" + Repeated("4|6|", 12) + "Test-Logic-Reset|o 0x04|" + Repeated("o ", 23) +
           "0x00|"},
      {"--keep-going --ir-length 2 " +
           Ini(Scan("A", 2) + "TDO=1\nMASK=1\nIR_TDO=2\n" + Scan("B", 2) + "TDO=0\n"),
       "942\n[A] IR 2 bits 0x03 -> 0x01, DR 2 bits 0x00 -> 0x00|"
       "[B] IR 2 bits 0x03 -> 0x01, DR 2 bits 0x00 -> 0x00|" +
           unknown_to_shift + "Sh|Ex1|Upd|RTI|Sel|Sel|Cap|Sh|Ex1|Upd|RTI|Sel|Cap|Sh|" + to_end +
           "x IR expected 0x02, captured 0x01 (mask 0x03)|"},
  };
  for (const auto& run : kRuns) {
    EXPECT_EQ(Draw(run.arguments).summary, run.summary) << run.arguments;
  }
}

// A run that is cut says so, and a run of as many steps as are drawn does not.
TEST(Svg, EndsWithTheLastBandOfManySteps) {
  const struct {
    std::string arguments;
    long lines;  // one a band, and the note
    std::string note;
  } kRuns[] = {
      {Gpio(Loop(999)), 25, ""},
      {Gpio(Loop(1000)), 26, "The first 1000 of 1001 steps|"},
      {"examples/reset.ini " + Gpio(Loop(1787)), 25, ""},
      {"examples/reset.ini " + Gpio(Loop(500000)), 26, "The first 2000 of 500213 steps|"},
  };
  for (const auto& run : kRuns) {
    const std::string summary = Draw(run.arguments).summary;
    EXPECT_EQ(std::count(summary.begin(), summary.end(), '\n'), run.lines) << run.arguments;
    EXPECT_EQ(summary.substr(std::min(summary.find("The first"), summary.size())), run.note);
  }
}

// No text touches another, or leaves the picture.
TEST(Svg, CanBeRead) {
  for (const std::string& arguments :
       {std::string("examples/*.[gi]*"), std::string("tests/scripts/walk.gpio"),
        std::string("tests/scripts/long_scans.ini --register 0x15:8=5a --ir-length 6 --wire 2wire"),
        std::string("--idcode 39ca2003 examples/read_idcode.ini"),
        "examples/reset.ini " + Gpio(Loop(40, "TCK=1\nPRINT=GPIO_IN\nTCK=0\n")),
        "--keep-going " + Gpio(Loop(400, "TDI=1\nPRINT=GPIO_IN  # expect NRST=1\n"))}) {
    const Picture picture = Draw(arguments);
    std::vector<Text> texts = picture.texts;
    ASSERT_GT(texts.size(), 8U) << arguments;
    std::sort(texts.begin(), texts.end(), [](const Text& one, const Text& other) {
      return std::tie(one.y, one.left) < std::tie(other.y, other.left);
    });
    for (std::size_t i = 0; i < texts.size(); ++i) {
      EXPECT_GE(texts[i].left, 0) << texts[i].words;
      EXPECT_LE(texts[i].right, picture.width) << texts[i].words;
      if (i + 1 < texts.size() && texts[i + 1].y == texts[i].y) {
        EXPECT_LT(texts[i].right, texts[i + 1].left) << texts[i].words << " of " << arguments;
      }
    }
  }
}

}  // namespace
