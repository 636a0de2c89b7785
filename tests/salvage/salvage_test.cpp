// What is said about a damaged database file, and what comes back of it.
#include "tavolin/salvage/salvage.h"

#include <cstring>

#include "tavolin/persist/database_file.h"
#include "tavolin/persist/scrambler.h"
#include "tests/support/engine_state.h"

namespace tavolin {
namespace {

using Kind = SalvagedFile::Kind;
using Access = SalvagedFile::Access;

constexpr std::size_t kPeople = 40;

struct SalvageTest : EngineTest {
    SalvageTest() {
        engine_.CreateNewPrimaryTable("People", {"ID", "Name", "City"});
        engine_.CreateNewPrimaryTable("Cities", {"City", "Land"});
        engine_.LinkTables("People", 2, "Cities");
        for (std::size_t i = 1; i <= kPeople; ++i) {
            const std::string n = std::to_string(i);
            engine_.AddRecord(
                "People", static_cast<std::int32_t>(i),
                {n, "Name of " + n + std::string(i % 40, 'x'), i % 2 ? "Köln" : "Rome"});
        }
        engine_.GetTable("People")->AttachToRecord("30", "picture.png");
        engine_.GetRecord("People", "35")->Key("own key");
        const auto bob = engine_.CreateNewUser("bob", "b", true, false, false, "Bob B");
        engine_.CreateNewUser("off", "o", true, true, true, {}, {}, true);
        engine_.CreateNewUser("nil", "n", false, false, false);
        bob->CVLUserNoteSet()->Add(MakeDate(2026, 1, 2), 1, "a note");
        engine_.ChangePassword("", "database");
        engine_.SaveDB();
        engine_.LoadDB(file_);  // from here on an own key is what its record's hash is of
        engine_.SaveDB();
        good_ = Contents(file_);
        text_ = Text(engine_);
    }

    static std::string Text(CVLDBEngine& engine) {
        std::string text = engine.CVLTableSet()->MakeItText();
        for (const auto& user : engine.CVLDBUserSet()->NewEnum()) {
            text += user->UserName() + user->UserFullName() + std::to_string(user->CanRead());
        }
        return text + std::to_string(engine.GetRecord("People", "30")->CVLAttachmentSet()->Count());
    }
    // The salvaged database, opened by ann.
    void Open(CVLDBEngine& engine, SalvagedFile& file,
              const std::optional<SalvagedFile::NewOwner>& owner = {}) const {
        WriteDatabaseFile(folder_ / "new.cdb", file.State(owner).bytes());
        tavolin::Open(engine, folder_ / "new.cdb");
    }
    SalvagedFile Damaged(const std::string& contents) const {
        WriteContents(bad_, contents);
        return SalvagedFile(bad_);
    }
    static std::string Said(const SalvagedFile& file) {
        std::string text;
        for (const Finding& finding : file.findings()) {
            text +=
                std::to_string(finding.offset) + " " + finding.where + ": " + finding.what + "\n";
        }
        return text;
    }
    // Where the image begins of which a text is a part.
    std::size_t ImageOf(const std::string& text) const {
        std::size_t at = good_.find(text) & ~std::size_t{3};
        while (good_.compare(at + 12, 2, std::string("\1\0", 2)) != 0) at -= 4;
        return at;
    }

    const std::string file_ = folder_ / "shop.cdb";
    const std::string bad_ = folder_ / "bad.cdb";
    std::string good_;
    std::string text_;
};

TEST_F(SalvageTest, AWholeFileIsWholeAndComesBackAsItWas) {
    SalvagedFile file(file_);
    EXPECT_TRUE(file.whole());
    EXPECT_EQ(Said(file), "");
    EXPECT_EQ(file.tables(), 2u);
    EXPECT_EQ(file.records(), kPeople + 2);
    EXPECT_EQ(file.users(), 4u);
    CVLDBEngine engine;
    Open(engine, file);
    EXPECT_EQ(Text(engine), text_);
    EXPECT_TRUE(engine.GetUser("bob", "b"));
    EXPECT_EQ(engine.GetUser("bob", "b")->CVLUserNoteSet()->Count(), 1);
    EXPECT_TRUE(engine.PasswordCorrect("database"));
    EXPECT_TRUE(SalvagedFile(folder_ / "new.cdb").whole());
}

// What the format allows to be told is told, and nothing but the damaged thing is lost.
TEST_F(SalvageTest, DamageIsNamedAndTheRestComesBack) {
    const std::size_t image = ImageOf("Name of 20");
    const auto changed = [&](std::size_t at, char by) {
        std::string contents = good_;
        contents[at] = static_cast<char>(contents[at] ^ by);
        return contents;
    };
    std::string zeroed = good_;
    std::memset(zeroed.data() + image, 0, 512);
    std::string miscounted = good_;
    std::memset(miscounted.data() + ImageOf("Name of 38"), 0, 20);
    miscounted[good_.find(std::string("\4(\0\0\0", 5)) + 1] = 9;  // instead of 40 records
    const std::size_t keys = good_.find("\x01n\x01p\x01o") - 1;
    const std::size_t people = good_.find("People");
    struct Case {
        const char* what;
        std::string contents;
        const char* said;
        std::size_t lost;
    };
    const Case cases[] = {
        {"text", changed(good_.find("Name of 20"), 1), "the checksum is not that of the bytes", 0},
        {"high bit", changed(good_.find("Name of 20"), '\x80'),
         "record 20 (key 20): a character or a flag in it is damaged", 0},
        {"key", changed(good_.find("20Name of 20"), 4), "a value of its key, or the hash", 0},
        {"hash", changed(image + 4, 1), "record 20 (key 20): a value of its key, or the hash", 0},
        {"image size", changed(image + 14, 1), "record 20 (key 20): its size is damaged", 0},
        {"ends", changed(image + 20, '\x7F'), "1 record lost: ", 1},
        {"table length", changed(people - 11, 1), "its length is damaged", 0},
        {"name length", changed(people - 1, 2), "", 0},
        {"no descriptor", good_.substr(12), "descriptor: missing", 0},
        {"no key table", good_.substr(0, keys), "the keys are guessed", 0},
        {"zeroed stretch", zeroed, " lost: ", 8},
        {"gap and count", miscounted, "the records that stood here are lost", 1},
        {"magic", changed(12, 1), "the magic number is damaged", 0},
        {"length", changed(12 + 24, 1), "says that there are", 0},
        {"key table", changed(12 + 32, 1), "the keys are guessed", 0},
    };
    for (const Case& test : cases) {
        SalvagedFile file = Damaged(test.contents);
        EXPECT_EQ(file.whole(), test.contents == good_) << test.what;
        EXPECT_NE(Said(file).find(test.said), std::string::npos) << test.what << '\n' << Said(file);
        EXPECT_GE(file.records() + test.lost, kPeople + 2) << test.what << '\n' << Said(file);
        ASSERT_EQ(file.AccessOf("ann", "secret"), Access::kGranted) << test.what << Said(file);
        CVLDBEngine engine;
        Open(engine, file);
        EXPECT_EQ(engine.CVLTableSet()->Count(), 2) << test.what;
        const auto record = engine.GetRecord("People", "30");
        EXPECT_EQ(record->CVLAttachmentSet()->Count(), 1) << test.what;
        EXPECT_EQ(record->prop(1), "Name of 30" + std::string(30, 'x')) << test.what;
        EXPECT_EQ(engine.GetRecord("People", "own key")->prop(0), "35") << test.what;
        EXPECT_EQ(Contents(bad_), test.contents);
    }
}

// Whatever byte is changed: it is noticed, at most one record goes, and an engine loads the rest.
TEST_F(SalvageTest, NoByteCanTakeMoreThanARecordAlong) {
    std::string contents = good_;
    std::size_t refused = 0;
    for (std::size_t at = 0; at < good_.size(); ++at) {
        // Every bit, or one: by turns.
        contents[at] = static_cast<char>(good_[at] ^ (at % 2 ? '\x01' : '\xFF'));
        SalvagedFile file = Damaged(contents);
        contents[at] = good_[at];
        EXPECT_FALSE(file.whole()) << at;
        if (file.kind() == Kind::kNewer && at == 20) continue;  // the version
        ASSERT_EQ(file.kind(), Kind::kDatabase) << at;
        EXPECT_GE(file.records() + 1, kPeople + 2) << at << '\n' << Said(file);
        const Access access = file.AccessOf("ann", "secret");
        refused += access != Access::kGranted;
        std::optional<SalvagedFile::NewOwner> owner;
        if (access == Access::kOwnerLost) owner = {"eve", "e"};
        if (at % 4 != 0) continue;
        EXPECT_NO_THROW(file.State(owner)) << at << '\n' << Said(file);
    }
    EXPECT_LT(refused, 200u);
}

TEST_F(SalvageTest, ACutFileGivesWhatIsInFrontOfTheCut) {
    std::size_t before = 0;
    const std::size_t users = good_.find("Bob B");
    for (std::size_t size = 12; size < good_.size(); size += 7) {
        SalvagedFile file = Damaged(good_.substr(0, size));
        EXPECT_FALSE(file.whole());
        EXPECT_GE(file.records(), before) << size;
        before = file.records();
        if (file.kind() == Kind::kForeign) continue;
        if (size < users) {
            EXPECT_NE(file.AccessOf("ann", "wrong"), Access::kGranted) << size;
        }
        SalvagedFile again = Damaged(good_.substr(0, size));
        EXPECT_NO_THROW(again.State(SalvagedFile::NewOwner{"eve", "e"})) << size;
    }
    EXPECT_EQ(before, kPeople + 2);
}

TEST_F(SalvageTest, AskedAsTheDatabaseWouldAsk) {
    const SalvagedFile file(file_);
    const struct {
        const char* user;
        const char* password;
        Access access;
    } cases[] = {{"ann", "secret", Access::kGranted},  {"ANN", "SECRET", Access::kGranted},
                 {"ann", "", Access::kRefused},        {"bob", "b", Access::kGranted},
                 {"bob", "x", Access::kRefused},       {"bob", "database", Access::kGranted},
                 {"off", "o", Access::kRefused},       {"off", "database", Access::kRefused},
                 {"nil", "n", Access::kRefused},       {"eve", "", Access::kRefused},
                 {"eve", "database", Access::kGranted}};
    for (const auto& test : cases) {
        EXPECT_EQ(file.AccessOf(test.user, test.password), test.access)
            << test.user << " " << test.password;
        // The engine's own answer.
        CVLDBEngine engine;
        engine.LogOn(test.user, test.password);
        engine.LoadDB(file_);
        EXPECT_EQ(ErrorNumber([&] { engine.DBLegalUser(engine.LogedOnUser(), ToRead); }) == 0,
                  test.access == Access::kGranted)
            << test.user << " " << test.password;
    }
}

TEST_F(SalvageTest, LostPasswordsLetNobodyIn) {
    // The users stand behind the tables: this cuts them off and leaves the owner's name.
    SalvagedFile file = Damaged(good_.substr(0, good_.find("Bob B") - 200));
    EXPECT_EQ(file.AccessOf("ann", ""), Access::kOwnerLost);
    CVLDBEngine engine;
    WriteDatabaseFile(folder_ / "new.cdb", file.State(SalvagedFile::NewOwner{"eve", "e"}).bytes());
    tavolin::Open(engine, folder_ / "new.cdb", "eve", "e");
    EXPECT_EQ(engine.CVLDBUserSet()->Count(), 1);
    EXPECT_FALSE(engine.PasswordCorrect(""));

    // A user who was let in for the database's password can act as the owner that he becomes.
    std::string contents = good_;
    contents[contents.find("ann") + 2] = 'z';  // an owner who is not among the users
    SalvagedFile foreign = Damaged(contents);
    EXPECT_EQ(foreign.AccessOf("bob", "database"), Access::kOwnerLost);
    const auto state = foreign.State(SalvagedFile::NewOwner{"bob", "database"});
    WriteDatabaseFile(folder_ / "bobs.cdb", state.bytes());
    tavolin::Open(engine, folder_ / "bobs.cdb", "bob", "database");
}

TEST_F(SalvageTest, WhatReferredToSomethingLostDoesSoNoMore) {
    engine_.LinkTables("Cities", 1, "People");
    engine_.SaveDB();
    const std::string linked = Contents(file_);
    SalvagedFile cut = Damaged(linked.substr(0, linked.rfind("Cities") - 20));
    CVLDBEngine engine;
    Open(engine, cut, SalvagedFile::NewOwner{"ann", "secret"});
    EXPECT_EQ(engine.GetTable("People")->LinkedTable(2), "");
    EXPECT_EQ(engine.GetTable("People")->ReferencedTable(0), "");
    EXPECT_FALSE(engine.GetTable("People")->FieldIsForeignKey(2));
    EXPECT_NE(Said(cut).find("its link is gone"), std::string::npos) << Said(cut);

    // A user whose password cannot be read any more must not come back with an empty one.
    std::string contents = good_;
    contents[contents.find("\1\1" + ScrambleText("b"), contents.find("bob")) + 1] = '\x70';
    SalvagedFile file = Damaged(contents);
    Open(engine, file);
    const auto bob = engine.CVLDBUserSet()->Find("bob");
    EXPECT_TRUE(bob && bob->UserDisabled()) << Said(file);
    EXPECT_NE(Said(file).find("user bob: is disabled"), std::string::npos) << Said(file);
}

TEST_F(SalvageTest, OtherFilesAreToldApart) {
    EXPECT_EQ(SalvagedFile(folder_ / "RDX.dat").kind(), Kind::kRegistry);
    EXPECT_TRUE(SalvagedFile(folder_ / "RDX.dat").whole());
    std::string registry = Contents(folder_ / "RDX.dat");
    registry[registry.size() / 2] ^= 1;
    EXPECT_EQ(Damaged(registry).kind(), Kind::kRegistry);
    EXPECT_FALSE(Damaged(registry).whole());
    for (const std::string& other : {std::string(), std::string("%PDF-1.4 and so on"),
                                     std::string(5000, '\0'), std::string(5000, '\x07')}) {
        EXPECT_EQ(Damaged(other).kind(), Kind::kForeign) << other.size();
    }
    std::string newer = good_;
    newer[12 + 8] = 2;
    EXPECT_EQ(Damaged(newer).kind(), Kind::kNewer);
}

TEST_F(SalvageTest, OddThingsInAnUndamagedFileAreRemarks) {
    engine_.DeleteRecord("Cities", "Rome");
    engine_.GetRecord("People", "3")->Key("4");
    engine_.CVLDBUserSet()->Remove("ann");
    engine_.SaveDB();
    const SalvagedFile file(file_);
    EXPECT_TRUE(file.whole());
    const std::string said = Said(file);
    for (const char* remark :
         {"1 of its records have a key that another one in front has; the first is record 4",
          "20 of its values are no key in the table Cities; the first is Rome, of record 2",
          "owner ann: is not among the users"}) {
        EXPECT_NE(said.find(remark), std::string::npos) << remark << '\n' << said;
    }
}

}  // namespace
}  // namespace tavolin
