#include "host/system/captured_output.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "host/system/errors.h"

namespace icehost {
namespace {

[[noreturn]] void Fail() {
  throw IoError(std::string("standard output: ") + std::strerror(errno));
}

}  // namespace

CapturedOutput::CapturedOutput() : kept_(memfd_create("stdout", MFD_CLOEXEC)) {
  if (kept_ < 0) Fail();
  std::fflush(stdout);
  const int user = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  user_ = user >= 0 ? fdopen(user, "w") : nullptr;
  if (user_ != nullptr && dup2(kept_, STDOUT_FILENO) >= 0) return;
  // EINVAL: it cannot be written to.
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
  // The offset is the one that descriptor 1 shares.
  const off_t size = lseek(kept_, 0, SEEK_CUR);
  if (size <= 0) return "";
  std::string text(static_cast<std::size_t>(size), '\0');
  const ssize_t got = pread(kept_, text.data(), text.size(), 0);
  text.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
  lseek(kept_, 0, SEEK_SET);
  return text;
}

}  // namespace icehost
