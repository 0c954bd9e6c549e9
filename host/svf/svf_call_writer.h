// A run as a Serial Vector Format file, of a probe that shows no pins.
#ifndef ICESCRIPT_HOST_SVF_SVF_CALL_WRITER_H_
#define ICESCRIPT_HOST_SVF_SVF_CALL_WRITER_H_

#include <string>

#include "host/events/events.h"
#include "host/svf/svf_file.h"

namespace icehost {

// Writes the scans of JTAG scripts, by the calls that make them: those of one TAP, whatever else is
// in its chain. A captured IR is not told.
class SvfCallWriter : public SvfOutput, public EventListener {
 public:
  explicit SvfCallWriter(std::ostream& stream) : SvfOutput(stream) {}

  void OnScript(const std::string& path) override { path_ = path; }
  void OnCall(const CallEvent& call) override;
  void OnScriptEnd(bool ran) override;

 private:
  void OnScan(const CallEvent& call, const Scan& scan);

  std::string path_;
};

// What every scan of a JTAG script is compared by: its own mask where it expects something, else
// all bits of a DR that it reads, and of an IR the two that IEEE 1149.1 fixes. Empty: it is not.
Bits SvfMask(const CallSource& source, bool ir, std::size_t bits);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SVF_SVF_CALL_WRITER_H_
