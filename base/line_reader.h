#ifndef ICESCRIPT_BASE_LINE_READER_H_
#define ICESCRIPT_BASE_LINE_READER_H_

#include <string>
#include <string_view>

#include "base/ini_file.h"

namespace icescript {

// Reads the lines of a file once, from beginning to end, in blocks. Finds the same lines as
// CIniFile::getline.
class LineReader {
 public:
  explicit LineReader(const std::string& path);
  ~LineReader();
  LineReader(const LineReader&) = delete;
  LineReader& operator=(const LineReader&) = delete;

  bool IsOpen() const { return file_ >= 0; }

  // Goes to the next line. Returns false at the end of the file, at a line of INI_LINE_BUFFER bytes
  // or more, if reading fails, and in every later call.
  bool Next();
  // The current line without its comment and trailing spaces; valid until the next call of Next.
  std::string_view Text() const { return text_; }

 private:
  std::size_t ReadOn();
  void FillBlock();

  int file_;
  bool ended_ = false;  // nothing more can be read
  char block_[8 * INI_LINE_BUFFER];
  std::string_view rest_;  // the part of the block that Next has not returned yet
  std::string_view text_;
};

}  // namespace icescript

#endif  // ICESCRIPT_BASE_LINE_READER_H_
