// Writes a run as a file in the Serial Vector Format (ASSET InterTech, revision E).
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
  Bits tdi;          // the first bit first, as in all of these
  Bits tdo;          // the bits that came back
  Bits mask;         // a bit that is 1 is compared; as long as tdo, or empty: nothing is compared
  bool own = false;  // of one TAP; headers and trailers are for the others of its chain
};

// The statements and comments that both writers use. ASCII, no line longer than the 256 characters
// that the format allows.
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

  // The bits of a scan of a JTAG script that a player compares. If the script expects a value, they
  // are its mask. Otherwise they are all bits of a DR that the script reads, and the two bits of an
  // IR that IEEE 1149.1 fixes. Empty: nothing is compared.
  static Bits MaskOf(const CallSource& source, bool ir, std::size_t bits);

  void Comment(const std::string& text);
  // A comment that names the place of the statements after it; `last_line` is 0 if it is one line.
  void CommentOnPlace(const std::string& path, const CallSource& source, int last_line);
  // Comments on what a call read, if the script expects something else.
  void CommentOnUnmet(const CallEvent& call);
  void Statement(const std::string& text) { stream_ << text << ";\n"; }
  void ScanStatement(const SvfScan& scan);
  const ChainPlace& Place() const { return place_; }
  // Comments on something that was played and that the format cannot express. The user gets each
  // warning once.
  void Lose(const char* warning, const std::string& comment);

 private:
  void FrameStatements(bool framed);

  std::ostream& stream_;
  ChainPlace place_;
  bool framed_ = false;              // headers and trailers are in force
  std::set<std::string> lost_;       // the warnings so far
  std::vector<std::string> losses_;  // the new ones
};

// Writes what happens to the TAP, whichever script makes it happen. A scan of a GPIO script is
// compared by the bits of which the script itself read TDO while the target drove it.
std::unique_ptr<Output> MakeSvfPinWriter(std::ostream& stream);

// Writes the scans of JTAG scripts for a probe that shows no pins. They are the scans of one TAP,
// whatever else is in its chain, and say nothing of a captured IR.
std::unique_ptr<Output> MakeSvfCallWriter(std::ostream& stream);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SVF_SVF_WRITER_H_
