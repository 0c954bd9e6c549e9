// The events of a run as a page.
#ifndef ICESCRIPT_HOST_RECORD_RUN_PAGE_H_
#define ICESCRIPT_HOST_RECORD_RUN_PAGE_H_

#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "host/record/events.h"
#include "host/record/page_writer.h"

namespace icehost {

// Makes an operation of the calls that it takes, and puts why it failed behind it.
class RunPage : public EventListener, public StepRecorder {
 public:
  // The text of the script that begins next, and what `check` finds in it.
  void AddSource(std::string_view name, std::string_view content,
                 const std::vector<PageMark>& marks);
  void OnScript(const std::string& path) override;
  void OnCall(const CallEvent& call) override;
  void OnMessage(const char* text) override;
  void OnError(const std::string& text, int line) override;
  void OnScriptEnd(bool ran) override;
  void Record(const PinStep& step) override { writer_.Record(step); }

  void Write(std::ostream& stream, const PageHead& head) const { writer_.Write(stream, head); }

 private:
  PageRow Row(const CallEvent& call) const;
  void Add(const PageRow& row);
  void TellErrors();

  struct Error {
    std::string text;
    int line;
  };
  PageWriter writer_;
  long operation_ = 0;           // the next one's number
  std::optional<PageRow> scan_;  // inserted, not yet executed
  std::vector<Error> errors_;    // of the call under way
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_RECORD_RUN_PAGE_H_
