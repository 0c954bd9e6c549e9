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
  // The output of one verb. All members are null if the verb does not have the output.
  struct Verb {
    const char* help = nullptr;
    MakeOutput make = nullptr;
    MakeOutput make_without_pins = nullptr;  // for a probe without pins; null: use `make`
  };

  const char* option;
  bool file_may_lack;  // without a file, the output goes to standard error
  bool needs_pins;
  OutputFile::Rest rest;
  Verb run, serve;
  bool reports_unplayed = false;  // the output is also written if a run does not begin
};

// Returns all rows.
const std::vector<OutputKind>& OutputKinds();

// An output that the user asked for.
struct OutputRequest {
  const OutputKind* kind;
  std::optional<std::string> path;  // "-": standard output; nothing: standard error
};
using OutputRequests = std::vector<OutputRequest>;

// Returns whether any output goes to standard error.
bool UseStandardError(const OutputRequests& requests);

// Returns the entries at the head of a page: the probe, what was done (`counts`), when it began
// (`seconds` ago), and the version of icehost.
std::vector<std::pair<std::string, std::string>> HeadEntries(const ProbeOptions& probe,
                                                             const std::string& counts,
                                                             double seconds);

class Outputs {
 public:
  // Opens all files, also for --spawn-log, and changes none. Throws IoError if a file cannot be
  // opened or an output needs pins that the probe lacks, and BadUsage if a file has another use.
  Outputs(const OutputRequests& requests, OutputKind::Verb OutputKind::*verb,
          const ProbeOptions& probe, FileUses uses);
  // Adds a file that the caller begins and writes. Complete closes it with the others.
  OutputFile& Add(const std::string& option, const std::string& path, OutputFile::Rest rest);
  // Begins the outputs and empties their files, but not the files of Add and --spawn-log.
  void Begin();
  // Throws if standard output accepts no more text, so that a run does not continue unseen.
  void ThrowIfCut() const {
    if (standard_output_ != nullptr) standard_output_->ThrowIfCut();
  }
  // Writes the buffered text. Throws as OutputFile::ThrowIfCut does.
  void Flush();
  // Returns the new warnings about things that were played but are missing from an output. Complete
  // may add more.
  std::vector<std::string> TakeLosses();
  // Marks all files as incomplete, because memory ran out for an event that any of them may lack.
  void MarkIncomplete();
  // Ends the outputs, and writes the buffered text. Returns a message for each file that is not
  // complete.
  std::vector<std::string> End(const PageHead& head);
  // Passes the end of the run to the outputs, the last row of the table first, and closes the
  // files. Returns a message for each incomplete file that End has not named. As soon as a file
  // turns out to be incomplete, the remaining outputs get `if_lost` instead of `end`.
  std::vector<std::string> EndRun(const RunEnd& end, const RunEnd& if_lost);
  // Ends the outputs of serve and closes the files. Returns a message for each that is not
  // complete.
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

  // Lets `act` complete one file. Adds a text to `failures` if the file is incomplete.
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
