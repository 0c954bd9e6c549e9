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

namespace icehost {
namespace {

constexpr char kFooter[] =
    "Exit status: 0 all well; 1 a script failed or has errors; 2 bad usage; 3 the plug-in, the\n"
    "endpoint or an output file cannot be opened, or the connection was lost; 130 interrupted.\n"
    "The plug-in's messages go to standard output, everything of icehost's own to standard error.";

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
      ->group("Simulated target");
  AddParsed(verb, "--idcode", "HEX", "Its IDCODE (default 1ce51001)",
            [&target](const std::string& text) { target.idcode = ParseIdcode(text); })
      ->group("Simulated target");
  AddParsed(verb, "--register", "IR:BITS[=HEX]",
            "A register: its instruction, its length and what it resets to; may be repeated\n"
            "(2:32 is always there)",
            [&target](const std::string& text) { ParseRegister(text, target); })
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
      ->trigger_on_parse()
      ->group("Simulated target");
}

void AddScripts(CLI::App& verb, std::vector<std::string>& scripts, std::size_t& size_limit) {
  verb.add_option("SCRIPT", scripts, "Script files; - is standard input")->required();
  AddParsed(verb, "--size-limit", "MIB", "How large a script may be (default 64)",
            [&size_limit](const std::string& text) { size_limit = ParseMebibytes(text); });
}

void AddOutputs(CLI::App& verb, RunCommand& run) {
  verb.add_flag("--trace", run.trace,
                "Write a line for every host call, to standard error or with --trace=FILE");
  verb.add_option("--json", run.json, "Write calls and messages as JSON lines")->type_name("FILE");
  verb.add_option("--vcd", run.vcd, "Write the waveform, for GTKWave, PulseView or sigrok-cli")
      ->type_name("FILE");
  verb.add_option("--svg", run.svg, "Write the waveform as a picture")->type_name("FILE");
  verb.add_option("--learn", run.learn,
                  "Write the script with the values that were read as those it expects")
      ->type_name("FILE");
  verb.add_flag("--summary", run.summary, "Say at the end what was done");
}

void AddRun(CLI::App& app, RunCommand& run) {
  CLI::App& verb =
      *app.add_subcommand("run", "Run scripts one after the other, up to the first that fails");
  verb.fallthrough();
  AddScripts(verb, run.scripts, run.size_limit);
  AddParsed(verb, "--probe", "PROBE",
            "sim (the default), remote-bitbang:HOST:PORT, remote-bitbang:unix:PATH\n"
            "or openocd:HOST:PORT[:TAP]",
            [&run](const std::string& text) { run.probe = ParseProbe(text); });
  AddParsed(verb, "--timeout", "SECONDS", "How long to wait for the probe's answers (default 5)",
            [&run](const std::string& text) { run.timeout = ParseSeconds(text); });
  verb.add_flag("--strict", run.strict,
                "Fail a scan whose captured IR no TAP answers with, instead of a warning");
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
      ->group("Simulated target");
  verb.final_callback([&run, &verb] {
    if (run.trace == "true") run.trace = "-";  // given without a file
    if (!run.learn.empty() && run.scripts.size() > 1) {
      throw CLI::ValidationError("--learn", "takes one script");
    }
    try {
      RefuseSharedFiles(run);
    } catch (const std::invalid_argument& error) {
      throw CLI::ValidationError(error.what());
    }
    if (run.probe.kind == ProbeChoice::Kind::kSim) return;
    for (const CLI::Option* const option : verb.get_options()) {
      if (option->get_group() == "Simulated target" && option->count() > 0) {
        throw CLI::ValidationError(option->get_name(), "is for the simulated probe");
      }
    }
  });
}

void AddCheck(CLI::App& app, CheckCommand& check) {
  CLI::App& verb =
      *app.add_subcommand("check", "Report every problem of scripts without touching a probe");
  verb.fallthrough();
  AddScripts(verb, check.scripts, check.size_limit);
}

void AddServe(CLI::App& app, ServeCommand& serve) {
  CLI::App& verb = *app.add_subcommand(
      "serve", "Serve the simulated target by the remote_bitbang protocol, until a signal ends it");
  verb.fallthrough();
  AddParsed(verb, "ENDPOINT", "",
            "tcp:PORT (on the loopback address), tcp:ADDRESS:PORT or unix:PATH",
            [&serve](const std::string& text) { serve.endpoint = ParseServeEndpoint(text); })
      ->required();
  AddParsed(verb, "--idle-limit", "SECONDS",
            "How long a client may be silent until another takes its place (default 60)",
            [&serve](const std::string& text) { serve.idle_limit = ParseSeconds(text); });
  AddTargetOptions(verb, serve.target);
}

}  // namespace

std::variant<Command, ExitStatus> ParseCommandLine(int argc, char** argv) {
  CLI::App app("icehost runs and checks GPIO and JTAG scripts for a debug probe.", "icehost");
  app.set_version_flag("--version", "icehost " ICEHOST_VERSION);
  app.require_subcommand(1);
  app.footer(kFooter);
  bool quiet = false;
  app.add_flag("-q,--quiet", quiet, "Print errors only");

  RunCommand run;
  run.plugin = DefaultPluginPath();
  CheckCommand check;
  ServeCommand serve;
  AddRun(app, run);
  AddCheck(app, check);
  AddServe(app, serve);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    std::ostringstream complaint;  // which may quote what it was given
    const int status = app.exit(error, std::cout, complaint);
    std::fputs(PrintableLines(complaint.str()).c_str(), stderr);
    return status == 0 ? kAllWell : kBadUsage;
  }
  run.quiet = check.quiet = serve.quiet = quiet;
  if (app.got_subcommand("run")) return run;
  if (app.got_subcommand("check")) return check;
  return serve;
}

}  // namespace icehost
