#include <gtest/gtest.h>

#include <memory>
#include <sstream>

#include "base/ini_file.h"
#include "tests/plugin/fake_host.h"

namespace icescript {
namespace {

constexpr char kNoKey[] = "Unable to locate specified key.";
constexpr char kNoValue[] = "Unable to locate specified value.";

TEST(IniStore, KeepsTheOrderOfFirstAssignment) {
  CIniFile ini;
  EXPECT_TRUE(ini.SetValue("B", "X", "1", true));
  EXPECT_TRUE(ini.SetValue("", "A", "2", true));
  EXPECT_TRUE(ini.SetValue("B", "Y", "3", true));
  EXPECT_TRUE(ini.SetValue("B", "X", "4", false));
  EXPECT_FALSE(ini.SetValue("B", "Z", "5", false));
  EXPECT_FALSE(ini.SetValue("S", "X", "6", false));
  ini.Reset();

  EXPECT_EQ(ini.GetNumKeys(), 2);
  EXPECT_TRUE(ini.GetKeyName(0) == "B" && ini.GetKeyName(1) == "");
  EXPECT_EQ(ini.FindKey(""), 1);
  EXPECT_EQ(ini.FindKey("b"), -1);
  EXPECT_EQ(ini.FindKey(std::string("B\0more", 6)), 0);
  EXPECT_EQ(ini.GetNumValues("B"), 2);
  EXPECT_EQ(ini.FindValue(0, "Y"), 1);
  EXPECT_TRUE(ini.GetValue("B", "X") == "4" && ini.GetValue(0, "Y") == "3");
}

// A lookup compares the last four bytes of a name first.
TEST(IniStore, TellsNamesWithTheSameEndApart) {
  CIniFile ini;
  const std::vector<std::string> names = {"SCAN1000", "scan1000", "1000",     "X1000", "",    "A",
                                          "AA",       "000",      "SCAN2000", "A100",  "0001"};
  for (const std::string& name : names) EXPECT_TRUE(ini.SetValue(name, "V", name, true));
  ini.SetValue(std::string("A\0more", 6), "V", "through NUL", false);
  ini.SetValue(std::string("CUT\0more", 8), "V", "", true);
  ini.SetValue("LAST", "V", "", true);
  EXPECT_EQ(ini.FindKey("CUT"), static_cast<int>(names.size()));
  for (int i = 0; i < static_cast<int>(names.size()); ++i) {
    const std::string& name = names[static_cast<std::size_t>(i)];
    EXPECT_EQ(ini.FindKey(name), i) << name;
    EXPECT_EQ(ini.GetValue(name, "V").GetString(), name == "A" ? "through NUL" : name);
  }
  for (const char* const other : {"CAN1000", "Y1000", "00", "AAA", "1"}) {
    EXPECT_EQ(ini.FindKey(other), -1) << other;
  }
}

TEST(IniStore, AnswersWhatIsMissing) {
  CIniFile ini;
  EXPECT_STREQ(ini.error_msg, "");
  ini.SetValue("S", "EMPTY", "", true);
  for (const int bad : {-1, 1, 5}) {
    EXPECT_EQ(ini.FindValue(bad, "EMPTY"), -1);
    EXPECT_TRUE(ini.GetKeyName(bad) == "");
  }
  EXPECT_EQ(ini.GetNumValues("NOPE"), -1);
  EXPECT_TRUE(ini.GetValue(0, "EMPTY") == "");
  EXPECT_STREQ(ini.error_msg, "");

  EXPECT_TRUE(ini.GetValue("NOPE", "IR") == "");
  EXPECT_STREQ(ini.error_msg, kNoKey);
  EXPECT_TRUE(ini.GetValue("S", "EMPTY") == "");
  EXPECT_STREQ(ini.error_msg, kNoKey) << "a success cleared the last message";
  EXPECT_TRUE(ini.GetValue("S", "IR") == "");
  EXPECT_STREQ(ini.error_msg, kNoValue);
  ini.GetValue("NOPE", "IR");
  ini.GetValue(-1, "IR");
  EXPECT_STREQ(ini.error_msg, kNoValue);
}

// Returns each section as "[SECTION]", followed by "{NAME=VALUE}" for each of `names` in it.
std::string Dump(CIniFile& ini, const std::vector<std::string>& names) {
  std::string dump;
  for (int i = 0; i < ini.GetNumKeys(); ++i) {
    dump += "[" + ini.GetKeyName(i).GetString() + "]";
    for (const std::string& name : names) {
      if (ini.FindValue(i, name) == -1) continue;
      dump += "{" + name + "=" + ini.GetValue(i, name).GetString() + "}";
    }
  }
  return dump;
}

TEST(IniReader, ReadsSectionsAndValues) {
  const std::string longest = "A=" + std::string(2045, 'x');
  const struct {
    std::string text;
    std::string dump;
    const char* error;
  } kCases[] = {
      {"", "", ""},
      {"\n  \n# only a comment\n  # and one more", "", ""},
      {"[CONTROL]\nCDI=5 # two-wire later", "[CONTROL]{CDI=5}", ""},
      {"[S]\r\nA=1\r\n", "[S]{A=1}", ""},
      {"CDI = 5", "[]{CDI = 5}", ""},
      {"A=B=C\n=x\nA =2\n", "[]{=x}{A=B=C}{A =2}", ""},
      {"[EMPTY]\n[S]\nA=", "[S]{A=}", ""},
      {"  [S]  \r\nA=1", "[S]{A=1}", ""},
      {"\r[S]\n\rA=!\r # x\n", "[S]{A=!}", ""},
      {"[]\nA=1\n[[T]]\nA=2\n[ U ]\nA=3\n[a=b]\nA=4", "[]]{A=1}[T]{A=2}[ U ]{A=3}[a=b]{A=4}", ""},
      {"A=0\n[S]\nA=1\n[T]\nA=2\n[S]\nB=3\nA=4", "[]{A=0}[S]{A=4}{B=3}[T]{A=2}", ""},
      {"[S=1\nB=2", "[]{B=2}{[S=1}", ""},
      {"[S]\nA=1\n\t[T]\nA=2", "[S]{A=1}", "\t[T] in S: Syntax error\n"},
      {"[OP]\n[S", "", "[S in OP: Syntax error\n"},
      {"A=1\n  junk%s  \nB=2", "[]{A=1}", "junk%s in : Syntax error\n"},
      {std::string("A=1\0hidden\nB=2", 14), "[]{A=1}{B=2}", ""},
      {"[S]\n" + longest + "\nB=1", "[S]{" + longest + "}{B=1}", ""},
      {"[S]\n" + longest, "[S]{" + longest + "}", ""},
      {"B=0\n" + longest + "x\nB=1", "[]{B=0}", ""},
  };
  for (const auto& test : kCases) {
    TempFile file(test.text);
    CIniFile ini(file.Path());
    EXPECT_EQ(ini.ReadFile(), *test.error == '\0') << test.text;
    const std::vector<std::string> names = {"", "A", "A ", "B", "CDI", "CDI ", "[S"};
    EXPECT_EQ(Dump(ini, names), test.dump) << test.text;
    EXPECT_STREQ(ini.error_msg, test.error);
  }
}

TEST(IniReader, CutsItsMessage) {
  std::string path(5000, 'p');
  CIniFile ini;
  ini.SetPath(path);
  const std::string message = "Unable to open Script file: " + path;
  EXPECT_FALSE(ini.ReadFile());
  EXPECT_EQ(ini.error_msg, message.substr(0, ERROR_MSG_SIZE - 1));
  EXPECT_EQ(ini.ReadGpioFile(), GPIO_READ_OPEN_FAILED);
  EXPECT_EQ(ini.error_msg, message.substr(0, ERROR_MSG_SIZE - 1));
}

TEST(LineReader, SplitsFields) {
  const struct {
    const char* text;
    std::vector<std::string> fields;
  } kCases[] = {
      {"8,0x1f", {"8", "0x1f"}}, {"a,,b", {"a", "", "b"}},  {"a,", {"a", ""}}, {",a", {"", "a"}},
      {",", {"", ""}},           {" a , b", {" a ", " b"}}, {"8", {}},         {"", {}}};
  for (const auto& test : kCases) {
    int count = 0;
    const std::unique_ptr<CString[]> fields(CIniFile::SplitString(test.text, ',', count));
    ASSERT_EQ(fields == nullptr, test.fields.empty());
    ASSERT_EQ(static_cast<std::size_t>(count), std::max<std::size_t>(test.fields.size(), 1));
    for (std::size_t i = 0; i < test.fields.size(); ++i) {
      EXPECT_EQ(fields[i].GetString(), test.fields[i]) << test.text;
    }
  }
}

}  // namespace
}  // namespace icescript
