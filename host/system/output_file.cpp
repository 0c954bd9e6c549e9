#include "host/system/output_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "host/system/errors.h"

namespace icehost {
namespace {

constexpr int kBufferSize = 1 << 16;

// Opens a file that is there, or makes one; `created` says which.
int Open(const std::string& path, bool& created) {
  constexpr int kNew = O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC;
  constexpr int kThere = O_WRONLY | O_CREAT | O_CLOEXEC;  // made all the same behind a dead link
  int fd = open(path.c_str(), kNew, 0666);
  created = fd >= 0;
  if (!created) fd = open(path.c_str(), kThere, 0666);
  if (fd < 0) throw IoError(fmt::format("{}: {}", path, std::strerror(errno)));
  return fd;
}

}  // namespace

OutputFile::Buffer::Buffer(int fd) : fd_(fd), bytes_(std::make_unique<char[]>(kBufferSize)) {
  setp(bytes_.get(), bytes_.get() + kBufferSize);
}

bool OutputFile::Buffer::Write() {
  const char* at = pbase();
  while (error_ == 0 && at < pptr()) {
    const ssize_t written = write(fd_, at, static_cast<std::size_t>(pptr() - at));
    if (written >= 0) at += written;
    if (written < 0 && errno != EINTR) error_ = errno;
  }
  setp(pbase(), epptr());
  return error_ == 0;
}

OutputFile::Buffer::int_type OutputFile::Buffer::overflow(int_type ch) {
  if (!Write()) return traits_type::eof();
  if (!traits_type::eq_int_type(ch, traits_type::eof())) sputc(traits_type::to_char_type(ch));
  return traits_type::not_eof(ch);
}

OutputFile::OutputFile(const std::string& path, Rest rest)
    : path_(path),
      rest_(rest),
      created_(false),
      fd_(Open(path, created_)),
      buffer_(fd_),
      stream_(&buffer_) {}

OutputFile::~OutputFile() {
  if (fd_ >= 0) close(fd_);
  if (created_ && !begun_) unlink(path_.c_str());
}

void OutputFile::Begin() {
  begun_ = true;
  // A pipe or a device cannot be emptied, and need not be.
  [[maybe_unused]] const int ignored = ftruncate(fd_, 0);
}

void OutputFile::Close() {
  buffer_.Write();
  int error = buffer_.Error();
  if (error != 0) CutUnfinished();
  if (close(std::exchange(fd_, -1)) != 0 && error == 0) error = errno;
  if (error != 0) throw IoError(fmt::format("{}: cannot write: {}", path_, std::strerror(error)));
}

// Takes back a part of a line, or all, where the file can be read and cut.
void OutputFile::CutUnfinished() const {
  off_t end = rest_ == Rest::kLines ? lseek(fd_, 0, SEEK_CUR) : 0;
  const int reader =
      open(fmt::format("/proc/self/fd/{}", fd_).c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  char last = '\0';
  while (end > 0 && pread(reader, &last, 1, end - 1) == 1 && last != '\n') --end;
  if (reader >= 0) close(reader);
  [[maybe_unused]] const int ignored = end >= 0 ? ftruncate(fd_, end) : 0;
}

}  // namespace icehost
