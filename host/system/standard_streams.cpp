#include "host/system/standard_streams.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <streambuf>

#include "host/system/descriptor_writer.h"
#include "host/system/errors.h"
#include "host/system/text.h"

namespace icehost {
namespace {

[[noreturn]] void Fail() {
  throw IoError(std::string("standard output: ") + std::strerror(errno));
}

class Unbuffered : public std::streambuf {
 public:
  explicit Unbuffered(int fd) : writer_(fd) {}

 protected:
  int_type overflow(int_type ch) override {
    const char byte = traits_type::to_char_type(ch);
    return writer_.Write({&byte, 1}) ? ch : traits_type::eof();
  }
  std::streamsize xsputn(const char* text, std::streamsize size) override {
    return writer_.Write({text, static_cast<std::size_t>(size)}) ? size : 0;
  }

 private:
  DescriptorWriter writer_;
};

// This object is never destroyed, because threads may use it while the process ends.
std::ostream& standard_error = *new std::ostream(new Unbuffered(STDERR_FILENO));

}  // namespace

std::ostream& StandardError() {
  return standard_error;
}

void OccupyStandardDescriptors() {
  for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(fd, F_GETFD) != -1 || errno != EBADF) continue;
    // open returns the lowest free descriptor, `fd`. The wrong access mode makes every use fail.
    [[maybe_unused]] const int opened = open("/dev/null", fd == 0 ? O_WRONLY : O_RDONLY);
  }
}

bool CompleteStandardStreams() {
  const bool flushed = std::fflush(stdout) == 0;
  return flushed && std::ferror(stdout) == 0 && standard_error.good();
}

CapturedOutput::CapturedOutput() : kept_(memfd_create("stdout", MFD_CLOEXEC)) {
  if (kept_ < 0) Fail();
  std::fflush(stdout);
  const int user = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  user_ = user >= 0 ? fdopen(user, "w") : nullptr;
  if (user_ != nullptr && dup2(kept_, STDOUT_FILENO) >= 0) return;
  // EINVAL means that standard output cannot be written to.
  const int error = errno == EINVAL ? EBADF : errno;
  close(kept_);
  if (user >= 0) close(user);
  errno = error;
  Fail();
}

CapturedOutput::~CapturedOutput() {
  std::fflush(stdout);
  std::fflush(user_);
  dup2(fileno(user_), STDOUT_FILENO);
  std::fclose(user_);
  close(kept_);
}

std::string CapturedOutput::Take() {
  // Descriptor 1 shares this offset, which is therefore the size of the output.
  const off_t size = lseek(kept_, 0, SEEK_CUR);
  if (size <= 0) return "";
  std::string text(static_cast<std::size_t>(size), '\0');
  const ssize_t got = pread(kept_, text.data(), text.size(), 0);
  text.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
  lseek(kept_, 0, SEEK_SET);
  return text;
}

bool WantsColour(int fd) {
  const char* const no_colour = std::getenv("NO_COLOR");
  const char* const terminal = std::getenv("TERM");
  return isatty(fd) != 0 && (no_colour == nullptr || *no_colour == '\0') &&
         (terminal == nullptr || std::strcmp(terminal, "dumb") != 0);
}

void ComplainLine(std::string line) {
  while (!line.empty() && line.back() == '\n') line.pop_back();
  // A failure is ignored, because there is nowhere to report it.
  standard_error << Printable(line) + "\n";
}

void Complain(const std::string& what) {
  ComplainLine("icehost: " + what);
}

void ComplainOfMemory() {
  standard_error << "icehost: out of memory\n";
}

}  // namespace icehost
