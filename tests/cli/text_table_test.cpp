#include "cli/text_table.h"

#include <gtest/gtest.h>

#include <sstream>

#include "cli/display_text.h"
#include "cli/results.h"

namespace tavolin::cli {
namespace {

TEST(TextTableTest, AlignsByTheWidthOnTheScreen) {
    TextTable table({"ID", "Name", "City"});
    table.Add({"1", "日本", "x"});
    table.Add({"22", "Zu\xCC\x88rich", "y"});
    table.Add({"3", "a\nb\x1B", ""});
    std::ostringstream out;
    table.Print(out, {});
    EXPECT_EQ(
        "ID  Name      City\n"
        "--  --------  ----\n"
        "1   日本      x\n"
        "22  Zu\xCC\x88rich    y\n"
        "3   a\\nb\\x1B\n",
        out.str());
}

TEST(TextTableTest, GivesWayToTheTerminal) {
    TextTable table({"ID", "Text"});
    table.Add({"1", "日本語日本語日本語"});
    table.Add({"2", "short"});
    std::ostringstream out;
    table.Print(out, {.header = false, .width = 14});
    EXPECT_EQ("1  日本語日本…\n2  short\n", out.str());
    out.str("");
    table.Print(out, {.header = false, .width = 1});
    EXPECT_EQ("1  日本…\n2  short\n", out.str());
    out.str("");
    table.Add({"3", "one two three"});
    table.AlignRight(0);
    table.Print(out, {.width = 13, .fit = TextTable::Fit::kWrap});
    EXPECT_EQ(
        "ID  Text\n--  ---------\n 1  日本語日\n    本語日本\n    語\n 2  short\n 3  one two\n"
        "    three\n",
        out.str());
}

TEST(DisplayTextTest, WritesOutWhatWouldSteerTheTerminal) {
    EXPECT_EQ("\\t\\x7F\\u0085\\u202Eé\\xFF", Printable("\t\x7F\xC2\x85\xE2\x80\xAE\xC3\xA9\xFF"));
    const std::pair<const char*, std::size_t> widths[] = {
        {"😀", 2},         {"ÄÖ\xFF", 3}, {"👨‍👩‍👧", 2},
        {"❤️", 2},    {"❤", 1},      {"🏳️‍🌈", 2},
        {"👍🏽", 2},  {"🇫🇷", 2},     {"한글", 4},
        {"한", 2},        {"ｱ", 1},      {"ก็", 1},
        {"א\xD6\xB7", 1}, {"日本", 4},   {"\xE2\x80\x8B", 0},
        {"क्ष", 2}};
    for (const auto& [text, width] : widths) EXPECT_EQ(width, DisplayWidth(text)) << text;
}

std::string Shown(Format format, bool header) {
    std::ostringstream out;
    Results results(out, {.format = format, .header = header}, {"ID", "Text", "Text"});
    results.Numbers({0});
    results.Add({"1", "a \"b\",\nc", "\\\x1B\xFF\xED\xA0\x80é"});
    results.Add({"2", "", ""});
    results.Finish("country");
    return out.str();
}

TEST(ResultsTest, HaveFourForms) {
    const std::string bytes = "\\\x1B\xFF\xED\xA0\x80é";
    EXPECT_EQ("ID,Text,Text\n1,\"a \"\"b\"\",\nc\"," + bytes + "\n2,,\n",
              Shown(Format::kCsv, true));
    EXPECT_EQ("1,\"a \"\"b\"\",\nc\"," + bytes + "\n2,,\n", Shown(Format::kCsv, false));
    EXPECT_EQ(
        "{\"ID\":1,\"Text\":\"a \\\"b\\\",\\nc\",\"Text 2\":\"\\\\\\u001B\uFFFD\\uD800é\"}\n"
        "{\"ID\":2,\"Text\":\"\",\"Text 2\":\"\"}\n",
        Shown(Format::kJson, true));
    EXPECT_EQ("ID: 1\nText: a \"b\",\\nc\nText: \\\\x1B\\xFF\\uD800é\n\nID: 2\nText: \nText: \n",
              Shown(Format::kLines, true));
    EXPECT_EQ("1  a \"b\",\\nc  \\\\x1B\\xFF\\uD800é\n2\n2 countries\n",
              Shown(Format::kTable, false));
}

}  // namespace
}  // namespace tavolin::cli
