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

// A file that icehost writes, or standard output ("-"). Writes to an existing file in place, so
// that other programs can follow it and the file keeps its links, owner and mode. If Begin is never
// called, an existing file keeps its content, and a new file is removed. After Begin, the file
// contains everything that was flushed. Nothing is ever removed from standard output.
class OutputFile {
 public:
  // The part of an incomplete file that is kept: all whole lines, or nothing.
  enum class Rest { kLines, kNothing };

  // Opens the file. "-" is the file to which descriptor 1 refers now. Throws IoError.
  OutputFile(const std::string& path, Rest rest);
  // Writes the buffered text if the file was begun, and closes the file.
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  // Empties the file. Must be called before anything is written.
  void Begin();
  std::ostream& Stream() { return stream_; }
  const std::string& Path() const { return path_; }
  bool IsStandardOutput() const { return path_ == "-"; }
  // Returns the descriptor, to which another process may write.
  int Descriptor() const { return fd_; }
  // Returns the result of fstat. Throws IoError.
  struct stat Status() const;
  // Marks the file as incomplete if it was begun. For use when memory runs out for its content.
  void MarkIncomplete() { incomplete_ = begun_; }
  // If a write has failed or the file is marked as incomplete, throws Interrupted after a signal,
  // and otherwise IoError. Throws IoError only once.
  void ThrowIfCut();
  // Writes the buffered text and closes the file. Throws IoError if the file is incomplete, unless
  // ThrowIfCut has thrown it before.
  void Close();
  // Closes a file that cannot be completed, and keeps only the part that its Rest names.
  void Abandon();
  // Begins the file, writes `text` and closes the file. Throws IoError, or Interrupted if a signal
  // arrives during a wait for the reader.
  void WriteWhole(std::string_view text);

 private:
  class Buffer : public std::streambuf {
   public:
    Buffer(int fd, char* room);
    int Error() const { return writer_.Error(); }
    bool Write();

   protected:
    int_type overflow(int_type ch) override;
    int sync() override { return Write() ? 0 : -1; }

   private:
    DescriptorWriter writer_;
  };

  // Returns the errno that explains why the file is incomplete, or 0.
  int Error() const;
  // Removes the file if the constructor created it and it was not begun.
  void RemoveUnbegun();
  void CutUnfinished() const;
  void Fail(int error);

  std::string path_;
  Rest rest_;
  std::string created_;  // the path of the file if the constructor created it
  bool begun_ = false;
  bool incomplete_ = false;
  bool reported_ = false;
  std::unique_ptr<char[]> room_;  // for buffer_; allocated before the file is opened
  int fd_;
  Buffer buffer_;
  std::ostream stream_;
};

// Closes each file. Returns a message for each that could not be written completely.
std::vector<std::string> CloseAll(const std::vector<std::unique_ptr<OutputFile>>& files);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SYSTEM_OUTPUT_FILE_H_
