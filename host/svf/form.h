// The kinds of script that icehost can make from an SVF file.
#ifndef ICESCRIPT_HOST_SVF_FORM_H_
#define ICESCRIPT_HOST_SVF_FORM_H_

#include <cstddef>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "host/check/problems.h"
#include "host/svf/statements.h"
#include "host/target/tap.h"

namespace icehost {

// A RUNTEST: the TAP goes to `state`, stays there for at least `cycles` TCK cycles and `seconds`,
// but at most for `most_seconds`, and then goes to `end`.
struct SvfRunTest {
  TapState state;  // a stable state
  TapState end;    // a stable state
  double cycles;
  double seconds;
  std::optional<double> most_seconds;
};

enum class SvfTrst { kOn, kOff, kZ, kAbsent };

// Writes a script for the statements of a file, and reports the statements that the script cannot
// express. The statements are valid SVF, except that the paths of STATE may be wrong. The script
// contains no text from the file.
class SvfForm {
 public:
  // If `script` is null, writes nothing. The arguments must outlive the form.
  SvfForm(Problems& problems, std::ostream* script) : problems_(problems), script_(script) {}
  virtual ~SvfForm() = default;

  // Writes the beginning of the script; `name` is the name of the file.
  virtual void Begin(const std::string& name) = 0;
  // Sets the statement that the next calls express. Its text must exist as long as the form.
  void BeginStatement(const SvfStatement& statement) { statement_ = statement; }
  // Scans the IR or the DR; `shift` includes headers and trailers, and has at least one bit.
  virtual void Scan(bool ir, const SvfShift& shift) = 0;
  // Sets the stable state in which scans of the IR or the DR end from now on.
  virtual void EndState(bool ir, TapState state) = 0;
  // Goes to a stable state, or along a path that ends in a stable state.
  virtual void State(const std::vector<TapState>& path) = 0;
  virtual void RunTest(const SvfRunTest& run) = 0;
  virtual void Trst(SvfTrst mode) = 0;
  // Sets the highest number of TCK cycles per second; nothing means no limit.
  virtual void Frequency(std::optional<double> hz) = 0;
  virtual void Pio() = 0;
  virtual void End() = 0;

  // Returns the size of the script so far, in bytes.
  std::size_t Size() const { return size_; }

 protected:
  void Write(std::string_view text) {
    size_ += text.size();
    if (script_ != nullptr) *script_ << text;
  }
  // Return the place of the keyword, and of a word. Word 0 follows the keyword.
  Place At() const { return statement_.keyword.place; }
  Place AtWord(std::size_t word) const { return statement_.words[word].place; }
  // Returns the keyword in upper case.
  std::string Keyword() const;
  void Refuse(const std::string& why) { problems_.Error(At(), why); }

  Problems& problems_;

 private:
  std::ostream* script_;
  std::size_t size_ = 0;
  SvfStatement statement_{};
};

// Returns a form that writes one section for each IR scan and the DR scan after it. The name of the
// section contains the number of the scan's line in the file.
std::unique_ptr<SvfForm> MakeJtagForm(Problems& problems, std::ostream* script);
// Returns a form that writes a GPIO script with a line for each TCK edge. `tck_hz` is the highest
// TCK rate of the probe; without it, FREQUENCY applies.
std::unique_ptr<SvfForm> MakeGpioForm(Problems& problems, std::ostream* script,
                                      std::optional<double> tck_hz);

// Returns the name of a file for a comment, without "expect", which would begin an expectation.
std::string SvfNameInComment(std::string name);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SVF_FORM_H_
