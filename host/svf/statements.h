// The words, values and statements of a Serial Vector Format file (ASSET InterTech, revision E).
#ifndef ICESCRIPT_HOST_SVF_STATEMENTS_H_
#define ICESCRIPT_HOST_SVF_STATEMENTS_H_

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/check/problems.h"
#include "host/target/bits.h"
#include "host/target/tap.h"

namespace icehost {

// Limits the memory for a statement that does not end.
constexpr std::size_t kMostWords = 1024;

struct SvfToken {
  enum class Kind { kWord, kValue, kSemicolon, kEnd };

  Kind kind;
  std::string_view text;  // of a value, everything between the parentheses, comments included
  Place place;            // of the text
};

struct SvfStatement {
  SvfToken keyword;
  std::vector<SvfToken> words;  // the words and values between the keyword and the semicolon
  bool is_long;                 // there are more than kMostWords, and the rest is not kept
};

// A walk over text that follows the place.
class SvfCursor {
 public:
  // The text must outlive the cursor.
  SvfCursor(std::string_view text, Place place) : rest_(text), place_(place) {}

  bool AtEnd() const { return rest_.empty(); }
  std::string_view Rest() const { return rest_; }
  Place At() const { return place_; }
  void Step();
  // A comment begins with "!" or "//" and ends with its line, or at a carriage return. False if
  // none begins here.
  bool SkipComment();
  void SkipBlanks();  // and comments

 private:
  std::string_view rest_;
  Place place_;
};

// Words end at blanks, parentheses, semicolons and comments. A value may span several lines.
class SvfReader {
 public:
  // The text must outlive the statements.
  explicit SvfReader(std::string_view text);

  // Returns the next statement, and nothing at the end. Reports a value without its closing
  // parenthesis, and warns if the last statement has no semicolon.
  std::optional<SvfStatement> Next(Problems& problems);
  std::size_t BytesRead() const { return size_ - cursor_.Rest().size(); }

 private:
  SvfToken NextToken(Problems& problems);
  SvfToken Value(Problems& problems);

  std::size_t size_;
  SvfCursor cursor_;
};

// Compares without regard to case; `upper` is in upper case. A value is not a word.
bool IsSvfWord(const SvfToken& token, std::string_view upper);
// The word in quotes, for a message.
std::string Quoted(const SvfToken& token);
// Returns the number, which is not negative, or nothing if the token is something else.
std::optional<double> SvfNumber(const SvfToken& token);
// Returns the state of this name, in any case, or nothing.
std::optional<TapState> SvfState(const SvfToken& token);
// Returns the format's name of a state, such as "DRSHIFT".
const char* SvfStateName(TapState state);
// Whether the TAP stays in the state as long as TMS stays at one level, and shifts nothing there.
bool IsStable(TapState state);

// What one scan shifts: all of one length, the first bit to be shifted first.
struct SvfShift {
  Bits tdi;
  Bits tdo;
  Bits mask;  // a bit that is 1 is compared

  bool Compares() const;
  // Appends `more`, which is shifted later.
  void Append(const SvfShift& more);
};

// The register of one keyword. It remembers the TDI and the MASK of the last statement for the
// next one of the same length.
class SvfRegister {
 public:
  // Takes LENGTH [TDI (..)] [TDO (..)] [MASK (..)] [SMASK (..)]. Returns nothing, and reports it,
  // if that is wrong or longer than `most` bits.
  std::optional<SvfShift> Take(const SvfStatement& statement, std::size_t most, Problems& problems);

 private:
  std::size_t length_ = 0;
  Bits tdi_;
  Bits mask_;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SVF_STATEMENTS_H_
