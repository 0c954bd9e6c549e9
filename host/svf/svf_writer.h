// Writes a run in the Serial Vector Format, SVF (ASSET InterTech, revision E).
#ifndef ICESCRIPT_HOST_SVF_SVF_WRITER_H_
#define ICESCRIPT_HOST_SVF_SVF_WRITER_H_

#include <memory>
#include <ostream>
#include <set>
#include <string>
#include <vector>

#include "host/events/events.h"
#include "host/events/output.h"
#include "host/target/bits.h"
#include "host/target/chain_place.h"

namespace icehost {

struct SvfScan {
  bool ir;
  Bits tdi;          // the first bit first, as in all members
  Bits tdo;          // the captured bits
  Bits mask;         // as long as `tdo`, or empty; bits that are 1 are compared
  bool own = false;  // a scan of one TAP; headers and trailers cover the others
};

// The base of both writers below. Writes ASCII in lines of up to 256 characters, the limit of SVF.
class SvfWriter : public Output, public EventListener {
 public:
  // `stream` must outlive this object.
  explicit SvfWriter(std::ostream& stream) : stream_(stream) {}

  void Begin() override;
  void OnRound(long round) override;
  void OnPlace(const ChainPlace& place) override { place_ = place; }
  std::vector<std::string> TakeLosses() override;

 protected:
  static constexpr const char* kNoNrst =
      "SVF has no statement for NRST: a player does not reset the target";

  // Returns the mask of `bits` bits for a scan of a JTAG script: the script's mask if the script
  // expects a value. Otherwise the mask selects the first two bits of an IR, which IEEE 1149.1
  // defines, or the whole DR if the script reads it. The mask is empty if nothing is compared.
  static Bits MaskOf(const CallSource& source, bool ir, std::size_t bits);

  void Comment(const std::string& text);
  // Writes a comment with the place of the next statements. `last_line` is 0 for a single line.
  void CommentOnPlace(const std::string& path, const CallSource& source, int last_line);
  // Writes a comment on each value that `call` has read and that is not as expected.
  void CommentOnUnmet(const CallEvent& call);
  void Statement(const std::string& text) { stream_ << text << ";\n"; }
  void ScanStatement(const SvfScan& scan);
  const ChainPlace& Place() const { return place_; }
  // Writes a comment on an action that was played but that SVF cannot express. Adds `warning` to
  // the losses unless it was added before.
  void Lose(const char* warning, const std::string& comment);

 private:
  void FrameStatements(bool framed);

  std::ostream& stream_;
  ChainPlace place_;
  bool framed_ = false;              // headers and trailers are in effect
  std::set<std::string> lost_;       // all warnings so far
  std::vector<std::string> losses_;  // warnings for the next TakeLosses
};

// Returns an output that writes the actions of the TAP. For a GPIO script, the scans compare the
// bits of TDO that the script has read while the target drove TDO.
std::unique_ptr<Output> MakeSvfPinWriter(std::ostream& stream);

// Returns an output that writes the scans of JTAG scripts on a probe that shows no pins. They are
// scans of one TAP, without the rest of its chain, and do not compare the captured IR.
std::unique_ptr<Output> MakeSvfCallWriter(std::ostream& stream);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SVF_SVF_WRITER_H_
