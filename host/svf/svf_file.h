// A file in the Serial Vector Format (ASSET InterTech, revision E).
#ifndef ICESCRIPT_HOST_SVF_SVF_FILE_H_
#define ICESCRIPT_HOST_SVF_SVF_FILE_H_

#include <ostream>
#include <string>
#include <vector>

#include "host/events/events.h"
#include "host/events/output.h"
#include "host/target/bits.h"

namespace icehost {

// What is played, but cannot be said in this format: each is a comment in the file, and told once.
enum class SvfLoss {
  kResetLine,
  kTwoWire,
  kReleased,
  kEmptyScan,
  kCutScan,
  kLongScan,
  kPause,
  kNoIdle,
};
constexpr std::size_t kSvfLosses = 8;

struct SvfScan {
  bool ir;
  Bits tdi;   // the first bit first, as all of these
  Bits tdo;   // what came back
  Bits mask;  // the bits of it that count; as many, or none at all: nothing is compared
};

// Writes whole statements and comments. ASCII, no line longer than the 256 characters that the
// format allows.
class SvfFile {
 public:
  // `stream` must outlive this object.
  explicit SvfFile(std::ostream& stream) : stream_(stream) {}

  // What stands at the beginning.
  void Begin();
  // A comment that names the place of what follows, in the script at `path`; `last_line` is 0 where
  // it is one line.
  void Place(const std::string& path, const CallSource& source, int last_line);
  void Comment(const std::string& text);
  void Statement(const std::string& text) { stream_ << text << ";\n"; }
  void Scan(const SvfScan& scan);
  // A comment, and a word to the user once of each kind.
  void Lose(SvfLoss what, const std::string& comment);

  // What was lost since the last call and never before: warnings.
  std::vector<std::string> TakeLosses();

 private:
  std::ostream& stream_;
  bool lost_[kSvfLosses] = {};
  std::vector<std::string> losses_;
};

// What the two writers of this format share.
class SvfOutput : public Output {
 public:
  explicit SvfOutput(std::ostream& stream) : file_(stream) {}
  void Begin() override { file_.Begin(); }
  std::vector<std::string> TakeLosses() override { return file_.TakeLosses(); }

 protected:
  SvfFile file_;
};

// Comments on what a call read, where the script expects something else.
void CommentOnUnmet(const CallEvent& call, SvfFile& file);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SVF_SVF_FILE_H_
