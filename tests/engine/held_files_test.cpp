// Files that another program has open without sharing them, which only this system lets it do.
#ifdef _WIN32

#define WIN32_LEAN_AND_MEAN
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <map>

#include "tests/support/engine_state.h"
#include "tests/support/invariants.h"

namespace tavolin {
namespace {

// Keeps a file open until the end of the scope.
class Holder {
  public:
    Holder(const std::string& path, DWORD share)
        : handle_(::CreateFileW(NativePath(path).c_str(), GENERIC_READ, share, nullptr,
                                OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr)) {
        EXPECT_NE(handle_, INVALID_HANDLE_VALUE) << path;
    }
    ~Holder() { ::CloseHandle(handle_); }
    Holder(const Holder&) = delete;
    Holder& operator=(const Holder&) = delete;

  private:
    HANDLE handle_;
};

struct HeldFile {
    const char* name;
    DWORD share;  // what its holder lets others do
    const char* source;
    std::int32_t number;
    std::function<void(CVLDBEngine&, const std::string& folder)> act;
    const char* writes;   // the one file that is new after a failure, or ""
    const char* changes;  // the one that is another or gone after the second try, or ""
};

void SaveHeld(CVLDBEngine& engine, const std::string&) { engine.SaveDB(); }
void DeleteHeld(CVLDBEngine& engine, const std::string& folder) {
    engine.DeleteDB(folder + "\\other.cdb");
}

const HeldFile kHeldFiles[] = {
    {"shop.cdb", 0, "CVLDBEngine:SaveDB Method", kPermissionDenied, SaveHeld, "", "shop.cdb"},
    {"shop.cdb", FILE_SHARE_READ, "CVLDBEngine:SaveDB Method", kPermissionDenied, SaveHeld, "",
     "shop.cdb"},
    {"shop.cdb", 0, "CVLDBEngine:TransactionCommit Method", kPermissionDenied,
     [](auto& engine, auto&) {
         engine.TransactionBegin();
         engine.TransactionCommit();
     },
     "", "shop.cdb"},
    {"RDX.dat", 0, "CVLDBEngine:SaveDB Method", kPermissionDenied, SaveHeld, "shop.cdb",
     "shop.cdb"},
    {"other.cdb", 0, "CVLDBEngine:loadDB Method", CVLErrorNum::GetDBNotSetError(),
     [](auto& engine, auto& folder) { engine.LoadDB(folder + "\\other.cdb"); }, "", ""},
    {"other.cdb", 0, "CVLDBEngine:DeleteDB Method", CVLErrorNum::GetDBNotSetError(), DeleteHeld, "",
     "other.cdb"},
    {"other.cdb", FILE_SHARE_READ, "CVLDBEngine:DeleteDB Method", kPermissionDenied, DeleteHeld, "",
     "other.cdb"},
    {"RDX.dat", 0, "CVLDBEngine:DeleteDB Method", kPermissionDenied, DeleteHeld, "", "other.cdb"},
    {"other.cdb", FILE_SHARE_READ, "CVLDBEngine:ChangeOwner Method", kPermissionDenied,
     [](auto& engine, auto& folder) {
         engine.ChangeOwner("bob", "b", "", "", folder + "\\other.cdb");
     },
     "", "other.cdb"},
    {"out.mdb", 0, "CVLDBEngine:MakeItMDB Method", kPermissionDenied,
     [](auto& engine, auto& folder) { engine.MakeItMDB(folder, "out."); }, "", "out.mdb"},
    {"out.txt", 0, "CVLDBEngine:MakeItText Method", kPermissionDenied,
     [](auto& engine, auto& folder) { engine.MakeItText(folder, "out."); }, "", "out.txt"},
};

using HeldFolder = std::map<std::string, std::string>;  // names and contents

// "other" and "shop" are ann's and saved, the latter is open; out.mdb and out.txt tell of the
// former.
class HeldFilesTest : public EngineTest, public testing::WithParamInterface<HeldFile> {
  protected:
    HeldFilesTest() {
        CVLDBEngine other;
        other.LogOn("ann", "secret");
        other.CreateNewDB("other", FolderPath());
        other.CreateNewPrimaryTable("U", {"ID"});
        other.SaveDB();
        other.MakeItMDB(FolderPath(), "out.");
        other.MakeItText(FolderPath(), "out.");
        engine_.LogOn("ann", "secret");
        engine_.DBLegalUser(owner_ = engine_.LogedOnUser(), Ownership);
        engine_.CreateNewPrimaryTable("T", {"ID"});
        engine_.SaveDB();
    }
    HeldFolder Now() const {
        HeldFolder files;
        for (const auto& entry : std::filesystem::directory_iterator(folder_.path())) {
            const std::string name = entry.path().filename().string();
            if (!name.ends_with(".log") && name != "RDX.dat")
                files[name] = Contents(folder_ / name);
        }
        return files;
    }
    static std::string Difference(const HeldFolder& a, const HeldFolder& b) {
        std::string names;
        for (const HeldFolder& files : {a, b}) {
            for (const auto& [name, contents] : files) {
                const bool same = a.contains(name) && b.contains(name) && a.at(name) == b.at(name);
                if (!same && names.find(name) == names.npos) names += name;
            }
        }
        return names;
    }
    // Whether "other" is listed in the registry, in memory and on the disk.
    std::string OthersListing() const {
        CVLDBEngine eve;
        eve.LogOn("eve", "");
        std::string text;
        for (const CVLDBEngine* engine :
             std::initializer_list<const CVLDBEngine*>{&engine_, &eve}) {
            for (const char* owner : {"ann", "bob"}) {
                if (Listed(*engine, owner).find("other.cdb") != std::string::npos) text += owner;
            }
        }
        return text;
    }
};

TEST_P(HeldFilesTest, NothingIsLostAndTheSecondTrySucceeds) {
    const HeldFile& held = GetParam();
    engine_.AddRecord("T", 1, {"1"});
    const HeldFolder before = Now();
    {
        const Holder holder(folder_ / held.name, held.share);
        const bool unread = held.number == CVLErrorNum::GetDBNotSetError();
        ExpectError(held.number, held.source,
                    unread ? "DataBase Cannot Be Read!\r\nCause: DataBase Might Be Empty!"
                           : GetErrorMessage(held.number),
                    [&] { held.act(engine_, FolderPath()); });
    }
    EXPECT_EQ(Difference(before, Now()), held.writes);
    EXPECT_EQ(OthersListing(), "annann");
    EXPECT_NO_THROW(engine_.AddRecord("T", 2, {"2"}));
    EXPECT_EQ(engine_.GetTable("T")->Count(), 2);
    EXPECT_EQ(FaultsOf(engine_), "");
    EXPECT_NO_THROW(held.act(engine_, FolderPath()));
    EXPECT_EQ(FaultsOf(engine_), "");
    EXPECT_EQ(Difference(before, Now()), held.changes);
}

INSTANTIATE_TEST_SUITE_P(Each, HeldFilesTest, testing::ValuesIn(kHeldFiles));

// A registry that cannot be read for the moment is neither forgotten nor put aside, and a log that
// cannot be written keeps nobody from saving.
TEST_F(HeldFilesTest, ARegistryAndALogAreWaitedFor) {
    const std::string log = folder_ / "shop.log";
    WriteContents(log, "");
    engine_.LogDBActivities(true, true, true, true, true, true, true, true, true, true, true, true,
                            true, true);
    for (const DWORD share : {DWORD{0}, DWORD{FILE_SHARE_DELETE}}) {
        {
            const Holder registry(folder_ / "RDX.dat", share);
            const Holder holder(log, share);
            EXPECT_TRUE(engine_.LogOn("ann", "secret"));
            engine_.DBLegalUser(engine_.LogedOnUser(), Ownership);
            engine_.AddRecord("T", 1, {std::to_string(share)});
            ExpectError(kPermissionDenied, "CVLDBEngine:SaveDB Method",
                        GetErrorMessage(kPermissionDenied), [&] { engine_.SaveDB(); });
        }
        EXPECT_TRUE(engine_.SaveDB());
        CVLDBEngine eve;
        eve.LogOn("eve", "");
        EXPECT_EQ(Listed(eve, "ann"), (folder_ / "other.cdb") + ";" + (folder_ / "shop.cdb") + ";");
        EXPECT_NE(Contents(log).find("Key: " + std::to_string(share) + " To T"), std::string::npos);
        EXPECT_EQ(Now().count("RDX.dat.unreadable"), 0u);
    }
}

}  // namespace
}  // namespace tavolin

#endif
