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

// An operation: a row of the table and a part of the waveform.
struct PageRow {
  enum class Verdict { kDone, kMet, kNotMet, kFailed };

  long number;  // counted from 0 in each source (see AddSource)
  int line;     // from 1; 0 if the operation has no line
  StepRange steps;
  std::string name;
  std::string sent;
  std::string received;
  std::string expected;
  std::string wrong;  // hexadecimal masks of the bits of `received` that are not as expected
  Verdict verdict;
};

// Writes recorded steps as one HTML page with a listing of the source, a table of operations and
// the waveform. The page of a long run contains only the part that a browser shows quickly: the
// first steps, rows and lines, and later rows that failed. The page reports missing parts. Texts
// may contain any bytes; the page never interprets them as markup.
class PageWriter : public StepRecorder {
 public:
  // Begins a source (a script of a run), whose rows follow. Splits `content` at line feeds.
  void AddSource(std::string_view name, std::string_view content,
                 const std::vector<SourceMark>& marks);
  void AddRow(const PageRow& row);
  // Adds a message, or a part of one, to the previous row.
  void AddMessage(std::string_view text);
  // Adds the reason why the previous row or the source failed. `line` is 0 if no line caused it.
  void AddError(std::string_view text, int line);
  void Record(const PinStep& step) override;

  void Write(std::ostream& stream, const PageHead& head) const;

 private:
  bool HasRoom() const;
  bool HasRoomForFault();
  void Append(std::string_view entry);
  std::string Totals() const;

  std::string sources_;  // elements of the JSON array data.sources (see page/model.js)
  std::string log_;      // elements of the JSON array data.log (see page/model.js)
  std::vector<std::uint16_t> steps_;
  long total_steps_ = 0;
  long first_rows_ = 0;  // all rows until the page has no more room
  long total_rows_ = 0;
  long message_lines_ = 0;
  bool cut_messages_ = false;
  int late_faults_ = 0;
  bool cut_faults_ = false;
  long lines_ = 0;
  long marks_ = 0;
};

// Return outputs that write the page at the end of a run, or of serve. `stream` must outlive them.
std::unique_ptr<Output> MakeRunPage(std::ostream& stream);
std::unique_ptr<Output> MakeServePage(std::ostream& stream);

// Returns page.html with its styles and scripts, and with "@data@" in place of the data.
std::string_view PageTemplate();

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PAGE_PAGE_WRITER_H_
