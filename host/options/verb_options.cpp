#include "host/options/verb_options.h"

#include <fmt/format.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <stdexcept>

#include "host/options/option_values.h"
#include "host/probe/plugin.h"
#include "host/system/spawned_command.h"

namespace icehost {
namespace {

constexpr char kTargetGroup[] = "Simulated target";
constexpr int kLongestSimulatedIr = 32;

CLI::App& NewVerb(CLI::App& app, const char* name, const char* description, bool& quiet) {
  CLI::App& verb = *app.add_subcommand(name, description);
  verb.group("Verbs");
  verb.add_flag("-q,--quiet", quiet, "Print errors only");
  return verb;
}

// Calls `judge`. If it throws std::invalid_argument, throws a usage error for `option` instead.
void Refuse(const std::string& option, const std::function<void()>& judge) {
  try {
    judge();
  } catch (const std::invalid_argument& error) {
    throw CLI::ValidationError(option, error.what());
  }
}

// Adds an option whose value is passed to `parse`, which may throw std::invalid_argument.
CLI::Option* AddParsed(CLI::App& verb, const std::string& name, const std::string& form,
                       const std::string& help, const std::function<void(std::string)>& parse) {
  const auto parse_value = [parse, name](const std::string& value) {
    Refuse(name, [&] { parse(value); });
  };
  return verb.add_option_function<std::string>(name, parse_value, help)->type_name(form);
}

// Refuses an empty file name, which usually comes from a shell variable that is not set.
CLI::Option* NamesFile(CLI::Option* option) {
  return option->type_name("FILE")->check(
      [](const std::string& path) { return path.empty() ? "expected a file name" : ""; });
}

void AddScripts(CLI::App& verb, std::vector<std::string>& scripts, std::size_t& size_limit) {
  verb.add_option("SCRIPT", scripts, "Script files; - is standard input")
      ->type_name("")
      ->required();
  AddParsed(verb, "--size-limit", "MIB", "Maximum size of a script (default 64)",
            [&size_limit](const std::string& text) { size_limit = ParseMebibytes(text); });
}

void AddTargetOptions(CLI::App& verb, TargetOptions& target) {
  verb.add_option("--ir-length", target.ir_length,
                  "The length of the IR in bits, 2 to 32 (default 5)")
      ->check(CLI::Range(2, kLongestSimulatedIr).description(""))
      ->type_name("N")
      ->group(kTargetGroup);
  AddParsed(verb, "--idcode", "HEX", "The IDCODE; bit 0 must be 1 (default 1ce51001)",
            [&target](const std::string& text) { target.idcode = ParseIdcode(text); })
      ->group(kTargetGroup);
  AddParsed(
      verb, "--idcode-instruction", "HEX", "The instruction that selects the IDCODE (default 1)",
      [&target](const std::string& text) { target.idcode_instruction = ParseInstruction(text); })
      ->group(kTargetGroup);
  AddParsed(
      verb, "--register", "IR:BITS[=HEX]",
      "Add a register of BITS bits, with a hexadecimal instruction and reset value; repeatable;\n"
      "the register 2:32 exists by default, unless instruction 2 selects the IDCODE",
      [&target](const std::string& text) { ParseRegister(text, target); })
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
      ->trigger_on_parse()
      ->group(kTargetGroup);
}

void AddChain(CLI::App& verb, ProbeOptions& probe, const char* group) {
  AddParsed(verb, "--chain", "BITS,...",
            "The IR lengths of all TAPs, as detect lists them: the TAP nearest to TDO first",
            [&probe](const std::string& text) { probe.place.ir_lengths = ParseChain(text); })
      ->group(group);
  AddParsed(verb, "--tap", "N", "The number of the TAP to address; the first in --chain is 1",
            [&probe](const std::string& text) { probe.place.tap = ParseTap(text); })
      ->group(group);
}

void AddSpawn(CLI::App& verb, ProbeOptions& probe) {
  AddParsed(verb, "--spawn", "COMMAND",
            "A shell command that starts the probe's server, which icehost stops before exiting",
            [&probe](const std::string& command) {
              if (command.empty()) throw std::invalid_argument("expected a command");
              probe.spawned = std::make_shared<SpawnedCommand>(command);
            });
  NamesFile(verb.add_option(
      "--spawn-log", probe.spawn_log,
      "Write the output of COMMAND to FILE; after a failure, icehost also prints its last lines"));
}

void AddProbe(CLI::App& verb, ProbeOptions& probe, const std::string& help,
              const char* chain_group = kTargetGroup) {
  AddParsed(verb, "--probe", "PROBE", help,
            [&probe](const std::string& text) { ParseProbe(text, probe); });
  AddParsed(verb, "--timeout", "SECONDS", "How long to wait for the probe's answers (default 5)",
            [&probe](const std::string& text) { probe.timeout = ParseSeconds(text); });
  AddSpawn(verb, probe);
  AddChain(verb, probe, chain_group);
  AddTargetOptions(verb, probe.target);
}

void AddOutputs(CLI::App& verb, OutputKind::Verb OutputKind::*which, const char* group) {
  for (const OutputKind& kind : OutputKinds()) {
    const char* const help = (kind.*which).help;
    if (help == nullptr) continue;
    CLI::Option* const option = kind.file_may_lack
                                    ? verb.add_flag(kind.option, help)
                                    : NamesFile(verb.add_option(kind.option, nullptr, help));
    option->group(group);
  }
}

// The functions below run after all options have been parsed.

OutputRequests RequestsOf(const CLI::App& verb) {
  OutputRequests requests;
  for (const OutputKind& kind : OutputKinds()) {
    const CLI::Option* const option = verb.get_option_no_throw(kind.option);
    if (option == nullptr || option->empty()) continue;
    std::optional<std::string> path = option->as<std::string>();
    if (kind.file_may_lack && path == "true") path.reset();  // CLI11's value if no file is given
    requests.push_back({&kind, std::move(path)});
  }
  return requests;
}

void RefuseUnfitSpawn(const ProbeOptions& probe) {
  if (probe.spawned != nullptr && probe.kind->addresses.empty()) {
    throw CLI::ValidationError("--spawn", std::string(probe.kind->title) + " needs no server");
  }
  if (probe.spawn_log.empty()) return;
  if (probe.spawned == nullptr) throw CLI::ValidationError("--spawn-log", "requires --spawn");
  if (probe.spawn_log == "-") {
    throw CLI::ValidationError("--spawn-log", "must be a file, not standard output");
  }
}

void RefuseTargetOptions(const CLI::App& verb) {
  for (const CLI::Option* const option : verb.get_options()) {
    if (option->get_group() == kTargetGroup && option->count() > 0) {
      throw CLI::ValidationError(option->get_name(), "applies only to the simulated probe");
    }
  }
}

void RefuseUnfitProbe(const CLI::App& verb, const ProbeOptions& probe) {
  RefuseUnfitSpawn(probe);
  if (!probe.kind->has_target) return RefuseTargetOptions(verb);
  const TargetOptions& target = probe.target;
  Refuse("--register", [&target] {
    for (const auto& entry : target.registers) {
      RefuseUnfitInstruction(entry.first, target.ir_length);
    }
  });
  Refuse("--idcode-instruction",
         [&target] { RefuseUnfitInstruction(target.idcode_instruction, target.ir_length); });
}

// Checks --chain and --tap against each other and the probe, and applies them to `probe`.
void CompletePlace(const CLI::App& verb, ProbeOptions& probe) {
  const std::vector<int>& lengths = probe.place.ir_lengths;
  const bool chosen = verb.get_option("--tap")->count() > 0;
  const auto refuse = [](const char* option, const std::string& why) {
    throw CLI::ValidationError(option, why);
  };
  if (lengths.empty() && !chosen) return;
  if (probe.kind->only_tap != nullptr) {
    refuse(chosen ? "--tap" : "--chain",
           std::string(probe.kind->title) + " knows the chain: name the TAP in --probe");
  }
  probe.measures_place = lengths.empty();
  if (probe.measures_place) return;
  if (lengths.size() > 1 && !chosen) refuse("--chain", "with several TAPs, --tap is required");
  if (probe.place.tap >= lengths.size()) {
    refuse("--tap", lengths.size() == 1
                        ? "the chain has only 1 TAP"
                        : fmt::format("the chain has only {} TAPs", lengths.size()));
  }
  if (!probe.kind->has_target) return;
  const int length = lengths[probe.place.tap];
  if (verb.get_option("--ir-length")->count() > 0 && probe.target.ir_length != length) {
    refuse("--ir-length", "differs from the IR length in --chain");
  }
  if (*std::max_element(lengths.begin(), lengths.end()) > kLongestSimulatedIr) {
    refuse("--chain", "a simulated IR can have at most 32 bits");
  }
  probe.target.ir_length = length;
}

// Verbs that do not measure the chain call this function to refuse --tap without --chain.
void RefuseLoneTap(const ProbeOptions& probe) {
  if (probe.measures_place) throw CLI::ValidationError("--tap", "requires --chain");
}

void CompleteRun(const CLI::App& verb, RunCommand& run) {
  run.outputs = RequestsOf(verb);
  if (!run.learn.empty() && run.scripts.size() > 1) {
    throw CLI::ValidationError("--learn", "accepts only one script");
  }
  if (!run.learn.empty() && run.Repeats()) {
    throw CLI::ValidationError("--learn", "cannot be combined with --repeat");
  }
  CompletePlace(verb, run.probe);
  RefuseUnfitProbe(verb, run.probe);
  // If an output is written to standard output, messages must not be mixed with it.
  run.quiet |= run.learn == "-" ||
               std::any_of(run.outputs.begin(), run.outputs.end(),
                           [](const OutputRequest& output) { return output.path == "-"; });
}

// The text is empty if --script has no value.
ScriptKind ParseScriptKind(const std::string& text) {
  if (text.empty() || text == "jtag") return ScriptKind::kJtag;
  if (text == "gpio") return ScriptKind::kGpio;
  throw std::invalid_argument("expected jtag or gpio");
}

void CompleteDetect(const CLI::App& verb, DetectCommand& detect) {
  const ProbeKind& kind = *detect.probe.kind;
  CompletePlace(verb, detect.probe);
  RefuseLoneTap(detect.probe);
  RefuseUnfitProbe(verb, detect.probe);
  if (!kind.ShowsPins() && detect.script == ScriptKind::kGpio) {
    throw CLI::ValidationError("--script", std::string("GPIO scripts do not run on ") + kind.title);
  }
}

void CompleteImport(const ImportCommand& import) {
  if (import.tck_hz.has_value() && import.script == ScriptKind::kJtag) {
    throw CLI::ValidationError("--tck-hz",
                               "requires --script gpio, because a JTAG script cannot wait");
  }
}

void CompleteServe(const CLI::App& verb, ServeCommand& serve) {
  const ProbeKind& kind = *serve.probe.kind;
  serve.outputs = RequestsOf(verb);
  if (serve.verbose && serve.quiet)
    throw CLI::ValidationError("--verbose", "cannot be combined with --quiet");
  if (!kind.ShowsPins()) {
    throw CLI::ValidationError("--probe", std::string("serve sets individual pins, but ") +
                                              kind.title + " accepts only whole scans");
  }
  CompletePlace(verb, serve.probe);
  RefuseLoneTap(serve.probe);
  RefuseUnfitProbe(verb, serve.probe);
}

}  // namespace

CLI::App& AddVerb(CLI::App& app, RunCommand& run) {
  constexpr char kChainGroup[] = "Chain of TAPs (not for OpenOCD)";
  constexpr char kOutputGroup[] =
      "Outputs (FILE may be - for standard output; the plug-in's messages are then omitted)";
  CLI::App& verb =
      NewVerb(app, "run", "Run scripts in order and stop at the first that fails", run.quiet);
  AddScripts(verb, run.scripts, run.size_limit);
  AddProbe(verb, run.probe, ProbeHelp(), kChainGroup);
  verb.add_flag(
      "--strict", run.strict,
      "Treat warnings as failures; except with OpenOCD, also fail if a captured IR does not end\n"
      "in 01, or if the chain does not match --chain or the IR lengths in the script");
  verb.add_flag(
      "--force", run.force,
      "Also run scripts with errors, as the plug-in reads them; they still count as failed");
  verb.add_flag("--keep-going", run.keep_going,
                "Continue after a value that is not as expected, and fail at the end");
  AddParsed(
      verb, "--repeat", "N",
      "Run all scripts N times (0: until interrupted); stop after the first round that fails,\n"
      "unless --keep-going is given; outputs contain the first round and the failed rounds",
      [&run](const std::string& text) { run.repeat = ParseRounds(text); });
  AddOutputs(verb, &OutputKind::run, kOutputGroup);
  NamesFile(verb.add_option("--learn", run.learn,
                            "Write a copy of the script that expects the values that were read"))
      ->group(kOutputGroup);
  verb.add_flag("--summary", run.summary, "Print a summary at the end");
  run.plugin = DefaultPluginPath();
  NamesFile(
      verb.add_option("--plugin", run.plugin,
                      "The plug-in to load (default: the one built or installed with icehost)"));
  AddParsed(verb, "--wire", "MODE", "The wire mode at the start: jtag5, 2wire or cjtag2",
            [&run](const std::string& text) { run.wire_mode = ParseWireMode(text); })
      ->group(kTargetGroup);
  verb.final_callback([&verb, &run] { CompleteRun(verb, run); });
  return verb;
}

CLI::App& AddVerb(CLI::App& app, CheckCommand& check) {
  CLI::App& verb =
      NewVerb(app, "check", "Report every problem in scripts, without using a probe", check.quiet);
  AddScripts(verb, check.scripts, check.size_limit);
  verb.add_flag("--strict", check.strict, "Treat warnings as failures");
  NamesFile(verb.add_option(
      "--json", check.json,
      "Write the problems as JSON lines; with -, they replace the text on standard output"));
  return verb;
}

CLI::App& AddVerb(CLI::App& app, DetectCommand& detect) {
  CLI::App& verb = NewVerb(app, "detect", "List the TAPs on a probe", detect.quiet);
  AddProbe(verb, detect.probe, ProbeHelp());
  AddParsed(verb, "--script", "[KIND]",
            "Write a script for the chain, jtag (the default) or gpio, to standard output;\n"
            "the report then goes to standard error",
            [&detect](const std::string& text) { detect.script = ParseScriptKind(text); })
      ->expected(0, 1);
  verb.final_callback([&verb, &detect] { CompleteDetect(verb, detect); });
  return verb;
}

CLI::App& AddVerb(CLI::App& app, ImportCommand& import) {
  CLI::App& verb =
      NewVerb(app, "import", "Convert a Serial Vector Format (SVF) file to a script", import.quiet);
  verb.add_option("FILE", import.file, "SVF file; - is standard input")->type_name("")->required();
  AddParsed(verb, "--script", "KIND",
            "The kind of script: jtag (the default), or gpio, which can represent any file\n"
            "but needs a probe that drives individual pins",
            [&import](const std::string& text) { import.script = ParseScriptKind(text); });
  AddParsed(verb, "--tck-hz", "N",
            "The highest TCK rate of the probe in Hz, for the waits of a GPIO script\n"
            "(default: the FREQUENCY in the file)",
            [&import](const std::string& text) { import.tck_hz = ParseHertz(text); });
  AddParsed(verb, "--size-limit", "MIB", "Maximum size of the file, and of the script (default 64)",
            [&import](const std::string& text) { import.size_limit = ParseMebibytes(text); });
  verb.add_flag("--all", import.all, "Report every problem, instead of grouping identical ones");
  NamesFile(verb.add_option("-o,--output", import.output,
                            "Write the script to a file, instead of standard output"));
  verb.final_callback([&import] { CompleteImport(import); });
  return verb;
}

CLI::App& AddVerb(CLI::App& app, ServeCommand& serve) {
  CLI::App& verb = NewVerb(
      app, "serve", "Serve a target over remote_bitbang or XVC until interrupted", serve.quiet);
  AddParsed(verb, "ENDPOINT", "",
            "tcp:PORT (on the loopback address), tcp:ADDRESS:PORT or unix:PATH",
            [&serve](const std::string& text) { serve.endpoint = ParseServeEndpoint(text); })
      ->required();
  AddParsed(verb, "--protocol", "PROTOCOL", ProtocolHelp(),
            [&serve](const std::string& text) { serve.protocol = &ParseProtocol(text); });
  verb.add_flag(
      "-v,--verbose", serve.verbose,
      "Report each client that connects or leaves, and errors in the data that clients send");
  AddParsed(verb, "--idle-limit", "SECONDS",
            "How long a client may be silent before another may replace it (default 60)",
            [&serve](const std::string& text) { serve.idle_limit = ParseSeconds(text); });
  AddOutputs(verb, &OutputKind::serve,
             "Outputs that record what clients do (FILE may be - for standard output)");
  AddProbe(verb, serve.probe, ServedProbeHelp());
  verb.final_callback([&verb, &serve] { CompleteServe(verb, serve); });
  return verb;
}

}  // namespace icehost
