#include "host/words.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "host/system/near_word.h"

namespace icehost {
namespace {

using Words = std::vector<std::string>;

constexpr const char* kHelp = "help";

// No option before the verb takes a value.
Words::iterator FindVerb(Words& words) {
  return std::find_if(words.begin(), words.end(), [](const std::string& word) {
    return word.empty() || word.front() != '-' || word == "--";
  });
}

Words VerbsOf(const CLI::App& app) {
  Words verbs;
  for (const CLI::App* const verb : app.get_subcommands({})) verbs.push_back(verb->get_name());
  return verbs;
}

void AppendOptions(const CLI::App& app, Words& options) {
  for (const CLI::Option* const option : app.get_options()) {
    for (const std::string& name : option->get_lnames()) options.push_back("--" + name);
    for (const std::string& name : option->get_snames()) options.push_back("-" + name);
  }
}

bool Contains(const Words& words, const std::string& word) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

void PutOptionForHelp(Words& words) {
  auto verb = FindVerb(words);
  if (verb == words.end() || *verb != kHelp) return;
  while (verb != words.end() && *verb == kHelp) {
    words.erase(verb);
    verb = FindVerb(words);
  }
  words.insert(verb == words.end() ? verb : verb + 1, "--help");
}

void RefuseUnknownVerb(const CLI::App& app, Words& words) {
  const auto verb = FindVerb(words);
  Words known = VerbsOf(app);
  if (verb == words.end() || *verb == "--" || Contains(known, *verb)) return;
  known.emplace_back(kHelp);
  throw CLI::ValidationError(fmt::format("unknown verb \"{}\"{}", *verb, DidYouMean(*verb, known)));
}

void RefuseUnknownOption(const CLI::App& app) {
  Words before;
  AppendOptions(app, before);
  Words behind;
  for (const CLI::App* const verb : app.get_subcommands()) AppendOptions(*verb, behind);
  for (const std::string& word : app.remaining(true)) {
    if (word.size() < 2 || word.front() != '-' || word == "--") continue;
    const std::string option = word.substr(0, word.find('='));
    for (const auto& [known, place] : {std::pair{before, "before"}, std::pair{behind, "behind"}}) {
      if (!Contains(known, option)) continue;
      throw CLI::ValidationError(fmt::format("option \"{}\" stands {} the verb", option, place));
    }
    Words& known = behind.empty() ? before : behind;
    throw CLI::ValidationError(
        fmt::format("unknown option \"{}\"{}", option, DidYouMean(option, known)));
  }
}

}  // namespace

void ParseWords(CLI::App& app, Words words) {
  PutOptionForHelp(words);
  RefuseUnknownVerb(app, words);
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

}  // namespace icehost
