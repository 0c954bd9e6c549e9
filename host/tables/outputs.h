// The files that run and serve write. A new one is its writer, and a row in outputs.cpp.
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
  // The output of one verb; all members are null if the verb does not have the output.
  struct Verb {
    const char* help = nullptr;
    MakeOutput make = nullptr;
    MakeOutput make_without_pins = nullptr;  // for a probe that shows none, if it needs another
  };

  const char* option;
  bool file_may_lack;  // it is then standard error
  bool needs_pins;
  OutputFile::Rest rest;
  Verb run, serve;
  bool reports_unplayed = false;  // it is also written if a run does not begin
};

// Returns all rows.
const std::vector<OutputKind>& OutputKinds();

// An output that the user asked for.
struct OutputRequest {
  const OutputKind* kind;
  std::optional<std::string> path;  // "-": standard output; none: standard error
};
using OutputRequests = std::vector<OutputRequest>;

// Whether an output goes to standard error.
bool UseStandardError(const OutputRequests& requests);

// Returns what the head of every page says: the probe, what was done (`counts`), when it began
// (`seconds` ago), and the version of icehost.
std::vector<std::pair<std::string, std::string>> HeadEntries(const ProbeOptions& probe,
                                                             const std::string& counts,
                                                             double seconds);

class Outputs {
 public:
  // Opens all files, that of --spawn-log too, and changes none. Throws IoError if one cannot be
  // opened, or needs the pins of a probe that shows none; BadUsage if one has another use.
  Outputs(const OutputRequests& requests, OutputKind::Verb OutputKind::*verb,
          const ProbeOptions& probe, FileUses uses);
  // Adds a file that the caller begins and writes. Complete completes it with the others.
  OutputFile& Add(const std::string& option, const std::string& path, OutputFile::Rest rest);
  // Empties the files, except those of Add.
  void Begin();
  // Throws once standard output takes no more, because a run should not go on unseen.
  void ThrowIfCut() const {
    if (standard_output_ != nullptr) standard_output_->ThrowIfCut();
  }
  // Writes what is buffered. Throws as OutputFile::ThrowIfCut does.
  void Flush();
  // Returns a warning for each thing that was played and is in no file, and each only once.
  // Complete may add some.
  std::vector<std::string> TakeLosses();
  // There was no memory for some event: what became of it in which file is unknown.
  void MarkIncomplete();
  // Ends the files, and writes what is buffered. Returns a text for each that is not whole.
  std::vector<std::string> End(const PageHead& head);
  // After End: tells the listeners how the run ended, and closes the files. Returns the same, for
  // those that End has not named. Then it is `if_lost` that is told from there on; the first row of
  // the table comes last.
  std::vector<std::string> EndRun(const RunEnd& end, const RunEnd& if_lost);
  // Ends and closes the files of serve. Returns the same.
  std::vector<std::string> Complete(const PageHead& head);

  bool Any() const { return !writers_.empty(); }

  // The outputs, by what they listen to.
  std::vector<EventListener*> listeners;
  std::vector<ServeListener*> serve_listeners;
  std::vector<StepRecorder*> recorders;

 private:
  struct Writer {
    std::unique_ptr<Output> output;
    OutputFile* file;  // null: standard error
  };

  // Lets `act` complete one file. Adds a text to `failures` if the file is not whole.
  template <class Act>
  static void Guard(const Writer& writer, std::vector<std::string>& failures, const Act& act);

  FileUses uses_;
  std::vector<std::unique_ptr<OutputFile>> files_;
  std::vector<Writer> writers_;
  std::size_t begun_ = 0;                  // how many of the files Begin begins
  OutputFile* standard_output_ = nullptr;  // where it is one of the files
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_TABLES_OUTPUTS_H_
