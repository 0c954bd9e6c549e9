#include <algorithm>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <string_view>
#include <utility>

#include "base/ini_file.h"

namespace icescript {
namespace {

// Returns the position of `name` in `names`, or -1. Only the part of a stored name before its first
// NUL counts. At most one name matches, so the search may begin with the newest name.
int FindName(const std::vector<CString>& names, std::string_view name) {
  // Compares the last byte first, because names in long scripts usually end with a number. If the
  // candidate is shorter, compares its NUL instead of branching on its length.
  const std::size_t tell = name.empty() ? 0 : name.size() - 1;
  const char last = name.empty() ? '\0' : name.back();
  const auto found = std::find_if(names.rbegin(), names.rend(), [=](const CString& candidate) {
    const std::string& text = candidate.Text();
    return text[std::min(tell, text.size())] == last && text[name.size()] == '\0' &&
           std::equal(name.rbegin(), name.rend(),
                      text.rend() - static_cast<std::ptrdiff_t>(name.size()));
  });
  return static_cast<int>(names.rend() - found) - 1;
}

// Returns the last four bytes of a name as one number, padded with zeros. Most names in long
// scripts end with a number, so they differ in these bytes.
wchar_t TailOf(std::string_view name) {
  wchar_t tail = 0;
  static_assert(sizeof tail == 4);
  if (name.size() >= sizeof tail) {
    std::memcpy(&tail, name.data() + name.size() - sizeof tail, sizeof tail);
  } else {
    std::memcpy(&tail, name.data(), name.size());
  }
  return tail;
}

}  // namespace

int CIniFile::FindSection(std::string_view name) const {
  const wchar_t tail = TailOf(name);
  const auto is_at = [&](std::size_t index) {
    return key_tails[index] == tail && key_names[index].Text().c_str() == name;
  };
  const std::size_t size = key_names.size();
  // Tries the newest section first, because values are usually stored section by section.
  if (size > 0 && is_at(size - 1)) return static_cast<int>(size) - 1;
  const wchar_t* const begin = key_tails.data();
  for (const wchar_t* at = begin; size > 0; ++at) {
    at = std::wmemchr(at, tail, static_cast<std::size_t>(begin + size - at));
    if (at == nullptr) break;
    if (is_at(static_cast<std::size_t>(at - begin))) return static_cast<int>(at - begin);
  }
  return -1;
}

// In the lookups below, a negative index becomes a size_t beyond any section. Lookups use at()
// because a failed allocation may leave more names than sections or values.

CString CIniFile::GetKeyName(int keyID) const {
  const auto index = static_cast<std::size_t>(keyID);
  return index < keys.size() ? key_names.at(index) : CString();
}

int CIniFile::FindKey(CString keyname) const {
  return FindSection(keyname.Text().c_str());
}

int CIniFile::GetNumValues(CString keyname) const {
  const int keyID = FindKey(std::move(keyname));
  if (keyID == -1) return -1;
  return static_cast<int>(keys.at(static_cast<std::size_t>(keyID)).value_names.size());
}

int CIniFile::FindValue(int keyID, CString valuename) const {
  const auto index = static_cast<std::size_t>(keyID);
  return index < keys.size() ? FindName(keys[index].value_names, valuename.Text().c_str()) : -1;
}

CString CIniFile::GetValue(CString keyname, CString valuename) {
  const int keyID = FindKey(std::move(keyname));
  if (keyID == -1) {
    std::snprintf(error_msg, sizeof error_msg, "Unable to locate specified key.");
    return {};
  }
  return GetValue(keyID, std::move(valuename));
}

CString CIniFile::GetValue(int keyID, CString valuename) {
  const auto index = static_cast<std::size_t>(keyID);
  const int valueID =
      index < keys.size() ? FindName(keys[index].value_names, valuename.Text().c_str()) : -1;
  if (valueID == -1) {
    std::snprintf(error_msg, sizeof error_msg, "Unable to locate specified value.");
    return {};
  }
  return keys[index].values.at(static_cast<std::size_t>(valueID));
}

bool CIniFile::SetValue(CString keyname, CString valuename, CString value, bool create) {
  int keyID = FindSection(keyname.Text().c_str());
  if (keyID == -1) {
    if (!create) return false;
    key_tails.resize(key_names.size());
    key_tails.push_back(TailOf(keyname.Text().c_str()));
    key_names.push_back(std::move(keyname));
    keys.emplace_back();
    keys.back().value_names.reserve(2);  // a scan has two values
    keys.back().values.reserve(3);
    keyID = GetNumKeys() - 1;
  }
  key& section = keys.at(static_cast<std::size_t>(keyID));
  const int valueID = FindName(section.value_names, valuename.Text().c_str());
  if (valueID != -1) {
    section.values.at(static_cast<std::size_t>(valueID)) = std::move(value);
    return true;
  }
  if (!create) return false;
  section.value_names.push_back(std::move(valuename));
  if (section.values.empty()) section.values.emplace_back();
  section.values.back() = std::move(value);  // the empty entry at the end
  section.values.emplace_back();
  return true;
}

}  // namespace icescript
