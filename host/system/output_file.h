// A file that icehost writes.
#ifndef ICESCRIPT_HOST_SYSTEM_OUTPUT_FILE_H_
#define ICESCRIPT_HOST_SYSTEM_OUTPUT_FILE_H_

#include <sys/stat.h>

#include <memory>
#include <ostream>
#include <streambuf>
#include <string>
#include <string_view>
#include <vector>

#include "host/system/descriptor_writer.h"

namespace icehost {

// Writes in place, so that a run can be followed and the file's links, owner and mode stay; but not
// before Begin. A file that was opened and not begun stays as it was, or disappears if it did not
// exist. After Begin it is complete at any time except for what is not flushed yet. Nothing is ever
// removed from standard output, "-".
class OutputFile {
 public:
  // What remains of a file that could not be written to its end: every whole line, or nothing.
  enum class Rest { kLines, kNothing };

  // Opens the file; throws IoError that says why it cannot. Standard output is the file that
  // descriptor 1 leads to now.
  OutputFile(const std::string& path, Rest rest);
  // Writes the rest of a file that was begun.
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  // Empties the file. To be called before anything is written.
  void Begin();
  std::ostream& Stream() { return stream_; }
  // As the user named it.
  const std::string& Path() const { return path_; }
  bool IsStandardOutput() const { return path_ == "-"; }
  // For another process to write to.
  int Descriptor() const { return fd_; }
  // Returns the status of the open file; throws IoError.
  struct stat Status() const;
  // There was no memory for something that belongs in the file: Close fails, if it was begun.
  void MarkIncomplete() { incomplete_ = begun_; }
  // Throws IoError if something could not be written, or is marked as missing, and that was not
  // thrown before; or Interrupted if a signal was the reason.
  void ThrowIfCut();
  // Writes the rest and closes the file; throws such an IoError.
  void Close();
  // Closes a file that something keeps from its end.
  void Abandon();
  // Does all of it with the whole text: begins, writes and closes the file. Throws Interrupted if a
  // signal came while nobody took the text.
  void WriteWhole(std::string_view text);

 private:
  class Buffer : public std::streambuf {
   public:
    Buffer(int fd, char* room);
    // The error of the first write that failed, or 0.
    int Error() const { return writer_.Error(); }
    bool Write();

   protected:
    int_type overflow(int_type ch) override;
    int sync() override { return Write() ? 0 : -1; }

   private:
    DescriptorWriter writer_;
  };

  // Why the file is not whole so far, or 0.
  int Error() const;
  void CutUnfinished() const;
  void Fail(int error);

  std::string path_;
  Rest rest_;
  std::string created_;  // the file, if it did not exist
  bool begun_ = false;
  bool incomplete_ = false;
  bool reported_ = false;
  std::unique_ptr<char[]> room_;  // of the buffer; there is nothing to undo if there is none
  int fd_;
  Buffer buffer_;
  std::ostream stream_;
};

// Closes each, and returns a message for each that could not be written completely.
std::vector<std::string> CloseAll(const std::vector<std::unique_ptr<OutputFile>>& files);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SYSTEM_OUTPUT_FILE_H_
