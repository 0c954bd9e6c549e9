#include "host/system/file_identity.h"

#include <fmt/format.h>
#include <sys/stat.h>

#include <filesystem>

namespace icehost {
namespace {

std::string TextOf(const struct stat& status) {
  if (!S_ISREG(status.st_mode)) return "";
  return fmt::format("{}:{}", status.st_dev, status.st_ino);
}

}  // namespace

std::string IdentityOf(const std::string& path) {
  struct stat status = {};
  if (stat(path.c_str(), &status) == 0) return TextOf(status);
  std::error_code error;
  const std::filesystem::path place = std::filesystem::weakly_canonical(path, error);
  return error ? "" : std::filesystem::absolute(place, error).string();
}

std::string IdentityOf(int fd) {
  struct stat status = {};
  return fstat(fd, &status) == 0 ? TextOf(status) : "";
}

bool IsSameFile(int fd, int other) {
  struct stat one {};
  struct stat two {};
  return fstat(fd, &one) == 0 && fstat(other, &two) == 0 && one.st_dev == two.st_dev &&
         one.st_ino == two.st_ino;
}

}  // namespace icehost
