// Exports as a text and as an Access database, asked for as a host does.
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/engine_state.h"
#include "tests/support/mdb_checker.h"

namespace tavolin {
namespace {

struct TextExportTest : EngineTest {
    TextExportTest() {
        people_ = engine_.CreateNewPrimaryTable("People", {"Name", "Age"});
        engine_.AddRecord("People", 1, {"Ann", "", "hidden"});
        engine_.AddRecord("People", 2, {"B:\r\n\"o\"", "7"});
        engine_.CreateNewPrimaryTable("Empty", {"ID"});
    }
    // What the engine writes, without its quotation marks and line break.
    std::string Written() {
        engine_.MakeItText(FolderPath());
        const std::string text = Contents(File("shop.txt"));
        const std::size_t mark = text.find('"');
        EXPECT_EQ(text.substr(text.size() - 3), "\"\r\n");
        return text.substr(0, mark) + text.substr(mark + 1, text.size() - mark - 4);
    }

    std::shared_ptr<CVLTable> people_;
};

TEST_F(TextExportTest, RendersRecordsTablesAndSets) {
    const std::string people =
        " \r\n1\r\nName: Ann\r\nAge: NULL\r\n\r\n"
        "\r\n2\r\nName: B:\r\n\"o\"\r\nAge: 7\r\n\r\n";
    EXPECT_EQ(people_->MakeItText(), people);
    EXPECT_EQ(people_->Find("7")->MakeItText(), " \r\n1\r\nName: B:\r\n\"o\"\r\nAge: 7\r\n\r\n");
    EXPECT_EQ(people_->CVLRecordSet()->MakeItText({"", "", "Secret"}),
              " \r\n1\r\nSecret: hidden\r\n\r\n\r\n2\r\nSecret: NULL\r\n\r\n");
    EXPECT_EQ(engine_.GetTable("Empty")->MakeItText(), " ");
    engine_.AddRecord("Empty", 1, {"x"});
    const std::string all =
        " People\r\n" + people + "\r\n\r\nEmpty\r\n \r\n1\r\nID: x\r\n\r\n\r\n\r\n";
    EXPECT_EQ(engine_.CVLTableSet()->MakeItText(), all);
    EXPECT_EQ(Written(), all);
    EXPECT_EQ(CVLTableSet().MakeItText(), " ");
}

TEST_F(TextExportTest, NamesTheFile) {
    const struct {
        const char* database;
        const char* name;
        const char* file;
    } cases[] = {{"Shop.CDB", "", "Shop.txt"},
                 {"shop.cdb", "report", "reporttxt"},
                 {"shop.cdb", "SHOP.cdb", "shop.txt"},
                 {"shop.cdb", "r.cdb", "r.cdbtxt"},
                 {"cDbx.cdb.cdb.old", "", "x...oldtxt"}};
    for (const auto& test : cases) {
        engine_.DBName(test.database);
        engine_.MakeItText(FolderPath() + "\\", test.name);
        EXPECT_TRUE(There(test.file)) << test.file;
        if (There(test.file)) FileSystem::Current().Delete(File(test.file));
    }
}

// Wherever in the text the one character stands that decides.
TEST_F(TextExportTest, ChoosesTheEncodingForTheWholeText) {
    const std::string long_text(std::size_t{3} << 20, 'x');
    const auto record = engine_.GetRecord("People", 1);
    const auto expect = [&](bool ansi, const std::string& of, const std::string& character) {
        const std::string text = Written();
        EXPECT_EQ(text.substr(0, 3) == "\xEF\xBB\xBF", !ansi) << of;
        EXPECT_NE(text.find(of + character), std::string::npos) << of;
        people_->PrintToFile(engine_.CVLTableSet()->MakeItText(), File("printed.txt"));
        EXPECT_TRUE(Contents(File("printed.txt")) == Contents(File("shop.txt"))) << of;
    };
    record->prop(1, "5 €");
    expect(true, "Age: 5 ", "\x80");
    record->prop(2, "Ł");
    expect(true, "Age: 5 ", "\x80");
    record->prop(0, long_text + "é");
    expect(true, long_text, "\xE9");
    record->prop(0, long_text + "Ł");
    expect(false, long_text, "Ł");
    record->prop(0, "\xFF");
    expect(false, "Name: ", "\xFF");
    record->prop(0, "Ann");
    people_->FieldLabel(1, "Łata");
    expect(false, "\r\n", "Łata: 5 €");
    people_->FieldLabel(1, "Age");
    people_->Key("Ludzie Ł");
    expect(false, " Ludzie ", "Ł");
}

TEST_F(TextExportTest, NeverWritesOntoTheOpenDatabase) {
    const std::string folder = FolderPath();
    const auto print = [&](std::string_view path) {
        return ErrorNumber([&] { engine_.CVLTableSet()->PrintToFile("x", path); });
    };
    EXPECT_EQ(print(File("shop.log")), 0);  // not the log of anything before it is written
    FileSystem::Current().Delete(File("shop.log"));
    engine_.SaveDB();
    for (const char* name : {"hardtxt", "hardmdb"})
        fs::create_hard_link(NativePath(File("shop.cdb")), NativePath(File(name)));
    fs::create_directory(NativePath(File("site")));
    const fs::path log_file = NativePath(File("shop.log"));
    std::error_code no_links;
    fs::create_symlink(log_file, NativePath(File("site\\title.htm")), no_links);
    if (no_links) fs::create_hard_link(log_file, NativePath(File("site\\title.htm")));
    const std::string database = Contents(File("shop.cdb")), log = Contents(File("shop.log"));
    const auto records = people_->CVLRecordSet();
    for (const char* name : {"shop.cdb", ".\\shop.cdb", "site/..//shop.cdb", "hardtxt", "shop.log",
                             "site\\title.htm"}) {
        EXPECT_EQ(print(File(name)), kFileExists) << name;
    }
    const std::pair<const char*, std::function<void()>> members[] = {
        {"CVLRecordSet:printToFile Method", [&] { records->PrintToFile("x", File("shop.cdb")); }},
        {"CVLTable:printToFile Method", [&] { people_->PrintToFile("x", File("shop.cdb")); }},
        {"CVLDBEngine:MakeItText Method", [&] { engine_.MakeItText(folder, "hard"); }},
        {"CVLDBEngine:MakeItMDB Method", [&] { engine_.MakeItMDB(folder, "hard"); }},
        {"CVLDBEngine:MakeItHTML Method", [&] { engine_.MakeItHTML(folder, "site"); }},
    };
    for (const auto& [source, body] : members)
        ExpectError(kFileExists, source, GetErrorMessage(kFileExists), body);
    EXPECT_FALSE(There("site\\People"));
    EXPECT_EQ(Contents(File("shop.log")), log);
    // A tree that has been replaced leaves the new one's files alone.
    const auto old_tables = engine_.CVLTableSet();
    engine_.LoadDB(File("shop.cdb"));
    EXPECT_EQ(ErrorNumber([&] { old_tables->PrintToFile("x", File("shop.cdb")); }), kFileExists);
    EXPECT_EQ(Contents(File("shop.cdb")), database);
}

struct MdbExportTest : EngineTest {
    MdbExportTest() {
        engine_.CreateNewPrimaryTable("Customers", {"ID", "Name", "", "City"}, 0);
        engine_.AddRecord("Customers", 1, {"7", "Ann", "hidden", "Paris"});
        engine_.AddRecord("Customers", 1, {"3", "Bo"});
        engine_.CreateNewPrimaryTable("Bare", {}, 0);
        engine_.AddRecord("Bare", 1, {"x"});
    }
    MdbChecker Check(const std::string& name) {
        MdbChecker file(Contents(folder_ / name));
        EXPECT_EQ(file.faults(), "");
        return file;
    }
};

TEST_F(MdbExportTest, WritesATableForEachTable) {
    engine_.MakeItMDB(FolderPath());
    const MdbChecker file = Check("shop.mdb");
    ASSERT_EQ(file.tables().size(), 2u);
    const auto& customers = file.tables().at("Customers");
    EXPECT_EQ(customers.columns, (MdbChecker::Row{"ID", "Name", "City"}));
    EXPECT_EQ(customers.rows,
              (std::vector<MdbChecker::Row>{{"7", "Ann", "Paris"}, {"3", "Bo", "NULL"}}));
    EXPECT_EQ(file.tables().at("Bare").columns.size(), 0u);
    EXPECT_EQ(file.tables().at("Bare").rows.size(), 1u);
}

TEST_F(MdbExportTest, NamesTheFileAfterTheDatabaseOrAsAsked) {
    const auto tables = engine_.CVLTableSet();
    const auto table = tables->Item("Customers");
    engine_.MakeItMDB(FolderPath(), "SHOP.CDB");  // not another name
    EXPECT_TRUE(There("shop.mdb"));
    engine_.MakeItMDB(FolderPath() + "\\", "report.");
    tables->MakeItMDB(FolderPath(), "cdbset.CDB");
    table->MakeItMDB(FolderPath(), "one");
    table->CVLRecordSet()->MakeItMDB(FolderPath(), "one", "Again", {"Key"});
    for (const char* name : {"report.mdb", "set.mdb", "onemdb"}) {
        EXPECT_EQ(Check(name).tables().size(), 2u) << name;
    }
    engine_.DeleteTable("Customers");
    engine_.DeleteTable("Bare");
    engine_.MakeItMDB(FolderPath(), "none.");
    EXPECT_FALSE(There("none.mdb"));
}

TEST_F(MdbExportTest, WritesAllTablesOrNone) {
    const auto tables = engine_.CVLTableSet();
    const auto bare = tables->Item("Bare");
    engine_.MakeItMDB(FolderPath(), "old.");
    const std::string before = Contents(folder_ / "old.mdb");
    const auto refuses = [&](std::int32_t number, const char* description) {
        ExpectError(number, "CVLDBEngine:MakeItMDB Method", description,
                    [&] { engine_.MakeItMDB(FolderPath(), "new."); });
        EXPECT_FALSE(There("new.mdb"));
    };
    ExpectError(3010, "CVLTableSet:MakeItMDB Method",
                "The Table Already Exists!\r\nTable: Customers\r\nFile: " + (folder_ / "old.mdb"),
                [&] { tables->MakeItMDB(FolderPath(), "old."); });
    EXPECT_TRUE(Contents(folder_ / "old.mdb") == before);
    bare->FieldLabel(4, "long");
    bare->GetRecord(1)->prop(4, std::string(256, 'x'));
    refuses(3163,
            "The Field Is Too Small To Accept The Value!\r\nTable: Bare, Record: 1, Column: "
            "long\r\nCause: The Value Has 256 Characters, 255 Are Allowed");
    bare->FieldLabel(5, "LONG");
    refuses(3191, "The Field Is Defined More Than Once!\r\nTable: Bare, Column: LONG");
    bare->Key("not!");
    refuses(3125,
            "The Name Is Not Valid!\r\nTable: not!\r\nCause: The Character U+0021 Is Not "
            "Allowed");
    ExpectError(76, "CVLTableSet:MakeItMDB Method",
                "Unable to find the specified path\r\nRespecify the path", [&] {
                    bare->Key("Bare");
                    bare->FieldLabel(5, "");
                    bare->FieldLabel(4, "");
                    tables->MakeItMDB(folder_ / "missing", "x.");
                });
}

}  // namespace
}  // namespace tavolin
