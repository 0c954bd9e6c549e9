#include "host/system/output_file.h"

#include <cerrno>
#include <cstring>

#include "host/system/errors.h"

namespace icehost {

OutputFile::OutputFile(const std::string& path) : path_(path), stream_(path) {
  if (!stream_) throw IoError(path_ + ": " + std::strerror(errno));
}

void OutputFile::Close() {
  errno = 0;
  stream_.close();
  if (!stream_) throw IoError(path_ + ": cannot write: " + std::strerror(errno));
}

}  // namespace icehost
