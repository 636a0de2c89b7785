#include "tavolin/model/record_set.h"

#include <optional>
#include <random>

#include "tavolin/base/text.h"
#include "tavolin/model/attachment_set.h"
#include "tavolin/persist/property_bag.h"
#include "tests/support/expect_error.h"

namespace tavolin {
namespace {

struct RecordSetTest : EngineTest {
    // Field 1 of all records in their order.
    std::string Names() const {
        std::string names;
        for (const auto& record : set_.NewEnum()) names += record->prop(1);
        return names;
    }
    void Fill(std::string_view names) {
        for (const char name : names) set_.Add(kFirst, 1, {std::string(1, name), {&name, 1}});
    }
    CVLRecordSet set_;
};

TEST_F(RecordSetTest, ComposesKeys) {
    const PrimaryKeyType two_zero{2, 0, 99, 99};
    const auto record = set_.Add(two_zero, 1, {"c", "", "ab"});
    EXPECT_EQ(record->Key(), "abc");
    EXPECT_EQ(set_.Item("ABC"), record);
    // Without a separator these two are one key; so are letter cases.
    for (const FieldTexts& taken : {FieldTexts{"bc", "", "a"}, FieldTexts{"C", "", "AB"}}) {
        ExpectError(N::GetRecordAddError(), "CVLRecordSet:Add Method",
                    "The Record That Is Being Added Already Exists In DataBase!",
                    [&] { set_.Add(two_zero, 2, taken); });
    }
    // Where letters of one case take more bytes than those of the other.
    set_.Add({0, 1, 99, 99}, 1, {"\xE2\x84\xAA", "elvin"});
    EXPECT_FALSE(set_.CanAdd("KELVIN"));
    EXPECT_TRUE(set_.CanAdd("KELVI"));
    EXPECT_FALSE(set_.CanAdd(""));
    EXPECT_EQ(ErrorNumber([&] {
                  set_.Add({10, 99, 99, 99}, 1, {"z"});
              }),
              N::GetFieldOutOfRangeError());
    EXPECT_EQ(set_.Count(), 2);
}

TEST_F(RecordSetTest, GivesManyRecordsAtOnce) {
    std::vector<std::string> keys;
    for (int i = 0; i < 1500; ++i) {
        keys.push_back("k" + std::to_string(i));
        set_.Add(kFirst, 1, {keys.back()}, nullptr, i == 0 ? Placement{} : Placement{i / 2 + 1});
    }
    const auto expect = [&](const CVLRecordSet& set) {
        std::mt19937 random(5);
        std::vector<IndexKey> which;
        for (std::size_t i = 0; i < 40; ++i) {
            which.emplace_back(random() % 500 + 1);
            which.emplace_back(std::string_view(keys[random() % keys.size()]));
            which.push_back(which[i]);
        }
        std::erase_if(which, [&](const IndexKey& one) { return set.CanAdd(one); });
        const auto found = set.Items(which);
        ASSERT_EQ(found.size(), which.size());
        for (std::size_t i = 0; i < which.size(); ++i) EXPECT_EQ(found[i], set.Item(which[i]));
    };
    ASSERT_NO_FATAL_FAILURE(expect(set_));
    // The first that is not there decides, whatever comes behind it.
    const std::vector<IndexKey> no_place = {1, "k7", 1501, "x", IndexKey::Unusable(kTypeMismatch)};
    ExpectError(N::GetRecordNotFoundError(), "CVLRecordSet:Items Method",
                "No Record Is Found On This Range!", [&] { set_.Items(no_place); });
    const std::vector<IndexKey> no_key = {1, "x", 0};
    EXPECT_EQ(ErrorNumber([&] { set_.Items(no_key); }), N::GetDBNotSetError());
    const std::vector<IndexKey> no_use = {IndexKey::Unusable(kTypeMismatch), 0};
    EXPECT_EQ(ErrorNumber([&] { set_.Items(no_use); }), kTypeMismatch);
    set_.Item("k3")->Key("another");
    set_.Sort(0);
    ASSERT_NO_FATAL_FAILURE(expect(set_));
    ActWith(Undefined);
    EXPECT_EQ(ErrorNumber([&] { set_.Items({}); }), N::GetUserPermissionToRdError());
}

TEST_F(RecordSetTest, TellsKeysOfOneHashApart) {
    const std::string one = "k73377", other = "k73861";
    ASSERT_EQ(HashFold(one), HashFold(other));
    set_.Add(kFirst, 1, {one});
    EXPECT_TRUE(set_.CanAdd(other));
    const std::vector<IndexKey> which = {other, one};
    EXPECT_EQ(ErrorNumber([&] { set_.Items(which); }), N::GetDBNotSetError());
    set_.Add(kFirst, 1, {other});
    EXPECT_EQ(set_.Items(which)[0]->prop(0), other);
    set_.Remove(one);
    EXPECT_EQ(set_.Item(other)->prop(0), other);
    EXPECT_EQ(ErrorNumber([&] { set_.Items(which); }), N::GetDBNotSetError());
}

TEST_F(RecordSetTest, TellsAMissedPositionFromAMissedKey) {
    ExpectNoEnds("CVLRecordSet", "Record Not Found Error ", N::GetFirstRecordError(),
                 {[&] { set_.FirstRecord(); }, [&] { set_.LastRecord(); },
                  [&] { set_.PreviousRecord(1); }, [&] { set_.NextRecord(0); }});
    Fill("ab");
    for (int position : {-1, 0, 3}) {
        ExpectError(N::GetRecordNotFoundError(), "CVLRecordSet:Item Property Get",
                    "No Record Is Found On This Range!", [&] { set_.Item(position); });
    }
    ExpectError(N::GetDBNotSetError(), "CVLRecordSet:Remove Method", "DataBase Is Not Set!",
                [&] { set_.Remove("1"); });
    for (const Placement& wrong : {Placement{.before = 1, .after = 2},
                                   {.before = 0},
                                   {.after = 0},
                                   {.before = 3},
                                   {.after = -1},
                                   {.before = "x"},
                                   {.after = "x"}}) {
        for (const char* key : {"new", "a"}) {  // even where the key is a duplicate as well
            EXPECT_EQ(ErrorNumber([&] { set_.Add(kFirst, 1, {key}, nullptr, wrong); }),
                      kInvalidCall);
        }
    }
    EXPECT_EQ(ErrorNumber([&] { set_.NextRecord(2); }), N::GetNextRecordError());
    EXPECT_EQ(ErrorNumber([&] { set_.Remove(std::make_shared<CVLRecord>()); }), kInvalidCall);
    ExpectError(N::GetFieldOutOfRangeError(), "CVLRecord:prop Property Get",
                "Field Is Out Of Range(0-9)", [&] { set_.Item(1)->prop(10); });
    EXPECT_EQ(ErrorNumber([&] { set_.Item(1)->prop(-1, "x"); }), kOverflow);
    ActWith(Undefined);
    set_.ObjectState(set_.ObjectState());  // which takes no right
    EXPECT_EQ(Names(), "ab");
}

TEST_F(RecordSetTest, UpdatesFieldByField) {
    const PrimaryKeyType second{2, 99, 99, 99};
    const auto record = set_.Add(second, 1, {"a", "b", "Key", "d"});
    std::string events;
    record->OnPropertyChange.Connect([&](const auto& changed, const auto& name, const auto& value) {
        EXPECT_EQ(changed, record);
        events += name + "=" + value + " ";
    });
    set_.OnRecordUpDate.Connect([&](const auto&) { events += "done "; });
    EXPECT_EQ(set_.Update(second, record, {"A", "B2", "KEY"}), record);
    EXPECT_EQ(record->prop(0) + record->prop(1) + record->prop(2) + record->prop(3), "aB2Key");
    EXPECT_EQ(events, "prop1=B2 prop3= done ");
    for (const FieldTexts& other : {FieldTexts{"1", "2"}, FieldTexts{"3", "2", "other", "4"}}) {
        ExpectError(N::GetRecordUpDateError(), "CVLRecordSet:Update Method",
                    "Record Key Cannot Be UpDated!", [&] { set_.Update(second, record, other); });
    }
    EXPECT_EQ(record->prop(0) + record->prop(1) + record->prop(3), "32");
    record->OnPropertyChange.Connect([](const auto&, const auto& name, const auto&) {
        if (name == "prop3") throw Error(kOutOfMemory);
    });
    EXPECT_EQ(ErrorNumber([&] {
                  set_.Update(second, record, {"5", "6", "Key", "7"});
              }),
              kOutOfMemory);
    EXPECT_EQ(record->prop(0) + record->prop(1) + record->prop(3), "32");
}

TEST_F(RecordSetTest, SharesAndStoresAttachments) {
    const auto shared = std::make_shared<CVLAttachmentSet>();
    const auto a = set_.Add(kFirst, 1, {"a"}, shared);
    const auto b = set_.Add(kFirst, 1, {"b"}, shared);
    set_.AttachToRecord(a, 3, "C:\\map.png", aPicture);
    EXPECT_EQ(b->CVLAttachmentSet()->Item("c:\\MAP.png")->nKey(), 3);
    shared->Add("b", -2, "", Miscellenius)->Key("c:\\map.PNG");  // which the first one has
    set_.ObjectState(set_.ObjectState());
    for (int i : {1, 2}) {
        const auto attachments = set_.Item(i)->CVLAttachmentSet();
        if (i == 2) attachments->ObjectState(attachments->ObjectState());  // by itself
        const auto loaded = attachments->Item("c:\\map.png");
        EXPECT_EQ(loaded->Key() + loaded->attachmentPathName(), "C:\\map.pngC:\\map.png");
        EXPECT_EQ(loaded->SpecificType(), aPicture);
        EXPECT_EQ(loaded->nKey() * 10 + attachments->Item(2)->nKey(), 28);
        EXPECT_TRUE(attachments->Count() == 2 && attachments->CanAdd("b"));
        const auto state = attachments->ObjectState();
        ExpectDamageRefused(state, [&](const auto& bytes) { attachments->ObjectState(bytes); });
        EXPECT_EQ(attachments->Item(1), loaded);
    }
}

TEST_F(RecordSetTest, RefusesDamagedState) {
    Fill("ab");
    set_.Item("b")->Key("other");
    set_.Item("a")->Attach(1, "p", aMovie);
    const auto state = set_.ObjectState();
    Fill("c");
    const auto record = set_.Item("c");
    ExpectDamageRefused(state, [&](const auto& damaged) { set_.ObjectState(damaged); });
    ExpectError(31037, "CVLRecordSet:ObjectState Property Let",
                "Error loading from file. The file is corrupted", [&] { set_.ObjectState({}); });
    // Damage made on purpose, with a checksum that fits: the hash of the first record's key, and
    // the kind of its text.
    PropertyBagReader whole(state);
    const auto images = whole.ReadBlocks("Record");
    for (const auto& [at, bits] : {std::pair(4, 0), {4, 0x40}, {18, 0x04}}) {
        std::vector<std::uint8_t> changed(images.begin(), images.end());
        changed[static_cast<std::size_t>(at)] ^= static_cast<std::uint8_t>(bits);
        PropertyBagWriter bag;
        bag.Write("RecordsCount", 2);
        bag.WriteBlocks("Record", changed);
        const std::vector<std::uint8_t> forged = std::move(bag).Finish();
        CVLRecordSet loaded;
        EXPECT_EQ(ErrorNumber([&] { loaded.ObjectState(forged); }), bits == 0 ? 0 : kCorruptedFile)
            << "byte " << at << " changed by " << bits;
    }
    EXPECT_EQ(set_.Item(3), record);
    EXPECT_EQ(Names(), "abc");
}

// In a state made on purpose, in which the records stand twice.
TEST_F(RecordSetTest, OfSeveralWithOneKeyTheFirstHasItForGood) {
    Fill("ab");
    const auto state = set_.ObjectState();
    PropertyBagReader whole(state);
    const auto images = whole.ReadBlocks("Record");
    PropertyBagWriter bag;
    bag.Write("RecordsCount", 4);
    bag.BeginBlocks("Record");
    for (int i = 0; i < 2; ++i) bag.Append(images.data(), images.size());
    bag.EndBlocks();
    const std::vector<std::uint8_t> forged = std::move(bag).Finish();
    for (const bool asked : {false, true}) {
        set_.ObjectState(forged);
        EXPECT_EQ(Names(), "abab");
        for (int i = 0; asked && i < 2; ++i) EXPECT_EQ(set_.Item("a"), set_.Item(1));
        set_.Remove(1);
        EXPECT_EQ(ErrorNumber([&] { set_.Item("a"); }), N::GetDBNotSetError());
        EXPECT_EQ(set_.Item("b"), set_.Item(1));
    }
}

// The same set in the plainest way.
struct ModelRow {
    std::optional<std::string> filed;  // what it is found under
    std::string key;
    bool own_key = false;  // the host has had a hand in it
    std::int32_t n_key = 0;
    std::array<std::string, kFieldCount> fields;
};

class RecordSetModel {
  public:
    const ModelRow* Find(std::string_view key) const {
        for (const ModelRow& row : rows) {
            if (row.filed && EqualFold(*row.filed, key)) return &row;
        }
        return nullptr;
    }
    void Load() {
        for (ModelRow& row : rows) row.filed = row.own_key ? std::nullopt : std::optional(row.key);
        for (ModelRow& row : rows) {
            if (row.own_key && !Find(row.key)) row.filed = row.key;
        }
    }
    std::vector<ModelRow> rows;
};

class RandomRecords {
  public:
    RandomRecords(CVLRecordSet& set, std::uint32_t seed) : set_(set), random_(seed) {}

    void Step() {
        const auto at = model_.rows.empty() ? 0 : Below(model_.rows.size());
        const auto what = model_.rows.empty() ? 0 : Below(12);
        if (what < 3) return Add(at);
        if (what < 5) return Update(at);
        if (what < 7) return SetField(at, Below(kFieldCount), Text());
        if (what == 7) {
            model_.rows[at].key = Key();
            model_.rows[at].own_key = true;
            return set_.Item(at + 1)->Key(model_.rows[at].key);
        }
        if (what < 10) return Remove(at);
        LookForKey(Key());
        Lookup(Key());
        if (what == 11 && Below(10) == 0) Reload();
    }

    void Check() {
        ASSERT_EQ(static_cast<std::size_t>(set_.Count()), model_.rows.size());
        auto walk = set_.NewEnum();
        for (std::size_t i = 0; i < model_.rows.size(); ++i) {
            const ModelRow& row = model_.rows[i];
            const auto record = walk.Next();
            ASSERT_EQ(record, set_.Item(i + 1));
            ASSERT_EQ(record->Key(), row.key);
            ASSERT_EQ(record->nKey(), row.n_key);
            for (std::size_t f = 0; f < row.fields.size(); ++f) {
                ASSERT_TRUE(record->prop(static_cast<int>(f)) == row.fields[f]) << "field " << f;
            }
            ASSERT_EQ(record->arena()->Keyed(record->handle()), row.filed.has_value());
            if (row.filed) Lookup(*row.filed);
        }
    }

  private:
    std::size_t Below(std::size_t limit) { return random_() % limit; }
    std::string Key() {
        static constexpr const char* kLetters[] = {"a", "B", "\xC3\xA9", "\xC3\x89", "b", "A"};
        std::string key;
        for (std::size_t i = Below(4); i-- > 0;) key += kLetters[Below(std::size(kLetters))];
        return key;
    }
    std::string Text() {
        if (Below(3) == 0) return Key();
        static constexpr std::size_t kSizes[] = {0, 3, 8, 30, 254, 256, 1000, 65536, 600000};
        return std::string(kSizes[Below(Below(20) == 0 ? 9 : 6)],
                           static_cast<char>('a' + Below(26)));
    }
    void Add(std::size_t at) {
        ModelRow row;
        row.n_key = static_cast<std::int32_t>(random_());
        row.fields = {Key(), Text(), Key()};
        row.key = row.fields[2] + row.fields[0];
        row.filed = row.key;
        Placement place;
        std::size_t index = model_.rows.size();
        if (!model_.rows.empty() && Below(2) == 0) {
            const bool before = Below(2) == 0;
            index = before ? at : at + 1;
            const auto& key = model_.rows[at].filed;
            const IndexKey where = key && Below(2) == 0 ? IndexKey(*key) : IndexKey(at + 1);
            (before ? place.before : place.after) = where;
        }
        const auto add = [&] { set_.Add({2, 0, 99, 99}, row.n_key, row.fields, nullptr, place); };
        if (model_.Find(row.key)) {
            EXPECT_EQ(ErrorNumber(add), N::GetRecordAddError());
        } else {
            add();
            model_.rows.insert(model_.rows.begin() + static_cast<std::ptrdiff_t>(index), row);
        }
    }
    void Update(std::size_t at) {
        ModelRow& row = model_.rows[at];
        auto fields = row.fields;
        for (std::size_t f = 3 + Below(7); f < fields.size(); f += 2) fields[f] = Text();
        set_.Update({2, 0, 99, 99}, set_.Item(at + 1), fields);
        for (std::size_t f = 3; f < fields.size(); ++f) {
            if (!EqualFold(fields[f], row.fields[f])) row.fields[f] = fields[f];
        }
    }
    void SetField(std::size_t at, std::size_t field, const std::string& value) {
        model_.rows[at].fields[field] = value;
        if (field == 0 || field == 2) model_.rows[at].own_key = true;
        set_.Item(at + 1)->prop(static_cast<int>(field), value);
    }
    void Remove(std::size_t at) {
        const auto& key = model_.rows[at].filed;
        set_.Remove(key && Below(2) == 0 ? IndexKey(*key) : IndexKey(at + 1));
        model_.rows.erase(model_.rows.begin() + static_cast<std::ptrdiff_t>(at));
    }
    // By the keys that the host sees, in the set and in the result of a search.
    void LookForKey(const std::string& key) {
        std::vector<RecordHandle> all, expected;
        set_.Collection()->ForEach([&](RecordHandle record) { all.push_back(record); });
        for (std::size_t i = 0; i < all.size(); ++i) {
            if (EqualFold(model_.rows[i].key, key)) expected.push_back(all[i]);
        }
        RecordCollection result(set_.Collection()->shared_arena(), all);
        EXPECT_EQ(set_.Collection()->WithKey(key), expected) << key;
        EXPECT_EQ(result.WithKey(key), expected) << key;
        if (expected.empty()) return;
        // A result that is sorted gives no record a key that another one has in the set.
        const auto last = std::span<const RecordHandle>(expected).last(1);
        RecordCollection::Rearranged(
            std::make_shared<RecordCollection>(set_.Collection()->shared_arena(), last), last);
    }
    void Lookup(const std::string& key) {
        const ModelRow* row = model_.Find(key);
        if (!row) {
            EXPECT_EQ(ErrorNumber([&] { set_.Item(key); }), N::GetDBNotSetError()) << key;
        } else {
            EXPECT_EQ(set_.Item(key), set_.Item(row - model_.rows.data() + 1)) << key;
        }
    }
    void Reload() {
        set_.ObjectState(set_.ObjectState());
        model_.Load();
    }

    CVLRecordSet& set_;
    RecordSetModel model_;
    std::mt19937 random_;
};

TEST_F(RecordSetTest, AgreesWithAPlainModel) {
    const std::uint32_t seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomRecords random(set_, seed);
    for (int i = 0; i < 4000; ++i) {
        random.Step();
        if (i % 50 == 0) random.Check();
        if (HasFailure()) FAIL() << "in step " << i;
    }
    random.Check();
}

}  // namespace
}  // namespace tavolin
