#include "host/options/words.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "host/check/hints.h"

namespace icehost {
namespace {

using Texts = std::vector<std::string>;

constexpr const char* kHelp = "help";

// No option before the verb takes a value.
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

// " (did you mean check?)" where a known word is near; else nothing.
std::string Hint(const std::string& word, const Texts& known) {
  // A single letter is near any other.
  if (word.size() > 1 && word[0] == '-' && word[1] != '-') return "";
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
  Texts behind;
  for (const CLI::App* const verb : app.get_subcommands()) AppendOptions(*verb, behind);
  for (const std::string& word : app.remaining(true)) {
    if (word.size() < 2 || word.front() != '-' || word == "--") continue;
    const std::string option = word.substr(0, word.find('='));
    for (const auto& [known, place] : {std::pair{before, "before"}, std::pair{behind, "behind"}}) {
      if (!Contains(known, option)) continue;
      throw CLI::ValidationError(fmt::format("option \"{}\" stands {} the verb", option, place));
    }
    Texts& known = behind.empty() ? before : behind;
    throw CLI::ValidationError(fmt::format("unknown option \"{}\"{}", option, Hint(option, known)));
  }
}

}  // namespace

void ParseWords(CLI::App& app, Texts words) {
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
