// The files that run and serve write. A new one is a row of kOutputKinds, and its writer.
#ifndef ICESCRIPT_HOST_TABLES_OUTPUTS_H_
#define ICESCRIPT_HOST_TABLES_OUTPUTS_H_

#include <array>
#include <memory>
#include <string>
#include <vector>

#include "host/events/events.h"
#include "host/events/output.h"
#include "host/pins/recording_port.h"
#include "host/pins/serve_writers.h"
#include "host/system/output_file.h"

namespace icehost {

using MakeOutput = std::unique_ptr<Output> (*)(std::ostream& stream, bool shows_pins);

struct OutputKind {
  const char* option;
  bool file_may_lack;  // it is then standard error
  bool needs_pins;
  OutputFile::Rest rest;
  // Of each verb; null where it has no such option.
  struct Verb {
    const char* help;
    MakeOutput make;
  } run, serve;
};

constexpr std::size_t kOutputCount = 6;
extern const OutputKind kOutputKinds[kOutputCount];

// No file can be written by this name.
constexpr const char* kStandardError = "/";
// By kind: empty where it is not asked for, "-" for standard output.
using OutputPaths = std::array<std::string, kOutputCount>;

// Whether one is asked for that needs a probe that shows its pins.
bool NeedPins(const OutputPaths& paths);

class Outputs {
 public:
  // Opens all files, and changes none; throws IoError where one cannot be opened.
  Outputs(const OutputPaths& paths, OutputKind::Verb OutputKind::*verb, bool shows_pins);
  // One more file, which is written by the caller and completed with the others.
  OutputFile& Add(const std::string& path, OutputFile::Rest rest);
  // The files are written anew, but those of Add.
  void Begin();
  // Throws once standard output takes no more: the rest of the run is not to go on unseen.
  void ThrowIfCut() const {
    if (standard_output_ != nullptr) standard_output_->ThrowIfCut();
  }
  // All is in the files from here on. Throws as OutputFile::ThrowIfCut.
  void Flush();
  // What was played and is in no file: a warning each, and each once. Complete may leave some.
  std::vector<std::string> TakeLosses();
  // Returns what went wrong, a text for each file that could not be written whole.
  std::vector<std::string> Complete(const PageHead& head);

  bool Any() const { return !outputs_.empty(); }

  // The outputs, by what they are told.
  std::vector<EventListener*> listeners;
  std::vector<ServeListener*> serve_listeners;
  std::vector<StepRecorder*> recorders;

 private:
  std::vector<std::unique_ptr<OutputFile>> files_;
  std::vector<std::unique_ptr<Output>> outputs_;
  std::size_t begun_ = 0;                  // how many of the files Begin begins
  OutputFile* standard_output_ = nullptr;  // where it is one of the files
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_TABLES_OUTPUTS_H_
