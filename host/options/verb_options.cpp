#include "host/options/verb_options.h"

#include "host/options/option_values.h"

namespace icehost {
namespace {

// An empty name is that of a variable that was not set.
std::string IsGiven(const std::string& path) {
  return path.empty() ? "a file has a name" : "";
}

void RefuseTargetOptions(const CLI::App& verb) {
  for (const CLI::Option* const option : verb.get_options()) {
    if (option->get_group() == kTargetGroup && option->count() > 0) {
      throw CLI::ValidationError(option->get_name(), "is for the simulated probe");
    }
  }
}

}  // namespace

CLI::App& AddVerb(CLI::App& app, const char* name, const char* description, bool& quiet) {
  CLI::App& verb = *app.add_subcommand(name, description);
  verb.group("Verbs");
  verb.add_flag("-q,--quiet", quiet, "Print errors only");
  return verb;
}

CLI::Option* AddParsed(CLI::App& verb, const std::string& name, const std::string& form,
                       const std::string& help, const std::function<void(std::string)>& parse) {
  const auto parse_value = [parse, name](const std::string& value) {
    try {
      parse(value);
    } catch (const std::invalid_argument& error) {
      throw CLI::ValidationError(name, error.what());
    }
  };
  return verb.add_option_function<std::string>(name, parse_value, help)->type_name(form);
}

CLI::Option* AddFile(CLI::App& verb, const char* name, std::string& path, const char* help) {
  return verb.add_option(name, path, help)->type_name("FILE")->check(IsGiven);
}

void AddOutputs(CLI::App& verb, OutputKind::Verb OutputKind::*which, const char* group,
                OutputPaths& paths) {
  for (std::size_t i = 0; i < kOutputCount; ++i) {
    const OutputKind& kind = kOutputKinds[i];
    const char* const help = (kind.*which).help;
    if (help == nullptr) continue;
    CLI::Option* const option = kind.file_may_lack ? verb.add_flag(kind.option, paths[i], help)
                                                   : AddFile(verb, kind.option, paths[i], help);
    option->group(group);
  }
}

void CompleteOutputs(OutputPaths& paths) {
  for (std::size_t i = 0; i < kOutputCount; ++i) {
    if (kOutputKinds[i].file_may_lack && paths[i] == "true") paths[i] = kStandardError;
  }
}

void AddScripts(CLI::App& verb, std::vector<std::string>& scripts, std::size_t& size_limit) {
  verb.add_option("SCRIPT", scripts, "Script files; - is standard input")
      ->type_name("")
      ->required();
  AddParsed(verb, "--size-limit", "MIB", "How large a script may be (default 64)",
            [&size_limit](const std::string& text) { size_limit = ParseMebibytes(text); });
}

void AddTargetOptions(CLI::App& verb, TargetOptions& target) {
  verb.add_option("--ir-length", target.ir_length, "Bits of its IR, 2 to 32 (default 5)")
      ->check(CLI::Range(2, 32).description(""))
      ->type_name("N")
      ->group(kTargetGroup);
  AddParsed(verb, "--idcode", "HEX", "Its IDCODE, whose bit 0 is 1 (default 1ce51001)",
            [&target](const std::string& text) { target.idcode = ParseIdcode(text); })
      ->group(kTargetGroup);
  AddParsed(
      verb, "--idcode-instruction", "HEX", "The instruction that selects it (default 1)",
      [&target](const std::string& text) { target.idcode_instruction = ParseInstruction(text); })
      ->group(kTargetGroup);
  AddParsed(verb, "--register", "IR:BITS[=HEX]",
            "A register: its instruction (hexadecimal), its length and what it resets to\n"
            "(hexadecimal); may be repeated (2:32 is there, unless 2 selects the IDCODE)",
            [&target](const std::string& text) { ParseRegister(text, target); })
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
      ->trigger_on_parse()
      ->group(kTargetGroup);
}

void AddProbe(CLI::App& verb, ProbeOptions& probe) {
  AddParsed(verb, "--probe", "PROBE",
            "sim (the default), remote-bitbang:HOST:PORT, remote-bitbang:unix:PATH\n"
            "or openocd:HOST:PORT[:TAP]",
            [&probe](const std::string& text) { probe.choice = ParseProbe(text); });
  AddParsed(verb, "--timeout", "SECONDS", "How long to wait for the probe's answers (default 5)",
            [&probe](const std::string& text) { probe.timeout = ParseSeconds(text); });
  AddTargetOptions(verb, probe.target);
}

void Refuse(const char* option, const std::function<void()>& judge) {
  try {
    judge();
  } catch (const std::invalid_argument& error) {
    if (*option != '\0') throw CLI::ValidationError(option, error.what());
    throw CLI::ValidationError(error.what());
  }
}

void RefuseUnfitProbe(const CLI::App& verb, const ProbeOptions& probe) {
  const TargetOptions& target = probe.target;
  Refuse("--register", [&target] {
    for (const auto& entry : target.registers) {
      RefuseUnfitInstruction(entry.first, target.ir_length);
    }
  });
  Refuse("--idcode-instruction",
         [&target] { RefuseUnfitInstruction(target.idcode_instruction, target.ir_length); });
  if (probe.choice.kind != ProbeChoice::Kind::kSim) RefuseTargetOptions(verb);
}

}  // namespace icehost
