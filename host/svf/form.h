// The kinds of script that an SVF file is made into.
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

// What RUNTEST asks for: to go to a state, to stay there for this many TCK cycles and for this
// time, whichever is longer, and to go on to another state.
struct SvfRunTest {
  TapState state;  // a stable one, as is `end`
  TapState end;
  double cycles;
  double seconds;
  std::optional<double> most_seconds;
};

enum class SvfTrst { kOn, kOff, kZ, kAbsent };

// Writes a script for the statements of a file and reports what it cannot express. A file that
// reaches it is valid SVF, apart from the paths of STATE. Nothing in the script comes from the text
// of the file.
class SvfForm {
 public:
  // Without `script` it only checks. Both must outlive the form.
  SvfForm(Problems& problems, std::ostream* script) : problems_(problems), script_(script) {}
  virtual ~SvfForm() = default;

  // `name` is the name of the file.
  virtual void Begin(const std::string& name) = 0;
  // The statement whose effects follow. Its text must live as long as the form.
  void BeginStatement(const SvfStatement& statement) { statement_ = statement; }
  // A scan of the IR or the DR, with its headers and trailers. It has at least one bit.
  virtual void Scan(bool ir, const SvfShift& shift) = 0;
  // Where scans of the IR or the DR end from now on, a stable state.
  virtual void EndState(bool ir, TapState state) = 0;
  // One stable state, or a path that ends in one.
  virtual void State(const std::vector<TapState>& path) = 0;
  virtual void RunTest(const SvfRunTest& run) = 0;
  virtual void Trst(SvfTrst mode) = 0;
  // The most TCK cycles in a second; no limit if there is none.
  virtual void Frequency(std::optional<double> hz) = 0;
  virtual void Pio() = 0;
  virtual void End() = 0;

  // The bytes of the script so far.
  std::size_t Size() const { return size_; }

 protected:
  void Write(std::string_view text) {
    size_ += text.size();
    if (script_ != nullptr) *script_ << text;
  }
  // The place of the keyword, and of a word after it.
  Place At() const { return statement_.keyword.place; }
  Place AtWord(std::size_t word) const { return statement_.words[word].place; }
  // The keyword in upper case.
  std::string Keyword() const;
  void Refuse(const std::string& why) { problems_.Error(At(), why); }

  Problems& problems_;

 private:
  std::ostream* script_;
  std::size_t size_ = 0;
  SvfStatement statement_{};
};

// Pairs IR scans with DR scans and writes each pair as a section that is named after its line.
std::unique_ptr<SvfForm> MakeJtagForm(Problems& problems, std::ostream* script);
// Writes each TCK edge. `tck_hz` is the most TCK cycles in a second, whatever the file says.
std::unique_ptr<SvfForm> MakeGpioForm(Problems& problems, std::ostream* script,
                                      std::optional<double> tck_hz);

// The name of a file for a comment of a script. "expect" would begin an expectation there.
std::string SvfNameInComment(std::string name);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SVF_FORM_H_
