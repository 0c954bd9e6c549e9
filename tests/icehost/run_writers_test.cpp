#include "host/events/run_writers.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "host/events/events.h"

namespace {

using Texts = std::vector<std::string>;

// Returns the JSON text of each message that a run writes for these pieces. "|" is a host call.
Texts MessageLines(const Texts& pieces) {
  std::ostringstream stream;
  const auto writer = icehost::MakeJson(stream);
  auto& listener = dynamic_cast<icehost::EventListener&>(*writer);
  for (const std::string& piece : pieces) {
    if (piece == "|") {
      listener.OnResetRequest();
    } else {
      listener.OnMessage(piece.c_str());
    }
  }
  listener.OnRunEnd({});
  Texts lines;
  std::istringstream written(stream.str());
  for (std::string line; std::getline(written, line);) {
    if (line.rfind("{\"totals", 0) == 0) break;
    lines.push_back(line.rfind("{\"request", 0) == 0 ? "|" : line.substr(12, line.size() - 14));
  }
  return lines;
}

TEST(JsonWriter, JoinsPiecesOfLines) {
  const std::string most(1U << 16U, 'x');
  const struct {
    Texts pieces, lines;
  } kCases[] = {
      {{"", "a", "b\n", "c\nd\n\ne"}, {"ab\\n", "c\\n", "d\\n", "\\n", "e"}},
      {{"a", "|", "b\n", "|", "", "|", "c"}, {"a", "|", "b\\n", "|", "|", "c"}},
      {{"\xe2", "\x82", "\xac\n"}, {"\\u20ac\\n"}},
      {{"\x80\"\\\x1b\x7f"}, {"\\ufffd\\\"\\\\\\u001b\\u007f"}},
      {{most, "\n"}, {most, "\\n"}},
      {{most + most, "y"}, {most, most, "y"}},
      // A character is not cut in two.
      {{most.substr(2) + "\xe2\x82\xac", "y\n"}, {most.substr(2), "\\u20acy\\n"}},
      {{most + "\n" + most.substr(1) + "\n"}, {most, "\\n", most.substr(1) + "\\n"}},
  };
  for (const auto& one : kCases) EXPECT_EQ(MessageLines(one.pieces), one.lines);
}

}  // namespace
