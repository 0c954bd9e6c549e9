#include "host/check/check_stream.h"

#include <fmt/format.h>

#include "host/system/interrupt.h"
#include "host/system/text.h"

namespace icehost {

void CheckStream::Begin() {
  stream_ << "{\"schema\":\"icehost-check\",\"version\":1}\n";
}

void CheckStream::BeginScript(const std::string& path) {
  stream_ << fmt::format("{{\"script\":{}}}\n", JsonText(path));
}

void CheckStream::Write(const Problems& problems) {
  for (const Problem& problem : problems.Found()) {
    ThrowIfInterrupted();
    stream_ << fmt::format("{{\"problem\":\"{}\",\"line\":{},\"column\":{},\"text\":{}}}\n",
                           problem.error ? "error" : "warning", problem.place.line,
                           problem.place.column, JsonText(problem.text));
  }
}

void CheckStream::WriteError(const std::string& text) {
  stream_ << fmt::format("{{\"error\":{}}}\n", JsonText(text));
}

void CheckStream::EndScript(bool passed) {
  stream_ << fmt::format("{{\"end\":{}}}\n", passed);
}

void CheckStream::End(const CheckCounts& counts) {
  stream_ << fmt::format("{{\"errors\":{},\"warnings\":{},\"scripts\":{}}}\n", counts.errors,
                         counts.warnings, counts.scripts);
}

}  // namespace icehost
