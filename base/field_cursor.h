// The fields between the separators of a text.
#ifndef ICESCRIPT_BASE_FIELD_CURSOR_H_
#define ICESCRIPT_BASE_FIELD_CURSOR_H_

#include <string_view>

namespace icescript {

// Walks them without copying. A text has one field more than separators: an empty text has one, and
// so has one after a separator at its end.
class FieldCursor {
 public:
  // The text must outlive the cursor.
  FieldCursor(std::string_view text, char separator) : rest_(text), separator_(separator) {}

  bool HasNext() const { return has_next_; }

  // The next field as it stands, blanks included. There must be one.
  std::string_view Next() {
    std::size_t size = 0;  // by a loop: fields are short, and string_view::find is a call
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
