// What is wrong with a GPIO script.
#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <utility>

#include "base/gpio_line_parser.h"
#include "base/ini_file.h"
#include "entry/icescript.h"
#include "host/check/check.h"
#include "host/check/check_items.h"
#include "host/check/clean_lines.h"
#include "host/check/explain_item.h"
#include "host/check/gpio_blocks.h"
#include "host/check/gpio_items.h"
#include "host/check/gpio_pins.h"
#include "host/check/pin_expectation.h"
#include "host/check/remarks.h"
#include "host/system/files.h"

namespace icehost {
namespace {

using icescript::CIniFile;
using icescript::GpioLineParser;

// What the plug-in's reader says of a script that begins so and has no END.
std::string ReaderMessage(const std::string& head) {
  const MemoryFile file(head);
  CIniFile ini{icescript::CString(file.Path())};
  ini.ReadGpioFile();
  return ini.error_msg;
}

std::string WhyNoStart(std::string_view text) {
  const std::string_view slip = SlipIn(text);
  return fmt::format("{}{}the line below the section tag is START, alone", slip,
                     slip.empty() ? "" : "; ");
}

// The lines after START, as the plug-in's parser takes them one by one. A line that is refused is
// reported and left out: the ones after it are checked as if it were not there.
class GpioLines {
 public:
  explicit GpioLines(Checked& checked)
      : problems_(checked.problems), plan_(checked.plan), pins_(problems_) {}

  // START.
  void Begin(const ScriptLine& line) { Append(line); }
  void Take(const ScriptLine& line);
  // There are no more.
  void Finish();

  bool Ended() const { return (state_.flags & GPIO_FLAG_END) != 0; }
  bool RefusedLast() const { return refused_last_; }

 private:
  void Refuse(const ScriptLine& line, std::string_view item);
  void Append(const ScriptLine& line);
  void Plan(const ScriptLine& line);
  // Checks the items too.
  int NamedPins(const ScriptLine& line);
  void CheckWords(const ScriptLine& line, const CIniFile::gpio_element& element);

  Problems& problems_;
  icehost::Plan& plan_;
  bool begins_block_ = false;
  GpioLineParser parser_;
  CIniFile::gpio_element state_{0, GPIO_PIN_ALL, GPIO_FLAG_START, icescript::GPIO_KIND_PIN, 0};
  GpioBlocks blocks_;
  GpioPins pins_;
  CleanLines clean_;
  bool refused_last_ = false;
  bool refused_block_ = false;
};

void GpioLines::Take(const ScriptLine& line) {
  const GpioLineParser before = parser_;
  const GpioLineParser::Result result = parser_.Parse(line.text, state_);
  refused_last_ = result != GpioLineParser::Result::kLine && result != GpioLineParser::Result::kEnd;
  if (refused_last_) {
    Refuse(line, parser_.BadItem());
    parser_ = before;
    return;
  }
  CheckWords(line, parser_.Element());
  state_ = parser_.Element();
  Plan(line);
  blocks_.Take(line, state_);
  pins_.Take(line, state_, NamedPins(line));
}

int GpioLines::NamedPins(const ScriptLine& line) {
  if (const auto known = clean_.Find(line.text, state_.flags)) return *known;
  const std::size_t before = problems_.Found().size();
  const int named = CheckItems(line, state_.flags, problems_);
  if (problems_.Found().size() == before) clean_.Add(line.text, state_.flags, named);
  return named;
}

void GpioLines::Append(const ScriptLine& line) {
  const auto number = static_cast<unsigned>(line.number);
  plan_.pins.push_back({number & 0x3FFFFFFFU, std::exchange(begins_block_, false) ? 1U : 0U, 0});
}

void GpioLines::Plan(const ScriptLine& line) {
  if (state_.kind == icescript::GPIO_KIND_PIN) {
    Append(line);
  } else if (state_.kind == icescript::GPIO_KIND_REPT) {
    begins_block_ = true;
  } else {
    plan_.pins.back().ends_block = 1;
  }
  auto expectation = PinExpectation(line, (state_.flags & GPIO_FLAG_READ_IN) != 0, problems_);
  if (!expectation.has_value()) return;
  expectation->operation = plan_.pins.size() - 1;
  plan_.expectations.push_back(std::move(*expectation));
}

void GpioLines::Refuse(const ScriptLine& line, std::string_view item) {
  const std::size_t blanks = std::min(item.find_first_not_of(' '), item.size());
  problems_.Error(line.Of(item.substr(blanks)),
                  fmt::format("Syntax error in line{} : {} ({})", line.number, item,
                              WhyRefused(item, line.text)));
  refused_block_ = refused_block_ || NamesBlock(line);
}

// Reported where a word gets its value: the lines after it carry it on.
void GpioLines::CheckWords(const ScriptLine& line, const CIniFile::gpio_element& element) {
  const auto rises = [](int word, int before) {
    return word > GPIO_PIN_ALL && (word & ~GPIO_PIN_ALL) != (before & ~GPIO_PIN_ALL);
  };
  if (element.out_value < 0 && element.out_value != state_.out_value) {
    problems_.Error(PlaceOfKey(line, kOut), "GPIO_OUT is negative: refused without a message");
  } else if (rises(element.out_value, state_.out_value)) {
    problems_.Warn(PlaceOfKey(line, kOut),
                   "GPIO_OUT has bits above the six pins, until a pin is cleared");
  }
  if (element.oe_mask < 0 && element.oe_mask != state_.oe_mask) {
    problems_.Error(PlaceOfKey(line, kOe), ",inifile.error (GPIO_OE is negative)");
  } else if (rises(element.oe_mask, state_.oe_mask)) {
    problems_.Warn(PlaceOfKey(line, kOe), "GPIO_OE has bits above the six pins, 0x01 to 0x20");
  }
}

void GpioLines::Finish() {
  // A refused REPT or ENDR leaves its partner alone: that is no second fault.
  if (!refused_block_) problems_.Add(blocks_.Finish());
  pins_.Finish();
}

// An expectation on a line that does nothing, up to START and where there is nothing but a comment.
void ReportLoneExpectations(const ScriptText& script, int start, int last, Problems& problems) {
  if (script.Content().find("expect") == std::string::npos) return;
  for (const ScriptLine line : script) {
    if (line.number > last) break;
    if (line.Blank() || line.number <= start) PinExpectation(line, false, problems);
  }
}

}  // namespace

void CheckGpio(const ScriptText& script, Checked& checked) {
  Problems& problems = checked.problems;
  std::string head;
  Place last{1, 1};
  auto at = script.WithText(script.begin());
  for (int i = 0; i < 2 && at != script.end(); ++i, at = script.WithText(++at)) {
    head.append(at.Raw()) += '\n';
    last = (*at).Start();
  }
  const std::string message = ReaderMessage(head);
  if (message.find("no start") != std::string::npos) {
    problems.Error(last, message + InParentheses(WhyNoStart(script.Line(last.line).text)));
    return;
  }
  GpioLines lines(checked);
  const int start = last.line;
  lines.Begin(script.Line(start));
  for (; at != script.end() && !lines.Ended(); ++at) {
    const ScriptLine line = *at;
    if (line.Blank()) continue;
    lines.Take(line);
    last = line.Start();
  }
  at = script.WithText(at);
  lines.Finish();
  ReportLoneExpectations(script, start, last.line, problems);
  const auto too_long = script.TooLong();
  if (lines.Ended()) {
    if (at != script.end()) problems.Warn((*at).Start(), "text after END is not read");
  } else if (too_long.has_value()) {
    problems.Error(CutAt(*too_long), fmt::format("{} ({})", message, kCutScript));
  } else if (!lines.RefusedLast()) {  // which may have been meant as the END
    problems.Error(last, message + InParentheses(head.empty() ? "the script is empty" : ""));
  }
}

}  // namespace icehost
