#ifndef ICESCRIPT_BASE_CSTRING_H_
#define ICESCRIPT_BASE_CSTRING_H_

#include <string>
#include <string_view>
#include <utility>

namespace icescript {

// A string of any bytes, NUL included. Some operations do not do what their names suggest, and the
// script readers and parsers depend on exactly this behaviour:
//  - operator+ appends in place;
//  - TrimLeft can leave an empty text, but TrimRight always keeps the first byte;
//  - GetBuffer returns a separate copy that only ReleaseBuffer frees. The destructor does not free
//    the copy, and copies of the object share the pointer to it.
//
// Positions and lengths count bytes. A null `const char*` or `char*` is the same as an empty text.
// Any operation may throw std::length_error or std::bad_alloc, as std::string does. Only the
// functions marked below throw std::out_of_range.
class CString {
 public:
  CString() = default;
  CString(const char* s) : text(NotNull(s)) {}
  CString(char ch);  // an empty text if ch is NUL
  CString(std::string s) : text(std::move(s)) {}
  explicit CString(std::string_view s) : text(s) {}

  std::string GetString() const { return text; }
  // Returns the text without copying it. The reference is valid until the object changes.
  const std::string& Text() const { return text; }

  CString& operator=(char* s);
  CString& operator=(std::string s);
  CString& operator+(const char* s);

  // These operators compare bytes, so they are case-sensitive.
  bool operator==(const char* s) const { return text == std::string_view(NotNull(s)); }
  bool operator!=(const char* s) const { return !(*this == s); }

  // The position is not checked; the caller ensures 0 <= i < length.
  char& operator[](int i) { return text[static_cast<std::size_t>(i)]; }

  int GetLength() const { return static_cast<int>(text.size()); }
  int GetSize() const { return GetLength(); }
  // Throws std::out_of_range unless 0 <= i < length.
  char GetAt(int i) const;
  // Returns the position of the first `ch`, or -1.
  int Find(char ch) const;

  // Returns at most `count` bytes from `start` on, or all of them if `count` is negative. Throws
  // std::out_of_range unless 0 <= start <= length.
  CString Mid(int start, int count) const;
  // Returns the first n bytes, or the whole text if n is negative or above the length.
  CString Left(int n) const;
  // Returns the last n bytes. Throws std::out_of_range unless 0 <= n <= length.
  CString Right(int n) const;

  void TrimLeft(char ch = ' ');   // drops every leading `ch`
  void TrimRight(char ch = ' ');  // drops every trailing `ch` but keeps the first byte

  // Returns a copy with 'a' to 'z' in upper case. This object does not change.
  std::string MakeUpper() const;
  // Sets the text to "JTAG" followed by n in decimal. Ignores the first argument.
  void Format(CString fmt, int n);

  // Returns a new block of at least n + 1 bytes that contains the whole text, a NUL, and zeros. The
  // caller frees it with ReleaseBuffer of this object or of a copy. Does not free an earlier block.
  char* GetBuffer(int n);
  char* GetBuffer() { return GetBuffer(GetLength()); }
  // Frees the block of the last GetBuffer. Must not be called twice for one block.
  void ReleaseBuffer() { delete[] buffer; }

 private:
  static const char* NotNull(const char* s) { return s != nullptr ? s : ""; }

  std::string text;
  char* buffer = nullptr;
};

}  // namespace icescript

#endif  // ICESCRIPT_BASE_CSTRING_H_
