#include "base/line_reader.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "base/field_cursor.h"
#include "base/text.h"

namespace icescript {
namespace {

// Returns a line without its comment and trailing spaces.
std::string_view TextOf(std::string_view line) {
  return TrimRight(line.substr(0, line.find('#')), ' ');
}

// Replaces each NUL with "#". Both end the text of a line, so a search for "#" is then enough.
void CommentNuls(char* at, const char* end) {
  while (at < end) {
    at = static_cast<char*>(std::memchr(at, '\0', static_cast<std::size_t>(end - at)));
    if (at == nullptr) return;
    *at++ = '#';
  }
}

}  // namespace

// cppcheck-suppress uninitMemberVar ; the block is filled before it is read
LineReader::LineReader(const std::string& path) : file_(open(path.c_str(), O_RDONLY | O_CLOEXEC)) {}

LineReader::~LineReader() {
  if (IsOpen()) close(file_);
}

bool LineReader::Next() {
  std::size_t size = rest_.find('\n');
  if (size == std::string_view::npos) size = ReadOn();
  if (rest_.empty() || size >= INI_LINE_BUFFER) return false;
  text_ = TextOf({rest_.data(), size});
  rest_.remove_prefix(std::min(size + 1, rest_.size()));
  return true;
}

// Reads from the file until the line is complete or too long, and returns its length.
std::size_t LineReader::ReadOn() {
  while (rest_.size() < INI_LINE_BUFFER && !ended_) {
    FillBlock();
    const std::size_t size = rest_.find('\n');
    if (size != std::string_view::npos) return size;
  }
  return rest_.size();  // the last line may lack its line feed
}

// Moves the unread rest to the start of the block and fills the space after it from the file.
void LineReader::FillBlock() {
  if (!rest_.empty()) std::memmove(block_, rest_.data(), rest_.size());
  char* const end = block_ + rest_.size();
  ssize_t count = 0;
  do {
    count = read(file_, end, sizeof block_ - rest_.size());
  } while (count < 0 && errno == EINTR);
  ended_ = count <= 0;
  rest_ = {block_, count < 0 ? 0 : rest_.size() + static_cast<std::size_t>(count)};
  CommentNuls(end, rest_.end());
}

std::istream& CIniFile::getline(std::istream& is, CString& str) {
  char buffer[INI_LINE_BUFFER];
  is.getline(buffer, INI_LINE_BUFFER);  // terminates the buffer even if it fails
  str = std::string(TextOf(buffer));
  return is;
}

CString* CIniFile::SplitString(CString str, char separator, int& count) {
  const std::string& text = str.Text();
  const auto size = static_cast<std::size_t>(std::count(text.begin(), text.end(), separator)) + 1;
  count = static_cast<int>(size);
  if (size == 1) return nullptr;

  auto fields = std::make_unique<CString[]>(size);
  FieldCursor cursor(text, separator);
  std::generate_n(fields.get(), size, [&cursor] { return CString(cursor.Next()); });
  return fields.release();
}

bool CIniFile::IsReadable(const LineReader& lines) {
  if (lines.IsOpen()) return true;
  std::snprintf(error_msg, sizeof error_msg, "Unable to open Script file: %s.\n",
                path.Text().c_str());
  return false;
}

}  // namespace icescript
