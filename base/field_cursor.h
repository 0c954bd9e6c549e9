// The fields between the separators of a text.
#ifndef ICESCRIPT_BASE_FIELD_CURSOR_H_
#define ICESCRIPT_BASE_FIELD_CURSOR_H_

#include <string_view>

namespace icescript {

// Iterates over the fields without copying them. A text has one field more than it has separators:
// an empty text has one empty field, and a separator at the end has an empty field after it.
class FieldCursor {
 public:
  // The text must outlive the cursor.
  FieldCursor(std::string_view text, char separator) : rest_(text), separator_(separator) {}

  bool HasNext() const { return has_next_; }

  // Returns the next field, with its blanks. Call it only if HasNext().
  std::string_view Next() {
    std::size_t size = 0;  // a loop is faster than string_view::find: fields are short
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
