// Several engines at one file: what they see of each other, and that none takes another's away.
#include <functional>
#include <utility>

#include "tavolin/persist/paths.h"
#include "tests/support/engine_state.h"

namespace tavolin {
namespace {

struct OtherEnginesTest : EngineTest {
    OtherEnginesTest() {
        engine_.CreateNewPrimaryTable("T", {"ID"});
        engine_.SaveDB();
    }
    // Somebody else adds a record and saves.
    void Meanwhile(const char* key) const {
        CVLDBEngine other;
        Open(other, file_);
        other.AddRecord("T", 1, {key});
        other.SaveDB();
    }
    const std::string file_ = folder_ / "shop.cdb";
};

TEST_F(OtherEnginesTest, AFileIsChangedWhenItHoldsAnotherState) {
    const fs::path path = NativePath(file_);
    EXPECT_FALSE(engine_.FileChangedByOthers());
    const std::string own = Contents(file_);
    const auto moment = fs::last_write_time(path);
    Meanwhile("1");
    EXPECT_TRUE(engine_.FileChangedByOthers());
    const std::string theirs = Contents(file_);
    const struct {
        const char* what;
        std::string contents;
        bool changed;
    } cases[] = {
        {"the same again", own, false},
        {"with a tail", own + "tail", false},
        {"cut to nothing", "", true},
        {"cut", own.substr(0, 30), true},
        {"one bit of the checksum", own.substr(0, 30) + '~' + own.substr(31), true},
        {"something else", "something else that is longer than the beginning looked at", true},
        {"theirs", theirs, true}};
    for (const auto& test : cases) {
        WriteContents(file_, test.contents);
        fs::last_write_time(path, moment);  // which proves nothing
        EXPECT_EQ(engine_.FileChangedByOthers(), test.changed) << test.what;
    }
    CVLDBEngine loaded;
    Open(loaded, file_);
    EXPECT_FALSE(loaded.FileChangedByOthers());
    engine_.SaveDB();  // allowed, as long as nobody has asked for it not to be
    EXPECT_FALSE(engine_.FileChangedByOthers());
    EXPECT_TRUE(loaded.FileChangedByOthers());
    fs::remove(path);
    EXPECT_FALSE(loaded.FileChangedByOthers());
    fs::create_directory(path);
    ExpectError(75, "CVLDBEngine:FileChangedByOthers Method", "Path/File access error",
                [&] { loaded.FileChangedByOthers(); });
    fs::create_directory(folder_.path() / "sub");
    loaded.SaveDB(folder_ / "sub");
    fs::remove_all(folder_.path() / "sub");
    EXPECT_FALSE(loaded.FileChangedByOthers());
    CVLDBEngine none;
    EXPECT_FALSE(none.FileChangedByOthers());
}

TEST_F(OtherEnginesTest, WhoKeepsChangesOfOthersIsRefused) {
    engine_.KeepChangesOfOthers(true);
    engine_.AddRecord("T", 1, {"mine"});
    Meanwhile("theirs");
    const std::string theirs = Contents(file_);
    const std::string text =
        "DataBase Cannot Be Saved!\r\nCause: Another DataBase With Same Name "
        "Was Detected And Cannot Be Overwritten!";
    const auto refused = [&](const char* member, auto&& body) {
        ExpectError(CVLErrorNum::GetDBOverwriteError(), member, text, body);
        EXPECT_EQ(Contents(file_), theirs);
        EXPECT_TRUE(engine_.FileChangedByOthers());
    };
    refused("CVLDBEngine:SaveDB Method", [&] { engine_.SaveDB(); });
    engine_.TransactionBegin();
    refused("CVLDBEngine:TransactionCommit Method", [&] { engine_.TransactionCommit(); });
    EXPECT_EQ(engine_.GetTable("T")->Count(), 1);
    engine_.SaveDB({}, "copy");
    EXPECT_FALSE(engine_.FileChangedByOthers());
    // A name that somebody else has taken since the database was created.
    CVLDBEngine first, second;
    for (CVLDBEngine* engine : {&first, &second}) {
        engine->LogOn("ann", "secret");
        engine->CreateNewDB("new", FolderPath());
        engine->KeepChangesOfOthers(true);
    }
    second.SaveDB();
    ExpectError(CVLErrorNum::GetDBOverwriteError(), "CVLDBEngine:SaveDB Method", text,
                [&] { first.SaveDB(); });
}

// Somebody else saves when the new file is written and about to be put in place.
TEST_F(OtherEnginesTest, TheFileIsLookedAtAgainWhenTheFolderIsLocked) {
    struct LateSaver final : ForwardingFileSystem {
        explicit LateSaver(std::function<void()> then) : save(std::move(then)) {}
        bool Asked(std::string_view call, std::string_view, std::string_view) override {
            if (call == "lock folder" && save) std::exchange(save, {})();
            return true;
        }
        std::function<void()> save;
    };
    engine_.KeepChangesOfOthers(true);
    LateSaver files([&] { Meanwhile("late"); });
    const ScopedFileSystem scope(files);
    EXPECT_EQ(ErrorNumber([&] { engine_.SaveDB(); }), CVLErrorNum::GetDBOverwriteError());
    CVLDBEngine now;
    Open(now, file_);
    EXPECT_EQ(now.GetTable("T")->Count(), 1);
}

// A save of which the last step of all fails leaves this engine's own state in the file.
TEST_F(OtherEnginesTest, WhatAFailedSaveLeftIsNoChangeOfOthers) {
    engine_.KeepChangesOfOthers(true);
    int round = 0;
    FailEachCall(
        [&] {
            engine_.AddRecord("T", 1, {std::to_string(++round)});
            engine_.SaveDB();
        },
        [&](const std::string& call, bool) {
            EXPECT_FALSE(engine_.FileChangedByOthers()) << call;
            EXPECT_NO_THROW(engine_.SaveDB()) << call;
        });
    // Nor is it another's file, whichever way the next save goes there.
    FailEachCall([&] { engine_.SaveDB({}, "new" + std::to_string(++round)); },
                 [&](const std::string& call, bool) {
                     const std::string name = std::to_string(round);
                     const std::string there = folder_ / ("new" + name + ".cdb");
                     if (!FileExists(there)) return;
                     std::filesystem::create_hard_link(NativePath(there),
                                                       folder_.path() / ("way" + name + ".cdb"));
                     EXPECT_NO_THROW(engine_.SaveDB({}, "way" + name)) << call;
                 });
    // To another database that is opened then, it is.
    FailEachCall([&] { engine_.SaveDB({}, "new" + std::to_string(++round)); },
                 [&](const std::string& call, bool) {
                     engine_.LoadDB(file_);
                     const std::string name = "new" + std::to_string(round);
                     const bool there = FileExists(folder_ / (name + ".cdb"));
                     EXPECT_EQ(ErrorNumber([&] { engine_.SaveDB({}, name); }),
                               there ? N::GetDBOverwriteError() : 0)
                         << call;
                 });
}

TEST_F(OtherEnginesTest, TheRegistryKeepsWhatEachOfThemDid) {
    const std::string shop = file_ + ";";
    CVLDBEngine one, two;
    const auto create = [&](CVLDBEngine& engine, const char* user, const char* name) {
        engine.CreateNewDB(name, FolderPath());
        engine.SaveDB();
        return std::string(user) + name;
    };
    // Both have read the registry before either writes.
    one.LogOn("ann", "secret");
    two.LogOn("bob", "b");
    create(one, "ann", "a");
    create(two, "bob", "b");
    create(one, "ann", "c");
    const std::string a = folder_ / "a.cdb", b = folder_ / "b.cdb", c = folder_ / "c.cdb";
    EXPECT_EQ(OnDisk("ann"), shop + a + ";" + c + ";");
    EXPECT_EQ(OnDisk("bob"), b + ";");
    // What one deletes and another hands over is gone for both; a third's save brings nothing back.
    engine_.DeleteDB(c);
    one.ChangeOwner("bob", "b", "", "", a);
    two.SaveDB();
    EXPECT_EQ(OnDisk("ann"), shop);
    EXPECT_EQ(OnDisk("bob"), b + ";" + a + ";");
    // A database that somebody else deleted is listed again when it is saved again.
    two.DeleteDB(b);
    EXPECT_EQ(OnDisk("bob"), a + ";");
    two.SaveDB();
    EXPECT_EQ(OnDisk("bob"), a + ";" + b + ";");
    // So does what a host changes in the set itself; Refresh drops what this engine never heard of.
    one.LogOn("ann", "secret");
    one.CVLDBOwnerSet()->Item("bob")->CVLOwnerDBSet()->Item(1)->DBName("other name");
    one.CVLDBOwnerSet()->Add("cid")->CVLOwnerDBSet()->Add("x", "no such folder");
    create(two, "bob", "d");
    std::filesystem::remove(NativePath(folder_ / "d.cdb"));
    std::filesystem::remove(NativePath(b));
    one.CVLDBOwnerSet()->Refresh();
    EXPECT_EQ(OnDisk("cid"), JoinPath("no such folder", "x") + ";");
    EXPECT_EQ(OnDisk("bob"), a + ";");
    CVLDBEngine after;
    after.LogOn("eve", "");
    EXPECT_EQ(after.CVLDBOwnerSet()->Item("bob")->CVLOwnerDBSet()->Item(1)->DBName(), "other name");
}

}  // namespace
}  // namespace tavolin
