#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>
#include <map>
#include <sstream>
#include <utility>

#include "host/check/hints.h"
#include "host/options/verb_options.h"
#include "host/system/standard_streams.h"
#include "host/system/text.h"

namespace icehost {
namespace {

constexpr char kFooter[] =
    "Exit status: 0 success; 1 a script failed or has errors, or detect found no working\n"
    "chain; 2 bad usage; 3 the plug-in, the endpoint or an output could not be opened or\n"
    "written, or the connection was lost; 130 interrupted. The plug-in's messages and the\n"
    "results of check and detect go to standard output, all other messages to standard error.";

using Texts = std::vector<std::string>;

constexpr const char* kHelp = "help";

// The verb is the first word that is not an option, because no option before it has a value.
Texts::iterator FindVerb(Texts& words) {
  return std::find_if(words.begin(), words.end(), [](const std::string& word) {
    return word.empty() || word.front() != '-' || word == "--";
  });
}

Texts VerbsOf(const CLI::App& app) {
  Texts verbs;
  for (const CLI::App* const verb : app.get_subcommands({})) verbs.push_back(verb->get_name());
  return verbs;
}

void AppendOptions(const CLI::App& app, Texts& options) {
  for (const CLI::Option* const option : app.get_options()) {
    for (const std::string& name : option->get_lnames()) options.push_back("--" + name);
    for (const std::string& name : option->get_snames()) options.push_back("-" + name);
  }
}

// Returns a text such as " (did you mean check?)", or an empty text if no known word is similar.
std::string Hint(const std::string& word, const Texts& known) {
  // All options of one letter are similar to each other, so a hint would not help.
  if (word[0] == '-' && word[1] != '-') return "";
  return InParentheses(DidYouMean(Nearest(word, Words(known.begin(), known.end()))));
}

bool Contains(const Texts& words, const std::string& word) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

void PutOptionForHelp(Texts& words) {
  auto verb = FindVerb(words);
  if (verb == words.end() || *verb != kHelp) return;
  while (verb != words.end() && *verb == kHelp) {
    words.erase(verb);
    verb = FindVerb(words);
  }
  words.insert(verb == words.end() ? verb : verb + 1, "--help");
}

void RefuseUnknownVerb(const CLI::App& app, Texts& words) {
  const auto verb = FindVerb(words);
  Texts known = VerbsOf(app);
  if (verb == words.end() || *verb == "--" || Contains(known, *verb)) return;
  known.emplace_back(kHelp);
  throw CLI::ValidationError(fmt::format("unknown verb \"{}\"{}", *verb, Hint(*verb, known)));
}

void RefuseUnknownOption(const CLI::App& app) {
  Texts before;
  AppendOptions(app, before);
  Texts after;
  for (const CLI::App* const verb : app.get_subcommands()) AppendOptions(*verb, after);
  for (const std::string& word : app.remaining(true)) {
    if (word.size() < 2 || word.front() != '-' || word == "--") continue;
    const std::string option = word.substr(0, word.find('='));
    for (const auto& [known, place] : {std::pair{before, "before"}, std::pair{after, "after"}}) {
      if (!Contains(known, option)) continue;
      throw CLI::ValidationError(fmt::format("option \"{}\" must come {} the verb", option, place));
    }
    Texts& known = after.empty() ? before : after;
    throw CLI::ValidationError(fmt::format("unknown option \"{}\"{}", option, Hint(option, known)));
  }
}

// For "--option=", CLI11 would read the value from the next word, or omit an optional value.
void RefuseEmptyValues(const Texts& words) {
  for (const std::string& word : words) {
    if (word == "--") return;
    if (word.substr(0, 2) != "--" || word.find('=') + 1 != word.size()) continue;
    throw CLI::ValidationError(fmt::format("option \"{}\" has no value", word));
  }
}

// Works like app.parse, but accepts "help VERB" for "VERB --help". Reports unknown verbs and
// options before missing arguments. Throws CLI::ParseError.
void ParseWords(CLI::App& app, Texts words) {
  PutOptionForHelp(words);
  RefuseUnknownVerb(app, words);
  RefuseEmptyValues(words);
  std::reverse(words.begin(), words.end());
  try {
    app.parse(words);
  } catch (const CLI::ExtrasError&) {
    RefuseUnknownOption(app);
    throw;
  } catch (const CLI::RequiredError&) {
    RefuseUnknownOption(app);
    if (!app.get_subcommands().empty()) throw;
    throw CLI::ValidationError(
        fmt::format("a verb is required: {}", fmt::join(VerbsOf(app), ", ")));
  }
}

}  // namespace

std::variant<Command, ExitStatus> ParseCommandLine(int argc, char** argv) {
  CLI::App app("icehost runs and checks GPIO and JTAG scripts for a debug probe.", "icehost");
  app.set_version_flag("--version", "icehost " ICEHOST_VERSION);
  app.require_subcommand(1);
  app.footer(kFooter);
  app.get_formatter()->label("SUBCOMMAND", "VERB");
  Command commands[] = {RunCommand{}, CheckCommand{}, DetectCommand{}, ImportCommand{},
                        ServeCommand{}};
  const auto set_quiet = [&commands] {
    for (Command& command : commands) std::visit([](auto& one) { one.quiet = true; }, command);
  };
  app.add_flag_callback("-q,--quiet", set_quiet, "Print errors only");
  std::map<const CLI::App*, Command*> command_of;
  for (Command& command : commands) {
    std::visit([&](auto& one) { command_of[&AddVerb(app, one)] = &command; }, command);
  }
  app.footer(std::string("Run icehost help VERB for the options of a verb.\n\n") + kFooter);
  try {
    ParseWords(app, {argv + 1, argv + argc});
  } catch (const CLI::ParseError& error) {
    std::ostringstream complaint;  // may quote unprintable characters of the command line
    const int status = app.exit(error, std::cout, complaint);
    StandardError() << PrintableLines(complaint.str());
    return status == 0 ? kAllWell : kBadUsage;
  }
  Command& command = *command_of.at(app.get_subcommands().front());
  if (auto* const run = std::get_if<RunCommand>(&command)) run->arguments = {argv + 1, argv + argc};
  return command;
}

}  // namespace icehost
