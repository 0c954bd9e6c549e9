// The statements of a Serial Vector Format file.
#ifndef ICESCRIPT_HOST_SVF_STATEMENTS_H_
#define ICESCRIPT_HOST_SVF_STATEMENTS_H_

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/svf/lexer.h"
#include "host/target/bits.h"

namespace icehost {

// More than a path through all states.
constexpr std::size_t kMostWords = 64;

struct SvfStatement {
  SvfToken keyword;
  std::vector<SvfToken> words;  // between it and the semicolon, values among them
  bool is_long;                 // there are more than kMostWords, which are not kept
};

class SvfReader {
 public:
  // The text must outlive the statements.
  explicit SvfReader(std::string_view text) : lexer_(text) {}

  // The next statement; none at the end. One that has no end is reported.
  std::optional<SvfStatement> Next(Problems& problems);

 private:
  SvfLexer lexer_;
};

// In upper or lower case; `upper` is in upper case. A value is no word.
bool IsSvfWord(const SvfToken& token, std::string_view upper);
// The word in quotes, for a message.
std::string Quoted(const SvfToken& token);
// A word that is a number, not negative.
std::optional<double> SvfNumber(const SvfToken& token);
// The bits of a value, the first to be shifted first. None where it has no digit or another sign,
// or a bit beyond the length is 1, which is reported.
std::optional<Bits> SvfBits(const SvfToken& value, std::size_t length, Problems& problems);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SVF_STATEMENTS_H_
