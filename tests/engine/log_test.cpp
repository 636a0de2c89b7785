// The log file byte by byte, and what waits for the next save.
#include <array>
#include <functional>

#include "tavolin/base/text.h"
#include "tests/support/engine_state.h"

namespace tavolin {
namespace {

struct LogTest : StoppedClock, EngineTest {
    // The lines of a file, its end included, in which every line is as the clock and ann make it.
    static std::string Line(const std::string& text) {
        return "11/15/2026 1:05:00 AM  [USER: ann]" + text + "\r\n";
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
        std::string text;  // with the round for "#"
    };
    const auto linked = [&] {
        engine_.CreateNewPrimaryTable(name("P"), {"F"});
        return engine_.CreateNewLinkedTable(name("P"), 0, {"ID"})->Key();
    };
    const auto commit = [&] { engine_.TransactionBegin(), engine_.TransactionCommit(); };
    const auto add = [&] { return engine_.AddRecord("Base", 1, {name("r")}); };
    const Case cases[] = {
        {0, [&] { engine_.SaveDB(), engine_.LoadDB(File("shop.cdb")); },
         "Log On: ann To " + File("shop.cdb")},
        {1, commit, "<Transaction Began>"},
        {1, commit, "<Transaction Committed>"},
        {2, [&] { engine_.ChangeOwner("ann"); },
         "OwnerShip Of DataBase shop.cdb Has Been Changed From ann To ann"},
        {3, [&] { engine_.CreateNewUser(name("u"), "", true, true, true); },
         "New User Created: u# For shop.cdb"},
        {4, [&] { engine_.CreateNewPrimaryTable(name("T"), {"ID"}); }, "New Table Created: T#"},
        {5, linked, "New Linked Table Created: FP#"},
        {6, [&] { linked(), engine_.DeleteTable(name("P")); }, "Table Deleted: P#"},
        {7, [&] { engine_.DeleteTable(linked()); }, "Linked Table Deleted: FP#"},
        {8, [&] { linked(), engine_.LinkTables("Base", "Other", name("P")); },
         "Tables Linking: Base And P#"},
        {8, [&] { linked(), engine_.UnlinkTables(name("P"), name("FP")); },
         "Tables Unlinking: P# And FP#"},
        {10, add, "New Record Added. Key: r# To Base"},
        {11,
         [&] {
             engine_.UpDateRecord("Base", add(), 1, {name("r"), "x"});
         },
         "Record Updated. Key: r# In Base"},
        {12, [&] { add(), engine_.DeleteRecord("Base", name("r")); },
         "Record Deleted. Key: r# From Base"},
        {13, [&] { EXPECT_THROW(engine_.GetTable(name("none")), Error); },
         "ERROR: Table none# Not Found!"},
    };
    engine_.SaveDB();
    for (const Case& test : cases) {
        for (const bool on : {true, false}) {
            ++round;
            std::array<bool, 14> log;
            log.fill(!on);
            log[test.on] = on;
            std::apply([&](auto... each) { engine_.LogDBActivities(each...); }, log);
            test.act();
            engine_.SaveDB();
            const std::string file = Contents(File("shop.log"));
            const std::string line = ReplaceFold(test.text, "#", std::to_string(round)) + "\r\n";
            const auto at = file.find("]" + line);
            EXPECT_EQ(at != std::string::npos, on) << line;
            EXPECT_EQ(file.find(line, on ? at + 2 : 0), std::string::npos);
            EXPECT_TRUE(test.on == 13 || engine_.LogReport().find(line) != std::string::npos);
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
    NewDatabase engine("xcdb.dat", FolderPath());
    engine.SaveDB();
    EXPECT_EQ(Contents(other), saved);
    engine.DeleteDB(folder_ / "xcdb.dat");
    EXPECT_EQ(Contents(other), saved);
}

}  // namespace
}  // namespace tavolin
