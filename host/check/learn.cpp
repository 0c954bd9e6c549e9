#include "host/check/learn.h"

#include <fmt/format.h>

#include <map>

#include "host/check/pin_expectation.h"

namespace icehost {
namespace {

using Of = Expectation::Of;

// "0x01,0x10": as DR lists them.
std::string ByteList(const std::string& bytes) {
  std::string list;
  for (const char byte : bytes) {
    list += fmt::format("{}0x{:02x}", list.empty() ? "" : ",", static_cast<unsigned char>(byte));
  }
  return list;
}

class Learner {
 public:
  Learner(const ScriptText& script, const Plan& plan) : script_(script), plan_(plan) {}

  void Take(std::size_t operation, Of of, const Capture& capture) {
    const Expectation* const known = plan_.Expected(operation, of);
    if (of == Of::kPins) {
      TakePins(static_cast<int>(plan_.pins[operation].line),
               known != nullptr ? known->mask[0] : '\x3F', capture);
    } else if (known != nullptr) {
      Replace(known->place, ByteList(capture.value));
    } else if (of == Of::kDr && plan_.jtag[operation].reads && !capture.value.empty()) {
      const ScriptLine line = script_.Line(plan_.jtag[operation].line);
      const bool returns = !line.raw.empty() && line.raw.back() == '\r';
      const std::string learned = fmt::format("\nTDO={}", ByteList(capture.value));
      // Before a carriage return, which then ends the new line.
      Edit(line.raw.substr(line.raw.size() - (returns ? 1 : 0), 0),
           (returns ? "\r" : "") + learned);
    }
  }

  std::string Finish() {
    std::string learned;
    std::size_t kept = 0;
    for (const auto& [at, edit] : edits_) {
      learned.append(script_.Content(), kept, at - kept).append(edit.text);
      kept = at + edit.replaced;
    }
    return learned.append(script_.Content(), kept);
  }

 private:
  struct Change {
    std::size_t replaced;
    std::string text;
  };

  void Edit(std::string_view replaced, std::string text) {
    const auto at = static_cast<std::size_t>(replaced.data() - script_.Content().data());
    edits_[at] = {replaced.size(), std::move(text)};
  }

  // The rest of the line's text from a place on.
  void Replace(Place place, std::string text) {
    const ScriptLine line = script_.Line(place.line);
    Edit(line.text.substr(static_cast<std::size_t>(place.column - line.Start().column)),
         std::move(text));
  }

  void TakePins(int number, char mask, const Capture& capture) {
    const ScriptLine line = script_.Line(number);
    const std::string_view comment = CommentOf(line);
    const std::string_view known = ExpectIn(comment);
    const int counted = capture.steady[0] & mask;
    const std::string learned =
        counted == 0 ? ""
                     : fmt::format("expect 0x{:02x}/0x{:02x}", capture.value[0] & counted, counted);
    if (!known.empty()) {
      Edit(known, learned.empty() ? "its levels change" : learned);
    } else if (learned.empty()) {
      return;
    } else if (!comment.empty()) {
      Edit(comment.substr(0, 0), fmt::format("# {} ", learned));
    } else {
      Edit(line.text.substr(line.text.size(), 0), fmt::format("  # {}", learned));
    }
  }

  const ScriptText& script_;
  const Plan& plan_;
  std::map<std::size_t, Change> edits_;  // by their places in the content
};

}  // namespace

std::string Learn(const ScriptText& script, const Plan& plan, const Captures& captures) {
  Learner learner(script, plan);
  for (const auto& [what, capture] : captures) learner.Take(what.first, what.second, capture);
  return learner.Finish();
}

}  // namespace icehost
