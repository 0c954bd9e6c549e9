#include "host/options/command_line.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <iostream>
#include <sstream>

#include "host/options/shared_files.h"
#include "host/options/verbs.h"
#include "host/options/words.h"
#include "host/probe/plugin.h"
#include "host/system/text.h"

namespace icehost {
namespace {

constexpr char kFooter[] =
    "Exit status: 0 all well; 1 a script failed or has errors, or detect found no sound chain; 2 "
    "bad\n"
    "usage; 3 the plug-in, the endpoint or an output cannot be opened or written, or the "
    "connection\n"
    "was lost; 130 interrupted. The plug-in's messages and what check and detect find go to "
    "standard\n"
    "output, everything else of icehost's own to standard error.";

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
  DetectCommand detect;
  ImportCommand import;
  ServeCommand serve;
  AddRun(app, run);
  AddCheck(app, check);
  AddDetect(app, detect);
  AddImport(app, import);
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
  detect.quiet |= quiet;
  import.quiet |= quiet;
  serve.quiet |= quiet;
  if (app.got_subcommand("run")) return run;
  if (app.got_subcommand("check")) return check;
  if (app.got_subcommand("detect")) return detect;
  if (app.got_subcommand("import")) return import;
  return serve;
}

}  // namespace icehost
