#ifndef ICESCRIPT_BASE_FIELD_CURSOR_H_
#define ICESCRIPT_BASE_FIELD_CURSOR_H_

#include <string_view>

namespace icescript {

// Iterates over the fields between the separators of a text without copying them. An empty text has
// one empty field. A separator at the end of the text has an empty field after it.
class FieldCursor {
 public:
  // The text must outlive the cursor.
  FieldCursor(std::string_view text, char separator) : rest_(text), separator_(separator) {}

  bool HasNext() const { return has_next_; }

  // Returns the next field, including its blanks. Call this function only if HasNext() is true.
  std::string_view Next() {
    std::size_t size = 0;  // a loop is faster than find, because fields are short
    while (size < rest_.size() && rest_[size] != separator_) ++size;
    const std::string_view field(rest_.data(), size);
    has_next_ = size < rest_.size();
    if (has_next_) rest_.remove_prefix(size + 1);
    return field;
  }

 private:
  std::string_view rest_;
  char separator_;
  bool has_next_ = true;
};

}  // namespace icescript

#endif  // ICESCRIPT_BASE_FIELD_CURSOR_H_
