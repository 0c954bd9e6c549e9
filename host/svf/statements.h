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

// The most words of a statement that are kept. This limits the memory for an endless statement.
constexpr std::size_t kMostWords = 1024;

struct SvfToken {
  enum class Kind { kWord, kValue, kSemicolon, kEnd };

  Kind kind;
  std::string_view text;  // for a value, everything between the parentheses, with comments
  Place place;            // the place of the text
};

struct SvfStatement {
  SvfToken keyword;
  std::vector<SvfToken> words;  // words and values between the keyword and the semicolon
  bool is_long;                 // true if the words after the first kMostWords were dropped
};

// Walks over a text, and keeps track of the place.
class SvfCursor {
 public:
  // The text must outlive the cursor.
  SvfCursor(std::string_view text, Place place) : rest_(text), place_(place) {}

  bool AtEnd() const { return rest_.empty(); }
  std::string_view Rest() const { return rest_; }
  Place At() const { return place_; }
  void Step();  // skips one byte
  // Skips a comment, which begins with "!" or "//" and ends before a line feed or carriage return.
  // Returns false if no comment begins here.
  bool SkipComment();
  void SkipBlanks();  // also skips comments

 private:
  std::string_view rest_;
  Place place_;
};

// Splits a text into statements. Words end at blanks, parentheses, semicolons and comments. A value
// may span several lines.
class SvfReader {
 public:
  // The text must outlive the reader and its statements.
  explicit SvfReader(std::string_view text);

  // Returns the next statement; nothing at the end. Reports a value without a closing parenthesis,
  // and warns if the last statement has no semicolon.
  std::optional<SvfStatement> Next(Problems& problems);
  std::size_t BytesRead() const { return size_ - cursor_.Rest().size(); }

 private:
  SvfToken NextToken(Problems& problems);
  SvfToken Value(Problems& problems);

  std::size_t size_;
  SvfCursor cursor_;
};

// Returns whether a token is the word `upper`, ignoring case. `upper` must be in upper case.
bool IsSvfWord(const SvfToken& token, std::string_view upper);
// Returns the text of a token in quotes, for a message.
std::string Quoted(const SvfToken& token);
// Returns the number that a token contains; nothing if it is negative or not a number.
std::optional<double> SvfNumber(const SvfToken& token);
// Returns the state that a token names, in upper or lower case; nothing if it names no state.
std::optional<TapState> SvfState(const SvfToken& token);
// Returns the name of a state in SVF, such as "DRSHIFT".
const char* SvfStateName(TapState state);
// Returns whether the TAP can stay in a state without shifting.
bool IsStable(TapState state);

// The bits that a scan shifts, the first bit first. All members have the same length.
struct SvfShift {
  Bits tdi;
  Bits tdo;
  Bits mask;  // bits that are 1 are compared

  bool Compares() const;
  // Appends the bits of `more`, which are shifted later.
  void Append(const SvfShift& more);
};

// The parameters of one keyword, such as SDR. It remembers TDI and MASK of the last statement for
// the next statement with the same length.
class SvfRegister {
 public:
  // Reads LENGTH [TDI (..)] [TDO (..)] [MASK (..)] [SMASK (..)]. If the statement is wrong or has
  // more than `most` bits, reports this and returns nothing.
  std::optional<SvfShift> Take(const SvfStatement& statement, std::size_t most, Problems& problems);

 private:
  std::size_t length_ = 0;
  Bits tdi_;
  Bits mask_;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SVF_STATEMENTS_H_
