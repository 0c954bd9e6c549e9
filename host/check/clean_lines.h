// What a script says again and again.
#ifndef ICESCRIPT_HOST_CHECK_CLEAN_LINES_H_
#define ICESCRIPT_HOST_CHECK_CLEAN_LINES_H_

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

namespace icehost {

// Remembers the last few lines whose items are without a fault: a long script is made of few.
class CleanLines {
 public:
  // The pins that the line sets by name, where it is known to be clean under these flags.
  std::optional<int> Find(std::string_view text, int flags) const {
    for (const Line& line : lines_) {
      if (line.flags == flags && line.text == text) return line.named;
    }
    return std::nullopt;
  }
  // `text` must outlive this object.
  void Add(std::string_view text, int flags, int named) {
    lines_[next_++ % lines_.size()] = {text, flags, named};
  }

 private:
  struct Line {
    std::string_view text;
    int flags = 0;
    int named = 0;
  };
  std::array<Line, 8> lines_;
  std::size_t next_ = 0;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_CLEAN_LINES_H_
