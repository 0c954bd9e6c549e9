// What the verbs' options have in common.
#ifndef ICESCRIPT_HOST_OPTIONS_VERB_OPTIONS_H_
#define ICESCRIPT_HOST_OPTIONS_VERB_OPTIONS_H_

#include <CLI/CLI.hpp>
#include <functional>
#include <string>
#include <vector>

#include "host/options/commands.h"

namespace icehost {

constexpr char kTargetGroup[] = "Simulated target";

// A verb with its flag -q.
CLI::App& AddVerb(CLI::App& app, const char* name, const char* description, bool& quiet);

// An option whose value has a form of its own: what `parse` throws becomes a usage error.
CLI::Option* AddParsed(CLI::App& verb, const std::string& name, const std::string& form,
                       const std::string& help, const std::function<void(std::string)>& parse);

// An option that names a file to write.
CLI::Option* AddFile(CLI::App& verb, const char* name, std::string& path, const char* help);

// The outputs that a verb has. Those whose file was left out are completed once all options are
// known.
void AddOutputs(CLI::App& verb, OutputKind::Verb OutputKind::*which, const char* group,
                OutputPaths& paths);
void CompleteOutputs(OutputPaths& paths);

// Script files, and how large they may be.
void AddScripts(CLI::App& verb, std::vector<std::string>& scripts, std::size_t& size_limit);

// The probe, and the target behind the simulated one; or only that.
void AddProbe(CLI::App& verb, ProbeOptions& probe);
void AddTargetOptions(CLI::App& verb, TargetOptions& target);

// To be called once all options are known. What `judge` throws becomes a usage error of `option`,
// or of what it names itself where that is empty.
void Refuse(const char* option, const std::function<void()>& judge);
// Registers that do not fit, and options of the simulated target for another probe.
void RefuseUnfitProbe(const CLI::App& verb, const ProbeOptions& probe);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_OPTIONS_VERB_OPTIONS_H_
