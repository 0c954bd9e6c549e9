#include "host/system/output_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <utility>

#include "host/system/errors.h"
#include "host/system/interrupt.h"

namespace icehost {
namespace {

constexpr int kBufferSize = 1 << 16;

// Duplicates descriptor 1. The copy remains the user's standard output while 1 is redirected.
int OpenStandardOutput() {
  const int fd = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  if (fd < 0) throw IoError(fmt::format("standard output: {}", std::strerror(errno)));
  return fd;
}

// Follows symbolic links to a file that does not exist yet, and returns its path.
std::string MissingFile(const std::string& path) {
  namespace fs = std::filesystem;
  fs::path place = path;
  std::error_code ignored;
  for (;;) {
    const fs::path target = fs::read_symlink(place, ignored);
    if (target.empty()) return place;
    place = place.parent_path() / target;
  }
}

// Opens an existing file, or creates a file and stores its path in `created`.
int Open(const std::string& path, std::string& created) {
  if (path == "-") return OpenStandardOutput();
  int fd = open(path.c_str(), O_WRONLY | O_CLOEXEC);
  if (fd < 0 && errno == ENOENT) {
    created = MissingFile(path);
    fd = open(created.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  }
  if (fd < 0) throw IoError(fmt::format("{}: {}", path, std::strerror(errno)));
  return fd;
}

}  // namespace

OutputFile::Buffer::Buffer(int fd, char* room) : writer_(fd) {
  setp(room, room + kBufferSize);
}

bool OutputFile::Buffer::Write() {
  const bool written =
      writer_.Write(std::string_view(pbase(), static_cast<std::size_t>(pptr() - pbase())));
  setp(pbase(), epptr());
  return written;
}

OutputFile::Buffer::int_type OutputFile::Buffer::overflow(int_type ch) {
  if (!Write()) return traits_type::eof();
  if (!traits_type::eq_int_type(ch, traits_type::eof())) sputc(traits_type::to_char_type(ch));
  return traits_type::not_eof(ch);
}

OutputFile::OutputFile(const std::string& path, Rest rest)
    : path_(path),
      rest_(rest),
      room_(std::make_unique<char[]>(kBufferSize)),
      fd_(Open(path, created_)),
      buffer_(fd_, room_.get()),
      stream_(&buffer_) {
  if (isatty(fd_) != 0) stream_.setf(std::ios::unitbuf);
}

OutputFile::~OutputFile() {
  if (begun_ && fd_ >= 0 && !buffer_.Write()) CutUnfinished();
  if (fd_ >= 0) close(fd_);
  RemoveUnbegun();
}

void OutputFile::RemoveUnbegun() {
  if (!created_.empty() && !begun_) unlink(std::exchange(created_, "").c_str());
}

struct stat OutputFile::Status() const {
  struct stat status = {};
  if (fstat(fd_, &status) != 0) throw IoError(fmt::format("{}: {}", path_, std::strerror(errno)));
  return status;
}

void OutputFile::Begin() {
  begun_ = true;
  // The result is ignored, because pipes and devices cannot be emptied.
  [[maybe_unused]] const int ignored = IsStandardOutput() ? 0 : ftruncate(fd_, 0);
}

int OutputFile::Error() const {
  return buffer_.Error() == 0 && incomplete_ ? ENOMEM : buffer_.Error();
}

void OutputFile::ThrowIfCut() {
  if (Error() == 0) return;
  if (IsInterrupted()) throw Interrupted();
  Fail(Error());
}

void OutputFile::Close() {
  RemoveUnbegun();
  buffer_.Write();
  int error = Error();
  if (error != 0) CutUnfinished();
  if (close(std::exchange(fd_, -1)) != 0 && error == 0) error = errno;
  if (error != 0) Fail(error);
}

void OutputFile::Abandon() {
  CutUnfinished();
  close(std::exchange(fd_, -1));
}

void OutputFile::WriteWhole(std::string_view text) {
  Begin();
  stream_ << text << std::flush;
  if (!stream_) ThrowIfInterrupted();
  Close();
}

void OutputFile::Fail(int error) {
  if (std::exchange(reported_, true)) return;
  const char* const what = IsStandardOutput() ? "standard output" : path_.c_str();
  const char* const act = IsStandardOutput() ? "" : "cannot write: ";
  throw IoError(fmt::format("{}: {}{}", what, act, std::strerror(error)));
}

// Removes an unfinished last line, or everything for Rest::kNothing, if the system allows it.
void OutputFile::CutUnfinished() const {
  if (IsStandardOutput()) return;
  off_t end = rest_ == Rest::kLines ? lseek(fd_, 0, SEEK_CUR) : 0;
  const int reader =
      open(fmt::format("/proc/self/fd/{}", fd_).c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  char last = '\0';
  while (end > 0 && pread(reader, &last, 1, end - 1) == 1 && last != '\n') --end;
  if (reader >= 0) close(reader);
  [[maybe_unused]] const int ignored = end >= 0 ? ftruncate(fd_, end) : 0;
}

std::vector<std::string> CloseAll(const std::vector<std::unique_ptr<OutputFile>>& files) {
  std::vector<std::string> failures;
  for (const auto& file : files) {
    try {
      file->Close();
    } catch (const IoError& error) {
      failures.emplace_back(error.what());
    }
  }
  return failures;
}

}  // namespace icehost
