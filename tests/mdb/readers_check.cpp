// Every value of an export comes back in mdbtools and, through dump.mjs, in a reader for Node.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

#include "tavolin/base/text.h"
#include "tests/support/engine_state.h"

namespace tavolin {
namespace {

using Texts = std::vector<std::string>;

// Between values and behind lines.
constexpr char kUnit = '\x1F';
constexpr char kRecord = '\x1E';

struct Table {
    std::string name;
    Texts labels;
    std::vector<Texts> rows;
};

std::string Quoted(const std::string& text) { return "'" + ReplaceFold(text, "'", "'\\''") + "'"; }

// What the program prints; a failure names it.
std::string OutputOf(const std::string& command) {
    std::FILE* pipe = ::popen(command.c_str(), "r");
    std::string output;
    char chunk[4096];
    for (std::size_t size; (size = std::fread(chunk, 1, sizeof chunk, pipe)) > 0;)
        output.append(chunk, size);
    EXPECT_EQ(::pclose(pipe), 0) << command;
    return output;
}

std::string Line(const Texts& texts) {
    std::string line;
    for (const std::string& text : texts) line += (&text == &texts[0] ? "" : "\x1F") + text;
    return line + kRecord;
}

std::string Rows(const Table& table) {
    std::string rows;
    for (Texts row : table.rows) {
        row.resize(table.labels.size());
        for (std::string& value : row) value = value.empty() ? "NULL" : value;
        rows += Line(row);
    }
    return rows;
}

std::vector<Table> SampleTables() {
    Table many{"Many rows", {"N", "Text"}, {}};
    for (int i = 0; i < 10000; ++i)
        many.rows.push_back(
            {std::to_string(i), std::string(static_cast<std::size_t>(i % 90), 'x')});
    Texts labels;
    for (int i = 0; i < 10; ++i) labels.push_back("Column with a long name " + std::to_string(i));
    std::string emoji = "1";
    for (int i = 0; i < 127; ++i) emoji += "😀";
    return {
        {"Größe/'x'",
         {"Straße 7", "O'Brien", "データ \"1\""},
         {{"1", "a", "ab"},
          {"2", "ñandú", "жук"},
          {"3", "日本語", "ελιά"},
          {"4", "", "€ÿĀ"},
          {"5", emoji, "line\r\nbreak"},
          {"6", "\uFEFFñЖ", "\uFEFF"},
          {"7", "\x01\x7F", "😀"}}},
        {"Full", labels, {Texts(10, std::string(255, 'y'))}},
        {"Пусто", {"A"}, {}},
        {"表", {"A"}, {{"x"}, {"y"}}},
        many,
        {"No columns", {}, {{"1"}, {"2"}, {"3"}}},
    };
}

struct MdbReaders : EngineTest {
    MdbReaders() {
        for (const Table& table : tables_) {
            engine_.CreateNewPrimaryTable(table.name, {}, 0);
            const auto made = engine_.GetTable(table.name);
            for (std::size_t i = 0; i < table.labels.size(); ++i)
                made->FieldLabel(static_cast<int>(i), table.labels[i]);
            for (const Texts& row : table.rows) engine_.AddRecord(table.name, 1, row);
        }
        engine_.MakeItMDB(FolderPath());
    }
    std::string Tool(const std::string& command, const std::string& table = {}) {
        return OutputOf(command + " " + Quoted(file_) + (table.empty() ? "" : " " + Quoted(table)));
    }

    std::vector<Table> tables_ = SampleTables();
    std::string file_ = NativePath(folder_ / "shop.mdb").string();
};

TEST_F(MdbReaders, MdbtoolsReadsEveryValue) {
    ASSERT_EQ(std::system("command -v mdb-export >/dev/null"), 0)
        << "mdbtools is missing (Debian: mdbtools)";
    std::string names;
    const std::string schema = Tool("mdb-schema");
    const std::string cut = std::string("-H -Q -d '") + kUnit + "' -R '" + kRecord + "'";
    for (const Table& table : tables_) {
        names += table.name + "\n";
        EXPECT_EQ(Tool("mdb-count", table.name), std::to_string(table.rows.size()) + "\n");
        EXPECT_NE(schema.find("CREATE TABLE [" + table.name + "]"), schema.npos) << table.name;
        for (const std::string& label : table.labels)
            EXPECT_NE(schema.find("[" + label + "]\t\t\tText (255)"), schema.npos) << label;
        // No rows of a table without columns, and two question marks for a character above U+FFFF.
        const std::string rows = ReplaceFold(table.labels.empty() ? "" : Rows(table), "😀", "??");
        const std::string found = Tool("mdb-export " + cut, table.name);
        EXPECT_TRUE(found == rows) << table.name << ": " << found.substr(0, 500);
    }
    EXPECT_EQ(Tool("mdb-tables -1"), names);
}

TEST_F(MdbReaders, ReaderForNodeReadsEveryValue) {
    engine_.CreateNewPrimaryTable("Zero", {"A"}, 0);
    engine_.AddRecord("Zero", 1, {std::string_view("a\0b", 3)});
    engine_.GetTable("Zero")->MakeItMDB(FolderPath(), "shop.");
    tables_.push_back({"Zero", {"A"}, {{std::string("a\0b", 3)}}});
    std::string expected;
    for (const Table& table : tables_) {
        expected += Line({table.name, std::to_string(table.rows.size())});
        Texts columns;
        for (const std::string& label : table.labels) columns.push_back(label + " text 255");
        expected += Line(columns) + Rows(table);
    }
    const std::string found = Tool("node " TAVOLIN_MDB_READER "/dump.mjs");
    EXPECT_TRUE(found == expected) << found.substr(0, 2000);
}

}  // namespace
}  // namespace tavolin
