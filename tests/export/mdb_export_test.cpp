#include <gtest/gtest.h>

#include "tests/support/engine_state.h"
#include "tests/support/mdb_checker.h"

namespace tavolin {
namespace {

class MdbExportTest : public EngineTest {
  protected:
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
    bool IsThere(const std::string& name) { return FileSystem::Current().Exists(folder_ / name); }
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
    EXPECT_TRUE(IsThere("shop.mdb"));
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
    EXPECT_FALSE(IsThere("none.mdb"));
}

TEST_F(MdbExportTest, AsksForAnOpenDatabase) {
    ExpectError(CVLErrorNum::GetDBNotSetError(), "CVLDBEngine:MakeItMDB Method",
                "DataBase Is Not Set!", [&] { CVLDBEngine().MakeItMDB(FolderPath()); });
}

TEST_F(MdbExportTest, WritesAllTablesOrNone) {
    const auto tables = engine_.CVLTableSet();
    const auto bare = tables->Item("Bare");
    engine_.MakeItMDB(FolderPath(), "old.");
    const std::string before = Contents(folder_ / "old.mdb");
    const auto refuses = [&](std::int32_t number, const char* description) {
        ExpectError(number, "CVLDBEngine:MakeItMDB Method", description,
                    [&] { engine_.MakeItMDB(FolderPath(), "new."); });
        EXPECT_FALSE(IsThere("new.mdb"));
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

TEST_F(MdbExportTest, SparesTheOpenDatabase) {
    engine_.SaveDB({}, "shop.mdb");
    const std::string before = Contents(folder_ / "shop.mdb");
    std::filesystem::create_hard_link(NativePath(folder_ / "shop.mdb"),
                                      NativePath(folder_ / "other.mdb"));
    for (const char* name : {"shop.", "other."}) {
        EXPECT_EQ(ErrorNumber([&] { engine_.MakeItMDB(FolderPath(), name); }), 58);
    }
    EXPECT_TRUE(Contents(folder_ / "shop.mdb") == before);
}

}  // namespace
}  // namespace tavolin
