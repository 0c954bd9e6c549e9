// CIniFile: one script file, read either as an INI file (JTAG scripts) or as a GPIO script.
#ifndef ICESCRIPT_BASE_INI_FILE_H_
#define ICESCRIPT_BASE_INI_FILE_H_

#include <iosfwd>
#include <istream>
#include <string_view>
#include <utility>
#include <vector>

#include "base/cstring.h"

namespace icescript {

class LineReader;

constexpr int ERROR_MSG_SIZE = 1024;
// Capacity of the line reader, the terminating NUL included.
constexpr int INI_LINE_BUFFER = 2048;

// Results of CIniFile::ReadGpioFile.
constexpr int GPIO_READ_OK = 0;
constexpr int GPIO_READ_SYNTAX_ERROR = -1;
constexpr int GPIO_READ_NOT_GPIO = -5;
constexpr int GPIO_READ_OPEN_FAILED = -10;

// gpio_element::kind and GpioOperatorData::kind.
constexpr int GPIO_KIND_PIN = 0;
constexpr int GPIO_KIND_REPT = 1;
constexpr int GPIO_KIND_ENDR = 2;

// The fields of a gpio_element, as CIniFile::GetGpioValue numbers them.
constexpr int GPIO_FIELD_OUT_VALUE = 0;
constexpr int GPIO_FIELD_OE_MASK = 1;
constexpr int GPIO_FIELD_FLAGS = 2;
constexpr int GPIO_FIELD_KIND = 3;
constexpr int GPIO_FIELD_REPEAT_COUNT = 4;

// Made for one reading of one file, used by one thread. Holds the INI store (sections with their
// values, both in order of first assignment) and the table of GPIO lines. Copies of text go in and
// out by value.
//
// Failures answer with -1, false or an empty text; those of GetValue, GetGpioValue and the readers
// leave a message in error_msg, cut at 1023 bytes, which nothing but construction clears. Only
// memory exhaustion raises an exception.
class CIniFile {
 public:
  // One line of a GPIO script: the pin state after it, and what it asks for.
  struct gpio_element {
    int out_value;
    int oe_mask;
    int flags;
    int kind;
    int repeat_count;  // 1 or more on a REPT line, else 0
  };

  CIniFile() = default;
  explicit CIniFile(CString file_path) : path(std::move(file_path)) {}
  explicit CIniFile(char* file_path) : path(file_path) {}
  virtual ~CIniFile() = default;

  void SetPath(CString file_path) { path = std::move(file_path); }
  // Deliberately does nothing; a second reading adds to the first.
  void Reset() {}

  // ---- The INI store. Names compare byte by byte up to a NUL, case-sensitive and untrimmed.
  // Every lookup is a linear scan.

  // Number of sections.
  int GetNumKeys() const { return static_cast<int>(keys.size()); }
  // Name of section keyID; empty when there is no such section.
  CString GetKeyName(int keyID) const;
  // Index of a section, or -1.
  int FindKey(CString keyname) const;
  // Number of values in a section, or -1 when there is no such section.
  int GetNumValues(CString keyname) const;
  // Index of a value in section keyID, or -1 when there is no such section or value.
  int FindValue(int keyID, CString valuename) const;
  // A value's text. Empty when it is empty, and, with a message, when it is missing.
  CString GetValue(CString keyname, CString valuename);
  CString GetValue(int keyID, CString valuename);
  // Stores a value, with `create` making section and value where they are missing; false when one
  // is missing and `create` is false.
  bool SetValue(CString keyname, CString valuename, CString value, bool create);

  // ---- Readers

  // Reads the file as INI text into the store. False when it cannot be opened or a line is neither
  // header nor value; values stored before that line stay. A line of INI_LINE_BUFFER characters or
  // more ends the reading like the end of the file.
  bool ReadFile();

  // Reads the file as a GPIO script into the table of lines. Returns a GPIO_READ_ status;
  // GPIO_READ_NOT_GPIO leaves error_msg as it was. Lines read before a failure stay in the table.
  int ReadGpioFile();
  // Number of lines in the table.
  unsigned long GetGpioNum() const { return gpio_elements.size(); }
  // Field `field` (GPIO_FIELD_) of line `index`; -1 with a message when there is none.
  int GetGpioValue(int index, int field) {
    const auto at = static_cast<std::size_t>(index);  // a negative index is beyond any table
    if (at >= gpio_elements.size()) return RefuseGpioValue("internal error: fail to get valule.");
    const gpio_element& element = gpio_elements[at];
    switch (field) {
      case GPIO_FIELD_OUT_VALUE:
        return element.out_value;
      case GPIO_FIELD_OE_MASK:
        return element.oe_mask;
      case GPIO_FIELD_FLAGS:
        return element.flags;
      case GPIO_FIELD_KIND:
        return element.kind;
      case GPIO_FIELD_REPEAT_COUNT:
        return element.repeat_count;
      default:
        return RefuseGpioValue("internal error: invalid value access.");
    }
  }

  // Reads one line without its comment ("#" to the end) and trailing spaces. The line was read
  // unless the stream's fail or bad state is set: end of file, or a line of INI_LINE_BUFFER
  // characters or more.
  static std::istream& getline(std::istream& is, CString& str);

  // Cuts `str` at every `separator` into a new array of `count` fields, empty ones included; the
  // caller frees it with delete[]. Without a separator returns null, with `count` 1.
  static CString* SplitString(CString str, char separator, int& count);

 private:
  // One section. values holds one spare empty entry at its end as soon as there is a value;
  // value_names is the true count.
  struct key {
    std::vector<CString> values;
    std::vector<CString> value_names;
  };

  // Index of the section with this name, up to its first NUL, or -1.
  int FindSection(std::string_view name) const;
  // Whether the file at `path` could be opened; leaves a message when it could not.
  bool IsReadable(const LineReader& lines);
  int RefuseGpioValue(const char* message);

  CString path;
  std::vector<gpio_element> gpio_elements;
  std::vector<key> keys;
  std::vector<CString> key_names;  // key_names[i] names keys[i]
  // key_tails[i] is the end of key_names[i] as one number, so that a lookup compares several names
  // at a time. It may have an entry more than key_names after an allocation failed.
  std::vector<wchar_t> key_tails;

 public:
  char error_msg[ERROR_MSG_SIZE] = "";
};

}  // namespace icescript

#endif  // ICESCRIPT_BASE_INI_FILE_H_
