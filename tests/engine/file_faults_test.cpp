// Every request to the machine fails once: the error is the right one, files are old or new and
// whole, the open database is as it was, and the same call succeeds when the fault has gone.
#include <map>
#include <optional>
#include <set>

#include "tests/support/engine_state.h"
#include "tests/support/invariants.h"

namespace tavolin {
namespace {

// What a call does to a folder in which shop.cdb, its log and other.cdb are, all ann's. shop.cdb is
// open, with a change that is not saved.
struct FileOperation {
    const char* member;
    std::function<void(CVLDBEngine&, const std::string& folder)> act;
    const char* writes;  // the file that it replaces, or ""
    // What any failure is, if not what the machine says; what a full disk is, if not 61.
    std::int32_t number = 0;
    std::int32_t full = kDiskFull;
    bool in_place = false;  // files that it makes are not whole after a failure
    bool once = false;      // it cannot be done a second time
};

const FileOperation kFileOperations[] = {
    {"SaveDB", [](auto& engine, auto&) { engine.SaveDB(); }, "shop.cdb"},
    {"SaveDB", [](auto& engine, auto&) { engine.SaveDB({}, "second", "pass", true); },
     "second.cdb"},
    {"TransactionCommit",
     [](auto& engine, auto&) {
         if (!engine.TransactionStarted()) engine.TransactionBegin();
         engine.TransactionCommit();
     },
     "shop.cdb"},
    {"loadDB", [](auto& engine, auto& folder) { engine.LoadDB(folder + "\\other.cdb"); }, "",
     Num::GetDBNotSetError(), Num::GetDBNotSetError()},
    {"DeleteDB",
     [](auto& engine, auto& folder) {
         if (MachineFileSystem().Exists(folder + "\\other.cdb"))
             engine.DeleteDB(folder + "\\other.cdb");
     },
     "other.cdb", Num::GetDBNotSetError(), 0},
    {"ChangeOwner",
     [](auto& engine, auto& folder) {
         engine.ChangeOwner("bob", "b", "Bob", "", folder + "\\other.cdb");
     },
     "other.cdb", Num::GetDBNotSetError(), 0, false, true},
    {"CVLDBOwnerSet:Refresh Method",
     [](auto& engine, auto& folder) {
         FileSystem& real = MachineFileSystem();
         // What was pruned stays so, and is there again when the file is next read.
         if (!real.Exists(folder + "\\third.cdb")) engine.CVLDBOwnerSet()->LoadRegistry();
         if (real.Exists(folder + "\\third.cdb")) real.Delete(folder + "\\third.cdb");
         engine.CVLDBOwnerSet()->Refresh();
     },
     "RDX.dat"},
    {"MakeItText", [](auto& engine, auto& folder) { engine.MakeItText(folder); }, "", 0, kDiskFull,
     true},
    {"MakeItHTML", [](auto& engine, auto& folder) { engine.MakeItHTML(folder); }, "", 0, kDiskFull,
     true},
    {"MakeItMDB", [](auto& engine, auto& folder) { engine.MakeItMDB(folder, "new."); }, "new.mdb",
     0, 3026, false, true},
};

// What the machine says and which error that is.
struct Fault {
    int code;
    std::int32_t number;
};
constexpr Fault kFaults[] = {{ENOSPC, kDiskFull},
                             {EACCES, kPathAccessError},
                             {EIO, kDeviceError},
                             {EROFS, kPermissionDenied}};

struct FileFaultsTest : StoppedClock, testing::Test {
    FileFaultsTest() {
        for (const char* name : {"third", "other", "shop"}) {
            NewDatabase engine(name, path_);
            engine.CreateNewPrimaryTable("T", {"ID", "Text"});
            engine.AddRecord("T", 1, {"1", std::string(name) + std::string(200, '.')});
            engine.LogDBActivities(true, true, true, true, true, true, true, true, true, true, true,
                                   true, true, false);
            engine.SaveDB();
        }
        before_ = Now();
        meant_before_ = Meaning(before_);
    }

    Folder Now() const { return FilesOf(library_.folder()); }
    void PutBack() const {
        for (const auto& entry : fs::directory_iterator(library_.folder().path())) {
            fs::remove_all(entry.path());
        }
        for (const auto& [name, contents] : before_) WriteContents(path_ + "\\" + name, contents);
    }
    // Owner and records of a database file; it must be a whole one.
    static std::string Summary(const CVLDBEngine& engine) {
        std::string text = engine.DBName() + " " + engine.DBOwner() + FaultsOf(engine);
        for (const auto& record : engine.CVLTableSet()->Lookup("T")->CVLRecordSet()->NewEnum()) {
            text += " " + record->Key();
        }
        return text;
    }
    // What counts: the registry's entries in any order, and nothing of the logs.
    Folder Meaning(Folder files) const {
        std::erase_if(files, [](const auto& file) { return file.first.ends_with(".log"); });
        CVLDBEngine engine;
        engine.LogOn("eve", "");
        std::set<std::string> entries;
        for (const std::string& owner : engine.GetArrayOwners()) {
            if (owner.empty()) continue;
            for (const std::string& path : engine.GetArrayOwnedDBs(owner)) {
                entries.insert(owner + path + "\n");
            }
        }
        std::string& registry = files["RDX.dat"];
        registry.clear();
        for (const std::string& entry : entries) registry += entry;
        return files;
    }

    struct Outcome {
        std::optional<Error> error;
        std::vector<std::string> calls;
        bool failed;
    };
    // One try with that call failing, or none for 0; the second try.
    Outcome Try(const FileOperation& operation, std::size_t nth, int code, bool short_writes) {
        PutBack();
        CVLDBEngine engine;
        Open(engine, path_ + "\\shop.cdb");
        engine.AddRecord("T", 2, {"2", "new"});
        const std::string open = Summary(engine);
        const auto tables = engine.CVLTableSet();
        Outcome outcome;
        FailingFileSystem files;
        files.FailCall(nth, code);
        if (short_writes) files.LimitWrites(100);
        {
            const ScopedFileSystem scope(files);
            try {
                operation.act(engine, path_);
            } catch (const Error& error) {
                outcome.error = error;
            }
        }
        outcome.failed = files.failed();
        outcome.calls = files.calls();
        EXPECT_TRUE(nth > 0 || !outcome.error) << "no fault, and yet a failure";
        if (nth == 0) CheckOrder(outcome.calls);
        if (outcome.error) {
            CheckFiles(operation);
            // A save under another name that only the registry or the folder did not follow.
            const bool done = MachineFileSystem().Exists(path_ + "\\second.cdb");
            EXPECT_EQ(engine.CVLTableSet(), tables);
            EXPECT_TRUE(Summary(engine) == open || done) << Summary(engine);
            EXPECT_EQ(StateOf(engine), Ownership);
            const std::string other = path_ + "\\other.cdb";
            const bool listed = Listed(engine, "ann").find(other) != std::string::npos;
            EXPECT_TRUE(listed == MachineFileSystem().Exists(other) || operation.once) << "listed";
            // Who has given a database away cannot do so again, nor add a table to an export twice.
            if (operation.once && Now()[operation.writes] == done_[operation.writes]) {
                return outcome;
            }
            EXPECT_NO_THROW(operation.act(engine, path_));
        }
        const Folder now = Meaning(Now());
        if (nth == 0 && !short_writes) done_ = now;
        EXPECT_TRUE(now == done_) << Difference(now, done_);
        return outcome;
    }

    // A power cut finds the new file on the disk before its name, and that before the call ends.
    static void CheckOrder(std::vector<std::string> calls) {
        std::erase(calls, "lock folder");
        for (std::size_t i = 0; i < calls.size(); ++i) {
            if (calls[i] != "rename") continue;
            ASSERT_TRUE(i >= 2 && i + 1 < calls.size());
            EXPECT_EQ(calls[i - 2] + ", " + calls[i - 1], "flush, close");
            EXPECT_EQ(calls[i + 1], "flush folder");
        }
    }

    // Those that were there are whole and the old or the new ones, and nothing lies about.
    void CheckFiles(const FileOperation& operation) const {
        const Folder now = Meaning(Now());
        for (const auto& [name, contents] : meant_before_) {
            const bool touched = name == operation.writes || name == "RDX.dat";
            const auto found = now.find(name);
            const auto wanted = done_.find(name);
            const bool gone = found == now.end();
            if (gone) {
                EXPECT_TRUE(wanted == done_.end()) << name << " is gone";
                continue;
            }
            const bool is_new = wanted != done_.end() && found->second == wanted->second;
            EXPECT_TRUE(found->second == contents || (touched && is_new)) << name;
        }
        for (const auto& [name, contents] : now) {
            const bool wanted = done_.contains(name);
            EXPECT_TRUE(before_.contains(name) || wanted) << name << " lies about";
            if (wanted && !before_.contains(name) && !operation.in_place) {
                EXPECT_TRUE(contents == done_.at(name)) << name << " is not whole";
            }
        }
    }
    ScopedLibraryFolder library_;
    const std::string path_ = PortablePath(library_.folder().path());
    Folder before_;
    Folder meant_before_;
    Folder done_;
};

TEST_F(FileFaultsTest, EachCallMayFail) {
    for (const FileOperation& operation : kFileOperations) {
        Try(operation, 0, 0, false);
        Try(operation, 0, 0, true);
        for (const Fault& fault : kFaults) {
            for (std::size_t nth = 1;; ++nth) {
                SCOPED_TRACE(operation.member + (", call " + std::to_string(nth)) + ", code " +
                             std::to_string(fault.code));
                const Outcome outcome = Try(operation, nth, fault.code, false);
                if (!outcome.failed) {
                    EXPECT_GT(nth, 3u);
                    break;
                }
                SCOPED_TRACE(outcome.calls[nth - 1]);
                if (!outcome.error) continue;  // done, or the test has failed already
                const std::int32_t machine =
                    fault.code == ENOSPC && operation.full != 0 ? operation.full : fault.number;
                const std::int32_t number = outcome.error->number();
                EXPECT_TRUE(number == machine || number == fault.number ||
                            (operation.number != 0 && number == operation.number))
                    << number;
                EXPECT_EQ(outcome.error->source(), SourceNamed(operation.member));
            }
        }
    }
}

}  // namespace
}  // namespace tavolin
