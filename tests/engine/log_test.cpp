// The log file byte by byte, and what waits for the next save.
#include <array>
#include <functional>

#include "tests/support/engine_state.h"

namespace tavolin {
namespace {

class LogTest : public StoppedClock, public EngineTest {
  protected:
    std::string File(const char* name) const { return folder_ / name; }
    bool There(const char* name) const { return FileSystem::Current().Exists(File(name)); }
    // The lines of a file, its end included, in which every line is as the clock and ann make it.
    static std::string Line(const std::string& text) {
        return "11/15/2026 1:05:00 AM  [USER: ann]" + text + "\r\n";
    }
    // Switches in the order of LogDBActivities.
    void Switch(const std::array<bool, 14>& on) {
        engine_.LogDBActivities(on[0], on[1], on[2], on[3], on[4], on[5], on[6], on[7], on[8],
                                on[9], on[10], on[11], on[12], on[13]);
    }
    const std::string log_on_ = Line("ann Has Logged On");
    const std::string saved_ = Line("DATABASE SAVED! As " + (folder_ / "shop.cdb"));
};

TEST_F(LogTest, LinesWaitForTheSaveAndGoOutTogether) {
    engine_.LogDBActivities(false, false, false, false, true);
    engine_.CreateNewPrimaryTable("Items", {"ID"});
    EXPECT_FALSE(There("shop.log"));
    engine_.SaveDB();
    const std::string first = "\r\n" + log_on_ + Line("New Table Created: Items") + saved_;
    EXPECT_EQ(Contents(File("shop.log")), first);
    engine_.SaveDB();
    EXPECT_EQ(Contents(File("shop.log")), first + "\r\n" + saved_);
    EXPECT_EQ(engine_.LogReport(),
              "ann Has Logged On\r\nNew Database Created: " + File("shop.cdb") +
                  "\r\nann Is The Owner Of shop.cdb\r\nNew Table Created: Items\r\n"
                  "DATABASE SAVED! As " +
                  File("shop.cdb") + "\r\nDATABASE SAVED! As " + File("shop.cdb") + "\r\n");
}

TEST_F(LogTest, InsideATransactionAndForErrorsTheyGoOutAtOnce) {
    engine_.LogDBActivities(false, true, false, false, true, false, false, false, false, false,
                            false, false, false, true);
    engine_.TransactionBegin();
    engine_.CreateNewPrimaryTable("Items", {"ID"});
    std::string expected = Line("<Transaction Began>") + Line("New Table Created: Items");
    EXPECT_EQ(Contents(File("shop.log")), expected);
    EXPECT_THROW(engine_.GetTable("none"), Error);
    expected += " \r\n" + Line("ERROR: Table none Not Found!");
    EXPECT_EQ(Contents(File("shop.log")), expected);
    EXPECT_THROW(engine_.Find("nowhere"), Error);  // not told of
    EXPECT_THROW(engine_.CreateNewUser("ann", "", true, true, true), Error);
    expected += " \r\n" + Line(
                              "ERROR: User: ann Cannot Be Created!\r\nCause: User Already Exists "
                              "In DataBase");
    EXPECT_EQ(Contents(File("shop.log")), expected);
    engine_.TansactionAbort();
    expected += Line("<Transaction Aborted> ~Rolling Back~");
    engine_.LogedOnUser(nullptr);
    EXPECT_THROW(engine_.UserExists("ann"), Error);
    expected +=
        " \r\n11/15/2026 1:05:00 AM  [USER: ---]ERROR: User Should Log On To Be Able To Perform "
        "Any DataBase Activity!\r\n";
    EXPECT_EQ(Contents(File("shop.log")), expected);
}

// Each activity is written under its own switch and under no other.
TEST_F(LogTest, EverySwitchLetsItsOwnActivityThrough) {
    int round = 0;
    const auto name = [&](const char* stem) { return stem + std::to_string(round); };
    engine_.CreateNewPrimaryTable("Base", {"ID", "Other"});
    struct Case {
        std::size_t on;
        std::function<void()> act;
        std::function<std::string()> text;
    };
    const auto linked = [&] {
        engine_.CreateNewPrimaryTable(name("P"), {"F"});
        return engine_.CreateNewLinkedTable(name("P"), 0, {"ID"})->Key();
    };
    const Case cases[] = {
        {0, [&] { engine_.SaveDB(), engine_.LoadDB(File("shop.cdb")); },
         [&] { return "Log On: ann To " + File("shop.cdb"); }},
        {1, [&] { engine_.TransactionBegin(), engine_.TransactionCommit(); },
         [] { return "<Transaction Began>"; }},
        {1, [&] { engine_.TransactionBegin(), engine_.TransactionCommit(); },
         [] { return "<Transaction Committed>"; }},
        {2, [&] { engine_.ChangeOwner("ann"); },
         [] { return "OwnerShip Of DataBase shop.cdb Has Been Changed From ann To ann"; }},
        {3, [&] { engine_.CreateNewUser(name("u"), "", true, true, true); },
         [&] { return "New User Created: " + name("u") + " For shop.cdb"; }},
        {4, [&] { engine_.CreateNewPrimaryTable(name("T"), {"ID"}); },
         [&] { return "New Table Created: " + name("T"); }},
        {5, [&] { linked(); }, [&] { return "New Linked Table Created: " + name("FP"); }},
        {6, [&] { linked(), engine_.DeleteTable(name("P")); },
         [&] { return "Table Deleted: " + name("P"); }},
        {7, [&] { engine_.DeleteTable(linked()); },
         [&] { return "Linked Table Deleted: " + name("FP"); }},
        {8, [&] { linked(), engine_.LinkTables("Base", "Other", name("P")); },
         [&] { return "Tables Linking: Base And " + name("P"); }},
        {8, [&] { linked(), engine_.UnlinkTables(name("P"), name("FP")); },
         [&] { return "Tables Unlinking: " + name("P") + " And " + name("FP"); }},
        {10, [&] { engine_.AddRecord("Base", 1, {name("r")}); },
         [&] { return "New Record Added. Key: " + name("r") + " To Base"; }},
        {11,
         [&] {
             const auto record = engine_.AddRecord("Base", 1, {name("r")});
             engine_.UpDateRecord("Base", record, 1, {name("r"), "x"});
         },
         [&] { return "Record Updated. Key: " + name("r") + " In Base"; }},
        {12,
         [&] {
             engine_.AddRecord("Base", 1, {name("r")}), engine_.DeleteRecord("Base", name("r"));
         },
         [&] { return "Record Deleted. Key: " + name("r") + " From Base"; }},
        {13, [&] { EXPECT_THROW(engine_.GetTable(name("none")), Error); },
         [&] { return "ERROR: Table " + name("none") + " Not Found!"; }},
    };
    engine_.SaveDB();
    for (const Case& test : cases) {
        for (const bool on : {true, false}) {
            ++round;
            std::array<bool, 14> switches;
            switches.fill(!on);
            switches[test.on] = on;
            Switch(switches);
            test.act();
            engine_.SaveDB();
            const std::string log = Contents(File("shop.log"));
            const auto at = log.find("]" + test.text() + "\r\n");
            EXPECT_EQ(at != std::string::npos, on) << test.text();
            EXPECT_EQ(log.find(test.text() + "\r\n", on ? at + 2 : 0), std::string::npos);
            if (test.on != 13) {
                EXPECT_NE(engine_.LogReport().find(test.text() + "\r\n"), std::string::npos);
            }
            FileSystem::Current().Delete(File("shop.log"));
        }
    }
}

TEST_F(LogTest, ANameCannotStartALineOfTheFile) {
    engine_.LogDBActivities(false, false, false, false, true);
    engine_.CreateNewPrimaryTable("a\r\nERROR: b\nc", {"ID"});
    engine_.LogOn("eve\r\nfake", "");
    ActWith(Ownership);
    engine_.SaveDB();
    const std::string log = Contents(File("shop.log"));
    EXPECT_NE(log.find("New Table Created: a ERROR: b c\r\n"), std::string::npos);
    EXPECT_NE(log.find("[USER: eve fake]eve fake Has Logged On\r\n"), std::string::npos);
    EXPECT_NE(engine_.LogReport().find("New Table Created: a\r\nERROR: b\nc\r\n"),
              std::string::npos);
}

TEST_F(LogTest, IsInCodePage1252UntilACharacterIsOutsideIt) {
    engine_.LogDBActivities(false, false, false, false, true);
    engine_.SaveDB();
    FileSystem::Current().Delete(File("shop.log"));
    engine_.CreateNewPrimaryTable("Caf\u00E9 \u20AC", {"ID"});
    engine_.SaveDB();
    const std::string first = "\r\n" + Line("New Table Created: Caf\xE9 \x80") + saved_;
    EXPECT_EQ(Contents(File("shop.log")), first);
    engine_.CreateNewPrimaryTable("\u0141\u00F3d\u017A", {"ID"});
    engine_.SaveDB();
    std::string all = "\xEF\xBB\xBF\r\n" + Line("New Table Created: Caf\u00E9 \u20AC") + saved_ +
                      "\r\n" + Line("New Table Created: \u0141\u00F3d\u017A") + saved_;
    EXPECT_EQ(Contents(File("shop.log")), all);
    engine_.CreateNewPrimaryTable("\u00E9t\u00E9", {"ID"});
    engine_.SaveDB();
    all += "\r\n" + Line("New Table Created: \u00E9t\u00E9") + saved_;
    EXPECT_EQ(Contents(File("shop.log")), all);
}

TEST_F(LogTest, LinesOfOneDatabaseNeverReachAnothersFile) {
    engine_.LogDBActivities(true, false, false, false, true);
    engine_.CreateNewPrimaryTable("Items", {"ID"});
    engine_.SaveDB();
    engine_.CreateNewPrimaryTable("Lost", {"ID"});
    engine_.LogOn("ann", "secret");
    engine_.CreateNewDB("second", FolderPath());
    engine_.SaveDB();
    EXPECT_EQ(Contents(File("second.log")),
              "\r\n" + log_on_ + Line("DATABASE SAVED! As " + File("second.cdb")));
    EXPECT_EQ(Contents(File("shop.log")).find("Lost"), std::string::npos);
    engine_.LogDBActivities(false, false, false, false, true);
    engine_.CreateNewPrimaryTable("Gone", {"ID"});
    EXPECT_THROW(engine_.LoadDB(File("none.cdb")), Error);  // a failure drops no line
    engine_.SaveDB();
    EXPECT_NE(Contents(File("second.log")).find("Gone"), std::string::npos);
    engine_.CreateNewPrimaryTable("Lost", {"ID"});
    FileSystem::Current().Delete(File("shop.log"));
    engine_.LoadDB(File("shop.cdb"));
    engine_.SaveDB();
    EXPECT_EQ(Contents(File("shop.log")),
              "\r\n" + Line("Log On: ann To " + File("shop.cdb")) + saved_);
    engine_.OnTableCreation.Connect([&](const auto&) { engine_.LoadDB(File("second.cdb")); });
    engine_.CreateNewPrimaryTable("Elsewhere", {"ID"});
    engine_.SaveDB();
    EXPECT_EQ(Contents(File("second.log")).find("Elsewhere"), std::string::npos);
}

TEST_F(LogTest, PendingLinesAreKeptUntilTheyCanBeWritten) {
    std::filesystem::create_directory(folder_.path() / "shop.log");
    EXPECT_TRUE(engine_.SaveDB());
    // Those that do not wait elsewhere are no exception.
    engine_.LogDBActivities(false, true, false, false, true, false, false, false, false, false,
                            false, false, false, true);
    engine_.TransactionBegin();
    engine_.CreateNewPrimaryTable("Items", {"ID"});
    EXPECT_THROW(engine_.GetTable("none"), Error);
    std::filesystem::remove(folder_.path() / "shop.log");
    EXPECT_TRUE(engine_.SaveDB());
    EXPECT_EQ(Contents(File("shop.log")), "\r\n" + log_on_ + saved_ + Line("<Transaction Began>") +
                                              Line("New Table Created: Items") + " \r\n" +
                                              Line("ERROR: Table none Not Found!") + saved_);
}

TEST_F(LogTest, NeverTouchesADatabaseThatBearsTheNameOfTheLog) {
    const std::string other = folder_ / "xlog.dat";
    engine_.SaveDB({}, "xlog.dat");
    const std::string saved = Contents(other);
    CVLDBEngine engine;
    engine.LogOn("ann", "secret");
    engine.CreateNewDB("xcdb.dat", FolderPath());
    engine.SaveDB();
    EXPECT_EQ(Contents(other), saved);
    engine.DeleteDB(folder_ / "xcdb.dat");
    EXPECT_EQ(Contents(other), saved);
}

}  // namespace
}  // namespace tavolin
