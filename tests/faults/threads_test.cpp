// Engines in different threads, each with files of its own, do not disturb each other. Built with
// the thread sanitizer by scripts/test.
#include <atomic>
#include <barrier>
#include <thread>

#include "tests/support/engine_state.h"
#include "tests/support/invariants.h"

namespace tavolin {
namespace {

constexpr int kThreads = 4;
constexpr int kRounds = 6;

// All that an engine does, with a name that is this thread's own.
std::string Work(const std::string& folder, const std::string& name) {
    std::string told;
    CVLDBEngine engine;
    engine.OnRecordAdd.Connect([&](const auto& record) { told += record->Key(); });
    engine.LogOn(name, "secret");
    engine.CreateNewDB(name, folder);
    LogEverything(engine);
    engine.CreateNewPrimaryTable("Orders", {"ID", "Buyer"});
    engine.CreateNewPrimaryTable("Buyers", {"ID"});
    engine.LinkTables("Orders", 1, "Buyers");
    for (int i = 0; i < 50; ++i) {
        engine.AddRecord("Orders", i, {name + std::to_string(i), "\u0416\u00E9" + name});
    }
    engine.TransactionBegin();
    engine.DeleteRecord("Orders", 1);
    engine.GetTable("Orders")->Sort(1);
    engine.TansactionAbort();
    engine.SaveDB();
    Open(engine, folder + "\\" + name + ".cdb", name.c_str());
    engine.Find("\u0436\u00C9" + name);
    try {
        engine.GetTable("none");
        told += "found";
    } catch (const Error& error) {
        told += error.description();
    }
    engine.MakeItText(folder);
    engine.MakeItHTML(folder);
    engine.MakeItMDB(folder, name + ".");
    const CVLRecord free_standing;  // belongs to this thread's engine
    told += FaultsOf(engine) + engine.LogReport().substr(0, 40) + engine.DBOwner();
    const bool mine =
        Contents(folder + "\\" + name + ".log").find("[USER: " + name) != std::string::npos;
    engine.DeleteDB(folder + "\\" + name + ".cdb");
    return told + (mine ? "" : "no log of one's own");
}

TEST(ThreadsTest, EnginesDoNotDisturbEachOther) {
    ScopedLibraryFolder library;
    const std::string root = PortablePath(library.folder().path());
    std::atomic<int> wrong = 0;
    std::barrier start(kThreads);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            const std::string name = "user" + std::to_string(t);
            const std::string folder = root + "\\" + name;
            MachineFileSystem().CreateFolder(folder);
            std::string first;
            start.arrive_and_wait();
            for (int i = 0; i < kRounds; ++i) {
                const std::string told = Work(folder, name);
                if (i == 0) first = told;
                if (told.empty() || told != first) ++wrong;
                MachineFileSystem().Delete(folder + "\\" + name + ".mdb");
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(wrong, 0);
}

// So many records that threads share a search, and that a transaction's state takes the memory of
// the one before.
TEST(ThreadsTest, ALargeTableIsSearchedByPartsAndTakenBackWhole) {
    constexpr int kRecords = 100'000;
    constexpr int kEvery = 7;
    ScopedLibraryFolder library;
    CVLDBEngine engine;
    engine.LogOn("olga", "secret");
    engine.CreateNewDB("large", PortablePath(library.folder().path()));
    engine.CreateNewPrimaryTable("Orders", {"ID", "Buyer", "Remark"});
    const auto table = [&] { return engine.GetTable("Orders"); };
    std::vector<std::string> expected;
    for (int i = 0; i < kRecords; ++i) {
        const std::string key = std::to_string(i);
        const bool wanted = i % kEvery == 0;
        table()->Add(engine.CVLTableSet(), 1,
                     {key, wanted ? "St\u00C9phanie" : "Stephan", std::string(40, 'x')});
        if (wanted) expected.push_back(key);
    }
    const auto found = [&](int field) {
        std::vector<std::string> keys;
        const auto result = table()->Find("\u00E9PH", false, field);
        for (const auto& record : result->CVLRecordSet()->NewEnum()) keys.push_back(record->Key());
        return keys;
    };
    for (int round = 0; round < 3; ++round) {
        SCOPED_TRACE(round);
        EXPECT_EQ(found(1), expected);
        EXPECT_EQ(found(kNoField), expected);
        engine.TransactionBegin();
        for (int i = round; i < kRecords; i += 1000) {
            engine.DeleteRecord("Orders", std::to_string(i));
            engine.AddRecord("Orders", 1, {"new" + std::to_string(i), "st\u00E9phane"});
        }
        EXPECT_NE(found(1), expected);
        engine.TansactionAbort();
        EXPECT_EQ(table()->Count(), kRecords);
    }
    EXPECT_EQ(found(1), expected);
}

}  // namespace
}  // namespace tavolin
