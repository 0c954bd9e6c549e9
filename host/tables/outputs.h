// The files that run and serve write. To add one, write its class and a row in outputs.cpp.
#ifndef ICESCRIPT_HOST_TABLES_OUTPUTS_H_
#define ICESCRIPT_HOST_TABLES_OUTPUTS_H_

#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "host/events/events.h"
#include "host/events/output.h"
#include "host/pins/pin_writers.h"
#include "host/pins/recording_port.h"
#include "host/system/file_uses.h"
#include "host/system/output_file.h"
#include "host/tables/probes.h"

namespace icehost {

using MakeOutput = std::unique_ptr<Output> (*)(std::ostream& stream);

struct OutputKind {
  // The output of one verb. All members are null if the verb cannot write the output.
  struct Verb {
    const char* help = nullptr;
    MakeOutput make = nullptr;
    MakeOutput make_without_pins = nullptr;  // for a probe without pins; null: use `make`
  };

  const char* option;
  bool file_may_lack;  // the user may omit the file; the output then goes to standard error
  bool needs_pins;
  OutputFile::Rest rest;
  Verb run, serve;
  bool reports_unplayed = false;  // the output is written even if a run does not begin
};

const std::vector<OutputKind>& OutputKinds();

struct OutputRequest {
  const OutputKind* kind;
  std::optional<std::string> path;  // "-": standard output; nothing: standard error
};
using OutputRequests = std::vector<OutputRequest>;

// Returns whether at least one output goes to standard error.
bool UseStandardError(const OutputRequests& requests);

// Returns the entries at the head of a page: the probe, `counts` (a text about the work done), the
// start time (`seconds` ago), and the version of icehost.
std::vector<std::pair<std::string, std::string>> HeadEntries(const ProbeOptions& probe,
                                                             const std::string& counts,
                                                             double seconds);

class Outputs {
 public:
  // Opens the files of the outputs and of --spawn-log, and changes none of them. Throws IoError if
  // a file cannot be opened, or if an output needs pins and the probe shows none. Throws BadUsage
  // if `uses` contains another use of a file. `verb` selects OutputKind::run or OutputKind::serve.
  Outputs(const OutputRequests& requests, OutputKind::Verb OutputKind::*verb,
          const ProbeOptions& probe, FileUses uses);
  // Opens one more file, which the caller begins and writes. Throws as the constructor does.
  OutputFile& Add(const std::string& option, const std::string& path, OutputFile::Rest rest);
  // Empties the files of the outputs, and begins the outputs.
  void Begin();
  // If an output goes to standard output, throws as its OutputFile::ThrowIfCut does.
  void ThrowIfCut() const {
    if (standard_output_ != nullptr) standard_output_->ThrowIfCut();
  }
  // Writes the buffered text of all files. Throws as OutputFile::ThrowIfCut does.
  void Flush();
  // Returns the new warnings of all outputs (Output::TakeLosses). Ending the outputs may add more.
  std::vector<std::string> TakeLosses();
  // Marks all files as incomplete. For use when memory has run out for an event.
  void MarkIncomplete();
  // Ends the outputs, and writes the buffered text. Returns a message for each incomplete file.
  std::vector<std::string> End(const PageHead& head);
  // Passes the end of the run to the outputs in the reverse order of the requests, and closes all
  // files. Once a file turns out to be incomplete, the remaining outputs receive `if_lost` instead
  // of `end`. Returns a message for each incomplete file that End has not reported.
  std::vector<std::string> EndRun(const RunEnd& end, const RunEnd& if_lost);
  // Ends the outputs of serve, and closes all files. Returns a message for each incomplete file.
  std::vector<std::string> Complete(const PageHead& head);

  bool Any() const { return !writers_.empty(); }

  // The outputs, by the events that they receive.
  std::vector<EventListener*> listeners;
  std::vector<ServeListener*> serve_listeners;
  std::vector<StepRecorder*> recorders;

 private:
  struct Writer {
    std::unique_ptr<Output> output;
    OutputFile* file;  // null: standard error
  };

  // Calls `act`. If the file of `writer` is incomplete afterwards, adds a message to `failures`.
  template <class Act>
  static void Guard(const Writer& writer, std::vector<std::string>& failures, const Act& act);

  FileUses uses_;
  std::vector<std::unique_ptr<OutputFile>> files_;
  std::vector<Writer> writers_;
  std::size_t begun_ = 0;                  // the number of files that Begin empties
  OutputFile* standard_output_ = nullptr;  // null if it is not one of the files
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_TABLES_OUTPUTS_H_
