// Elements in an order, found by their 1-based position or by their key without regard to letter
// case. The collection knows elements as 32-bit handles only; a Store, a small policy object held
// by value that may point to wherever the elements live, says the rest:
//
//     struct Store {
//         std::uint32_t Leaf(std::uint32_t handle) const;                // one number an element,
//         void SetLeaf(std::uint32_t handle, std::uint32_t leaf);        // kept for the collection
//         bool Keyed(std::uint32_t handle) const;                        // has it a key at all
//         std::uint32_t KeyHash(std::uint32_t handle) const;             // HashFold of its key
//         bool KeyEquals(std::uint32_t handle, std::string_view key) const;  // as EqualFold
//         bool SameKey(std::uint32_t a, std::uint32_t b) const;          // both are keyed
//         void DropKey(std::uint32_t handle);                            // Keyed is false from now
//     };
//
//     KeyedCollection<Store> set{Store(&arena)};
//     set.Add(handle, {.before = 1});
//     set.Find("Ann");
//
// SetLeaf and DropKey must not throw: the Store makes room for an element before it is added. None
// of the Store's members may change the collection. Lookup by key is O(1); position to element and
// back, insertion and removal anywhere are O(log n); appending and walking cost what a vector
// costs.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <utility>

#include "tavolin/base/text.h"
#include "tavolin/errors/trap.h"
#include "tavolin/model/index_key.h"
#include "tavolin/model/key_index.h"
#include "tavolin/model/order_list.h"

namespace tavolin {

inline constexpr std::size_t kHandleBatch = 16;
using HandleBatch = std::array<std::uint32_t, kHandleBatch>;

template <class Store>
class KeyedCollection {
  public:
    // A walk that survives any change of the collection and the collection's end; see OrderCursor.
    // Costs the collection nothing when none is alive.
    class Cursor : public OrderCursor {
      public:
        explicit Cursor(const KeyedCollection& collection) : OrderCursor(collection.order_) {}
    };

    explicit KeyedCollection(Store store = Store()) : store_(std::move(store)) {}
    KeyedCollection(const KeyedCollection&) = delete;
    KeyedCollection& operator=(const KeyedCollection&) = delete;

    Store& store() { return store_; }
    const Store& store() const { return store_; }

    std::uint32_t size() const { return order_.size(); }

    // The handle at a 1-based position, or kNoHandle.
    std::uint32_t At(std::int64_t position) const {
        if (!Stands(position)) return kNoHandle;
        return order_.At(static_cast<std::uint32_t>(position));
    }

    // The handle with this key, or kNoHandle. The first search by key after Adopt walks and the
    // second builds the index, so that even searches must come from one thread at a time.
    std::uint32_t FindKey(std::string_view key) const {
        const std::uint32_t hash = HashFold(key);
        const auto has_key = [&](std::uint32_t handle) { return store_.KeyEquals(handle, key); };
        if (!indexed_ && !walked_) {
            walked_ = true;
            return order_.First([&](std::uint32_t handle) {
                return store_.Keyed(handle) && store_.KeyHash(handle) == hash && has_key(handle);
            });
        }
        IndexKeys();
        return index_.Find(hash, has_key);
    }
    // The handle at a position or with a key, or kNoHandle.
    std::uint32_t Find(const IndexKey& which) const {
        return which.is_position() ? At(which.position()) : FindKey(which.key());
    }

    // Find for each of up to kHandleBatch, kNoHandle for what is not usable. They are found at
    // once, which takes less time where they lie far apart; fetch(handle) has what an element is
    // compared by fetched from memory, for later.
    template <class Fetch>
    HandleBatch FindBatch(std::span<const IndexKey> which, Fetch&& fetch) const {
        HandleBatch found, hashes;
        std::array<OrderList::Spot, kHandleBatch> spots;
        for (std::size_t i = 0; i < which.size(); ++i) {
            found[i] = kNoHandle;
            if (!which[i].usable()) continue;
            if (!which[i].is_position()) {
                IndexKeys();
                hashes[i] = HashFold(which[i].key());
                index_.Prefetch(hashes[i]);
            } else if (Stands(which[i].position())) {
                spots[i] = order_.SpotAt(static_cast<std::uint32_t>(which[i].position()));
            }
        }
        const auto any = [](std::uint32_t) { return true; };
        bool keys = false;
        for (std::size_t i = 0; i < which.size(); ++i) {
            if (!which[i].usable()) continue;
            if (!which[i].is_position()) {
                keys = true;
                found[i] = index_.Find(hashes[i], any);
            } else if (Stands(which[i].position())) {
                found[i] = order_.At(spots[i]);
            }
            if (found[i] != kNoHandle) fetch(found[i]);
        }
        for (std::size_t i = 0; keys && i < which.size(); ++i) {
            if (found[i] == kNoHandle || which[i].is_position()) continue;
            found[i] = index_.Find(hashes[i], [&](std::uint32_t handle) {
                return store_.KeyEquals(handle, which[i].key());
            });
        }
        return found;
    }

    // The 1-based position, or 0 when the handle is not in the leaf that the Store tells.
    std::uint32_t PositionOf(std::uint32_t handle) const {
        return order_.PositionOf(handle, store_.Leaf(handle));
    }
    bool Holds(std::uint32_t handle) const { return order_.Holds(handle, store_.Leaf(handle)); }

    // The position that a placement means: size() + 1 for none. Raises 5 when it names both places
    // or one that is not there.
    std::uint32_t Resolve(const Placement& placement) const {
        if (placement.before && placement.after) RaiseRunTime(kInvalidCall);
        if (placement.before) return Existing(*placement.before);
        if (placement.after) return Existing(*placement.after) + 1;
        return order_.size() + 1;
    }

    // Puts an element in, at the end unless `placement` says otherwise. Raises 5 as Resolve does,
    // 457 when another element has the key; nothing has been added then, nor when memory runs out.
    void Add(std::uint32_t handle, const Placement& placement = {}) {
        AddAt(Resolve(placement), handle);
    }

    // The same at a position, 1..size() + 1.
    void AddAt(std::uint32_t position, std::uint32_t handle) {
        if (!store_.Keyed(handle)) {
            order_.InsertAt(position, handle, Leaves());
            return;
        }
        IndexKeys();
        const std::uint32_t hash = store_.KeyHash(handle);
        if (Holder(handle, hash) != kNoHandle) RaiseRunTime(kDuplicateKey);
        index_.ReserveOneMore();
        order_.InsertAt(position, handle, Leaves());
        index_.Insert(hash, handle);
    }

    // Appends many elements, the index being left until the first access by key. Of several with
    // one key the first in order keeps it then and the Store is told to drop the others'. When
    // memory runs out, the elements before the one it ran out at are in.
    void Adopt(std::span<const std::uint32_t> handles) {
        if (order_.size() == 0) return Assign(handles);
        order_.Reserve(std::size_t{order_.size()} + handles.size());
        LeaveKeysForLater();
        for (const std::uint32_t handle : handles) order_.Append(handle, Leaves());
    }

    // Takes an element out. False, and nothing done, when the handle is not in the leaf that the
    // Store tells. The element must still be as it was when its key was last told.
    bool Remove(std::uint32_t handle) {
        if (!order_.Remove(handle, store_.Leaf(handle), Leaves())) return false;
        if (indexed_ && store_.Keyed(handle)) index_.Remove(store_.KeyHash(handle), handle);
        return true;
    }

    // Gives an element another key: change() does so in the Store. Raises 457 when another element
    // has `new_key`; then, or when change() or memory fails, nothing has changed. A change of
    // letter case alone is allowed, and an element without a key may get one.
    template <class Change>
    void ChangeKey(std::uint32_t handle, std::string_view new_key, Change&& change) {
        IndexKeys();
        const std::uint32_t holder = FindKey(new_key);
        if (holder != kNoHandle && holder != handle) RaiseRunTime(kDuplicateKey);
        const bool keyed = store_.Keyed(handle);
        const std::uint32_t old_hash = keyed ? store_.KeyHash(handle) : 0;
        if (!keyed) index_.ReserveOneMore();
        change();
        if (keyed) {
            Rekey(handle, old_hash);
        } else if (store_.Keyed(handle)) {
            index_.Insert(store_.KeyHash(handle), handle);
        }
    }

    // Tells that a keyed element has changed its key in the Store, or has lost it; the caller has
    // seen to it that no other element has the new one. Never throws.
    void Rekey(std::uint32_t handle, std::uint32_t old_hash) {
        if (!indexed_ || !index_.Remove(old_hash, handle)) return;
        if (store_.Keyed(handle)) index_.Insert(store_.KeyHash(handle), handle);
    }

    // Puts the elements in another order; `handles` are exactly those of the collection. Cursors
    // keep their position. Nothing has changed when memory runs out.
    void Arrange(std::span<const std::uint32_t> handles) { order_.Assign(handles, Leaves()); }

    // Replaces all elements by these, whose keys are looked at later, as after Adopt. Nothing has
    // changed when memory runs out.
    void Assign(std::span<const std::uint32_t> handles) {
        order_.Assign(handles, Leaves());
        LeaveKeysForLater();
    }
    // The same for elements whose Store knows their leaves already.
    void AssignPlaced(std::span<const std::uint32_t> handles) {
        order_.Assign(handles, [](std::uint32_t, std::uint32_t) {});
        LeaveKeysForLater();
    }

    // Whether every element is found by its key.
    bool AllKeyed() const {
        IndexKeys();
        return index_.size() == order_.size();
    }

    // Looks at the keys now, if that was left for later.
    void IndexKeys() const {
        if (!indexed_) BuildIndex();
    }

    // Forgets all elements and gives the memory back; the Store is not told.
    void Clear() {
        order_.Clear();
        index_.Clear();
        indexed_ = true;
    }

    // Makes room for `count` elements in all.
    void Reserve(std::size_t count) {
        order_.Reserve(count);
        index_.Reserve(count);
    }

    // The bytes got for order and keys, without those of the Store.
    std::size_t memory() const { return order_.memory() + index_.memory(); }

    // Calls body(handle) in order. The body must not change the collection.
    template <class Body>
    void ForEach(Body&& body) const {
        order_.ForEach(body);
    }
    // The same with several of them at a time: body(handles).
    template <class Body>
    void ForEachRun(Body&& body) const {
        order_.ForEachRun(body);
    }

  private:
    bool Stands(std::int64_t position) const { return position >= 1 && position <= order_.size(); }

    auto Leaves() {
        return [this](std::uint32_t handle, std::uint32_t leaf) { store_.SetLeaf(handle, leaf); };
    }

    std::uint32_t Holder(std::uint32_t handle, std::uint32_t hash) const {
        return index_.Find(hash,
                           [&](std::uint32_t other) { return store_.SameKey(other, handle); });
    }

    std::uint32_t Existing(const IndexKey& which) const {
        const std::uint32_t handle = Find(which);
        if (handle == kNoHandle) RaiseRunTime(kInvalidCall);
        return which.is_position() ? static_cast<std::uint32_t>(which.position())
                                   : PositionOf(handle);
    }

    void LeaveKeysForLater() {
        index_.Clear();
        indexed_ = false;
        walked_ = false;
    }
    void BuildIndex() const {
        index_.Clear();  // of what an earlier attempt left when memory ran out
        index_.Reserve(order_.size());
        // A few at a time, whose slots come from memory side by side.
        std::array<KeyIndex::Entry, 32> waiting;
        std::size_t count = 0;
        const auto index_waiting = [&] {
            for (const auto& [hash, handle] : std::span(waiting).first(count)) {
                if (Holder(handle, hash) != kNoHandle) {
                    store_.DropKey(handle);
                } else {
                    index_.Insert(hash, handle);
                }
            }
            count = 0;
        };
        order_.ForEach([&](std::uint32_t handle) {
            if (!store_.Keyed(handle)) return;
            const std::uint32_t hash = store_.KeyHash(handle);
            index_.Prefetch(hash);
            waiting[count++] = {hash, handle};
            if (count == waiting.size()) index_waiting();
        });
        index_waiting();
        indexed_ = true;
    }

    mutable Store store_;
    OrderList order_;
    mutable KeyIndex index_;
    mutable bool indexed_ = true;
    mutable bool walked_ = false;  // for a key, in place of building the index
};

}  // namespace tavolin
