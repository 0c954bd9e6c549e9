// What was recorded as one HTML page: a listing of the source, a table of operations and the
// waveform. Knows neither scripts nor host calls.
#ifndef ICESCRIPT_HOST_PAGE_PAGE_WRITER_H_
#define ICESCRIPT_HOST_PAGE_PAGE_WRITER_H_

#include <cstdint>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "host/events/events.h"
#include "host/events/output.h"
#include "host/pins/recording_port.h"

namespace icehost {

// An operation: a row of the table, and a part of the waveform.
struct PageRow {
  enum class Verdict { kDone, kMet, kNotMet, kFailed };

  long number;  // in its source, from 0
  int line;     // from 1; 0: of none
  StepRange steps;
  std::string name;
  std::string sent;
  std::string received;
  std::string expected;
  std::string wrong;  // a one for each bit received that is not as expected
  Verdict verdict;
};

// Keeps what the page tells as the text of the page's data, and no more of a long run than a
// browser is quick with: the first steps, rows and lines. Of later rows only those that are not
// well are kept, and the page says what is missing. Any text may hold any bytes: in the page it is
// text.
class PageWriter : public StepRecorder {
 public:
  // The rows that follow belong to this source. Lines end with a line feed.
  void AddSource(std::string_view name, std::string_view content,
                 const std::vector<SourceMark>& marks);
  void AddRow(const PageRow& row);
  // Adds a message of the row before it; may be a piece of a line.
  void AddMessage(std::string_view text);
  // Explains why a row or the source failed; `line` is 0 if it concerns no line.
  void AddError(std::string_view text, int line);
  void Record(const PinStep& step) override;

  void Write(std::ostream& stream, const PageHead& head) const;

 private:
  bool HasRoom() const;
  bool HasRoomForFault();
  void Append(std::string_view entry);
  std::string Totals() const;

  std::string sources_;  // elements of an array; page/model.js describes them
  std::string log_;      // elements of another
  std::vector<std::uint16_t> steps_;
  long total_steps_ = 0;
  long rows_ = 0;
  long total_rows_ = 0;
  long message_lines_ = 0;
  bool cut_messages_ = false;
  int late_faults_ = 0;
  bool cut_faults_ = false;
  long lines_ = 0;
  long marks_ = 0;
};

// The page of a run and of a served target, written when it ends.
std::unique_ptr<Output> MakeRunPage(std::ostream& stream);
std::unique_ptr<Output> MakeServePage(std::ostream& stream);

// The page without its data, embedded at build time: page.html with its styles and scripts.
// "@data@" appears in it once, in the place of the data.
std::string_view PageTemplate();

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PAGE_PAGE_WRITER_H_
