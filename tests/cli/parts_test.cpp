// The host's parts by themselves: words, arguments, completion, CSV, tables.
#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "cli/arguments.h"
#include "cli/completion.h"
#include "cli/csv_reader.h"
#include "cli/display_text.h"
#include "cli/failure.h"
#include "cli/results.h"
#include "cli/text_table.h"
#include "cli/words.h"

namespace tavolin::cli {
namespace {

// How lines become words, and words the parts of a command.
using Words = std::vector<std::string>;

TEST(WordsTest, SplitsAsAShellDoes) {
    const std::pair<const char*, Words> cases[] = {
        {"", {}},
        {" \t ", {}},
        {"  # add T 1", {}},
        {"get T #1", {"get", "T", "#1"}},
        {"a  'b c'\t\"d e\"", {"a", "b c", "d e"}},
        {"'' \"\"", {"", ""}},
        {"a'b'\"c\"d", {"abcd"}},
        {R"(a\ b \' \\ 'c\\' "d\"\\\n")", {"a b", "'", "\\", "c\\\\", "d\"\\\\n"}},
        {"x\\", {"x\\"}},
        {"'two\nlines'", {"two\nlines"}},
    };
    for (const auto& [line, expected] : cases) {
        const WordSplit split = SplitWords(line);
        EXPECT_EQ(expected, split.words) << line;
        EXPECT_FALSE(split.open_quote) << line;
    }
    EXPECT_TRUE(SplitWords("add T 'x").open_quote);
    EXPECT_TRUE(SplitWords("add T \"x\\\"").open_quote);
}

TEST(WordsTest, ListsMayQuoteTheirNames) {
    EXPECT_EQ((Words{"ID", "Last, first", "City"}), SplitList("ID,\"Last, first\", City "));
    EXPECT_THROW(SplitList("ID,\"x"), UsageError);
}

constexpr std::string_view kPattern = "TABLE VALUE... [--kind a|b] [--yes] [--from N]";

TEST(ArgumentsTest, SortsWordsByThePattern) {
    const Words words = {"T", "--kind=b", "-1", "--from", "7", "--", "--yes"};
    const Arguments arguments(kPattern, words);
    EXPECT_EQ("T", arguments["TABLE"]);
    EXPECT_EQ((Words{"-1", "--yes"}), arguments.All("VALUE"));
    EXPECT_EQ("b", arguments["--kind"]);
    EXPECT_EQ(7, arguments.Number("--from", 0));
    EXPECT_FALSE(arguments.Has("--yes"));
}

TEST(ArgumentsTest, RefusesWhatDoesNotFit) {
    const Words cases[] = {{"T"},
                           {"T", "v", "--nope"},
                           {"T", "v", "--kind", "c"},
                           {"T", "v", "--kind"},
                           {"T", "v", "--yes=1"},
                           {"T", "v", "--yes", "--yes"}};
    for (const Words& words : cases) {
        EXPECT_THROW(Arguments(kPattern, words), UsageError) << words.back();
    }
    EXPECT_THROW(Arguments("TABLE", Words({"T", "more"})), UsageError);
    EXPECT_THROW(Arguments("T --fields NAMES", Words({"T"})), UsageError);
    for (const char* number : {"x", "-1"}) {
        const Words words = {"T", "v", "--from", number};
        EXPECT_THROW(Arguments(kPattern, words).Number("--from", 0), UsageError);
    }
}

TEST(CompletionTest, OffersWhatFitsThePlace) {
    const Names names = {{{"Cities", {"City", "Country"}}, {"People", {"ID", "Full name"}}},
                         {"ann", "bob"}};
    const std::pair<const char*, Words> cases[] = {
        {"", {}},  // all commands, see below
        {"up", {"update"}},
        {"export ", {"csv", "html", "mdb", "sql", "text"}},
        {"note s", {"set"}},
        {"log ", {"file", "off", "on", "report"}},
        {"log on rec", {"record-add", "record-update", "record-delete"}},
        {"list c", {"Cities"}},
        {"list --from 2 ", {"Cities", "People"}},
        {"list Cities --c", {"--count"}},
        {"attach T 1 p --kind so", {"sound"}},
        {"count Cities ", {"--format", "--no-header", "--no-pager", "--timing", "--quiet"}},
        {"count Cities --format j", {"json"}},
        {"find x --in People --field f", {"'Full name'"}},
        {"label People 'Full n", {"'Full name'"}},
        {"label People \"Full n", {"\"Full name\""}},
        {"add People f", {"'Full name="}},
        {"update cities 7 C", {"City=", "Country="}},
        {"link People ID C", {"Cities"}},
        {"set-user ", {"ann", "bob"}},
        {"notes b", {"bob"}},
        {"set for", {"format"}},
        {"set format c", {"csv"}},
        {"help exp", {"export"}},
        {"help export h", {"html"}},
        {"delete x y --",
         {"--no-cascade", "--format", "--no-header", "--no-pager", "--timing", "--quiet"}},
        {"list Cities -- -", {}},
        {"nonsense ", {}},
    };
    for (const auto& [line, expected] : cases) {
        const LineCompletion completion = CompleteLine(line, names);
        if (*line == '\0') {
            EXPECT_GT(completion.words.size(), 40u);
        } else {
            EXPECT_EQ(expected, completion.words) << line;
        }
    }
    EXPECT_EQ(13u, CompleteLine("label People 'Full n", names).begin);
}

// Records as "LINE:field|field" and, at an error, "!LINE:COLUMN what".
std::string Read(std::string_view text, std::size_t step, std::size_t buffer) {
    std::string result;
    try {
        CsvReader reader(TextSource(text, step), buffer);
        while (reader.Next()) {
            result += std::to_string(reader.line()) + ":";
            for (std::size_t i = 0; i < reader.fields().size(); ++i) {
                result.append(i > 0 ? "|" : "").append(reader.fields()[i]);
            }
            result += ";";
        }
    } catch (const CsvError& error) {
        result += "!" + std::to_string(error.line()) + ":" + std::to_string(error.column()) + " " +
                  error.what();
    }
    return result;
}

constexpr std::pair<const char*, const char*> kCases[] = {
    {"", ""},
    {"a,b\nc,d\n", "1:a|b;2:c|d;"},
    {"a,b\r\nc,d", "1:a|b;2:c|d;"},
    {"a\rb\r\rc\r\n\r\nd", "1:a;2:b;4:c;6:d;"},
    {",\n,,", "1:|;2:||;"},
    {"\xEF\xBB\xBF\"a\",b", "1:a|b;"},
    {"\xEF\xBB\xBF", ""},
    {"\"a,b\",\"c\"\"d\"\"\"\n\"\"", "1:a,b|c\"d\";2:;"},
    {"\"x\ny\",1\n\"x\r\ny\r\",2\nz", "1:x\ny|1;3:x\r\ny\r|2;6:z;"},
    {"a \"b\" c,d", "1:a \"b\" c|d;"},
    {"\xC3\xA9,\xF0\x9F\x98\x80\n", "1:\xC3\xA9|\xF0\x9F\x98\x80;"},
    {"a\n\n\"x\ny", "1:a;!3:1 a quote that is never closed"},
    {"a,\"b\"c", "!1:2 text after the closing quote"},
    {"a\nb,x\xFFy", "1:a;!2:2 byte 2 of the field, \\xFF, is not UTF-8"},
    {"\"\"\"\xC3\"", "!1:1 byte 2 of the field, \\xC3, is not UTF-8"},
    {"\xED\xA0\x80", "!1:1 byte 1 of the field, \\xED, is not UTF-8"},
};

// A buffer of four bytes makes every record cross its end somewhere.
TEST(CsvReaderTest, ReadsTheSameWhateverTheBuffer) {
    for (const auto& [text, expected] : kCases) {
        EXPECT_EQ(expected, Read(text, SIZE_MAX, 1 << 16)) << text;
        EXPECT_EQ(expected, Read(text, 1, 4)) << text;
        EXPECT_EQ(expected, Read(text, 3, 5)) << text;
    }
}

TEST(CsvReaderTest, CountsTheBytesOfAllRecords) {
    const std::string text = "\xEF\xBB\xBF" + std::string(300, 'a') + "\n\"b\nb\"\n";
    CsvReader reader(TextSource(text), 16);
    while (reader.Next()) {
    }
    EXPECT_EQ(text.size(), reader.bytes_read());
}

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
