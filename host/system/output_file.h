// A file that icehost writes.
#ifndef ICESCRIPT_HOST_SYSTEM_OUTPUT_FILE_H_
#define ICESCRIPT_HOST_SYSTEM_OUTPUT_FILE_H_

#include <fstream>
#include <string>

namespace icehost {

class OutputFile {
 public:
  // Opens the file anew; throws IoError that says why it cannot.
  explicit OutputFile(const std::string& path);

  std::ostream& Stream() { return stream_; }
  // Throws IoError where not everything could be written.
  void Close();

 private:
  std::string path_;
  std::ofstream stream_;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SYSTEM_OUTPUT_FILE_H_
