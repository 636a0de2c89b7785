#include "tavolin/model/record_collection.h"

#include <algorithm>
#include <utility>

#include "tavolin/base/text.h"
#include "tavolin/errors/trap.h"
#include "tavolin/model/record.h"

namespace tavolin {

RecordCollection::RecordCollection(std::shared_ptr<Session> session)
    : arena_(std::make_shared<RecordArena>(std::move(session))),
      records_(Store{.arena = arena_.get(), .places = {}, .keys = {}, .keyless = {}}) {}

RecordCollection::RecordCollection(std::shared_ptr<RecordArena> arena,
                                   std::span<const RecordHandle> records)
    : arena_(std::move(arena)),
      records_(
          Store{.arena = arena_.get(), .guest = true, .places = {}, .keys = {}, .keyless = {}}) {
    if (arena_->AnyOwnKeys()) {
        for (const RecordHandle record : records) records_.store().Welcome(record);
    }
    records_.Adopt(records);
    arena_->AddReferences(records);
}

RecordCollection::RecordCollection(std::shared_ptr<RecordArena> arena, bool guest)
    : arena_(std::move(arena)),
      records_(
          Store{.arena = arena_.get(), .guest = guest, .places = {}, .keys = {}, .keyless = {}}) {}

RecordCollection::~RecordCollection() {
    // An arena that goes along takes all its records with it.
    if (arena_.use_count() == 1) return;
    ForEachRun([this](std::span<const RecordHandle> records) { arena_->Release(records); });
}

RecordHandle RecordCollection::FindKey(std::string_view key) const { return records_.FindKey(key); }

HandleBatch RecordCollection::FindBatch(std::span<const IndexKey> which) const {
    return records_.FindBatch(which, [this](RecordHandle record) { arena_->Prefetch(record); });
}

std::shared_ptr<CVLRecord> RecordCollection::Add(std::int32_t n_key, const FieldTexts& fields,
                                                 const PrimaryKeyType& primary_key,
                                                 std::shared_ptr<CVLAttachmentSet> attachments,
                                                 const Placement& placement) {
    const RecordHandle record = arena_->Create(n_key, fields, primary_key);
    arena_->AddReference(record);
    try {
        auto object = Object(record);
        if (attachments) arena_->Attachments(record, std::move(attachments));
        File(record, placement);
        return object;
    } catch (...) {
        arena_->Release(record);
        throw;
    }
}

void RecordCollection::File(RecordHandle record, const Placement& placement) {
    if (placement.before || placement.after) MakePlaces();
    records_.store().Welcome(record);
    try {
        records_.Add(record, placement);
    } catch (...) {
        records_.store().Part(record);
        throw;
    }
    if (!IsGuest()) arena_->CountIn(record);
}

void RecordCollection::Adopt(std::span<const RecordHandle> records) { records_.Adopt(records); }

void RecordCollection::FileOwnKeys(std::span<const RecordHandle> records) {
    for (const RecordHandle record : records) arena_->DropKey(record);
    for (const RecordHandle record : records) {
        const std::string key = arena_->FilingKey(record);
        if (records_.FindKey(key) != kNoHandle) continue;
        records_.ChangeKey(record, key, [&] { arena_->TakeKey(record); });
    }
}

std::shared_ptr<RecordCollection> RecordCollection::Rearranged(
    const std::shared_ptr<RecordCollection>& collection, std::span<const RecordHandle> order) {
    const bool same_keys = !collection->arena_->AnyOwnKeys() && collection->records_.AllKeyed();
    if (same_keys && collection.use_count() == 1) {
        collection->records_.Arrange(order);
        return collection;
    }
    if (!same_keys) collection->CheckKeys(order);
    std::shared_ptr<RecordCollection> next(
        new RecordCollection(collection->arena_, collection->IsGuest()));
    next->TakeOver(order);
    return next;
}

// The last thing that can fail is the assignment, which does so whole.
void RecordCollection::TakeOver(std::span<const RecordHandle> order) {
    Store& store = records_.store();
    for (const RecordHandle record : order) {
        if (arena_->HasOwnKey(record)) store.keys.emplace(record, arena_->Key(record));
    }
    records_.Assign(order);
    // The places that the records hold are this collection's from here on: who walks along the
    // former one asks for none.
    for (const RecordHandle record : order) {
        if (!store.guest) arena_->TakeKey(record);
        arena_->AddReference(record);
    }
}

void RecordCollection::CheckKeys(std::span<const RecordHandle> records) const {
    std::unordered_set<std::string> keys;
    for (const RecordHandle record : records) {
        if (!keys.insert(Fold(arena_->Key(record))).second) RaiseRunTime(kDuplicateKey);
    }
}

void RecordCollection::Remove(RecordHandle record) {
    MakePlaces();
    // Before the first of several with one key goes, the others must be known to have none.
    records_.IndexKeys();
    if (!records_.Remove(record)) return;
    records_.store().Part(record);
    if (!IsGuest()) arena_->CountOut(record);
    arena_->Release(record);
}

void RecordCollection::PutBack(RecordHandle record, std::uint32_t position) {
    records_.AddAt(std::min(position, records_.size() + 1), record);
    if (!IsGuest()) arena_->CountIn(record);
    arena_->AddReference(record);
}

std::vector<RecordHandle> RecordCollection::WithKey(std::string_view key) {
    std::vector<RecordHandle> found;
    records_.IndexKeys();  // so that those without a key of their own are known
    const RecordHandle filed = records_.FindKey(key);
    if (filed != kNoHandle && !arena_->HasOwnKey(filed)) found.push_back(filed);
    for (const RecordHandle record : records_.store().keyless) {
        if (!arena_->HasOwnKey(record) && arena_->FilingKeyEquals(record, key)) {
            found.push_back(record);
        }
    }
    arena_->ForEachWithOwnKey(key, [&](RecordHandle record) {
        if (Holds(record)) found.push_back(record);
    });
    if (found.size() < 2) return found;
    MakePlaces();
    std::vector<std::pair<std::uint32_t, RecordHandle>> places;
    places.reserve(found.size());
    for (const RecordHandle record : found)
        places.emplace_back(records_.PositionOf(record), record);
    std::sort(places.begin(), places.end());
    std::transform(places.begin(), places.end(), found.begin(),
                   [](const auto& place) { return place.second; });
    return found;
}

bool RecordCollection::HeldByOthers(int field, std::string_view value,
                                    const CVLRecord& record) const {
    if (arena_->Counts(field) == nullptr) arena_->MakeCounts(field, AllRecords());
    const std::uint32_t holders = arena_->Counts(field)->Of(value);
    const bool own = record.arena() == arena_ && arena_->Counted(record.handle()) &&
                     EqualFold(arena_->Field(record.handle(), field), value);
    return holders > (own ? 1u : 0u);
}

std::vector<RecordHandle> RecordCollection::AllRecords() const {
    std::vector<RecordHandle> all;
    all.reserve(records_.size());
    ForEach([&](RecordHandle record) { all.push_back(record); });
    return all;
}

void RecordCollection::MakePlaces() {
    Store& store = records_.store();
    if (!store.guest || store.places_made) return;
    const auto all = AllRecords();
    for (const RecordHandle record : all) store.places.emplace(record, 0);
    records_.Arrange(all);
    store.places_made = true;
}

std::uint32_t RecordCollection::Store::Leaf(RecordHandle record) const {
    if (!guest) return arena->Leaf(record);
    const auto place = places.find(record);
    return place == places.end() ? kNoHandle : place->second;
}

void RecordCollection::Store::SetLeaf(RecordHandle record, std::uint32_t leaf) {
    if (!guest) {
        arena->SetLeaf(record, leaf);
    } else if (const auto place = places.find(record); place != places.end()) {
        place->second = leaf;
    }
}

bool RecordCollection::Store::Keyed(RecordHandle record) const {
    return guest ? !keyless.contains(record) : arena->Keyed(record);
}

std::uint32_t RecordCollection::Store::KeyHash(RecordHandle record) const {
    const std::string* own = OwnKey(record);
    return own != nullptr ? HashFold(*own) : arena->FilingHash(record);
}

bool RecordCollection::Store::KeyEquals(RecordHandle record, std::string_view key) const {
    const std::string* own = OwnKey(record);
    return own != nullptr ? EqualFold(*own, key) : arena->FilingKeyEquals(record, key);
}

bool RecordCollection::Store::SameKey(RecordHandle a, RecordHandle b) const {
    return KeyEquals(a, KeyOf(b));
}

void RecordCollection::Store::DropKey(RecordHandle record) {
    if (guest) {
        keyless.insert(record);
    } else {
        arena->DropKey(record);
    }
}

const std::string* RecordCollection::Store::OwnKey(RecordHandle record) const {
    if (keys.empty()) return nullptr;
    const auto found = keys.find(record);
    return found == keys.end() ? nullptr : &found->second;
}

std::string RecordCollection::Store::KeyOf(RecordHandle record) const {
    const std::string* own = OwnKey(record);
    return own != nullptr ? *own : arena->FilingKey(record);
}

// Makes room for what is kept of a guest's record before it comes in, and takes note of its key as
// it is now, which may change later without the record being filed anew.
void RecordCollection::Store::Welcome(RecordHandle record) {
    if (!guest) return;
    if (arena->HasOwnKey(record)) keys.insert_or_assign(record, arena->Key(record));
    if (places_made) places.emplace(record, 0);
}

void RecordCollection::Store::Part(RecordHandle record) {
    if (!keys.empty()) keys.erase(record);
    if (!guest) return;
    places.erase(record);
    keyless.erase(record);
}

}  // namespace tavolin
