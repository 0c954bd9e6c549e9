#include "host/check/file_kinds.h"

#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <vector>

#include "base/text.h"
#include "host/check/hints.h"
#include "host/check/script_text.h"

namespace icehost {
namespace {

constexpr std::string_view kWhitespace = " \t\n\v\f\r";

struct FileKind {
  const char* name;
  const char* advice;
  FileUse use;
  Words comments;  // the texts that begin a comment; a comment ends at a line feed
  // Returns whether a text is of this kind. Blanks and comments before it have been removed.
  bool (*is)(std::string_view text);
};

ScriptLine FirstLine(std::string_view text) {
  return {1, text.substr(0, text.find('\n'))};
}

// Returns whether a text begins with one of the words (in any case) and a character of `after`.
bool BeginsWith(std::string_view text, const Words& upper_words, std::string_view after) {
  return std::any_of(upper_words.begin(), upper_words.end(), [=](std::string_view word) {
    return icescript::EqualsUpper(text.substr(0, word.size()), word) && text.size() > word.size() &&
           after.find(text[word.size()]) != std::string_view::npos;
  });
}

bool IsGpioScriptText(std::string_view text) {
  return icescript::IsSectionTag(FirstLine(text).text);
}

bool IsJtagScriptText(std::string_view text) {
  return FirstLine(text).IsHeader() && !IsGpioScriptText(text);
}

// A first line that contains "=" must come from a JTAG script.
bool IsSvf(std::string_view text) {
  return BeginsWith(text,
                    {"ENDDR", "ENDIR", "FREQUENCY", "HDR", "HIR", "PIO", "PIOMAP", "RUNTEST", "SDR",
                     "SIR", "STATE", "TDR", "TIR", "TRST"},
                    " \t\n\v\f\r();!") &&
         FirstLine(text).text.find('=') == std::string_view::npos;
}

bool IsVcd(std::string_view text) {
  return BeginsWith(text, {"$COMMENT", "$DATE", "$SCOPE", "$TIMESCALE", "$VERSION"}, kWhitespace);
}

bool IsElf(std::string_view text) {
  return text.substr(0, 4) ==
         "\x7F"
         "ELF";
}

bool IsHtml(std::string_view text) {
  return BeginsWith(text, {"<!DOCTYPE HTML", "<HTML"}, " \t\n\r>");
}

bool IsSvg(std::string_view text) {
  return BeginsWith(text, {"<SVG"}, " \t\n\r>");
}

bool IsRecord(std::string_view text) {
  return text.substr(0, 19) == R"({"schema":"icehost-)";
}

const std::vector<FileKind>& FileKinds() {
  static const std::vector<FileKind> kinds = {
      {"a JTAG script", "run it with icehost run", FileUse::kScript, {"#"}, IsJtagScriptText},
      {"a GPIO script", "run it with icehost run", FileUse::kScript, {"#"}, IsGpioScriptText},
      {"an SVF file", "convert it with icehost import", FileUse::kSvf, {"!", "//"}, IsSvf},
      {"a VCD file", "open it in a waveform viewer such as GTKWave", FileUse::kNone, {}, IsVcd},
      {"an ELF file",
       "if it is a plug-in, load it with icehost run --plugin",
       FileUse::kNone,
       {},
       IsElf},
      {"an HTML page", "open it in a browser", FileUse::kNone, {}, IsHtml},
      {"an SVG picture", "open it in a browser", FileUse::kNone, {}, IsSvg},
      {"a file of JSON lines from --json",
       "read it with a program such as jq",
       FileUse::kNone,
       {},
       IsRecord},
  };
  return kinds;
}

// Returns the text after the blanks and comments at its beginning.
std::string_view SkipComments(std::string_view text, const Words& comments) {
  for (;;) {
    text.remove_prefix(std::min(text.find_first_not_of(kWhitespace), text.size()));
    const bool comment =
        std::any_of(comments.begin(), comments.end(),
                    [text](std::string_view sign) { return text.substr(0, sign.size()) == sign; });
    if (!comment) return text;
    text.remove_prefix(std::min(text.find('\n'), text.size()));
  }
}

// Returns the place directly after a text that begins at line 1, column 1.
Place PlaceAfter(std::string_view text) {
  const auto lines = std::count(text.begin(), text.end(), '\n');
  const std::size_t line = text.rfind('\n') + 1;  // 0 if there is no line feed
  return {static_cast<int>(lines) + 1, static_cast<int>(text.size() - line) + 1};
}

}  // namespace

std::optional<Problem> FindWrongKind(std::string_view content, FileUse wanted) {
  for (const FileKind& kind : FileKinds()) {
    const std::string_view text = SkipComments(content, kind.comments);
    if (!kind.is(text)) continue;
    if (kind.use == wanted) return std::nullopt;
    return Problem{PlaceAfter(content.substr(0, content.size() - text.size())), Severity::kError,
                   fmt::format("this is {}: {}", kind.name, kind.advice)};
  }
  return std::nullopt;
}

}  // namespace icehost
