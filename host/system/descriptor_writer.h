#ifndef ICESCRIPT_HOST_SYSTEM_DESCRIPTOR_WRITER_H_
#define ICESCRIPT_HOST_SYSTEM_DESCRIPTOR_WRITER_H_

#include <atomic>
#include <string_view>

namespace icehost {

// Writes to a descriptor. Threads may share it. Waits for a slow reader until a signal arrives.
class DescriptorWriter {
 public:
  // `fd` must stay open while the object is in use.
  explicit DescriptorWriter(int fd);

  // Writes `bytes` unless an earlier write failed. Returns whether all bytes so far were written.
  bool Write(std::string_view bytes);
  // Returns the errno of the first failed write, or 0. It is EINTR if a signal ended a wait.
  int Error() const { return error_; }

 private:
  void AwaitReader();

  int fd_;
  bool has_reader_;  // the descriptor is not a regular file
  std::atomic<int> error_{0};
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SYSTEM_DESCRIPTOR_WRITER_H_
