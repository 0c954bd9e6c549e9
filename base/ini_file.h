// CIniFile: reads one script file, either as an INI file (JTAG scripts) or as a GPIO script.
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
// The size of the line buffer, including the NUL. A line of this size or more ends the reading.
constexpr int INI_LINE_BUFFER = 2048;

// Results of CIniFile::ReadGpioFile.
constexpr int GPIO_READ_OK = 0;
constexpr int GPIO_READ_SYNTAX_ERROR = -1;
constexpr int GPIO_READ_NOT_GPIO = -5;
constexpr int GPIO_READ_OPEN_FAILED = -10;

// Values of gpio_element::kind and GpioOperatorData::kind.
constexpr int GPIO_KIND_PIN = 0;
constexpr int GPIO_KIND_REPT = 1;
constexpr int GPIO_KIND_ENDR = 2;

// Numbers of the fields of a gpio_element, for CIniFile::GetGpioValue.
constexpr int GPIO_FIELD_OUT_VALUE = 0;
constexpr int GPIO_FIELD_OE_MASK = 1;
constexpr int GPIO_FIELD_FLAGS = 2;
constexpr int GPIO_FIELD_KIND = 3;
constexpr int GPIO_FIELD_REPEAT_COUNT = 4;

// A CIniFile reads one file once, on one thread. It contains the INI store (sections and their
// values, both in order of first assignment) and the table of GPIO lines.
//
// A function that fails returns a negative number, false or an empty text. GetValue, GetGpioValue
// and the readers then also write a message, cut at 1023 bytes, to error_msg. Nothing clears
// error_msg. Functions throw only if memory runs out.
class CIniFile {
 public:
  // One line of a GPIO script: the pin state after the line, and its operation.
  struct gpio_element {
    int out_value;     // output levels, GPIO_PIN_ bits
    int oe_mask;       // output enables, GPIO_PIN_ bits
    int flags;         // GPIO_FLAG_ bits
    int kind;          // GPIO_KIND_
    int repeat_count;  // 1 or more for REPT, else 0
  };

  CIniFile() = default;
  explicit CIniFile(CString file_path) : path(std::move(file_path)) {}
  explicit CIniFile(char* file_path) : path(file_path) {}
  virtual ~CIniFile() = default;

  void SetPath(CString file_path) { path = std::move(file_path); }
  // Deliberately does nothing: the store and the table keep their contents.
  void Reset() {}

  // ---- The INI store. A "key" is a section. Names are case-sensitive and not trimmed, and
  // they end at the first NUL. Every lookup is a linear search.

  int GetNumKeys() const { return static_cast<int>(keys.size()); }
  // Returns the name of section keyID, or an empty text if there is no such section.
  CString GetKeyName(int keyID) const;
  // Returns the index of a section, or -1.
  int FindKey(CString keyname) const;
  // Returns the number of values in a section, or -1 if there is no such section.
  int GetNumValues(CString keyname) const;
  // Returns the index of a value in section keyID, or -1 if there is no such section or value.
  int FindValue(int keyID, CString valuename) const;
  // Return the text of a value. If there is no such value, return "" and set error_msg.
  CString GetValue(CString keyname, CString valuename);
  CString GetValue(int keyID, CString valuename);
  // Stores a value and returns true. If the section or the value does not exist yet and `create` is
  // false, stores nothing and returns false.
  bool SetValue(CString keyname, CString valuename, CString value, bool create);

  // ---- Readers

  // Reads the file as INI text into the store. Returns false if the file cannot be opened, or at
  // the first line that is neither a header nor a value; earlier values stay in the store. A line
  // of INI_LINE_BUFFER bytes or more ends the reading, as the end of the file does.
  bool ReadFile();

  // Reads the file as a GPIO script into the table of lines, and returns a GPIO_READ_ status.
  // Writes no message for GPIO_READ_NOT_GPIO. Lines before a failure stay in the table.
  int ReadGpioFile();
  // Returns the number of lines in the table.
  unsigned long GetGpioNum() const { return gpio_elements.size(); }
  // Returns a field (GPIO_FIELD_) of a line. If either is missing, returns -1 and sets error_msg.
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

  // Reads one line and drops its comment ("#" to the end) and trailing spaces. At the end of the
  // stream, or if the line has INI_LINE_BUFFER bytes or more, sets the stream's fail state.
  static std::istream& getline(std::istream& is, CString& str);

  // Splits `str` at every `separator` and returns a new array of `count` fields, which the caller
  // frees with delete[]. If `str` has no separator, returns null and sets `count` to 1.
  static CString* SplitString(CString str, char separator, int& count);

 private:
  // One section. If it has values, `values` ends with an extra entry, which is empty.
  struct key {
    std::vector<CString> values;
    std::vector<CString> value_names;
  };

  // Returns the index of the section, or -1. The names of sections end at their first NUL.
  int FindSection(std::string_view name) const;
  // Returns whether `lines` has opened its file, and writes a message if it has not.
  bool IsReadable(const LineReader& lines);
  int RefuseGpioValue(const char* message);

  CString path;
  std::vector<gpio_element> gpio_elements;
  std::vector<key> keys;
  std::vector<CString> key_names;  // key_names[i] names keys[i]
  // The last four bytes of each name as a number, so that a lookup can compare several names at a
  // time. After a failed allocation, key_tails may have one entry more than key_names.
  std::vector<wchar_t> key_tails;

 public:
  char error_msg[ERROR_MSG_SIZE] = "";
};

}  // namespace icescript

#endif  // ICESCRIPT_BASE_INI_FILE_H_
