// The words of a command line, and those that nothing knows.
#ifndef ICESCRIPT_HOST_OPTIONS_WORDS_H_
#define ICESCRIPT_HOST_OPTIONS_WORDS_H_

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace icehost {

// As app.parse; but "help VERB" stands for "VERB --help", and a verb or an option that is unknown
// is told by name, and before what is missing. Throws CLI::ParseError.
void ParseWords(CLI::App& app, std::vector<std::string> words);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_OPTIONS_WORDS_H_
