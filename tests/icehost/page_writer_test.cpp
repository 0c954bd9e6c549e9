// Tests the limits of a page, and the escaping of its text. page.py tests pages in a browser.
#include "host/page/page_writer.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>

namespace icehost {
namespace {

using Json = nlohmann::json;
using Verdict = PageRow::Verdict;

// Returns the text of the data element as an HTML parser reads it.
std::string DataText(const PageWriter& writer, const PageHead& head = {}) {
  std::ostringstream stream;
  writer.Write(stream, head);
  const std::string page = stream.str();
  const std::string begin = "id=\"data\">";
  const std::size_t at = page.find(begin) + begin.size();
  return page.substr(at, page.find("</script", at) - at);
}

Json Data(const PageWriter& writer) {
  return Json::parse(DataText(writer));
}

void AddRows(PageWriter& writer, int count, Verdict verdict) {
  for (int i = 0; i < count; ++i) writer.AddRow({i, 1, {}, "", "", "", "", "", verdict});
}

TEST(PageWriter, KeepsWhatIsNotWellOfALongRun) {
  PageWriter writer;
  AddRows(writer, 99999, Verdict::kDone);
  AddRows(writer, 2, Verdict::kMet);
  EXPECT_EQ(Data(writer)["log"].size(), 100000U);
  AddRows(writer, 400, Verdict::kNotMet);
  writer.AddMessage("not kept");
  writer.AddError("kept", 3);
  AddRows(writer, 599, Verdict::kFailed);
  EXPECT_EQ(Data(writer)["cut_faults"], false);
  AddRows(writer, 1, Verdict::kFailed);
  writer.AddError("not kept", 0);
  const Json data = Data(writer);
  EXPECT_EQ(data["log"].size(), 101000U);
  EXPECT_EQ(data["log"][100400], Json({{"line", 3}, {"text", "kept"}}));
  EXPECT_EQ(data["total_rows"], 101001);
  EXPECT_EQ(data["late_faults"], 1000);
  EXPECT_EQ(data["cut_messages"], true);
  EXPECT_EQ(data["cut_faults"], true);
}

TEST(PageWriter, BoundsMessages) {
  PageWriter lines;
  for (int i = 0; i < 400; ++i) lines.AddMessage(std::string(1000, '\n'));
  EXPECT_EQ(Data(lines)["cut_messages"], false);
  lines.AddMessage("x");
  EXPECT_EQ(Data(lines)["log"].size(), 400U);
  EXPECT_EQ(Data(lines)["cut_messages"], true);
  PageWriter bytes;
  for (int i = 0; i < 100; ++i) bytes.AddMessage(std::string(1U << 20U, 'x'));
  EXPECT_EQ(DataText(bytes).size() >> 20U, 64U);
}

TEST(PageWriter, BoundsSources) {
  std::string content;
  for (int i = 0; i < 99999; ++i) content += "a\n";
  PageWriter writer;
  writer.AddSource("first", content + "\nlast", std::vector<SourceMark>(9999));
  writer.AddSource("second", "b\n\n", std::vector<SourceMark>(3));
  const Json sources = Data(writer)["sources"];
  EXPECT_EQ(sources[0]["lines"].size(), 100000U);
  EXPECT_EQ(sources[0]["lines"].back(), "");
  EXPECT_EQ(sources[0]["total_lines"], 100001);
  EXPECT_EQ(sources[1]["lines"].size(), 0U);
  EXPECT_EQ(sources[1]["total_lines"], 2);
  EXPECT_EQ(sources[1]["marks"].size(), 1U);
  EXPECT_EQ(sources[1]["total_marks"], 3);
}

TEST(PageWriter, TakesNoTextForMarkup) {
  const std::string text = "</script><!--<script>\"\\\xe2\x80\xa8 \xff@data@";
  const std::string shown = "</script><!--<script>\"\\\xe2\x80\xa8 \xef\xbf\xbd@data@";
  PageWriter writer;
  writer.AddSource(text, text, {{1, 1, icehost::Severity::kError, text}});
  writer.AddRow({0, 0, {}, text, text, text, text, text, Verdict::kDone});
  writer.AddMessage(text);
  writer.AddError(text, 0);
  const std::string found = DataText(writer, {text, text, true, {{text, text}}});
  EXPECT_EQ(found.find('<'), std::string::npos);
  const Json data = Json::parse(found);
  const Json row = {0, 0, 0, 0, shown, shown, shown, shown, shown, 0};
  EXPECT_EQ(data["log"], Json({0, row, shown, {{"line", 0}, {"text", shown}}}));
  EXPECT_EQ(data["sources"][0]["lines"][0], shown);
  EXPECT_EQ(data["sources"][0]["marks"][0], Json({1, 1, true, shown}));
  EXPECT_EQ(data["head"]["entries"][0], Json({shown, shown}));
}

}  // namespace
}  // namespace icehost
