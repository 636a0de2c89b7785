#include <gtest/gtest.h>

#include <functional>

#include "tavolin/base/utf16.h"
#include "tavolin/export/mdb/sort_key.h"
#include "tavolin/export/mdb/writer.h"
#include "tests/support/engine_state.h"
#include "tests/support/mdb_checker.h"

namespace tavolin {
namespace {

using Row = MdbChecker::Row;

std::string Times(int count, std::string_view text) {
    std::string all;
    for (int i = 0; i < count; ++i) all += text;
    return all;
}

struct MdbWriterTest : testing::Test {
    // The file as it stands, which must be without fault.
    MdbChecker Check() {
        MdbChecker file(Contents(path_));
        EXPECT_EQ(file.faults(), "");
        return file;
    }
    void Write(const std::function<void(mdb::Writer&)>& body) {
        mdb::Writer file(path_);
        body(file);
        file.Close();
    }
    void WritePeople() {
        Write([](mdb::Writer& file) { file.CreateTable("People", {"Name"}).Append({"Ada"}); });
    }

    TemporaryFolder folder_;
    std::string path_ = folder_ / "export.mdb";
};

TEST_F(MdbWriterTest, WritesTextsOfEveryKind) {
    const std::string s255(255, 'x');
    const std::string emoji = Times(127, "😀") + "y";
    const std::string zero("a\0b", 3);
    const std::vector<Row> rows = {{"", "a", "ab"},
                                   {"abc", "Zürich", "ÿ"},
                                   {s255, emoji, Times(255, "日")},
                                   {zero, "жук", "ελιά"},
                                   {"\uFEFF", "\uFEFFñЖж", "x\uFEFF"},
                                   {"\x01\x7F", "Ā€", "\r\n"}};
    Write([&](mdb::Writer& file) {
        auto& texts = file.CreateTable("Größe", {"Straße 7", "O'Brien", "データ"});
        auto& none = file.CreateTable("None", {});
        file.CreateTable("Empty", {"A"});
        for (const Row& row : rows) texts.Append({row[0], row[1], row[2]});
        for (int i = 0; i < 600; ++i) none.Append({});
        // What is not proper text becomes U+FFFD.
        texts.Append({"\xED\xA0\xBDz", "\xED\xB8\x80\xED\xA0\xBD", "\xFF"});
    });
    const MdbChecker file = Check();
    auto expected = rows;
    expected.push_back({"\uFFFDz", "\uFFFD\uFFFD", "\uFFFD"});
    ASSERT_EQ(file.tables().size(), 3u);
    EXPECT_EQ(file.tables().at("Größe").rows, expected);
    EXPECT_EQ(file.tables().at("Größe").columns, (Row{"Straße 7", "O'Brien", "データ"}));
    EXPECT_EQ(file.tables().at("None").rows, std::vector<Row>(600));
    EXPECT_EQ(file.tables().at("Empty").rows.size(), 0u);
}

TEST_F(MdbWriterTest, MakesTheKeysOfNamesThatReadersLookUp) {
    using Bytes = mdb::Bytes;
    const struct {
        const char16_t* name;
        Bytes key;
    } cases[] = {
        {u"Tables", {0x6D, 0x4A, 0x4C, 0x5E, 0x51, 0x6B, 1, 0}},
        {u"tABLES  ", {0x6D, 0x4A, 0x4C, 0x5E, 0x51, 0x6B, 1, 0}},
        {u"Table_1", {0x6D, 0x4A, 0x4C, 0x5E, 0x51, 0x2B, 3, 0x38, 1, 0}},
        {u"Größe", {0x55, 0x69, 0x64, 0x6B, 0x6B, 0x51, 1, 2, 2, 0x13, 0}},
        {u"O'Brien", {0x64, 0x4C, 0x69, 0x59, 0x51, 0x62, 1, 1, 1, 1, 0x80, 0x0B, 6, 0x80, 0}},
        {u"é-b", {0x51, 0x4C, 1, 0x0E, 1, 1, 1, 0x80, 0x0B, 6, 0x82, 0}},
        {u"日本", {0xB7, 0x56, 0xB8, 0xA9, 1, 0}},
        {u"データ", {0x7F, 0x1D, 0x4A, 0x7F, 0x1A, 1, 3, 1, 1, 0xFF, 2, 0x80, 0xFF, 0x80, 0}},
        {u"あっ-い", {0x7F, 2,    0x7F, 0x1C, 0x7F, 3, 1,    1,    1, 0xB8, 0xFF,
                      2,    0x80, 0xFF, 0x80, 0xFF, 1, 0x80, 0x0F, 6, 0x82, 0}},
    };
    for (const auto& each : cases)
        EXPECT_EQ(mdb::SortKey(each.name), each.key) << FromUtf16(each.name);
    EXPECT_FALSE(mdb::SortKey(u"a\u0531"));
}

TEST_F(MdbWriterTest, RefusesWhatTheFormatCannotHold) {
    const std::string long_name(65, 'n');
    const auto table = [](std::string name, Row columns = {"A"}, std::vector<Row> rows = {}) {
        return [=](mdb::Writer& file) {
            const std::vector<std::string_view> names(columns.begin(), columns.end());
            auto& writer = file.CreateTable(name, names);
            for (const Row& row : rows)
                writer.Append(std::vector<std::string_view>(row.begin(), row.end()));
        };
    };
    // Of 4060 bytes and one more: 28 besides the values, six of 510, three of 257, and 201 or 202.
    const auto wide = [&](bool too_wide) {
        Row row(10, Times(255, "ж"));
        row[1] = row[4] = row[7] = std::string(255, 'x');
        row[9] = std::string(too_wide ? 200 : 199, 'y');
        return row;
    };
    const Row ten = {"A", "B", "C", "D", "E", "F", "G", "H", "I", "J"};
    const struct {
        std::function<void(mdb::Writer&)> body;
        std::int32_t number;
        std::string wanted;
    } cases[] = {
        {table("T", {"A", "B"}, {{"1", "2"}, {"3", std::string(256, 'x')}}), 3163,
         "Table: T, Record: 2, Column: B\r\nCause: The Value Has 256"},
        {table("T", {"A"}, {{Times(128, "😀")}}), 3163, "Column: A\r\nCause: The Value Has 256"},
        {table("T", {"A"}, {{"\uFEFFĀ"}}), 5, "Table: T, Record: 1, Column: A"},
        {table("T", ten, {Row(10, Times(255, "ж"))}), 3047,
         "Table: T, Record: 1\r\nCause: It Takes 5128"},
        {table(""), 3125, "Empty"},
        {table(long_name), 3125, "Table: " + long_name + "\r\nCause: It Has 65"},
        {table(" T"), 3125, "Blank"},
        {table("T "), 3125, "Blank"},
        {table("a.b"), 3125, "U+002E"},
        {table("MSysMine"), 3125, "Of The System"},
        {table("~T"), 3125, "Of The System"},
        {table("T\u0531"), 3125, "U+0531"},
        {table("T", {"ok", "a[b"}), 3125, "Table: T, Column: a[b\r\nCause: The Character U+005B"},
        {table("T", {"a\tb"}), 3125, "U+0009"},
        {table("T", {"a\xED\xA0\x80"}), 3125, "No Proper Text"},
        {table("T", {long_name}), 3125, "It Has 65"},
        {table("T", {"Straße", "B", "STRASSE"}), 3191, "Table: T, Column: STRASSE"},
        {table("T", {"ա", "Ա"}), 3191, "Column: Ա"},
        {table("pEOPLE"), 3010, "Table: pEOPLE\r\nFile: "},
    };
    WritePeople();
    const std::string before = Contents(path_);
    for (const auto& each : cases) {
        try {
            Write(each.body);
            ADD_FAILURE() << "no error where expected: " << each.wanted;
        } catch (const Error& error) {
            EXPECT_EQ(error.number(), each.number) << each.wanted;
            EXPECT_NE(error.description().find(each.wanted), std::string::npos)
                << error.description();
        }
        EXPECT_TRUE(Contents(path_) == before && FilesOf(folder_).size() == 1) << each.wanted;
    }
    // To the limit.
    Write(table(std::string(64, 'n'), ten, {Row(10, std::string(255, 'x'))}));
    Write(table("Ωmega # / \" ' - ?", {"ա", std::string(64, 'c')}));
    Write(table("Limit", ten, {wide(false)}));
    EXPECT_EQ(ErrorNumber([&] { Write(table("Over", ten, {wide(true)})); }), 3047);
    EXPECT_EQ(Check().tables().size(), 4u);
}

// Enough tables for indexes of several pages, enough rows for maps of several pages.
TEST_F(MdbWriterTest, AddsTablesToItsOwnFile) {
    std::map<std::string, std::size_t> expected;
    for (const int tables : {1, 250, 2, 120}) {
        Write([&](mdb::Writer& file) {
            std::vector<std::pair<mdb::TableWriter*, int>> writers;
            for (int i = 0; i < tables; ++i) {
                const std::string name =
                    std::to_string(i * 7919 % 1000) + Times(25, " x") + std::to_string(tables);
                const int rows = i == 0 ? 7000 : i % 3;
                writers.emplace_back(&file.CreateTable(name, {"Number", "Text"}), rows);
                expected[name] = static_cast<std::size_t>(rows);
            }
            for (int row = 0; row < 7000; ++row) {
                for (auto& [writer, rows] : writers) {
                    if (row < rows) writer->Append({std::to_string(row), std::string(100, 't')});
                }
            }
        });
        const MdbChecker file = Check();
        ASSERT_EQ(file.tables().size(), expected.size());
        for (const auto& [name, table] : file.tables()) {
            ASSERT_EQ(table.rows.size(), expected[name]) << name;
            for (std::size_t row = 0; row < table.rows.size(); ++row) {
                ASSERT_EQ(table.rows[row], (Row{std::to_string(row), std::string(100, 't')}));
            }
        }
    }
}

// With keys so long that a few tables fill a leaf, and a few leaves a node.
TEST_F(MdbWriterTest, CutsIndexesOfAnyNumberOfLeavesIntoNodes) {
    for (int tables = 0; tables < 260; tables += 10) {
        Write([&](mdb::Writer& file) {
            for (int i = tables; i < tables + 10; ++i)
                file.CreateTable("x" + std::to_string(i) + std::string(60, '-'), {});
        });
        Check();
    }
}

TEST_F(MdbWriterTest, LeavesFilesOfOthersAndDamagedOnesAlone) {
    WritePeople();
    const std::string good = Contents(path_);
    std::vector<std::string> bad = {"",
                                    "not a database",
                                    std::string(20 * 4096, '\0'),
                                    good.substr(0, good.size() - 4096),
                                    good + std::string(4096, 0),
                                    good + "x"};
    for (std::size_t at = 0; at < good.size(); at += 509) {
        bad.push_back(good);
        bad.back()[at] = static_cast<char>(bad.back()[at] ^ 0x10);
    }
    // A page with another's contents.
    bad.push_back(good);
    bad.back().replace(15 * 4096, 4096, good, 14 * 4096, 4096);
    for (const std::string& contents : bad) {
        WriteContents(path_, contents);
        EXPECT_EQ(ErrorNumber(
                      [&] { Write([](mdb::Writer& file) { file.CreateTable("People", {"A"}); }); }),
                  58);
        EXPECT_TRUE(Contents(path_) == contents && FilesOf(folder_).size() == 1);
    }
    // One that somebody else makes while a new one is being written.
    std::filesystem::remove(NativePath(path_));
    EXPECT_EQ(ErrorNumber([&] { Write([&](mdb::Writer&) { WriteContents(path_, "theirs"); }); }),
              58);
    EXPECT_EQ(Contents(path_), "theirs");
    std::filesystem::remove(NativePath(path_));
#ifndef _WIN32  // where an open file keeps others out
    WritePeople();
    const auto add = [](const char* table) {
        return [=](mdb::Writer& file) { file.CreateTable(table, {"A"}); };
    };
    EXPECT_EQ(ErrorNumber([&] {
                  Write([&](mdb::Writer& file) {
                      add("Late")(file);
                      Write(add("Early"));
                  });
              }),
              58);
    EXPECT_EQ(Check().tables().count("Early"), 1u);
#endif
}

}  // namespace
}  // namespace tavolin
