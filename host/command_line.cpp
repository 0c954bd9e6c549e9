#include "host/command_line.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <functional>
#include <iostream>
#include <sstream>

#include "host/option_values.h"
#include "host/probe/plugin.h"
#include "host/shared_files.h"
#include "host/system/printable.h"
#include "host/words.h"

namespace icehost {
namespace {

constexpr char kFooter[] =
    "Exit status: 0 all well; 1 a script failed or has errors; 2 bad usage; 3 the plug-in, the\n"
    "endpoint or an output cannot be opened or written, or the connection was lost; 130\n"
    "interrupted. The plug-in's messages and what check finds go to standard output, everything\n"
    "else of icehost's own to standard error.";

constexpr char kTargetGroup[] = "Simulated target";
constexpr char kOutputGroup[] =
    "Outputs (FILE - is standard output, where the plug-in's messages are then left out)";

// An empty name is that of a variable that was not set.
std::string IsGiven(const std::string& path) {
  return path.empty() ? "a file has a name" : "";
}

CLI::App& AddVerb(CLI::App& app, const char* name, const char* description, bool& quiet) {
  CLI::App& verb = *app.add_subcommand(name, description);
  verb.group("Verbs");
  verb.add_flag("-q,--quiet", quiet, "Print errors only");
  return verb;
}

// An option whose value has a form of its own: what `parse` throws becomes a usage error.
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

void AddTargetOptions(CLI::App& verb, TargetOptions& target) {
  verb.add_option("--ir-length", target.ir_length, "Bits of its IR, 2 to 32 (default 5)")
      ->check(CLI::Range(2, 32).description(""))
      ->type_name("N")
      ->group(kTargetGroup);
  AddParsed(verb, "--idcode", "HEX", "Its IDCODE (default 1ce51001)",
            [&target](const std::string& text) { target.idcode = ParseIdcode(text); })
      ->group(kTargetGroup);
  AddParsed(verb, "--register", "IR:BITS[=HEX]",
            "A register: its instruction (hexadecimal), its length and what it resets to\n"
            "(hexadecimal); may be repeated (2:32 is always there)",
            [&target](const std::string& text) { ParseRegister(text, target); })
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
      ->trigger_on_parse()
      ->group(kTargetGroup);
}

void AddScripts(CLI::App& verb, std::vector<std::string>& scripts, std::size_t& size_limit) {
  verb.add_option("SCRIPT", scripts, "Script files; - is standard input")->required();
  AddParsed(verb, "--size-limit", "MIB", "How large a script may be (default 64)",
            [&size_limit](const std::string& text) { size_limit = ParseMebibytes(text); });
}

void AddOutputs(CLI::App& verb, RunCommand& run) {
  const auto add = [&verb](const char* name, std::string& path, const char* help) {
    verb.add_option(name, path, help)->type_name("FILE")->group(kOutputGroup)->check(IsGiven);
  };
  verb.add_flag("--trace", run.trace,
                "Write a line for every host call, to standard error or with --trace=FILE")
      ->group(kOutputGroup);
  add("--json", run.json, "Write calls and messages as JSON lines");
  add("--vcd", run.vcd, "Write the waveform, for GTKWave, PulseView or sigrok-cli");
  add("--svg", run.svg, "Write the waveform as a picture");
  add("--learn", run.learn, "Write the script with the values that were read as those it expects");
  verb.add_flag("--summary", run.summary, "Say at the end what was done");
}

// What `judge` throws becomes a usage error of `option`, or of what it names itself.
void Refuse(const char* option, const std::function<void()>& judge) {
  try {
    judge();
  } catch (const std::invalid_argument& error) {
    if (*option != '\0') throw CLI::ValidationError(option, error.what());
    throw CLI::ValidationError(error.what());
  }
}

void RefuseTargetOptions(const CLI::App& verb) {
  for (const CLI::Option* const option : verb.get_options()) {
    if (option->get_group() == kTargetGroup && option->count() > 0) {
      throw CLI::ValidationError(option->get_name(), "is for the simulated probe");
    }
  }
}

void AddRun(CLI::App& app, RunCommand& run) {
  CLI::App& verb =
      AddVerb(app, "run", "Run scripts one after the other, up to the first that fails", run.quiet);
  AddScripts(verb, run.scripts, run.size_limit);
  AddParsed(verb, "--probe", "PROBE",
            "sim (the default), remote-bitbang:HOST:PORT, remote-bitbang:unix:PATH\n"
            "or openocd:HOST:PORT[:TAP]",
            [&run](const std::string& text) { run.probe = ParseProbe(text); });
  AddParsed(verb, "--timeout", "SECONDS", "How long to wait for the probe's answers (default 5)",
            [&run](const std::string& text) { run.timeout = ParseSeconds(text); });
  verb.add_flag("--strict", run.strict,
                "Let warnings fail: those of check, and a captured IR that no TAP answers with");
  verb.add_flag("--force", run.force,
                "Play scripts with errors as the plug-in takes them, instead of none");
  verb.add_flag("--keep-going", run.keep_going,
                "Play on where a value is not the expected one, and fail at the end");
  AddOutputs(verb, run);
  verb.add_option("--plugin", run.plugin,
                  "The plug-in to load (default: the one built or installed with icehost)")
      ->type_name("FILE");
  AddTargetOptions(verb, run.target);
  AddParsed(verb, "--wire", "MODE", "The wire mode at the start: jtag5, 2wire or cjtag2",
            [&run](const std::string& text) { run.wire_mode = ParseWireMode(text); })
      ->group(kTargetGroup);
  verb.final_callback([&run, &verb] {
    if (run.trace == "true") run.trace = kStandardError;  // given without a file
    Refuse("", [&run] { RefuseSharedFiles(run); });
    Refuse("--register", [&run] { RefuseUnfitRegisters(run.target); });
    Refuse("--learn", [&run] {
      if (!run.learn.empty() && run.scripts.size() > 1) {
        throw std::invalid_argument("takes one script");
      }
    });
    if (run.probe.kind != ProbeChoice::Kind::kSim) RefuseTargetOptions(verb);
  });
}

void AddCheck(CLI::App& app, CheckCommand& check) {
  CLI::App& verb = AddVerb(app, "check", "Report every problem of scripts without touching a probe",
                           check.quiet);
  AddScripts(verb, check.scripts, check.size_limit);
  verb.add_flag("--strict", check.strict, "Let warnings fail");
  verb.add_option("--json", check.json,
                  "Write the problems as JSON lines; - is standard output, in place of the text")
      ->type_name("FILE");
  verb.final_callback([&check] { Refuse("", [&check] { RefuseSharedFiles(check); }); });
}

void AddServe(CLI::App& app, ServeCommand& serve) {
  CLI::App& verb =
      AddVerb(app, "serve",
              "Serve the simulated target by the remote_bitbang protocol, until a signal ends it",
              serve.quiet);
  AddParsed(verb, "ENDPOINT", "",
            "tcp:PORT (on the loopback address), tcp:ADDRESS:PORT or unix:PATH",
            [&serve](const std::string& text) { serve.endpoint = ParseServeEndpoint(text); })
      ->required();
  AddParsed(verb, "--idle-limit", "SECONDS",
            "How long a client may be silent until another takes its place (default 60)",
            [&serve](const std::string& text) { serve.idle_limit = ParseSeconds(text); });
  AddTargetOptions(verb, serve.target);
  verb.final_callback(
      [&serve] { Refuse("--register", [&serve] { RefuseUnfitRegisters(serve.target); }); });
}

}  // namespace

std::variant<Command, ExitStatus> ParseCommandLine(int argc, char** argv) {
  CLI::App app("icehost runs and checks GPIO and JTAG scripts for a debug probe.", "icehost");
  app.set_version_flag("--version", "icehost " ICEHOST_VERSION);
  app.require_subcommand(1);
  app.footer(kFooter);
  app.get_formatter()->label("SUBCOMMAND", "VERB");
  bool quiet = false;
  app.add_flag("-q,--quiet", quiet, "Print errors only");

  RunCommand run;
  run.plugin = DefaultPluginPath();
  CheckCommand check;
  ServeCommand serve;
  AddRun(app, run);
  AddCheck(app, check);
  AddServe(app, serve);
  app.footer(std::string("icehost help VERB tells the options of a verb.\n\n") + kFooter);
  try {
    ParseWords(app, {argv + 1, argv + argc});
  } catch (const CLI::ParseError& error) {
    std::ostringstream complaint;  // which may quote what it was given
    const int status = app.exit(error, std::cout, complaint);
    std::fputs(PrintableLines(complaint.str()).c_str(), stderr);
    return status == 0 ? kAllWell : kBadUsage;
  }
  // What else stands on standard output would spoil an output that is meant for a program.
  run.quiet |= quiet || IsOnStandardOutput(run);
  check.quiet |= quiet;
  serve.quiet |= quiet;
  if (app.got_subcommand("run")) return run;
  if (app.got_subcommand("check")) return check;
  return serve;
}

}  // namespace icehost
