// The records of one set: an order and keys over the records of an arena.
//
// A set's own records keep their place in themselves. A collection of a search's results is a guest
// in the arena of the set that was searched: the same records stand in both, so the guest keeps
// places and keys of its own, made when something first needs them.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "tavolin/model/index_key.h"
#include "tavolin/model/keyed_collection.h"
#include "tavolin/model/record_arena.h"

namespace tavolin {

class RecordCollection {
  public:
    // An empty collection in an arena of its own.
    explicit RecordCollection(std::shared_ptr<Session> session);
    // A guest that holds these records of another's arena, in this order.
    RecordCollection(std::shared_ptr<RecordArena> arena, std::span<const RecordHandle> records);
    ~RecordCollection();
    RecordCollection(const RecordCollection&) = delete;
    RecordCollection& operator=(const RecordCollection&) = delete;

    RecordArena& arena() const { return *arena_; }
    const std::shared_ptr<RecordArena>& shared_arena() const { return arena_; }

    std::int32_t Count() const { return static_cast<std::int32_t>(records_.size()); }
    RecordHandle Find(const IndexKey& which) const {
        return which.is_position() ? records_.At(which.position()) : FindKey(which.key());
    }
    RecordHandle FindKey(std::string_view key) const;
    // Find for each of up to kHandleBatch, kNoHandle for what is not usable: sooner than one by
    // one.
    HandleBatch FindBatch(std::span<const IndexKey> which) const;
    std::shared_ptr<CVLRecord> Object(RecordHandle record) const {
        return RecordArena::Object(arena_, record);
    }

    // Makes a record and files it. Raises 457 when its key is taken and 5 for a place that is not
    // there; nothing has changed then, nor when memory runs out.
    std::shared_ptr<CVLRecord> Add(std::int32_t n_key, const FieldTexts& fields,
                                   const PrimaryKeyType& primary_key,
                                   std::shared_ptr<CVLAttachmentSet> attachments,
                                   const Placement& placement);
    // Appends records that the arena has adopted just now, with the reference that it has counted;
    // the keys are looked at later.
    void Adopt(std::span<const RecordHandle> records);
    // The same for an empty collection and records that know their leaves: LeafOfAdopted.
    void AdoptPlaced(std::span<const RecordHandle> records) { records_.AssignPlaced(records); }
    static std::uint32_t LeafOfAdopted(std::uint32_t index) {
        return OrderList::LeafOfAssigned(index);
    }
    void Remove(RecordHandle record);
    // Takes that back, for a record that somebody still holds. As long as nothing has been added in
    // between, memory is needed only where a whole run of records has gone.
    void PutBack(RecordHandle record, std::uint32_t position);
    std::uint32_t PositionOf(RecordHandle record) {
        MakePlaces();
        return records_.PositionOf(record);
    }
    // For records of those, that have a key of their own: none of them takes a key that another
    // record has from its fields.
    void FileOwnKeys(std::span<const RecordHandle> records);
    // What takes the place of `collection` when its records, which `order` holds, are put in
    // another order, each under the key that it has now. Raises 457 when two have one key; then, or
    // when memory runs out, nothing has changed. It is the same collection unless somebody walks
    // along that or keys have changed; the old one then stays as it is for those who walk along it.
    static std::shared_ptr<RecordCollection> Rearranged(
        const std::shared_ptr<RecordCollection>& collection, std::span<const RecordHandle> order);
    // Whether a record of the arena stands in this collection.
    bool Holds(RecordHandle record) {
        MakePlaces();
        return records_.Holds(record);
    }
    // The same for a record of any arena.
    bool Holds(const std::shared_ptr<RecordArena>& arena, RecordHandle record) {
        return arena == arena_ && Holds(record);
    }
    // The records whose key, as the host sees it, is this one, in their order.
    std::vector<RecordHandle> WithKey(std::string_view key);
    // Whether a record of this collection, other than `record`, holds the value in a field, without
    // regard to case. The first question about a field walks along the collection; every further
    // one takes constant time, until ForgetHolders. Not for guests.
    bool HeldByOthers(int field, std::string_view value, const CVLRecord& record) const;
    void ForgetHolders(int field) {
        if (!IsGuest()) arena_->DropCounts(field);
    }
    bool IsGuest() const { return records_.store().guest; }

    template <class Body>
    void ForEach(Body&& body) const {
        records_.ForEach(body);
    }
    // The same with several of them at a time: body(records).
    template <class Body>
    void ForEachRun(Body&& body) const {
        records_.ForEachRun(body);
    }

  private:
    // What a KeyedCollection asks; see keyed_collection.h.
    struct Store {
        RecordArena* arena = nullptr;
        bool guest = false;
        bool places_made = false;
        std::unordered_map<RecordHandle, std::uint32_t> places;
        // Where it is not the arena's filing key, or need not stay that.
        std::unordered_map<RecordHandle, std::string> keys;
        std::unordered_set<RecordHandle> keyless;

        std::uint32_t Leaf(RecordHandle record) const;
        void SetLeaf(RecordHandle record, std::uint32_t leaf);
        bool Keyed(RecordHandle record) const;
        std::uint32_t KeyHash(RecordHandle record) const;
        bool KeyEquals(RecordHandle record, std::string_view key) const;
        bool SameKey(RecordHandle a, RecordHandle b) const;
        void DropKey(RecordHandle record);

        const std::string* OwnKey(RecordHandle record) const;
        std::string KeyOf(RecordHandle record) const;
        void Welcome(RecordHandle record);
        void Part(RecordHandle record);
    };
    using Records = KeyedCollection<Store>;

    // An empty one in that arena.
    RecordCollection(std::shared_ptr<RecordArena> arena, bool guest);
    void TakeOver(std::span<const RecordHandle> order);

    void CheckKeys(std::span<const RecordHandle> records) const;
    void MakePlaces();
    void File(RecordHandle record, const Placement& placement);
    std::vector<RecordHandle> AllRecords() const;

    std::shared_ptr<RecordArena> arena_;
    Records records_;

  public:
    // A walk that survives any change of the collection.
    class Cursor : public Records::Cursor {
      public:
        explicit Cursor(const RecordCollection& collection)
            : Records::Cursor(collection.records_) {}
    };
};

}  // namespace tavolin
