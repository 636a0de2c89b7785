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
    table.Print(out);
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
    table.Print(out, false, 14);
    EXPECT_EQ("1  日本語日本…\n2  short\n", out.str());
    out.str("");
    table.Print(out, false, 1);
    EXPECT_EQ("1  日本…\n2  short\n", out.str());
}

TEST(DisplayTextTest, WritesOutWhatWouldSteerTheTerminal) {
    EXPECT_EQ("\\t\\x7F\\u0085\\u202Eé\\xFF", Printable("\t\x7F\xC2\x85\xE2\x80\xAE\xC3\xA9\xFF"));
    EXPECT_EQ(2u, DisplayWidth("😀"));
    EXPECT_EQ(3u, DisplayWidth("ÄÖ\xFF"));
}

std::string Shown(Format format, bool header) {
    std::ostringstream out;
    Results results(out, {format, header, true, 0}, {"ID", "Text"});
    results.Add({"1", "a \"b\",\nc"});
    results.Add({"2", ""});
    results.Finish("country");
    return out.str();
}

TEST(ResultsTest, HaveThreeForms) {
    EXPECT_EQ("ID,Text\n1,\"a \"\"b\"\",\nc\"\n2,\n", Shown(Format::kCsv, true));
    EXPECT_EQ("1,\"a \"\"b\"\",\nc\"\n2,\n", Shown(Format::kCsv, false));
    EXPECT_EQ("ID: 1\nText: a \"b\",\\nc\n\nID: 2\nText: \n", Shown(Format::kLines, true));
    EXPECT_EQ("1  a \"b\",\\nc\n2\n2 countries\n", Shown(Format::kTable, false));
}

}  // namespace
}  // namespace tavolin::cli
