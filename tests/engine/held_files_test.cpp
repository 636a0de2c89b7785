// Files that another program has open without sharing them, which only this system lets it do.
#define WIN32_LEAN_AND_MEAN
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

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
    const char* member;
    std::int32_t number;
    std::function<void(CVLDBEngine&, const std::string& folder)> act;
    const char* writes;   // the one file that is new after a failure, or ""
    const char* changes;  // the one that is another or gone after the second try, or ""
};

void SaveHeld(CVLDBEngine& engine, const std::string&) { engine.SaveDB(); }
void CommitHeld(CVLDBEngine& engine, const std::string&) {
    engine.TransactionBegin();
    engine.TransactionCommit();
}
void LoadHeld(CVLDBEngine& engine, const std::string& in) { engine.LoadDB(in + "other.cdb"); }
void DeleteHeld(CVLDBEngine& engine, const std::string& in) { engine.DeleteDB(in + "other.cdb"); }
void HandOverHeld(CVLDBEngine& engine, const std::string& in) {
    engine.ChangeOwner("bob", "b", "", "", in + "other.cdb");
}
void MakeMDBHeld(CVLDBEngine& engine, const std::string& in) { engine.MakeItMDB(in, "out."); }
void MakeTextHeld(CVLDBEngine& engine, const std::string& in) { engine.MakeItText(in, "out."); }

constexpr std::int32_t kHeld = kPermissionDenied, kUnread = CVLErrorNum::GetDBNotSetError();
const HeldFile kHeldFiles[] = {
    {"shop.cdb", 0, "SaveDB", kHeld, SaveHeld, "", "shop.cdb "},
    {"shop.cdb", FILE_SHARE_READ, "SaveDB", kHeld, SaveHeld, "", "shop.cdb "},
    {"shop.cdb", 0, "TransactionCommit", kHeld, CommitHeld, "", "shop.cdb "},
    {"RDX.dat", 0, "SaveDB", kHeld, SaveHeld, "shop.cdb ", "shop.cdb "},
    {"other.cdb", 0, "loadDB", kUnread, LoadHeld, "", ""},
    {"other.cdb", 0, "DeleteDB", kUnread, DeleteHeld, "", "other.cdb "},
    {"other.cdb", FILE_SHARE_READ, "DeleteDB", kHeld, DeleteHeld, "", "other.cdb "},
    {"RDX.dat", 0, "DeleteDB", kHeld, DeleteHeld, "", "other.cdb "},
    {"other.cdb", FILE_SHARE_READ, "ChangeOwner", kHeld, HandOverHeld, "", "other.cdb "},
    {"out.mdb", 0, "MakeItMDB", kHeld, MakeMDBHeld, "", "out.mdb "},
    {"out.txt", 0, "MakeItText", kHeld, MakeTextHeld, "", "out.txt "},
};

// "other" and "shop" are ann's and saved, the latter is open; out.mdb and out.txt tell of "other".
struct HeldFilesTest : EngineTest, testing::WithParamInterface<HeldFile> {
    HeldFilesTest() {
        NewDatabase other("other", FolderPath());
        other.CreateNewPrimaryTable("U", {"ID"});
        other.SaveDB();
        other.MakeItMDB(FolderPath(), "out.");
        other.MakeItText(FolderPath(), "out.");
        engine_.LogOn("ann", "secret");
        engine_.DBLegalUser(owner_ = engine_.LogedOnUser(), Ownership);
        engine_.CreateNewPrimaryTable("T", {"ID"});
        engine_.SaveDB();
    }
    Folder Now() const {
        Folder files = FilesOf(folder_);
        std::erase_if(files, [](const auto& file) {
            return file.first.ends_with(".log") || file.first == "RDX.dat";
        });
        return files;
    }
};

TEST_P(HeldFilesTest, NothingIsLostAndTheSecondTrySucceeds) {
    const HeldFile& held = GetParam();
    engine_.AddRecord("T", 1, {"1"});
    const Folder before = Now();
    {
        const Holder holder(folder_ / held.name, held.share);
        ExpectError(held.number, SourceNamed(held.member),
                    held.number == kUnread
                        ? "DataBase Cannot Be Read!\r\nCause: DataBase Might Be Empty!"
                        : GetErrorMessage(held.number),
                    [&] { held.act(engine_, folder_ / ""); });
    }
    EXPECT_EQ(Difference(before, Now()), held.writes);
    EXPECT_EQ(Listed(engine_, "bob") + OnDisk("bob"), "");
    for (const std::string& listed : {Listed(engine_, "ann"), OnDisk("ann")})
        EXPECT_NE(listed.find("other.cdb"), std::string::npos);
    EXPECT_NO_THROW(engine_.AddRecord("T", 2, {"2"}));
    EXPECT_EQ(engine_.GetTable("T")->Count(), 2);
    EXPECT_EQ(FaultsOf(engine_), "");
    EXPECT_NO_THROW(held.act(engine_, folder_ / ""));
    EXPECT_EQ(FaultsOf(engine_), "");
    EXPECT_EQ(Difference(before, Now()), held.changes);
}

INSTANTIATE_TEST_SUITE_P(Each, HeldFilesTest, testing::ValuesIn(kHeldFiles));

// The registry is neither forgotten nor put aside meanwhile, and the log keeps nobody from saving.
TEST_F(HeldFilesTest, ARegistryAndALogAreWaitedFor) {
    const std::string log = folder_ / "shop.log";
    WriteContents(log, "");
    LogEverything(engine_);
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
        EXPECT_EQ(OnDisk("ann"), (folder_ / "other.cdb") + ";" + (folder_ / "shop.cdb") + ";");
        EXPECT_NE(Contents(log).find("Key: " + std::to_string(share) + " To T"), std::string::npos);
        EXPECT_EQ(Now().count("RDX.dat.unreadable"), 0u);
    }
}

}  // namespace
}  // namespace tavolin
