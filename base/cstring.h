// The string class of the script readers and parsers.
#ifndef ICESCRIPT_BASE_CSTRING_H_
#define ICESCRIPT_BASE_CSTRING_H_

#include <string>
#include <string_view>
#include <utility>

namespace icescript {

// A text of bytes (any value, NUL too), with operations that in places do other than their names
// suggest. The readers and parsers are written against exactly this behaviour:
//  - operator+ appends in place;
//  - TrimRight never removes the first byte, TrimLeft has no such floor;
//  - the buffer of GetBuffer is a detached copy that only ReleaseBuffer frees: not the destructor,
//    and copies of the object share the pointer.
//
// Positions and lengths are bytes, as signed 32-bit integers. A null `const char*` or `char*`
// counts as the empty text. Raises what std::string raises: std::length_error, std::bad_alloc, and
// std::out_of_range where stated.
class CString {
 public:
  CString() = default;
  CString(const char* s) : text(NotNull(s)) {}
  CString(char ch);  // a NUL gives the empty text
  CString(std::string s) : text(std::move(s)) {}
  explicit CString(std::string_view s) : text(s) {}

  std::string GetString() const { return text; }
  // The text itself, without a copy; valid until the object changes.
  const std::string& Text() const { return text; }

  CString& operator=(char* s);
  CString& operator=(std::string s);
  // Appends to this object itself and returns it.
  CString& operator+(const char* s);

  // Byte by byte, case-sensitive.
  bool operator==(const char* s) const { return text == std::string_view(NotNull(s)); }
  bool operator!=(const char* s) const { return !(*this == s); }

  // Unchecked: 0 <= i < length is the caller's to ensure.
  char& operator[](int i) { return text[static_cast<std::size_t>(i)]; }

  int GetLength() const { return static_cast<int>(text.size()); }
  int GetSize() const { return GetLength(); }
  // Raises std::out_of_range unless 0 <= i < length.
  char GetAt(int i) const;
  // Position of the first `ch`, or -1.
  int Find(char ch) const;

  // At most `count` bytes from `start`; a negative count takes the rest. Raises std::out_of_range
  // unless 0 <= start <= length.
  CString Mid(int start, int count) const;
  // The first n bytes; the whole text when n is negative or above the length.
  CString Left(int n) const;
  // The last n bytes. Raises std::out_of_range unless 0 <= n <= length.
  CString Right(int n) const;

  void TrimLeft(char ch = ' ');
  void TrimRight(char ch = ' ');

  // An upper-cased copy ('a' to 'z' only); this object keeps its text.
  std::string MakeUpper() const;
  // Sets the text to "JTAG" and n in decimal. The first argument is ignored.
  void Format(CString fmt, int n);

  // A new block with the whole text and its NUL, at least n + 1 bytes, the rest zero. The caller
  // frees it with ReleaseBuffer, on this object or a copy; an earlier block is forgotten, not
  // freed.
  char* GetBuffer(int n);
  char* GetBuffer() { return GetBuffer(GetLength()); }
  // Frees the block of the last GetBuffer, once; the text is not touched.
  void ReleaseBuffer() { delete[] buffer; }

 private:
  static const char* NotNull(const char* s) { return s != nullptr ? s : ""; }

  std::string text;
  char* buffer = nullptr;
};

}  // namespace icescript

#endif  // ICESCRIPT_BASE_CSTRING_H_
