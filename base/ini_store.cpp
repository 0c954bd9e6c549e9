// The INI store of CIniFile.
#include <cstdio>
#include <string_view>
#include <utility>

#include "base/ini_file.h"

namespace icescript {
namespace {

// Whether `name` up to its first NUL is `wanted`, which holds none. From the end backwards, since
// the names of a long script tend to be numbered.
bool IsNamed(const std::string& name, std::string_view wanted) {
  std::size_t left = wanted.size();
  if (name.size() < left || name[left] != '\0') return false;
  while (left > 0 && name[left - 1] == wanted[left - 1]) --left;
  return left == 0;
}

// Position of `name` among `names`, or -1. Both up to the first NUL, as C strings compare: a name
// given through SetValue may hold one. Names are unique, so the newest may come first: values
// follow each other section by section.
int FindName(const std::vector<CString>& names, const CString& name) {
  const std::string_view wanted = name.Text().c_str();
  std::size_t i = names.size();
  while (i > 0 && !IsNamed(names[i - 1].Text(), wanted)) --i;
  return static_cast<int>(i) - 1;
}

}  // namespace

// In the lookups below a negative index becomes a size_t beyond any section. Accesses are checked
// where names and what they name would differ in number after an allocation failed between them.

CString CIniFile::GetKeyName(int keyID) const {
  const auto index = static_cast<std::size_t>(keyID);
  return index < keys.size() ? key_names.at(index) : CString();
}

int CIniFile::FindKey(CString keyname) const {
  return FindName(key_names, keyname);
}

int CIniFile::GetNumValues(CString keyname) const {
  const int keyID = FindKey(std::move(keyname));
  if (keyID == -1) return -1;
  return static_cast<int>(keys.at(static_cast<std::size_t>(keyID)).value_names.size());
}

int CIniFile::FindValue(int keyID, CString valuename) const {
  const auto index = static_cast<std::size_t>(keyID);
  return index < keys.size() ? FindName(keys[index].value_names, valuename) : -1;
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
  const int valueID = FindValue(keyID, std::move(valuename));
  if (valueID == -1) {
    std::snprintf(error_msg, sizeof error_msg, "Unable to locate specified value.");
    return {};
  }
  return keys[static_cast<std::size_t>(keyID)].values.at(static_cast<std::size_t>(valueID));
}

bool CIniFile::SetValue(CString keyname, CString valuename, CString value, bool create) {
  int keyID = FindName(key_names, keyname);
  if (keyID == -1) {
    if (!create) return false;
    key_names.emplace_back();
    keys.emplace_back();
    key_names.back() = std::move(keyname);
    keys.back().value_names.reserve(2);  // as a scan has
    keys.back().values.reserve(3);
    keyID = GetNumKeys() - 1;
  }
  key& section = keys.at(static_cast<std::size_t>(keyID));
  const int valueID = FindName(section.value_names, valuename);
  if (valueID != -1) {
    section.values.at(static_cast<std::size_t>(valueID)) = std::move(value);
    return true;
  }
  if (!create) return false;
  const std::size_t added = section.value_names.size();
  section.value_names.emplace_back();
  section.values.resize(added + 2);  // the new value and the spare entry behind it
  section.value_names[added] = std::move(valuename);
  section.values[added] = std::move(value);
  return true;
}

}  // namespace icescript
