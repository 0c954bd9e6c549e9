// A file that icehost writes.
#ifndef ICESCRIPT_HOST_SYSTEM_OUTPUT_FILE_H_
#define ICESCRIPT_HOST_SYSTEM_OUTPUT_FILE_H_

#include <memory>
#include <ostream>
#include <streambuf>
#include <string>
#include <vector>

namespace icehost {

// Writes in place, so that a run can be followed and the file's links, owner and mode stay; but not
// before Begin. A file that was opened and not begun is as it was, or gone where it was not there.
// Begun, it is whole at any time but for what is yet to be flushed. Of standard output, "-",
// nothing is ever taken back.
class OutputFile {
 public:
  // What may stay of a file that could not be written to its end: every whole line, or nothing.
  enum class Rest { kLines, kNothing };

  // Opens the file; throws IoError that says why it cannot. Standard output is the one that
  // descriptor 1 leads to now.
  OutputFile(const std::string& path, Rest rest);
  // Writes what is left of a file that was begun.
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  // Empties the file. What is written from here on goes there.
  void Begin();
  std::ostream& Stream() { return stream_; }
  // Throws IoError where something could not be written, unless that was told; or Interrupted where
  // a signal was the reason.
  void ThrowIfCut();
  // Throws likewise, IoError only.
  void Close();

 private:
  class Buffer : public std::streambuf {
   public:
    explicit Buffer(int fd);
    // Of the first write that failed, or 0.
    int Error() const { return error_; }
    bool Write();

   protected:
    int_type overflow(int_type ch) override;
    int sync() override { return Write() ? 0 : -1; }

   private:
    void AwaitReader();

    int fd_;
    bool has_reader_;  // who may keep us waiting
    int error_ = 0;
    std::unique_ptr<char[]> bytes_;
  };

  bool IsStandardOutput() const { return path_ == "-"; }
  void CutUnfinished() const;
  void Fail(int error);

  std::string path_;
  Rest rest_;
  bool created_;
  bool begun_ = false;
  bool told_ = false;
  int fd_;
  Buffer buffer_;
  std::ostream stream_;
};

// Closes each, and returns what went wrong: a text for each that could not be written whole.
std::vector<std::string> CloseAll(const std::vector<std::unique_ptr<OutputFile>>& files);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SYSTEM_OUTPUT_FILE_H_
