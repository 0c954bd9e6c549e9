#include "host/check/script_text.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <sstream>
#include <utility>

#include "base/ini_file.h"
#include "base/text.h"
#include "host/system/errors.h"
#include "host/system/interrupt.h"

namespace icehost {
namespace {

[[noreturn]] void Fail(const std::string& path) {
  ThrowIfInterrupted();
  throw IoError(path + ": " + std::strerror(errno));
}

// By system calls: a signal must not pass for the end of a script that is still being typed.
std::string ReadAll(int fd, const std::string& path) {
  std::string content;
  char buffer[1 << 16];
  for (;;) {
    pollfd waiting[] = {{fd, POLLIN, 0}, {InterruptFd(), POLLIN, 0}};
    poll(waiting, 2, -1);
    ThrowIfInterrupted();
    const ssize_t got = read(fd, buffer, sizeof buffer);
    if (got == 0) return content;
    if (got < 0 && errno != EINTR && errno != EAGAIN) Fail(path);
    if (got > 0) content.append(buffer, static_cast<std::size_t>(got));
  }
}

std::string ReadFile(const std::string& path) {
  struct stat status = {};
  if (stat(path.c_str(), &status) != 0) Fail(path);
  if (S_ISDIR(status.st_mode)) throw IoError(path + ": is a directory");
  const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) Fail(path);
  const std::unique_ptr<const int, void (*)(const int*)> closer(
      &fd, [](const int* file) { close(*file); });
  return ReadAll(fd, path);
}

}  // namespace

std::string ReadScript(const std::string& path) {
  std::string content = path == "-" ? ReadAll(STDIN_FILENO, path) : ReadFile(path);
  if (content.find('\0') != std::string::npos) throw IoError(path + ": is binary, not a script");
  return content;
}

ScriptText::ScriptText(std::string name, std::string content)
    : name_(std::move(name)), content_(std::move(content)) {
  std::istringstream raw_lines(content_);
  for (std::string raw; std::getline(raw_lines, raw);) {
    const int number = static_cast<int>(lines_.size()) + 1;
    std::istringstream one(raw);
    icescript::CString read;
    // An empty line fails to be read from a stream of its own, and reads as empty.
    if (!icescript::CIniFile::getline(one, read) && !raw.empty()) {
      too_long_ = {number, raw, "", 1};
      return;
    }
    const std::string_view text = icescript::TrimBlanks(read.Text());
    const auto column = static_cast<int>(text.data() - read.Text().data()) + 1;
    lines_.push_back({number, raw, std::string(text), column});
  }
}

std::string ScriptText::Without(const std::vector<int>& numbers) const {
  std::string content;
  for (const ScriptLine& line : lines_) {
    const bool left_out = std::find(numbers.begin(), numbers.end(), line.number) != numbers.end();
    content += (left_out ? "" : line.raw) + "\n";
  }
  return content;
}

}  // namespace icehost
