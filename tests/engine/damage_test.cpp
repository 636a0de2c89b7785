// Files put together from two, registries with a wrong byte, and damage that no checksum shows.
#include "fuzz/fuzz.h"
#include "tests/support/engine_state.h"
#include "tests/support/invariants.h"

namespace tavolin {
namespace {

struct DamageTest : EngineTest {
    // A database with something of everything that is stored.
    DamageTest() {
        engine_.CreateNewPrimaryTable("T", {"ID", "Word"});
        engine_.CreateNewLinkedTable("T", "Word", {"Word"});
        engine_.AddRecord("T", 1, {"1", "one"})->Attach(3, "p", aMovie);
        engine_.AddRecord("T", 2, {"2", "two"});
        engine_.GetRecord("T", "2")->Key("own");
        owner_->CVLUserNoteSet()->Add(MakeDate(2026, 11, 15, 1, 5), 7, "note");
        engine_.CreateNewUser("bob", "b", true, false, true, "Bob", "second", true);
        engine_.SaveDB();
    }
    // Another's, which makes the registry longer.
    std::string MakeOther(const char* name) const {
        NewDatabase engine(name, FolderPath(), "bob", "b");
        engine.CreateNewPrimaryTable("Other", {"ID"});
        engine.SaveDB();
        return folder_ / name + ".cdb";
    }
    std::string Owners() const {
        std::string text;
        for (const auto& owner : engine_.CVLDBOwnerSet()->NewEnum())
            text += owner->Key() + ":" + Listed(engine_, owner->Key().c_str());
        return text;
    }
    // Reads all that is open, for which nobody needs a right.
    std::string Walk() const {
        return FaultsOf(engine_) + Everything(*engine_.CVLTableSet()) +
               StateText(*engine_.CVLDBUserSet());
    }
    // Whatever can be done, refused or not.
    void Work() {
        for (int i = 1; i <= engine_.CVLTableSet()->Count(); ++i) {
            ErrorNumber([&] { engine_.AddRecord(i, 1, {"new", "word"}); });
            ErrorNumber([&] { engine_.GetTable(i)->Sort(1); });
            ErrorNumber([&] { engine_.DeleteRecord(i, 1); });
        }
    }
    const std::string file_ = folder_ / "shop.cdb";
    const std::string bad_ = folder_ / "bad.cdb";
    const std::string registry_ = folder_ / "RDX.dat";
};

// Calls body(text, whole) for all beginnings of one with the rest of the other; `whole` is in it.
template <class Body>
void ForEachSplice(const std::string& a, const std::string& b, Body&& body) {
    for (std::size_t cut = 0; cut <= std::max(a.size(), b.size()); ++cut) {
        for (const auto& [first, second] : {std::pair(&a, &b), std::pair(&b, &a)}) {
            const std::string text =
                first->substr(0, cut) + second->substr(std::min(cut, second->size()));
            const bool is_a = text.starts_with(a);
            SCOPED_TRACE("cut at " + std::to_string(cut));
            body(text, is_a ? &a : text.starts_with(b) ? &b : nullptr);
        }
    }
}

// Nor is a registry with a wrong byte.
TEST_F(DamageTest, OfTwoFilesPutTogetherNoneIsBelievedUnlessItIsThereWhole) {
    const std::string first = Contents(registry_), first_owners = Owners();
    const std::string shop = Contents(file_), shops = Keys(*engine_.CVLTableSet());
    const std::string other = Contents(MakeOther("other"));
    ForEachSplice(shop, other, [&](const std::string& text, const std::string* whole) {
        WriteContents(bad_, text);
        const std::int32_t number = ErrorNumber([&] { engine_.LoadDB(bad_); });
        EXPECT_EQ(number, whole == nullptr ? Num::GetDBNotSetError() : 0);
        if (whole != nullptr) {
            EXPECT_EQ(Keys(*engine_.CVLTableSet()), whole == &shop ? shops : "Other ");
        }
    });
    MachineFileSystem().Delete(bad_);
    engine_.LoadDB(file_);
    engine_.LogOn("ann", "secret");
    const std::string second = Contents(registry_), second_owners = Owners();
    const auto tables = engine_.CVLTableSet();
    const auto log_on = [&](const std::string& text, const std::string& owners) {
        WriteContents(registry_, text);
        EXPECT_TRUE(engine_.LogOn("ann", "secret"));
        EXPECT_EQ(Owners(), owners);
        EXPECT_EQ(Contents(registry_), text);
        EXPECT_EQ(engine_.CVLTableSet(), tables);
    };
    ForEachSplice(first, second, [&](const std::string& text, const std::string* whole) {
        log_on(text, whole == &first ? first_owners : whole == &second ? second_owners : "");
    });
    for (std::size_t at = 0; at < first.size(); ++at) {
        for (const int bits : {1 << at % 8, 0xFF}) {
            SCOPED_TRACE("byte " + std::to_string(at) + " changed by " + std::to_string(bits));
            std::string damaged = first;
            damaged[at] = static_cast<char>(damaged[at] ^ bits);
            log_on(damaged, "");
        }
    }
}

// Whatever stands behind a checksum that fits: it is refused, or what it says holds together.
TEST_F(DamageTest, NothingIsBelievedForItsChecksum) {
    const std::vector<std::uint8_t> good = MachineFileSystem().ReadFile(file_);
    engine_.LoadDB(file_);  // where records have the keys that they are loaded with
    const std::string before = Walk();
    auto tables = engine_.CVLTableSet();
    int refused = 0, loaded = 0;
    for (std::size_t at = 12 + bag_layout::kKeyTableAt; at < good.size(); ++at) {
        for (const int bits : {0x01, 0x02, 0x80, 0xFF}) {
            SCOPED_TRACE("byte " + std::to_string(at) + " changed by " + std::to_string(bits));
            auto damaged = good;
            damaged[at] = static_cast<std::uint8_t>(damaged[at] ^ bits);
            fuzz::SealFile(damaged);
            MachineFileSystem().Write(bad_, damaged);
            const std::int32_t number = ErrorNumber([&] { engine_.LoadDB(bad_); });
            if (number != 0) {
                ++refused;
                ASSERT_EQ(number, Num::GetDBNotSetError());
                ASSERT_EQ(engine_.CVLTableSet(), tables);
                continue;
            }
            ++loaded;
            const std::string there = Walk();
            engine_.TransactionBegin();
            Work();
            engine_.TansactionAbort();
            ASSERT_EQ(Walk(), there);
            engine_.LoadDB(file_);
            ASSERT_EQ(Walk(), before);
            tables = engine_.CVLTableSet();
        }
    }
    EXPECT_GT(loaded, 500);
    EXPECT_GT(refused, 500);
}

}  // namespace
}  // namespace tavolin
