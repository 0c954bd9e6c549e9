// What a run writes besides the plug-in's messages.
#ifndef ICESCRIPT_HOST_OUTPUTS_H_
#define ICESCRIPT_HOST_OUTPUTS_H_

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/options/commands.h"
#include "host/record/json_writer.h"
#include "host/record/run_page.h"
#include "host/record/svf_call_writer.h"
#include "host/record/svf_file.h"
#include "host/record/svf_pin_writer.h"
#include "host/record/svg_writer.h"
#include "host/record/trace_writer.h"
#include "host/record/vcd_writer.h"
#include "host/system/output_file.h"

namespace icehost {

// Members that are not asked for are empty.
struct Outputs {
  // Opens all files, and changes none; throws IoError where one cannot be opened.
  explicit Outputs(const RunCommand& command);
  // The run begins, and the files are written anew, but that of Learn.
  void Begin();
  // Throws once standard output takes no more: the rest of the run is not to go on unseen.
  void ThrowIfCut() const {
    if (standard_output_ != nullptr) standard_output_->ThrowIfCut();
  }
  // Returns what went wrong, a text for each file that could not be written whole. `head` is the
  // page's.
  std::vector<std::string> Complete(const PageHead& head);
  // What is not in a file, though it was played: a warning each, and each once. Complete may leave
  // some.
  std::vector<std::string> TakeLosses();
  // The script with the values read.
  void Learn(const std::string& script);

  std::optional<TraceWriter> trace;
  std::optional<JsonWriter> json;
  std::optional<VcdWriter> vcd;
  std::optional<SvgWriter> svg;
  std::optional<RunPage> page;
  std::optional<SvfFile> svf;  // by one of:
  std::optional<SvfPinWriter> svf_pins;
  std::optional<SvfCallWriter> svf_calls;
  std::vector<EventListener*> listeners;  // those of the above
  std::vector<StepRecorder*> recorders;   // likewise

 private:
  void OpenSvf(const RunCommand& command);
  std::ostream& Open(const std::string& path, OutputFile::Rest rest);

  std::vector<std::unique_ptr<OutputFile>> files_;
  OutputFile* standard_output_ = nullptr;  // where it is one of the files
  std::ostream* svg_stream_ = nullptr;
  std::ostream* page_stream_ = nullptr;
  OutputFile* learned_ = nullptr;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_OUTPUTS_H_
