#include "base/cstring.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <stdexcept>

namespace icescript {
namespace {

using namespace std::string_literals;

TEST(CString, ConstructsAndAssigns) {
  char text[] = "abc";
  CString assigned;
  EXPECT_EQ((assigned = text).GetString(), "abc");
  EXPECT_EQ((assigned = std::string("d\0e", 3)).GetLength(), 3);
  EXPECT_EQ(assigned.GetSize(), 3);
  EXPECT_EQ((assigned = static_cast<char*>(nullptr)).GetString(), "");
  EXPECT_EQ(CString('x').GetString(), "x");
  EXPECT_EQ(CString('\0').GetLength(), 0);
  EXPECT_EQ(CString(static_cast<const char*>(nullptr)).GetLength(), 0);
}

TEST(CString, PlusAppendsInPlace) {
  CString text = "ab";
  const CString sum = text + "cd";
  EXPECT_EQ(sum.GetString(), "abcd");
  EXPECT_EQ((text + nullptr).GetString(), "abcd");
  EXPECT_TRUE(text == "abcd");
  EXPECT_TRUE(text != "ABCD");
  EXPECT_TRUE(CString("ab\0c"s) != "ab");
}

TEST(CString, AccessesBytes) {
  CString text = "abc";
  text[1] = 'B';
  EXPECT_EQ(text.GetAt(1), 'B');
  EXPECT_THROW(text.GetAt(3), std::out_of_range);
  EXPECT_THROW(text.GetAt(-1), std::out_of_range);
  EXPECT_EQ(text.Find('a'), 0);
  EXPECT_EQ(text.Find('z'), -1);
}

TEST(CString, CutsSubstrings) {
  const CString text = "abc";
  EXPECT_TRUE(text.Left(2) == "ab" && text.Left(-1) == "abc" && text.Left(100) == "abc");
  EXPECT_TRUE(text.Mid(1, 1) == "b" && text.Mid(1, -1) == "bc" && text.Mid(3, 1) == "");
  EXPECT_TRUE(text.Right(2) == "bc" && text.Right(0) == "" && text.Right(3) == "abc");
  for (const int bad : {4, -1, INT_MAX, INT_MIN}) {
    EXPECT_THROW(text.Mid(bad, 1), std::out_of_range) << bad;
    EXPECT_THROW(text.Right(bad), std::out_of_range) << bad;
  }
}

TEST(CString, TrimsUnevenly) {
  const struct {
    const char* text;
    const char* left;
    const char* right;
  } kCases[] = {
      {"", "", ""},
      {" ", "", " "},
      {"   ", "", " "},
      {"x", "x", "x"},
      {"  ab  ", "ab  ", "  ab"},
      {"\tab\r", "\tab\r", "\tab\r"},
      {" \t ", "\t ", " \t"},
  };
  for (const auto& test : kCases) {
    CString left = test.text;
    CString right = test.text;
    left.TrimLeft();
    right.TrimRight();
    EXPECT_EQ(left.GetString(), test.left);
    EXPECT_EQ(right.GetString(), test.right);
  }
  CString brackets = "[[S]]";
  brackets.TrimLeft('[');
  brackets.TrimRight(']');
  EXPECT_EQ(brackets.GetString(), "S");
}

TEST(CString, UpperCasesACopy) {
  const CString text = "Tck1_a`{@[\xe4" + std::string(3000, 'z');
  EXPECT_EQ(text.MakeUpper(), "TCK1_A`{@[\xe4" + std::string(3000, 'Z'));
  EXPECT_EQ(text.GetString().substr(0, 6), "Tck1_a");
}

TEST(CString, FormatIgnoresItsFormat) {
  CString text;
  text.Format("%d%s%n", -3);
  EXPECT_EQ(text.GetString(), "JTAG-3");
}

TEST(CString, HandsOutADetachedBuffer) {
  CString text = "abc";
  for (const int size : {0, -1, INT_MIN, 3, 10}) {
    char* const buffer = text.GetBuffer(size);
    EXPECT_EQ(std::memcmp(buffer, "abc\0\0\0\0\0\0\0", size == 10 ? 11 : 4), 0) << size;
    buffer[0] = 'X';
    CString copy = text;
    copy.ReleaseBuffer();  // a copy shares the block
  }
  EXPECT_EQ(text.GetString(), "abc");
}

}  // namespace
}  // namespace icescript
