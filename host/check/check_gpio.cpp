#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <string>
#include <utility>
#include <vector>

#include "base/gpio_line_parser.h"
#include "base/ini_file.h"
#include "base/text.h"
#include "entry/icescript.h"
#include "host/check/check.h"
#include "host/check/gpio_items.h"
#include "host/check/hints.h"
#include "host/check/pin_expectation.h"
#include "host/check/tap_reset.h"

namespace icehost {
namespace {

using icescript::GpioLineParser;
using Element = icescript::CIniFile::gpio_element;

// Finds levels that have no effect, and levels on TDO, which the target should drive.
class GpioPins {
 public:
  explicit GpioPins(Problems& problems) : problems_(problems) {}

  // Reads one line. `named` contains the pins that the line sets by name, as GPIO_PIN_ bits.
  void Take(GpioLine& line, const Element& element, int named) {
    if (element.out_value < 0 || element.oe_mask < 0) return;  // CheckWords reports negative values
    if ((element.flags & GPIO_FLAG_WRITE_OE) != 0) Enable(line, element.oe_mask);
    const int changed = (element.out_value ^ levels_) & GPIO_PIN_ALL;
    levels_ = element.out_value;
    if (((named | changed) & ~enables_) != 0) SetIdle(line, named, changed);
    if ((enables_ & GPIO_PIN_TDO) != 0 && !tdo_reported_) {
      CheckTdo(line, element.flags, named, changed);
    }
  }

  // Ends the block that began at line `rept`. A level set in the block may reach its pin in the
  // next pass, if any line of the block enables the pin.
  void CloseBlock(int rept) {
    int enabled = 0;
    for (unsigned pin = 0; pin < kPinKeys; ++pin) {
      if (enabled_at_[pin] > rept) enabled |= 1 << pin;
    }
    const auto reaches = [=](const Idle& idle) {
      return idle.place.line > rept && (idle.pins & enabled) != 0;
    };
    idle_.erase(std::remove_if(idle_.begin(), idle_.end(), reaches), idle_.end());
  }

  // Reports the levels that have not reached a pin by the end of the script.
  void Finish() {
    for (const Idle& idle : idle_) {
      problems_.Warn(
          idle.place,
          fmt::format(
              "this level has no effect: GPIO_OE does not enable {} on this line or a later one",
              PinNames(idle.pins)));
    }
  }

 private:
  // Levels that have not reached their pins so far. A later line may still enable one of the pins.
  struct Idle {
    Place place;
    int pins;
  };

  void Enable(GpioLine& line, int enables) {
    enables_ = enables & GPIO_PIN_ALL;
    if ((enables_ & GPIO_PIN_TDO) == 0) tdo_reported_ = false;
    for (unsigned pin = 0; pin < kPinKeys; ++pin) {
      if ((enables_ & 1 << pin) != 0) enabled_at_[pin] = line.Source().number;
    }
    const auto reaches = [this](const Idle& idle) { return (idle.pins & enables_) != 0; };
    idle_.erase(std::remove_if(idle_.begin(), idle_.end(), reaches), idle_.end());
  }

  // GPIO_OUT sets all pins, even if the script's author means only some. So the disabled pins that
  // it sets high are recorded only if the line changes no enabled pin.
  void SetIdle(GpioLine& line, int named, int changed) {
    int known = 0;
    for (const Idle& idle : idle_) known |= idle.pins;
    for (unsigned pin = 0; pin < kPinKeys; ++pin) {
      const int bit = 1 << pin;
      if ((named & ~enables_ & ~known & bit) != 0) idle_.push_back({line.PlaceOf(pin), bit});
    }
    const int by_word = changed & levels_ & ~named;
    if ((changed & enables_) == 0 && (by_word & ~known) != 0) {
      idle_.push_back({line.PlaceOf(kOut), by_word});
    }
  }

  // Warns only once while TDO is driven. The initial state, in which every script drives TDO,
  // causes no warning, because it is harmless in most scripts.
  void CheckTdo(GpioLine& line, int flags, int named, int changed) {
    const bool by_name = (named & GPIO_PIN_TDO) != 0;
    tdo_reported_ = true;
    if (by_name || (changed & GPIO_PIN_TDO) != 0) {
      problems_.Warn(line.PlaceOf(by_name ? kTdo : kOut),
                     "this drives TDO, which the target should drive (GPIO_OE=0x1F releases it)");
    } else if ((flags & GPIO_FLAG_READ_IN) != 0) {
      problems_.Warn(line.PlaceOf(kPrint),
                     "the probe drives TDO, so this reads the probe's level, not the target's "
                     "(GPIO_OE=0x1F releases TDO)");
    } else if ((flags & GPIO_FLAG_WRITE_OE) != 0) {
      problems_.Warn(line.PlaceOf(kOe),
                     fmt::format("this enables TDO, which the target should drive ({})",
                                 DidYouMean(fmt::format("0x{:02X}", enables_ & ~GPIO_PIN_TDO))));
    } else {
      tdo_reported_ = false;
    }
  }

  Problems& problems_;
  int levels_ = 0;
  int enables_ = GPIO_PIN_ALL;       // the pins that are enabled now
  bool tdo_reported_ = false;        // whether TDO was reported since it was last enabled
  std::array<int, 6> enabled_at_{};  // the last line that enabled each pin
  std::vector<Idle> idle_;
};

// Reads START and the lines after it in order, as the plug-in's parser does. Reports each line that
// the parser refuses, and then ignores it.
class GpioLines {
 public:
  explicit GpioLines(CheckResult& result)
      : problems_(result.problems), plan_(result.plan), pins_(problems_) {}

  void TakeStart(const ScriptLine& line) { AddOperation(line); }
  void Take(const ScriptLine& line);
  // Ends the script. If a line is too long (`cut`), reports no open blocks and no idle levels.
  void Finish(bool cut);

  bool Ended() const { return (state_.flags & GPIO_FLAG_END) != 0; }
  bool RefusedLast() const { return refused_last_; }

 private:
  struct Block {
    Place rept;
    int times;
    long operations = 0;  // so far, in one pass through the block
  };

  void Refuse(GpioLine& line, std::string_view item);
  void CheckWords(GpioLine& line, const Element& element);
  void AddOperation(const ScriptLine& line);
  void CountOperations(long number);
  void AddExpectation(const ScriptLine& line);
  void TakeElement(const ScriptLine& line);
  void CloseBlock(const ScriptLine& endr);

  Problems& problems_;
  Plan& plan_;
  GpioLineParser parser_;
  GpioLine line_;  // the current line
  Element state_{0, GPIO_PIN_ALL, GPIO_FLAG_START, icescript::GPIO_KIND_PIN, 0};
  GpioPins pins_;
  std::vector<Block> blocks_;  // the open blocks
  Problems block_problems_;
  bool begins_block_ = false;
  bool refused_last_ = false;
  bool refused_block_ = false;
};

void GpioLines::Take(const ScriptLine& source) {
  line_.Take(source);
  const GpioLineParser before = parser_;
  const GpioLineParser::Result result = parser_.Parse(source.text, state_);
  refused_last_ = result != GpioLineParser::Result::kLine && result != GpioLineParser::Result::kEnd;
  if (refused_last_) {
    Refuse(line_, parser_.BadItem());
    parser_ = before;
    return;
  }
  CheckWords(line_, parser_.Element());
  state_ = parser_.Element();
  TakeElement(source);
  AddExpectation(source);
  pins_.Take(line_, state_, line_.Check(state_.flags, problems_));
}

void GpioLines::Refuse(GpioLine& line, std::string_view item) {
  const std::size_t blanks = std::min(item.find_first_not_of(' '), item.size());
  problems_.Error(line.Source().Of(item.substr(blanks)),
                  fmt::format("Syntax error in line{} : {} ({})", line.Source().number, item,
                              line.WhyRefused(item)));
  refused_block_ = refused_block_ || line.NamesBlock();
}

// Reports a wrong GPIO_OUT or GPIO_OE only on the line that sets it, since later lines keep it.
void GpioLines::CheckWords(GpioLine& line, const Element& element) {
  const auto rises = [](int word, int before) {
    return word > GPIO_PIN_ALL && (word & ~GPIO_PIN_ALL) != (before & ~GPIO_PIN_ALL);
  };
  if (element.out_value < 0 && element.out_value != state_.out_value) {
    problems_.Error(line.PlaceOf(kOut),
                    "GPIO_OUT is negative: the plug-in refuses it without a message");
  } else if (rises(element.out_value, state_.out_value)) {
    problems_.Warn(line.PlaceOf(kOut),
                   "GPIO_OUT has bits beyond the six pins (0x01 to 0x20): these bits stay set "
                   "until a pin is set to 0");
  }
  if (element.oe_mask < 0 && element.oe_mask != state_.oe_mask) {
    problems_.Error(line.PlaceOf(kOe), ",inifile.error (GPIO_OE is negative)");
  } else if (rises(element.oe_mask, state_.oe_mask)) {
    problems_.Warn(line.PlaceOf(kOe), "GPIO_OE has bits beyond the six pins (0x01 to 0x20)");
  }
}

void GpioLines::AddOperation(const ScriptLine& line) {
  const auto number = static_cast<unsigned>(line.number);
  plan_.pins.push_back({number & 0x3FFFFFFFU, std::exchange(begins_block_, false) ? 1U : 0U, 0});
  CountOperations(1);
}

void GpioLines::CountOperations(long number) {
  long& operations = blocks_.empty() ? plan_.operations : blocks_.back().operations;
  operations = SaturatedSum(operations, number);
}

void GpioLines::AddExpectation(const ScriptLine& line) {
  if ((state_.flags & GPIO_FLAG_READ_IN) == 0) return ReportVainExpectation(line, problems_);
  auto expectation = ReadPinExpectation(line, problems_);
  if (!expectation.has_value()) return;
  expectation->operation = plan_.pins.size() - 1;
  plan_.expectations.push_back(std::move(*expectation));
}

void GpioLines::TakeElement(const ScriptLine& line) {
  if (state_.kind == icescript::GPIO_KIND_REPT) {
    begins_block_ = true;
    blocks_.push_back({line.Start(), state_.repeat_count});
  } else if (state_.kind == icescript::GPIO_KIND_ENDR) {
    plan_.pins.back().ends_block = 1;
    CloseBlock(line);
  } else {
    AddOperation(line);
  }
}

void GpioLines::CloseBlock(const ScriptLine& endr) {
  if (blocks_.empty()) {
    block_problems_.Error(endr.Start(), "error: rept & endr not match. (this ENDR has no REPT)");
    return;
  }
  const Block block = blocks_.back();
  blocks_.pop_back();
  if (block.operations == 0) {
    block_problems_.Warn(
        block.rept,
        "this block contains no pin operation: the plug-in skips it, so it adds no delay");
  }
  CountOperations(SaturatedProduct(block.operations, block.times));
  if (block.times > 1) pins_.CloseBlock(block.rept.line);
}

void GpioLines::Finish(bool cut) {
  if (cut) blocks_.clear();
  for (const Block& block : blocks_) {
    block_problems_.Error(block.rept,
                          "syntax error: rept & endr not match. (this REPT has no ENDR)");
  }
  // If a REPT or ENDR was refused, its partner has no match, but that is not a second fault.
  if (!refused_block_) problems_.Add(std::move(block_problems_));
  if (!cut) pins_.Finish();
}

// Returns whether the line below the section tag is START. Reports any other line.
bool CheckStart(const ScriptLine& line, Problems& problems) {
  if (icescript::EqualsUpper(line.text, "START")) return true;
  const std::string_view slip = SlipIn(line.text);
  problems.Error(
      line.Start(),
      fmt::format("Syntax error: no start found. ({}{}the line after the section tag must "
                  "contain only START)",
                  slip, slip.empty() ? "" : "; "));
  return false;
}

// Reports expectations on lines up to START, on lines after END, and on lines with only a comment.
void ReportLoneExpectations(const ScriptText& script, int start, int last, Problems& problems) {
  for (const ScriptLine line : script) {
    const bool outside = line.number <= start || line.number > last;
    if (outside || line.Blank()) ReportVainExpectation(line, problems);
  }
}

// Reports that END is missing. `last` is the place of the last line with text.
void ReportNoEnd(const ScriptText& script, Place last, const GpioLines& lines, Problems& problems) {
  constexpr const char* kNoEnd = "Syntax error, no end found";
  if (const auto cut = script.CutAt()) {
    problems.Error(*cut, fmt::format("{} ({})", kNoEnd, kCutScript));
  } else if (!lines.RefusedLast()) {  // a refused last line may have been meant as END
    problems.Error(last, kNoEnd + InParentheses(script.HasText() ? "the script has no END"
                                                                 : "the script is empty"));
  }
}

}  // namespace

void CheckGpio(const ScriptText& script, CheckResult& result) {
  Problems& problems = result.problems;
  GpioLines lines(result);
  Place last{1, 1};  // the last line with text
  auto at = script.WithText(script.begin());
  if (at != script.end()) {  // skips the section tag
    last = (*at).Start();
    at = script.WithText(++at);
  }
  if (at != script.end()) {
    const ScriptLine line = *at;
    if (!CheckStart(line, problems)) return;
    lines.TakeStart(line);
    last = line.Start();
    ++at;
  }
  const int start = last.line;
  for (; at != script.end() && !lines.Ended(); ++at) {
    const ScriptLine line = *at;
    if (line.Blank()) continue;
    lines.Take(line);
    last = line.Start();
  }
  lines.Finish(script.CutAt().has_value() && !lines.Ended());
  ReportLoneExpectations(script, start, last.line, problems);
  WarnOfTapReset(script, problems);
  at = script.WithText(at);
  if (!lines.Ended()) {
    ReportNoEnd(script, last, lines, problems);
  } else if (at != script.end()) {
    problems.Warn((*at).Start(), "the plug-in ignores text after END");
  }
}

}  // namespace icehost
