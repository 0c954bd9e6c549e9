// The events of a run as a page.
#ifndef ICESCRIPT_HOST_PAGE_RUN_PAGE_H_
#define ICESCRIPT_HOST_PAGE_RUN_PAGE_H_

#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "host/events/events.h"
#include "host/events/output.h"
#include "host/page/page_writer.h"

namespace icehost {

// Makes an operation of the calls that it takes, and puts why it failed behind it.
class RunPage : public Output, public EventListener, public StepRecorder {
 public:
  explicit RunPage(std::ostream& stream) : stream_(stream) {}
  void OnSource(std::string_view name, std::string_view content,
                const std::vector<SourceMark>& marks) override {
    writer_.AddSource(name, content, marks);
  }
  void OnScript(const std::string& path) override;
  void OnCall(const CallEvent& call) override;
  void OnMessage(const char* text) override;
  void OnError(const std::string& text, int line) override;
  void OnScriptEnd(bool ran) override;
  void Record(const PinStep& step) override { writer_.Record(step); }
  void End(const PageHead& head) override { writer_.Write(stream_, head); }

 private:
  PageRow Row(const CallEvent& call) const;
  void Add(const PageRow& row);
  void TellErrors();

  struct Error {
    std::string text;
    int line;
  };
  std::ostream& stream_;
  PageWriter writer_;
  long operation_ = 0;           // the next one's number
  std::optional<PageRow> scan_;  // inserted, not yet executed
  std::vector<Error> errors_;    // of the call under way
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PAGE_RUN_PAGE_H_
