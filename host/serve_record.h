// What serving writes.
#ifndef ICESCRIPT_HOST_SERVE_RECORD_H_
#define ICESCRIPT_HOST_SERVE_RECORD_H_

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/options/commands.h"
#include "host/record/serve_json.h"
#include "host/record/serve_listener.h"
#include "host/record/serve_page.h"
#include "host/record/serve_trace.h"
#include "host/record/vcd_writer.h"
#include "host/system/output_file.h"

namespace icehost {

// The files that were asked for, and who writes them. A new one is opened in the constructor: a
// ServeListener there becomes one of `listeners_`, a StepRecorder one of `recorders_`.
class ServeRecord : private TapListener {
 public:
  // Opens all files, and changes none; throws IoError where one cannot be opened.
  explicit ServeRecord(const RecordFiles& files);

  // Writes the files anew. The port to use from here on: it records what is done to `port`, or is
  // `port` itself where no file is asked for. `port` must outlive the record.
  PinPort& Begin(PinPort& port);
  bool IsAskedFor() const { return !listeners_.empty() || !recorders_.empty(); }

  void OnClient(const ServedClient& client);
  void OnClientLeft(const ServedClient& client);
  // Scans so far.
  std::size_t Scans() const { return scans_; }
  // Likewise steps of the pins.
  std::size_t Steps() const { return port_.has_value() ? port_->Steps() : 0; }

  // Everything that the port has settled is in the files from here on. Throws IoError where one
  // takes no more, and Interrupted where a signal came meanwhile.
  void Flush();
  // Nothing follows; `error` is what ended the serving, if not a signal, and `head` stands over a
  // page. Returns what else went wrong, a text for each file that could not be written whole.
  std::vector<std::string> Complete(const std::string& error, const PageHead& head);

 private:
  std::ostream& Open(const std::string& path, OutputFile::Rest rest = OutputFile::Rest::kLines);
  void OnScan(const TapScan& scan) override;
  void OnTapReset(bool by_trst, StepRange steps) override;
  void OnIdle(long cycles, StepRange steps) override;
  void OnResetPins(int levels, StepRange steps) override;

  std::vector<std::unique_ptr<OutputFile>> files_;
  std::optional<ServeTrace> trace_;
  std::optional<ServeJson> json_;
  std::optional<VcdWriter> vcd_;
  std::optional<ServePage> page_;
  std::ostream* page_stream_ = nullptr;
  std::vector<ServeListener*> listeners_;  // those of the above
  std::vector<StepRecorder*> recorders_;   // likewise
  TapDecoder decoder_;
  std::optional<RecordingPort> port_;
  std::size_t scans_ = 0;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SERVE_RECORD_H_
