// A database file of any bytes: what is said of it is true, what is salvaged loads and holds
// together, and salvaging a whole file takes nothing from it.
#include "fuzz/walk.h"
#include "tavolin/persist/database_file.h"
#include "tavolin/salvage/salvage.h"

namespace tavolin::fuzz {
namespace {

constexpr const char* kFile = "/m\\x.cdb";
constexpr const char* kSaved = "/m\\saved.cdb";

bool Damaged(const SalvagedFile& file) {
    for (const Finding& finding : file.findings()) {
        if (finding.kind != Finding::Kind::kRemark) return true;
    }
    return false;
}

std::size_t RecordsOf(CVLDBEngine& engine) {
    std::size_t count = 0;
    for (int i = engine.CVLTableSet()->Count(); i > 0; --i) {
        count += static_cast<std::size_t>(engine.CVLTableSet()->Item(i)->CVLRecordSet()->Count());
    }
    return count;
}

void SalvageAndLoad(MemoryFiles& files, const Bytes& damaged) {
    SalvagedFile file(kFile);
    CVLDBEngine engine;
    engine.LogOn("ann", "secret");
    const bool loads = Refusal([&] { engine.LoadDB(kFile); }) == 0;
    if (file.kind() == SalvagedFile::Kind::kDatabase) {
        // The other way round, a forged file may load that is not as it would have been saved.
        Require(loads || !file.whole(), "a whole file loads");
        Require(file.whole() || Damaged(file), "of a damaged file it is said what is wrong");
    }
    Require(files[kFile] == damaged, "looking changes no file");
    if (file.kind() != SalvagedFile::Kind::kDatabase) return;
    if (file.whole() && ActAsOwner(engine)) {
        Require(file.records() == RecordsOf(engine) &&
                    file.tables() == static_cast<std::size_t>(engine.CVLTableSet()->Count()) &&
                    file.owner() == engine.DBOwner(),
                "of a whole file everything is read");
    }
    const auto access = file.AccessOf("ann", "secret");
    std::optional<SalvagedFile::NewOwner> owner;
    if (access == SalvagedFile::Access::kOwnerLost) owner = {"ann", "secret"};
    const std::size_t records = file.records();
    // Also where ann may not read it: whether she is let do so is the program's to ask.
    WriteDatabaseFile(kSaved, file.State(owner).bytes(), true, [] {});
    Require(files[kFile] == damaged, "salvaging does not touch the file");

    SalvagedFile saved(kSaved);
    Require(saved.whole() && !Damaged(saved), "what was salvaged is whole");
    Require(saved.records() == records, "every record that was counted is there");
    engine.LogOn("ann", "secret");
    engine.LoadDB(kSaved);
    Require(!owner ||
                (engine.DBOwner() == "ann" && engine.DBLegalUser(engine.LogedOnUser(), Ownership)),
            "the new owner is let in as the owner");
    const bool acts = ActAsOwner(engine);
    Require(acts || access == SalvagedFile::Access::kRefused, "the database has an owner");
    if (!acts) return;
    WalkDatabase(engine);
    Require(RecordsOf(engine) == records, "and an engine finds every record");
}

}  // namespace
}  // namespace tavolin::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tavolin::fuzz;
    setenv("TAVOLIN_FOLDER", MemoryFiles::kFolder, 1);
    if (size == 0) return 0;
    MemoryFiles files;
    const tavolin::ScopedFileSystem scope(files);
    const Bytes file = FileOf(data, size);
    files[kFile] = file;
    SalvageAndLoad(files, file);
    return 0;
}
