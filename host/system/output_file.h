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

// Writes to the file in place, so that a run can be followed and the file keeps its links, owner
// and mode. Before Begin nothing changes: a file that is never begun keeps its content, or is
// removed if it did not exist. After Begin, the file always contains everything that was flushed.
// Nothing is ever removed from standard output, whose path is "-".
class OutputFile {
 public:
  // The part that is kept of a file that cannot be completed: all whole lines, or nothing.
  enum class Rest { kLines, kNothing };

  // Opens the file, or throws IoError, which says why it cannot be opened. "-" is the file to which
  // descriptor 1 refers now.
  OutputFile(const std::string& path, Rest rest);
  // Writes the buffered text if the file was begun, and closes the file.
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  // Empties the file. Must be called before anything is written.
  void Begin();
  std::ostream& Stream() { return stream_; }
  // Returns the path as the user wrote it.
  const std::string& Path() const { return path_; }
  bool IsStandardOutput() const { return path_ == "-"; }
  // Returns the descriptor, for another process to write to.
  int Descriptor() const { return fd_; }
  // Throws IoError.
  struct stat Status() const;
  // Notes that memory ran out for part of the content: Close then fails, if the file was begun.
  void MarkIncomplete() { incomplete_ = begun_; }
  // If a write has failed or the file is marked as incomplete, throws Interrupted after a signal,
  // and otherwise IoError, but only once.
  void ThrowIfCut();
  // Writes the buffered text and closes the file. Throws IoError if the file is incomplete,
  // unless ThrowIfCut has already thrown it.
  void Close();
  // Closes a file that cannot be completed. Only the part that Rest names remains.
  void Abandon();
  // Writes a whole file: begins it, writes `text` and closes it. Throws IoError, or Interrupted if
  // a signal arrives while nobody reads the text.
  void WriteWhole(std::string_view text);

 private:
  class Buffer : public std::streambuf {
   public:
    Buffer(int fd, char* room);
    // Returns the errno of the first failed write, or 0.
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
  // Removes the file if it did not exist and was not begun.
  void RemoveUnbegun();
  void CutUnfinished() const;
  void Fail(int error);

  std::string path_;
  Rest rest_;
  std::string created_;  // the path of the file, if it did not exist
  bool begun_ = false;
  bool incomplete_ = false;
  bool reported_ = false;
  std::unique_ptr<char[]> room_;  // for buffer_; allocated first: if this throws, no file is opened
  int fd_;
  Buffer buffer_;
  std::ostream stream_;
};

// Closes each file. Returns a message for each that could not be written completely.
std::vector<std::string> CloseAll(const std::vector<std::unique_ptr<OutputFile>>& files);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SYSTEM_OUTPUT_FILE_H_
