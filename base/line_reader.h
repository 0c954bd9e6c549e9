// The lines of a script.
#ifndef ICESCRIPT_BASE_LINE_READER_H_
#define ICESCRIPT_BASE_LINE_READER_H_

#include <string>
#include <string_view>

#include "base/ini_file.h"

namespace icescript {

// Reads the lines of a file as CIniFile::getline reads those of a stream, but in blocks, and hands
// out views of them. Made for one walk to the end.
class LineReader {
 public:
  explicit LineReader(const std::string& path);
  ~LineReader();
  LineReader(const LineReader&) = delete;
  LineReader& operator=(const LineReader&) = delete;

  bool IsOpen() const { return file_ >= 0; }

  // Goes to the next line. False at the end of the file, and from there on where a line has
  // INI_LINE_BUFFER characters or more or cannot be read whole.
  bool Next();
  // The line without its comment and trailing spaces; valid until Next.
  std::string_view Text() const { return text_; }

 private:
  std::size_t ReadOn();
  void FillBlock();

  int file_;
  bool ended_ = false;  // nothing more can be read
  char block_[8 * INI_LINE_BUFFER];
  std::string_view rest_;  // what is still to be taken of the block
  std::string_view text_;
};

}  // namespace icescript

#endif  // ICESCRIPT_BASE_LINE_READER_H_
