// Writes to a descriptor that somebody may read slowly, or not at all.
#ifndef ICESCRIPT_HOST_SYSTEM_DESCRIPTOR_WRITER_H_
#define ICESCRIPT_HOST_SYSTEM_DESCRIPTOR_WRITER_H_

#include <atomic>
#include <string_view>

namespace icehost {

// Waits for a reader who takes nothing, but after a signal no longer. Several threads may use it.
class DescriptorWriter {
 public:
  // `fd` must stay open as long as the object is used.
  explicit DescriptorWriter(int fd);

  // Returns false if these bytes or earlier ones could not all be written. After the first failure
  // it writes nothing.
  bool Write(std::string_view bytes);
  // The error of the first write that failed, or 0. EINTR: a signal ended the wait for a reader.
  int Error() const { return error_; }

 private:
  void AwaitReader();

  int fd_;
  bool has_reader_;  // who may be slow
  std::atomic<int> error_{0};
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_SYSTEM_DESCRIPTOR_WRITER_H_
