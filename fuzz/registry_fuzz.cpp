// The owner registry: whatever is in the file, a log-on succeeds; what can be read holds together,
// and what cannot is kept aside when a new one is written.
#include <algorithm>

#include "fuzz/walk.h"
#include "tavolin/persist/database_file.h"

namespace tavolin::fuzz {
namespace {

constexpr const char* kRegistry = "/m\\RDX.dat";

void WalkRegistry(CVLDBEngine& engine) {
    WalkSet(
        *engine.CVLDBOwnerSet(), [](const CVLDBOwner& owner) { return owner.Key(); },
        [](CVLDBOwner& owner) {
            WalkSet(
                *owner.CVLOwnerDBSet(), [](const CVLOwnerDB& database) { return database.Key(); },
                [](const CVLOwnerDB& database) {
                    Require(database.DBName().size() + database.DBDir().size() < (1u << 30),
                            "names can be read");
                });
        });
    Refusal([&] {
        for (const std::string& owner : engine.GetArrayOwners()) {
            Refusal([&] { engine.GetArrayOwnedDBs(owner); });
        }
    });
}

}  // namespace
}  // namespace tavolin::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tavolin;
    using namespace tavolin::fuzz;
    setenv("TAVOLIN_FOLDER", MemoryFiles::kFolder, 1);
    MemoryFiles files;
    const ScopedFileSystem scope(files);
    const Bytes before = FileOf(data, size);
    files[kRegistry] = before;

    CVLDBEngine engine;
    Require(engine.LogOn("ann", "secret"), "a log-on succeeds");
    bool newer = false;
    const bool read = [&] {
        try {
            tavolin::CVLDBOwnerSet owners;
            owners.RegistryState(ReadDatabaseFile(kRegistry));
            return true;
        } catch (const DamagedState& damage) {
            newer = damage.newer();
            return false;
        }
    }();
    Require(read || engine.CVLDBOwnerSet()->Count() == 0, "a damaged registry counts as empty");
    WalkRegistry(engine);
    Require(files[kRegistry] == before, "reading changes no file");

    engine.CreateNewDB("x", MemoryFiles::kFolder);
    if (newer) {
        Require(Refusal([&] { engine.SaveDB(); }) == kIncompatibleFormat, "a newer one is refused");
        Require(files[kRegistry] == before, "and left alone");
        return 0;
    }
    Require(engine.SaveDB(), "a database can be saved");
    const bool aside = FileSystem::Current().Exists("/m\\RDX.dat.unreadable");
    Require(aside == !read, "what cannot be read is kept aside, and nothing else");
    if (aside) Require(files["/m\\RDX.dat.unreadable"] == before, "it is kept as it was");
    engine.LogOn("ann", "secret");
    WalkRegistry(engine);
    const auto mine = engine.GetArrayOwnedDBs("ann");
    Require(std::find(mine.begin(), mine.end(), "/m\\x.cdb") != mine.end(), "it is listed");
    engine.CVLDBOwnerSet()->Refresh();
    Require(engine.DeleteDB("/m\\x.cdb"), "it can be deleted");
    WalkRegistry(engine);
    return 0;
}
