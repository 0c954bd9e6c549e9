#ifndef ICESCRIPT_TESTS_TEMP_FILE_H_
#define ICESCRIPT_TESTS_TEMP_FILE_H_

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

// A temporary file with this content. The destructor removes it.
class TempFile {
 public:
  explicit TempFile(const std::string& content) {
    close(mkstemp(path_.data()));
    std::ofstream(path_) << content;
  }
  ~TempFile() { unlink(path_.c_str()); }
  TempFile(const TempFile&) = delete;
  TempFile& operator=(const TempFile&) = delete;

  char* Path() { return path_.data(); }
  const std::string& Name() const { return path_; }
  std::string Text() const {
    std::ostringstream text;
    text << std::ifstream(path_).rdbuf();
    return text.str();
  }

 private:
  std::string path_ = testing::TempDir() + "scriptXXXXXX";
};

#endif  // ICESCRIPT_TESTS_TEMP_FILE_H_
